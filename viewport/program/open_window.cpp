#include "viewport/program/open_window.h"

#include "viewport/text/single_line.h"

#include <string>

#include <dlfcn.h>

namespace vellum::viewport {

std::optional<Failure> openWindow(Options const& options) {
    // It stays loaded: the window system's libraries are not made for being unloaded.
    void* const module = dlopen("vl_viewport_window.so", RTLD_NOW | RTLD_LOCAL);
    void* const function = module != nullptr ? dlsym(module, OPEN_WINDOW_NAME) : nullptr;
    if (function == nullptr) {
        char const* const reason = dlerror();
        return Failure{NO_OPENGL,
                       {"", singleLine(std::string("no window can be opened: ") +
                                       (reason != nullptr ? reason : "its module has no entry") +
                                       "; with --out FILE pictures are drawn without a display")}};
    }
    std::optional<Failure> failure;
    reinterpret_cast<OpenWindow>(function)(options, failure);
    return failure;
}

}  // namespace vellum::viewport
