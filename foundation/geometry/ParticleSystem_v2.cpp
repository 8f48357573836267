#include "foundation/geometry/ParticleSystem_v2.h"

#include <algorithm>
#include <limits>
#include <memory>

namespace vellum {

ParticleSystem_v2::~ParticleSystem_v2() {
    while (first != nullptr) {
        ParticleSystemChunk_v2* const chunk = first;
        first = chunk->next();
        delete chunk;
    }
}

// == Filling ==

unsigned int ParticleSystem_v2::addChannel(char const* name, unsigned int const& type) {
    if (name == nullptr) {
        return ParticleChannel_v2::NONE;
    }
    unsigned int const former = channelId(name);
    if (former != ParticleChannel_v2::NONE) {
        return channelList[former].type == type ? former : ParticleChannel_v2::NONE;
    }
    unsigned int const id = channelList.size();
    for (ParticleSystemChunk_v2* chunk = first; chunk != nullptr; chunk = chunk->next()) {
        // A chunk may have it already, from an attempt for which memory did not suffice.
        if (chunk->channelCount() == id) {
            chunk->_addChannel(type);
        }
    }
    // After the chunks, so that a channel exists only when every chunk has its values.
    channelList.pushBack({id, type});
    names.emplace(name, id);
    return id;
}

void ParticleSystem_v2::addParticles(unsigned int const& count) {
    // The count stays within 32 bits, which indices and iterators use.
    unsigned int left = std::min(count, std::numeric_limits<unsigned int>::max() - particleCount);
    if (left != 0 && last != nullptr && last->freeSlots() != 0) {
        unsigned int const added = std::min(left, last->freeSlots());
        // Free slots are contiguous, at the end of the chunk, only after compaction.
        last->compact();
        last->_append(added);
        left -= added;
    }
    while (left != 0) {
        unsigned int const added = std::min(left, ParticleSystemChunk_v2::CAPACITY);
        // A lambda, because the chunk's destructor is private and this class is its friend. Until the chunk
        // is complete it is not linked, so a failed allocation leaves the system consistent.
        auto const destroy = [](ParticleSystemChunk_v2* chunk) { delete chunk; };
        std::unique_ptr<ParticleSystemChunk_v2, decltype(destroy)> chunk(
            new ParticleSystemChunk_v2(&particleCount), destroy);
        for (ParticleChannel_v2 const& channel : channelList) {
            chunk->_addChannel(channel.type);
        }
        chunk->_append(added);
        (last != nullptr ? last->nextChunk : first) = chunk.get();
        last = chunk.release();
        ++chunks;
        left -= added;
    }
}

// == Channels ==

unsigned int ParticleSystem_v2::channelId(char const* name) const {
    auto const found = name != nullptr ? names.find(name) : names.end();
    return found != names.end() ? found->second : ParticleChannel_v2::NONE;
}

ParticleChannel_v2 const* ParticleSystem_v2::findChannel(unsigned int const& id) const {
    // A linear search: systems have few channels.
    auto const* const found =
        std::find_if(channelList.begin(), channelList.end(),
                     [&id](ParticleChannel_v2 const& record) { return record.id == id; });
    return found != channelList.end() ? found : nullptr;
}

// == For renderers ==

Array<unsigned short> ParticleSystem_v2::begin_rawIteration() const {
    // Const, although chunks are compacted: the set of particles and their values do not change.
    Array<unsigned short> counts;
    for (ParticleSystemChunk_v2* chunk = first; chunk != nullptr; chunk = chunk->next()) {
        chunk->compact();
        counts.pushBack(static_cast<unsigned short>(chunk->count()));
    }
    return counts;
}

Array<ParticleChannelChunkData_v2*> ParticleSystem_v2::getChannelData(unsigned int const& id) const {
    Array<ParticleChannelChunkData_v2*> data;
    data.reserve(chunks, false);
    for (ParticleSystemChunk_v2 const* chunk = first; chunk != nullptr; chunk = chunk->next()) {
        data.pushBack(chunk->channelData(id));
    }
    return data;
}

void ParticleSystem_v2::compact() const {
    for (ParticleSystemChunk_v2* chunk = first; chunk != nullptr; chunk = chunk->next()) {
        chunk->compact();
    }
}

}  // namespace vellum
