#include "toolkit/pick.h"
