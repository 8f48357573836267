#include "viewport/files/common/large_pages.h"

#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

namespace vellum::viewport {

void preferLargePages(void const* start, std::size_t bytes) {
    constexpr std::uintptr_t LARGE_PAGE = std::uintptr_t(1) << 21;
    auto const first = (reinterpret_cast<std::uintptr_t>(start) + LARGE_PAGE - 1) / LARGE_PAGE * LARGE_PAGE;
    auto const last = (reinterpret_cast<std::uintptr_t>(start) + bytes) / LARGE_PAGE * LARGE_PAGE;
    if (first < last) {
        static_cast<void>(::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE));
    }
}

void releasePages(void* start, std::size_t bytes) {
    auto const page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    auto const first = (reinterpret_cast<std::uintptr_t>(start) + page - 1) / page * page;
    auto const last = (reinterpret_cast<std::uintptr_t>(start) + bytes) / page * page;
    if (first < last) {
        static_cast<void>(::madvise(reinterpret_cast<void*>(first), last - first, MADV_DONTNEED));
    }
}

}  // namespace vellum::viewport
