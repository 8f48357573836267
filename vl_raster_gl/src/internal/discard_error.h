#pragma once

#include "internal/gl_api.h"

namespace vellum {

/// Clears one pending error without a report: after an upload that GL rejects, or after a user's program,
/// whose log has the reason.
///
/// Deliberate (discarded-error): the error's text is queried and discarded.
/// GL: glGetError; gluErrorString after an error.
inline void discardError() {
    GLenum const error = glGetError();
    if (error != GL_NO_ERROR) {
        gluErrorString(error);
    }
}

}  // namespace vellum
