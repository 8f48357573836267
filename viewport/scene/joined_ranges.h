#pragma once

#include "foundation/basic/threads.h"

#include <cstddef>
#include <type_traits>
#include <vector>

namespace vellum::viewport {

/// What many particles add up to, on all cores: smallest and largest numbers, counts. The ranges do not
/// depend on the number of threads, nor does the result.
///
/// \param start of each range, and what the results of the ranges are joined to, in their order
/// \param add (Sum&, std::size_t) adds a particle to a range; it throws nothing
/// \param join (Sum&, Sum const&) adds the next range to those before it
template <class Sum, class Add, class Join>
Sum joinedRanges(std::size_t count, Sum const& start, Add const& add, Join const& join) {
    static_assert(std::is_trivially_copyable_v<Sum>, "a copy throws nothing");
    constexpr std::size_t RANGE = std::size_t(1) << 16;
    std::vector<Sum> sums((count + RANGE - 1) / RANGE, start);
    forRanges(count, RANGE, [&](std::size_t begin, std::size_t end) {
        Sum sum = start;
        for (std::size_t i = begin; i < end; ++i) {
            add(sum, i);
        }
        sums[begin / RANGE] = sum;
    });
    Sum all = start;
    for (Sum const& sum : sums) {
        join(all, sum);
    }
    return all;
}

}  // namespace vellum::viewport
