#pragma once

#include <optional>
#include <string>

namespace vellum::viewport {

/// Initializes GLEW for the current context, whether GLX or EGL made it. Gives nothing on success, else the reason
/// as one clause. A context must be current.
std::optional<std::string> startGlew();

}  // namespace vellum::viewport
