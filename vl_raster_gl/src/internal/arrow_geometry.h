#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/geometry/Vector3.h"

namespace vellum {

inline constexpr float SHORTEST_DIRECTION = 1e-14F;   // vectors up to this length have no direction
inline constexpr float HEAD_PER_LENGTH = 0.333F;      // the longest head, as a part of its arrow
inline constexpr float HEAD_WIDTH_PER_LENGTH = 0.2F;  // half the head's width, as a part of its length
inline constexpr float HEAD_TO_SKIP = 0.0001F;  // arrows shorter than this part of their head are left out
// Deliberate (arrow-base-shades): a single arrow and one from arrays differ.
inline constexpr float HEAD_BASE_SHADE = 0.75F;          // of a single arrow
inline constexpr float BUFFERED_HEAD_BASE_SHADE = 0.8F;  // and of arrows in arrays
inline constexpr float BARB_TANGENT = 0.5F;              // of the angle between a flat arrow and its barbs
inline constexpr Color4<float> DEFAULT_ARROW_COLOR{240.0F / 255.0F, 248.0F / 255.0F, 1.0F, 1.0F};

// No float lies between this one and the decimal 1e-14, so a comparison with either gives the same result.
static_assert(static_cast<double>(SHORTEST_DIRECTION) <= 1e-14);

inline bool hasDirection(float length) {
    return length > SHORTEST_DIRECTION;
}

/// The horizontal direction across an arrow, before normalization: (x, 0, z). For an arrow along Y it is (1,
/// 0, 0).
struct HeadSide {
    float x;
    float z;
    float length;  // above 0, or NaN: never divides by 0

    explicit HeadSide(Vector3<float> const& direction) {
        float const sideways = vellum::length(Vector3<float>{-direction.z, 0.0F, direction.x});
        bool const isSlanted = hasDirection(sideways);
        x = isSlanted ? -direction.z : 1.0F;
        z = isSlanted ? direction.x : 0.0F;
        length = isSlanted ? sideways : 1.0F;
    }
    HeadSide(float sideX, float sideZ, float sideLength) : x(sideX), z(sideZ), length(sideLength) {}
};

/// The four corners of an arrow head's base, around the point where the head begins.
///
///        K2 ---- K3
///        |   B   |        b up, a to the right, the arrow away from the reader
///        K1 ---- K4
struct ArrowHead {
    Vector3<float> corners[4];  // K1 to K4

    /// \param direction of the arrow; need not be a unit vector. For a zero direction the corners are NaN.
    /// \param base where the head begins.
    /// \param halfWidth half the side of the base.
    ArrowHead(Vector3<float> const& direction, Vector3<float> const& base, float halfWidth)
        : ArrowHead(direction, HeadSide(direction), base, halfWidth) {}

    /// The same with the precomputed side of the direction.
    ArrowHead(Vector3<float> const& direction, HeadSide const& side, Vector3<float> const& base,
              float halfWidth) {
        Vector3<float> const a = Vector3<float>{side.x, 0.0F, side.z} * (1.0F / side.length);
        Vector3<float> const b = normalized(cross(a, direction));
        Vector3<float> const aw = a * halfWidth;
        Vector3<float> const bw = b * halfWidth;
        corners[0] = base - aw - bw;
        corners[1] = base - aw + bw;
        corners[2] = base + aw + bw;
        corners[3] = base + aw - bw;
    }
};

/// The color of a head's base: darker than the arrow, and opaque.
inline Color4<float> headBaseColor(Color4<float> const& arrow, float shade) {
    return {arrow.r * shade, arrow.g * shade, arrow.b * shade, 1.0F};
}

}  // namespace vellum
