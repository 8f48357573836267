#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Vector3.h"

#include <algorithm>
#include <cmath>

/// \file
/// What all rooms do with points and the boxes around them.
namespace vellum::viewport {

/// Whether all three are finite numbers.
template <class T>
bool isFinite(Vector3<T> const& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// Lets a box grow so that it contains a point.
inline void include(Box3<double>& box, Vector3<double> const& p) {
    box = {{std::min(box.min.x, p.x), std::min(box.min.y, p.y), std::min(box.min.z, p.z)},
           {std::max(box.max.x, p.x), std::max(box.max.y, p.y), std::max(box.max.z, p.z)}};
}

/// The box around some points, of which there is at least one.
template <class Points>
Box3<double> boxAround(Points const& points) {
    Vector3<double> const first = *points.begin();
    Box3<double> box{first, first};
    for (Vector3<double> const& p : points) {
        include(box, p);
    }
    return box;
}

}  // namespace vellum::viewport
