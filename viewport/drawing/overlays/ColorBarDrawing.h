#pragma once

#include "foundation/raster/Core_RL.h"
#include "toolkit/ParticleRenderer.h"
#include "viewport/drawing/overlays/ColorBar.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/drawing/view/Region.h"

#include <memory>

namespace vellum::viewport {

/// Draws the colored area of a color bar at the right side of a picture, by the renderer of the particles themselves:
/// so it shows exactly their colors.
///
/// The layer must outlive it, and the context must be current until its end.
class ColorBarDrawing {
public:
    /// \param bar that is shown; laid out for pictures of one size
    ColorBarDrawing(Core_RL& layer, ColorBar bar, RampColors const& colors);

    /// Draws the part of it that lies in a part of the picture, over everything.
    /// State: both matrices, the point size.
    void draw(Region const& region, PictureSize const& size, Sampling const& sampling);

    ColorBar const& bar() const { return layout; }

private:
    Core_RL& layer;
    ColorBar layout;
    std::shared_ptr<ParticleSystem_v2 const> cells;
    toolkit::ParticleLook look;
    toolkit::ParticleRenderer renderer;
};

}  // namespace vellum::viewport
