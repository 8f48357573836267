#pragma once

#include "foundation/basic/Array.h"
#include "foundation/export.h"
#include "foundation/geometry/ParticleChannelChunkData_v2.h"
#include "foundation/geometry/ParticleEntry_v2.h"
#include "foundation/geometry/ReleaseEntryComparator_v2.h"

namespace vellum {

class ParticleSystem_v2;

/// Up to 16384 particles of a system: an entry for each and the values of every channel.
///
/// A simulation walks the chunks of its system and writes the channels' arrays:
///
///     for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
///         Vector3<float>* const positions = chunk->channelData(0)->asVectors();
///         for (unsigned int slot = 0; slot < chunk->count(); ++slot) positions[slot] = ...;
///     }
///
/// Until a particle is released, and again after compact(), the particles occupy slots 0 to count() - 1. In
/// between, released particles leave holes; entries() lists the slots in use.
///
/// Chunks belong to their system, which creates and deletes them.
class VL_FOUNDATION_EXPORT ParticleSystemChunk_v2 {
public:
    static constexpr unsigned int CAPACITY = 16384;  ///< particles

    ParticleSystemChunk_v2(ParticleSystemChunk_v2 const&) = delete;
    ParticleSystemChunk_v2& operator=(ParticleSystemChunk_v2 const&) = delete;

    ParticleSystemChunk_v2* next() { return nextChunk; }              ///< The chunk behind this one, or null.
    ParticleSystemChunk_v2 const* next() const { return nextChunk; }  ///< The chunk behind this one, or null.

    unsigned int count() const { return liveCount; }      ///< Particles that are not released.
    unsigned int freeSlots() const { return freeCount; }  ///< CAPACITY less count().
    bool isCompacted() const { return compacted; }        ///< Whether slots 0 to count() - 1 are in use.

    /// The values of a channel; null when the system has no such channel. Owned by the chunk.
    ParticleChannelChunkData_v2* channelData(unsigned int const& id) const {
        return id < channels.size() ? channels[id] : nullptr;
    }

    /// The values of all channels by channel id; channelCount() of them.
    ParticleChannelChunkData_v2* const* channelDatas() const { return channels.data(); }
    unsigned int channelCount() const { return channels.size(); }

    /// All particles, released ones among them, in the order in which iterators visit them.
    Array<ParticleEntry_v2> const& entries() const { return entryList; }

    /// Releases the particle in a slot: it is no longer counted, visited or drawn. Its values stay where they
    /// are until the chunk is compacted.
    /// \return false when there is no living particle in the slot; the chunk is unchanged then.
    bool release(unsigned int const& slotIndex);

    /// Closes the holes that released particles left: the living ones move to slots 0 to count() - 1, each
    /// with its values in all channels. Their order may change. Does nothing in a chunk without holes.
    void compact();

    /// The order in which compaction sorts the entries.
    static ReleaseEntryComparator_v2 const& refReleaseEntryComparator_v2();

private:
    friend class ParticleSystem_v2;

    explicit ParticleSystemChunk_v2(unsigned int* systemSize);
    ~ParticleSystemChunk_v2();

    void _addChannel(unsigned int const& type);
    void _append(unsigned int const& added);
    unsigned int _slots() const { return entryList.size(); }

    Array<ParticleEntry_v2> entryList;             // entry k of a living particle names slot k
    unsigned short freeCount = CAPACITY;           // slots without a living particle
    unsigned short liveCount = 0;                  // CAPACITY less freeCount
    bool compacted = true;                         // no released entry precedes a living one
    bool changed = false;                          // particles were released since the last compaction
    Array<ParticleChannelChunkData_v2*> channels;  // owned; by channel id
    ParticleSystemChunk_v2* nextChunk = nullptr;   // owned by the system
    unsigned int* systemSize;                      // the system's particle count
};

}  // namespace vellum
