#pragma once

#include <cstdint>
#include <functional>

namespace vellum::viewport {

/// Called now and then while a file is read: the bytes done and the bytes in all, or 0 where that is not
/// known. `done` never decreases. An empty one is not called.
///
/// Readers call it on their own thread, at least every few milliseconds of their work on the file's text. It
/// may throw Cancelled to stop them: they pass it on and leave nothing behind, no child process, descriptor
/// or file. A reader must not catch it, nor call the progress from a library that exceptions cannot pass.
using Progress = std::function<void(std::uint64_t done, std::uint64_t all)>;

/// What a progress throws where nobody wants the file any more. No std::exception, so that no reader takes it
/// for a fault of the file.
struct Cancelled {};

/// Calls a progress at most once per megabyte, for readers that pass many small items.
class ProgressPace {
public:
    /// \param progress must outlive it; an empty one costs a comparison per call.
    ProgressPace(Progress const& progress, std::uint64_t all)
        : progress(progress), all(all), next(progress ? 0 : UINT64_MAX) {}

    void at(std::uint64_t done) {
        if (done >= next) {
            constexpr std::uint64_t STEP = std::uint64_t(1) << 20;
            next = done + STEP;
            progress(done, all);
        }
    }

    /// After the last byte, between steps of work that are long as well.
    void atEnd() const {
        if (progress) {
            progress(all, all);
        }
    }

private:
    Progress const& progress;
    std::uint64_t all;
    std::uint64_t next;
};

}  // namespace vellum::viewport
