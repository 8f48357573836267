#include "viewport/drawing/layer/GlewStart.h"

#include <GL/glew.h>

namespace vellum::viewport {

std::optional<Fault> startGlew() {
    GLenum const status = glewInit();
    if (status == GLEW_OK) {
        return std::nullopt;
    }
#if defined(GLEW_ERROR_NO_GLX_DISPLAY)
    // Workaround: a GLEW that is built for GLX loads OpenGL's entry points first and GLX's afterwards. With a
    // context of EGL there is no GLX display, so the second step fails, although the first has loaded
    // everything that drawing needs (see docs/drivers.md).
    bool const hasContext = glGetString(GL_VERSION) != nullptr;
    if (status == GLEW_ERROR_NO_GLX_DISPLAY && hasContext) {
        return std::nullopt;
    }
#endif
    auto const* const reason = reinterpret_cast<char const*>(glewGetErrorString(status));
    return Fault{"", std::string("GLEW cannot be initialized: ") + reason};
}

}  // namespace vellum::viewport
