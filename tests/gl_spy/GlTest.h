#pragma once

#include "offscreen/OffscreenContext.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace gl_spy {

/// The fixture of every test that draws: a real context, and a judge of GL errors.
///
/// All tests of an executable share one off-screen context of 256 x 256 pixels. SetUp brings its state back
/// to GL's initial values. TearDown fails the test when the driver reported an error (KHR_debug, synchronous)
/// that the test did not announce, or when an error is left for glGetError. Where no context can be made the
/// test fails, with the reason.
///
///     class Box_drawn_test : public gl_spy::GlTest {};
///     TEST_F(Box_drawn_test, aBoxCoversTheMiddle) { core.render(box); EXPECT_EQ(readPixel(128, 128)[0], 255); }
///
/// A derived fixture that has SetUp or TearDown of its own calls these here: first in SetUp, last in
/// TearDown.
class GlTest : public testing::Test {
public:
    using Pixel = std::array<unsigned char, 4>;  ///< red, green, blue, alpha

    static constexpr int width = 256;
    static constexpr int height = 256;

protected:
    void SetUp() override;
    void TearDown() override;

    /// The context; valid in every test body.
    static vellum::OffscreenContext& context();

    // == Errors ==

    /// The test raises exactly this many GL errors from here to its end; they may be left for glGetError.
    void expectGlErrors(std::size_t const& count);

    /// The test may raise any number of GL errors.
    void allowGlErrors();

    /// The texts of the errors that the driver reported so far in this test.
    std::vector<std::string> const& glErrors();

    // == Pictures ==

    /// A pixel of the frame buffer; x from the left, y from the top.
    Pixel readPixel(int const& x, int const& y);

    /// The frame buffer, width * height * 4 bytes, top row first.
    std::vector<unsigned char> readPixels();

    /// Writes the frame buffer to `pictures/<name>.png` in the build folder of the tests and gives the path:
    /// `EXPECT_NEAR(...) << savePicture("box")`. An empty path says that it could not be written.
    std::string savePicture(std::string const& name);

private:
    std::vector<std::string> _errors;
    std::size_t _expectedErrors = 0;
    bool _anyErrors = false;
};

}  // namespace gl_spy
