#pragma once

#include <cstddef>

namespace vellum::viewport {

/// Asks the system to fill this memory with large pages, which takes fewer interruptions. Only advice:
/// nothing changes where the system has none, and the content stays.
void preferLargePages(void const* start, std::size_t bytes);

/// Gives the memory of whole pages back whose content nobody looks at any more. It may be written again; what it holds until then
/// is undefined.
void releasePages(void* start, std::size_t bytes);

}  // namespace vellum::viewport
