#pragma once

#include "viewport/files/particles/NeededValues.h"
#include "viewport/scene/ParticleOptions.h"

namespace vellum::viewport {

/// Which values lookOf() and CloudMaker ask for, for a frame that is shown alone: those that the colors show
/// or may show, those of the selection, sizes, and the vectors of arrows. Of a vector that colors show its
/// lengths are enough. Everything that is said about the frame, notes and faults, is the same as with all
/// values.
ChooseValues neededValues(ParticleOptions const& options);

}  // namespace vellum::viewport
