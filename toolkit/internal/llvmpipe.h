#pragma once

#include "toolkit/internal/gl.h"

#include <cstring>

namespace vellum::toolkit {

/// Whether the current context is Mesa's software rasterizer.
/// GL: glGetString(GL_RENDERER).
inline bool isLlvmpipe() {
    auto const* const name = reinterpret_cast<char const*>(glGetString(GL_RENDERER));
    return name != nullptr && std::strstr(name, "llvmpipe") != nullptr;
}

}  // namespace vellum::toolkit
