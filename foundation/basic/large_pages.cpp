#include "foundation/basic/large_pages.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace vellum {

#if defined(__linux__)

void preferLargePages(void const* start, std::size_t bytes) noexcept {
    constexpr std::uintptr_t LARGE_PAGE = std::uintptr_t(1) << 21;
    // Before the first and behind the last large page there may be nearly as much again.
    constexpr std::size_t LEAST = 2 * LARGE_PAGE;
    if (start == nullptr || bytes < LEAST) {
        return;
    }
    auto const first = (reinterpret_cast<std::uintptr_t>(start) + LARGE_PAGE - 1) / LARGE_PAGE * LARGE_PAGE;
    auto const last = (reinterpret_cast<std::uintptr_t>(start) + bytes) / LARGE_PAGE * LARGE_PAGE;
    if (first < last) {
        static_cast<void>(::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE));
    }
}

void releasePages(void* start, std::size_t bytes) noexcept {
    auto const page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    auto const first = (reinterpret_cast<std::uintptr_t>(start) + page - 1) / page * page;
    auto const last = (reinterpret_cast<std::uintptr_t>(start) + bytes) / page * page;
    if (first < last) {
        static_cast<void>(::madvise(reinterpret_cast<void*>(first), last - first, MADV_DONTNEED));
    }
}

#else

void preferLargePages(void const*, std::size_t) noexcept {}
void releasePages(void*, std::size_t) noexcept {}

#endif

}  // namespace vellum
