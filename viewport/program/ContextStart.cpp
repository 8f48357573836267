#include "viewport/program/ContextStart.h"

#include <new>
#include <system_error>
#include <utility>

namespace vellum::viewport {

ContextStart::ContextStart(OffscreenContext::Settings const& settings) : settings(settings) {
    try {
        thread = std::thread([this] {
            try {
                auto made = std::make_unique<OffscreenContext>(this->settings);
                // An invalid one is made again by take(): drivers may want to be asked by the thread that draws.
                if (made->isValid() && made->makeNoneCurrent()) {
                    context = std::move(made);
                }
            } catch (std::bad_alloc const&) {
            }
        });
    } catch (std::system_error const&) {
    }
}

ContextStart::~ContextStart() {
    if (thread.joinable()) {
        thread.join();
    }
}

std::unique_ptr<OffscreenContext> ContextStart::take() {
    if (thread.joinable()) {
        thread.join();
    }
    if (context && !context->makeCurrent()) {
        context.reset();
    }
    return context ? std::move(context) : std::make_unique<OffscreenContext>(settings);
}

}  // namespace vellum::viewport
