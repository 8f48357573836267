#pragma once

#include "foundation/export.h"

#include <cstddef>
#include <type_traits>

/// \file
/// Work on several cores: how many threads this library may use, and the one loop that uses them.
///
/// Only long loops over plain memory run on several threads: fills of buffers, derived values of meshes, the
/// parsing of files. Each result has the same bits as on one thread. Calls of GL stay on the caller's thread.

namespace vellum {

/// The most threads that a call into this library uses, its own included: at least 1. No more are used than
/// there are cores for this process, whatever the limit. Until setThreadLimit() is called, it is what the
/// environment variable VL_THREADS says, or the number of cores if the variable is missing or no number from
/// 1 to 1024.
VL_FOUNDATION_EXPORT int threadLimit() noexcept;

/// Changes the limit for later calls, on any thread; 1 keeps all work on the calling thread, 0 or less
/// returns to the first limit. Not more than 1024.
VL_FOUNDATION_EXPORT void setThreadLimit(int threads) noexcept;

namespace detail {

/// A reference to a function object that outlives the call.
struct RangeTask {
    void const* object;
    void (*call)(void const* object, std::size_t begin, std::size_t end);
};
VL_FOUNDATION_EXPORT void forRanges(std::size_t count, std::size_t rangeSize, RangeTask task);

}  // namespace detail

/// Calls `task(begin, end)` for the ranges [0, rangeSize), [rangeSize, 2 rangeSize) ... that make up [0,
/// count), each once, and returns when all calls have returned. The ranges do not depend on the number of
/// threads; their order and the threads that they run on do: a task writes only what belongs to its range, or
/// to the range's number, begin / rangeSize. One range, or a limit of 1, is done on the calling thread in
/// order. Where the system gives no thread, the calling one does its part. \pre rangeSize > 0; the task
/// throws nothing.
template <typename Task>
void forRanges(std::size_t count, std::size_t rangeSize, Task const& task) {
    static_assert(std::is_invocable_v<Task const&, std::size_t, std::size_t>, "task(begin, end) is called");
    detail::forRanges(count, rangeSize, {&task, [](void const* object, std::size_t begin, std::size_t end) {
                                             (*static_cast<Task const*>(object))(begin, end);
                                         }});
}

}  // namespace vellum
