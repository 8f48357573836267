#include "viewport/drawing/Tiling.h"

#include <algorithm>

namespace vellum::viewport {

namespace {

constexpr int MARGIN = 16;

// Above this number of pixels a picture is so fine that the multisampling of the buffer is smooth enough.
constexpr double LARGEST_SMOOTHED = 20e6;
constexpr int LARGEST_TILE = 1280;

int tileCount(int pictureSide, int largestTile) {
    return (pictureSide + largestTile - 1) / largestTile;
}

/// The fewest tiles, since every further one costs another drawing of the whole scene, and of the same size.
Tiling tilingOf(PictureSize const& size, double largestSmoothed, int columns, int rows) {
    bool const isSmoothed = static_cast<double>(size.width) * size.height <= largestSmoothed;
    return {isSmoothed ? 2 : 1, (size.width + columns - 1) / columns, (size.height + rows - 1) / rows,
            MARGIN};
}

}  // namespace

Tiling Tiling::of(PictureSize const& size) {
    return tilingOf(size, LARGEST_SMOOTHED, tileCount(size.width, LARGEST_TILE),
                    tileCount(size.height, LARGEST_TILE));
}

Tiling Tiling::ofSameShape(PictureSize const& size) {
    int const count = tileCount(std::max(size.width, size.height), LARGEST_TILE);
    return tilingOf(size, LARGEST_SMOOTHED, count, count);
}

Tiling Tiling::ofOneTile(PictureSize const& size) {
    // Four times as many samples as pixels, each in the buffer four times, should take no more than some 250
    // MB.
    constexpr double LARGEST_SMOOTHED_TILE = 2e6;
    constexpr int LARGEST_ONE_TILE = 4096;
    return tilingOf(size, LARGEST_SMOOTHED_TILE, tileCount(size.width, LARGEST_ONE_TILE),
                    tileCount(size.height, LARGEST_ONE_TILE));
}

}  // namespace vellum::viewport
