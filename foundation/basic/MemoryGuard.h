#pragma once

#include <atomic>
#include <new>

namespace vellum {

/// Lets the tasks of forRanges(), which throw nothing, run out of memory:
///
///     MemoryGuard guard;
///     forRanges(count, size, [&](std::size_t begin, std::size_t end) { guard.run([&] { ... allocates ... }); });
///     guard.check();
class MemoryGuard {
public:
    template <typename Work>
    void run(Work const& work) noexcept {
        try {
            work();
        } catch (std::bad_alloc const&) {
            hasFailed.store(true, std::memory_order_relaxed);
        }
    }

    /// Throws std::bad_alloc on the calling thread where some work did.
    void check() const {
        if (hasFailed.load(std::memory_order_relaxed)) {
            throw std::bad_alloc();
        }
    }

private:
    std::atomic<bool> hasFailed{false};
};

}  // namespace vellum
