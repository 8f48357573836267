#pragma once

#include "internal/particles/record_formula.h"

/// \file
/// The writers of many records, all with the same bits as a result. writeParticleRecords() selects the
/// fastest one that the processor supports. Declarations only, because sources for particular processors
/// include them; see record_formula.h.

namespace vellum {

RecordWriter plainRecordWriter();
RecordWriter sse2RecordWriter();  ///< Null if the processor does not support it.
RecordWriter avxRecordWriter();   ///< Null if the processor does not support it.

/// Makes stores that bypass the cache visible to other readers. Called once, after the last record.
void finishRecords();

}  // namespace vellum
