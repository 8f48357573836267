#pragma once

namespace vellum {

/// A color: red, green, blue and opacity, each 0 to 1.
template <class T>
struct Color4 {
    T r;
    T g;
    T b;
    T a;
};

static_assert(sizeof(Color4<float>) == 16, "elements without gaps");

template <class T>
constexpr bool operator==(Color4<T> const& a, Color4<T> const& b) {
    return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a;
}
template <class T>
constexpr bool operator!=(Color4<T> const& a, Color4<T> const& b) {
    return !(a == b);
}

}  // namespace vellum
