#pragma once

#include "foundation/raster/Core_RL.h"
#include "viewport/MeshData.h"

#include <string>

namespace vellum::viewport {

/// What a file holds, in complete lines for --info.
std::string describeMesh(std::string const& path, MeshData const& mesh);

/// What the driver of the current context offers, in complete lines for --info.
std::string describeDriver(Core_RL& layer);

}  // namespace vellum::viewport
