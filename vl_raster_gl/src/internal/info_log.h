#pragma once

#include "internal/gl_api.h"

namespace vellum {

/// Of what a driver says about a shader or program, so many characters are kept, with the terminating zero.
constexpr GLsizei LOG_LENGTH = 4096;

}  // namespace vellum
