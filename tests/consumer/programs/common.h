#pragma once

/// \file
/// What the programs of this folder share: a context without a window, pictures of it, and test data as an
/// application has it. The programs themselves show what is left to write with the toolkit.

#include "toolkit/toolkit.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;

/// Ends the program with a sentence.
[[noreturn]] inline void fail(std::string const& sentence) {
    std::printf("FAILED: %s\n", sentence.c_str());
    std::exit(1);
}

/// Writes RGB pixels, the bottom row first, as a PNG file.
inline void writePng(std::string const& path, int width, int height,
                     std::vector<unsigned char> const& bytes) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    if (png_image_write_to_file(&image, path.c_str(), 0, bytes.data(), -width * 3, nullptr) == 0) {
        fail(path + " cannot be written");
    }
}

/// A context with a framebuffer, current until the program ends.
class Screen {
public:
    Viewport const viewport;

    Screen(int width, int height) : viewport{0, 0, width, height} {
        EGLDisplay display =
            eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        EGLint const wanted[] = {EGL_SURFACE_TYPE,    EGL_PBUFFER_BIT,  //
                                 EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,  EGL_DEPTH_SIZE, 24, EGL_NONE};
        EGLint const size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
        EGLConfig config = nullptr;
        EGLint count = 0;
        if (!eglInitialize(display, nullptr, nullptr) || !eglBindAPI(EGL_OPENGL_API) ||
            !eglChooseConfig(display, wanted, &config, 1, &count) || count == 0) {
            fail("no EGL");
        }
        EGLSurface surface = eglCreatePbufferSurface(display, config, size);
        if (!eglMakeCurrent(display, surface, surface,
                            eglCreateContext(display, config, EGL_NO_CONTEXT, nullptr))) {
            fail("no context");
        }
    }

    void clear() const {
        glClearColor(0.15F, 0.17F, 0.2F, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }

    /// Writes what is drawn as a PNG file. It must differ from the ground in at least 500 pixels, and OpenGL
    /// must not have raised an error.
    void save(std::string const& path) const {
        std::vector<unsigned char> bytes(static_cast<std::size_t>(viewport.width * viewport.height * 3));
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, viewport.width, viewport.height, GL_RGB, GL_UNSIGNED_BYTE, bytes.data());
        writePng(path, viewport.width, viewport.height, bytes);
        int drawn = 0;
        for (std::size_t i = 0; i < bytes.size(); i += 3) {
            drawn += std::equal(bytes.begin(), bytes.begin() + 3, bytes.data() + i) ? 0 : 1;
        }
        if (drawn < 500) {
            fail(path + " shows " + std::to_string(drawn) + " pixels");
        }
        if (unsigned int const error = glGetError()) {
            fail(path + ": OpenGL error " + std::to_string(error));
        }
    }
};

/// A ring about the y axis as plain arrays: 1 to the middle of the tube, which is 0.4 thick.
struct Torus {
    std::vector<Vector3<double>> positions;
    std::vector<Vector2<float>> coordinates;  // of textures, for each position
    std::vector<std::uint32_t> corners;       // three for each triangle

    Torus(std::uint32_t around, std::uint32_t along) {
        for (std::uint32_t i = 0; i < around; ++i) {
            for (std::uint32_t j = 0; j < along; ++j) {
                double const u = 2 * M_PI * i / around;
                double const v = 2 * M_PI * j / along;
                double const radius = 1 + 0.4 * std::cos(v);
                positions.push_back({radius * std::cos(u), 0.4 * std::sin(v), radius * std::sin(u)});
                coordinates.push_back({4 * static_cast<float>(i) / static_cast<float>(around),
                                       2 * static_cast<float>(j) / static_cast<float>(along)});
                std::uint32_t const here = i * along;
                std::uint32_t const next = (i + 1) % around * along;
                std::uint32_t const up = (j + 1) % along;
                corners.insert(corners.end(),
                               {here + j, here + up, next + j, here + up, next + up, next + j});
            }
        }
    }
};

/// Writes two pictures that effects read: surroundings, "room.png", and a height map, "bumps.png".
inline void writeImages() {
    std::vector<unsigned char> room;
    std::vector<unsigned char> bumps;
    for (int i = 0; i < 256 * 256; ++i) {
        int const x = i % 256;
        int const y = i / 256;
        bool const isLight = (x / 16 + y / 16) % 2 != 0;
        double const height = 128 + 100 * std::sin(x * M_PI / 32) * std::sin(y * M_PI / 32);
        room.insert(room.end(), {static_cast<unsigned char>(255 - y),
                                 static_cast<unsigned char>(isLight ? 220 : 40), 200});
        bumps.insert(bumps.end(), {128, static_cast<unsigned char>(height), 128});
    }
    writePng("room.png", 256, 256, room);
    writePng("bumps.png", 256, 256, bumps);
}
