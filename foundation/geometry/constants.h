#pragma once

#include "foundation/geometry/Vector3.h"

/// The ratio of a circle's circumference to its diameter, as the nearest double and the nearest float.
namespace vellum::constants::d {

inline constexpr double PI = 3.14159265358979323846;

}  // namespace vellum::constants::d

namespace vellum::constants::f {

inline constexpr float PI = 3.14159265358979323846F;

}  // namespace vellum::constants::f

/// Constant vectors, named by their components: Z0 is 0, P1 is +1, N1 is -1. The fourth component of the
/// longer names has no data: longer names are directions, shorter ones points.
namespace vellum::constants::f {

inline constexpr Vector3<float> Z0_Z0_Z0{0.0F, 0.0F, 0.0F};

inline constexpr Vector3<float> P1_Z0_Z0_P1{1.0F, 0.0F, 0.0F};
inline constexpr Vector3<float> N1_Z0_Z0_P1{-1.0F, 0.0F, 0.0F};
inline constexpr Vector3<float> Z0_P1_Z0_P1{0.0F, 1.0F, 0.0F};
inline constexpr Vector3<float> Z0_N1_Z0_P1{0.0F, -1.0F, 0.0F};
inline constexpr Vector3<float> Z0_Z0_P1_P1{0.0F, 0.0F, 1.0F};
inline constexpr Vector3<float> Z0_Z0_N1_P1{0.0F, 0.0F, -1.0F};

}  // namespace vellum::constants::f
