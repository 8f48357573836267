#pragma once

#include "toolkit/ParticleLook.h"
#include "viewport/drawing/subjects/ParticleStyle.h"

namespace vellum::viewport {

/// The look of prepared particles, but for their size. They have vectors of the style's magnitudes in
/// ParticleCloud::SHOWN.
toolkit::ParticleLook toolkitLook(ParticleStyle const& style);

}  // namespace vellum::viewport
