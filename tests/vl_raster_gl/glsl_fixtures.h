#pragma once

#include "NotingLayer.h"
#include "Program_gl.h"
#include "Shader_gl.h"
#include "glsl_calls.h"
#include "tests/gl_spy/gl_spy.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

/// Fixtures for the tests of shaders and programs.
namespace vellum {

class Stages_fixture : public testing::Test {
protected:
    void SetUp() override { recording.clear(); }

    /// Shaders whose text contains `part` fail to compile.
    void refuse(std::string const& part, std::string const& log) {
        driver.shaderStatus(
            false, log, [part](std::string const& source) { return source.find(part) != std::string::npos; });
    }

    std::string textOfLast() const {
        std::vector<gl_spy::Call> const sources = recording.named("glShaderSource");
        return sources.empty() ? "none" : sources.back().strings.at(0);
    }

    gl_spy::Script driver = gl_spy::drivers::geometryShader4();
    NotingLayer layer;
    gl_spy::Recording recording;
};

/// An empty program and three loaded shaders for it.
class Program_fixture : public Stages_fixture {
protected:
    void SetUp() override {
        vertex->addDefinition("#define A");
        vertex->loadShaderSource(VERTEX_STAGE, "v", false);      // 1, and 2 with A
        geometry->loadShaderSource(GEOMETRY_STAGE, "g", false);  // 3
        fragment->loadShaderSource(FRAGMENT_STAGE, "f", false);  // 4
        recording.clear();
    }

    /// The name of the program: it is created after the shaders.
    static constexpr unsigned int PROGRAM = 5;

    /// The calls since the last request.
    Texts calls() {
        Texts texts = callsOf(recording);
        recording.clear();
        return texts;
    }

    void attachAndEnable() {
        program->attach(vertex.get(), nullptr, fragment.get());
        program->enable(true);
        recording.clear();
    }

    std::unique_ptr<Shader_gl> vertex = std::make_unique<Shader_gl>();
    std::unique_ptr<Shader_gl> geometry = std::make_unique<Shader_gl>();
    std::unique_ptr<Shader_gl> fragment = std::make_unique<Shader_gl>();
    std::unique_ptr<Program_gl> program = std::make_unique<Program_gl>();
};

}  // namespace vellum
