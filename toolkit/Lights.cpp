#include "toolkit/Lights.h"
