#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/text/Fault.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace vellum::viewport {

/// Reads frames on a thread of its own, ahead of the one that is shown.
///
///     ReadAhead<Frame> reader({load, bytesOf}, 1U << 30);
///     reader.want({7, 8, 9});                     // 7 now, then 8 and 9 as far as memory goes
///     ... for each picture of a window ...
///         if (std::optional<Result<Frame>> frame = reader.take())
///             ... show it, and want({8, 9, 10}) when its time is over ...
///
/// A program that has nothing else to do calls wait() in place of take().
///
/// A frame that is being read is given up where it is wanted no longer, at the next report of progress of its
/// load. So who asks for frames faster than they can be read never gets one: ask for the next one after
/// take().
///
/// The functions of the source are called on the reader's thread, one at a time, and must not use what other
/// threads change. The reader itself is for one thread. A template without a source file, so that the tests
/// of its threads need none of the formats.
template <class Frame>
class ReadAhead {
public:
    using Load = std::function<Result<Frame>(std::size_t number, Progress const& progress)>;

    struct Source {
        Load load;                                           ///< exceptions become faults
        std::function<std::uint64_t(Frame const&)> bytesOf;  ///< the memory that a frame takes
        std::function<void()> notify =
            {};  ///< called on the reader's thread when the first frame wanted is there; may be empty
        bool isForCaller =
            false;  ///< load on the thread that calls take() or wait(), which waits for it then
    };

    /// \param budget bytes that finished frames may take before they are taken; the first one wanted is read in any case,
    ///     and one that is larger than all before it may go beyond
    ReadAhead(Source source, std::uint64_t budget) : source(std::move(source)), budget(budget) {
        if (!this->source.isForCaller) {
            try {
                thread = std::thread([this] { _run(); });
            } catch (std::system_error const&) {
                // Without a thread frames are read when they are taken.
                this->source.isForCaller = true;
            }
        }
    }

    /// Gives up what is being read and waits for that.
    ~ReadAhead() {
        {
            std::lock_guard<std::mutex> const lock(mutex);
            isEnding = true;
            mayGoOn = false;
        }
        changed.notify_all();
        if (thread.joinable()) {
            thread.join();
        }
    }

    ReadAhead(ReadAhead const&) = delete;
    ReadAhead& operator=(ReadAhead const&) = delete;

    /// Says what is to be read: the first one now, the others ahead in this order. Finished frames that are
    /// not among them are dropped. A frame that was taken is read again where it is wanted again.
    void want(std::vector<std::size_t> frames) {
        std::map<std::size_t, Result<Frame>> dropped;  // freed without the lock
        {
            std::lock_guard<std::mutex> const lock(mutex);
            wanted = std::move(frames);
            isTaken = wanted.empty();
            for (auto entry = finished.begin(); entry != finished.end();) {
                auto const next = std::next(entry);
                if (!_isWanted(entry->first)) {
                    held -= _bytesOf(entry->second);
                    dropped.insert(finished.extract(entry));
                }
                entry = next;
            }
            if (current && !_isWorthWhile(*current)) {
                mayGoOn = false;
            }
        }
        changed.notify_all();
    }

    /// The first frame wanted, once, or why it cannot be read; nothing: it is still being read, or was taken.
    /// Never waits, except where the source is for the caller.
    std::optional<Result<Frame>> take() {
        if (source.isForCaller) {
            return _loadHere();
        }
        std::lock_guard<std::mutex> const lock(mutex);
        return _take();
    }

    /// The same after waiting for it. Nothing only where nothing is wanted or it was taken.
    std::optional<Result<Frame>> wait() {
        if (source.isForCaller) {
            return _loadHere();
        }
        std::unique_lock<std::mutex> lock(mutex);
        delivered.wait(lock, [this] { return isTaken || finished.count(wanted.front()) != 0; });
        return _take();
    }

    /// How much of the first frame wanted is read, 0 to 1.
    double part() const {
        std::lock_guard<std::mutex> const lock(mutex);
        if (isTaken || finished.count(wanted.front()) != 0) {
            return 1;
        }
        return current == wanted.front() ? donePart.load() : 0;
    }

    /// The bytes of finished frames that wait to be taken.
    std::uint64_t heldBytes() const {
        std::lock_guard<std::mutex> const lock(mutex);
        return held;
    }

private:
    struct GivenUp {};  // thrown through a load

    // == With the lock ==

    bool _isWanted(std::size_t number) const {
        return std::find(wanted.begin(), wanted.end(), number) != wanted.end();
    }

    bool _isFirstReady() const { return isTaken || finished.count(wanted.front()) != 0; }

    bool _isWorthWhile(std::size_t number) const {
        return _isFirstReady() ? _isWanted(number) && !(isTaken && number == wanted.front())
                               : number == wanted.front();
    }

    std::optional<std::size_t> _next() const {
        if (wanted.empty()) {
            return std::nullopt;
        }
        if (!_isFirstReady()) {
            return wanted.front();
        }
        // All frames of a sequence are about as large.
        if (held + largest > budget) {
            return std::nullopt;
        }
        auto const next = std::find_if(wanted.begin() + 1, wanted.end(), [this](std::size_t number) {
            return number != wanted.front() && finished.count(number) == 0;
        });
        return next != wanted.end() ? std::optional<std::size_t>(*next) : std::nullopt;
    }

    std::optional<Result<Frame>> _take() {
        if (isTaken) {
            return std::nullopt;
        }
        auto const found = finished.find(wanted.front());
        if (found == finished.end()) {
            return std::nullopt;
        }
        isTaken = true;
        held -= _bytesOf(found->second);
        std::optional<Result<Frame>> frame(std::move(found->second));
        finished.erase(found);
        changed.notify_all();
        return frame;
    }

    // == Without it ==

    std::uint64_t _bytesOf(Result<Frame> const& frame) const {
        return frame.isOk() ? source.bytesOf(frame.value()) : 0;
    }

    Result<Frame> _load(std::size_t number, Progress const& progress) const {
        try {
            return source.load(number, progress);
        } catch (GivenUp const&) {
            throw;
        } catch (std::exception const& exception) {
            return Fault{{}, exception.what()};
        }
    }

    std::optional<Result<Frame>> _loadHere() {
        if (isTaken) {
            return std::nullopt;
        }
        isTaken = true;
        return _load(wanted.front(), {});
    }

    void _run() {
        std::unique_lock<std::mutex> lock(mutex);
        while (true) {
            changed.wait(lock, [this] { return isEnding || _next(); });
            if (isEnding) {
                return;
            }
            current = _next();
            std::size_t const number = *current;
            mayGoOn = true;
            donePart = 0;
            lock.unlock();
            std::optional<Result<Frame>> frame = _read(number);
            std::uint64_t const bytes = frame ? _bytesOf(*frame) : 0;
            lock.lock();
            current.reset();
            bool const isFirst = !wanted.empty() && number == wanted.front();
            if (frame && _isWanted(number) && !(isFirst && isTaken)) {
                held += bytes;
                largest = std::max(largest, bytes);
                finished.emplace(number, std::move(*frame));
                if (isFirst) {
                    delivered.notify_all();
                }
                if (isFirst && source.notify) {
                    lock.unlock();
                    source.notify();
                    lock.lock();
                }
            }
            if (frame && finished.count(number) == 0) {
                lock.unlock();
                frame.reset();
                lock.lock();
            }
        }
    }

    /// Nothing where it was given up.
    std::optional<Result<Frame>> _read(std::size_t number) {
        try {
            return _load(number, [this](std::uint64_t done, std::uint64_t all) {
                if (!mayGoOn) {
                    throw GivenUp{};
                }
                donePart =
                    all > 0 ? std::min(1.0, static_cast<double>(done) / static_cast<double>(all)) : 1.0;
            });
        } catch (GivenUp const&) {
            return std::nullopt;
        }
    }

    Source source;
    std::uint64_t budget;
    mutable std::mutex mutex;           // of all that follows but the atomic ones
    std::condition_variable changed;    // what is wanted or held
    std::condition_variable delivered;  // the first frame wanted is there
    std::vector<std::size_t> wanted;
    bool isTaken = true;  // the first one wanted, or nothing is wanted
    std::map<std::size_t, Result<Frame>> finished;
    std::uint64_t held = 0;              // bytes of those
    std::uint64_t largest = 0;           // bytes of a frame so far
    std::optional<std::size_t> current;  // being read
    bool isEnding = false;
    std::atomic<bool> mayGoOn{true};
    std::atomic<double> donePart{0};  // of the one being read
    std::thread thread;               // last: it uses all of the others
};

}  // namespace vellum::viewport
