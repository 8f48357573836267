#pragma once

#include "foundation/raster/Core_RL.h"
#include "toolkit/Framing.h"
#include "viewport/drawing/subjects/ParticleRenderer.h"
#include "viewport/drawing/subjects/ParticleStyle.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/scene/Scene.h"

namespace vellum::viewport {

/// Draws the particles of one file and the box that they are in, in the frame of the scene.
///
/// It expects the camera's matrices and a depth test. Layer and cloud must outlive it, and the context must be current
/// until its end.
class CloudDrawing {
public:
    /// \param unitsPerFileUnit of the scene, for sizes that are given in units of the file.
    CloudDrawing(Core_RL& layer, ParticleCloud const& cloud, ParticleStyle const& style,
                 double unitsPerFileUnit);

    /// Draws the particles.
    /// \param screen the screen's axes in the scene
    /// State: the point size.
    void draw(toolkit::ScreenAxes const& screen, Sampling const& sampling);

    /// Draws the lines of the particles' box, behind what is nearer. Writes no depth.
    /// State: none is left changed.
    void drawBox(Sampling const& sampling) const;

private:
    double _arrowSize() const;
    double _sizeForEffect(double sphereSize, Sampling const& sampling) const;

    Core_RL& layer;
    ParticleCloud const& cloud;
    ParticleStyle style;
    double unitsPerFileUnit;
    ParticleRenderer renderer;
};

}  // namespace vellum::viewport
