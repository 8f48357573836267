#pragma once

#include "foundation/geometry/ParticleEntry_v2.h"

namespace vellum {

/// The order of compaction: by the key alone, so that released entries come last.
struct ReleaseEntryComparator_v2 {
    bool operator()(ParticleEntry_v2 const& a, ParticleEntry_v2 const& b) const { return a.key < b.key; }
};

}  // namespace vellum
