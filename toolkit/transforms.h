#pragma once

#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Vector3.h"

/// \file
/// The matrices that layers are given most often.
///
///     layer.pushTransform(translation(place) * scaling(0.5));     // scaled first, then moved

namespace vellum::toolkit {

constexpr Matrix4<double> translation(Vector3<double> const& by) {
    return {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, by.x, by.y, by.z, 1}};
}

/// Alike along all axes.
constexpr Matrix4<double> scaling(double factor) {
    return {{factor, 0, 0, 0, 0, factor, 0, 0, 0, 0, factor, 0, 0, 0, 0, 1}};
}

}  // namespace vellum::toolkit
