#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "toolkit/ParticleLook.h"

#include <memory>
#include <vector>

namespace vellum::toolkit {

/// The two colors that one renderer of particles blends between, and the lengths of the shown vectors that
/// have them.
struct ParticleRamp {
    Color4<float> lowest;
    Color4<float> highest;
    Color4<float> above;
    float low;
    float high;  ///< with an equal `low`, and both 0: everything has the color `lowest`

    bool operator==(ParticleRamp const& o) const {
        return lowest == o.lowest && highest == o.highest && above == o.above && low == o.low &&
               high == o.high;
    }
};

/// How the particles of a look are handed to renderers.
///
/// A renderer colors by the length of a vector and blends between two colors, and only so do all of its paths
/// agree: of scalars some paths see the number alone, some its truncated magnitude, and some those of the
/// neighbors as well. So only the length of a vector with a map of two colors is drawn from the system as it
/// is (isDirect). For all else the particles are copied, to as many systems as there are ramps: each with the
/// channels "position" and "shown".
///
/// Points and spheres: one ramp from 0 to 1 for each two neighboring colors. Below the range 0 is shown,
/// above it 2 in the last of them. One more of one color for NaN.
///
/// Arrows lie along the vectors that are shown, so these keep direction and length. Colored by length: a ramp
/// for each two neighboring colors, from one length to another. Colored by a component: a ramp of one color
/// for each of STEPS steps. In both cases one more ramp of one color for those below the range and one for
/// those above.
class ParticleRamps {
public:
    static constexpr unsigned int POSITIONS = 0;  ///< the channel of the places
    static constexpr unsigned int MOST = 256;   ///< ramps that are blended; maps of more colors are resampled
    static constexpr unsigned int STEPS = 256;  ///< of arrows that are colored by a component

    /// \param mode what is drawn; not ARROWS for what has no vectors
    ParticleRamps(ParticleSystem_v2 const& system, ParticleLook const& look, ParticleMode mode);

    bool isDirect() const { return isDirectRoad; }  ///< The system is drawn as it is, with channel().
    unsigned int channel() const { return shown; }  ///< NONE: all have the first color.

    /// The vectors of copies are those of the channel divided by this.
    double unit() const { return vectorUnit; }

    std::vector<ParticleRamp> ramps() const;

    /// Copies the particles that are drawn, evenly chosen by the look's percentage, and leaves out those
    /// without a place. \param copies one for each ramp; null, or former copies, which are used again where
    /// the number is the same
    void copy(std::vector<std::unique_ptr<ParticleSystem_v2>>& copies) const;

    /// What buffers and copies are filled from. As long as it is equal, and the particles are, so are these.
    struct Source {
        ParticleSystem_v2 const* system;
        unsigned int particles;
        float percent;
        unsigned int channel;
        bool isDirect;
        bool areArrows;  // the rest is of copies only
        ParticleQuantity quantity;
        double low;
        double high;
        unsigned int ramps;

        bool operator==(Source const& o) const {
            return system == o.system && particles == o.particles && percent == o.percent &&
                   channel == o.channel && isDirect == o.isDirect && areArrows == o.areArrows &&
                   quantity == o.quantity && low == o.low && high == o.high && ramps == o.ramps;
        }
    };
    Source source() const;

private:
    struct Place;

    bool _isByLength() const;
    unsigned int _blended() const;  // ramps between two colors
    unsigned int _rampCount() const;
    Place _placeOf(double value) const;

    ParticleSystem_v2 const* system;
    ParticleLook const* look;
    unsigned int shown = ParticleChannel_v2::NONE;
    bool isVector = false;
    bool areArrows;
    bool isDirectRoad = false;
    double vectorUnit = 1;
};

}  // namespace vellum::toolkit
