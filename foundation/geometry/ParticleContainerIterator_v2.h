#pragma once

#include "foundation/export.h"
#include "foundation/geometry/ParticleContainerIteratorBase_v2.h"
#include "foundation/geometry/ParticleSystemConstIterator_v2.h"

namespace vellum {
class ParticleSystem_v2;
}

/// Visits the particles of a ParticleSystem_v2. It starts at the end: call begin() first.
class VL_FOUNDATION_EXPORT ParticleContainerIterator_v2 : public ParticleContainerIteratorBase_v2 {
public:
    explicit ParticleContainerIterator_v2(vellum::ParticleSystem_v2 const* system);  ///< Not owned.
    ~ParticleContainerIterator_v2() override;

    unsigned int size() const override;
    void begin() override;
    bool end() const override;
    vellum::ParticleSystemConstIterator_v2::Particle next() override;

private:
    vellum::ParticleSystem_v2 const* system;          // not owned; null has no particles
    vellum::ParticleSystemConstIterator_v2 position;  // of the particle that next() returns
};
