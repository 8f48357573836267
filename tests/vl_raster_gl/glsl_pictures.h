#pragma once

#include "Core_RL_GL.h"
#include "tests/gl_spy/GlTest.h"

#include <gtest/gtest.h>

#include <memory>

#include "internal/gl_api.h"

/// The fixture for shaders, programs and effects on a real driver.
namespace vellum {

/// A fragment stage that draws its uniform `color`, with red and blue exchanged where SWAPPED is defined.
constexpr char const* COLOR_TEXT = R"(uniform vec4 color;
void main()
{
#ifdef SWAPPED
    gl_FragColor = color.bgra;
#else
    gl_FragColor = color;
#endif
}
)";

/// Fills the frame buffer and checks the pixel in its middle.
class Glsl_fixture : public gl_spy::GlTest {
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

}  // namespace vellum
