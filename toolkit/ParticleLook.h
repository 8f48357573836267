#pragma once

#include "foundation/geometry/ParticleChannel_v2.h"
#include "toolkit/ColorMap.h"

namespace vellum::toolkit {

/// What a particle is drawn as.
enum class ParticleMode {
    POINTS,
    SPHERES,      ///< round balls that are as deep as they are wide; need geometry stages
    ARROWS,       ///< of lines, along the vectors of `channel`; need geometry stages
    SOLID_ARROWS  ///< along the vectors of `channel`, with a solid head; need no geometry stages
};

/// The largest number of solid arrows in a drawing: each is kept as 352 bytes of arrays. Of more particles
/// these are chosen evenly.
constexpr unsigned int MOST_SOLID_ARROWS = 100'000;

/// Which number of a vector colors show. Of a scalar channel it is always the value itself.
enum class ParticleQuantity { LENGTH, X, Y, Z };

/// How particles are drawn by drawParticles(). The defaults draw all as points in the first color.
struct ParticleLook {
    ParticleMode mode = ParticleMode::POINTS;

    /// The id of the channel that colors show (ParticleSystem_v2::channelId()), of type VECTOR or SCALAR; for
    /// arrows also what they point along, so of type VECTOR: with a SCALAR one there are points in place of
    /// arrows. Others, and NONE: all have the first color, and there are no arrows but points.
    unsigned int channel = ParticleChannel_v2::NONE;
    ParticleQuantity quantity = ParticleQuantity::LENGTH;
    double low = 0;  ///< the value of the first color
    double high =
        1;  ///< the value of the last color; if not above `low`, values up to `low` have the first color and
            ///< all others `above`
    ColorMap colors;

    /// Points: pixels. Spheres: the diameter, in units of the particles' positions. Arrows: the length of the
    /// arrow for a vector of length 1, in these units. Above 0, else nothing is drawn.
    float size = 2;
    float percent = 100;  ///< of the particles that are drawn, evenly chosen, 0 to 100

    /// The id of a VECTOR channel with the color of each particle, in place of the map: red, green and blue,
    /// which are limited to 0 to 1; NaN is taken as 0. Arrows still lie along the vectors of `channel`. NONE,
    /// and others: the map.
    unsigned int colorChannel = ParticleChannel_v2::NONE;

    /// The id of a SCALAR channel with the size of each particle, by which `size` is multiplied. A particle
    /// whose size is not finite and above 0 is not drawn. Arrows do not look at it. NONE, and others: all are
    /// alike.
    ///
    /// Spheres have their exact sizes. Points have them up to MOST_POINT_SIZES different ones; of more, each
    /// is drawn with the nearest of as many sizes in geometric steps from the smallest to the largest, which
    /// is off by less than 3 % as long as the largest is at most three million times the smallest.
    unsigned int sizeChannel = ParticleChannel_v2::NONE;
    static constexpr unsigned int MOST_POINT_SIZES = 256;

    bool operator==(ParticleLook const& o) const {
        return mode == o.mode && channel == o.channel && quantity == o.quantity && low == o.low &&
               high == o.high && colors == o.colors && size == o.size && percent == o.percent &&
               colorChannel == o.colorChannel && sizeChannel == o.sizeChannel;
    }
    bool operator!=(ParticleLook const& other) const { return !(*this == other); }
};

}  // namespace vellum::toolkit
