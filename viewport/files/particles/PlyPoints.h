#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <string_view>

namespace vellum::viewport {

/// Reads the vertices of a PLY file, text or binary, as particles: one frame.
///
/// The properties x y z are the positions, vx vy vz the velocities, every other one is a scalar channel; an
/// id orders the particles. Other elements are skipped. A file with faces is a mesh: a fault, as is all
/// damage. Faults name no file.
/// \param progress may be empty.
Result<LoadedFrame> readPlyPoints(std::string_view bytes, Progress const& progress);

}  // namespace vellum::viewport
