#pragma once

#include "foundation/geometry/Tuple3.h"
#include "foundation/geometry/Vector3.h"

namespace vellum {

/// A regular lattice of points in an upright box: point (i, j, k) is origin + (i, j, k) * step.
template <class T>
struct Box3Points {
    Tuple3<unsigned int> count;  ///< Points along x, y and z.
    Vector3<T> origin;           ///< Point (0, 0, 0).
    Vector3<T> step;             ///< Distance of neighbors along each axis.
};

}  // namespace vellum
