#include "Program_gl.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace vellum {
namespace {

TEST(Program_gl_keys_calls_test, aKeyServesEveryProgramItIsGivenTo) {
    gl_spy::Script driver = gl_spy::drivers::gl21();
    driver.uniformLocation("size", 7);
    Program_gl::UniformKey key("size");
    Program_gl first;
    Program_gl second;
    first.setUniform(key, 1.0F);
    second.setUniform(key, 2.0F);
    first.setUniform(key, 3.0F);
    gl_spy::Recording const recording;
    first.enable(true);
    second.enable(true);
    auto const sent = recording.named("glUniform1fv");
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[0].text(), "glUniform1fv(7, 1, {3})");
    EXPECT_EQ(sent[1].text(), "glUniform1fv(7, 1, {2})");
}

TEST(Program_gl_keys_calls_test, aKeyOutlivesItsProgram) {
    gl_spy::Script driver = gl_spy::drivers::gl21();
    driver.uniformLocation("size", 7);
    Program_gl::UniformKey key("size");
    for (float const value : {1.0F, 2.0F, 3.0F}) {
        auto const program = std::make_unique<Program_gl>();
        program->setUniform(key, value);
        program->setUniform(key, value + 0.5F);
        gl_spy::Recording const recording;
        program->enable(true);
        EXPECT_EQ(recording.count("glUniform1fv"), 1U);
    }
}

}  // namespace
}  // namespace vellum
