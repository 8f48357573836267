#pragma once

#include "foundation/geometry/Vector3.h"

namespace vellum {

/// An upright box. Corner i takes x from `max` when bit 0 of i is set (else from `min`), y when bit 1 is set
/// and z when bit 2 is set:
///
///          6 ------- 7
///         /|        /|        y
///        2 ------- 3 |        |
///        | 4 ------|- 5       o-- x
///        |/        |/        /
///        0 ------- 1        z points away from the reader
template <class T>
struct Box3 {
    Vector3<T> min;
    Vector3<T> max;
};

static_assert(sizeof(Box3<float>) == 24 && sizeof(Box3<double>) == 48, "elements without gaps");

}  // namespace vellum
