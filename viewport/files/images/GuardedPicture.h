#pragma once

#include "foundation/image/VL_Image.h"
#include "viewport/files/common/Progress.h"

#include <functional>
#include <memory>

namespace vellum::viewport {

/// Runs a decoder that damaged pictures may harm in a process of its own (see GuardedRun.h).
/// \return its picture, the sizes of which are checked; null where it gives none, whatever the reason
/// \param progress see runGuarded()
std::shared_ptr<VL_Image const> decodeGuarded(std::function<bool(VL_Image&)> const& decode,
                                              Progress const& progress = {});

}  // namespace vellum::viewport
