#include "glsl_shader/ArrowRendering_shader.h"
#include "glsl_shader/PointRendering_shader.h"
#include "glsl_shader/SphereRendering_shader.h"

#include "Core_RL_GL.h"
#include "Program_gl.h"
#include "Shader_gl.h"
#include "tests/gl_spy/GlTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using Type = Base_shader::ProcessType;
using Color = std::array<float, 3>;

constexpr int STEPS = 1;  // of 255, for the rounding of the frame buffer

/// The result of the vertex shaders for a particle with this vector.
struct Ramp {
    Color minColor{0.1F, 0.2F, 0.9F};
    Color maxColor{0.9F, 0.4F, 0.1F};
    Color clampColor{0, 1, 0};
    float minMagnitude = 1;
    float maxMagnitude = 3;
    float scale = 2;

    Color color(unsigned int const& type, Color const& v, bool const& isArrow) const {
        if (type == 4 || (isArrow && type > 4)) {
            return maxColor;
        }
        Color const chosen = type == 1   ? Color{v[0], v[0], v[0]}
                             : type == 2 ? Color{v[1], v[1], v[1]}
                             : type == 3 ? Color{v[2], v[2], v[2]}
                                         : v;
        float const speed =
            std::sqrt(chosen[0] * chosen[0] + chosen[1] * chosen[1] + chosen[2] * chosen[2]) / scale;
        Color result = minColor;
        float const divisor = maxMagnitude - minMagnitude;
        if (std::abs(divisor) > 1e-14) {
            float const rate = (speed - minMagnitude) / divisor;
            bool const clamps = isArrow ? !(rate < 1) : rate > 1;
            for (int c = 0; c < 3; ++c) {
                result[c] = clamps ? clampColor[c] : minColor[c] * (1 - rate) + maxColor[c] * rate;
            }
        }
        for (float& component : result) {
            component = std::min(std::max(component, 0.0F), 1.0F);
        }
        return result;
    }
};

class Impostors_drawn_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        glViewport(0, 0, width, height);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    }

    template <class Effect>
    void prepare(Effect& effect, float const& size) const {
        effect.setMinColor({ramp.minColor[0], ramp.minColor[1], ramp.minColor[2], 1});
        effect.setMaxColor({ramp.maxColor[0], ramp.maxColor[1], ramp.maxColor[2], 1});
        effect.setMaxClampColor({ramp.clampColor[0], ramp.clampColor[1], ramp.clampColor[2], 1});
        effect.setMinMagnitude(ramp.minMagnitude);
        effect.setMaxMagnitude(ramp.maxMagnitude);
        effect.setMagnitudeScale(ramp.scale);
        effect.setSize(size);
    }

    /// Draws one particle with an effect.
    static void draw(Base_shader& effect, Color const& position, Color const& vector) {
        effect.preprocess();
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_COLOR_ARRAY);
        glVertexPointer(3, GL_FLOAT, 0, position.data());
        glColorPointer(3, GL_FLOAT, 0, vector.data());
        glDrawArrays(GL_POINTS, 0, 1);
        glDisableClientState(GL_VERTEX_ARRAY);
        glDisableClientState(GL_COLOR_ARRAY);
        effect.postprocess();
        effect.cleanup();
    }

    static bool isNear(Pixel const& pixel, Color const& color, float const& factor = 1) {
        for (int c = 0; c < 3; ++c) {
            if (std::abs(pixel[c] - 255 * color[c] * factor) > STEPS + 0.5F) {
                return false;
            }
        }
        return true;
    }

    Core_RL_GL layer;
    Ramp ramp;
};

const std::vector<Color> VECTORS{{3, -1, 2},   {-5, 0.5F, 0}, {0, 0, 0},     {0.7F, 0.7F, 0.7F},
                                 {6, 0, 0},    {0, -6, 0},    {0, 0, 6},     {100, 100, 100},
                                 {0, 3.4F, 2}, {-2, -2, -2},  {1.5F, -8, 1}, {2, 2.5F, -3.5F}};

// == Colors ==

TEST_F(Impostors_drawn_test, pointsHaveColorOfFormula) {
    glPointSize(9);
    for (unsigned int type = 0; type <= 7; ++type) {
        PointRendering_shader effect((Type(type)));
        prepare(effect, 1);
        for (Color const& vector : VECTORS) {
            glClear(GL_COLOR_BUFFER_BIT);
            draw(effect, {0, 0, 0}, vector);
            ASSERT_TRUE(isNear(readPixel(128, 128), ramp.color(type, vector, false)))
                << "type " << type << ", vector " << testing::PrintToString(vector) << ", pixel "
                << testing::PrintToString(readPixel(128, 128)) << effect.getLog();
        }
    }
}

TEST_F(Impostors_drawn_test, spheresHaveColorOfFormulaUnderFixedLight) {
    for (unsigned int type = 0; type <= 7; ++type) {
        SphereRendering_shader effect((Type(type)));
        prepare(effect, 1);
        for (Color const& vector : VECTORS) {
            glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
            draw(effect, {0, 0, 0}, vector);
            // At the center the normal points at the viewer: its product with the light (1, 1/2, 1/2) is 0.5
            // / 1.2247.
            float const diffuse = 0.5F * 0.5F / std::sqrt(1.5F) + 0.5F;
            ASSERT_TRUE(isNear(readPixel(128, 128), ramp.color(type, vector, false), diffuse))
                << "type " << type << ", vector " << testing::PrintToString(vector) << effect.getLog();
        }
    }
}

TEST_F(Impostors_drawn_test, arrowsHaveColorOfTheirFormula) {
    for (unsigned int type = 0; type <= 7; ++type) {
        ArrowRendering_shader effect((Type(type)));
        prepare(effect, 0.1F);
        for (Color const& vector : {Color{6, 0, 0}, Color{3, 0, 2}, Color{5, 0, -1}, Color{2.5F, 0, 0}}) {
            glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
            draw(effect, {0, 0, 0}, vector);
            ASSERT_TRUE(isNear(readPixel(132, 127), ramp.color(type, vector, true)) ||
                        isNear(readPixel(132, 128), ramp.color(type, vector, true)))
                << "type " << type << ", vector " << testing::PrintToString(vector) << effect.getLog();
        }
    }
}

TEST_F(Impostors_drawn_test, fullRateIsMaximumForPointsAndClampColorForArrows) {
    // Numbers without rounding: speed 4 / 2, range 1 to 2.
    ramp.maxMagnitude = 2;
    glPointSize(5);
    PointRendering_shader point((Type(0)));
    prepare(point, 1);
    draw(point, {0, 0, 0}, {4, 0, 0});
    EXPECT_TRUE(isNear(readPixel(128, 128), ramp.maxColor));

    glClear(GL_COLOR_BUFFER_BIT);
    ArrowRendering_shader arrow((Type(0)));
    prepare(arrow, 0.1F);
    draw(arrow, {0, 0, 0}, {4, 0, 0});
    EXPECT_TRUE(isNear(readPixel(132, 127), ramp.clampColor) || isNear(readPixel(132, 128), ramp.clampColor));
}

TEST_F(Impostors_drawn_test, rangeWithoutExtentGivesMinimumColor) {
    ramp.maxMagnitude = ramp.minMagnitude;
    glPointSize(5);
    PointRendering_shader effect((Type(0)));
    prepare(effect, 1);
    draw(effect, {0, 0, 0}, {100, 0, 0});
    EXPECT_TRUE(isNear(readPixel(128, 128), ramp.minColor));
}

// == Shapes ==

TEST_F(Impostors_drawn_test, sphereIsDiscWithHalfLambertShading) {
    SphereRendering_shader effect((Type(4)));
    prepare(effect, 1.5F);  // 0.75 to either side of the middle: 96 pixels
    draw(effect, {0, 0, 0}, {0, 0, 0});
    std::vector<unsigned char> const picture = readPixels();
    int wrong = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            float const u = (static_cast<float>(x) + 0.5F - 128) / 96;
            float const v = (128 - static_cast<float>(y) - 0.5F) / 96;
            float const zz = 1 - u * u - v * v;
            Pixel pixel;
            std::copy_n(picture.begin() + 4 * (y * width + x), 4, pixel.begin());
            if (std::abs(zz) < 1e-3F) {
                continue;  // the very edge belongs to either side
            }
            if (zz < 0) {
                wrong += pixel == Pixel{0, 0, 0, 0} ? 0 : 1;
                continue;
            }
            float const towardLight = (u + 0.5F * v + 0.5F * std::sqrt(zz)) / std::sqrt(1.5F);
            float const diffuse = std::max(towardLight, 0.0F) * 0.5F + 0.5F;
            wrong += isNear(pixel, ramp.maxColor, diffuse) && pixel[3] == 255 ? 0 : 1;
        }
    }
    EXPECT_EQ(wrong, 0) << savePicture("sphere_impostor");
}

TEST_F(Impostors_drawn_test, sphereIsNearerInItsMiddle) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(60, 1, 1, 10);
    glMatrixMode(GL_MODELVIEW);
    glEnable(GL_DEPTH_TEST);
    SphereRendering_shader effect((Type(4)));
    float const radius = 1.2F;
    prepare(effect, radius);
    draw(effect, {0, 0, -4}, {0, 0, 0});

    float projection[16];
    glGetFloatv(GL_PROJECTION_MATRIX, projection);
    // The matrices are handed to the geometry stage as one product; the depth moves by the surface's height.
    for (int const dx : {0, 10, -15}) {
        float const halfPixels = radius / 2 / 4 * 128;  // clip units over w = 4
        float const u = (static_cast<float>(dx) + 0.5F) / halfPixels;
        float const v = -0.5F / halfPixels;
        float const z = -4 + std::sqrt(1 - u * u - v * v) * radius;
        float const depth = ((projection[10] * z + projection[14]) / -z + 1) / 2;
        float read = 0;
        glReadPixels(128 + dx, 127, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &read);
        EXPECT_NEAR(read, depth, 1e-4) << dx;
    }
    float corner = 0;
    glReadPixels(128 + 18, 128 + 18, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &corner);
    EXPECT_EQ(corner, 1) << "the corners of the square are left out";
}

/// Spheres whose depth is computed through eye space: the center is projected back, moved, and projected
/// again.
class SpheresThroughEyeSpace : public SphereRendering_shader {
public:
    using SphereRendering_shader::SphereRendering_shader;

    void create() override {
        SphereRendering_shader::create();
        delete stage2;
        stage2 = new Shader_gl;
        stage2->loadShaderSource(GL_FRAGMENT_SHADER, R"(varying vec2 TexCoord;
varying vec3 vertex_light_position;
varying float radius;
varying vec4 eye_position;

void main()
{
    float zz = 1.0 - TexCoord.x * TexCoord.x - TexCoord.y * TexCoord.y;
    if (zz <= 0.0) {
        discard;
    }
    float z = sqrt(zz);
    float diffuse = max(dot(vec3(TexCoord, z), vertex_light_position), 0.0) * 0.5 + 0.5;
    vec4 pos = gl_ProjectionMatrixInverse * eye_position;
    pos.z += z * radius;
    pos = gl_ProjectionMatrix * pos;
    gl_FragDepth = (pos.z / pos.w + 1.0) / 2.0;
    gl_FragColor = vec4(gl_Color.rgb * diffuse, 1.0);
}
)",
                                 false);
        program->attach(nullptr, stage2, nullptr);
        enable(true);
        log = program->getInfoLog();
    }
};

TEST_F(Impostors_drawn_test, depthOfSphereIsThatOfItsSurfaceInEverySortOfView) {
    constexpr float DEPTH_TOLERANCE = 1e-6F;
    std::size_t const pixelCount = std::size_t{width} * height;
    std::mt19937 random(4);
    auto const between = [&](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    glEnable(GL_DEPTH_TEST);
    SphereRendering_shader effect((Type(4)));
    SpheresThroughEyeSpace former((Type(4)));
    for (int view = 0; view < 12; ++view) {
        bool const isPerspective = view % 2 == 0;
        float const nearPlane = between(0.5F, 2);
        float const farPlane = nearPlane + between(4, 20);
        float const shift = between(-0.3F, 0.3F);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        if (isPerspective) {
            glFrustum(static_cast<double>(shift) - 0.5, static_cast<double>(shift) + 0.5, -0.4, 0.6,
                      static_cast<double>(nearPlane), static_cast<double>(farPlane));
        } else {
            glOrtho(static_cast<double>(shift) - 2, static_cast<double>(shift) + 2, -3, 2,
                    static_cast<double>(nearPlane), static_cast<double>(farPlane));
        }
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glRotatef(between(0, 360), between(0.1F, 1), between(-1, 1), between(-1, 1));
        float const z = -nearPlane - between(0.3F, 0.7F) * (farPlane - nearPlane);
        Color const center{between(-0.2F, 0.2F), between(-0.2F, 0.2F), 0};
        float matrix[16];
        glGetFloatv(GL_MODELVIEW_MATRIX, matrix);
        glLoadIdentity();
        glTranslatef(0, 0, z);
        glMultMatrixf(matrix);

        float const size = between(0.3F, 1.2F) * (isPerspective ? -z : 1);
        std::vector<unsigned char> colors[2];
        std::vector<float> depths[2];
        for (int side = 0; side < 2; ++side) {
            SphereRendering_shader& drawn = side == 0 ? effect : former;
            glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
            prepare(drawn, size);
            draw(drawn, center, {0, 0, 0});
            colors[side] = readPixels();
            depths[side].resize(pixelCount);
            glReadPixels(0, 0, width, height, GL_DEPTH_COMPONENT, GL_FLOAT, depths[side].data());
        }
        std::size_t covered = 0;
        float worstDepth = 0;
        int worstColor = 0;
        for (std::size_t k = 0; k < pixelCount; ++k) {
            covered += depths[1][k] < 1 ? 1 : 0;
            worstDepth = std::max(worstDepth, std::abs(depths[0][k] - depths[1][k]));
        }
        for (std::size_t k = 0; k < colors[0].size(); ++k) {
            worstColor = std::max(worstColor, std::abs(int{colors[0][k]} - int{colors[1][k]}));
        }
        EXPECT_GT(covered, 1000U) << "view " << view;
        EXPECT_LE(worstDepth, DEPTH_TOLERANCE) << "view " << view;
        EXPECT_LE(worstColor, STEPS) << "view " << view << ' ' << savePicture("sphere_depth");
    }
}

TEST_F(Impostors_drawn_test, arrowHasShaftAndHead) {
    ArrowRendering_shader effect((Type(4)));
    prepare(effect, 0.2F);
    draw(effect, {-0.5F, 0, 0}, {2, 0, 0});
    auto const isLit = [this](float const& x, float const& y) {
        int const column = static_cast<int>(128 + 128 * x);
        int const row = static_cast<int>(128 - 128 * y);
        for (int dy = -2; dy <= 2; ++dy) {
            for (int dx = -2; dx <= 2; ++dx) {
                if (readPixel(column + dx, row + dy)[0] > 100) {
                    return true;
                }
            }
        }
        return false;
    };
    float const p2 = 0.4F;
    float const cosine = std::cos(0.8F) * 2 * p2 / 3;
    float const sine = std::sin(0.8F) * 2 * p2 / 3;
    EXPECT_TRUE(isLit(-0.5F + p2 / 2, 0)) << "shaft " << savePicture("arrow_impostor");
    EXPECT_TRUE(isLit(-0.5F + cosine, sine)) << "p3";
    EXPECT_TRUE(isLit(-0.5F + cosine, -sine)) << "p5";
    EXPECT_TRUE(isLit(-0.5F + 2 * p2, 0)) << "p4";
    EXPECT_TRUE(isLit((-1 + cosine + 2 * p2) / 2, sine / 2)) << "from p3 to p4";
    EXPECT_FALSE(isLit(-0.5F + 1.5F * p2, 0)) << "no line from p2 to p4";
    EXPECT_FALSE(isLit(-0.5F - 0.1F, 0));
}

// == State ==

TEST_F(Impostors_drawn_test, passLeavesStateAsItWas) {
    PointRendering_shader effect((Type(0)));
    prepare(effect, 1);
    GLint depthBefore = -1;
    glGetIntegerv(GL_ATTRIB_STACK_DEPTH, &depthBefore);
    draw(effect, {0, 0, 0}, {1, 0, 0});
    GLint program = -1;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    EXPECT_EQ(program, 0);
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
    // GL_LIGHT0 is not checked: Mesa does not restore single lights, although they belong to the saved group.
    GLint depth = -1;
    glGetIntegerv(GL_ATTRIB_STACK_DEPTH, &depth);
    EXPECT_EQ(depth, depthBefore);
}

TEST_F(Impostors_drawn_test, changedParametersAreSeenInNextPass) {
    glPointSize(5);
    PointRendering_shader effect((Type(4)));
    prepare(effect, 1);
    draw(effect, {0, 0, 0}, {0, 0, 0});
    draw(effect, {0, 0, 0}, {0, 0, 0});
    EXPECT_TRUE(isNear(readPixel(128, 128), ramp.maxColor)) << "a pass that is not dirty";
    effect.setMaxColor({0, 0, 1, 1});
    draw(effect, {0, 0, 0}, {0, 0, 0});
    EXPECT_TRUE(isNear(readPixel(128, 128), {0, 0, 1}));
}

TEST_F(Impostors_drawn_test, everyVariantLinksWithoutLog) {
    for (unsigned int type = 0; type <= 5; ++type) {
        PointRendering_shader point((Type(type)));
        SphereRendering_shader sphere((Type(type)));
        ArrowRendering_shader arrow((Type(type)));
        for (Base_shader* const effect : std::initializer_list<Base_shader*>{&point, &sphere, &arrow}) {
            effect->create();
            GLint program = 0;
            glGetIntegerv(GL_CURRENT_PROGRAM, &program);
            GLint linked = GL_FALSE;
            glGetProgramiv(static_cast<GLuint>(program), GL_LINK_STATUS, &linked);
            EXPECT_EQ(linked, GL_TRUE) << effect->getLog();
            effect->enable(false);
        }
    }
}

TEST_F(Impostors_drawn_test, reloadedEffectsDrawSamePicture) {
    glPointSize(5);
    ArrowRendering_shader effect((Type(0)));
    prepare(effect, 0.1F);
    draw(effect, {0, 0, 0}, {6, 0, 0});
    std::vector<unsigned char> const before = readPixels();
    effect.reload();
    glClear(GL_COLOR_BUFFER_BIT);
    draw(effect, {0, 0, 0}, {6, 0, 0});
    EXPECT_EQ(readPixels(), before);
}

}  // namespace
}  // namespace vellum
