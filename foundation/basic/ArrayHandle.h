#pragma once

#include "foundation/basic/shared_arrays.h"  // ArrayHandle, which holds a shared array while it is being used.
