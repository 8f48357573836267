#include "toolkit/particle_arrays.h"

#include "foundation/geometry/ParticleSystemChunk_v2.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace vellum::toolkit {

namespace {

constexpr char POSITION[] = "position";

/// Releases particles at the end. The slots of a compacted chunk are the particles in order.
void releaseLast(ParticleSystem_v2& system, unsigned int count) {
    std::vector<ParticleSystemChunk_v2*> chunks;
    for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        chunks.push_back(chunk);
    }
    for (auto chunk = chunks.rbegin(); chunk != chunks.rend() && count != 0; ++chunk) {
        unsigned int const live = (*chunk)->count();
        unsigned int const released = std::min(count, live);
        for (unsigned int i = 1; i <= released; ++i) {
            (*chunk)->release(live - i);
        }
        (*chunk)->compact();
        count -= released;
    }
}

float* elementsOf(ParticleChannelChunkData_v2& data, float const* /*type*/) {
    return data.asFloats();
}

Vector3<float>* elementsOf(ParticleChannelChunkData_v2& data, Vector3<float> const* /*type*/) {
    return data.asVectors();
}

/// \param channel of the type of the values, of which there are as many as particles
template <class T>
void write(ParticleSystem_v2& system, unsigned int channel, Span<T> values) {
    system.compact();
    T const* from = values.data();
    for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        std::copy(from, from + chunk->count(), elementsOf(*chunk->channelData(channel), from));
        from += chunk->count();
    }
}

template <class T>
bool set(ParticleSystem_v2& system, char const* name, unsigned int type, Span<T> values) {
    if (name == nullptr || *name == '\0' || values.size() != system.size()) {
        return false;
    }
    unsigned int const channel = system.addChannel(name, type);
    if (channel == ParticleChannel_v2::NONE) {
        return false;
    }
    write(system, channel, values);
    return true;
}

}  // namespace

bool setPositions(ParticleSystem_v2& system, Span<Vector3<float>> positions) {
    bool const isFirst = system.channelCount() == 0 || system.channelId(POSITION) == 0;
    if (!isFirst || positions.size() > std::numeric_limits<unsigned int>::max() ||
        system.addChannel(POSITION, ParticleChannel_v2::VECTOR) == ParticleChannel_v2::NONE) {
        return false;
    }
    auto const count = static_cast<unsigned int>(positions.size());
    system.compact();
    if (count > system.size()) {
        system.addParticles(count - system.size());
    } else {
        releaseLast(system, system.size() - count);
    }
    write(system, 0, positions);
    return true;
}

bool setChannel(ParticleSystem_v2& system, char const* name, Span<Vector3<float>> values) {
    return set(system, name, ParticleChannel_v2::VECTOR, values);
}

bool setChannel(ParticleSystem_v2& system, char const* name, Span<float> values) {
    return set(system, name, ParticleChannel_v2::SCALAR, values);
}

}  // namespace vellum::toolkit
