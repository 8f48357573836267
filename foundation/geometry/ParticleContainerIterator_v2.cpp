#include "foundation/geometry/ParticleContainerIterator_v2.h"

#include "foundation/geometry/ParticleSystem_v2.h"

using vellum::ParticleSystem_v2;
using vellum::ParticleSystemConstIterator_v2;

ParticleContainerIteratorBase_v2::~ParticleContainerIteratorBase_v2() = default;

ParticleContainerIterator_v2::ParticleContainerIterator_v2(ParticleSystem_v2 const* system) : system(system) {
    // At the end, so that a loop without begin() visits no particle instead of reading a null chunk.
    position.setEnd(system);
}

ParticleContainerIterator_v2::~ParticleContainerIterator_v2() = default;

unsigned int ParticleContainerIterator_v2::size() const {
    return system != nullptr ? system->size() : 0;
}

void ParticleContainerIterator_v2::begin() {
    position.setBegin(system);
}

bool ParticleContainerIterator_v2::end() const {
    // A new one each time: particles may have been added since begin().
    ParticleSystemConstIterator_v2 last;
    last.setEnd(system);
    return position == last;
}

ParticleSystemConstIterator_v2::Particle ParticleContainerIterator_v2::next() {
    ParticleSystemConstIterator_v2::Particle const particle = *position;
    ++position;
    return particle;
}
