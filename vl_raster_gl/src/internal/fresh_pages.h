#pragma once

#include <cstddef>

namespace vellum {

/// Asks the system for the pages of memory that is about to be written from end to end. New memory has none
/// yet, and each page would interrupt the first write to it; one call for all of them is faster. Memory that
/// has its pages, less than 128 kilobytes of it, and systems without the call are left alone. The contents do
/// not change. errno is kept. \param memory writable, also of a driver. Safe on any thread.
void takePages(void* memory, std::size_t bytes);

}  // namespace vellum
