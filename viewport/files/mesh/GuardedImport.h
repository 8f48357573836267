#pragma once

#include "viewport/files/common/GuardedRun.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/text/Fault.h"

#include <functional>
#include <string>

namespace vellum::viewport {

/// Runs `import` in a child process (see GuardedRun.h) and returns its result, which is checked like any
/// foreign data (see MeshTransfer.h). \param file only names the file in faults \param progress see
/// runGuarded()
Result<MeshData> importGuarded(std::string const& file, std::function<Result<MeshData>()> const& import,
                               ImportLimits const& limits, Progress const& progress = {});

}  // namespace vellum::viewport
