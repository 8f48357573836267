#pragma once

#include "Core_RL_GL.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/vl_raster_gl/glsl_calls.h"

#include <gtest/gtest.h>

#include <string>

/// What the contract tests of effects share.
namespace vellum {

/// A layer that notes what effects ask of it.
class NotingLayer : public Core_RL_GL {
public:
    using Core_RL_GL::createTexture;

    unsigned int createTexture() override {
        asked.emplace_back("createTexture");
        return Core_RL_GL::createTexture();
    }
    void destroyTexture(unsigned int const& texture) override {
        asked.push_back(numbered("destroyTexture", texture));
        Core_RL_GL::destroyTexture(texture);
    }
    void programParameterI(unsigned int program, ShaderParameterName::type parameter, int value) override {
        asked.push_back(numbered("programParameterI", program) + " " + std::to_string(parameter) + " " +
                        std::to_string(value));
        Core_RL_GL::programParameterI(program, parameter, value);
    }

    Texts asked;
};

/// What effects keep to themselves.
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

class Effects_contract_calls_test : public testing::Test {
protected:
    void SetUp() override {
        // The layer reads the extensions once.
        layer.isExtensionSupported("GL_EXT_geometry_shader4");
        recording.clear();
    }

    /// The calls since the last time.
    Texts calls() {
        Texts texts = callsOf(recording);
        recording.clear();
        return texts;
    }

    gl_spy::Script driver = gl_spy::drivers::geometryShader4();
    NotingLayer layer;
    gl_spy::Recording recording;
};

}  // namespace vellum
