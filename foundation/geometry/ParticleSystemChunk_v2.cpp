#include "foundation/geometry/ParticleSystemChunk_v2.h"

#include "foundation/geometry/ParticleChannelArray_v2.h"
#include "foundation/geometry/ParticleChannel_v2.h"
#include "foundation/geometry/array_tools.h"

#include <algorithm>
#include <memory>

namespace vellum {

namespace {

std::unique_ptr<ParticleChannelChunkData_v2> makeChannelData(unsigned int const& type) {
    switch (type) {
    case ParticleChannel_v2::VECTOR:
        return std::make_unique<ParticleChannelArray_v2<Vector3<float>>>();
    case ParticleChannel_v2::SCALAR:
        return std::make_unique<ParticleChannelArray_v2<float>>();
    default:
        // The base stores no values, so that a channel of unknown type still has an entry under its id.
        return std::make_unique<ParticleChannelChunkData_v2>();
    }
}

}  // namespace

ParticleSystemChunk_v2::ParticleSystemChunk_v2(unsigned int* systemSize) : systemSize(systemSize) {}

ParticleSystemChunk_v2::~ParticleSystemChunk_v2() {
    for (ParticleChannelChunkData_v2* const data : channels) {
        delete data;
    }
}

bool ParticleSystemChunk_v2::release(unsigned int const& slotIndex) {
    if (slotIndex >= entryList.size() || entryList[slotIndex].key != ParticleEntry_v2::LIVING) {
        return false;
    }
    entryList[slotIndex].key = ParticleEntry_v2::RELEASED;
    --liveCount;
    ++freeCount;
    --*systemSize;
    // Compaction is deferred to the next drawing: releasing many particles moves each value once.
    compacted = false;
    changed = true;
    return true;
}

void ParticleSystemChunk_v2::compact() {
    if (compacted) {
        return;
    }
    ReleaseEntryComparator_v2 const& comparator = refReleaseEntryComparator_v2();
    if (entryList.size() >= 2) {
        array_tools::quickSort(entryList.data(), 0, static_cast<int>(entryList.size()) - 1, comparator);
    }
    unsigned int const live = CAPACITY - freeCount;
    Array<unsigned int> remap;
    // A full chunk has no holes, and an empty table means that no value moves.
    if (live != CAPACITY) {
        remap.reserve(live, false);
        for (unsigned int k = 0; k < live; ++k) {
            remap.pushBack(entryList[k].slot);
            entryList[k].slot = static_cast<unsigned short>(k);
        }
    }
    for (ParticleChannelChunkData_v2* const data : channels) {
        if (data != nullptr) {
            data->reorder(remap);
        }
    }
    changed = false;
    compacted = true;
}

ReleaseEntryComparator_v2 const& ParticleSystemChunk_v2::refReleaseEntryComparator_v2() {
    static ReleaseEntryComparator_v2 const comparator;
    return comparator;
}

void ParticleSystemChunk_v2::_addChannel(unsigned int const& type) {
    std::unique_ptr<ParticleChannelChunkData_v2> data = makeChannelData(type);
    data->resize(_slots());
    channels.pushBack(data.get());
    // Only after pushBack(), which may throw.
    static_cast<void>(data.release());
}

// The chunk must be compacted and have free slots.
void ParticleSystemChunk_v2::_append(unsigned int const& added) {
    unsigned int const first = liveCount;
    unsigned int const slots = first + added;
    entryList.setSize(first);  // the entries after it are released; their slots are reused
    for (ParticleChannelChunkData_v2* const data : channels) {
        // Shrinks first, so that the values of released particles become 0 and are not inherited.
        data->resize(first);
        data->resize(slots);
    }
    if (slots > entryList.capacity()) {
        // Grows by an eighth, like every array of the family, but never beyond a chunk.
        entryList.reserve(std::min(std::max(slots, first + first / 8 + 4), CAPACITY), true);
    }
    entryList.setSize(slots);
    for (unsigned int k = first; k < slots; ++k) {
        entryList[k] = {ParticleEntry_v2::LIVING, static_cast<unsigned short>(k)};
    }
    liveCount = static_cast<unsigned short>(slots);
    freeCount = static_cast<unsigned short>(CAPACITY - slots);
    *systemSize += added;
}

}  // namespace vellum
