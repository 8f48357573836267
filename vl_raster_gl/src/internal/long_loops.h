#pragma once

#include "foundation/basic/threads.h"

#include <cstddef>

namespace vellum {

/// Up to so many particles, triangles or arrows, a fill stays on the calling thread: it is over before other threads are
/// awake.
inline constexpr std::size_t MOST_ON_ONE_THREAD = 1000000;

/// Calls `task(begin, end)` for ranges that make up [0, count): one range on the calling thread up to MOST_ON_ONE_THREAD
/// elements, above it ranges of `rangeSize` on several threads, as forRanges() does. The task throws nothing and calls no GL.
template <typename Task>
void forLongRanges(std::size_t count, std::size_t rangeSize, Task const& task) {
    if (count > MOST_ON_ONE_THREAD) {
        forRanges(count, rangeSize, task);
    } else if (count != 0) {
        task(std::size_t{0}, count);
    }
}

}  // namespace vellum
