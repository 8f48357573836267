#include "viewport/live/FileWatch.h"

#include "viewport/files/common/FileDescriptor.h"

#include "viewport/files/common/InputFile.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace vellum::viewport {

namespace {

// Files are replaced by renaming as well, so their folders are watched.
constexpr std::uint32_t EVENTS = IN_CLOSE_WRITE | IN_MODIFY | IN_MOVED_TO;

}  // namespace

/// The thread that waits for the system.
class FileWatch::Watcher {
public:
    Watcher(std::function<void()> wake, int quietMilliseconds)
        : wake(std::move(wake))
        , quietMilliseconds(quietMilliseconds)
        , events(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
        , end(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
        if (events.get() >= 0 && end.get() >= 0) {
            thread = std::thread([this] { _run(); });
        }
    }
    ~Watcher() {
        if (thread.joinable()) {
            std::uint64_t const one = 1;
            static_cast<void>(!write(end.get(), &one, sizeof one));
            thread.join();
        }
    }
    Watcher(Watcher const&) = delete;
    Watcher& operator=(Watcher const&) = delete;

    void setFiles(std::vector<std::string> const& files) {
        std::lock_guard<std::mutex> const lock(mutex);
        for (auto const& folder : folders) {
            inotify_rm_watch(events.get(), folder.first);
        }
        folders.clear();
        isPending = false;
        hasChanged = false;
        for (std::string const& file : files) {
            std::filesystem::path const path(file);
            std::string const folder =
                path.has_parent_path() ? path.parent_path().string() : std::string(".");
            int const number = InputFile::isStandardInput(file)
                                   ? -1
                                   : inotify_add_watch(events.get(), folder.c_str(), EVENTS | IN_ONLYDIR);
            if (number >= 0) {
                folders[number].insert(path.filename().string());
            }
        }
    }

    bool takeChange() { return hasChanged.exchange(false); }

private:
    void _run() {
        std::array<pollfd, 2> waiting{{{events.get(), POLLIN, 0}, {end.get(), POLLIN, 0}}};
        for (;;) {
            int const count = poll(waiting.data(), waiting.size(), isPending ? quietMilliseconds : -1);
            if (waiting[1].revents != 0) {
                return;
            }
            if (count > 0) {
                _read();
            } else if (count == 0 && _settle()) {
                wake();
            }
        }
    }

    /// Takes what has happened.
    void _read() {
        alignas(inotify_event) std::array<char, 4096> bytes{};
        ssize_t const length = read(events.get(), bytes.data(), bytes.size());
        std::lock_guard<std::mutex> const lock(mutex);
        for (ssize_t place = 0; place < length;) {
            inotify_event event{};
            char const* const start = bytes.data() + place;
            std::memcpy(&event, start, sizeof event);
            auto const folder = folders.find(event.wd);
            if (event.len > 0 && folder != folders.end() && folder->second.count(start + sizeof event) != 0) {
                isPending = true;
            }
            place += static_cast<ssize_t>(sizeof event + event.len);
        }
    }

    /// Nothing has happened for a while. Whether something had happened before.
    bool _settle() {
        std::lock_guard<std::mutex> const lock(mutex);
        bool const isSettled = isPending.exchange(false);
        hasChanged = hasChanged || isSettled;
        return isSettled;
    }

    std::function<void()> wake;
    int quietMilliseconds;
    FileDescriptor events;
    FileDescriptor end;
    std::mutex mutex;
    std::map<int, std::set<std::string>> folders;  // names of files, by the number of their folder's watch
    std::atomic<bool> isPending{false};
    std::atomic<bool> hasChanged{false};
    std::thread thread;
};

FileWatch::FileWatch(std::function<void()> wake, int quietMilliseconds)
    : watcher(std::make_unique<Watcher>(std::move(wake), quietMilliseconds)) {}

FileWatch::~FileWatch() = default;

void FileWatch::setFiles(std::vector<std::string> const& files) {
    watcher->setFiles(files);
}

bool FileWatch::takeChange() {
    return watcher->takeChange();
}

}  // namespace vellum::viewport
