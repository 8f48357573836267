#include "toolkit/UserEffect.h"
