#pragma once

#include "Particles_RL_GL_v2.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "foundation/raster/Core_RL.h"
#include "viewport/scene/ParticleLook.h"

#include <memory>
#include <optional>

namespace vellum::viewport {

/// Draws the particles of one system with their positions in channel 0 and what colors show in channel 1, through
/// the library's renderer. The particles must not change while it lives, and the context that it draws in must be
/// current until its end.
class ParticleRenderer {
public:
    struct Look {
        ParticleMode mode;
        std::optional<ParticleScale> scale;  ///< nothing: all particles have the high color
        RampColors colors;
        float percent;
    };

    ParticleRenderer(Core_RL& layer, std::shared_ptr<ParticleSystem_v2 const> const& system,
                     Look const& look);
    ~ParticleRenderer();
    ParticleRenderer(ParticleRenderer&&) = default;

    /// Draws them with the current matrices. `size` is that of the effect: pixels of a point, the width of a sphere
    /// in clip space, half the length of an arrow for a vector of length 1.
    /// State: the point size.
    void draw(float size);

    /// Whether the driver can draw spheres and arrows, which take geometry stages.
    static bool isModeSupported(Core_RL& layer, ParticleMode mode);

private:
    Core_RL* layer;
    std::shared_ptr<ParticleSystem_v2 const> system;
    Look look;
    std::unique_ptr<Particles_RL_GL_v2> renderer;
    bool _isFilled = false;  // the renderer has seen the particles
};

}  // namespace vellum::viewport
