#pragma once

#include "foundation/geometry/Box2.h"
#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Obb3.h"
#include "foundation/geometry/Tuple8.h"

/// \file
/// The boxes as a program would draw them without the render layer: one function per kind, which sends the
/// same calls with the same values for every box. A separate shared library with the compiler flags of the
/// render layer, so that its calls reach OpenGL through the same kind of indirection.

#define VL_BY_HAND_EXPORT __attribute__((visibility("default")))

namespace vellum::benchmarks {

VL_BY_HAND_EXPORT void drawByHand(Box3<float> const* boxes, unsigned int const& count, bool const& wire);
VL_BY_HAND_EXPORT void drawByHand(Box3<float> const* boxes, Tuple8<Vector3<float>> const& colors,
                                  unsigned int const& count, bool const& wire);
VL_BY_HAND_EXPORT void drawByHand(Obb3<float> const* boxes, unsigned int const& count, bool const& wire);
VL_BY_HAND_EXPORT void drawByHand(Box2<float> const* boxes, unsigned int const& count, bool const& wire);

}  // namespace vellum::benchmarks
