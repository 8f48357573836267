#pragma once

#include "viewport/text/Fault.h"

#include <optional>
#include <string>

namespace vellum::gallery {

/// Writes the models and maps that the gallery draws with effects into a folder, which must exist:
///
/// | File | |
/// |---|---|
/// | room.obj, room.mtl | a checkered floor with colored boxes |
/// | glass.obj | a ball and a drop, to be drawn as glass in the room |
/// | plate.obj, coarse_plate.obj | a flat square of 256 x 256 and of 48 x 48 squares |
/// | land.png | a displacement map for the plates |
///
/// \return the fault that kept a file from being written, or nothing.
std::optional<viewport::Fault> writeEffectInputs(std::string const& folder);

}  // namespace vellum::gallery
