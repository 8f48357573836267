#include "viewport/drawing/overlays/painting.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace vellum::viewport {

namespace {

/// The red, green and blue of a color.
std::array<unsigned char, 3> bytesOf(Color4<float> const& color) {
    auto const byte = [](float part) {
        return static_cast<unsigned char>(std::lround(255 * std::clamp(part, 0.0F, 1.0F)));
    };
    return {byte(color.r), byte(color.g), byte(color.b)};
}

/// The bytes of a pixel; null outside of the picture.
unsigned char* pixelOf(Picture& picture, int x, int y) {
    if (x < 0 || y < 0 || x >= picture.width || y >= picture.height) {
        return nullptr;
    }
    return picture.pixels.data() +
           4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                static_cast<std::size_t>(x));
}

void blend(Picture& picture, std::array<unsigned char, 3> const& color, int x, int y, unsigned int coverage) {
    unsigned char* const pixel = pixelOf(picture, x, y);
    for (std::size_t i = 0; pixel != nullptr && i < 3; ++i) {
        unsigned int const mixed = pixel[i] * (255 - coverage) + color[i] * coverage + 127;
        pixel[i] = static_cast<unsigned char>(mixed / 255);
    }
}

void blend(Picture& picture, Color4<float> const& ink, PixelArea const& area, unsigned int coverage) {
    std::array<unsigned char, 3> const color = bytesOf(ink);
    for (int y = 0; y < area.height; ++y) {
        for (int x = 0; x < area.width; ++x) {
            blend(picture, color, area.left + x, area.top + y, coverage);
        }
    }
}

}  // namespace

void fill(Picture& picture, PixelArea const& area, Color4<float> const& color) {
    std::array<unsigned char, 3> const bytes = bytesOf(color);
    for (int y = 0; y < area.height; ++y) {
        for (int x = 0; x < area.width; ++x) {
            if (unsigned char* const pixel = pixelOf(picture, area.left + x, area.top + y)) {
                std::copy(bytes.begin(), bytes.end(), pixel);
            }
        }
    }
}

void drawFrame(Picture& picture, Color4<float> const& ink, PixelArea const& area, int thickness) {
    constexpr unsigned int STRENGTH = 150;
    int const outerLeft = area.left - thickness;
    int const outerWidth = area.width + 2 * thickness;
    blend(picture, ink, {outerLeft, area.top - thickness, outerWidth, thickness}, STRENGTH);
    blend(picture, ink, {outerLeft, area.top + area.height, outerWidth, thickness}, STRENGTH);
    blend(picture, ink, {outerLeft, area.top, thickness, area.height}, STRENGTH);
    blend(picture, ink, {area.left + area.width, area.top, thickness, area.height}, STRENGTH);
}

void drawMark(Picture& picture, Color4<float> const& ink, PixelArea const& area) {
    constexpr unsigned int STRENGTH = 220;
    blend(picture, ink, area, STRENGTH);
}

void drawText(Picture& picture, Color4<float> const& ink, TextMask const& text, int left, int top,
              unsigned int strength) {
    std::array<unsigned char, 3> const color = bytesOf(ink);
    for (int y = 0; y < text.height; ++y) {
        for (int x = 0; x < text.width; ++x) {
            unsigned int const coverage =
                text.coverage[static_cast<std::size_t>(y) * static_cast<std::size_t>(text.width) +
                              static_cast<std::size_t>(x)];
            blend(picture, color, left + x, top + y, coverage * strength / 255);
        }
    }
}

}  // namespace vellum::viewport
