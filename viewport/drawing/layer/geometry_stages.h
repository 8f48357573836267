#pragma once

#include "foundation/raster/Core_RL.h"

namespace vellum::viewport {

/// Whether the driver of the current context draws geometry stages, by an extension or by its version.
bool hasGeometryStages(Core_RL& layer);

}  // namespace vellum::viewport
