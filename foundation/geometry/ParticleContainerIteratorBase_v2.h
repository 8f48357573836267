#pragma once

#include "foundation/export.h"
#include "foundation/geometry/ParticleSystemConstIterator_v2.h"

/// Visits the particles of a container of any kind:
///
///     for (iterator.begin(); !iterator.end();) {
///         vellum::ParticleSystemConstIterator_v2::Particle const particle = iterator.next();
///     }
///
/// The interface has this class outside the namespace.
class VL_FOUNDATION_EXPORT ParticleContainerIteratorBase_v2 {
public:
    virtual ~ParticleContainerIteratorBase_v2();

    virtual unsigned int size() const = 0;  ///< Particles in the container.
    virtual void begin() = 0;               ///< Moves to the first particle.
    virtual bool end() const = 0;           ///< Whether next() has returned the last particle.

    /// Returns the current particle and moves to the next one. Must not be called at the end.
    virtual vellum::ParticleSystemConstIterator_v2::Particle next() = 0;
};
