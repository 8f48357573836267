#pragma once

#include "foundation/export.h"

#include <cmath>

namespace vellum {

/// A point, direction or color without alpha. A packed aggregate: arrays of it are passed to glVertexPointer
/// with size 3 and stride 0.
template <class T>
struct Vector3 {
    T x;
    T y;
    T z;

    /// Computes the axis and the angle (radians, 0 to pi) of the rotation of the direction `from` to the
    /// direction `to`. Both must be unit vectors. If they are parallel or opposite, the axis is some vector
    /// perpendicular to `from` and the angle is 0 or pi.
    ///
    /// Deliberate (unguarded-directions): for a zero `from` and one such as (s, s, 0), the axis is NaN.
    /// Defined for float.
    static void calculateRotation(Vector3 const& from, Vector3 const& to, Vector3& axis, float& angle);
};

static_assert(sizeof(Vector3<float>) == 12 && sizeof(Vector3<double>) == 24, "elements without gaps");

template <>
VL_FOUNDATION_EXPORT void Vector3<float>::calculateRotation(Vector3<float> const& from,
                                                            Vector3<float> const& to, Vector3<float>& axis,
                                                            float& angle);

template <class T>
constexpr Vector3<T> operator+(Vector3<T> const& a, Vector3<T> const& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
template <class T>
constexpr Vector3<T> operator-(Vector3<T> const& a, Vector3<T> const& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
template <class T>
constexpr Vector3<T> operator-(Vector3<T> const& a) {
    return {-a.x, -a.y, -a.z};
}
template <class T>
constexpr Vector3<T> operator*(Vector3<T> const& a, T const& s) {
    return {a.x * s, a.y * s, a.z * s};
}
template <class T>
constexpr Vector3<T> operator/(Vector3<T> const& a, T const& s) {
    return {a.x / s, a.y / s, a.z / s};
}
template <class T>
constexpr T dot(Vector3<T> const& a, Vector3<T> const& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
template <class T>
constexpr Vector3<T> cross(Vector3<T> const& a, Vector3<T> const& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
template <class T>
T length(Vector3<T> const& a) {
    return std::sqrt(dot(a, a));
}

/// The vector scaled to length 1 by multiplication with the reciprocal of its length. A zero vector gives
/// NaN.
template <class T>
Vector3<T> normalized(Vector3<T> const& a) {
    return a * (T(1) / length(a));
}

/// Every component converted to U.
template <class U, class T>
constexpr Vector3<U> convert(Vector3<T> const& a) {
    return {static_cast<U>(a.x), static_cast<U>(a.y), static_cast<U>(a.z)};
}

}  // namespace vellum
