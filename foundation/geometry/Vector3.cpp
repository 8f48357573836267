#include "foundation/geometry/Vector3.h"

#include "foundation/geometry/constants.h"

#include <algorithm>

namespace vellum {

namespace {

using constants::f::PI;

constexpr double SHORTEST_AXIS = 1e-14;  // below it the directions count as parallel or opposite

}  // namespace

template <>
void Vector3<float>::calculateRotation(Vector3<float> const& from, Vector3<float> const& to,
                                       Vector3<float>& axis, float& angle) {
    // The outputs may be the inputs.
    Vector3<float> const a = from;
    float const cosine = dot(a, to);

    Vector3<float> const normal = cross(a, to);
    float const sine = length(normal);
    if (static_cast<double>(sine) > SHORTEST_AXIS) {
        axis = normal * (1.0F / sine);
        float const clamped = std::min(std::max(cosine, -1.0F), 1.0F);
        angle = static_cast<float>(std::acos(static_cast<double>(clamped)));
        return;
    }

    float const s1 = a.x * a.x + a.z * a.z;
    float const s2 = a.y * a.y + a.z * a.z;
    Vector3<float> const perpendicular{-a.z * s1, a.z * s2, a.x * s1 - a.y * s2};
    axis = perpendicular * (1.0F / length(perpendicular));
    angle = cosine > 0.0F ? 0.0F : PI;
}

}  // namespace vellum
