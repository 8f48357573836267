#include "foundation/basic/threads.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <exception>

#include <tbb/info.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

namespace vellum {

namespace {

constexpr int MOST_THREADS = 1024;

int firstLimit() noexcept {
    char const* const text = std::getenv("VL_THREADS");
    int threads = 0;
    if (text != nullptr) {
        char const* const end = text + std::strlen(text);
        std::from_chars_result const read = std::from_chars(text, end, threads);
        if (read.ec != std::errc() || read.ptr != end) {
            threads = 0;
        }
    }
    return threads >= 1 && threads <= MOST_THREADS
               ? threads
               : std::clamp(tbb::info::default_concurrency(), 1, MOST_THREADS);
}

std::atomic<int>& limit() noexcept {
    static std::atomic<int> value{firstLimit()};
    return value;
}

}  // namespace

int threadLimit() noexcept {
    return limit().load(std::memory_order_relaxed);
}

void setThreadLimit(int threads) noexcept {
    limit().store(threads < 1 ? firstLimit() : std::min(threads, MOST_THREADS), std::memory_order_relaxed);
}

void detail::forRanges(std::size_t count, std::size_t rangeSize, RangeTask task) {
    std::size_t const rangeCount = count / rangeSize + (count % rangeSize == 0 ? 0 : 1);
    std::atomic<std::size_t> next{0};
    auto const takeRanges = [&]() noexcept {
        for (std::size_t range = next.fetch_add(1, std::memory_order_relaxed); range < rangeCount;
             range = next.fetch_add(1, std::memory_order_relaxed)) {
            std::size_t const begin = range * rangeSize;
            task.call(task.object, begin, begin + std::min(rangeSize, count - begin));
        }
    };
    // To ask for more threads than there are cores makes the scheduler print a warning.
    int const mostThreads = std::min(threadLimit(), tbb::info::default_concurrency());
    int const helperCount = static_cast<int>(std::min(static_cast<std::size_t>(mostThreads), rangeCount)) - 1;
    if (helperCount > 0) {
        // Each thread takes ranges until none is left. Those that no thread could be had for are taken below.
        try {
            tbb::task_arena arena(helperCount + 1);
            arena.execute([&] {
                tbb::parallel_for(
                    0, helperCount + 1, [&](int) { takeRanges(); }, tbb::simple_partitioner());
            });
        } catch (std::exception const&) {
        }
    }
    takeRanges();
}

}  // namespace vellum
