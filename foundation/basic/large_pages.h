#pragma once

#include "foundation/export.h"

#include <cstddef>

namespace vellum {

/// Asks the system to fill this memory with large pages, which takes fewer interruptions. Only advice, and
/// none for what is smaller than a few megabytes: nothing changes where the system has no large pages, and
/// the content stays.
VL_FOUNDATION_EXPORT void preferLargePages(void const* start, std::size_t bytes) noexcept;

/// Gives the memory of whole pages back whose content nobody looks at any more. It may be written again; what
/// it holds until then is undefined.
VL_FOUNDATION_EXPORT void releasePages(void* start, std::size_t bytes) noexcept;

}  // namespace vellum
