#include "viewport/files/common/large_pages.h"

#include <cstdint>

#include <sys/mman.h>

namespace vellum::viewport {

void preferLargePages(void const* start, std::size_t bytes) {
    constexpr std::uintptr_t LARGE_PAGE = std::uintptr_t(1) << 21;
    auto const first = (reinterpret_cast<std::uintptr_t>(start) + LARGE_PAGE - 1) / LARGE_PAGE * LARGE_PAGE;
    auto const last = (reinterpret_cast<std::uintptr_t>(start) + bytes) / LARGE_PAGE * LARGE_PAGE;
    if (first < last) {
        static_cast<void>(::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE));
    }
}

}  // namespace vellum::viewport
