#pragma once

#include "foundation/geometry/Vector3.h"
#include "viewport/files/particles/ParticleFrames.h"
#include "viewport/scene/ParticleOptions.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The particles of a file, at the time that is shown.
struct ParticleData {
    std::string file;  ///< as the user named it
    ParticleFrame frame;
};

/// Which values colors stand for, and how they are handed to renderers.
///
/// Renderers color by the length of a vector, in single precision. Values are therefore moved and scaled before:
/// so that none that is to be told from others is negative, and all near the range are near 1 at most, whatever
/// the units of the file.
struct ParticleScale {
    std::string name;         ///< of the quantity
    ValueRange range{0, 0};   ///< what the colors at both ends stand for
    bool isExceeded = false;  ///< some particle is above the range
    double offset = 0;        ///< of value 0 in what renderers get
    double unit = 1;          ///< above 0

    /// What renderers get for a value. Not a number and infinite ones count as above everything or, where they are
    /// negative, as low as the lowest.
    float toMagnitude(double value) const;

    float lowMagnitude() const { return toMagnitude(range.low); }

    /// A hair above the range's end, so that rounding leaves the largest value itself inside. Without an extent of
    /// the range all values have the low color.
    float highMagnitude() const;
};

/// The particles of a file that can be drawn. Both lists are of the same length.
struct ParticleSet {
    std::string name;                       ///< the file's, without its folder
    std::vector<Vector3<float>> positions;  ///< finite, in units of the file
    std::vector<Vector3<float>> colors;     ///< vectors whose lengths are magnitudes; arrows lie along them
    std::optional<ParticleBox> box;         ///< finite
    double spacing = 1;                     ///< the mean distance of neighbors, in units of the file; above 0
    double diameter = 1;                    ///< of a sphere, in units of the file; above 0
    double reach = 0;  ///< how far around its place a particle can be seen, in units of the file
};

/// All particles of a picture and how they look.
struct ParticleLook {
    ParticleMode mode = ParticleMode::POINTS;
    std::optional<ParticleScale>
        scale;                      ///< nothing: there are no values to be shown, all have the high color
    std::vector<ParticleSet> sets;  ///< one for each file
    std::vector<Fault> notes;       ///< what had to be left out
};

/// Chooses what is shown of the particles. `data` are used up. A fault where a file does not hold what is asked for.
Result<ParticleLook> lookOf(std::vector<ParticleData> data, ParticleOptions const& options);

/// Above so many particles points are drawn where nothing else is asked for.
constexpr std::size_t MOST_SPHERES = 500'000;

}  // namespace vellum::viewport
