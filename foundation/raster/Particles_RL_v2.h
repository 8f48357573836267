#pragma once

#include "foundation/export.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "foundation/raster/Service_RL.h"

namespace vellum {

/// What an application knows of a renderer of particle systems. Here all operations do nothing.
///
/// The virtual operations stand in the order of the interface; their order is part of it.
class VL_FOUNDATION_EXPORT Particles_RL_v2 : public Service_RL<ParticleSystem_v2> {
public:
    Particles_RL_v2();
    ~Particles_RL_v2() override;

    /// Drops what the renderer holds of the particles that it drew last.
    virtual void clear();

    /// Draws nothing. The renderers' own operations of this name, which take more, are not virtual.
    virtual void render(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild, float const& scale,
                        float const& minMagnitude, float const& maxMagnitude, Color4<float> const& minColor,
                        Color4<float> const& maxColor);
};

}  // namespace vellum
