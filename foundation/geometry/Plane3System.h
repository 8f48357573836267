#pragma once

#include "foundation/basic/Array.h"
#include "foundation/geometry/Plane3.h"

namespace vellum {

/// Several planes that belong together, such as the faces of a view frustum or of a clipping region.
template <class T>
struct Plane3System {
    Array<Plane3<T>> planes;
};

}  // namespace vellum
