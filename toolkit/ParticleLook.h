#pragma once

#include "foundation/geometry/ParticleChannel_v2.h"
#include "toolkit/ColorMap.h"

namespace vellum::toolkit {

/// What a particle is drawn as.
enum class ParticleMode {
    POINTS,
    SPHERES,  ///< round balls that are as deep as they are wide; need geometry stages
    ARROWS    ///< along the vectors of the channel; need geometry stages
};

/// Which number of a vector colors show. Of a scalar channel it is always the value itself.
enum class ParticleQuantity { LENGTH, X, Y, Z };

/// How particles are drawn by drawParticles(). The defaults draw all as points in the first color.
struct ParticleLook {
    ParticleMode mode = ParticleMode::POINTS;

    /// The id of the channel that colors show (ParticleSystem_v2::channelId()), of type VECTOR or SCALAR; for arrows
    /// also what they point along, so of type VECTOR: with a SCALAR one there are points in place of arrows. Others, and
    /// NONE: all have the first color, and there are no arrows but points.
    unsigned int channel = ParticleChannel_v2::NONE;
    ParticleQuantity quantity = ParticleQuantity::LENGTH;
    double low = 0;  ///< the value of the first color
    double high =
        1;  ///< the value of the last color; if not above `low`, values up to `low` have the first color and
            ///< all others `above`
    ColorMap colors;

    /// Points: pixels. Spheres: the diameter, in units of the particles' positions. Arrows: the length of the arrow for
    /// a vector of length 1, in these units. Above 0, else nothing is drawn.
    float size = 2;
    float percent = 100;  ///< of the particles that are drawn, evenly chosen, 0 to 100

    bool operator==(ParticleLook const& o) const {
        return mode == o.mode && channel == o.channel && quantity == o.quantity && low == o.low &&
               high == o.high && colors == o.colors && size == o.size && percent == o.percent;
    }
    bool operator!=(ParticleLook const& other) const { return !(*this == other); }
};

}  // namespace vellum::toolkit
