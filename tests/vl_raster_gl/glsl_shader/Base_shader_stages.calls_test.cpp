#include "Core_RL_GL.h"
#include "glsl_shader/Base_shader.h"
#include "glsl_shader/PointRendering_shader.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace vellum {
namespace {

constexpr unsigned int VERSION = 0x1F02;
constexpr unsigned int EXTENSIONS = 0x1F03;

TEST(Base_shader_stages_calls_test, geometryStagesNeedTheExtensionOrVersion32) {
    struct Row {
        char const* version;
        char const* extensions;
        bool expected;
    };
    for (Row const& row :
         {Row{"2.1.0", "", false}, Row{"2.1.0", "GL_EXT_geometry_shader4", true}, Row{"3.1", "", false},
          Row{"3.2", "", true}, Row{"4.5 (Compatibility Profile)", "", true}, Row{"10.0", "", true},
          Row{"3.1", "GL_EXT_geometry_shader4_other", false}}) {
        gl_spy::Script driver = gl_spy::drivers::gl21();
        driver.string(VERSION, row.version).string(EXTENSIONS, row.extensions);
        Core_RL_GL layer;
        EXPECT_EQ(Base_shader::hasGeometryStages(), row.expected) << row.version << " " << row.extensions;
    }
}

TEST(Base_shader_stages_calls_test, aStageThatDoesNotCompileIsPrintedAndLeftOutAndNotInTheLog) {
    gl_spy::Script driver = gl_spy::drivers::gl21();
    driver.shaderStatus(false, "0:1: wrong", [](std::string const& source) {
        return source.find("gl_FragColor") != std::string::npos;
    });
    Core_RL_GL layer;
    PointRendering_shader effect(Base_shader::ProcessType(0));
    gl_spy::Recording const recording;
    testing::internal::CaptureStdout();
    effect.create();
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr("0:1: wrong"));
    EXPECT_EQ(recording.count("glAttachShader"), 1U) << "the vertex stage alone";
    EXPECT_EQ(recording.count("glLinkProgram"), 1U);
    EXPECT_EQ(effect.getLog(), "");
    EXPECT_EQ(effect.getCompilationLog(), "");
}

}  // namespace
}  // namespace vellum
