#pragma once

#include "offscreen/OffscreenContext.h"

#include <future>
#include <memory>

namespace vellum::viewport {

/// An off-screen context that a thread of its own makes while files are read: to load the driver and to fill
/// its buffers takes as long as to read a model of moderate size.
///
///     ContextAhead ahead(settings);
///     ahead.begin();
///     ... read ...
///     OffscreenContext& context = ahead.get();
class ContextAhead {
public:
    explicit ContextAhead(OffscreenContext::Settings const& settings) : settings(settings) {}

    /// Waits for the thread, if it has begun.
    ~ContextAhead() = default;

    ContextAhead(ContextAhead const&) = delete;
    ContextAhead& operator=(ContextAhead const&) = delete;

    /// Begins to make the context, and returns at once. Does nothing where it has begun, where the program is
    /// to use one thread alone, and where the system gives no thread: get() makes the context then.
    void begin();

    /// The context, current in the calling thread until this object ends. It may be invalid and says why. All
    /// calls must come from one thread.
    OffscreenContext& get();

private:
    OffscreenContext::Settings settings;
    std::unique_ptr<OffscreenContext> context;               // null: not taken over yet
    std::future<std::unique_ptr<OffscreenContext>> arrival;  // without a state: not begun, or taken over
};

}  // namespace vellum::viewport
