#pragma once

#include "viewport/content/Options.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/text/Fault.h"

#include <vector>

namespace vellum::viewport {

/// What is shown, as far as options depend on it.
struct ShownKinds {
    bool hasMeshes = false;
    bool hasParticles = false;
    bool hasMeshValues = false;  ///< colors of meshes stand for values
    bool hasAnimations = false;  ///< of meshes
    bool hasTimes = false;       ///< of frames of particles
    ParticleColoring coloring = ParticleColoring::NOTHING;
    bool areMeshValuesHidden = false;  ///< as in ParticleLook, which has a note of it
    bool hasMoving = false;            ///< files with several frames, in a film
};

/// The options of the command line that change nothing that is shown, one line for each: "--percent has no
/// effect: ...". Those of a configuration are not among them, since they are meant for other files too.
std::vector<Fault> idleOptions(Options const& options, ShownKinds const& shown);

}  // namespace vellum::viewport
