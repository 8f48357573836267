#pragma once

#include "foundation/basic/shared_arrays.h"  // ArrayServer, the server of all shared arrays.
