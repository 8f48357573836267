#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/ParticleSystemConstIterator_v2.h"
#include "foundation/geometry/ParticleSystem_v2.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

/// What the particle renderer has to write into its buffers, worked out particle by particle in the plainest way.
namespace particle_reference {

using vellum::Color4;
using vellum::ParticleChannel_v2;
using vellum::ParticleSystem_v2;
using vellum::Vector3;

using Record = std::array<float, 6>;

enum class Path { BUFFER, MEMORY, EFFECT };

struct Look {
    float scale = 2;
    float minMagnitude = 0.5F;
    float maxMagnitude = 3;
    Color4<float> minColor{0.1F, 0.9F, -0.2F, 1};
    Color4<float> maxColor{0.8F, 0.3F, 1.3F, 1};
    Color4<float> maxClampColor{1.5F, 0.25F, 0.75F, 1};
    unsigned int channel = ParticleChannel_v2::NONE;
    float percent = 100;
    unsigned int magnitude = 0;
};

inline Record record(Vector3<float> const& position, Vector3<float> const& color) {
    return {position.x, position.y, position.z, color.x, color.y, color.z};
}

inline float clamped(float const& value) {
    return value > 0 ? (value < 1 ? value : 1) : 0;
}

inline Vector3<float> clamped(Vector3<float> const& v) {
    return {clamped(v.x), clamped(v.y), clamped(v.z)};
}

inline float truncated(float const& value) {
    bool const fits = value > -2147483648.0F && value < 2147483648.0F;
    return fits ? static_cast<float>(std::abs(static_cast<int>(value))) : 2147483648.0F;
}

inline Vector3<float> ramp(Look const& look, float const& m, Vector3<float> const& degenerate) {
    Color4<float> const& a = look.minColor;
    Color4<float> const& b = look.maxColor;
    if (!(std::abs(look.maxMagnitude - look.minMagnitude) > 1e-14)) {
        return degenerate;
    }
    float const t = (m - look.minMagnitude) / (look.maxMagnitude - look.minMagnitude);
    if (t > 1) {
        return {look.maxClampColor.r, look.maxClampColor.g, look.maxClampColor.b};
    }
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

inline float lengthOf(Vector3<float> const& v) {
    return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
}

/// The color floats of one particle with the channel's values `vector` or `scalar`; type 0 for no channel.
inline Vector3<float> color(Path const& path, Look const& look, unsigned int const& type,
                            Vector3<float> const& vector, float const& scalar) {
    Vector3<float> const minColor{look.minColor.r, look.minColor.g, look.minColor.b};
    Vector3<float> const maxColor{look.maxColor.r, look.maxColor.g, look.maxColor.b};
    bool const isScalar = type == ParticleChannel_v2::SCALAR;
    bool const isVector = type == ParticleChannel_v2::VECTOR;
    unsigned int const magnitude = look.magnitude;
    bool const isComponent = magnitude >= 1 && magnitude <= 3;
    Vector3<float> const values = isVector ? vector : Vector3<float>{0, 0, 0};
    float const component = magnitude == 1 ? values.x : magnitude == 2 ? values.y : values.z;

    if (path == Path::EFFECT) {
        float const v = std::sqrt(scalar * scalar / 3);
        return isScalar ? Vector3<float>{v, v, v} : isVector ? vector : minColor;
    }
    if (path == Path::BUFFER) {
        float m = 0;
        if (type == 0) {
            return clamped(minColor);
        }
        if (isScalar) {
            m = scalar;
        } else if (isVector) {
            m = (isComponent ? truncated(component) : lengthOf(vector)) / look.scale;
        } else {
            m = lengthOf(minColor) / look.scale;
        }
        return clamped(ramp(look, m, minColor));
    }
    if (type == 0) {
        return maxColor;
    }
    if (!isComponent && !isScalar) {
        if (magnitude == 5) {
            return maxColor;
        }
        if (magnitude == 4) {
            return minColor;
        }
        return clamped(ramp(look, lengthOf(values) / look.scale, {0, 0, 0}));
    }
    float const m = isComponent ? truncated(component) : truncated(scalar);
    return clamped(ramp(look, m / look.scale, minColor));
}

/// Which of `count` particles are drawn.
inline std::vector<unsigned int> chosen(unsigned int const& count, float const& percent) {
    float const exact = static_cast<float>(count) * percent / 100;
    auto const target = exact > 0 ? std::min(static_cast<std::size_t>(exact), static_cast<std::size_t>(count))
                                  : std::size_t{0};
    std::vector<unsigned int> result;
    for (unsigned int visited = 0; visited < count && result.size() < target; ++visited) {
        float const p =
            visited == 0 ? 0 : static_cast<float>(result.size()) / static_cast<float>(visited) * 100;
        if (p <= percent) {
            result.push_back(visited);
        }
    }
    return result;
}

inline std::vector<Record> records(Path const& path, ParticleSystem_v2 const& system, Look const& look) {
    unsigned int type = 0;
    if (look.channel != ParticleChannel_v2::NONE) {
        ParticleChannel_v2 const* const found = system.findChannel(look.channel);
        type = found != nullptr ? found->type : 77;
    }
    std::vector<Record> all;
    vellum::ParticleSystemConstIterator_v2 particle;
    vellum::ParticleSystemConstIterator_v2 end;
    end.setEnd(&system);
    for (particle.setBegin(&system); particle != end; ++particle) {
        auto const [channels, index] = *particle;
        Vector3<float> const vector = type == ParticleChannel_v2::VECTOR
                                          ? channels[look.channel]->asVectors()[index]
                                          : Vector3<float>{};
        float const scalar =
            type == ParticleChannel_v2::SCALAR ? channels[look.channel]->asFloats()[index] : 0.0F;
        all.push_back(record(channels[0]->asVectors()[index], color(path, look, type, vector, scalar)));
    }
    std::vector<Record> result;
    for (unsigned int const index : chosen(system.size(), look.percent)) {
        result.push_back(all[index]);
    }
    return result;
}

/// A system with the channels position (0), velocity (1, vectors), heat (2, scalars) and odd (3, unknown type).
/// The values run through all signs and sizes, below and above the ranges of the tests.
inline void fill(ParticleSystem_v2& system, unsigned int const& count) {
    system.addChannel("position", ParticleChannel_v2::VECTOR);
    system.addChannel("velocity", ParticleChannel_v2::VECTOR);
    system.addChannel("heat", ParticleChannel_v2::SCALAR);
    system.addChannel("odd", 42);
    system.addParticles(count);
    unsigned int k = 0;
    for (vellum::ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr;
         chunk = chunk->next()) {
        for (unsigned int slot = 0; slot < chunk->count(); ++slot, ++k) {
            auto const f = static_cast<float>(k);
            chunk->channelData(0)->asVectors()[slot] = {f, -f, 0.5F * f};
            chunk->channelData(1)->asVectors()[slot] = {std::sin(f) * 7, std::cos(f * 0.7F) * 5,
                                                        static_cast<float>(k % 13) - 6.5F};
            chunk->channelData(2)->asFloats()[slot] = std::sin(f * 0.3F) * 6;
        }
    }
}

}  // namespace particle_reference
