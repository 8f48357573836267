#pragma once

#include "foundation/geometry/Color4.h"

namespace vellum::viewport {

/// The color of a surface to which its file gives none.
inline constexpr Color4<float> DEFAULT_COLOR{0.74F, 0.76F, 0.80F, 1.0F};

}  // namespace vellum::viewport
