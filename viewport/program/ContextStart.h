#pragma once

#include "offscreen/OffscreenContext.h"

#include <memory>
#include <thread>

namespace vellum::viewport {

/// Makes an off-screen context on another thread: a driver takes a tenth of a second and more to be loaded, in which files are
/// read.
///
///     ContextStart start(settings);
///     ... read files ...
///     std::unique_ptr<OffscreenContext> const context = start.take();
class ContextStart {
public:
    explicit ContextStart(OffscreenContext::Settings const& settings);
    ~ContextStart();  ///< Waits for a context that nobody took, and releases it.

    ContextStart(ContextStart const&) = delete;
    ContextStart& operator=(ContextStart const&) = delete;

    /// Waits for the context and makes it current in the calling thread. Once.
    /// \return never null; like one made here, it may be invalid.
    std::unique_ptr<OffscreenContext> take();

private:
    OffscreenContext::Settings settings;
    std::unique_ptr<OffscreenContext> context;
    std::thread thread;  // not joinable where it could not be started
};

}  // namespace vellum::viewport
