#include "glsl_shader/Base_shader.h"

#include "Program_gl.h"
#include "Shader_gl.h"
#include "tests/vl_raster_gl/glsl_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

#include "internal/gl_api.h"

// An effect on a real driver: the picture and restored state of a pass, and the contents of its textures.

namespace vellum {
namespace {

using testing::ElementsAre;

// Draws one unlit color.
class Color_shader : public Base_shader {
public:
    void setColor(Color4<float> const& value) { _store(color, value); }
    void create() override {
        stage1 = new Shader_gl;
        stage1->loadShaderSource(GL_VERTEX_SHADER, Shader_gl::vertexPassThrough(), false);
        stage2 = new Shader_gl;
        stage2->loadShaderSource(GL_FRAGMENT_SHADER, COLOR_TEXT, false);
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

class Base_shader_drawn_test : public Glsl_fixture {
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

TEST_F(Base_shader_drawn_test, passesDrawParameters) {
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

TEST_F(Base_shader_drawn_test, passRestoresWhatItChangesButColor) {
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

TEST_F(Base_shader_drawn_test, deletedEffectLeavesNothingBehind) {
    auto effect = std::make_unique<Color_shader>();
    drawn(*effect);
    effect.reset();
    for (unsigned int id = 1; id < 100; ++id) {
        EXPECT_EQ(glIsProgram(id), GL_FALSE) << id;
        EXPECT_EQ(glIsShader(id), GL_FALSE) << id;
    }
}

TEST_F(Base_shader_drawn_test, imagesOfEveryKindArriveInTexture) {
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
                          {5, 1, 16},
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

TEST_F(Base_shader_drawn_test, floatTextureKeepsItsRange) {
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

TEST_F(Base_shader_drawn_test, copiedFrameHasSizesOfPowersOfTwo) {
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
