#pragma once

#include "foundation/geometry/Color4.h"
#include "viewport/files/images/Picture.h"

namespace vellum::viewport {

/// What stands at the right side of a picture and says what colors mean: a ColorBar or a ColorLegend. It is
/// laid out for pictures of one size and drawn over the finished picture. Nothing here touches OpenGL.
///
/// It keeps its place whatever names it has to show: they are shortened in their middle.
class ColorKey {
public:
    virtual ~ColorKey() = default;

    /// Pixels that it needs at the picture's right side; 0 where it does not fit into the picture and is left
    /// out.
    virtual int reservedWidth() const = 0;

    bool isShown() const { return reservedWidth() > 0; }

    /// Draws it into a picture of the size that it is laid out for; nothing where it is not shown.
    /// \param ink the color of letters and lines
    virtual void draw(Picture& picture, Color4<float> const& ink) const = 0;
};

}  // namespace vellum::viewport
