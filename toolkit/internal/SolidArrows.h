#pragma once

#include "foundation/basic/Array.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/ParticleLook.h"
#include "toolkit/ParticleRenderer.h"

namespace vellum::toolkit {

/// The arrows of particles as arrays of the render layer, with a solid head each.
class SolidArrows {
public:
    /// Makes the arrows of the particles that are drawn, at most MOST_SOLID_ARROWS, evenly chosen; without
    /// those that have no place, no finite vector, or one that single precision cannot tell from none at its
    /// place. GL: none.
    void fill(ParticleSystem_v2 const& system, ParticleLook const& look);

    unsigned int count() const;  ///< Of the arrows.

    /// GL: those of FixedPass and of Core_RL_GL::renderArrow3_usingBuffers().
    ParticlePath draw() const;

private:
    Array<Vector3<float>> vertices;
    Array<unsigned int> triangles;
    Array<unsigned int> lines;
    Array<unsigned int> quads;
    Array<Color4<float>> colors;  // of the vertices
};

}  // namespace vellum::toolkit
