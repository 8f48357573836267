#pragma once

namespace vellum {

/// Eight values, one per corner of a box.
template <class T>
struct Tuple8 {
    T e0;
    T e1;
    T e2;
    T e3;
    T e4;
    T e5;
    T e6;
    T e7;
};

static_assert(sizeof(Tuple8<float>) == 32, "elements without gaps");

}  // namespace vellum
