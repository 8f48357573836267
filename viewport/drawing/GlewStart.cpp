#include "viewport/drawing/GlewStart.h"

#include <GL/glew.h>

namespace vellum::viewport {

std::optional<std::string> startGlew() {
    GLenum const status = glewInit();
    if (status == GLEW_OK) {
        return std::nullopt;
    }
#if defined(GLEW_ERROR_NO_GLX_DISPLAY)
    // Workaround: a GLEW that is built for GLX loads OpenGL's entry points first and GLX's afterwards. With a context
    // of EGL there is no GLX display, so the second step fails and this is the answer, although everything that is
    // drawn with has been loaded by the first.
    bool const hasContext = glGetString(GL_VERSION) != nullptr;
    if (status == GLEW_ERROR_NO_GLX_DISPLAY && hasContext) {
        return std::nullopt;
    }
#endif
    return std::string("GLEW cannot be initialized: ") +
           reinterpret_cast<char const*>(glewGetErrorString(status));
}

}  // namespace vellum::viewport
