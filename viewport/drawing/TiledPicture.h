#pragma once

#include "offscreen/OffscreenContext.h"
#include "viewport/drawing/Tiling.h"
#include "viewport/drawing/Viewer.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/images/Picture.h"
#include "viewport/text/Fault.h"

#include <vector>

namespace vellum::viewport {

/// A picture that a viewer draws off-screen, tile by tile, so that it can be larger than any buffer of the driver.
///
///     TiledPicture const tiled(size, Tiling::of(size));
///     OffscreenContext context(tiled.contextSettings());
///     ... initialize GLEW, make layer and viewer ...
///     Result<Picture> const picture = tiled.draw(viewer, *layer, context);
///
/// Of the classes that draw, this one alone knows an off-screen context; a window calls Viewer::draw() itself.
class TiledPicture {
public:
    TiledPicture(PictureSize const& size, Tiling const& tiling) : size(size), tiling(tiling) {}

    /// The buffer that draw() requires: as large as a tile with its margins and samples.
    OffscreenContext::Settings contextSettings() const;

    /// Draws the whole picture. A fault, without a file's name, when OpenGL reports an error.
    Result<Picture> draw(Viewer& viewer, Core_RL& layer, OffscreenContext& context) const;

private:
    Region _regionOfTile(int left, int top) const;
    void _shrinkInto(Picture& picture, int left, int top, std::vector<unsigned char> const& samples) const;

    PictureSize size;
    Tiling tiling;
};

}  // namespace vellum::viewport
