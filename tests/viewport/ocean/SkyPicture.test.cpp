#include "viewport/ocean/SkyPicture.h"

#include "foundation/image/VL_Image.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vellum;
using namespace vellum::viewport;

namespace {

float const* texel(VL_Image const& image, unsigned int const& column, unsigned int const& row) {
    return image.getBuffer32() + std::size_t{3} * (column + std::size_t{image.width()} * row);
}

}  // namespace

TEST(SkyPicture, isAPictureThatEffectsCanRead) {
    MemoryFile const file(skyPicture());
    VL_Image image;
    ASSERT_TRUE(image.read(VL_String(file.path().c_str())));
    EXPECT_EQ(image.width(), 512U);
    EXPECT_EQ(image.height(), 256U);
    for (unsigned int row = 0; row < image.height(); ++row) {
        for (unsigned int column = 0; column < image.width(); ++column) {
            for (int channel = 0; channel < 3; ++channel) {
                EXPECT_GE(texel(image, column, row)[channel], 0);
                EXPECT_LE(texel(image, column, row)[channel], 1);
            }
        }
    }
}

TEST(SkyPicture, hasTheSkyAboveAndTheGroundBelow) {
    MemoryFile const file(skyPicture());
    VL_Image image;
    ASSERT_TRUE(image.read(VL_String(file.path().c_str())));
    float const* const zenith = texel(image, 10, 250);
    EXPECT_GT(zenith[2], 2 * zenith[0]) << "blue";
    float const* const horizon = texel(image, 10, 135);
    EXPECT_GT(horizon[0], 0.6F) << "pale";
    float const* const ground = texel(image, 10, 100);
    EXPECT_LT(ground[2], 0.35F) << "dark";
}

TEST(SkyPicture, goesRoundWithoutASeam) {
    MemoryFile const file(skyPicture());
    VL_Image image;
    ASSERT_TRUE(image.read(VL_String(file.path().c_str())));
    for (unsigned int row = 0; row < image.height(); ++row) {
        // The right edge meets the left one, and the halves meet at a fourth and at three fourths.
        for (auto const& [a, b] : {std::pair<unsigned int, unsigned int>{511, 0}, {127, 128}, {383, 384}}) {
            for (int channel = 0; channel < 3; ++channel) {
                EXPECT_NEAR(texel(image, a, row)[channel], texel(image, b, row)[channel], 0.02) << row;
            }
        }
    }
}

TEST(SkyPicture, theWindowIsBehindTheViewerAlone) {
    MemoryFile const file(skyPicture());
    VL_Image image;
    ASSERT_TRUE(image.read(VL_String(file.path().c_str())));
    unsigned int bright[2] = {0, 0};
    for (unsigned int row = 160; row < image.height(); ++row) {
        for (unsigned int column = 0; column < image.width(); ++column) {
            bool const isTowardViewer = column >= 128 && column < 384;
            bright[isTowardViewer ? 1 : 0] += texel(image, column, row)[0] > 0.9F ? 1 : 0;
        }
    }
    EXPECT_EQ(bright[0], 0U);
    EXPECT_GT(bright[1], 500U);
}

TEST(MemoryFile, holdsWhatItWasGivenAndCanBeReadAgain) {
    MemoryFile const file(skyPicture());
    VL_Image first;
    VL_Image second;
    EXPECT_TRUE(first.read(VL_String(file.path().c_str())));
    EXPECT_TRUE(second.read(VL_String(file.path().c_str())));
    MemoryFile const empty(std::vector<unsigned char>{});
    EXPECT_FALSE(first.read(VL_String(empty.path().c_str())));
}
