#pragma once

#include "foundation/geometry/Vector2.h"

#include <string>

namespace vellum {
class Core_RL;
}

/// Labels of line segments: small letters, digits and some punctuation. Other characters are blank.
namespace vellum::gallery {

/// Draws a line of text in the XY plane, in the current color and line width. `origin` is the left end of the
/// base line, `size` the height of a tall letter.
void drawText(Core_RL& layer, std::string const& text, Vector2<float> const& origin, float size);

/// Width of the text that drawText() draws.
float textWidth(std::string const& text, float size);

}  // namespace vellum::gallery
