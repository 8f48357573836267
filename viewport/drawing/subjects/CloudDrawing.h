#pragma once

#include "foundation/geometry/Matrix4.h"
#include "foundation/raster/Core_RL.h"
#include "toolkit/ParticleRenderer.h"
#include "viewport/drawing/subjects/ParticleStyle.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/scene/Scene.h"

#include <optional>

namespace vellum::viewport {

/// Draws the particles of one file and the box that they are in, in the frame of the scene.
///
/// It expects the camera's matrices and a depth test. Layer and cloud must outlive it, and the context must
/// be current until its end.
class CloudDrawing {
public:
    CloudDrawing(Core_RL& layer, ParticleCloud const& cloud, ParticleStyle const& style);

    /// Draws only a part, 0 to 1, of the points and spheres that the style asks for, evenly chosen. Arrows
    /// are drawn all.
    void setDetail(double part);

    /// Where the cloud is drawn; nothing: where the scene has it. See Moved.
    void setPlace(std::optional<Matrix4<double>> const& matrix) { place = matrix; }
    std::optional<Matrix4<double>> const& movedBy() const { return place; }

    /// Draws the particles.
    /// State: that of toolkit::drawParticles().
    void draw(Sampling const& sampling);

    /// What draw() has drawn last, and how.
    toolkit::ParticleLook const& drawnLook() const { return look; }
    toolkit::ParticleMode drawnMode() const { return drawn.mode; }
    toolkit::ParticleDrawing const& drawing() const { return drawn; }

    /// The width of the lines of arrows.
    static float arrowWidth(Sampling const& sampling);

    /// Draws the lines of the particles' box, behind what is nearer. Writes no depth.
    /// \param ink the color of the lines, which are paler
    /// State: none is left changed.
    void drawBox(Sampling const& sampling, Color4<float> const& ink) const;

private:
    double _size(Sampling const& sampling) const;

    Core_RL& layer;
    ParticleCloud const& cloud;
    ParticleStyle style;
    toolkit::ParticleLook look;
    toolkit::ParticleRenderer renderer;
    toolkit::ParticleDrawing drawn{toolkit::ParticlePath::NONE, toolkit::ParticleMode::POINTS};
    std::optional<Matrix4<double>> place;
};

}  // namespace vellum::viewport
