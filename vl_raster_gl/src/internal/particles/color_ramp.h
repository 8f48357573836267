#pragma once

#include "internal/particles/ramp_arithmetic.h"

#include "foundation/geometry/Vector3.h"

#include <cmath>

namespace vellum {

/// The arithmetic of one number, with the results of the registers of the record writers.
struct OneLane {
    using Register = float;

    static float all(float value) { return value; }
    static float add(float a, float b) { return a + b; }
    static float subtract(float a, float b) { return a - b; }
    static float multiply(float a, float b) { return a * b; }
    static float divide(float a, float b) { return a / b; }
    static float greatest(float a, float b) { return a > b ? a : b; }  // b where a number is NaN
    static float least(float a, float b) { return a < b ? a : b; }     // b where a number is NaN
    static bool isAbove(float a, float b) { return a > b; }
    static float choose(bool condition, float yes, float no) { return condition ? yes : no; }
};

/// The color of a magnitude: interpolated between two colors inside a range, a third color above it,
/// extrapolated below it. All arithmetic is in single precision, in the order written here.
struct ColorRamp {
    Vector3<float> minColor;
    Vector3<float> maxColor;
    Vector3<float> maxClampColor;
    float minMagnitude;
    float maxMagnitude;

    float range() const { return maxMagnitude - minMagnitude; }

    /// Whether the range is empty, so that no position in it exists.
    bool isDegenerate() const { return !(std::fabs(range()) > 1e-14F); }

    /// The color of a magnitude, its components not limited. The range must not be degenerate.
    Vector3<float> colorOf(float magnitude) const {
        float const t = placeOnRamp<OneLane>(magnitude, minMagnitude, range());
        Vector3<float> const difference = maxColor - minColor;
        return {rampComponent<OneLane>(t, minColor.x, difference.x, maxClampColor.x),
                rampComponent<OneLane>(t, minColor.y, difference.y, maxClampColor.y),
                rampComponent<OneLane>(t, minColor.z, difference.z, maxClampColor.z)};
    }
};

/// A component limited to 0 to 1; 0 for NaN.
inline float limitedToColor(float component) {
    return limitedComponent<OneLane>(component);
}

inline Vector3<float> limitedToColor(Vector3<float> const& color) {
    return {limitedToColor(color.x), limitedToColor(color.y), limitedToColor(color.z)};
}

/// The absolute value of a number, truncated to a 32-bit integer. Values that do not fit and NaN give
/// 2147483648, like the conversion instructions of x86 processors.
inline float truncatedMagnitude(float value) {
    constexpr float LIMIT = 2147483648.0F;
    if (!(value > -LIMIT && value < LIMIT)) {
        return LIMIT;
    }
    return std::fabs(static_cast<float>(static_cast<int>(value)));
}

}  // namespace vellum
