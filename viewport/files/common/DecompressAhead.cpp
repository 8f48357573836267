#include "viewport/files/common/DecompressAhead.h"

#include "foundation/basic/threads.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

namespace vellum::viewport {

/// The thread and what it shares with its owner.
class DecompressAhead::Work {
public:
    Work(std::string_view compressed, std::uint64_t limit) : all(compressed.size()), work(compressed, limit) {
        // Texts of numbers have two or three times the size. The text must not move while it is read: what is
        // longer is left to the owner.
        constexpr std::uint64_t LARGEST_FACTOR = 16;
        std::uint64_t const enough = std::min(LARGEST_FACTOR * compressed.size(), limit) + SLACK;
        constexpr std::size_t FEW = std::size_t(1) << 15;  // are done as soon as there is a thread
        if (threadLimit() == 1 || all < FEW || !work.buffer().reserve(static_cast<std::size_t>(enough))) {
            return;
        }
        start = work.buffer().bytes().data();
        isRunning = true;
        try {
            thread = std::thread([this] { _run(); });
        } catch (std::system_error const&) {
            isRunning = false;
        }
    }

    ~Work() { stop(); }
    Work(Work const&) = delete;
    Work& operator=(Work const&) = delete;

    /// Afterwards the owner alone uses the decompression.
    void stop() {
        {
            std::lock_guard<std::mutex> const lock(mutex);
            isStopped = true;
        }
        if (thread.joinable()) {
            thread.join();
        }
    }

    /// Waits for more or some milliseconds.
    std::string_view beyond(std::size_t known) {
        constexpr std::chrono::milliseconds PATIENCE{10};
        std::unique_lock<std::mutex> lock(mutex);
        grown.wait_for(lock, PATIENCE, [&] { return !isRunning || filled > known; });
        return {start, filled};
    }

    bool mayGrow() const {
        std::lock_guard<std::mutex> const lock(mutex);
        return isRunning;
    }

    std::size_t done() const {
        std::lock_guard<std::mutex> const lock(mutex);
        return passed;
    }

    std::uint64_t expectedSize() const {
        std::lock_guard<std::mutex> const lock(mutex);
        double const factor = passed > 0 ? static_cast<double>(filled) / static_cast<double>(passed) : 1;
        return static_cast<std::uint64_t>(factor * static_cast<double>(all));
    }

    std::size_t const all;
    Decompression work;
    bool goesOn = true;  // there is a step to be done; the thread's while it runs

private:
    static constexpr std::size_t SLACK = std::size_t(1) << 16;

    void _run() {
        while (goesOn && work.buffer().room() > 0) {
            try {
                goesOn = work.step();
            } catch (std::bad_alloc const&) {
                // The owner tries it again, and has somebody to tell.
                break;
            }
            std::lock_guard<std::mutex> const lock(mutex);
            filled = work.buffer().size();
            passed = work.done();
            if (isStopped) {
                break;
            }
            grown.notify_all();
        }
        std::lock_guard<std::mutex> const lock(mutex);
        isRunning = false;
        grown.notify_all();
    }

    char const* start = nullptr;
    mutable std::mutex mutex;  // of all that follows but the thread
    std::condition_variable grown;
    std::size_t filled = 0;
    std::size_t passed = 0;  // compressed bytes
    bool isRunning = false;
    bool isStopped = false;
    std::thread thread;  // last: it uses all of the others
};

DecompressAhead::DecompressAhead(std::string_view compressed, std::uint64_t limit,
                                 std::optional<DecompressedText>& text, Progress const& progress)
    : work(std::make_unique<Work>(compressed, limit)), text(text), progress(progress) {}

DecompressAhead::~DecompressAhead() = default;

std::string_view DecompressAhead::beyond(std::size_t known) {
    while (true) {
        bool const mayGrow = work->mayGrow();
        std::string_view const there = work->beyond(known);
        if (progress) {
            progress(work->done(), work->all);
        }
        if (there.size() > known || !mayGrow) {
            return there;
        }
    }
}

std::uint64_t DecompressAhead::expectedSize() const {
    return work->expectedSize();
}

Result<std::string_view> DecompressAhead::whole() {
    for (std::size_t known = 0; work->mayGrow();) {
        known = beyond(known).size();
    }
    work->stop();
    if (progress) {
        progress(work->work.done(), work->all);
    }
    while (work->goesOn) {
        work->goesOn = work->work.step();
        if (progress) {
            progress(work->work.done(), work->all);
        }
    }
    Result<DecompressedText> found = work->work.take();
    if (!found.isOk()) {
        return found.fault();
    }
    text = std::move(found.value());
    return text->buffer.bytes();
}

}  // namespace vellum::viewport
