#pragma once

#include "internal/record_formula.h"

/// \file
/// The writers of many records, all with the same bits as a result. writeParticleRecords() takes the fastest
/// that the processor runs. Declarations only, for the sources that are compiled for particular processors;
/// see record_formula.h.

namespace vellum {

RecordWriter plainRecordWriter();
RecordWriter sse2RecordWriter();  ///< Null where the processor does not run it.
RecordWriter avxRecordWriter();   ///< Null where the processor does not run it.

/// Makes what was written past the cache visible to other readers. Once, behind the last record.
void finishRecords();

}  // namespace vellum
