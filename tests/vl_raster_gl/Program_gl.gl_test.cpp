#include "Program_gl.h"

#include "Shader_gl.h"
#include "glsl_pictures.h"
#include "glsl_shader/Base_shader.h"
#include "tests/support/StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <iostream>
#include <string>

#include "internal/gl_api.h"

// Programs on a real driver: linking, uniforms and pictures.

namespace vellum {
namespace {

using testing::ElementsAre;

class Program_gl_drawn_test : public Glsl_fixture {};

TEST_F(Program_gl_drawn_test, shaderAttachedTwiceIsRefusedByGlAndHarmless) {
    expectGlErrors(1);
    Shader_gl fragment;
    ASSERT_TRUE(fragment.loadShaderSource(GL_FRAGMENT_SHADER, COLOR_TEXT, false));
    Program_gl program;
    program.attach(nullptr, nullptr, &fragment);
    program.attach(nullptr, nullptr, &fragment);
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_OPERATION));
    program.enable(true);
    program.setUniform("color", 1.0F, 0.0F, 0.0F, 1.0F);
    expectMiddle({255, 0, 0, 255}, "attached once in GL");
}

TEST_F(Program_gl_drawn_test, maskSwitchesVariantThatIsDrawn) {
    Shader_gl fragment;
    unsigned int const swapped = fragment.addDefinition("#define SWAPPED");
    ASSERT_TRUE(fragment.loadShaderSource(GL_FRAGMENT_SHADER, COLOR_TEXT, false));
    Program_gl program;
    program.attach(nullptr, nullptr, &fragment);
    program.setUniform("color", 1.0F, 0.4F, 0.0F, 1.0F);
    program.enable(true);
    expectMiddle({255, 102, 0, 255}, "plain");
    program.setMask(&fragment, swapped);
    program.enable(true);
    expectMiddle({0, 102, 255, 255}, "swapped, with the uniform that was kept over the link");
    program.setMask(&fragment, 0);
    program.enable(true);
    expectMiddle({255, 102, 0, 255}, "plain again");
}

TEST_F(Program_gl_drawn_test, uniformsOfEveryTypeArrive) {
    Shader_gl fragment;
    ASSERT_TRUE(fragment.loadShaderSource(GL_FRAGMENT_SHADER, R"(
uniform int i1; uniform ivec2 i2; uniform ivec3 i3; uniform ivec4 i4;
uniform float f1; uniform vec2 f2; uniform vec3 f3; uniform vec4 f4;
uniform mat2 m2; uniform mat3 m3; uniform mat4 m4;
uniform vec2 list[3]; uniform int numbers[2];
void main()
{
    vec4 sum = vec4(float(i1)) + vec4(i2, i2) + vec4(i3, 0) + vec4(i4);
    sum += vec4(f1) + vec4(f2, f2) + vec4(f3, 0.0) + f4;
    sum += vec4(m2[1], m2[0]) + vec4(m3[2], 0.0) + m4[3];
    sum += vec4(list[0] + list[1], list[2]) + vec4(float(numbers[0] + numbers[1]));
    gl_FragColor = sum / 1000.0;
}
)",
                                          false))
        << fragment.getInfoLog();
    Program_gl program;
    program.attach(nullptr, nullptr, &fragment);
    float const m2[] = {1, 2, 3, 4};
    float const m3[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    float const m4[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    float const list[] = {1, 2, 3, 4, 5, 6};
    int const numbers[] = {7, 8};
    program.setUniform("i1", 1);
    program.setUniform("i2", 1, 2);
    program.setUniform("i3", 1, 2, 3);
    program.setUniform("i4", 1, 2, 3, 4);
    program.setUniform("f1", 0.5F);
    program.setUniform("f2", 0.5F, 1.5F);
    program.setUniform("f3", 0.5F, 1.5F, 2.5F);
    program.setUniform("f4", 0.5F, 1.5F, 2.5F, 3.5F);
    program.setUniformMatrix("m2", 2, m2);
    program.setUniformMatrix("m3", 3, m3);
    program.enable(true);
    program.setUniformMatrix("m4", 4, m4);
    program.setUniform("list", 3, 2, list);
    program.setUniform("numbers", 2, 1, numbers);
    program.setUniform("unknown", 1.0F);

    std::array<float, 16> back{};
    program.getUniform("m3", back.data());
    EXPECT_EQ(back[8], 9.0F);
    program.getUniform("list[2]", back.data());
    EXPECT_EQ(back[1], 6.0F);
    int four[4] = {};
    program.getUniform("i4", four);
    EXPECT_THAT(four, ElementsAre(1, 2, 3, 4));
    // red: i 1+1+1+1, f 0.5*4, matrices 3+7+13, lists 1+3, numbers 15, over 1000
    std::array<float, 4> const sums{4 + 2 + 23 + 4 + 15, 7 + 5 + 26 + 6 + 15, 8 + 5.5F + 25 + 5 + 15,
                                    7 + 5.5F + 18 + 6 + 15};
    fillPicture();
    Pixel const pixel = readPixel(128, 128);
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_NEAR(pixel[k], sums[k] / 1000 * 255, 0.51) << k;
    }
}

TEST_F(Program_gl_drawn_test, samplerReadsTextureOfItsUnit) {
    VL_Image image;
    ASSERT_TRUE(image.create(2, 2, 4, 8));
    for (int i = 0; i < 16; ++i) {
        image.getBuffer()[i] = static_cast<unsigned char>(i % 4 == 1 ? 0 : 255);
    }
    Base_shader effect;
    GLuint texture = 0;
    glGenTextures(1, &texture);
    effect.loadTexture(image, texture, GL_RGBA);
    Shader_gl fragment;
    ASSERT_TRUE(fragment.loadShaderSource(
        GL_FRAGMENT_SHADER,
        "uniform sampler2D map; void main() { gl_FragColor = texture2D(map, vec2(0.5)); }", false));
    Program_gl program;
    program.attach(nullptr, nullptr, &fragment);
    program.enable(true);
    program.setUniformSampler("map", texture, 3);
    expectMiddle({255, 0, 255, 255}, "the texture of unit 3");
    glActiveTexture(GL_TEXTURE0);
    glDeleteTextures(1, &texture);
}

TEST_F(Program_gl_drawn_test, driverIsNewEnoughForGeometryStages) {
    StreamCapture const output(std::cout);
    EXPECT_TRUE(Program_gl().checkGeometryShaderSupport());
    EXPECT_EQ(output.text(), "");
}

TEST_F(Program_gl_drawn_test, failedLinkHasItsReasonInLog) {
    Shader_gl vertex;
    ASSERT_TRUE(vertex.loadShaderSource(
        GL_VERTEX_SHADER, "void missing(); void main() { missing(); gl_Position = gl_Vertex; }", false));
    Program_gl program;
    program.attach(&vertex, nullptr, nullptr);
    allowGlErrors();  // a program that is not linked cannot be used
    program.enable(true);
    EXPECT_NE(program.getInfoLog().find("missing"), std::string::npos) << program.getInfoLog();
    while (glGetError() != GL_NO_ERROR) {
    }
}

}  // namespace
}  // namespace vellum
