#pragma once

#include "offscreen/OffscreenContext.h"
#include "viewport/drawing/Tiling.h"
#include "viewport/drawing/Viewer.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/images/Picture.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <vector>

namespace vellum::viewport {

/// A picture that a viewer draws off-screen, tile by tile, so that it can be larger than any buffer of the
/// driver.
///
///     TiledPicture const tiled(size, Tiling::of(size));
///     OffscreenContext context(tiled.contextSettings());
///     ... initialize GLEW, make layer and viewer ...
///     Result<Picture> const picture = tiled.draw(viewer, *layer, context);
///
/// Of the classes that draw, this one alone knows an off-screen context; a window calls Viewer::draw()
/// itself.
class TiledPicture {
public:
    TiledPicture(PictureSize const& size, Tiling const& tiling) : size(size), tiling(tiling) {}

    /// The buffer that draw() requires: as large as a tile with its margins and samples.
    OffscreenContext::Settings contextSettings() const;

    /// Draws the whole picture. A fault, without a file's name, when OpenGL reports an error. The context may
    /// be larger than contextSettings() asks for.
    ///
    /// A picture with a transparent background is drawn over black and over white: the difference is what
    /// shines through. The blending of OpenGL would leave opacities that are none.
    Result<Picture> draw(Viewer& viewer, Core_RL& layer, OffscreenContext& context) const;

    /// The distances of what the pixels show, see Picture::depths: of each pixel the nearest sample.
    std::vector<float> drawDepths(Viewer& viewer) const;

private:
    /// What a buffer holds, the top row first.
    Region _regionOfTile(int left, int top) const;
    Result<Picture> _drawOpaque(Viewer& viewer, Core_RL& layer, OffscreenContext& context) const;
    void _shrinkInto(Picture& picture, int left, int top, OffscreenContext const& context) const;
    template <class Draw>
    void _forEachTile(Draw const& draw) const;

    PictureSize size;
    Tiling tiling;
};

/// Makes what was drawn over black a picture with opacities, by the same drawn over white.
void removeBackground(Picture& overBlack, Picture const& overWhite);

}  // namespace vellum::viewport
