#pragma once

#include "internal/gl_api.h"

namespace vellum {

/// Discards one pending error: of a texture that GL refuses, or of a user's program, whose log has the
/// reason.
///
/// Deliberate (discarded-error): the error's text is asked for and dropped; a trace shows the call.
/// GL: glGetError; gluErrorString after an error.
inline void discardError() {
    GLenum const error = glGetError();
    if (error != GL_NO_ERROR) {
        gluErrorString(error);
    }
}

}  // namespace vellum
