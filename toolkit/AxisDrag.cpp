#include "toolkit/AxisDrag.h"
