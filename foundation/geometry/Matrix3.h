#pragma once

namespace vellum {

/// A rotation; nine elements, column by column.
template <class T>
struct Matrix3 {
    T e[9];
};

static_assert(sizeof(Matrix3<float>) == 36, "elements without gaps");

}  // namespace vellum
