#include "glsl_shader/Glass_shader.h"

#include "Core_RL_GL.h"
#include "foundation/geometry/Vector3.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/picture_files.h"

#include <gtest/gtest.h>

#include <string>

#include <GL/gl.h>

namespace vellum {
namespace {

constexpr unsigned int TEXELS = 64;  // along a side of the image
constexpr float ENVIRONMENT_SHARE =
    0.72F;                  // of a color, with mix ratio 0 (nine tenths) and base color (a fifth) black
constexpr float STEPS = 4;  // of 255: rounding, and the filter between texels that differ by 4

/// Red grows from left to right, green upward, each by 4 from texel to texel.
unsigned int sample(std::size_t x, std::size_t yFromTop, std::size_t channel) {
    std::size_t const level = channel == 0 ? x : channel == 1 ? TEXELS - 1 - yFromTop : 0;
    return static_cast<unsigned int>(4 * level);
}

float colorAt(float coordinate) {
    return 4 * (TEXELS * coordinate - 0.5F) * ENVIRONMENT_SHARE;
}

class Glass_shader_environment_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        picture_files::writePng(image, {TEXELS, TEXELS}, sample);
        effect.setBaseColor(0, 0, 0, 1);
        effect.setMixRatio(0);
        effect.setEnvironmentTexture(image.c_str());
        glMatrixMode(GL_PROJECTION);
        glOrtho(-1, 1, -1, 1, 0.5, 10);
        glMatrixMode(GL_MODELVIEW);
        glPointSize(9);
    }

    /// The color of a point straight ahead that reflects into this direction, a unit vector in eye space.
    Pixel reflected(Vector3<float> const& direction) {
        // Half-way between the direction and the way back to the eye; straight on, a surface seen edge-on.
        Vector3<float> normal = direction + Vector3<float>{0, 0, 1};
        float const size = length(normal);
        normal = size > 0 ? normal * (1 / size) : Vector3<float>{1, 0, 0};

        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        effect.init();
        effect.preprocess();
        glBegin(GL_POINTS);
        glNormal3fv(&normal.x);
        glVertex3f(0, 0, -2);
        glEnd();
        effect.postprocess();
        effect.cleanup();
        return readPixel(width / 2, height / 2);
    }

    TemporaryFolder folder;
    std::string image = folder.file("environment.png");
    Core_RL_GL layer;
    Glass_shader effect;
};

TEST_F(Glass_shader_environment_gl_test, theMiddleHalfLiesTowardTheViewerAndTheOuterQuartersAway) {
    struct Row {
        Vector3<float> direction;
        float s;
        float t;
    };
    for (Row const& row : {Row{{0, 0, 1}, 0.5F, 0.5F}, Row{{-0.6F, 0, 0.8F}, 0.35F, 0.5F},
                           Row{{0.6F, 0, 0.8F}, 0.65F, 0.5F}, Row{{0.96F, 0, 0.28F}, 0.74F, 0.5F},
                           Row{{0.6F, 0, -0.8F}, 0.85F, 0.5F}, Row{{0.28F, 0, -0.96F}, 0.93F, 0.5F},
                           Row{{-0.28F, 0, -0.96F}, 0.07F, 0.5F}, Row{{-0.6F, 0, -0.8F}, 0.15F, 0.5F},
                           Row{{-0.96F, 0, -0.28F}, 0.24F, 0.5F}, Row{{0, 0.6F, 0.8F}, 0.5F, 0.8F},
                           Row{{0, -0.6F, 0.8F}, 0.5F, 0.2F}, Row{{0.48F, 0.6F, -0.64F}, 0.85F, 0.8F}}) {
        Pixel const pixel = reflected(row.direction);
        EXPECT_NEAR(pixel[0], colorAt(row.s), STEPS)
            << row.direction.x << " " << row.direction.y << " " << row.direction.z;
        EXPECT_NEAR(pixel[1], colorAt(row.t), STEPS)
            << row.direction.x << " " << row.direction.y << " " << row.direction.z;
    }
}

TEST_F(Glass_shader_environment_gl_test, straightAheadLiesOnTheSeam) {
    Pixel const pixel = reflected({0, 0, -1});
    EXPECT_NEAR(pixel[0], (colorAt(0) + colorAt(1)) / 2, STEPS)
        << "half of the first texel, half of the last";
}

}  // namespace
}  // namespace vellum
