#pragma once

#include "viewport/drawing/view/PictureSize.h"

namespace vellum::viewport {

/// How a picture is split into tiles that are drawn one after the other into a buffer of moderate size, each
/// pixel with several samples, for smooth edges. Plain arithmetic.
struct Tiling {
    int samplesPerSide;  ///< a pixel is the mean of this number squared
    int width;           ///< of a tile, pixels, without the margin
    int height;          ///< alike
    int margin;  ///< pixels drawn around each tile and discarded, so that lines ending outside keep their width

    /// Tiles of at most 1280 pixels along each side, as few as possible and as even as possible.
    static Tiling of(PictureSize const& size);

    /// As many along both sides, so that they have nearly the shape of the picture: for drawings that are
    /// made in clip space, as flat arrows, whose heads are as wide as the shape of the tile says.
    static Tiling ofSameShape(PictureSize const& size);

    /// For drawings that differ from tile to tile, because they read the framebuffer or use its coordinates:
    /// the whole picture is one tile, if it has at most 4096 pixels on each side.
    static Tiling ofOneTile(PictureSize const& size);

    int bufferWidth() const { return (width + 2 * margin) * samplesPerSide; }
    int bufferHeight() const { return (height + 2 * margin) * samplesPerSide; }
};

}  // namespace vellum::viewport
