#pragma once

#include <cmath>

namespace vellum {

/// A point or direction of the plane. A packed aggregate: arrays of it are vertex arrays.
template <class T>
struct Vector2 {
    T x;
    T y;
};

static_assert(sizeof(Vector2<float>) == 8 && sizeof(Vector2<double>) == 16, "elements without gaps");

template <class T>
constexpr Vector2<T> operator+(Vector2<T> const& a, Vector2<T> const& b) {
    return {a.x + b.x, a.y + b.y};
}
template <class T>
constexpr Vector2<T> operator-(Vector2<T> const& a, Vector2<T> const& b) {
    return {a.x - b.x, a.y - b.y};
}
template <class T>
constexpr Vector2<T> operator*(Vector2<T> const& a, T const& s) {
    return {a.x * s, a.y * s};
}

template <class T>
constexpr Vector2<T> operator/(Vector2<T> const& a, T const& s) {
    return {a.x / s, a.y / s};
}
template <class T>
T length(Vector2<T> const& a) {
    return std::sqrt(a.x * a.x + a.y * a.y);
}

/// Every component converted to U.
template <class U, class T>
constexpr Vector2<U> convert(Vector2<T> const& a) {
    return {static_cast<U>(a.x), static_cast<U>(a.y)};
}

}  // namespace vellum
