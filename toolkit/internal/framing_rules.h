#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Vector3.h"

namespace vellum::toolkit {

/// The near plane is at least this part of the far one: 24 bits of depth still tell surfaces apart then.
constexpr double SMALLEST_NEAR_PART = 1.0 / 2000;

/// Halved first: the sum of two corners may be infinite.
inline Vector3<double> centerOf(Box3<double> const& box) {
    return box.min * 0.5 + box.max * 0.5;
}

}  // namespace vellum::toolkit
