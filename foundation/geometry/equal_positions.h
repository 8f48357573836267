#pragma once

#include "foundation/geometry/Vector3.h"

#include <cstddef>
#include <memory>

namespace vellum {

/// By position, the first one that is equal to it: perhaps its own index. 0 and -0 are equal. Works on all
/// cores; the result does not depend on their number. \param positions numbers that are finite
std::unique_ptr<unsigned int[]> firstEqualPositions(Vector3<double> const* positions, unsigned int count);

}  // namespace vellum
