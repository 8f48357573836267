// Draws a lit ball into a PNG file: no window, no display, no window system.
#include "toolkit/toolkit.h"
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <png.h>
#include <vector>
using namespace vellum;
using namespace vellum::toolkit;
constexpr int WIDTH = 640, HEIGHT = 480;

// Makes a context with a surface in memory current.
bool makeContext() {
    EGLDisplay display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    EGLint const wanted[] = {EGL_SURFACE_TYPE,    EGL_PBUFFER_BIT,  //
                             EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,  EGL_DEPTH_SIZE, 24, EGL_NONE};
    EGLint const size[] = {EGL_WIDTH, WIDTH, EGL_HEIGHT, HEIGHT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (!eglInitialize(display, nullptr, nullptr) || !eglBindAPI(EGL_OPENGL_API) ||
        !eglChooseConfig(display, wanted, &config, 1, &count) || count == 0) {
        return false;
    }
    EGLSurface surface = eglCreatePbufferSurface(display, config, size);
    return eglMakeCurrent(display, surface, surface,
                          eglCreateContext(display, config, EGL_NO_CONTEXT, nullptr)) == EGL_TRUE;
}

// Writes what is drawn.
bool savePicture(char const* path) {
    std::vector<unsigned char> pixels(WIDTH * HEIGHT * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, WIDTH, HEIGHT, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = WIDTH;
    image.height = HEIGHT;
    image.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&image, path, 0, pixels.data(), -WIDTH * 3, nullptr) !=
           0;  // bottom row first
}

int main(int argc, char** argv) {
    if (!makeContext()) {
        return 1;
    }
    RenderSession session;
    CameraController controls(session.camera());
    controls.fit({{-1, -1, -1}, {1, 1, 1}});
    glClearColor(0.1F, 0.12F, 0.15F, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    Lit const lit(controls.load({0, 0, WIDTH, HEIGHT}));
    session.layer().setColor({1, 0.6F, 0.2F, 1});
    session.layer().renderSphere({0, 0, 0}, 1);
    return savePicture(argc > 1 ? argv[1] : "first_picture.png") ? 0 : 1;
}
