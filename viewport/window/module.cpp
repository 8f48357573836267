#include "viewport/drawing/layer/GlewStart.h"
#include "viewport/live/WindowSettings.h"
#include "viewport/program/Console.h"
#include "viewport/program/open_window.h"
#include "viewport/window/Application.h"
#include "viewport/window/Window.h"

namespace vellum::viewport {

namespace {

std::optional<Failure> openAndRun(Options const& options) {
    WindowSettings settings;
    if (std::optional<Fault> const damage = settings.load(WindowSettings::userFile())) {
        note(options, *damage);
    }
    PictureSize size = options.pictures.front().size;
    if (options.given.count("--size") == 0 && settings.width && settings.height) {
        size = {*settings.width, *settings.height};
    }
    Result<std::unique_ptr<Window>> window = Window::open("vl_viewport", size);
    if (!window.isOk()) {
        return Failure{NO_OPENGL, window.fault()};
    }
    if (std::optional<Fault> const fault = startGlew()) {
        return Failure{NO_OPENGL, *fault};
    }
    std::optional<Fault> const fault = Application(*window.value(), options, settings).run();
    if (std::optional<Fault> const unwritten = settings.save()) {
        note(options, *unwritten);
    }
    return fault ? std::optional<Failure>({USAGE_FAULT, *fault}) : std::nullopt;
}

}  // namespace

}  // namespace vellum::viewport

/// The entry of the window's module, see open_window.h.
extern "C" __attribute__((visibility("default"))) void
vl_viewport_open_window(vellum::viewport::Options const& options,
                        std::optional<vellum::viewport::Failure>& failure);

void vl_viewport_open_window(vellum::viewport::Options const& options,
                             std::optional<vellum::viewport::Failure>& failure) {
    failure = vellum::viewport::openAndRun(options);
}
