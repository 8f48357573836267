#pragma once

#include "viewport/text/Fault.h"

#include <optional>

namespace vellum::viewport {

/// Initializes GLEW for the current context, whether GLX or EGL made it. A context must be current.
std::optional<Fault> startGlew();

}  // namespace vellum::viewport
