#include "internal/fresh_pages.h"

#include <cerrno>
#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

namespace vellum {

#ifdef MADV_POPULATE_WRITE

namespace {

constexpr std::size_t LEAST_BYTES = std::size_t{1} << 17;

bool hasPage(std::uintptr_t address) {
    unsigned char state = 0;
    // Where the system does not say, there is nothing to do.
    return mincore(reinterpret_cast<void*>(address), 1, &state) != 0 || (state & 1U) != 0;
}

}  // namespace

void takePages(void* memory, std::size_t bytes) {
    if (bytes < LEAST_BYTES) {
        return;
    }
    int const error = errno;
    auto const page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    auto const start = reinterpret_cast<std::uintptr_t>(memory);
    // Whole pages: those at the ends may belong to others.
    std::uintptr_t const first = (start + page - 1) / page * page;
    std::uintptr_t const end = (start + bytes) / page * page;
    std::uintptr_t const middle = first + (end - first) / page / 2 * page;
    if (!hasPage(first) || !hasPage(middle) || !hasPage(end - page)) {
        // Device memory is refused, and so is more than there is: the writes then show what happens.
        madvise(reinterpret_cast<void*>(first), end - first, MADV_POPULATE_WRITE);
    }
    errno = error;
}

#else

void takePages(void* /*memory*/, std::size_t /*bytes*/) {}

#endif

}  // namespace vellum
