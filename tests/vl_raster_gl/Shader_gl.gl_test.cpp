#include "Shader_gl.h"

#include "Program_gl.h"
#include "glsl_pictures.h"
#include "tests/support/StreamCapture.h"

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <string>

#include "internal/gl_api.h"

// Shaders on a real driver: compilation, and the pictures of the pass-through texts.

namespace vellum {
namespace {

class Shader_gl_drawn_test : public Glsl_fixture {};

TEST_F(Shader_gl_drawn_test, passThroughStagesCompileAndDrawColor) {
    Shader_gl vertex;
    Shader_gl fragment;
    ASSERT_TRUE(vertex.loadShaderSource(GL_VERTEX_SHADER, Shader_gl::vertexPassThrough(), false))
        << vertex.getInfoLog();
    ASSERT_TRUE(fragment.loadShaderSource(GL_FRAGMENT_SHADER, Shader_gl::fragmentPassThrough(), false));
    Program_gl program;
    program.attach(&vertex, nullptr, &fragment);
    program.enable(true);
    EXPECT_EQ(program.getInfoLog(), "");
    glColor4f(0.2F, 0.4F, 0.6F, 1);
    expectMiddle({51, 102, 153, 255}, "the current color");
}

TEST_F(Shader_gl_drawn_test, passThroughVertexStageKeepsThreeTextureCoordinatesAndFog) {
    Shader_gl vertex;
    Shader_gl fragment;
    ASSERT_TRUE(vertex.loadShaderSource(GL_VERTEX_SHADER, Shader_gl::vertexPassThrough(), false));
    ASSERT_TRUE(fragment.loadShaderSource(
        GL_FRAGMENT_SHADER,
        "void main() { gl_FragColor = vec4(gl_TexCoord[1].s, gl_TexCoord[2].t, gl_FogFragCoord, 1.0); }",
        false));
    Program_gl program;
    program.attach(&vertex, nullptr, &fragment);
    program.enable(true);
    glMultiTexCoord2f(GL_TEXTURE1, 0.2F, 0);
    glMultiTexCoord2f(GL_TEXTURE2, 0, 0.4F);
    glFogCoordf(0.6F);
    expectMiddle({51, 102, 153, 255}, "coordinates as color");
}

TEST_F(Shader_gl_drawn_test, stageThatDoesNotCompileIsReportedAndGone) {
    StreamCapture const output(std::cout);
    Shader_gl shader;
    shader.addDefinition("#define BROKEN gl_Nothing");
    EXPECT_FALSE(shader.loadShaderSource(GL_FRAGMENT_SHADER,
                                         "#ifndef BROKEN\n#define BROKEN vec4(1.0)\n#endif\n"
                                         "void main() { gl_FragColor = BROKEN; }",
                                         false));
    EXPECT_NE(shader.getID(0), 0U);
    EXPECT_EQ(glIsShader(shader.getID(0)), GL_TRUE);
    EXPECT_EQ(shader.getID(1), 0U);
    EXPECT_NE(output.text().find("gl_Nothing"), std::string::npos) << output.text();
    EXPECT_NE(output.text().find("\n\nwhen compiling:\nasdf\n"), std::string::npos) << output.text();
}

TEST_F(Shader_gl_drawn_test, unknownStageTypeFails) {
    expectGlErrors(1);
    Shader_gl shader;
    EXPECT_FALSE(shader.loadShaderSource(0x1234, "void main() {}", false));
    EXPECT_EQ(shader.getID(0), 0U);
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_ENUM));
}

TEST_F(Shader_gl_drawn_test, deletedStageIsGoneFromDriver) {
    auto shader = std::make_unique<Shader_gl>();
    ASSERT_TRUE(shader->loadShaderSource(GL_FRAGMENT_SHADER, Shader_gl::fragmentPassThrough(), false));
    unsigned int const id = shader->getID(0);
    Program_gl program;
    program.attach(nullptr, nullptr, shader.get());
    shader.reset();
    EXPECT_EQ(glIsShader(id), GL_FALSE) << "an attached one would live on";
}

}  // namespace
}  // namespace vellum
