#include "viewport/editing/Rotation.h"

#include "foundation/geometry/constants.h"

#include <cmath>

namespace vellum::viewport {

namespace {

using Vector = Vector3<double>;

using constants::d::PI;

// Cosine of the angle y below which x and z turn about the same axis.
constexpr double LOCKED = 1e-7;

Rotation normalizedRotation(Rotation const& q) {
    double const size = std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
    return size > 0 && std::isfinite(size) ? Rotation{q.w / size, q.x / size, q.y / size, q.z / size}
                                           : Rotation();
}

}  // namespace

Rotation Rotation::about(Vector const& axis, double radians) {
    double const size = length(axis);
    if (!(size > 0) || !std::isfinite(size) || !std::isfinite(radians)) {
        return {};
    }
    Vector const along = axis * (std::sin(radians / 2) / size);
    return normalizedRotation({std::cos(radians / 2), along.x, along.y, along.z});
}

Rotation Rotation::ofDegrees(Vector const& degrees) {
    if (!std::isfinite(degrees.x) || !std::isfinite(degrees.y) || !std::isfinite(degrees.z)) {
        return {};
    }
    auto const turn = [](Vector const& axis, double angle) {
        return about(axis, std::remainder(angle, 360.0) * PI / 180);
    };
    return turn({0, 0, 1}, degrees.z) * turn({0, 1, 0}, degrees.y) * turn({1, 0, 0}, degrees.x);
}

Vector Rotation::toDegrees() const {
    Vector const toX = (*this)(Vector{1, 0, 0});
    Vector const toY = (*this)(Vector{0, 1, 0});
    Vector const toZ = (*this)(Vector{0, 0, 1});
    double const cosine = std::hypot(toX.x, toX.y);
    double const angleY = std::atan2(-toX.z, cosine);
    bool const isLocked = cosine < LOCKED;
    double const angleX = isLocked ? std::atan2(-toZ.y, toY.y) : std::atan2(toY.z, toZ.z);
    double const angleZ = isLocked ? 0 : std::atan2(toX.y, toX.x);
    return Vector{angleX, angleY, angleZ} * (180 / PI);
}

Vector Rotation::operator()(Vector const& v) const {
    Vector const axis{x, y, z};
    Vector const across = cross(axis, v) * 2.0;
    return v + across * w + cross(axis, across);
}

Rotation operator*(Rotation const& a, Rotation const& b) {
    return normalizedRotation(
        {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z, a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
         a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x, a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w});
}

}  // namespace vellum::viewport
