#pragma once

#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/scene/ParticleOptions.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Which values colors stand for, and how they are handed to renderers.
///
/// Renderers color by the length of a vector, in single precision. Lengths are never negative and their
/// squares must be floats. Values are therefore shifted and scaled first: the smallest value that needs a
/// color of its own becomes 0 or more, and the range ends near 1, whatever the units of the file.
struct ParticleScale {
    std::string name;         ///< of the quantity
    ValueRange range{0, 0};   ///< the values of the colors at both ends
    bool isExceeded = false;  ///< some particle is above the range
    double offset = 0;        ///< the value that renderers get as 0
    double unit = 1;          ///< the difference of values that renderers get as 1; above 0

    /// The length that renderers get for a value. NaN and infinity are above all ranges, negative infinity is
    /// below.
    float toMagnitude(double value) const;

    float lowMagnitude() const { return toMagnitude(range.low); }

    /// A hair above the range's end, so that rounding leaves the largest value itself inside. Without an
    /// extent of the range all values have the low color.
    float highMagnitude() const;
};

/// How all particles of a picture look.
struct ParticleLook {
    ParticleMode mode = ParticleMode::POINTS;
    std::optional<ParticleScale> scale;  ///< nothing: there are no values to show, all have the high color
    std::optional<double> size;          ///< as in ParticleOptions; nothing: chosen to suit
    bool isThinned = false;              ///< only a part of the particles is drawn
    std::vector<Fault> notes;            ///< what had to be left out
};

/// Decides how the frames of all files are shown; they share one scale. A fault where a file does not hold
/// what is asked for.
Result<ParticleLook> lookOf(std::vector<ParticleFrame> const& frames, ParticleOptions const& options);

/// Whether a particle can be drawn: it has a finite position and, as an arrow, a finite velocity.
bool isDrawable(ParticleFrame const& frame, std::size_t particle, ParticleMode mode);

/// Above this number of particles points are drawn where nothing else is asked for.
constexpr std::size_t MOST_SPHERES = 500'000;

}  // namespace vellum::viewport
