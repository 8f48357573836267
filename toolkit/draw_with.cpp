#include "toolkit/draw_with.h"
