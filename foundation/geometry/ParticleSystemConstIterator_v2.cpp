#include "foundation/geometry/ParticleSystemConstIterator_v2.h"

#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "foundation/geometry/ParticleSystem_v2.h"

namespace vellum {

void ParticleSystemConstIterator_v2::setBegin(ParticleSystem_v2 const* newSystem) {
    system = newSystem;
    chunk = system != nullptr ? system->firstChunk() : nullptr;
    index = 0;
    _skipReleased();
}

void ParticleSystemConstIterator_v2::setEnd(ParticleSystem_v2 const* newSystem) {
    system = newSystem;
    chunk = nullptr;
    index = 0;
}

ParticleSystemConstIterator_v2& ParticleSystemConstIterator_v2::operator++() {
    ++index;
    _skipReleased();
    return *this;
}

ParticleSystemConstIterator_v2::Particle ParticleSystemConstIterator_v2::operator*() const {
    return {chunk->channelDatas(), chunk->entries()[index].slot};
}

void ParticleSystemConstIterator_v2::_skipReleased() {
    // Chunks may be empty, so that several can be skipped in a row.
    for (; chunk != nullptr; chunk = chunk->next(), index = 0) {
        Array<ParticleEntry_v2> const& entries = chunk->entries();
        for (; index < entries.size(); ++index) {
            if (entries[index].key == ParticleEntry_v2::LIVING) {
                return;
            }
        }
    }
    // Equal to setEnd(), which compares the index too.
    index = 0;
}

}  // namespace vellum
