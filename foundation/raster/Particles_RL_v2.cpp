#include "foundation/raster/Particles_RL_v2.h"

namespace vellum {

Particles_RL_v2::Particles_RL_v2() = default;

Particles_RL_v2::~Particles_RL_v2() = default;

void Particles_RL_v2::clear() {}

void Particles_RL_v2::render(ParticleSystem_v2 const& /*system*/, bool /*keepFlag*/, bool /*rebuild*/,
                             float const& /*scale*/, float const& /*minMagnitude*/,
                             float const& /*maxMagnitude*/, Color4<float> const& /*minColor*/,
                             Color4<float> const& /*maxColor*/) {}

}  // namespace vellum
