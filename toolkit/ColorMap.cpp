#include "toolkit/ColorMap.h"
