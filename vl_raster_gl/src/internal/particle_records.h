#pragma once

#include "internal/even_thinning.h"
#include "internal/record_formula.h"

#include "foundation/geometry/ParticleSystem_v2.h"

namespace vellum {

/// The floats of a channel that a color takes for each particle: 3, 1 or 0.
constexpr unsigned int valuesPerParticle(RecordColor const& source) {
    switch (source) {
    case RecordColor::CONSTANT:
        return 0;
    case RecordColor::SPREAD_SCALAR:
    case RecordColor::SCALAR:
    case RecordColor::TRUNCATED_SCALAR:
        return 1;
    default:
        return 3;
    }
}

/// Writes the records of a system's particles in the order in which iterators visit them: position from
/// channel 0, color from `channel` by the formula, as many as the thinning chooses.
///
/// Exactly thinning.target() records are written, strictly forward, each byte once and none read back: `out`
/// may be memory of the video card. Should rounding have chosen fewer particles than that, the last one is
/// written again. Where the system has no positions or no such channel, zeros take their place. Allocates
/// nothing.
void writeParticleRecords(ParticleSystem_v2 const& system, unsigned int const& channel,
                          RecordFormula const& formula, EvenThinning const& thinning, float* out);

// The writers of many records, all with the same bits as a result. writeParticleRecords() takes the fastest that
// the processor runs.

RecordWriter plainRecordWriter();
RecordWriter sse2RecordWriter();  ///< Null where the processor does not run it.
RecordWriter avxRecordWriter();   ///< Null where the processor does not run it.

/// Lets others see what was written past the cache. Once, behind the last record.
void finishRecords();

}  // namespace vellum
