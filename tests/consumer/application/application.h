#pragma once

/// \file
/// What the two applications do. It includes neither GLEW nor the library: that is for them.

#include "own_context.h"

#include <cstdio>

/// Starts up as the library asks: a context, then GLEW, then the render layer; draws something and looks at
/// it. \return the exit status of the program.
inline int runApplication() {
    OwnContext const context;
    if (!context.isCurrent()) {
        std::fprintf(stderr, "no OpenGL context\n");
        return 1;
    }
    // Under EGL, GLEW loads all entry points and then misses the display of GLX: no failure.
    GLenum const started = glewInit();
    if (started != GLEW_OK && started != GLEW_ERROR_NO_GLX_DISPLAY) {
        std::fprintf(stderr, "glewInit: %s\n", reinterpret_cast<char const*>(glewGetErrorString(started)));
        return 1;
    }
    if (!glewIsSupported("GL_VERSION_2_1")) {
        std::fprintf(stderr, "GLEW does not find OpenGL 2.1\n");
        return 1;
    }
    std::printf("%s\n", reinterpret_cast<char const*>(glGetString(GL_VERSION)));

    auto* const layer = new vellum::Core_RL_GL;
    bool const isCurrentLayer = vellum::VL_Raster == layer;
    glClearColor(0.0F, 0.0F, 0.0F, 1.0F);
    glClear(GL_COLOR_BUFFER_BIT);
    layer->pushColor({1.0F, 0.5F, 0.0F, 1.0F});
    layer->render(vellum::Box2<float>{{-0.5F, -0.5F}, {0.5F, 0.5F}}, false);
    layer->popColor(1);
    // An entry point that GLEW has loaded, beside the library's own calls.
    GLuint const shader = glCreateShader(GL_VERTEX_SHADER);
    glDeleteShader(shader);

    unsigned char middle[4] = {0, 0, 0, 0};
    unsigned char corner[4] = {9, 9, 9, 9};
    glReadPixels(OwnContext::SIZE / 2, OwnContext::SIZE / 2, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, middle);
    glReadPixels(1, 1, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, corner);
    layer->destroy_RL();
    delete layer;

    bool const isDrawn = middle[0] == 255 && middle[1] >= 127 && middle[1] <= 128 && middle[2] == 0 &&
                         corner[0] == 0 && corner[1] == 0 && corner[2] == 0;
    if (!isCurrentLayer || shader == 0 || !isDrawn || glGetError() != GL_NO_ERROR) {
        std::fprintf(stderr, "layer %d, shader %u, middle %d %d %d, corner %d %d %d\n",
                     isCurrentLayer ? 1 : 0, shader, middle[0], middle[1], middle[2], corner[0], corner[1],
                     corner[2]);
        return 1;
    }
    return 0;
}
