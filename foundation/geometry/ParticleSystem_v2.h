#pragma once

#include "foundation/basic/Array.h"
#include "foundation/export.h"
#include "foundation/geometry/ParticleChannelChunkData_v2.h"
#include "foundation/geometry/ParticleChannel_v2.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"

#include <functional>
#include <map>
#include <string>

namespace vellum {

/// The particles of a simulation: positions and any number of further channels, kept in chunks.
///
/// Use:
///
///     ParticleSystem_v2 system;
///     unsigned int const position = system.addChannel("position", ParticleChannel_v2::VECTOR);   // 0
///     unsigned int const velocity = system.addChannel("velocity", ParticleChannel_v2::VECTOR);   // 1
///     system.addParticles(1000000);
///     for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
///         Vector3<float>* const positions = chunk->channelData(position)->asVectors();
///         ...
///     }
///
/// Renderers read positions from the channel with id 0 or from the channel named "position", so "position" is
/// added first. A particle needs 4 bytes plus the bytes of its channels; only the last chunk may have unused
/// capacity.
///
/// Not thread-safe: one thread at a time.
class VL_FOUNDATION_EXPORT ParticleSystem_v2 {
public:
    ParticleSystem_v2() = default;  ///< No channels, no particles.
    ParticleSystem_v2(ParticleSystem_v2 const&) = delete;
    ParticleSystem_v2& operator=(ParticleSystem_v2 const&) = delete;
    ~ParticleSystem_v2();  ///< Deletes all chunks.

    // == Filling ==

    /// Adds a channel; particles that are there already have the value 0 in it.
    /// \param type ParticleChannel_v2::VECTOR or SCALAR; for every other number no values are held.
    /// \return the channel's id, counted from 0. An existing name returns its id. ParticleChannel_v2::NONE if
    ///     that channel has another type or `name` is null.
    unsigned int addChannel(char const* name, unsigned int const& type);

    /// Appends particles, all values 0: first in the free slots of the last chunk, which is compacted for it,
    /// from slot count() on; then in new chunks. A sum that does not fit into 32 bits is truncated.
    void addParticles(unsigned int const& count);

    // == Particles ==

    unsigned int size() const { return particleCount; }  ///< Particles that are not released.

    unsigned int chunkCount() const { return chunks; }
    ParticleSystemChunk_v2* firstChunk() { return first; }              ///< Null without particles.
    ParticleSystemChunk_v2* lastChunk() { return last; }                ///< Null without particles.
    ParticleSystemChunk_v2 const* firstChunk() const { return first; }  ///< Null without particles.
    ParticleSystemChunk_v2 const* lastChunk() const { return last; }    ///< Null without particles.

    // == Channels ==

    unsigned int channelCount() const { return channelList.size(); }
    ParticleChannel_v2 const& channel(unsigned int const& index) const { return channelList[index]; }

    /// The id of the channel with a name; ParticleChannel_v2::NONE when there is none.
    unsigned int channelId(char const* name) const;

    /// The record of the channel with an id; null when there is none.
    ParticleChannel_v2 const* findChannel(unsigned int const& id) const;

    // == For renderers ==

    /// Compacts every chunk and returns the number of particles of each, first chunk first.
    ///
    /// A const operation: the system holds the same particles with the same values as before, only in other
    /// slots of their chunks.
    Array<unsigned short> begin_rawIteration() const;

    /// The data of a channel in each chunk, first chunk first; null for an id that does not exist.
    Array<ParticleChannelChunkData_v2*> getChannelData(unsigned int const& id) const;

    /// Compacts every chunk, as begin_rawIteration() does.
    void compact() const;

private:
    unsigned int particleCount = 0;                          // of all chunks, without released ones
    Array<ParticleChannel_v2> channelList;                   // entry k has id k
    std::map<std::string, unsigned int, std::less<>> names;  // channel ids by name, ordered byte by byte
    ParticleSystemChunk_v2* first = nullptr;                 // owned, with the whole list that it begins
    ParticleSystemChunk_v2* last = nullptr;                  // of that list
    unsigned int chunks = 0;                                 // of that list
};

}  // namespace vellum
