#pragma once

namespace vellum {

/// Two values.
template <class A, class B = A>
struct Tuple2 {
    A e0;
    B e1;
};

}  // namespace vellum
