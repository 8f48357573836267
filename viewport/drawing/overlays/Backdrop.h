#pragma once

#include "foundation/raster/Core_RL.h"
#include "viewport/drawing/overlays/Background.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/drawing/view/Region.h"
#include "viewport/drawing/view/ViewCamera.h"
#include "viewport/scene/GroundGrid.h"
#include "viewport/scene/Scene.h"

#include <vector>

namespace vellum::viewport {

/// Draws what lies behind a scene: a color that is lighter above, and the grid that gives the scene its
/// scale. In perspective the grid is the ground; in the other views it is a wall behind the models.
///
/// The layer must outlive it.
class Backdrop {
public:
    explicit Backdrop(Core_RL& layer) : layer(layer) {}

    /// Lays out the grid for a camera that has framed the scene.
    /// \param size of the whole picture
    void layOut(Scene const& scene, ViewCamera const& camera, PictureSize const& size);

    /// Fills the viewport with a part of the picture's background; with the whole of one with checkers.
    /// Touches no depth. State: none is left changed.
    void drawBackground(Background const& background, Region const& region, PictureSize const& size) const;

    /// Draws the grid with the current matrices, behind what is nearer. Writes no depth.
    /// \param ink the color of its lines, except those that are axes
    /// State: none is left changed.
    void drawGrid(Color4<float> const& ink, Sampling const& sampling) const;

private:
    Core_RL& layer;
    std::vector<ShadedSegment> segments;  // of the grid, in the frame of the scene
};

}  // namespace vellum::viewport
