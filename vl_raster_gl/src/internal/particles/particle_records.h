#pragma once

#include "internal/particles/even_thinning.h"
#include "internal/particles/particle_record.h"
#include "internal/particles/record_writers.h"

#include "foundation/geometry/ParticleSystem_v2.h"

namespace vellum {

/// Writes the records of a system's particles in the order in which iterators visit them: position from
/// channel 0, color from `channel` by the formula, for the particles that the thinning selects.
///
/// Writes exactly thinning.target() records, strictly forward, each byte once and without reading back: `out`
/// may be video memory. If rounding selects fewer particles, the last one is repeated. Missing positions and
/// channels read as zeros. Allocates no memory.
/// \param out capacity for that many ParticleRecord.
void writeParticleRecords(ParticleSystem_v2 const& system, unsigned int channel, RecordFormula const& formula,
                          EvenThinning const& thinning, float* out);

}  // namespace vellum
