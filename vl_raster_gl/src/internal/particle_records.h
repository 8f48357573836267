#pragma once

#include "internal/even_thinning.h"
#include "internal/particle_record.h"
#include "internal/record_writers.h"

#include "foundation/geometry/ParticleSystem_v2.h"

namespace vellum {

/// Writes the records of a system's particles in the order in which iterators visit them: position from
/// channel 0, color from `channel` by the formula, as many as the thinning chooses.
///
/// Exactly thinning.target() records are written, strictly forward, each byte once and none read back: `out`
/// may be memory of the video card. Should rounding have chosen fewer particles than that, the last one is
/// written again. Where the system has no positions or no such channel, zeros take their place. Allocates
/// nothing.
/// \param out room for that many ParticleRecord.
void writeParticleRecords(ParticleSystem_v2 const& system, unsigned int channel, RecordFormula const& formula,
                          EvenThinning const& thinning, float* out);

}  // namespace vellum
