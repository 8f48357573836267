#pragma once

#include "foundation/geometry/Color4.h"
#include "viewport/drawing/overlays/TextMask.h"
#include "viewport/files/images/Picture.h"

/// Draws over a finished picture. Columns and rows count from its upper left corner; what lies outside is
/// left out.
namespace vellum::viewport {

/// A part of a picture, pixels.
struct PixelArea {
    int left;
    int top;
    int width;
    int height;
};

/// Replaces all pixels of an area.
void fill(Picture& picture, PixelArea const& area, Color4<float> const& color);

/// Draws thin lines around an area, outside of it.
void drawFrame(Picture& picture, Color4<float> const& ink, PixelArea const& area, int thickness);

/// Draws the mark of a value beside a bar.
void drawMark(Picture& picture, Color4<float> const& ink, PixelArea const& area);

/// Draws a text.
/// \param strength 255: as other texts; less: paler
void drawText(Picture& picture, Color4<float> const& ink, TextMask const& text, int left, int top,
              unsigned int strength = 255);

}  // namespace vellum::viewport
