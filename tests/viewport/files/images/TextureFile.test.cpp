#include "viewport/files/images/TextureFile.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/viewport/files/images/picture_bytes.h"

#include <gmock/gmock.h>

#include <vector>

#include <sys/wait.h>
#include <unistd.h>

using namespace vellum;
using namespace vellum::viewport;

namespace {

using Image = std::shared_ptr<VL_Image const>;

Image read(std::string const& bytes) {
    return readImage(std::vector<unsigned char>(bytes.begin(), bytes.end()));
}

/// A channel of a pixel from 0 to 1; the lower row is 0.
float channel(VL_Image const& image, unsigned int column, unsigned int row, unsigned int k) {
    unsigned int const channels = static_cast<unsigned int>(image.pixdepth() / image.bitdepth());
    std::size_t const place = (std::size_t(row) * image.width() + column) * channels + k;
    return image.bitdepth() == 8    ? static_cast<float>(image.getBuffer()[place]) / 255
           : image.bitdepth() == 16 ? static_cast<float>(image.getBuffer16()[place]) / 65535
                                    : image.getBuffer32()[place];
}

struct Sample {
    char const* name;
    std::string const& bytes;
    int bitdepth;
    bool hasAlpha;
};

std::vector<Sample> samples() {
    using namespace picture_bytes;
    return {{"TIFF", TIFF, 8, false},
            {"TIFF with alpha", TIFF_WITH_ALPHA, 8, true},
            {"TIFF of 16 bits", TIFF_16, 16, false},
            {"TIFF of floats", TIFF_FLOAT, 32, false},
            {"WebP", WEBP_WITH_ALPHA, 8, true},
            {"TGA", TGA_WITH_ALPHA, 8, true},
            {"BMP", BMP, 8, false},
            {"GIF", GIF, 8, false}};
}

}  // namespace

TEST(TextureFile, eachFormatGivesItsPixels) {
    constexpr float PIXELS[2][2][3] = {{{0, 0, 1}, {1, 1, 1}},
                                       {{1, 0, 0}, {0, 1, 0}}};  // the lower row first
    for (Sample const& sample : samples()) {
        SCOPED_TRACE(sample.name);
        Image const image = read(sample.bytes);
        ASSERT_NE(image, nullptr);
        ASSERT_EQ(image->width(), 2U);
        ASSERT_EQ(image->height(), 2U);
        EXPECT_EQ(image->bitdepth(), sample.bitdepth);
        EXPECT_EQ(image->pixdepth(), sample.bitdepth * (sample.hasAlpha ? 4 : 3));
        for (unsigned int row = 0; row < 2; ++row) {
            for (unsigned int column = 0; column < 2; ++column) {
                for (unsigned int k = 0; k < 3; ++k) {
                    EXPECT_NEAR(channel(*image, column, row, k), PIXELS[row][column][k], 0.005F)
                        << column << " " << row << " " << k;
                }
                if (sample.hasAlpha) {
                    EXPECT_NEAR(channel(*image, column, row, 3), row == 0 && column == 1 ? 0.5F : 1.0F,
                                0.005F);
                }
            }
        }
    }
}

TEST(TextureFile, picturesThatAreCutOffDoNoHarm) {
    for (Sample const& sample : samples()) {
        SCOPED_TRACE(sample.name);
        // Some decoders accept a missing end.
        for (std::size_t size = 0; size < sample.bytes.size(); size += 3) {
            Image const image = read(sample.bytes.substr(0, size));
            EXPECT_TRUE(image == nullptr || image->width() == 2U) << size;
        }
        EXPECT_EQ(read(sample.bytes.substr(0, 12)), nullptr);
    }
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child process is left";
}

TEST(TextureFile, damagedPicturesDoNoHarm) {
    for (Sample const& sample : samples()) {
        SCOPED_TRACE(sample.name);
        for (std::size_t place = 0; place < sample.bytes.size() && place < 80; place += 2) {
            std::string damaged = sample.bytes;
            damaged[place] = static_cast<char>(0xFF);
            Image const image = read(damaged);
            EXPECT_TRUE(image == nullptr || image->width() > 0) << place;
        }
    }
}

TEST(TextureFile, otherFilesAreNoPictures) {
    EXPECT_EQ(read(""), nullptr);
    EXPECT_EQ(read("no picture at all, but a text"), nullptr);
    EXPECT_EQ(read(std::string(100, '\0')), nullptr);
}

TEST(TextureFile, theFaultOfAFileNamesTheFormats) {
    TemporaryFolder const folder;
    Result<Image> const result = readTexture(folder.write("a.png", "no picture"));
    ASSERT_FALSE(result.isOk());
    EXPECT_THAT(result.fault().line(), testing::HasSubstr("TIFF, WebP, TGA, BMP"));
    EXPECT_THAT(readTexture(folder.file("gone.png")).fault().line(), testing::HasSubstr("cannot be opened"));
}
