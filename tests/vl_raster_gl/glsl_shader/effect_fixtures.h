#pragma once

#include "tests/gl_spy/gl_spy.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/picture_files.h"
#include "tests/vl_raster_gl/NotingLayer.h"
#include "tests/vl_raster_gl/glsl_calls.h"
#include "tests/vl_raster_gl/glsl_shader/effect_calls.h"

#include <gtest/gtest.h>

#include <string>

#include "internal/gl_api.h"

/// Fixtures for the tests of effects.
namespace vellum {

/// An effect with its protected members.
template <class Effect>
class Open : public Effect {
public:
    using Effect::dirty;
    using Effect::Effect;
    using Effect::log;
    using Effect::program;
    using Effect::stage1;
    using Effect::stage2;
    using Effect::stage3;
};

/// A driver with geometry shaders, and a layer that notes the requests of effects.
class Effect_fixture : public testing::Test {
protected:
    void SetUp() override {
        // The layer reads the extensions once.
        layer.isExtensionSupported("GL_EXT_geometry_shader4");
        recording.clear();
    }

    /// The calls since the last request.
    Texts calls() {
        Texts texts = callsOf(recording);
        recording.clear();
        return texts;
    }

    gl_spy::Script driver = gl_spy::drivers::geometryShader4();
    NotingLayer layer;
    gl_spy::Recording recording;
};

/// A layer over the recording OpenGL with a viewport of 1000 x 600 pixels.
class Surface_effect_calls_test : public testing::Test {
protected:
    Surface_effect_calls_test() {
        glViewport(0, 0, 1000, 600);
        recording.clear();
    }
    ~Surface_effect_calls_test() override { VL_Raster = nullptr; }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
    gl_spy::Recording recording;
};

/// The same with an image file for textures.
class Textured_effect_calls_test : public Surface_effect_calls_test {
protected:
    Textured_effect_calls_test() {
        picture_files::writePng(picture, {4, 4}, [](auto, auto, auto) { return 200U; });
    }

    TemporaryFolder folder;
    std::string picture = folder.file("picture.png");
};

}  // namespace vellum
