#pragma once

namespace vellum {

/// Four values: a viewport (x, y, width, height), an orthographic box (left, right, bottom, top), or the
/// colors of the X, Y, Z and center gizmo handles.
template <class T>
struct Tuple4 {
    T e0;
    T e1;
    T e2;
    T e3;
};

static_assert(sizeof(Tuple4<float>) == 16, "elements without gaps");

}  // namespace vellum
