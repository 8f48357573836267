#pragma once

#include "internal/particles/even_thinning.h"
#include "internal/particles/particle_record.h"
#include "internal/particles/record_writers.h"

#include "foundation/geometry/ParticleSystem_v2.h"

namespace vellum {

/// Writes the records of a system's particles in the order in which iterators visit them: position from
/// channel 0, color from `channel` by the formula, for the particles that the thinning selects.
///
/// Writes exactly thinning.target() records, each byte once and without reading back: `out` may be video
/// memory. If rounding selects fewer particles, the last one is repeated. Missing positions and channels read
/// as zeros.
///
/// Up to MOST_ON_ONE_THREAD particles are written strictly forward, on the calling thread and without an
/// allocation. More of them are divided into ranges of whole chunks, each written strictly forward by one of
/// several threads (threads.h): every thread count gives the same bits. A thinned system of 2^24 particles or
/// more stays on the calling thread. \param out capacity for that many ParticleRecord.
void writeParticleRecords(ParticleSystem_v2 const& system, unsigned int channel, RecordFormula const& formula,
                          EvenThinning const& thinning, float* out);

}  // namespace vellum
