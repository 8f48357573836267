#pragma once

#include <cstddef>

/// \file
/// Data only, no functions: sources for particular processors include it, and the linker could select an
/// inline function that was compiled there for all processors.

namespace vellum {

inline constexpr std::size_t VECTOR_FLOATS = 3;                  // of a position, a vector or a color
inline constexpr std::size_t RECORD_FLOATS = 2 * VECTOR_FLOATS;  // position and color; see ParticleRecord

/// The computation of the three color floats of a record from a channel.
enum class RecordColor {
    CONSTANT,          ///< the same for all; no value is read
    VECTOR,            ///< the vector itself
    SPREAD_SCALAR,     ///< three equal numbers; the vector's length is the scalar's absolute value
    LENGTH,            ///< ramp of the vector's length / scale
    X,                 ///< ramp of |x truncated to an integer| / scale
    Y,                 ///< the same with y
    Z,                 ///< the same with z
    SCALAR,            ///< ramp of the scalar as it is
    TRUNCATED_SCALAR,  ///< ramp of |the scalar truncated to an integer| / scale
};

/// The floats per particle that a color reads from the channel, by RecordColor.
inline constexpr unsigned int VALUE_FLOATS[] = {0, 3, 1, 3, 3, 3, 3, 1, 1};

/// The parameters: with t = (magnitude - minMagnitude) / range, the color is `above` for t above 1, else
/// lowest + difference * t, each component limited to 0 to 1, NaN to 0.
struct RecordFormula {
    RecordColor source;
    float constant[3];  // of CONSTANT; not limited
    float lowest[3];
    float difference[3];
    float above[3];
    float minMagnitude;
    float range;
    float scale;
};

/// Writes `count` records of six floats, position and color, strictly forward. Positions are three floats
/// each, values three, one or none, as the source has it.
/// \param offsets the particles to write, relative to the first one; null for consecutive particles. One more
///     float after each may be read.
/// \param streams whether the stores bypass the cache, for more records than it holds.
using RecordWriter = void (*)(RecordFormula const& formula, float const* positions, float const* values,
                              unsigned int const* offsets, float* out, std::size_t count, bool streams);

}  // namespace vellum
