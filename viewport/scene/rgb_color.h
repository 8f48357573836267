#pragma once

#include "foundation/geometry/Color4.h"

namespace vellum::viewport {

/// The opaque color of a number 0xRRGGBB.
inline Color4<float> colorOfRgb(unsigned int rgb) {
    auto const part = [rgb](unsigned int shift) { return static_cast<float>(rgb >> shift & 0xFFU) / 255.0F; };
    return {part(16), part(8), part(0), 1};
}

}  // namespace vellum::viewport
