#include "viewport/drawing/Tiling.h"

namespace vellum::viewport {

namespace {

constexpr int MARGIN = 16;

/// The side of the fewest tiles, all but the last equal: every further one costs another drawing of the whole scene.
int tileSide(int pictureSide, int largestTile) {
    int const tiles = (pictureSide + largestTile - 1) / largestTile;
    return (pictureSide + tiles - 1) / tiles;
}

Tiling tilingOf(PictureSize const& size, double largestSmoothed, int largestTile) {
    bool const isSmoothed = static_cast<double>(size.width) * size.height <= largestSmoothed;
    return {isSmoothed ? 2 : 1, tileSide(size.width, largestTile), tileSide(size.height, largestTile),
            MARGIN};
}

}  // namespace

Tiling Tiling::of(PictureSize const& size) {
    // Above this number of pixels a picture is so fine that the multisampling of the buffer is smooth enough.
    constexpr double LARGEST_SMOOTHED = 20e6;
    constexpr int LARGEST_TILE = 1280;
    return tilingOf(size, LARGEST_SMOOTHED, LARGEST_TILE);
}

Tiling Tiling::ofOneTile(PictureSize const& size) {
    // Four times as many samples as pixels, each in the buffer four times, should take no more than some 250 MB.
    constexpr double LARGEST_SMOOTHED = 2e6;
    constexpr int LARGEST_TILE = 4096;
    return tilingOf(size, LARGEST_SMOOTHED, LARGEST_TILE);
}

}  // namespace vellum::viewport
