#pragma once

#include "foundation/geometry/Vector3.h"

namespace vellum {

/// An oriented box: three unit axes, each followed by the half extent along it, and the center.
template <class T>
struct Obb3 {
    Vector3<T> axis0;
    T extent0;
    Vector3<T> axis1;
    T extent1;
    Vector3<T> axis2;
    T extent2;
    Vector3<T> centre;

    /// Returns corner `index`: for k = 0, 1, 2 the center moves along axis k by the half extent, forward if
    /// bit k of the index is set, else backward. Higher bits are ignored.
    void getVertex(unsigned int const& index, Vector3<T>& vertex) const {
        Vector3<T> corner = centre;
        corner = (index & 1U) != 0 ? corner + axis0 * extent0 : corner - axis0 * extent0;
        corner = (index & 2U) != 0 ? corner + axis1 * extent1 : corner - axis1 * extent1;
        corner = (index & 4U) != 0 ? corner + axis2 * extent2 : corner - axis2 * extent2;
        vertex = corner;
    }
};

static_assert(sizeof(Obb3<float>) == 60 && sizeof(Obb3<double>) == 120, "elements without gaps");

}  // namespace vellum
