#include "Core_RL_GL.h"
#include "Program_gl.h"
#include "Shader_gl.h"
#include "glsl_shader/Base_shader.h"

#include "tests/gl_spy/GlTest.h"
#include "tests/support/StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "internal/gl_api.h"

// Stages, programs and effects on a real driver: what compiles, what arrives, what is drawn.

namespace vellum {
namespace {

using testing::ElementsAre;

constexpr char const* COLOR = R"(uniform vec4 color;
void main()
{
#ifdef SWAPPED
    gl_FragColor = color.bgra;
#else
    gl_FragColor = color;
#endif
}
)";

class glsl_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        gl_spy::GlTest::SetUp();
        layer = std::make_unique<Core_RL_GL>();
    }
    void TearDown() override {
        glUseProgram(0);
        VL_Raster = nullptr;
        layer.reset();
        gl_spy::GlTest::TearDown();
    }

    static void fillPicture() {
        glBegin(GL_QUADS);
        glTexCoord2f(0, 0);
        glVertex2f(-1, -1);
        glTexCoord2f(1, 0);
        glVertex2f(1, -1);
        glTexCoord2f(1, 1);
        glVertex2f(1, 1);
        glTexCoord2f(0, 1);
        glVertex2f(-1, 1);
        glEnd();
    }

    void expectMiddle(Pixel const& expected, char const* what) {
        fillPicture();
        EXPECT_EQ(readPixel(128, 128), expected) << what << ' ' << savePicture("glsl");
    }

    std::unique_ptr<Core_RL_GL> layer;
};

// == Stages ==

TEST_F(glsl_gl_test, passThroughStagesCompileAndDrawTheColor) {
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

TEST_F(glsl_gl_test, passThroughVertexStageKeepsThreeTextureCoordinatesAndFog) {
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

TEST_F(glsl_gl_test, stageThatDoesNotCompileIsReportedAndGone) {
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

TEST_F(glsl_gl_test, unknownStageTypeFails) {
    expectGlErrors(1);
    Shader_gl shader;
    EXPECT_FALSE(shader.loadShaderSource(0x1234, "void main() {}", false));
    EXPECT_EQ(shader.getID(0), 0U);
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_ENUM));
}

TEST_F(glsl_gl_test, deletedStageIsGoneFromTheDriver) {
    auto shader = std::make_unique<Shader_gl>();
    ASSERT_TRUE(shader->loadShaderSource(GL_FRAGMENT_SHADER, Shader_gl::fragmentPassThrough(), false));
    unsigned int const id = shader->getID(0);
    Program_gl program;
    program.attach(nullptr, nullptr, shader.get());
    shader.reset();
    EXPECT_EQ(glIsShader(id), GL_FALSE) << "an attached one would live on";
}

TEST_F(glsl_gl_test, shaderAttachedTwiceIsRefusedByGlAndHarmless) {
    expectGlErrors(1);
    Shader_gl fragment;
    ASSERT_TRUE(fragment.loadShaderSource(GL_FRAGMENT_SHADER, COLOR, false));
    Program_gl program;
    program.attach(nullptr, nullptr, &fragment);
    program.attach(nullptr, nullptr, &fragment);
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_OPERATION));
    program.enable(true);
    program.setUniform("color", 1.0F, 0.0F, 0.0F, 1.0F);
    expectMiddle({255, 0, 0, 255}, "attached once in GL");
}

// == Variants ==

TEST_F(glsl_gl_test, maskSwitchesTheVariantThatIsDrawn) {
    Shader_gl fragment;
    unsigned int const swapped = fragment.addDefinition("#define SWAPPED");
    ASSERT_TRUE(fragment.loadShaderSource(GL_FRAGMENT_SHADER, COLOR, false));
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

// == Uniforms ==

TEST_F(glsl_gl_test, uniformsOfEveryTypeArrive) {
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

TEST_F(glsl_gl_test, samplerReadsTheTextureOfItsUnit) {
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

TEST_F(glsl_gl_test, driverIsNewEnoughForGeometryStages) {
    StreamCapture const output(std::cout);
    EXPECT_TRUE(Program_gl().checkGeometryShaderSupport());
    EXPECT_EQ(output.text(), "");
}

TEST_F(glsl_gl_test, failedLinkHasItsReasonInTheLog) {
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

// == Effects ==

// A color that is lit by nothing, over the whole frame.
class Color_shader : public Base_shader {
public:
    void setColor(Color4<float> const& value) { _store(color, value); }
    void create() override {
        stage1 = new Shader_gl;
        stage1->loadShaderSource(GL_VERTEX_SHADER, Shader_gl::vertexPassThrough(), false);
        stage2 = new Shader_gl;
        stage2->loadShaderSource(GL_FRAGMENT_SHADER, COLOR, false);
        program->attach(stage1, stage2, nullptr);
        created = true;
        enable(true);
        log = program->getInfoLog();
    }
    void init() override { _useProgram(); }
    void preprocess() override {
        if (dirty) {
            enable(true);
        }
        _openPass(2);
        _useProgram();
        program->setUniform("color", color.r, color.g, color.b, color.a);
    }
    void postprocess() override { dirty = false; }
    void cleanup() override { _closePass(); }

private:
    Color4<float> color{1, 0, 0, 1};
};

class Base_shader_gl_test : public glsl_gl_test {
protected:
    Pixel drawn(Mesh_RL_Shader& effect) {
        glClear(GL_COLOR_BUFFER_BIT);
        effect.init();
        effect.preprocess();
        fillPicture();
        effect.postprocess();
        effect.cleanup();
        return readPixel(128, 128);
    }
};

TEST_F(Base_shader_gl_test, passesDrawTheParameters) {
    Color_shader effect;
    effect.create();
    EXPECT_EQ(effect.getLog(), "");
    EXPECT_EQ(drawn(effect), (Pixel{255, 0, 0, 255}));
    EXPECT_EQ(drawn(effect), (Pixel{255, 0, 0, 255})) << "a pass that is not dirty";
    effect.setColor({0, 1, 0, 1});
    EXPECT_EQ(drawn(effect), (Pixel{0, 255, 0, 255}));
    effect.reload();
    EXPECT_EQ(drawn(effect), (Pixel{0, 255, 0, 255})) << "stages made anew";
    Color_shader copy(effect);
    EXPECT_EQ(drawn(copy), (Pixel{0, 255, 0, 255})) << "a copy with a program of its own";
    EXPECT_EQ(drawn(effect), (Pixel{0, 255, 0, 255}));
}

TEST_F(Base_shader_gl_test, passRestoresWhatItChangesButTheColor) {
    Color_shader effect;
    GLint depth = -1;  // not 0: the fixture has pushed attributes of its own
    glGetIntegerv(GL_ATTRIB_STACK_DEPTH, &depth);
    glEnable(GL_TEXTURE_2D);
    glBlendFunc(GL_ONE, GL_ZERO);
    glColor4f(0.5F, 0.5F, 0.5F, 0.5F);
    drawn(effect);
    EXPECT_EQ(glIsEnabled(GL_TEXTURE_2D), GL_TRUE);
    // Not the single lights: Mesa leaves them on when GL_ENABLE_BIT is popped, whoever pushed it.
    for (GLenum const capability : {GL_LIGHTING, GL_BLEND, GL_TEXTURE_3D}) {
        EXPECT_EQ(glIsEnabled(capability), GL_FALSE) << capability;
    }
    GLint value = -1;
    glGetIntegerv(GL_BLEND_SRC, &value);
    EXPECT_EQ(value, GL_ONE);
    glGetIntegerv(GL_CURRENT_PROGRAM, &value);
    EXPECT_EQ(value, 0);
    glGetIntegerv(GL_ATTRIB_STACK_DEPTH, &value);
    EXPECT_EQ(value, depth);
    std::array<float, 4> color{};
    glGetFloatv(GL_CURRENT_COLOR, color.data());
    EXPECT_EQ(color[0], 1.0F) << "deliberate: white stays";
    glDisable(GL_TEXTURE_2D);
}

TEST_F(Base_shader_gl_test, deletedEffectLeavesNothingBehind) {
    auto effect = std::make_unique<Color_shader>();
    drawn(*effect);
    effect.reset();
    for (unsigned int id = 1; id < 100; ++id) {
        EXPECT_EQ(glIsProgram(id), GL_FALSE) << id;
        EXPECT_EQ(glIsShader(id), GL_FALSE) << id;
    }
}

TEST_F(Base_shader_gl_test, imagesOfEveryKindArriveInTheTexture) {
    struct Case {
        unsigned int width, channels, bits;
    };
    Base_shader effect;
    for (Case const& c : {Case{4, 3, 8},
                          {5, 3, 8},
                          {7, 3, 16},
                          {5, 4, 8},
                          {3, 4, 16},
                          {3, 3, 32},
                          {3, 4, 32},
                          {5, 1, 8},
                          {5, 2, 16},
                          {5, 2, 8},
                          {3, 1, 32}}) {
        unsigned int const height = 3;
        VL_Image image;
        ASSERT_TRUE(image.create(c.width, height, c.channels, c.bits));
        // Sample k of the image is k of 0 to 255.
        for (unsigned int i = 0; i < c.width * height * c.channels; ++i) {
            if (c.bits == 8) {
                image.getBuffer()[i] = static_cast<unsigned char>(i);
            } else if (c.bits == 16) {
                image.getBuffer16()[i] = static_cast<unsigned short>(i * 257);
            } else {
                image.getBuffer32()[i] = static_cast<float>(i) / 255;
            }
        }
        GLuint texture = 0;
        glGenTextures(1, &texture);
        effect.loadTexture(image, texture, GL_RGBA8);
        std::vector<unsigned char> back(std::size_t{c.width} * height * 4);
        glBindTexture(GL_TEXTURE_2D, texture);
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, back.data());
        for (unsigned int pixel = 0; pixel < c.width * height; ++pixel) {
            bool const isGray = c.channels < 3;
            unsigned int const first = pixel * c.channels;
            unsigned int const alpha = c.channels == 4 ? first + 3 : c.channels == 2 ? first + 1 : 255;
            std::array<unsigned int, 4> const expected{first, isGray ? first : first + 1,
                                                       isGray ? first : first + 2, alpha};
            for (std::size_t k = 0; k < 4; ++k) {
                ASSERT_EQ(back[pixel * 4 + k], expected[k])
                    << c.channels << " channels of " << c.bits << ", pixel " << pixel << ", component " << k;
            }
        }
        glBindTexture(GL_TEXTURE_2D, 0);
        glDeleteTextures(1, &texture);
    }
    GLint alignment = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    EXPECT_EQ(alignment, 4);
}

TEST_F(Base_shader_gl_test, floatTextureKeepsItsRange) {
    VL_Image image;
    ASSERT_TRUE(image.create(1, 1, 3, 32));
    image.getBuffer32()[0] = -2.5F;
    image.getBuffer32()[1] = 1000;
    Base_shader effect;
    GLuint texture = 0;
    glGenTextures(1, &texture);
    effect.loadTextureFloat32(image, texture);
    std::array<float, 4> back{};
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_FLOAT, back.data());
    EXPECT_THAT(back, ElementsAre(-2.5F, 1000, 0, 1));
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteTextures(1, &texture);
}

TEST_F(Base_shader_gl_test, copiedFrameHasTheSizesOfPowersOfTwo) {
    glViewport(10, 20, 100, 60);
    glClearColor(0, 0, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    Base_shader effect;
    GLuint texture = 0;
    glGenTextures(1, &texture);
    effect.copyFramebufferToTexture(texture);
    GLint width = 0;
    GLint height = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
    EXPECT_EQ(width, 128);
    EXPECT_EQ(height, 64);
    std::vector<unsigned char> back(std::size_t{128} * 64 * 4);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, back.data());
    EXPECT_EQ(back[2], 255);
    EXPECT_EQ(back[0], 0);
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteTextures(1, &texture);
}

}  // namespace
}  // namespace vellum
