#pragma once

#include "viewport/drawing/view/PictureSize.h"

#include <algorithm>
#include <cmath>

/// The sizes that all keys of colors share, so that they stand in the same place.
namespace vellum::viewport {

struct KeySizes {
    explicit KeySizes(PictureSize const& size)
        : text(std::max(10, static_cast<int>(std::lround(17 * size.scale()))))
        , line(std::max(1, static_cast<int>(std::lround(size.scale()))))
        , swatch(std::max(5, static_cast<int>(std::lround(18 * size.scale()))))
        , margin(text)
        , narrowest(8 * text)
        , widest(static_cast<int>(0.4 * size.width)) {}

    int text;       ///< height of a line of text, pixels, here and below
    int line;       ///< thickness of frames and marks
    int swatch;     ///< width of a colored area
    int margin;     ///< beside the key, at both sides
    int narrowest;  ///< the key with its margins, so that most names fit over it
    int widest;     ///< if it needs more, it is left out
};

}  // namespace vellum::viewport
