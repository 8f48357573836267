#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/EvenChoice.h"
#include "toolkit/ParticleLook.h"

#include <algorithm>
#include <cmath>

/// \file
/// What is read of particles, by all that prepare them for drawing.

namespace vellum::toolkit {

inline bool isFinite(Vector3<float> const& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

inline bool isOfType(ParticleSystem_v2 const& system, unsigned int channel, unsigned int type) {
    ParticleChannel_v2 const* const record = system.findChannel(channel);
    return record != nullptr && record->type == type;
}

/// The number that colors show of each particle of a chunk; 0 without a channel of vectors or scalars.
class ShownValues {
public:
    ShownValues(ParticleSystemChunk_v2 const& chunk, unsigned int channel, ParticleQuantity quantity)
        : quantity(quantity) {
        ParticleChannelChunkData_v2* const data = chunk.channelData(channel);
        vectors = data != nullptr ? data->asVectors() : nullptr;
        scalars = data != nullptr ? data->asFloats() : nullptr;
    }

    double operator[](unsigned int slot) const {
        if (vectors == nullptr) {
            return scalars != nullptr ? static_cast<double>(scalars[slot]) : 0.0;
        }
        switch (quantity) {
        case ParticleQuantity::X:
            return static_cast<double>(vectors[slot].x);
        case ParticleQuantity::Y:
            return static_cast<double>(vectors[slot].y);
        case ParticleQuantity::Z:
            return static_cast<double>(vectors[slot].z);
        case ParticleQuantity::LENGTH:
            break;
        }
        return length(convert<double>(vectors[slot]));
    }

    bool hasValues() const { return vectors != nullptr || scalars != nullptr; }

    Vector3<float> const* vectors;  ///< null where the channel has another type

private:
    float const* scalars;
    ParticleQuantity quantity;
};

/// So that vectors divided by units are numbers, and not 0.
constexpr double SMALLEST_UNIT = 1e-30;
constexpr double LARGEST_UNIT = 1e30;

/// A hair above the range's end, so that rounding leaves the largest value itself inside.
constexpr float HAIR = 1e-5F;

/// The place of a value in the range of a look: up to 0 at its low end or below, 1 at its high end, above
/// that 2. NaN for NaN.
inline double placeInRange(ParticleLook const& look, double value) {
    constexpr double ABOVE = 2;
    if (std::isnan(value) || value <= look.low) {
        return std::isnan(value) ? value : 0;
    }
    double const t = (value - look.low) / (look.high - look.low);
    return look.high > look.low && t <= 1.0 + static_cast<double>(HAIR) ? std::min(t, 1.0) : ABOVE;
}

/// The colors of the particles of a chunk: their own ones, or those of the look's map.
class ShownColors {
public:
    /// \param hasColors the look's `colorChannel` is a vector
    ShownColors(ParticleSystemChunk_v2 const& chunk, ParticleLook const& look, bool hasColors)
        : look(look)
        , own(hasColors ? chunk.channelData(look.colorChannel)->asVectors() : nullptr)
        , values(chunk, look.channel, look.quantity)
        , isOneColor(!values.hasValues()) {}

    Vector3<float> operator[](unsigned int slot) const {
        if (own != nullptr) {
            return {_part(own[slot].x), _part(own[slot].y), _part(own[slot].z)};
        }
        Color4<float> const color = look.colors.at(isOneColor ? 0 : placeInRange(look, values[slot]));
        return {_part(color.r), _part(color.g), _part(color.b)};
    }

private:
    // In this order of arguments NaN gives 0, and no branch is needed.
    static float _part(float value) { return std::max(0.0F, std::min(value, 1.0F)); }

    ParticleLook const& look;
    Vector3<float> const* own;
    ShownValues values;
    bool isOneColor;
};

}  // namespace vellum::toolkit
