#include "glsl_shader/SSScattering_shader.h"

#include "Core_RL_GL.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/attribute_state.h"
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

constexpr float STEPS = 1.6F;  // of 255, for the rounding of the frame buffer and of pow

/// The varyings of the vertex shader, without those of the light.
struct Varyings {
    Vec3 normal;
    Vec3 position;
};

class SSScattering_shader_drawn_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        setLight(0, {12, 9, 10, 1}, {0.5F, 0.4F, 0.45F, 1}, {0.3F, 0.5F, 0.2F, 1});
        setLight(1, {-8, 6, -20, 1}, {0.2F, 0.3F, 0.6F, 1}, {0.9F, 0.1F, 0.4F, 1});
        glMaterialf(GL_FRONT, GL_SHININESS, 3);
        glViewport(0, 0, width, height);
        glMatrixMode(GL_PROJECTION);
        gluPerspective(50, 1, 0.5, 20);
        placeCorners();
        glPointSize(5);
    }

    static void setLight(int const& index, Vec4 const& position, Vec4 const& diffuse, Vec4 const& specular) {
        GLenum const light = GL_LIGHT0 + static_cast<GLenum>(index);
        glPushMatrix();
        glLoadIdentity();
        glLightfv(light, GL_POSITION, position.data());
        glPopMatrix();
        glLightfv(light, GL_DIFFUSE, diffuse.data());
        glLightfv(light, GL_SPECULAR, specular.data());
    }

    void prepare(SSScattering_shader& effect) const {
        effect.setBaseColor(base[0], base[1], base[2], base[3]);
        effect.setMaterialThickness(thickness);
        effect.setExtinctionCoefficient(extinction.x, extinction.y, extinction.z);
        effect.setRimScalar(rim);
        effect.setNLights(lights);
    }

    // == The formula ==

    static Varyings varyings(Corner const& corner) {
        Transform const transform;
        return {transform.normal(corner.normal), xyz(transform.clip(corner.position))};
    }

    static float attenuation(Light const& light, Varyings const& v) {
        return clamp(10 / length(xyz(light.position) - v.position), 0.1F, 4);
    }

    Vec3 scattered(Light const& light, Varyings const& v) const {
        auto const halfLambert = [](Vec3 const& a, Vec3 const& b) { return dot(a, b) * 0.5F + 0.5F; };
        float const arrives = attenuation(light, v);
        Vec3 const e = normalized(-v.position);
        Vec3 const l = normalized(xyz(light.position) - v.position);
        Vec3 const n = normalized(v.normal);
        Vec3 const specular = xyz(light.specular);

        Vec4 out{};
        for (std::size_t c = 0; c < 4; ++c) {
            out[c] = halfLambert(l, n) * arrives * base[c];
        }
        float const through = thickness * std::max(0.0F, dot(-n, l)) + thickness * halfLambert(-e, l);
        float const alpha = out[3] + 1;
        Vec3 color = xyz(out) + extinction * (through * arrives);

        float const turned = 1 - std::max(0.0F, dot(n, e));
        color = color + specular * (turned * turned * std::max(0.0F, dot(n, l)) * rim * arrives * alpha);

        // The value 0 limited to 1 from below first, then to the cosine from above.
        float const cosine = std::min(std::max(0.0F, 1.0F), dot(n, normalized(n + l)));
        float shininess = 0;
        glGetMaterialfv(GL_FRONT, GL_SHININESS, &shininess);
        color = color + specular * (std::pow(cosine, shininess) * arrives * alpha * 0.05F);
        return times(color, xyz(light.diffuse));
    }

    Vec3 color(Varyings const& v) const {
        Vec3 sum = scattered(Light(0), v);
        return lights > 1 ? sum + scattered(Light(1), v) : sum;
    }

    void checkPoint(SSScattering_shader& effect, Corner const& corner) {
        glClear(GL_COLOR_BUFFER_BIT);
        drawPoint(effect, corner);
        Vec4 const clip = Transform().clip(corner.position);
        Pixel const pixel = readPixel(static_cast<int>((clip[0] / clip[3] + 1) / 2 * width),
                                      static_cast<int>((1 - clip[1] / clip[3]) / 2 * height));
        Vec3 const wanted = color(varyings(corner));
        EXPECT_LE(distance(pixel, wanted), STEPS)
            << testing::PrintToString(pixel) << " for " << 255 * wanted.x << ", " << 255 * wanted.y << ", "
            << 255 * wanted.z << " " << effect.getLog();
        EXPECT_EQ(pixel[3], 255) << "opaque, however many lights";
    }

    Core_RL_GL layer;
    Vec4 base{0.7F, 0.5F, 0.4F, 0.6F};
    float thickness = 0.3F;
    Vec3 extinction{0.8F, 0.3F, 0.1F};
    float rim = 0.4F;
    unsigned int lights = 1;
};

// == The formula ==

TEST_F(SSScattering_shader_drawn_test, programLinksAndItsUniformsExist) {
    gl_spy::Recording recording;
    SSScattering_shader effect;
    effect.create();
    recording.clear();
    effect.preprocess();
    effect.cleanup();
    EXPECT_EQ(effect.getLog(), "");
    EXPECT_EQ(recording.count("glGetUniformLocation"), 9U);
    for (gl_spy::Call const& call : recording.named("glGetUniformLocation")) {
        std::string const name = call.strings.at(0);
        auto const program = static_cast<GLuint>(call.numbers.at(0));
        bool const isKnown =
            name.find("Frame") == std::string::npos && name.find("texture") == std::string::npos;
        EXPECT_EQ(glGetUniformLocation(program, name.c_str()) >= 0, isKnown) << name;
    }
}

TEST_F(SSScattering_shader_drawn_test, pointsHaveColorOfFormulaWithOneLight) {
    SSScattering_shader effect;
    prepare(effect);
    for (Corner const& corner : CORNERS) {
        checkPoint(effect, corner);
    }
}

TEST_F(SSScattering_shader_drawn_test, pointsHaveColorOfFormulaWithTwoLights) {
    SSScattering_shader effect;
    lights = 2;
    prepare(effect);
    for (Corner const& corner : CORNERS) {
        checkPoint(effect, corner);
    }
}

TEST_F(SSScattering_shader_drawn_test, thirdLightAddsNothing) {
    setLight(2, {0, 0, 5, 1}, {1, 1, 1, 1}, {1, 1, 1, 1});
    SSScattering_shader effect;
    lights = 3;
    prepare(effect);
    checkPoint(effect, CORNERS[1]);
}

TEST_F(SSScattering_shader_drawn_test, eachParameterChangesColorAsFormulaDoes) {
    SSScattering_shader effect;
    lights = 2;
    auto const check = [&] {
        prepare(effect);
        for (Corner const& corner : CORNERS) {
            checkPoint(effect, corner);
        }
    };
    thickness = 1.5F;
    check();
    thickness = 0;
    rim = 2;
    check();
    base = {0, 0.2F, 0, 0};
    check();
    glMaterialf(GL_FRONT, GL_SHININESS, 50);
    rim = 0;
    setLight(0, {12, 9, 10, 1}, {0.5F, 0.4F, 0.45F, 1}, {9, 9, 9, 1});
    check();
    lights = 1;
    check();
}

TEST_F(SSScattering_shader_drawn_test, wholeTriangleHasColorOfFormula) {
    std::array<Corner, 3> const corners{{{{-1.2F, -0.9F, 0.3F}, {-0.5F, -0.4F, 1}},
                                         {{1.1F, -0.7F, -0.4F}, {0.6F, -0.3F, -1}},
                                         {{0.1F, 1, 0.6F}, {0.1F, 0.7F, 1}}}};
    SSScattering_shader effect;
    lights = 2;
    prepare(effect);
    drawCorners(effect, GL_TRIANGLES, corners);
    std::array<Varyings, 3> ends{};
    std::array<Vec4, 3> clip{};
    for (std::size_t i = 0; i < 3; ++i) {
        ends[i] = varyings(corners[i]);
        clip[i] = Transform().clip(corners[i].position);
    }
    std::vector<unsigned char> const pixels = readPixels();
    int inside = 0;
    int wrong = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::array<float, 3> const share = shares(clip, (static_cast<float>(x) + 0.5F) / width * 2 - 1,
                                                      1 - (static_cast<float>(y) + 0.5F) / height * 2);
            if (share[0] == 0) {
                continue;
            }
            Varyings v{};
            for (std::size_t i = 0; i < 3; ++i) {
                v.normal = v.normal + ends[i].normal * share[i];
                v.position = v.position + ends[i].position * share[i];
            }
            ++inside;
            wrong += distance(&pixels[static_cast<std::size_t>(y * width + x) * 4], color(v)) > STEPS ? 1 : 0;
        }
    }
    EXPECT_GT(inside, 8000);
    EXPECT_EQ(wrong, 0) << "of " << inside << " " << savePicture("scattering_triangle");
}

TEST_F(SSScattering_shader_drawn_test, secondLightIsAdded) {
    SSScattering_shader effect;
    prepare(effect);
    Corner const corner = CORNERS[4];
    checkPoint(effect, corner);
    Vec3 const one = color(varyings(corner));
    lights = 2;
    prepare(effect);
    checkPoint(effect, corner);
    EXPECT_GT(color(varyings(corner)).z, one.z + 0.05F);
}

// == Single terms ==

TEST_F(SSScattering_shader_drawn_test, attenuationIsLimitedNearAndFar) {
    // Identity matrices: clip coordinates are the point's own.
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    Corner const corner{{0, 0, -0.5F}, {0, 0, 1}};
    base = {0.1F, 0.1F, 0.1F, 0};
    thickness = 0;
    rim = 0;
    SSScattering_shader effect;
    prepare(effect);
    struct Row {
        float distance;
        float attenuation;
    };
    for (Row const& row : {Row{1, 4}, {2, 4}, {2.5F, 4}, {5, 2}, {10, 1}, {100, 0.1F}, {200, 0.1F}}) {
        setLight(0, {0, 0, -0.5F + row.distance, 1}, {1, 1, 1, 1}, {0, 0, 0, 1});
        EXPECT_FLOAT_EQ(attenuation(Light(0), varyings(corner)), row.attenuation);
        checkPoint(effect, corner);
        // The light shines straight at it: 0.1 times the attenuation is all there is.
        EXPECT_NEAR(readPixel(128, 127)[0], 25.5 * row.attenuation, 1) << row.distance;
    }
}

TEST_F(SSScattering_shader_drawn_test, deliberatelyHighlightIsNeverZero) {
    // Its clamp gives the cosine with the half vector of normal and light, where the other order gives 0
    // or 1.
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    base = {0, 0, 0, 0};
    thickness = 0;
    rim = 0;
    glMaterialf(GL_FRONT, GL_SHININESS, 4);
    setLight(0, {0, 20, 0, 1}, {1, 1, 1, 1}, {20, 20, 20, 1});
    SSScattering_shader effect;
    prepare(effect);
    Corner const corner{{0, 0, 0.01F}, {0, 0, 1}};
    checkPoint(effect, corner);
    // The light stands at a right angle to the normal: half of it is 45 degrees.
    EXPECT_NEAR(readPixel(128, 127)[0], 255 * std::pow(std::sqrt(0.5), 4) * 0.5 * 20 * 0.05, 2);
}

TEST_F(SSScattering_shader_drawn_test, setValuesShowInPassesThatAreNotDirty) {
    SSScattering_shader effect;
    prepare(effect);
    checkPoint(effect, CORNERS[1]);
    checkPoint(effect, CORNERS[1]);
    thickness = 0.9F;
    lights = 2;
    prepare(effect);
    checkPoint(effect, CORNERS[1]);
    effect.reload();
    checkPoint(effect, CORNERS[1]);
}

TEST_F(SSScattering_shader_drawn_test, effectWithoutSettingsDrawsWithFirstValues) {
    SSScattering_shader effect;
    base = {0.8F, 0.8F, 0.8F, 1};
    thickness = 0.1F;
    extinction = {0.5F, 0.5F, 0.5F};
    rim = 0.2F;
    checkPoint(effect, CORNERS[1]);
}

// == Bad input ==

TEST_F(SSScattering_shader_drawn_test, nanParametersLeaveNoError) {
    SSScattering_shader effect;
    for (float const value : {NAN, INFINITY, -INFINITY, -1.0F}) {
        effect.setBaseColor(value, value, value, value);
        effect.setMaterialThickness(value);
        effect.setExtinctionCoefficient(value, value, value);
        effect.setRimScalar(value);
        drawPoint(effect, CORNERS[1]);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    }
    prepare(effect);
    checkPoint(effect, CORNERS[1]);
}

TEST_F(SSScattering_shader_drawn_test, passOfEffectThatIsNotCreatedLeavesNoError) {
    SSScattering_shader effect;
    effect.init();
    effect.preprocess();
    effect.postprocess();
    effect.cleanup();
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
}

// == State ==

TEST_F(SSScattering_shader_drawn_test, passRestoresAllButColor) {
    SSScattering_shader effect;
    lights = 2;
    for (bool const isDirty : {true, false}) {
        prepare(effect);
        glUseProgram(0);  // the setters have taken the program into use, which is no part of a pass
        setUnlikePasses();
        AttributeState const before;
        effect.init();
        effect.preprocess();
        effect.postprocess();
        effect.cleanup();
        AttributeState const after;
        EXPECT_THAT(before.namesThatDiffer(after),
                    UnorderedElementsAreArray(withLightsThatStay({"GL_CURRENT_COLOR"}, 2)))
            << isDirty << before.differences(after);
    }
}

// == Pictures ==

TEST_F(SSScattering_shader_drawn_test, torusIsLitByTwoLights) {
    glEnable(GL_DEPTH_TEST);
    glClearColor(0.1F, 0.1F, 0.12F, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glLoadIdentity();
    glTranslatef(0, 0, -4);
    glRotatef(-50, 1, 0, 0);
    setLight(0, {7, 10, 4, 1}, {1, 0.9F, 0.75F, 1}, {0.8F, 0.8F, 0.7F, 1});
    setLight(1, {-9, 2, -2, 1}, {0.2F, 0.35F, 0.7F, 1}, {0.5F, 0.7F, 1, 1});
    glMaterialf(GL_FRONT, GL_SHININESS, 20);
    base = {0.55F, 0.42F, 0.33F, 1};
    extinction = {0.9F, 0.35F, 0.2F};
    lights = 2;
    SSScattering_shader effect;
    prepare(effect);
    drawWith(effect, [] {
        constexpr int STEPS_AROUND = 64;
        auto const corner = [](int const& i, int const& j) {
            float const u = 6.2831853F * static_cast<float>(i) / STEPS_AROUND;
            float const v = 6.2831853F * static_cast<float>(j) / STEPS_AROUND;
            Vec3 const normal{std::cos(u) * std::cos(v), std::sin(u) * std::cos(v), std::sin(v)};
            send({Vec3{std::cos(u), std::sin(u), 0} + normal * 0.4F, normal});
        };
        for (int i = 0; i < STEPS_AROUND; ++i) {
            glBegin(GL_QUAD_STRIP);
            for (int j = 0; j <= STEPS_AROUND; ++j) {
                corner(i, j);
                corner(i + 1, j);
            }
            glEnd();
        }
    });
    std::string const file = savePicture("scattering_torus");

    EXPECT_GT(readPixel(128, 100)[0], 100) << file;
}

}  // namespace
}  // namespace vellum
