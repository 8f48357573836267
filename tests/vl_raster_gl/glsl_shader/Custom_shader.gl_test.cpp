#include "glsl_shader/Custom_shader.h"

#include "Core_RL_GL.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/attribute_state.h"
#include "tests/support/picture_files.h"
#include "tests/vl_raster_gl/glsl_shader/surface_reference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>

namespace vellum {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAreArray;

using surface_reference::setUnlikePasses;
using surface_reference::withLightsThatStay;

constexpr char const* VERTEX =
    "void main() { gl_Position = ftransform(); gl_TexCoord[0] = gl_MultiTexCoord0; }\n";

class Custom_shader_drawn_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        glViewport(0, 0, width, height);
    }

    VL_String path(std::string const& name, std::string const& text) const {
        return folder.write(name, text).c_str();
    }

    /// A rectangle over a part of the surface, in clip coordinates.
    static void drawRectangle(float const& size = 1) {
        glBegin(GL_TRIANGLE_FAN);
        glTexCoord2f(0, 0);
        glVertex2f(-size, -size);
        glTexCoord2f(1, 0);
        glVertex2f(size, -size);
        glTexCoord2f(1, 1);
        glVertex2f(size, size);
        glTexCoord2f(0, 1);
        glVertex2f(-size, size);
        glEnd();
    }

    static void draw(Custom_shader& effect, float const& size = 1) {
        surface_reference::drawWith(effect, [&] { drawRectangle(size); });
    }

    /// The middle of a rectangle that is drawn with this fragment stage.
    Pixel drawn(Custom_shader& effect, std::string const& fragment) {
        effect.setShaders(path("a.vert", VERTEX),
                          path("stage" + std::to_string(stages++) + ".frag", fragment), "");
        glClear(GL_COLOR_BUFFER_BIT);
        draw(effect);
        EXPECT_EQ(effect.getLog(), "");
        return readPixel(100, 100);
    }

    Core_RL_GL layer;
    TemporaryFolder folder;
    int stages = 0;
};

// == Inputs ==

TEST_F(Custom_shader_drawn_test, everyVariableArrives) {
    Custom_shader effect;
    std::string text = "uniform vec4 BaseColor;\nuniform int nLights;\n";
    std::string sum = "BaseColor + float(nLights) / 255.0";
    for (int i = 0; i < 10; ++i) {
        std::string const n = std::to_string(i);
        text += "uniform float FloatVar" + n + "; uniform vec3 Vec3Var" + n + "; uniform vec4 Vec4Var" + n +
                ";\n";
        sum += " + vec4(FloatVar" + n + ", Vec3Var" + n + ") * Vec4Var" + n;
        auto const v = static_cast<float>(i);
        effect.setFloatVar(0.01F * v, i);
        effect.setVec3Var({0.02F * v, 0.03F, 0.05F}, i);
        effect.setVec4Var({1, 0.5F, 0.1F * v, 1}, i);
    }
    effect.setBaseColor({0.1F, 0.05F, 0, 0.3F});
    effect.setNLights(2);
    Pixel const pixel =
        drawn(effect, text + "void main() { gl_FragColor = vec4((" + sum + ").rgb, 1.0); }\n");
    // 45 is the sum of 0 to 9.
    EXPECT_NEAR(pixel[0], 255 * (0.1 + 45 * 0.01) + 2, 1);
    EXPECT_NEAR(pixel[1], 255 * (0.05 + 45 * 0.02 * 0.5) + 2, 1);
    EXPECT_NEAR(pixel[2], 255 * (45 * 0.1 * 0.03) + 2, 1);
}

TEST_F(Custom_shader_drawn_test, everyTextureArrives) {
    Custom_shader effect;
    for (unsigned int i = 0; i < 7; ++i) {
        std::string const file = folder.file("picture" + std::to_string(i) + ".png");
        picture_files::writePng(file, {4, 4},
                                [i](auto, auto, std::size_t c) { return c == 0 ? 30 * (i + 1) : 7 * i; });
        effect.setTexture(file.c_str(), static_cast<int>(i));
    }
    for (unsigned int i = 0; i < 7; ++i) {
        std::string const name = "Texture" + std::to_string(i);
        Pixel const pixel =
            drawn(effect, "uniform sampler2D " + name + ";\nvoid main() { gl_FragColor = texture2D(" + name +
                              ", gl_TexCoord[0].xy); }\n");
        EXPECT_THAT(pixel, ElementsAre(30 * (i + 1), 7 * i, 7 * i, 255)) << name;
    }
}

TEST_F(Custom_shader_drawn_test, frameArrivesWhenItIsGrabbed) {
    char const* const show = "uniform sampler2D TextureFB;\n"
                             "void main() { gl_FragColor = 0.5 * texture2D(TextureFB, vec2(0.5)); }\n";
    Custom_shader effect;
    effect.setShaders(path("a.vert", VERTEX), path("show.frag", show), "");
    auto const overColor = [&](float const& red, float const& green) {
        glClearColor(red, green, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        glDisable(GL_BLEND);
        effect.init();
        effect.preprocess();
        glDisable(GL_BLEND);
        drawRectangle();
        effect.postprocess();
        effect.cleanup();
        return readPixel(100, 100);
    };
    EXPECT_EQ(overColor(1, 0)[0], 0) << "never grabbed";
    effect.grabFrameBuffer(true);
    EXPECT_NEAR(overColor(1, 0)[0], 128, 1);
    effect.grabFrameBuffer(false);
    EXPECT_NEAR(overColor(0, 1)[0], 128, 1) << "the last contents";
    effect.grabFrameBuffer(true);
    EXPECT_NEAR(overColor(0, 1)[1], 128, 1);
}

TEST_F(Custom_shader_drawn_test, changesShowInPassesAfterFirst) {
    Custom_shader effect;
    char const* const text =
        "uniform float FloatVar3;\nvoid main() { gl_FragColor = vec4(FloatVar3, 0, 0, 1); }\n";
    effect.setFloatVar(0.2F, 3);
    EXPECT_NEAR(drawn(effect, text)[0], 51, 1);
    effect.setFloatVar(0.4F, 3);
    draw(effect);
    EXPECT_NEAR(readPixel(100, 100)[0], 102, 1);
    *effect.getFloatVarPtr(3) = 0.6F;
    effect.markDirty();
    draw(effect);
    EXPECT_NEAR(readPixel(100, 100)[0], 153, 1);
    effect.reload();
    draw(effect);
    EXPECT_NEAR(readPixel(100, 100)[0], 153, 1);
}

TEST_F(Custom_shader_drawn_test, copyDrawsSamePicture) {
    std::string const file = folder.file("picture.png");
    picture_files::writePng(file, {4, 4}, [](auto, auto, std::size_t c) { return 40 + 50 * c; });
    Custom_shader effect;
    effect.setTexture(file.c_str(), 6);
    Pixel const original =
        drawn(effect, "uniform sampler2D Texture6;\n"
                      "void main() { gl_FragColor = texture2D(Texture6, gl_TexCoord[0].xy); }\n");
    EXPECT_THAT(original, ElementsAre(40, 90, 140, 255));
    Custom_shader copy(effect);
    glClear(GL_COLOR_BUFFER_BIT);
    draw(copy);
    EXPECT_EQ(readPixel(100, 100), original);
}

// == Stages that pass everything on ==

TEST_F(Custom_shader_drawn_test, withoutFilesVertexColorIsDrawn) {
    Custom_shader effect;
    effect.create();
    effect.preprocess();
    glColor4f(0.2F, 0.4F, 0.6F, 1);
    drawRectangle();
    effect.postprocess();
    effect.cleanup();
    EXPECT_THAT(readPixel(100, 100), ElementsAre(51, 102, 153, 255));
    EXPECT_EQ(effect.getLog(), "");
}

TEST_F(Custom_shader_drawn_test, fragmentFileThatDoesNotCompileIsReplaced) {
    StreamCapture const prints(std::cout);
    Custom_shader effect;
    effect.setShaders("", path("bad.frag", "void main()\n{\n    gl_FragColor = nonsense;\n}\n"), "");
    draw(effect);
    EXPECT_THAT(readPixel(100, 100), ElementsAre(255, 255, 255, 255)) << "the white of the pass";
    EXPECT_THAT(prints.text(), HasSubstr("0:3(")) << "the line of the fault";
}

TEST_F(Custom_shader_drawn_test, geometryFileOfThisDriversLanguageDraws) {
    Custom_shader effect;
    effect.setShaders("", "", path("half.geom", R"(#version 150 compatibility
layout(triangles) in;
layout(triangle_strip, max_vertices = 3) out;
void main()
{
    for (int i = 0; i < 3; ++i) {
        gl_Position = vec4(gl_in[i].gl_Position.xyz * 0.5, 1.0);
        gl_FrontColor = gl_in[i].gl_FrontColor;
        EmitVertex();
    }
    EndPrimitive();
}
)"));
    draw(effect);
    EXPECT_EQ(effect.getLog(), "");
    EXPECT_EQ(readPixel(128, 128)[0], 255);
    EXPECT_EQ(readPixel(20, 20)[0], 0) << "half the size";
}

TEST_F(Custom_shader_drawn_test, geometryFileThatIsNoGoodIsReplaced) {
    StreamCapture const errors(std::cerr);
    StreamCapture const prints(std::cout);
    for (VL_String const& file :
         {path("bad.geom", "nonsense"), VL_String("/does/not/exist.geom"),
          path("other.geom",
               "#version 120\n#extension GL_EXT_geometry_shader4 : enable\nvoid main() { gl_Position = "
               "gl_PositionIn[0]; EmitVertex(); }\n")}) {
        Custom_shader effect;
        effect.setShaders("", "", file);
        glClear(GL_COLOR_BUFFER_BIT);
        draw(effect, 0.5F);
        EXPECT_EQ(effect.getLog(), "");
        EXPECT_EQ(readPixel(128, 128)[0], 255) << file.c_str();
        EXPECT_EQ(readPixel(20, 20)[0], 0);
    }
}

TEST_F(Custom_shader_drawn_test, replacedGeometryStagePassesTextureCoordinatesOn) {
    StreamCapture const errors(std::cerr);
    Custom_shader effect;
    effect.setShaders("",
                      path("uv.frag", "void main() { gl_FragColor = vec4(gl_TexCoord[0].xy, 0.0, 1.0); }\n"),
                      "/does/not/exist.geom");
    draw(effect);
    EXPECT_EQ(effect.getLog(), "");
    EXPECT_NEAR(readPixel(64, 255)[0], 64, 2);
    EXPECT_NEAR(readPixel(64, 64)[1], 191, 2);
}

// == Bad input ==

TEST_F(Custom_shader_drawn_test, filesOfEveryWrongKindDrawPassingStages) {
    StreamCapture const errors(std::cerr);
    StreamCapture const prints(std::cout);
    allowGlErrors();
    std::string binary;
    for (int i = 0; i < 5000; ++i) {
        binary.push_back(static_cast<char>(i * 7 % 256));
    }
    std::string const huge = folder.write("huge.frag", "void main() {}\n");
    std::filesystem::resize_file(huge, std::uintmax_t{100} << 20);  // sparse: it takes no space
    std::filesystem::create_directory(folder.file("folder.frag"));
    struct Row {
        char const* name;
        std::string path;
    };
    Row const rows[] = {{"missing", folder.file("missing.frag")},
                        {"empty", folder.write("empty.frag", "")},
                        {"binary", folder.write("binary.frag", binary)},
                        {"100 MiB", huge},
                        {"a folder", folder.file("folder.frag")},
                        {"a device", "/dev/zero"},
                        {"cut off", folder.write("cut.frag", "void main() { gl_FragColor = vec4(")},
                        {"a long path", std::string(70000, 'x')}};
    for (Row const& row : rows) {
        VL_String const file = row.path.c_str();
        Custom_shader effect;
        effect.setShaders(file, file, file);
        glClear(GL_COLOR_BUFFER_BIT);
        draw(effect);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << row.name;
        EXPECT_TRUE(effect.created);
        EXPECT_EQ(effect.getLog(), "") << row.name;
        EXPECT_EQ(readPixel(100, 100)[0], 255) << row.name;
    }
    EXPECT_THAT(errors.text(), HasSubstr("can not open shader source file " + huge));
}

TEST_F(Custom_shader_drawn_test, fileWithoutMainLeavesLogAndNoError) {
    allowGlErrors();
    Custom_shader effect;
    effect.setShaders("", path("other.frag", "void other() {}"), "");
    draw(effect);
    draw(effect);
    EXPECT_NE(effect.getLog(), "") << "a stage without a main does not link";
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    effect.setShaders("", "", "");
    draw(effect);
    EXPECT_EQ(readPixel(100, 100)[0], 255) << "and the next files do";
    EXPECT_EQ(effect.getLog(), "");
}

TEST_F(Custom_shader_drawn_test, linesMayBeLongerThan1024Characters) {
    Custom_shader effect;
    Pixel const pixel =
        drawn(effect, "// " + std::string(5000, 'x') + "\nvoid main() { " + std::string(3000, ' ') +
                          "gl_FragColor = vec4(0.2, 0.4, 0.6, 1.0); }");
    EXPECT_THAT(pixel, ElementsAre(51, 102, 153, 255));
}

TEST_F(Custom_shader_drawn_test, picturesOfEveryWrongKindLeaveNoError) {
    auto const sample = [](std::size_t x, std::size_t y, std::size_t c) {
        return static_cast<unsigned int>(x + y + c) & 0xFF;
    };
    std::string const whole = folder.file("whole.png");
    picture_files::writePng(whole, {16, 16}, sample);
    picture_files::writePng(folder.file("narrow.png"), {1, 7}, sample);
    picture_files::writePng(folder.file("deep.png"), {5, 3, 16}, sample);
    picture_files::writePng(folder.file("gray.png"), {5, 3, 8, 0}, sample);
    picture_files::writeJpeg(folder.file("cmyk.jpg"), 9, 5, picture_files::JpegColors::cmyk, true, sample);
    picture_files::writeExr(folder.file("floats.exr"), {0, 0, 3, 3, {{"R"}, {"G"}, {"B"}}},
                            [](auto x, auto, auto) { return x == 0 ? NAN : INFINITY; });
    std::string const bytes = folder.read("whole.png");
    Custom_shader effect;
    int index = 0;
    for (std::string const& file :
         {folder.file(""), folder.write("empty.png", ""), folder.write("text.png", "no picture"),
          folder.write("cut.png", bytes.substr(0, bytes.size() / 2)), folder.file("narrow.png"),
          folder.file("deep.png"), folder.file("gray.png"), folder.file("cmyk.jpg"),
          folder.file("floats.exr"), std::string("/dev/null")}) {
        effect.setTexture(file.c_str(), index++ % 7);
        draw(effect);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << file;
    }
}

TEST_F(Custom_shader_drawn_test, nanVariablesLeaveNoError) {
    Custom_shader effect;
    for (int i = -2; i < 12; ++i) {
        effect.setFloatVar(NAN, i);
        effect.setVec3Var({NAN, INFINITY, -INFINITY}, i);
        effect.setVec4Var({NAN, NAN, NAN, NAN}, i);
    }
    effect.setBaseColor({NAN, NAN, NAN, NAN});
    drawn(effect, "uniform float FloatVar0; uniform vec4 BaseColor;\n"
                  "void main() { gl_FragColor = BaseColor * FloatVar0; }\n");
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

// == State ==

TEST_F(Custom_shader_drawn_test, passRestoresAllButColorAndTextureUnits) {
    std::string const file = folder.file("picture.png");
    picture_files::writePng(file, {4, 4}, [](auto, auto, auto) { return 9U; });
    Custom_shader effect;
    effect.setTexture(file.c_str(), 2);
    effect.grabFrameBuffer(true);
    draw(effect);
    effect.setFloatVar(1, 1);
    effect.setNLights(3);
    for (bool const isDirty : {true, false}) {
        setUnlikePasses();
        AttributeState const before;
        effect.preprocess();
        effect.postprocess();
        effect.cleanup();
        AttributeState const after;
        EXPECT_THAT(before.namesThatDiffer(after),
                    UnorderedElementsAreArray(withLightsThatStay({"GL_ACTIVE_TEXTURE", "GL_CURRENT_COLOR",
                                                                  "GL_TEXTURE2 GL_TEXTURE_BINDING_2D",
                                                                  "GL_TEXTURE7 GL_TEXTURE_BINDING_2D"},
                                                                 3)))
            << isDirty << before.differences(after);
    }
}

// == Pictures ==

TEST_F(Custom_shader_drawn_test, userShaderMarblesSphere) {
    Custom_shader effect;
    effect.setShaders(path("marble.vert", R"(varying vec3 normal;
varying vec3 place;
void main()
{
    normal = gl_NormalMatrix * gl_Normal;
    place = gl_Vertex.xyz;
    gl_Position = ftransform();
}
)"),
                      path("marble.frag", R"(uniform vec4 BaseColor;
uniform float FloatVar0;
varying vec3 normal;
varying vec3 place;
void main()
{
    float vein = 0.5 + 0.5 * sin(FloatVar0 * (place.x + 0.6 * sin(4.0 * place.y) + 0.3 * sin(9.0 * place.z)));
    float light = 0.3 + 0.7 * max(dot(normalize(normal), normalize(vec3(1.0, 1.0, 2.0))), 0.0);
    gl_FragColor = vec4(mix(BaseColor.rgb, vec3(1.0), vein) * light, 1.0);
}
)"),
                      "");
    effect.setFloatVar(8, 0);
    effect.setBaseColor({0.15F, 0.3F, 0.35F, 1});
    glMatrixMode(GL_PROJECTION);
    gluPerspective(40, 1, 0.5, 20);
    glMatrixMode(GL_MODELVIEW);
    glTranslatef(0, 0, -3.5F);
    glEnable(GL_DEPTH_TEST);
    effect.init();
    effect.preprocess();
    GLUquadric* const sphere = gluNewQuadric();
    gluSphere(sphere, 1, 48, 48);
    gluDeleteQuadric(sphere);
    effect.postprocess();
    effect.cleanup();
    EXPECT_EQ(effect.getLog(), "");
    std::string const file = savePicture("custom_marble");

    EXPECT_GT(readPixel(128, 128)[0], 30) << file;
}

}  // namespace
}  // namespace vellum
