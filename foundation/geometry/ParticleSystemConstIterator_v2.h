#pragma once

#include "foundation/export.h"
#include "foundation/geometry/ParticleChannelChunkData_v2.h"

namespace vellum {

class ParticleSystem_v2;
class ParticleSystemChunk_v2;

/// Visits the particles of a system one by one, chunk after chunk, and skips released ones.
///
///     ParticleSystemConstIterator_v2 particle;
///     ParticleSystemConstIterator_v2 end;
///     end.setEnd(&system);
///     for (particle.setBegin(&system); particle != end; ++particle) {
///         Vector3<float> const& position = (*particle).channels[0]->asVectors()[(*particle).index];
///     }
///
/// It is slow: for many particles, walk the chunks and their arrays. Adding and releasing particles and
/// compacting chunks invalidate it.
class VL_FOUNDATION_EXPORT ParticleSystemConstIterator_v2 {
public:
    /// Where the values of a particle are.
    struct Particle {
        ParticleChannelChunkData_v2* const* channels;  ///< of the particle's chunk, by channel id
        unsigned int index;                            ///< slot of the particle in each channel
    };

    ParticleSystemConstIterator_v2() = default;  ///< At no particle of no system.

    void setBegin(ParticleSystem_v2 const* system);  ///< Moves to the first particle, or to the end.
    void setEnd(ParticleSystem_v2 const* system);    ///< Moves past the last particle.

    ParticleSystemConstIterator_v2& operator++();  ///< To the next particle; must not be at the end.
    Particle operator*() const;                    ///< The current particle; must not be at the end.

    /// Whether both are at the same particle of the same system.
    bool operator==(ParticleSystemConstIterator_v2 const& other) const {
        return chunk == other.chunk && index == other.index && system == other.system;
    }
    bool operator!=(ParticleSystemConstIterator_v2 const& other) const { return !(*this == other); }

private:
    void _skipReleased();

    ParticleSystemChunk_v2 const* chunk = nullptr;  // null at the end
    unsigned int index = 0;                         // of the particle's entry in the chunk
    ParticleSystem_v2 const* system = nullptr;      // not owned
};

}  // namespace vellum
