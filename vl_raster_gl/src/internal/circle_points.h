#pragma once

#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/VL_AXIS.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/geometry/constants.h"

#include <array>
#include <cmath>

namespace vellum {

inline constexpr unsigned int CIRCLE_POINTS = 360;    // one per degree
inline constexpr float ONE_DEGREE = 0.017453292F;     // radians
inline constexpr float FACING_THRESHOLD = -0.01F;     // nearer to the viewer than the circle's center
inline constexpr unsigned int TAPE_FIRST_DEGREE = 5;  // where the band of a tape quarter begins
inline constexpr unsigned int TAPE_LAST_DEGREE = 85;  // and where it ends

/// The caps of a tape quarter meet its band at 5 and 85 degrees.
/// Deliberate (tape-cap-factors): the factors at 5 degrees are doubles, those at 85 the cosine and sine in
/// single precision, which differ in the last digits.
inline constexpr double TAPE_COS_FIRST = 0.9961946983130029;
inline constexpr double TAPE_SIN_FIRST = 0.0871557402186753;
inline constexpr double TAPE_COS_LAST = 0.08715580058482462;
inline constexpr double TAPE_SIN_LAST = 0.9961946930316474;

/// The point at a degree of the circle in the XY plane about the origin. The angle is a float, its sine and
/// cosine are taken in double.
inline Vector3<float> circlePoint(float radius, unsigned int degree) {
    double const t = static_cast<double>(static_cast<float>(degree) * ONE_DEGREE);
    double const r = static_cast<double>(radius);
    return {static_cast<float>(r * std::cos(t)), static_cast<float>(r * std::sin(t)), 0.0F};
}

using CirclePoints = std::array<Vector3<float>, CIRCLE_POINTS>;

/// The circle's points as `frame` places them.
inline CirclePoints circlePoints(Matrix4<float> const& frame, float radius) {
    float const* const m = frame.e;
    CirclePoints points;
    for (unsigned int i = 0; i < CIRCLE_POINTS; ++i) {
        Vector3<float> const p = circlePoint(radius, i);
        points[i] = {m[0] * p.x + m[4] * p.y + m[12], m[1] * p.x + m[5] * p.y + m[13],
                     m[2] * p.x + m[6] * p.y + m[14]};
    }
    return points;
}

/// The frame in which the XY circle becomes the circle around an axis, scaled: rotated by +90 degrees about Y
/// for X, by -90 about X for Y, not at all for Z. The cosine is that of the float nearest to a right angle.
inline Matrix4<float> circleAxisFrame(VL_AXIS axis, float scale) {
    constexpr float COSINE = -4.371139e-08F;
    float const s = scale;
    float const c = COSINE * scale;
    switch (axis) {
    case VL_AXIS_X:
        return {{c, 0, -s, 0, 0, s, 0, 0, s, 0, c, 0, 0, 0, 0, 1}};
    case VL_AXIS_Y:
        return {{s, 0, 0, 0, 0, c, -s, 0, 0, s, c, 0, 0, 0, 0, 1}};
    default:
        return {{s, 0, 0, 0, 0, s, 0, 0, 0, 0, s, 0, 0, 0, 0, 1}};
    }
}

/// The number of points of an ellipse, and the part of its circumference between two of them.
/// Deliberate (open-ellipse): 1/29 truncated to ten digits, so the last point lands just short of the first.
inline constexpr unsigned int ELLIPSE_POINTS = 30;
inline constexpr double ELLIPSE_STEP = 0.0344827586;

inline double ellipseAngle(unsigned int point) {
    constexpr double TWO_PI = 2.0 * constants::d::PI;
    return point * TWO_PI * ELLIPSE_STEP;
}

}  // namespace vellum
