#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Tuple3.h"

#include <cstddef>
#include <optional>
#include <string>

namespace vellum::viewport {

enum class ParticleMode {
    POINTS,
    SPHERES,
    ARROWS,        ///< of lines, along the velocities
    SOLID_ARROWS,  ///< along the velocities, with a solid head; needs no geometry stages
};

/// Whether particles are drawn along their velocities.
constexpr bool isOfArrows(ParticleMode mode) {
    return mode == ParticleMode::ARROWS || mode == ParticleMode::SOLID_ARROWS;
}

/// Finite; `low` is not above `high`.
struct ValueRange {
    double low;
    double high;
};

/// The colors of a range of values: they blend from `low` to `high` and go on below; above the range all
/// values have one color.
struct RampColors {
    Color4<float> low{0x8F / 255.0F, 0x1D / 255.0F, 0x9E / 255.0F, 1};
    Color4<float> high{0xFF / 255.0F, 0xDD / 255.0F, 0x4A / 255.0F, 1};
    Color4<float> above{1, 1, 1, 1};
};

/// How particles are asked to be shown.
struct ParticleOptions {
    std::optional<ParticleMode> mode;  ///< nothing: what suits their number
    std::string channel;               ///< name of a quantity or of labels; empty: what the files offer
    float percent = 100;               ///< 0 to 100
    std::optional<double> size;        ///< above 0; pixels, or units of the file; nothing: what suits
    std::optional<ValueRange> range;   ///< with an extent; nothing: that of the data
    RampColors colors;
    std::string colorMap;        ///< one of toolkit::ColorMap::names(); empty: `colors`
    bool isLogarithmic = false;  ///< colors are spread over the logarithm of the values
    std::string selection;       ///< an expression: only particles that it holds for are shown; empty: all
    std::optional<Box3<double>> clip;      ///< in units of the file: only what is inside is shown
    bool isWrapped = false;                ///< particles are moved into their periodic box
    Tuple3<unsigned int> copies{1, 1, 1};  ///< of the box and its particles along each edge, 1 or more
    std::optional<std::size_t> frame;      ///< from 0; nothing: the last one
};

}  // namespace vellum::viewport
