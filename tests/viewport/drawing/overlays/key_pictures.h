#pragma once

#include "foundation/geometry/Color4.h"
#include "viewport/drawing/overlays/TextMask.h"
#include "viewport/drawing/overlays/painting.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/images/Picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

/// Pictures that keys of colors are drawn into.
namespace vellum::viewport::key_pictures {

constexpr unsigned char BLANK = 10;

inline Picture blank(PictureSize const& size) {
    Picture picture;
    picture.width = size.width;
    picture.height = size.height;
    picture.pixels.assign(std::size_t{4} * static_cast<std::size_t>(size.width * size.height), BLANK);
    return picture;
}

inline unsigned char const* pixelOf(Picture const& picture, int x, int y) {
    return picture.pixels.data() + 4 * static_cast<std::size_t>(y * picture.width + x);
}

inline bool isBlank(Picture const& picture, int x, int y) {
    unsigned char const* const pixel = pixelOf(picture, x, y);
    return std::all_of(pixel, pixel + 3, [](unsigned char part) { return part == BLANK; });
}

inline void expectColor(Picture const& picture, int x, int y, Color4<float> const& color) {
    unsigned char const* const pixel = pixelOf(picture, x, y);
    float const parts[3] = {color.r, color.g, color.b};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(pixel[i], 255 * parts[i], 1) << x << ", " << y << ", channel " << i;
    }
}

/// Whether a text stands at a place of a picture that was blank, each pixel of it, with nothing else in its
/// area.
inline bool isTextAt(Picture const& picture, Color4<float> const& ink, TextMask const& text, int left,
                     int top, unsigned int strength) {
    float const parts[3] = {ink.r, ink.g, ink.b};
    for (int y = 0; y < text.height; ++y) {
        for (int x = 0; x < text.width; ++x) {
            unsigned int const coverage =
                text.coverage[static_cast<std::size_t>(y * text.width + x)] * strength / 255;
            for (std::size_t i = 0; i < 3; ++i) {
                double const expected =
                    BLANK + (255.0 * static_cast<double>(parts[i]) - BLANK) * coverage / 255;
                if (std::abs(pixelOf(picture, left + x, top + y)[i] - expected) > 1.5) {
                    return false;
                }
            }
        }
    }
    return true;
}

/// Where a whole text stands within an area of a picture; nothing: it is nowhere.
inline std::optional<PixelArea> findText(Picture const& picture, Color4<float> const& ink,
                                         TextMask const& text, PixelArea const& area,
                                         unsigned int strength = 255) {
    int const lastLeft = std::min(picture.width, area.left + area.width) - text.width;
    int const lastTop = std::min(picture.height, area.top + area.height) - text.height;
    for (int top = std::max(0, area.top); top <= lastTop; ++top) {
        for (int left = std::max(0, area.left); left <= lastLeft; ++left) {
            if (isTextAt(picture, ink, text, left, top, strength)) {
                return PixelArea{left, top, text.width, text.height};
            }
        }
    }
    return std::nullopt;
}

/// Whether the pixels at all four borders are blank.
inline bool isBorderBlank(Picture const& picture) {
    bool isAllBlank = true;
    for (int x = 0; x < picture.width; ++x) {
        isAllBlank = isAllBlank && isBlank(picture, x, 0) && isBlank(picture, x, picture.height - 1);
    }
    for (int y = 0; y < picture.height; ++y) {
        isAllBlank = isAllBlank && isBlank(picture, 0, y) && isBlank(picture, picture.width - 1, y);
    }
    return isAllBlank;
}

/// The first and the last column that is not blank.
inline std::pair<int, int> touchedColumns(Picture const& picture) {
    std::pair<int, int> columns{picture.width, -1};
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (!isBlank(picture, x, y)) {
                columns = {std::min(columns.first, x), std::max(columns.second, x)};
            }
        }
    }
    return columns;
}

}  // namespace vellum::viewport::key_pictures
