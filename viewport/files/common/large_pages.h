#pragma once

#include <cstddef>

namespace vellum::viewport {

/// Asks the system to fill this memory with large pages, which takes fewer interruptions. Only advice:
/// nothing changes where the system has none, and the content stays.
void preferLargePages(void const* start, std::size_t bytes);

}  // namespace vellum::viewport
