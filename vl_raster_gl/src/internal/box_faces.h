#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Obb3.h"
#include "foundation/geometry/constants.h"

#include <array>

namespace vellum {

/// A face of a box: its outward normal and the numbers of its corners in Box3, counter-clockwise seen from
/// outside.
struct BoxFace {
    Vector3<float> normal;
    unsigned int corners[4];
};

inline constexpr BoxFace BOX_FACES[6] = {
    {constants::f::N1_Z0_Z0_P1, {0, 4, 6, 2}}, {constants::f::P1_Z0_Z0_P1, {1, 3, 7, 5}},
    {constants::f::Z0_N1_Z0_P1, {0, 1, 5, 4}}, {constants::f::Z0_P1_Z0_P1, {2, 6, 7, 3}},
    {constants::f::Z0_Z0_N1_P1, {0, 2, 3, 1}}, {constants::f::Z0_Z0_P1_P1, {4, 5, 7, 6}},
};

using BoxCorners = std::array<Vector3<float>, 8>;

inline BoxCorners boxCorners(Box3<float> const& box) {
    BoxCorners corners;
    for (unsigned int i = 0; i < 8; ++i) {
        corners[i] = {(i & 1U) != 0 ? box.max.x : box.min.x, (i & 2U) != 0 ? box.max.y : box.min.y,
                      (i & 4U) != 0 ? box.max.z : box.min.z};
    }
    return corners;
}

inline BoxCorners boxCorners(Obb3<float> const& box) {
    BoxCorners corners;
    for (unsigned int i = 0; i < 8; ++i) {
        box.getVertex(i, corners[i]);
    }
    return corners;
}

/// The cube of half edge `half` about a point.
inline Box3<float> cubeAround(Vector3<float> const& center, float half) {
    Vector3<float> const reach{half, half, half};
    return {center - reach, center + reach};
}

}  // namespace vellum
