#include "viewport/program/ContextAhead.h"

#include "foundation/basic/threads.h"
#include "viewport/files/common/GuardedRun.h"

#include <system_error>

namespace vellum::viewport {

void ContextAhead::begin() {
    if (context != nullptr || arrival.valid() || threadLimit() == 1) {
        return;
    }
    try {
        arrival = std::async(std::launch::async, [settings = settings] {
            NoChildren const untilItIsMade;
            auto made = std::make_unique<OffscreenContext>(settings);
            made->release();
            return made;
        });
    } catch (std::system_error const&) {
        // get() does it.
    }
}

OffscreenContext& ContextAhead::get() {
    if (arrival.valid()) {
        context = arrival.get();
        context->makeCurrent();
    }
    if (context == nullptr) {
        context = std::make_unique<OffscreenContext>(settings);
    }
    return *context;
}

}  // namespace vellum::viewport
