#include "toolkit/draw_with.h"

#include "glsl_shader/Custom_shader.h"
#include "glsl_shader/Displacement_XZ_shader.h"
#include "glsl_shader/Displacement_shader.h"
#include "glsl_shader/Glass_shader.h"
#include "glsl_shader/SSScattering_shader.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/attribute_state.h"
#include "tests/support/picture_files.h"
#include "tests/toolkit/effect_scene.h"
#include "toolkit/EffectLights.h"
#include "toolkit/Layer.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <stdexcept>

namespace vellum::toolkit {
namespace {

using namespace effect_scene;
using testing::Each;
using testing::IsEmpty;

constexpr char GREEN[] = "void main() { gl_FragColor = vec4(0.0, 1.0, 0.0, 1.0); }\n";

/// A program of the application, and a texture of it at every unit.
class Foreign {
public:
    Foreign() : shader(glCreateShader(GL_FRAGMENT_SHADER)), program(glCreateProgram()) {
        char const* const text = "void main() { gl_FragColor = vec4(1.0, 0.0, 0.0, 1.0); }\n";
        glShaderSource(shader, 1, &text, nullptr);
        glCompileShader(shader);
        glAttachShader(program, shader);
        glLinkProgram(program);
        glUseProgram(program);
        glGenTextures(UNITS, textures);
        for (GLenum unit = 0; unit < UNITS; ++unit) {
            glActiveTexture(GL_TEXTURE0 + unit);
            glBindTexture(GL_TEXTURE_2D, textures[unit]);
        }
        glActiveTexture(GL_TEXTURE0);
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_BLEND);
        // One behind those that effects use.
        glActiveTexture(GL_TEXTURE8);
        glColor4f(0.1F, 0.2F, 0.3F, 0.4F);
        glEnable(GL_LIGHT3);
    }
    ~Foreign() {
        glUseProgram(0);
        glDeleteTextures(UNITS, textures);
        glDeleteProgram(program);
        glDeleteShader(shader);
        glActiveTexture(GL_TEXTURE0);
    }
    Foreign(Foreign const&) = delete;
    Foreign& operator=(Foreign const&) = delete;

private:
    static constexpr int UNITS = 9;

    GLuint shader;
    GLuint program;
    GLuint textures[UNITS] = {};
};

class draw_with_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        layer = std::make_unique<Layer>();
        view = lookAtOrigin();
        picture_files::writePng(map, {32, 32}, [](std::size_t x, std::size_t y, std::size_t channel) {
            return static_cast<unsigned int>(channel == 0 ? 8 * x : channel == 1 ? 8 * y : 128);
        });
        ball = std::make_unique<Ball>();
    }
    void TearDown() override {
        ball.reset();
        layer.reset();
        GlTest::TearDown();
    }

    struct Row {
        char const* name;
        std::function<std::unique_ptr<Base_shader>()> make;
    };

    std::vector<Row> effects() const {
        return {{"glass",
                 [this] {
                     auto glass = std::make_unique<Glass_shader>();
                     glass->setBaseColor(0.7F, 0.9F, 0.8F, 1);
                     glass->setEnvironmentTexture(map.c_str());
                     return glass;
                 }},
                {"wax",
                 [] {
                     auto wax = std::make_unique<SSScattering_shader>();
                     wax->setBaseColor(0.8F, 0.5F, 0.4F, 1);
                     wax->setNLights(2);
                     return wax;
                 }},
                {"displacement",
                 [this] {
                     auto displacement = std::make_unique<Displacement_shader>();
                     displacement->setDisplacementTexture(VL_String(map.c_str()));
                     displacement->setScale({0, 20, 0});
                     return displacement;
                 }},
                {"tessellation",
                 [this] {
                     auto displacement = std::make_unique<Displacement_shader>();
                     displacement->setDisplacementTexture(VL_String(map.c_str()));
                     displacement->tesselate(true);
                     return displacement;
                 }},
                {"ocean",
                 [this] {
                     auto ocean = std::make_unique<Displacement_XZ_shader>();
                     VL_Image image;
                     EXPECT_TRUE(image.read(map.c_str()));
                     ocean->setDisplacementTexture(image);
                     ocean->setResolution(32);
                     return ocean;
                 }},
                {"custom", [this] {
                     auto custom = std::make_unique<Custom_shader>();
                     custom->setTexture(map.c_str(), 6);
                     custom->setShaders(
                         "",
                         folder
                             .write("c.frag", "uniform sampler2D Texture6;\n"
                                              "uniform sampler2D TextureFB;\n"
                                              "void main() {\n"
                                              "    vec2 at = gl_FragCoord.xy / 256.0;\n"
                                              "    gl_FragColor = mix(texture2D(Texture6, at),\n"
                                              "                       texture2D(TextureFB, at.yx), 0.5);\n"
                                              "}\n")
                             .c_str(),
                         "");
                     custom->grabFrameBuffer(true);
                     return custom;
                 }}};
    }

    void setLights(Mesh_RL_Shader const& effect) {
        EffectLights lights;
        lights.count = 2;
        setEffectLights(effect, lights, view);
        setEffectMaterial(0.5F, 32);
    }

    TemporaryFolder folder;
    std::string map = folder.file("map.png");
    std::unique_ptr<Layer> layer;
    std::unique_ptr<Ball> ball;
    View view{};
};

}  // namespace

TEST_F(draw_with_gl_test, thePictureIsThatOfTheRenderersOwnPass) {
    for (Row const& row : effects()) {
        SCOPED_TRACE(row.name);
        std::unique_ptr<Base_shader> const effect = row.make();
        effect->enable(true);  // wax sends its values to a program that is in use
        setLights(*effect);
        drawBackground();
        std::vector<unsigned char> const background = readPixels();
        ball->renderer.shader = effect.get();
        ball->draw(MeshShadingFlags_ns::GPU_SHADER);
        std::vector<unsigned char> const own = readPixels();
        ball->renderer.shader = nullptr;
        for (int pass = 0; pass < 2; ++pass) {
            drawBackground();
            drawWith(*effect, [this] { ball->draw(); });
            EXPECT_EQ(readPixels(), own) << savePicture(std::string("draw_with_differs_") + row.name);
        }
        EXPECT_NE(own, background);
        savePicture(std::string("draw_with_") + row.name);
    }
}

TEST_F(draw_with_gl_test, theStateIsAsItWas) {
    // Mesh renderers leave behind where their arrays were.
    ball->draw();
    for (Row const& row : effects()) {
        SCOPED_TRACE(row.name);
        std::unique_ptr<Base_shader> const effect = row.make();
        effect->enable(false);
        setLights(*effect);
        Foreign const foreign;
        // In the second pass the effect is created within the scope.
        for (bool const isCreated : {true, false}) {
            if (!isCreated) {
                effect->reload();
            }
            AttributeState const before;
            drawWith(*effect, [this] { ball->draw(); });
            AttributeState const after;
            EXPECT_THAT(before.namesThatDiffer(after), IsEmpty()) << before.differences(after);
        }
    }
}

TEST_F(draw_with_gl_test, aProgramThatASetterOfTheEffectLeftInUseIsTakenOut) {
    SSScattering_shader wax;
    wax.setRimScalar(0.7F);
    GLint before = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &before);
    ASSERT_NE(before, 0);
    drawWith(wax, [this] { ball->draw(); });
    GLint after = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &after);
    EXPECT_EQ(after, 0);
    // That of another effect is the application's affair.
    wax.enable(true);
    Glass_shader glass;
    drawWith(glass, [this] { ball->draw(); });
    glGetIntegerv(GL_CURRENT_PROGRAM, &after);
    EXPECT_EQ(after, before);
    glUseProgram(0);
}

TEST_F(draw_with_gl_test, aNewSizeOfTheViewportReachesTheEffect) {
    Custom_shader custom;
    std::string const green = folder.write("green.frag", GREEN);
    custom.setShaders("", green.c_str(), "");
    Glass_shader glass;
    glass.setEnvironmentTexture(map.c_str());
    auto const picture = [&] {
        glViewport(0, 0, 100, 100);
        drawBackground();
        drawWith(glass, [this] { ball->draw(); });
        return readPixels();
    };
    std::vector<unsigned char> const first = picture();
    glViewport(0, 0, 256, 256);
    drawBackground();
    drawWith(glass, [this] { ball->draw(); });
    EXPECT_EQ(picture(), first);
}

TEST_F(draw_with_gl_test, anExceptionLeavesTheStateAsItWas) {
    Glass_shader glass;
    ball->draw();
    Foreign const foreign;
    AttributeState const before;
    EXPECT_THROW(drawWith(glass, [] { throw std::runtime_error("drawing"); }), std::runtime_error);
    AttributeState const after;
    EXPECT_THAT(before.namesThatDiffer(after), IsEmpty()) << before.differences(after);
}

TEST_F(draw_with_gl_test, theOuterEffectGoesOnAfterAnInnerOne) {
    Custom_shader green;
    green.setShaders("", folder.write("green.frag", GREEN).c_str(), "");
    Custom_shader blue;
    blue.setTexture(map.c_str(), 0);
    blue.setShaders(
        "", folder.write("blue.frag", "void main() { gl_FragColor = vec4(0.0, 0.0, 1.0, 1.0); }\n").c_str(),
        "");
    green.enable(false);
    ball->draw();
    auto const colorOfBall = [this] {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        ball->draw();
        return readPixel(128, 128);
    };
    AttributeState const before;
    drawWith(green, [&] {
        EXPECT_EQ(colorOfBall(), (Pixel{0, 255, 0, 255}));
        drawWith(blue, [&] {
            EXPECT_EQ(colorOfBall(), (Pixel{0, 0, 255, 255}));
            drawWith(blue, [&] { EXPECT_EQ(colorOfBall(), (Pixel{0, 0, 255, 255})); });
            EXPECT_EQ(colorOfBall(), (Pixel{0, 0, 255, 255}));
        });
        EXPECT_EQ(colorOfBall(), (Pixel{0, 255, 0, 255}));
    });
    AttributeState const after;
    EXPECT_THAT(before.namesThatDiffer(after), IsEmpty()) << before.differences(after);
}

TEST_F(draw_with_gl_test, aProgramThatGlRefusesDrawsWithoutAProgram) {
    allowGlErrors();
    Custom_shader unlinkable;
    unlinkable.setShaders(
        "",
        folder.write("alone.frag", "varying vec3 from;\nvoid main() { gl_FragColor = vec4(from, 1.0); }\n")
            .c_str(),
        "");
    ball->draw();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    Foreign const foreign;  // whose program draws in red
    AttributeState const before;
    drawWith(unlinkable, [&] {
        GLint program = -1;
        glGetIntegerv(GL_CURRENT_PROGRAM, &program);
        EXPECT_EQ(program, 0);
        glDisable(GL_LIGHTING);
        glColor4f(0, 0, 1, 1);
        ball->draw();
    });
    AttributeState const after;
    EXPECT_THAT(before.namesThatDiffer(after), IsEmpty()) << before.differences(after);
    EXPECT_EQ(readPixel(128, 128), (Pixel{0, 0, 255, 255}));
}

}  // namespace vellum::toolkit
