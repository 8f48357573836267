#include "Program_gl.h"
#include "Shader_gl.h"

#include "tests/gl_spy/GlTest.h"
#include "tests/support/counted_memory.h"

#include <gtest/gtest.h>

#include <cstddef>

#include "internal/gl_api.h"

// Effects send the same uniforms in every frame, and frames must not allocate.

namespace vellum {
namespace {

class Program_gl_allocation_drawn_test : public gl_spy::GlTest {};

TEST_F(Program_gl_allocation_drawn_test, uniformsThatAreSetAgainTakeNoNewMemory) {
    Shader_gl fragment;
    ASSERT_TRUE(
        fragment.loadShaderSource(GL_FRAGMENT_SHADER,
                                  "uniform vec3 aColorWithALongName; uniform mat4 matrix;"
                                  "void main() { gl_FragColor = matrix * vec4(aColorWithALongName, 1.0); }",
                                  false));
    Program_gl program;
    program.attach(nullptr, nullptr, &fragment);
    float const matrix[16] = {1};
    auto const frame = [&] {
        program.enable(true);
        program.setUniform("aColorWithALongName", 1.0F, 2.0F, 3.0F);
        program.setUniformMatrix("matrix", 4, matrix);
        program.disable();
    };
    std::size_t const beforeFirst = counted_memory::allocations();
    frame();
    std::size_t const before = counted_memory::allocations();
    EXPECT_GT(before - beforeFirst, 0U) << "the first frame keeps the values: the counting works";
    for (int i = 0; i < 10; ++i) {
        frame();
    }
    EXPECT_EQ(counted_memory::allocations() - before, 0U);
}

}  // namespace
}  // namespace vellum
