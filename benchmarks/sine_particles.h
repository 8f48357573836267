#pragma once

#include "foundation/geometry/ParticleSystem_v2.h"

#include <cmath>
#include <cstddef>
#include <vector>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::benchmarks {

/// Particles in a cube of side 2 about the origin; channel 1 holds velocities of up to 1.
inline void makeParticles(ParticleSystem_v2& system, unsigned int count) {
    system.addChannel("position", ParticleChannel_v2::VECTOR);
    system.addChannel("velocity", ParticleChannel_v2::VECTOR);
    system.addParticles(count);
    float k = 0;
    for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        Vector3<float>* const positions = chunk->channelData(0)->asVectors();
        Vector3<float>* const velocities = chunk->channelData(1)->asVectors();
        for (unsigned int slot = 0; slot < chunk->count(); ++slot, ++k) {
            positions[slot] = {std::sin(0.37F * k), std::cos(0.23F * k), std::sin(0.11F * k)};
            velocities[slot] = {std::sin(0.71F * k), 0, 0};
        }
    }
}

/// The pixels of a square framebuffer, to compare what both sides have drawn.
inline std::vector<unsigned char> readSquare(int side) {
    std::vector<unsigned char> pixels(std::size_t{4} * static_cast<std::size_t>(side) *
                                      static_cast<std::size_t>(side));
    glReadPixels(0, 0, side, side, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

}  // namespace vellum::benchmarks
