#pragma once

#include "foundation/geometry/Color4.h"

namespace vellum::viewport {

/// What is behind a scene: a color that blends from one at the top to one at the bottom, or nothing.
struct Background {
    Color4<float> top{0.235F, 0.275F, 0.335F, 1};
    Color4<float> bottom{0.085F, 0.098F, 0.122F, 1};
    bool isTransparent = false;  ///< the picture is opaque only where something is drawn
    bool isCheckered = false;    ///< what is transparent is drawn as checkers, for a screen

    static Background of(Color4<float> const& color) { return {color, color, false}; }

    /// Whether lines on it must be dark to be seen.
    bool isLight() const {
        auto const luminance = [](Color4<float> const& c) {
            return 0.2126F * c.r + 0.7152F * c.g + 0.0722F * c.b;
        };
        return !isTransparent && (luminance(top) + luminance(bottom)) / 2 > 0.5F;
    }

    /// The color of lines and letters on it. Nobody knows what a transparent picture will lie on: there it is
    /// one that can be read on black and on white.
    Color4<float> ink() const {
        if (isTransparent) {
            return {0.45F, 0.48F, 0.53F, 1};
        }
        return isLight() ? Color4<float>{0.13F, 0.15F, 0.19F, 1} : Color4<float>{0.86F, 0.88F, 0.92F, 1};
    }
};

}  // namespace vellum::viewport
