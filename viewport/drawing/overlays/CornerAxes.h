#pragma once

#include "foundation/raster/Core_RL.h"
#include "toolkit/Framing.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/drawing/view/Region.h"
#include "viewport/files/mesh/UpAxis.h"
#include "viewport/scene/Placement.h"

namespace vellum::viewport {

/// Draws the axes of the files in the lower left corner of a picture, as the camera sees them, with their
/// letters.
///
/// The layer must outlive it.
class CornerAxes {
public:
    /// \param up of the files
    explicit CornerAxes(Core_RL& layer, UpAxis up = UpAxis::Y) : layer(layer), turn(up) {}

    /// Draws the part of them that lies in a part of the picture.
    /// \param screen the screen's axes in the scene.
    /// \param ink the color of the letters.
    /// State: both matrices, the lights, that of Lit.
    void draw(toolkit::ScreenAxes const& screen, Region const& region, PictureSize const& size,
              Sampling const& sampling, Color4<float> const& ink) const;

private:
    void _drawLetter(unsigned int axis) const;

    Core_RL& layer;
    Turn turn;  // from the files to the scene
};

}  // namespace vellum::viewport
