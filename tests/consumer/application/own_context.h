#pragma once

/// \file
/// A context without a window. EGL is opened at run time, so that the applications link the library and
/// nothing else.

#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <dlfcn.h>

class OwnContext {
public:
    static constexpr int SIZE = 64;  // pixels, width and height

    OwnContext() {
        void* const egl = dlopen("libEGL.so.1", RTLD_NOW | RTLD_GLOBAL);
        if (egl == nullptr) {
            return;
        }
        auto const getProcAddress =
            reinterpret_cast<decltype(&eglGetProcAddress)>(dlsym(egl, "eglGetProcAddress"));
        auto const getDisplay =
            reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(getProcAddress("eglGetPlatformDisplayEXT"));
#define VL_EGL(name) auto const name = reinterpret_cast<decltype(&::egl##name)>(dlsym(egl, "egl" #name))
        VL_EGL(Initialize);
        VL_EGL(BindAPI);
        VL_EGL(ChooseConfig);
        VL_EGL(CreateContext);
        VL_EGL(CreatePbufferSurface);
        VL_EGL(MakeCurrent);
#undef VL_EGL
        EGLDisplay const display = getDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        EGLint const wanted[] = {EGL_SURFACE_TYPE,
                                 EGL_PBUFFER_BIT,
                                 EGL_RENDERABLE_TYPE,
                                 EGL_OPENGL_BIT,
                                 EGL_RED_SIZE,
                                 8,
                                 EGL_ALPHA_SIZE,
                                 8,
                                 EGL_NONE};
        EGLint const size[] = {EGL_WIDTH, SIZE, EGL_HEIGHT, SIZE, EGL_NONE};
        EGLConfig config = nullptr;
        EGLint count = 0;
        if (!Initialize(display, nullptr, nullptr) || !BindAPI(EGL_OPENGL_API) ||
            !ChooseConfig(display, wanted, &config, 1, &count) || count == 0) {
            return;
        }
        EGLContext const context = CreateContext(display, config, EGL_NO_CONTEXT, nullptr);
        EGLSurface const surface = CreatePbufferSurface(display, config, size);
        current = MakeCurrent(display, surface, surface, context) == EGL_TRUE;
    }

    bool isCurrent() const {
        return current;
    }

private:
    bool current = false;
};
