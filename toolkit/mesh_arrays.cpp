#include "toolkit/mesh_arrays.h"
