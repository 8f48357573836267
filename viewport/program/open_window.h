#pragma once

#include "viewport/content/Options.h"
#include "viewport/program/Console.h"

#include <optional>

namespace vellum::viewport {

/// The function of the window's module, a shared library of its own: what draws pictures into files must not
/// need the libraries of a window system. By the name OPEN_WINDOW_NAME; returns when the window is closed.
/// \param failure why there was no window
using OpenWindow = void (*)(Options const& options, std::optional<Failure>& failure);
constexpr char OPEN_WINDOW_NAME[] = "vl_viewport_open_window";

/// Opens a window with the files of the options, and returns when it is closed. A failure where there is no
/// display, or where the module is not installed.
std::optional<Failure> openWindow(Options const& options);

}  // namespace vellum::viewport
