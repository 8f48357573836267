#include "glsl_shader/Displacement_XZ_shader.h"
#include "glsl_shader/Displacement_shader.h"

#include "Core_RL_GL.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/support/attribute_state.h"
#include "tests/vl_raster_gl/glsl_shader/displacement_reference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using namespace displacement_reference;

constexpr int SIDE = 96;       // pixels of the pictures that are compared
constexpr double NEAR = 2e-3;  // of a color: the effects compute with floats of 24 bits
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

/// A square in the plane of x and z, seen from above at an angle, or from below.
std::vector<Input> square(Vec3 const& normal = {0, 1, 0}) {
    std::array<Input, 4> const corners{{{{-1, 0, -1}, normal, {0, 0}},
                                        {{-1, 0, 1}, normal, {0, 1}},
                                        {{1, 0, -1}, normal, {1, 0}},
                                        {{1, 0, 1}, normal, {1, 1}}}};
    return {corners[0], corners[1], corners[2], corners[2], corners[1], corners[3]};
}

/// A smooth map: waves in every channel, of several lengths that repeat over the map.
Map waves(int const& width, int const& height) {
    Map map{width, height, {}};
    double const turn = 2 * std::acos(-1.0);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            double const u = turn * x / width;
            double const v = turn * y / height;
            for (double const& value :
                 {0.5 + 0.3 * std::sin(u + 2 * v), 0.5 + 0.35 * std::cos(2 * u - v) * std::sin(v),
                  0.45 + 0.3 * std::sin(3 * v), 0.5 + 0.5 * std::sin(u) * std::cos(v)}) {
                map.rgba.push_back(static_cast<float>(value));
            }
        }
    }
    return map;
}

Map uniformMap(std::array<float, 4> const& texel) {
    Map map{4, 4, {}};
    for (int i = 0; i < 16; ++i) {
        map.rgba.insert(map.rgba.end(), texel.begin(), texel.end());
    }
    return map;
}

VL_Image imageOf(Map const& map) {
    VL_Image image;
    EXPECT_TRUE(
        image.create(static_cast<unsigned int>(map.width), static_cast<unsigned int>(map.height), 4, 32));
    std::copy(map.rgba.begin(), map.rgba.end(), image.getBuffer32());
    return image;
}

class Displacement_drawn_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        glGenTextures(1, &colorTexture);
        glBindTexture(GL_TEXTURE_2D, colorTexture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, SIDE, SIDE, 0, GL_RGBA, GL_FLOAT, nullptr);
        glBindTexture(GL_TEXTURE_2D, 0);
        glGenFramebuffers(1, &framebuffer);
        scene.map = waves(32, 16);
    }
    void TearDown() override {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &framebuffer);
        glDeleteTextures(1, &colorTexture);
        GlTest::TearDown();
    }

    /// Draws into a frame buffer of floats from here on, which keeps unclamped colors.
    void drawIntoFloats() const {
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, colorTexture, 0);
        glViewport(0, 0, SIDE, SIDE);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
    }

    /// A camera that looks down (or up, below 0) on the square at this angle in degrees, and lights.
    void lookAt(double const& elevation, double const& scale = 1) {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        gluPerspective(45, 1, 1, 20);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glTranslated(0.1, -0.05, -3.2);
        glRotated(elevation, 1, 0, 0);
        glRotated(25, 0, 1, 0);
        glScaled(scale, scale, scale);
        glGetDoublev(GL_MODELVIEW_MATRIX, scene.modelview.data());
        glGetDoublev(GL_PROJECTION_MATRIX, scene.projection.data());
        glPushMatrix();
        glLoadIdentity();
        setLight(0, {{1.5, 2, 1, 1}, {0.1, 0.15, 0.2}, {0.7, 0.6, 0.5}, {0.5, 0.4, 0.9}, 0.6, 0.05, 0.03});
        setLight(1, {{-2, -1.5, 0.5, 1}, {0.05, 0.02, 0.03}, {0.3, 0.5, 0.6}, {0.9, 0.2, 0.1}, 1, 0.1, 0.01});
        glPopMatrix();
        setMaterial(GL_FRONT, scene.front = {{0.5, 0.6, 0.7}, {0.9, 0.8, 0.7}, {0.6, 0.7, 0.8}, 12});
        setMaterial(GL_BACK, scene.back = {{0.9, 0.3, 0.2}, {0.4, 0.5, 0.9}, {0.3, 0.9, 0.2}, 5});
    }

    void setLight(std::size_t const& i, Light const& light) {
        scene.lights[i] = light;
        auto const name = static_cast<GLenum>(GL_LIGHT0 + i);
        setColor([&](float const* c) { glLightfv(name, GL_AMBIENT, c); }, light.ambient);
        setColor([&](float const* c) { glLightfv(name, GL_DIFFUSE, c); }, light.diffuse);
        setColor([&](float const* c) { glLightfv(name, GL_SPECULAR, c); }, light.specular);
        std::array<float, 4> position{};
        std::copy(light.position.begin(), light.position.end(), position.begin());
        glLightfv(name, GL_POSITION, position.data());
        glLightf(name, GL_CONSTANT_ATTENUATION, static_cast<float>(light.constant));
        glLightf(name, GL_LINEAR_ATTENUATION, static_cast<float>(light.linear));
        glLightf(name, GL_QUADRATIC_ATTENUATION, static_cast<float>(light.quadratic));
    }

    static void setMaterial(GLenum const& face, Material const& material) {
        setColor([&](float const* c) { glMaterialfv(face, GL_AMBIENT, c); }, material.ambient);
        setColor([&](float const* c) { glMaterialfv(face, GL_DIFFUSE, c); }, material.diffuse);
        setColor([&](float const* c) { glMaterialfv(face, GL_SPECULAR, c); }, material.specular);
        glMaterialf(face, GL_SHININESS, static_cast<float>(material.shininess));
    }

    template <class Set>
    static void setColor(Set const& set, Vec3 const& color) {
        std::array<float, 4> const values{float(color[0]), float(color[1]), float(color[2]), 1};
        set(values.data());
    }

    static void drawTriangles(std::vector<Input> const& vertices) {
        glBegin(GL_TRIANGLES);
        for (Input const& vertex : vertices) {
            glNormal3dv(vertex.normal.data());
            glTexCoord2dv(vertex.coordinate.data());
            glVertex3dv(vertex.position.data());
        }
        glEnd();
    }

    /// One pass; without blending, so that the framebuffer has the fragment stage's own colors.
    static void draw(Base_shader& effect, std::vector<Input> const& vertices) {
        effect.preprocess();
        glDisable(GL_BLEND);
        drawTriangles(vertices);
        effect.postprocess();
        effect.cleanup();
    }

    /// Counts the pixels that differ from the reference by more than `near`, and requires enough drawn
    /// pixels.
    static int wrongPixels(std::vector<Fragment> const& expected, std::size_t const& least = 1500,
                           double const& near = NEAR) {
        EXPECT_GE(expected.size(), least);
        std::vector<float> pixels(4 * SIDE * SIDE);
        glReadPixels(0, 0, SIDE, SIDE, GL_RGBA, GL_FLOAT, pixels.data());
        int wrong = 0;
        for (Fragment const& fragment : expected) {
            float const* const pixel = pixels.data() + 4 * (fragment.y * SIDE + fragment.x);
            bool isRight = true;
            for (std::size_t c = 0; c < 4; ++c) {
                isRight = isRight &&
                          std::abs(pixel[c] - fragment.color[c]) <= near * (1 + std::abs(fragment.color[c]));
            }
            if (!isRight && ++wrong <= 3) {
                ADD_FAILURE() << "pixel " << fragment.x << ' ' << fragment.y << ": " << pixel[0] << ' '
                              << pixel[1] << ' ' << pixel[2] << ' ' << pixel[3] << ", expected "
                              << fragment.color[0] << ' ' << fragment.color[1] << ' ' << fragment.color[2]
                              << ' ' << fragment.color[3];
            }
        }
        return wrong;
    }

    void setUp(Displacement_shader& effect, Displacement const& values) const {
        effect.setDisplacementTexture(imageOf(scene.map));
        effect.setBaseColor(static_cast<float>(values.baseColor[0]), static_cast<float>(values.baseColor[1]),
                            static_cast<float>(values.baseColor[2]), 0.5F);
        effect.setScale(static_cast<float>(values.scale[0]), static_cast<float>(values.scale[1]),
                        static_cast<float>(values.scale[2]));
        effect.setTileScale(static_cast<float>(values.tiles[0]), static_cast<float>(values.tiles[1]));
    }

    std::vector<Fragment> plainPicture(Displacement const& values, int const& lights) const {
        std::vector<Vertex> vertices;
        for (Input const& input : square()) {
            vertices.push_back(plainVertex(scene, values, input));
        }
        return rasterize(vertices, SIDE, SIDE,
                         [&](Vertex const& at) { return displacementPixel(scene, values, at, lights, 1); });
    }

    std::vector<Vertex> tessellated(Displacement const& values, int const& depth,
                                    std::vector<Input> const& inputs) const {
        std::vector<Vertex> all;
        for (std::size_t i = 0; i < inputs.size(); i += 3) {
            std::vector<Vertex> const some =
                triangles(tessellate(scene, values, depth, {inputs[i], inputs[i + 1], inputs[i + 2]}));
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }

    Core_RL_GL layer;
    Scene scene;
    GLuint colorTexture = 0;
    GLuint framebuffer = 0;
};

constexpr Displacement WAVY{{0.8, 0.9, 0.6}, {6, 9, 5}, {1.5, 2}};

// == The plain path ==

TEST_F(Displacement_drawn_test, plainPathIsFormulaFromBothSidesWithOneLightAndTwo) {
    for (double const elevation : {50.0, 15.0, -40.0}) {
        for (int const lights : {1, 2}) {
            SCOPED_TRACE(testing::Message() << "elevation " << elevation << ", lights " << lights);
            drawIntoFloats();
            lookAt(elevation);
            Displacement_shader effect;
            setUp(effect, WAVY);
            effect.setNLights(static_cast<unsigned int>(lights));
            draw(effect, square());
            EXPECT_EQ(wrongPixels(plainPicture(WAVY, lights)), 0) << effect.getLog();
        }
    }
}

TEST_F(Displacement_drawn_test, normalsFollowModelThatIsScaled) {
    drawIntoFloats();
    lookAt(50, 0.8);
    Displacement_shader effect;
    setUp(effect, WAVY);
    draw(effect, square());
    EXPECT_EQ(wrongPixels(plainPicture(WAVY, 1), 1000), 0) << "not normalized again behind the normal matrix";
}

TEST_F(Displacement_drawn_test, alphaIsSumOfOneForEachLight) {
    for (int const lights : {0, 1, 2, 3}) {
        drawIntoFloats();
        lookAt(50);
        Displacement_shader effect;
        setUp(effect, WAVY);
        effect.setNLights(static_cast<unsigned int>(lights));
        draw(effect, square());
        std::array<float, 4> pixel{};
        glReadPixels(SIDE / 2, SIDE / 2, 1, 1, GL_RGBA, GL_FLOAT, pixel.data());
        EXPECT_EQ(pixel[3], lights > 1 ? 2 : 1) << lights << " lights";
    }
}

TEST_F(Displacement_drawn_test, halfGrayLeavesVerticesInPlaceWithHalfAlpha) {
    for (float const alpha : {0.5F, 1.0F}) {
        drawIntoFloats();
        lookAt(50);
        scene.map = uniformMap({0.5F, 0.5F, 0.5F, alpha});
        Displacement_shader effect;
        setUp(effect, WAVY);
        draw(effect, square());
        std::vector<Vertex> vertices;
        for (Input const& input : square()) {
            // Deliberate (four-component-displacement): alpha moves w; with 1 all points come nearer to the
            // origin by one part in a hundred.
            vertices.push_back(placed(
                scene, {input.position[0], input.position[1], input.position[2], alpha == 0.5F ? 1 : 1.01},
                tiled(WAVY, input.coordinate)));
        }
        EXPECT_EQ(wrongPixels(
                      rasterize(vertices, SIDE, SIDE,
                                [&](Vertex const& at) { return displacementPixel(scene, WAVY, at, 1, 1); })),
                  0)
            << alpha;
    }
}

TEST_F(Displacement_drawn_test, lightInfinitelyFarAwayShinesFromItsPosition) {
    drawIntoFloats();
    lookAt(50);
    glPushMatrix();
    glLoadIdentity();
    Light light = scene.lights[0];
    light.position[3] = 0;
    setLight(0, light);
    glPopMatrix();
    Displacement_shader effect;
    setUp(effect, WAVY);
    draw(effect, square());
    EXPECT_EQ(wrongPixels(plainPicture(WAVY, 1)), 0)
        << "three components for the direction, four for the distance";
}

// == The tessellated path ==

TEST_F(Displacement_drawn_test, tessellatedPathIsFormulaAtEveryDepth) {
    for (int const depth : {-3, 0, 1, 2, 3, 4, 5}) {
        SCOPED_TRACE(testing::Message() << "depth " << depth);
        drawIntoFloats();
        lookAt(50);
        Displacement_shader effect;
        effect.setDepth(depth);
        effect.tesselate(true);
        effect.setNLights(2);  // Deliberate (tessellated-single-light): ignored by this path
        setUp(effect, WAVY);
        draw(effect, square());
        ASSERT_TRUE(effect.isTesselated());
        EXPECT_EQ(
            wrongPixels(rasterize(tessellated(WAVY, depth, square()), SIDE, SIDE,
                                  [&](Vertex const& at) { return displacementPixel(scene, WAVY, at, 1, 2); }),
                        700),
            0)
            << effect.getLog();
    }
}

TEST_F(Displacement_drawn_test, tessellationEmitsTrianglesOfTextInItsOrder) {
    GLint vertices = 0;
    GLint components = 0;
    glGetIntegerv(GL_MAX_GEOMETRY_OUTPUT_VERTICES, &vertices);
    glGetIntegerv(GL_MAX_GEOMETRY_TOTAL_OUTPUT_COMPONENTS, &components);
    int const most = std::min(vertices, components / 15);
    int greatest = 1;
    while (2 * (greatest + 1) * (greatest + 1) + greatest + 1 <= most) {
        ++greatest;
    }
    lookAt(50);
    Displacement_shader effect;
    setUp(effect, WAVY);
    effect.tesselate(true);
    effect.enable(true);
    GLint program = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    char const* const captured = "gl_Position";
    glTransformFeedbackVaryings(static_cast<GLuint>(program), 1, &captured, GL_INTERLEAVED_ATTRIBS);
    glLinkProgram(static_cast<GLuint>(program));

    std::vector<Input> const triangle{{{-0.9, 0.1, -0.5}, {0, 1, 0}, {0.1, 0}},
                                      {{0.2, 0, 0.9}, {0, 1, 0}, {0.3, 0.9}},
                                      {{0.8, -0.2, -0.4}, {0, 1, 0}, {1, 0.2}}};
    for (int const depth : {INT_MIN, 0, 1, 2, 3, 4, 5, greatest, greatest + 1, 100, INT_MAX}) {
        int const drawn = depth > greatest ? greatest : depth;
        std::vector<Vertex> const expected = tessellated(WAVY, drawn, triangle);
        EXPECT_EQ(expected.size(), 3U * static_cast<unsigned int>(std::max(drawn, 1) * std::max(drawn, 1)));

        std::vector<std::array<float, 4>> emitted(expected.size() + 30);
        GLuint buffer = 0;
        GLuint query = 0;
        glGenBuffers(1, &buffer);
        glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, buffer);
        glBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, static_cast<GLsizeiptr>(16 * emitted.size()), nullptr,
                     GL_STATIC_READ);
        effect.setDepth(depth);
        effect.markDirty();
        effect.preprocess();
        glGenQueries(1, &query);
        glBeginQuery(GL_PRIMITIVES_GENERATED, query);
        glBeginTransformFeedback(GL_TRIANGLES);
        drawTriangles(triangle);
        glEndTransformFeedback();
        glEndQuery(GL_PRIMITIVES_GENERATED);
        effect.postprocess();
        effect.cleanup();
        GLuint count = 0;
        glGetQueryObjectuiv(query, GL_QUERY_RESULT, &count);
        EXPECT_EQ(count, expected.size() / 3) << "depth " << depth;
        glGetBufferSubData(GL_TRANSFORM_FEEDBACK_BUFFER, 0, static_cast<GLsizeiptr>(16 * emitted.size()),
                           emitted.data());
        for (std::size_t t = 0; t < expected.size(); t += 3) {
            // The driver may begin each triangle of a strip with any of its corners.
            double best = 1e9;
            for (std::size_t turn = 0; turn < 3; ++turn) {
                double farthest = 0;
                for (std::size_t k = 0; k < 3; ++k) {
                    for (std::size_t c = 0; c < 4; ++c) {
                        farthest = std::max(farthest, std::abs(expected[t + k].clip[c] -
                                                               double(emitted[t + (k + turn) % 3][c])));
                    }
                }
                best = std::min(best, farthest);
            }
            ASSERT_LT(best, 1e-4) << "depth " << depth << ", triangle " << t / 3;
        }
        glDeleteQueries(1, &query);
        glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, 0);
        glDeleteBuffers(1, &buffer);
    }
}

TEST_F(Displacement_drawn_test, everyPathLinksWithoutLog) {
    Displacement_shader plain;
    Displacement_shader tesselated;
    tesselated.tesselate(true);
    Displacement_XZ_shader ocean;
    for (Base_shader* const effect : std::initializer_list<Base_shader*>{&plain, &tesselated, &ocean}) {
        for (int times = 0; times < 2; ++times) {
            effect->create();
            GLint program = 0;
            glGetIntegerv(GL_CURRENT_PROGRAM, &program);
            GLint linked = GL_FALSE;
            GLint stages = 0;
            glGetProgramiv(static_cast<GLuint>(program), GL_LINK_STATUS, &linked);
            glGetProgramiv(static_cast<GLuint>(program), GL_ATTACHED_SHADERS, &stages);
            EXPECT_EQ(linked, GL_TRUE) << effect->getLog();
            EXPECT_EQ(stages, effect == &tesselated ? 3 : 2) << "created twice";
            EXPECT_EQ(effect->getLog(), "");
        }
        effect->enable(false);
    }
}

TEST_F(Displacement_drawn_test, pathsCanBeChangedBackAndForth) {
    drawIntoFloats();
    lookAt(50);
    Displacement_shader effect;
    setUp(effect, WAVY);
    for (bool const isTesselated : {false, true, false, true}) {
        effect.tesselate(isTesselated);
        glClear(GL_COLOR_BUFFER_BIT);
        draw(effect, square());
        if (isTesselated) {
            EXPECT_EQ(wrongPixels(rasterize(
                          tessellated(WAVY, 2, square()), SIDE, SIDE,
                          [&](Vertex const& at) { return displacementPixel(scene, WAVY, at, 1, 2); })),
                      0);
        } else {
            EXPECT_EQ(wrongPixels(plainPicture(WAVY, 1)), 0);
        }
    }
}

// == The ocean ==

class Ocean_drawn_test : public Displacement_drawn_test {
protected:
    void setUp(Displacement_XZ_shader& effect) const {
        effect.setDisplacementTexture(imageOf(scene.map));
        effect.setBaseColor(static_cast<float>(values.baseColor[0]), static_cast<float>(values.baseColor[1]),
                            static_cast<float>(values.baseColor[2]), 1);
        effect.setScale(static_cast<float>(values.scale));
        effect.setRepeat_U(static_cast<float>(values.repeat[0]));
        effect.setRepeat_V(static_cast<float>(values.repeat[1]));
        effect.setDim_X(static_cast<float>(values.dimX));
        effect.setDim_Z(static_cast<float>(values.dimZ));
        effect.setResolution(values.resolution);
        effect.setFoamThreshold(static_cast<float>(values.foamThreshold));
    }

    /// Draws the square and compares it with the reference.
    struct Seen {
        double leastFresnel = 1;
        double greatestFresnel = 0;
        double greatestFoam = 0;
        int highlights = 0;
        int withoutHighlight = 0;
    };
    Seen expectTheFormula(Vec3 const& normal = {0, 1, 0}, std::size_t const& least = 1000) {
        drawIntoFloats();
        Displacement_XZ_shader effect;
        setUp(effect);
        draw(effect, square(normal));
        std::vector<Vertex> vertices;
        for (Input const& input : square(normal)) {
            vertices.push_back(oceanVertex(scene, values, input));
        }
        Seen seen;
        EXPECT_EQ(wrongPixels(rasterize(vertices, SIDE, SIDE,
                                        [&](Vertex const& at) {
                                            OceanTerms terms;
                                            Vec4 const color = oceanPixel(scene, values, at, terms);
                                            seen.leastFresnel = std::min(seen.leastFresnel, terms.fresnel);
                                            seen.greatestFresnel =
                                                std::max(seen.greatestFresnel, terms.fresnel);
                                            seen.greatestFoam = std::max(seen.greatestFoam, terms.foam);
                                            (terms.hasHighlight ? seen.highlights : seen.withoutHighlight) +=
                                                1;
                                            return color;
                                        }),
                              least, 5e-4),
                  0)
            << effect.getLog();
        return seen;
    }

    Ocean values{{0.2, 0.5, 0.6}, 0.3, {1, 2}, 8, 6, 64, 0.4};
};

TEST_F(Ocean_drawn_test, oceanIsFormulaFromBothSides) {
    for (double const elevation : {60.0, 25.0, -50.0}) {
        SCOPED_TRACE(elevation);
        lookAt(elevation);
        expectTheFormula();
    }
}

TEST_F(Ocean_drawn_test, highlightsNeedLightAndEyeOnFrontSide) {
    lookAt(60);
    EXPECT_GT(expectTheFormula().highlights, 500);
    lookAt(-50);
    EXPECT_GT(expectTheFormula().withoutHighlight, 500) << "from below";
    // The light below the surface and the eye above it, or both below. Without shininess any highlight is a
    // whole one.
    for (double const elevation : {60.0, -50.0}) {
        SCOPED_TRACE(elevation);
        lookAt(elevation);
        Light light = scene.lights[0];
        light.position = {0, -6, elevation > 0 ? -4.0 : 1.0, 1};
        glPushMatrix();
        glLoadIdentity();
        setLight(0, light);
        glPopMatrix();
        scene.front.shininess = 0;
        setMaterial(GL_FRONT, scene.front);
        EXPECT_GT(expectTheFormula().withoutHighlight, 500);
    }
}

TEST_F(Ocean_drawn_test, skyAndDepthAreMixedWithinTheirLimits) {
    scene.map = uniformMap({0.5F, 0.5F, 0.5F, 0});
    lookAt(90);
    EXPECT_EQ(expectTheFormula().greatestFresnel, 0.9) << "from straight above";
    // At a grazing angle: a normal map so steep that the surface is seen edge-on somewhere.
    scene.map = waves(32, 16);
    values.dimX = 0.4;
    values.dimZ = 0.4;
    values.scale = 0.3;
    lookAt(30);
    EXPECT_EQ(expectTheFormula().leastFresnel, 0.01);
}

TEST_F(Ocean_drawn_test, foamFollowsItsThreshold) {
    lookAt(60);
    struct Case {
        double threshold;
        float alpha;
        double foam;
    };
    for (Case const& c : {Case{0, 0, 0}, Case{0, 0.999F, 0}, Case{0, 1, 1},  // none but at exactly 1
                          Case{0.5, 0.25F, 0}, Case{0.5, 0.5F, 0}, Case{0.5, 0.75F, 0.25}, Case{0.5, 1, 1},
                          Case{1, 0, 0}, Case{1, 0.5F, 0.25}, Case{1, 1, 1},  // the square of alpha
                          Case{1, 2, 4}, Case{2, 0, 0.25}}) {                 // beyond the ranges
        SCOPED_TRACE(testing::Message() << "threshold " << c.threshold << ", alpha " << c.alpha);
        scene.map = uniformMap({0.5F, 0.6F, 0.5F, c.alpha});
        values.foamThreshold = c.threshold;
        EXPECT_NEAR(expectTheFormula().greatestFoam, c.foam, 1e-6);
    }
}

TEST_F(Ocean_drawn_test, zeroThresholdAboveFullAlphaFollowsDriver) {
    lookAt(60);
    scene.map = uniformMap({0.5F, 0.6F, 0.5F, 1.5F});
    values.foamThreshold = 0;
    drawIntoFloats();
    Displacement_XZ_shader effect;
    setUp(effect);
    draw(effect, square());
    std::array<float, 4> pixel{};
    glReadPixels(SIDE / 2, SIDE / 2, 1, 1, GL_RGBA, GL_FLOAT, pixel.data());
    EXPECT_TRUE(std::isinf(pixel[0])) << "0.5 / 0: only 0 / 0 is replaced";
}

TEST_F(Ocean_drawn_test, framesAreBuiltForNormalsAlongAxesOnly) {
    lookAt(60);
    for (Vec3 const& normal : {Vec3{0, -1, 0}, Vec3{1, 0, 0}, Vec3{-1, 0, 0}, Vec3{0, 0, 1}, Vec3{0, 0, -1},
                               Vec3{0.6, 0.8, 0}, Vec3{0, 0.6, 0.8}, Vec3{0.5, 0.5, 0.5}, Vec3{0, 2, 0}}) {
        SCOPED_TRACE(testing::PrintToString(normal));
        expectTheFormula(normal, 300);
    }
}

// == State ==

TEST_F(Displacement_drawn_test, passChangesNoOtherStateThanItSays) {
    Displacement_shader plain;
    Displacement_shader tesselated;
    tesselated.tesselate(true);
    Displacement_XZ_shader ocean;
    VL_Image const image = imageOf(scene.map);
    plain.setDisplacementTexture(image);
    tesselated.setDisplacementTexture(image);
    ocean.setDisplacementTexture(image);
    plain.setNLights(2);

    std::vector<float> const positions{-1, 0, -1, 1, 0, -1, 0, 0, 1};
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, positions.data());

    // Mesa does not bring single lights back with the group that has them.
    glDisable(GL_LIGHT0);
    glPushAttrib(GL_ENABLE_BIT);
    glEnable(GL_LIGHT0);
    glPopAttrib();
    bool const driverKeepsLights = glIsEnabled(GL_LIGHT0) == GL_FALSE;

    for (Base_shader* const effect : std::initializer_list<Base_shader*>{&plain, &tesselated, &ocean}) {
        for (bool const isDirty : {true, false}) {
            if (!isDirty) {
                effect->preprocess();
                effect->postprocess();
                effect->cleanup();
            }
            lookAt(40);
            GLuint textures[2] = {};
            glGenTextures(2, textures);
            for (GLuint unit = 0; unit < 2; ++unit) {
                glActiveTexture(GL_TEXTURE0 + unit);
                glBindTexture(GL_TEXTURE_2D, textures[unit]);
                glEnable(GL_TEXTURE_2D);
            }
            glActiveTexture(GL_TEXTURE0);
            glEnable(GL_TEXTURE_3D);
            glColor4f(0.25F, 0.5F, 0.75F, 0.5F);
            glDisable(GL_BLEND);
            glBlendFunc(GL_ONE, GL_DST_COLOR);
            glDisable(GL_LIGHTING);
            glDisable(GL_LIGHT0);
            glDisable(GL_LIGHT1);

            AttributeState const before;
            effect->preprocess();
            glDrawArrays(GL_TRIANGLES, 0, 3);
            effect->postprocess();
            effect->cleanup();
            AttributeState const after;

            std::vector<std::string> expected{"GL_ACTIVE_TEXTURE", "GL_CURRENT_COLOR",
                                              "GL_TEXTURE1 GL_TEXTURE_BINDING_2D"};
            if (effect != &ocean) {
                expected.emplace_back("GL_TEXTURE0 GL_TEXTURE_BINDING_2D");
            }
            if (!driverKeepsLights) {
                expected.emplace_back("GL_LIGHT0");
                if (effect != &tesselated) {
                    expected.emplace_back("GL_LIGHT1");
                }
            }
            EXPECT_THAT(before.namesThatDiffer(after), testing::UnorderedElementsAreArray(expected))
                << before.differences(after);
            glActiveTexture(GL_TEXTURE0);
            glDeleteTextures(2, textures);
        }
    }
    glDisableClientState(GL_VERTEX_ARRAY);
}

// == Bad input ==

TEST_F(Displacement_drawn_test, nanAndInfinityRaiseNoError) {
    lookAt(50);
    for (bool const isTesselated : {false, true}) {
        Displacement_shader effect;
        effect.setDisplacementTexture(imageOf(waves(8, 8)));
        effect.tesselate(isTesselated);
        effect.setBaseColor(NOT_A_NUMBER, NOT_A_NUMBER, NOT_A_NUMBER, NOT_A_NUMBER);
        effect.setScale(NOT_A_NUMBER, 1, 1);
        effect.setTileScale(NOT_A_NUMBER, std::numeric_limits<float>::infinity());
        effect.setDepth(INT_MAX);
        effect.setNLights(8);
        draw(effect, square());
        effect.setScale(1, 1, 1);
        effect.setTileScale(1e30F, 1);
        draw(effect, square());
    }
    Displacement_XZ_shader ocean;
    ocean.setDisplacementTexture(imageOf(waves(8, 8)));
    ocean.setScale(NOT_A_NUMBER);
    ocean.setDim_X(NOT_A_NUMBER);
    ocean.setDim_Z(0);
    ocean.setResolution(0);
    ocean.setRepeat_U(NOT_A_NUMBER);
    ocean.setFoamThreshold(NOT_A_NUMBER);
    ocean.setLightPosition(NOT_A_NUMBER, 0, 0, 0);
    draw(ocean, square());
    ocean.setResolution(INT_MIN);
    draw(ocean, square());
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

TEST_F(Displacement_drawn_test, imagesOfEveryKindAreTaken) {
    lookAt(50);
    Displacement_shader effect;
    Displacement_XZ_shader ocean;
    for (unsigned int const bits : {8U, 16U, 32U}) {
        for (unsigned int const channels : {1U, 2U, 3U, 4U}) {
            for (auto const& [width, height] : {std::pair{1U, 1U}, std::pair{3U, 5U}, std::pair{64U, 1U}}) {
                VL_Image image;
                ASSERT_TRUE(image.create(width, height, channels, bits));
                effect.setDisplacementTexture(image);
                effect.setNormalsTexture(image);
                ocean.setDisplacementTexture(image);
                draw(effect, square());
                draw(ocean, square());
            }
        }
    }
    effect.setDisplacementTexture(VL_Image());
    effect.setNormalsTexture(VL_Image());
    ocean.setDisplacementTexture(VL_Image());
    effect.setDisplacementTexture("/dev/null");
    effect.setNormalsTexture("");
    draw(effect, square());
    draw(ocean, square());
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

TEST_F(Displacement_drawn_test, effectsWithoutTextureDraw) {
    lookAt(50);
    Displacement_shader plain;
    Displacement_shader tesselated;
    tesselated.tesselate(true);
    Displacement_XZ_shader ocean;
    for (Base_shader* const effect : std::initializer_list<Base_shader*>{&plain, &tesselated, &ocean}) {
        draw(*effect, square());
        Displacement_shader copied(plain);
        draw(copied, square());
    }
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

}  // namespace
}  // namespace vellum
