#pragma once

#include "foundation/geometry/Color4.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/images/Picture.h"

namespace vellum::viewport {

/// The squares that stand on a screen for what is transparent. They begin at the lower left corner of a
/// picture.
struct Checkers {
    static constexpr Color4<float> LIGHT{0.95F, 0.95F, 0.95F, 1};
    static constexpr Color4<float> DARK{0.84F, 0.84F, 0.84F, 1};

    /// The side of a square in a picture of this size, pixels.
    static int side(PictureSize const& size);

    /// Whether the square is dark that is so many squares from the lower left corner.
    static bool isDark(int column, int row) { return (column + row) % 2 != 0; }
};

/// Puts a picture with opacities over checkers; it is opaque then.
void layOverCheckers(Picture& picture);

}  // namespace vellum::viewport
