#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <string_view>

namespace vellum::viewport {

/// Whether the text is an OBJ file of points: vertices, and no faces, lines, curves or surfaces.
bool isObjOfPoints(std::string_view text);

/// Reads the vertices of an OBJ file as particles: one frame. A vertex has three coordinates, of which a
/// weight, a color or a color with its alpha may follow; all have as many numbers. Everything else is
/// skipped.
///
/// Damage is a fault, without a file.
/// \param progress may be empty.
Result<LoadedFrame> readObjPoints(std::string_view text, Progress const& progress);

}  // namespace vellum::viewport
