#pragma once

#include "foundation/geometry/Color4.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/images/Picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
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
