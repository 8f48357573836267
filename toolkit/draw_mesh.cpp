#include "toolkit/draw_mesh.h"
