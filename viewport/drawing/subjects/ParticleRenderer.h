#pragma once

#include "Particles_RL_GL_v2.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "foundation/raster/Core_RL.h"
#include "viewport/drawing/subjects/ParticleStyle.h"

#include <memory>

namespace vellum::viewport {

/// Draws the particles of one system, with their positions in channel 0 and their color vectors in channel 1, through
/// the library's renderer. The particles must not change while it lives, and the context that it draws in must be
/// current until its end. The layer must outlive it.
class ParticleRenderer {
public:
    ParticleRenderer(Core_RL& layer, std::shared_ptr<ParticleSystem_v2 const> const& system,
                     ParticleStyle const& style);
    ~ParticleRenderer();
    ParticleRenderer(ParticleRenderer&&) = default;

    /// Draws them with the current matrices. `size` is that of the library's effect: pixels of a point, the width of
    /// a sphere in clip space, half the length of an arrow for a vector of length 1. The style's size is ignored.
    /// State: the point size.
    void draw(float size);

    /// Whether the driver can draw the particles so. Spheres and arrows require geometry stages.
    static bool isModeSupported(Core_RL& layer, ParticleMode mode);

private:
    Core_RL* layer;
    std::shared_ptr<ParticleSystem_v2 const> system;
    ParticleStyle style;
    std::unique_ptr<Particles_RL_GL_v2> renderer;
    bool isFilled = false;  // the renderer has seen the particles
};

}  // namespace vellum::viewport
