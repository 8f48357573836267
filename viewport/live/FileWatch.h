#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Notices that files are written or replaced. It waits until nothing has happened to them for a while, since
/// programs write in several steps.
///
///     FileWatch watch(wakeTheWindow);
///     watch.setFiles({"run.dump"});
///     while (...) {
///         if (watch.takeChange()) reload;
///     }
///
/// All calls from one thread. Where the system cannot watch, nothing is ever noticed.
class FileWatch {
public:
    /// \param wake is called on another thread once for each change
    /// \param quietMilliseconds that must have passed since the last write
    explicit FileWatch(std::function<void()> wake, int quietMilliseconds = 300);
    ~FileWatch();
    FileWatch(FileWatch const&) = delete;
    FileWatch& operator=(FileWatch const&) = delete;

    /// Watches these in place of the former ones, and forgets what happened to those. Files need not exist
    /// yet; standard input and files in folders that do not exist are not watched.
    void setFiles(std::vector<std::string> const& files);

    /// Whether a file has changed since the last call.
    bool takeChange();

private:
    class Watcher;
    std::unique_ptr<Watcher> watcher;
};

}  // namespace vellum::viewport
