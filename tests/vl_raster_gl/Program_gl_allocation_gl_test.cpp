#include "Program_gl.h"
#include "Shader_gl.h"

#include "gl_spy/GlTest.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "gl_api.h"

// Effects send the same uniforms in every frame, and a frame is not to allocate. This file replaces the global
// operators of the test program by ones that count while they are asked to.

namespace {

bool isCounting = false;
unsigned int allocations = 0;

// Not inlined: the compiler would take the mixing of operators and C functions, which is meant, for a mistake.
[[gnu::noinline]] void* allocate(std::size_t const size) noexcept {
    if (isCounting) {
        ++allocations;
    }
    return std::malloc(size != 0 ? size : 1);
}

[[gnu::noinline]] void release(void* const memory) noexcept {
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    void* const memory = allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}
void operator delete(void* memory, std::nothrow_t const&) noexcept {
    release(memory);
}

namespace vellum {
namespace {

class Program_gl_allocation_gl_test : public gl_spy::GlTest {};

TEST_F(Program_gl_allocation_gl_test, uniformsThatAreSetAgainTakeNoNewMemory) {
    Shader_gl fragment;
    ASSERT_TRUE(
        fragment.loadShaderSource(GL_FRAGMENT_SHADER,
                                  "uniform vec3 aColourWithALongName; uniform mat4 matrix;"
                                  "void main() { gl_FragColor = matrix * vec4(aColourWithALongName, 1.0); }",
                                  false));
    Program_gl program;
    program.attach(nullptr, nullptr, &fragment);
    float const matrix[16] = {1};
    auto const frame = [&] {
        program.enable(true);
        program.setUniform("aColourWithALongName", 1.0F, 2.0F, 3.0F);
        program.setUniformMatrix("matrix", 4, matrix);
        program.disable();
    };
    isCounting = true;
    frame();
    isCounting = false;
    EXPECT_GT(allocations, 0U) << "the first frame keeps the values: the counting works";
    allocations = 0;
    isCounting = true;
    for (int i = 0; i < 10; ++i) {
        frame();
    }
    isCounting = false;
    EXPECT_EQ(allocations, 0U);
}

}  // namespace
}  // namespace vellum
