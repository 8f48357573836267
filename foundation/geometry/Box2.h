#pragma once

#include "foundation/geometry/Vector2.h"

namespace vellum {

/// An upright rectangle. Its corners in drawing order:
///
///     3 --- 2  max
///     |     |
///     0 --- 1
///     min
template <class T>
struct Box2 {
    Vector2<T> min;
    Vector2<T> max;
};

static_assert(sizeof(Box2<float>) == 16 && sizeof(Box2<double>) == 32, "elements without gaps");

}  // namespace vellum
