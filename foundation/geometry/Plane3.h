#pragma once

#include "foundation/geometry/Vector3.h"

namespace vellum {

/// The plane of the points p with n . p + d = 0; `n` is a unit vector.
template <class T>
struct Plane3 {
    Vector3<T> n;
    T d;
};

static_assert(sizeof(Plane3<float>) == 16 && sizeof(Plane3<double>) == 32, "elements without gaps");

}  // namespace vellum
