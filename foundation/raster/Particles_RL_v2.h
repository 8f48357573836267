#pragma once

#include "foundation/export.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "foundation/raster/Service_RL.h"

namespace vellum {

/// The abstract renderer of particle systems. The operations of this class are empty.
///
/// The order of the virtual operations is part of the interface.
class VL_FOUNDATION_EXPORT Particles_RL_v2 : public Service_RL<ParticleSystem_v2> {
public:
    Particles_RL_v2();
    ~Particles_RL_v2() override;

    /// Drops the data of the particles that were drawn last.
    virtual void clear();

    /// Draws nothing. Renderers have further operations of this name, with more arguments, which are not
    /// virtual.
    virtual void render(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild, float const& scale,
                        float const& minMagnitude, float const& maxMagnitude, Color4<float> const& minColor,
                        Color4<float> const& maxColor);
};

}  // namespace vellum
