#pragma once

namespace vellum {

/// Three values: the vertex indices of a triangle (arrays of it go to glDrawElements as GL_UNSIGNED_INT), or
/// the colors of the X, Y and Z gizmo handles.
template <class A, class B = A, class C = A>
struct Tuple3 {
    A e0;
    B e1;
    C e2;
};

static_assert(sizeof(Tuple3<unsigned int>) == 12, "elements without gaps");

}  // namespace vellum
