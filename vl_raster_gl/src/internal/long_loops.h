#pragma once

#include "foundation/basic/threads.h"

#include <algorithm>
#include <cstddef>

namespace vellum {

/// Up to so many particles, triangles or arrows, a fill stays on the calling thread: it is over before other
/// threads are awake.
inline constexpr std::size_t MOST_ON_ONE_THREAD = 1000000;

/// Calls `task(begin, end)` for the ranges of `rangeSize` that make up [0, count), as forRanges() does: in
/// order on the calling thread up to MOST_ON_ONE_THREAD elements, above it on several threads. The task
/// throws nothing and calls no GL. \pre rangeSize > 0
template <typename Task>
void forLongRanges(std::size_t count, std::size_t rangeSize, Task const& task) {
    if (count > MOST_ON_ONE_THREAD) {
        forRanges(count, rangeSize, task);
        return;
    }
    for (std::size_t begin = 0; begin < count; begin += rangeSize) {
        task(begin, begin + std::min(rangeSize, count - begin));
    }
}

}  // namespace vellum
