#include "glsl_shader/Glass_shader.h"

#include "Core_RL_GL.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/attribute_state.h"
#include "tests/support/picture_files.h"
#include "tests/vl_raster_gl/glsl_shader/surface_reference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include <GL/glu.h>

namespace vellum {
namespace {

using namespace surface_reference;
using testing::UnorderedElementsAreArray;

constexpr float STEPS = 2.6F;  // of 255: rounding, and texture filters that weigh in 256ths

constexpr int FRAME = 200;         // pixels of the viewport, no power of two
constexpr int FRAME_HEIGHT = 150;  // alike
constexpr int TEXTURE = 256;       // both rounded up to a power of two
constexpr int ENVIRONMENT = 32;    // texels along a side

/// The background behind the glass: it varies smoothly, and no two places are equal.
Vec3 background(int const& x, int const& y) {
    auto const u = static_cast<float>(x) / 255;
    auto const v = static_cast<float>(y) / 255;
    return {u, v, 0.5F + 0.5F * std::sin(6 * u) * std::cos(5 * v)};
}

unsigned int environmentSample(std::size_t x, std::size_t yFromTop, std::size_t channel) {
    std::size_t const y = ENVIRONMENT - 1 - yFromTop;
    return static_cast<unsigned int>(channel == 0 ? 8 * x : channel == 1 ? 8 * y : 255 - 4 * (x + y));
}

/// The varyings of the vertex shader at a corner.
struct Varyings {
    Vec3 normal;
    Vec3 eyeDir;
    Vec4 eyePos;
    float light[2];
};

class Glass_shader_drawn_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        picture_files::writePng(picture, {ENVIRONMENT, ENVIRONMENT}, environmentSample);
        for (int y = 0; y < ENVIRONMENT; ++y) {
            for (int x = 0; x < ENVIRONMENT; ++x) {
                auto const sample = [&](std::size_t channel) {
                    return static_cast<float>(environmentSample(static_cast<std::size_t>(x),
                                                                static_cast<std::size_t>(ENVIRONMENT - 1 - y),
                                                                channel)) /
                           255;
                };
                environment.at(x, y) = {sample(0), sample(1), sample(2)};
            }
        }
        setLights();
        glViewport(0, 0, FRAME, FRAME_HEIGHT);
        glMatrixMode(GL_PROJECTION);
        gluPerspective(60, 4.0 / 3, 0.5, 20);
        placeCorners();
        drawBackground();
        glPointSize(5);
    }

    static void setLights() {
        float const first[4] = {2, 3, 1, 1};
        float const second[4] = {-4, 0.5F, 2, 1};
        glLightfv(GL_LIGHT0, GL_POSITION, first);
        glLightfv(GL_LIGHT1, GL_POSITION, second);
    }

    /// Over the whole surface, beyond the viewport too.
    void drawBackground() {
        std::vector<unsigned char> bytes;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                Vec3 const color = background(x, y);
                for (float const c : {color.x, color.y, color.z, 1.0F}) {
                    bytes.push_back(static_cast<unsigned char>(std::lround(255 * c)));
                }
                frame.at(x, y) = color;
            }
        }
        glUseProgram(0);  // an effect that has just been created is in use, and pixels go through it too
        glWindowPos2i(0, 0);
        glDrawPixels(width, height, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    }

    /// A pixel by its distance from the lower left corner.
    Pixel pixelAt(int const& x, int const& y) { return readPixel(x, height - 1 - y); }

    void prepare(Glass_shader& effect) const {
        effect.setBaseColor(baseColor.x, baseColor.y, baseColor.z, 1);
        effect.setDepth(depth);
        effect.setMixRatio(mixRatio);
        effect.setEnvironmentTexture(picture.c_str());
    }

    // == The formula ==

    static Varyings varyings(Corner const& corner) {
        Transform const transform;
        Varyings result{};
        result.normal = normalized(transform.normal(corner.normal));
        result.eyeDir = xyz(transform.eye(corner.position));
        result.eyePos = transform.clip(corner.position);
        for (int i = 0; i < 2; ++i) {
            Vec3 const direction = normalized(xyz(Light(i).position) - result.eyeDir);
            result.light[i] = std::max(dot(direction, result.normal), 0.0F);
        }
        return result;
    }

    Vec3 reflection(Varyings const& v) {
        Vec3 r = v.eyeDir - v.normal * (2 * dot(v.normal, v.eyeDir));
        float const up = normalized(r).y;
        r.y = 0;
        float const side = normalized(r).x * 0.5F;
        return environment.sample(r.z >= 0 ? (side + 1) * 0.5F : -side * 0.5F + 1, (up + 1) * 0.5F);
    }

    Vec3 refraction(Varyings const& v) {
        Vec3 const d = normalized(v.eyeDir) - normalized(v.normal);
        float const moved = depth / -d.z;
        float s = (v.eyePos[0] / v.eyePos[3] + d.x * moved) / 2 + 0.5F;
        float t = (v.eyePos[1] / v.eyePos[3] + d.y * moved) / 2 + 0.5F;
        s = clamp(s, 0, 1 - 1.0F / TEXTURE) * FRAME / TEXTURE;
        t = clamp(t, 0, 1 - 1.0F / TEXTURE) * FRAME_HEIGHT / TEXTURE;
        return frame.sample(s, t);
    }

    float fresnel(Varyings const& v) const {
        return clamp(std::abs(dot(normalized(v.eyeDir), v.normal)) * mixRatio, 0.1F, 0.9F);
    }

    Vec3 color(Varyings const& v) {
        Vec3 const base = baseColor * v.light[0] + baseColor * v.light[1];
        return mix(mix(reflection(v), refraction(v), fresnel(v)), base, 0.2F);
    }

    /// Where a point is drawn, from the lower left corner of the viewport.
    static std::array<int, 2> place(Corner const& corner) {
        Vec4 const clip = Transform().clip(corner.position);
        return {static_cast<int>((clip[0] / clip[3] + 1) / 2 * FRAME),
                static_cast<int>((clip[1] / clip[3] + 1) / 2 * FRAME_HEIGHT)};
    }

    /// Draws one point and compares it with the formula.
    void checkPoint(Glass_shader& effect, Corner const& corner) {
        drawBackground();
        drawPoint(effect, corner);
        std::array<int, 2> const at = place(corner);
        Pixel const pixel = pixelAt(at[0], at[1]);
        Vec3 const wanted = color(varyings(corner));
        EXPECT_LE(distance(pixel, wanted), STEPS)
            << testing::PrintToString(pixel) << " for " << 255 * wanted.x << ", " << 255 * wanted.y << ", "
            << 255 * wanted.z << " at " << at[0] << ", " << at[1] << " " << effect.getLog();
        EXPECT_EQ(pixel[3], 255);
    }

    Core_RL_GL layer;
    TemporaryFolder folder;
    std::string picture = folder.file("environment.png");
    Texture environment{ENVIRONMENT, ENVIRONMENT};
    Texture frame{TEXTURE, TEXTURE};
    Vec3 baseColor{0.2F, 0.9F, 0.6F};
    float depth = 0.1F;
    float mixRatio = 1;
};

// == The formula ==

TEST_F(Glass_shader_drawn_test, programLinksAndItsUniformsExist) {
    gl_spy::Recording recording;
    Glass_shader effect;
    effect.create();
    recording.clear();
    effect.preprocess();
    effect.cleanup();
    EXPECT_EQ(effect.getLog(), "");
    GLint program = 0;
    for (gl_spy::Call const& call : recording.named("glGetUniformLocation")) {
        std::string const name = call.strings.at(0);
        program = static_cast<GLint>(call.numbers.at(0));
        bool const isKnown = name != "LightPos" && name != "nLights";  // for texts of an application's own
        EXPECT_EQ(glGetUniformLocation(static_cast<GLuint>(program), name.c_str()) >= 0, isKnown) << name;
    }
    GLint linked = 0;
    glGetProgramiv(static_cast<GLuint>(program), GL_LINK_STATUS, &linked);
    EXPECT_EQ(linked, GL_TRUE);
}

TEST_F(Glass_shader_drawn_test, pointsHaveColorOfFormula) {
    Glass_shader effect;
    prepare(effect);
    for (Corner const& corner : CORNERS) {
        checkPoint(effect, corner);
    }
}

TEST_F(Glass_shader_drawn_test, depthAndMixRatioChangeColorAsFormulaDoes) {
    Glass_shader effect;
    for (float const d : {-0.5F, 0.0F, 0.3F, 1.0F}) {
        for (float const ratio : {-1.0F, 0.0F, 0.5F, 2.0F, 100.0F}) {
            depth = d;
            mixRatio = ratio;
            prepare(effect);
            checkPoint(effect, CORNERS[1]);
            checkPoint(effect, CORNERS[3]);
        }
    }
}

TEST_F(Glass_shader_drawn_test, wholeTriangleHasColorOfFormula) {
    std::array<Corner, 3> const corners{{{{-1.2F, -0.9F, 0.3F}, {-0.5F, -0.4F, 1}},
                                         {{1.1F, -0.7F, -0.4F}, {0.6F, -0.3F, 1}},
                                         {{0.1F, 1, 0.6F}, {0.1F, 0.7F, 1}}}};
    baseColor = {0.9F, 0.3F, 0.1F};
    Glass_shader effect;
    prepare(effect);
    drawCorners(effect, GL_TRIANGLES, corners);
    std::array<Varyings, 3> ends{};
    std::array<Vec4, 3> clip{};
    for (std::size_t i = 0; i < 3; ++i) {
        ends[i] = varyings(corners[i]);
        clip[i] = ends[i].eyePos;
    }
    std::vector<unsigned char> const pixels = readPixels();
    int inside = 0;
    int wrong = 0;
    for (int y = 0; y < FRAME_HEIGHT; ++y) {
        for (int x = 0; x < FRAME; ++x) {
            std::array<float, 3> const share = shares(clip, (static_cast<float>(x) + 0.5F) / FRAME * 2 - 1,
                                                      (static_cast<float>(y) + 0.5F) / FRAME_HEIGHT * 2 - 1);
            if (share[0] == 0) {
                continue;
            }
            Varyings v{};
            for (std::size_t i = 0; i < 3; ++i) {
                v.normal = v.normal + ends[i].normal * share[i];
                v.eyeDir = v.eyeDir + ends[i].eyeDir * share[i];
                for (std::size_t c = 0; c < 4; ++c) {
                    v.eyePos[c] += ends[i].eyePos[c] * share[i];
                }
                v.light[0] += ends[i].light[0] * share[i];
                v.light[1] += ends[i].light[1] * share[i];
            }
            ++inside;
            wrong += distance(&pixels[static_cast<std::size_t>((height - 1 - y) * width + x) * 4], color(v)) >
                             STEPS
                         ? 1
                         : 0;
        }
    }
    EXPECT_GT(inside, 3000);
    EXPECT_EQ(wrong, 0) << "of " << inside << " " << savePicture("glass_triangle");
}

// == Single terms ==

TEST_F(Glass_shader_drawn_test, lookingStraightAtItShowsNineTenthsOfWhatLiesBehind) {
    glLoadIdentity();
    Corner const corner{{0, 0, -2}, {0, 0, 1}};
    Varyings const v = varyings(corner);
    EXPECT_FLOAT_EQ(fresnel(v), 0.9F);
    Glass_shader effect;
    prepare(effect);
    checkPoint(effect, corner);
    // The very shares, written out: black surroundings, a black glass, and what lies behind white.
    effect.setEnvironmentTexture("");
    effect.setBaseColor(0, 0, 0, 1);
    glClearColor(1, 1, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    drawPoint(effect, corner);
    EXPECT_NEAR(pixelAt(FRAME / 2, FRAME_HEIGHT / 2)[0], 255 * 0.9 * 0.8, STEPS);
}

TEST_F(Glass_shader_drawn_test, atGrazingAnglesSurroundingsDominate) {
    glLoadIdentity();
    Corner const corner{{0, 0, -2}, {1, 0, 0.01F}};
    Varyings const v = varyings(corner);
    EXPECT_FLOAT_EQ(fresnel(v), 0.1F);
    Glass_shader effect;
    prepare(effect);
    checkPoint(effect, corner);
    effect.setEnvironmentTexture("");
    effect.setBaseColor(0, 0, 0, 1);
    glClearColor(1, 1, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    drawPoint(effect, corner);
    EXPECT_NEAR(pixelAt(FRAME / 2, FRAME_HEIGHT / 2)[0], 255 * 0.1 * 0.8, STEPS);
}

TEST_F(Glass_shader_drawn_test, lookUpsOutsideFrameTakeItsLastRowAndColumn) {
    glLoadIdentity();
    depth = 50;
    baseColor = {0, 0, 0};
    Glass_shader effect;
    prepare(effect);
    effect.setEnvironmentTexture("");
    for (Vec3 const& normal : {Vec3{-0.4F, -0.3F, 1}, Vec3{0.4F, -0.3F, 1}, Vec3{-0.4F, 0.3F, 1}}) {
        drawBackground();
        Corner const corner{{0, 0, -2}, normal};
        drawPoint(effect, corner);
        Varyings const v = varyings(corner);
        Pixel const pixel = pixelAt(FRAME / 2, FRAME_HEIGHT / 2);
        EXPECT_LE(distance(pixel, refraction(v) * (fresnel(v) * 0.8F)), STEPS);
        // Not the formula again: the red of the background is its column, the green its row.
        float const share = fresnel(v) * 0.8F;
        float const column = static_cast<float>(pixel[0]) / share;
        float const row = static_cast<float>(pixel[1]) / share;
        if (normal.x < 0) {
            EXPECT_NEAR(column, FRAME - FRAME / 256.0, 4) << "the right end of the frame, not of the texture";
        } else {
            EXPECT_NEAR(column, 255.0 / 2, 4)
                << "half of column 0, half of what repeats from the texture's end";
        }
        if (normal.y < 0) {
            EXPECT_NEAR(row, FRAME_HEIGHT - FRAME_HEIGHT / 256.0, 4);
        } else {
            EXPECT_NEAR(row, 255.0 / 2, 4);
        }
    }
}

TEST_F(Glass_shader_drawn_test, frameIsThatOfViewportWhereverItLies) {
    glLoadIdentity();
    glViewport(30, 40, FRAME, FRAME_HEIGHT);
    depth = 0;
    baseColor = {0, 0, 0};
    Glass_shader effect;
    prepare(effect);
    effect.setEnvironmentTexture("");
    Corner const corner{{0.3F, 0.2F, -2}, {0, 0, 1}};
    std::array<int, 2> const at = place(corner);
    Vec3 const behind = background(30 + at[0], 40 + at[1]);
    drawPoint(effect, corner);
    EXPECT_LE(distance(pixelAt(30 + at[0], 40 + at[1]), behind * (fresnel(varyings(corner)) * 0.8F)),
              STEPS + 1);
}

TEST_F(Glass_shader_drawn_test, deliberatelySecondLightCountsWithOneLight) {
    glLoadIdentity();
    Corner const corner{{0, 0, -2}, {0, 0, 1}};
    float const behindTheGlass[4] = {0, 0, -9, 1};
    glLightfv(GL_LIGHT0, GL_POSITION, behindTheGlass);
    baseColor = {1, 0, 0};
    Glass_shader effect;
    prepare(effect);
    effect.setNLights(1);
    EXPECT_EQ(varyings(corner).light[0], 0);
    EXPECT_GT(varyings(corner).light[1], 0.5F);
    checkPoint(effect, corner);
}

TEST_F(Glass_shader_drawn_test, cleanPassDrawsSamePicture) {
    Glass_shader effect;
    prepare(effect);
    checkPoint(effect, CORNERS[1]);
    checkPoint(effect, CORNERS[1]);
    baseColor = {1, 0, 0};
    prepare(effect);
    checkPoint(effect, CORNERS[1]);
}

TEST_F(Glass_shader_drawn_test, reloadKeepsPicture) {
    Glass_shader effect;
    prepare(effect);
    checkPoint(effect, CORNERS[2]);
    effect.reload();
    checkPoint(effect, CORNERS[2]);
    effect.create();
    checkPoint(effect, CORNERS[2]);
}

// == Bad input ==

TEST_F(Glass_shader_drawn_test, missingEnvironmentGivesBlackReflections) {
    Glass_shader effect;
    prepare(effect);
    effect.setEnvironmentTexture("/does/not/exist.png");
    std::fill(environment.texels.begin(), environment.texels.end(), Vec3{0, 0, 0});
    for (Corner const& corner : CORNERS) {
        checkPoint(effect, corner);
    }
}

TEST_F(Glass_shader_drawn_test, picturesOfEveryWrongKindLeaveNoError) {
    std::string const whole = folder.read("environment.png");
    picture_files::writePng(folder.file("narrow.png"), {1, 7}, environmentSample);
    picture_files::writePng(folder.file("deep.png"), {5, 3, 16}, environmentSample);
    picture_files::writePng(folder.file("gray.png"), {5, 3, 8, 0}, environmentSample);
    picture_files::writePng(folder.file("wide.png"), {16384, 1}, environmentSample);
    picture_files::writeExr(folder.file("floats.exr"), {0, 0, 3, 3, {{"R"}, {"G"}, {"B"}}},
                            [](auto x, auto, auto) { return x == 0 ? NAN : INFINITY; });
    std::vector<std::string> const paths{folder.file(""),
                                         folder.write("empty.png", ""),
                                         folder.write("text.png", "no picture"),
                                         folder.write("cut.png", whole.substr(0, whole.size() / 2)),
                                         folder.file("narrow.png"),
                                         folder.file("deep.png"),
                                         folder.file("gray.png"),
                                         folder.file("wide.png"),
                                         folder.file("floats.exr"),
                                         "/dev/null"};
    Glass_shader effect;
    for (std::string const& path : paths) {
        effect.setEnvironmentTexture(path.c_str());
        drawPoint(effect, CORNERS[1]);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << path;
    }
}

TEST_F(Glass_shader_drawn_test, nanParametersLeaveNoError) {
    Glass_shader effect;
    prepare(effect);
    for (float const value : {NAN, INFINITY, -INFINITY, 0.0F}) {
        effect.setDepth(value);
        effect.setMixRatio(value);
        effect.setBaseColor(value, value, value, value);
        effect.setLightPosition(value, value, value, value);
        drawPoint(effect, CORNERS[1]);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    }
    prepare(effect);
    checkPoint(effect, CORNERS[1]);
}

// == State ==

TEST_F(Glass_shader_drawn_test, passRestoresAllButColorAndTextureUnits) {
    Glass_shader effect;
    prepare(effect);
    drawPoint(effect, CORNERS[0]);
    effect.setDepth(0.4F);
    for (bool const isDirty : {true, false}) {
        setUnlikePasses();
        AttributeState const before;
        effect.preprocess();
        effect.postprocess();
        effect.cleanup();
        AttributeState const after;
        // The copy of the framebuffer is deleted, which takes it from its unit again.
        EXPECT_THAT(before.namesThatDiffer(after),
                    UnorderedElementsAreArray(withLightsThatStay(
                        {"GL_ACTIVE_TEXTURE", "GL_CURRENT_COLOR", "GL_TEXTURE0 GL_TEXTURE_BINDING_2D"}, 1)))
            << isDirty << before.differences(after);
    }
}

// == Pictures ==

TEST_F(Glass_shader_drawn_test, glassSphereRefractsDrawnScene) {
    glViewport(0, 0, width, height);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(40, 1, 0.5, 20);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glClearColor(0.75F, 0.85F, 0.95F, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    gluLookAt(0, 1.2, 5, 0, 0, 0, 0, 1, 0);
    glBegin(GL_QUADS);
    for (int x = -8; x < 8; ++x) {
        for (int z = -8; z < 8; ++z) {
            float const shade = ((x + z) & 1) != 0 ? 0.9F : 0.2F;
            glColor3f(shade, shade * 0.8F, shade * 0.6F);
            auto const left = 0.5F * static_cast<float>(x);
            auto const near = 0.5F * static_cast<float>(z);
            glVertex3f(left, -1, near);
            glVertex3f(left, -1, near + 0.5F);
            glVertex3f(left + 0.5F, -1, near + 0.5F);
            glVertex3f(left + 0.5F, -1, near);
        }
    }
    glEnd();

    picture_files::writePng(picture, {64, 64}, [](std::size_t, std::size_t y, std::size_t c) {
        return static_cast<unsigned int>(y < 32 ? 255 - 2 * y + 0 * c : 90 + 20 * c);
    });
    Glass_shader effect;
    effect.setEnvironmentTexture(picture.c_str());
    effect.setBaseColor(0.4F, 0.7F, 0.6F, 1);
    effect.setDepth(0.35F);
    GLUquadric* const sphere = gluNewQuadric();
    drawWith(effect, [&] { gluSphere(sphere, 1, 48, 48); });
    gluDeleteQuadric(sphere);
    Pixel const middle = readPixel(128, 128);
    std::string const file = savePicture("glass_sphere");

    EXPECT_NE(middle, readPixel(5, 5)) << file;
}

}  // namespace
}  // namespace vellum
