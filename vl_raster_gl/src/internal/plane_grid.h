#pragma once

#include "foundation/geometry/Plane3.h"
#include "foundation/geometry/constants.h"

#include <cmath>

namespace vellum {

/// The square grid that shows a plane: around the plane's point nearest to the origin, rotated as +Y is
/// rotated onto the plane's normal.
struct PlaneGrid {
    Vector3<float> center;
    Vector3<float> axisX;  // unit vectors in the plane
    Vector3<float> axisZ;

    explicit PlaneGrid(Plane3<float> const& plane) {
        center = plane.n * -(dot(plane.n, constants::f::Z0_Z0_Z0) + plane.d);

        Vector3<float> axis;
        float angle = 0.0F;
        Vector3<float>::calculateRotation(constants::f::Z0_P1_Z0_P1, plane.n, axis, angle);

        // The rotation as a unit quaternion, and the columns of its matrix for X and Z.
        Vector3<float> const q = axis * std::sin(angle * 0.5F);
        float const w = std::cos(angle * 0.5F);
        axisX = {1.0F - 2.0F * (q.y * q.y + q.z * q.z), 2.0F * (q.x * q.y + w * q.z),
                 2.0F * (q.x * q.z - w * q.y)};
        axisZ = {2.0F * (q.x * q.z + w * q.y), 2.0F * (q.y * q.z - w * q.x),
                 1.0F - 2.0F * (q.x * q.x + q.y * q.y)};
    }
};

}  // namespace vellum
