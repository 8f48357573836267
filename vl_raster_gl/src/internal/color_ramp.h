#pragma once

#include "foundation/geometry/Vector3.h"

#include <cmath>

namespace vellum {

/// Which color a magnitude has: between two colors inside a range, a third one above it. Below the range the
/// line through the two colors goes on. All arithmetic is in single precision, in the order written here.
struct ColorRamp {
    Vector3<float> minColor;
    Vector3<float> maxColor;
    Vector3<float> maxClampColor;
    float minMagnitude;
    float maxMagnitude;

    float range() const { return maxMagnitude - minMagnitude; }

    /// Whether the range has no extent to place a magnitude in.
    bool isDegenerate() const { return !(std::fabs(range()) > 1e-14F); }

    /// The color of a magnitude, its components not limited. The range must not be degenerate.
    Vector3<float> colorOf(float const& magnitude) const {
        float const t = (magnitude - minMagnitude) / range();
        if (t > 1.0F) {
            return maxClampColor;
        }
        return minColor + (maxColor - minColor) * t;
    }
};

/// A component limited to 0 to 1; 0 for what is not a number.
inline float limitedToColor(float const& component) {
    float const raised = component > 0.0F ? component : 0.0F;
    return raised < 1.0F ? raised : 1.0F;
}

inline Vector3<float> limitedToColor(Vector3<float> const& color) {
    return {limitedToColor(color.x), limitedToColor(color.y), limitedToColor(color.z)};
}

/// The absolute value of a number cut to an integer of 32 bits. What does not fit into one, or is not a number,
/// gives 2147483648, as the conversion instructions of processors do.
inline float truncatedMagnitude(float const& value) {
    constexpr float LIMIT = 2147483648.0F;
    if (!(value > -LIMIT && value < LIMIT)) {
        return LIMIT;
    }
    return std::fabs(static_cast<float>(static_cast<int>(value)));
}

}  // namespace vellum
