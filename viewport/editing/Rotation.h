#pragma once

#include "foundation/geometry/Vector3.h"

namespace vellum::viewport {

/// A rotation as a quaternion of unit length. `w` is the cosine of half the angle, the others are the axis
/// with the length of the sine.
struct Rotation {
    double w = 1;
    double x = 0;
    double y = 0;
    double z = 0;

    /// About an axis, counter-clockwise as seen against its direction. None where the axis has no direction
    /// or a number is not finite. \param axis of any length
    static Rotation about(Vector3<double> const& axis, double radians);

    /// From angles in degrees. The object is turned about the axis x first, then about y, then about z: the
    /// axes stay where they are and do not turn with the object. None where a number is not finite.
    static Rotation ofDegrees(Vector3<double> const& degrees);

    /// The angles that give this rotation: x and z from -180 to 180, y from -90 to 90. Where y is 90 or -90,
    /// x and z turn about the same axis; z is 0 then.
    Vector3<double> toDegrees() const;

    /// The vector, turned.
    Vector3<double> operator()(Vector3<double> const& v) const;

    /// The opposite rotation.
    Rotation inverse() const { return {w, -x, -y, -z}; }

    bool operator==(Rotation const& other) const {
        return w == other.w && x == other.x && y == other.y && z == other.z;
    }
    bool operator!=(Rotation const& other) const { return !(*this == other); }
};

/// First `b`, then `a`; of unit length again.
Rotation operator*(Rotation const& a, Rotation const& b);

}  // namespace vellum::viewport
