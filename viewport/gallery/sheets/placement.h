#pragma once

#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/VL_AXIS.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/geometry/constants.h"

#include <cmath>

/// Matrices for Core_RL::pushTransform().
namespace vellum::gallery {

using constants::f::PI;

inline float radians(float degrees) {
    return degrees * PI / 180.0F;
}

inline float degrees(float radians) {
    return radians * 180.0F / PI;
}

inline Matrix4<float> movedTo(Vector3<float> const& place) {
    Matrix4<float> matrix = Matrix4<float>::identity();
    matrix.e[12] = place.x;
    matrix.e[13] = place.y;
    matrix.e[14] = place.z;
    return matrix;
}

inline Matrix4<float> scaledBy(float factor) {
    return {{factor, 0, 0, 0, 0, factor, 0, 0, 0, 0, factor, 0, 0, 0, 0, 1}};
}

/// A rotation about a coordinate axis, counter-clockwise for a viewer toward whom the axis points.
inline Matrix4<float> turnedBy(float degrees, VL_AXIS const& axis) {
    float const c = std::cos(radians(degrees));
    float const s = std::sin(radians(degrees));
    Matrix4<float> matrix = Matrix4<float>::identity();
    int const from = (axis + 1) % 3;
    int const to = (axis + 2) % 3;
    matrix.e[4 * from + from] = c;
    matrix.e[4 * from + to] = s;
    matrix.e[4 * to + from] = -s;
    matrix.e[4 * to + to] = c;
    return matrix;
}

}  // namespace vellum::gallery
