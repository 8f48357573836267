#include "foundation/image/VL_Image.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/picture_files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <utility>

#include <sys/stat.h>

namespace {

using namespace vellum;
using namespace picture_files;

constexpr int PNG_GRAY = 0;
constexpr int PNG_RGB = 2;
constexpr int PNG_PALETTE = 3;
constexpr int PNG_GRAY_ALPHA = 4;
constexpr int PNG_RGBA = 6;

// Every sample of a small image has another value.
unsigned int eightBits(std::size_t x, std::size_t y, std::size_t k) {
    return static_cast<unsigned int>(10 + 7 * x + 31 * y + 3 * k) & 255U;
}
unsigned int sixteenBits(std::size_t x, std::size_t y, std::size_t k) {
    return static_cast<unsigned int>(1000 + 701 * x + 3301 * y + 113 * k) & 65535U;
}
float floats(std::size_t x, std::size_t y, std::size_t k) {
    return 0.25F * static_cast<float>(x) + 8 * static_cast<float>(y) + 100 * static_cast<float>(k) - 3;
}

// The sample of an image, with rows counted from the top.
template <class Value>
Value const& at(Value const* pixels, VL_Image const& image, std::size_t x, std::size_t yFromTop,
                std::size_t k) {
    auto const channels = static_cast<std::size_t>(image.pixdepth() / image.bitdepth());
    return pixels[((image.height() - 1 - yFromTop) * image.width() + x) * channels + k];
}

void expectSizes(VL_Image const& image, unsigned int width, unsigned int height, int channels, int bits) {
    EXPECT_EQ(image.width(), width);
    EXPECT_EQ(image.height(), height);
    EXPECT_EQ(image.pixdepth(), channels * bits);
    EXPECT_EQ(image.bitdepth(), bits);
}

void expectEmpty(VL_Image const& image) {
    expectSizes(image, 0, 0, 0, 0);
    EXPECT_EQ(image.getBuffer(), nullptr);
    EXPECT_EQ(image.getBuffer16(), nullptr);
    EXPECT_EQ(image.getBuffer32(), nullptr);
}

class VL_Image_test : public testing::Test {
protected:
    // An image with contents, to detect whether a failed read leaves them.
    static VL_Image filled() {
        VL_Image image;
        image.create(2, 2, 3, 8);
        return image;
    }

    void expectRefused(std::string const& path, std::string const& what = {}) {
        VL_Image image = filled();
        EXPECT_FALSE(image.read(path.c_str())) << what;
        expectEmpty(image);
    }

    // Every truncated file is rejected: all lengths of a short file, some lengths of a long one.
    void expectRefusedWhenCutOff(std::string const& name) {
        std::string const whole = folder.read(name);
        ASSERT_TRUE(VL_Image().read(folder.file(name).c_str()));
        std::size_t const step = 1 + whole.size() / 100;
        for (std::size_t length = 0; length < whole.size(); length += step) {
            expectRefused(folder.write("cut", whole.substr(0, length)), "cut to " + std::to_string(length));
        }
        expectRefused(folder.write("cut", whole.substr(0, whole.size() - 1)), "without its last byte");
    }

    // A file with one changed byte is read or rejected, and the image is complete or empty. Sanitizers detect
    // the other faults of a reader.
    void expectHarmlessWhenDamaged(std::string const& name, std::size_t const& places = 150) {
        std::string const whole = folder.read(name);
        std::size_t const step = 1 + whole.size() / places;
        for (std::size_t place = 0; place < whole.size(); place += step) {
            for (unsigned char const change : {0x01, 0x80, 0xFF}) {
                std::string damaged = whole;
                damaged[place] = static_cast<char>(static_cast<unsigned char>(damaged[place]) ^ change);
                VL_Image image;
                bool const isRead = image.read(folder.write("damaged", damaged).c_str());
                EXPECT_EQ(isRead, image.width() > 0) << "byte " << place;
            }
        }
    }

    TemporaryFolder folder;
};

// == Images in memory ==

TEST_F(VL_Image_test, isEmptyAtFirst) {
    expectEmpty(VL_Image());
}

TEST_F(VL_Image_test, createMakesZerosOfEveryDepth) {
    VL_Image image;
    ASSERT_TRUE(image.create(3, 2, 4, 8));
    expectSizes(image, 3, 2, 4, 8);
    ASSERT_NE(image.getBuffer(), nullptr);
    EXPECT_EQ(image.getBuffer16(), nullptr);
    EXPECT_EQ(image.getBuffer32(), nullptr);
    for (int i = 0; i < 24; ++i) {
        EXPECT_EQ(image.getBuffer()[i], 0);
    }
    ASSERT_TRUE(image.create(3, 2, 3, 16));
    expectSizes(image, 3, 2, 3, 16);
    EXPECT_EQ(image.getBuffer(), nullptr);
    ASSERT_NE(image.getBuffer16(), nullptr);
    EXPECT_EQ(image.getBuffer16()[17], 0);
    ASSERT_TRUE(image.create(3, 2, 1, 32));
    expectSizes(image, 3, 2, 1, 32);
    ASSERT_NE(image.getBuffer32(), nullptr);
    EXPECT_EQ(image.getBuffer32()[5], 0.0F);
}

TEST_F(VL_Image_test, createRefusesSizesThatNoImageHas) {
    struct Case {
        unsigned int width, height, channels, bits;
    };
    for (Case const& c : {Case{0, 4, 3, 8},
                          {4, 0, 3, 8},
                          {16385, 1, 3, 8},
                          {1, 16385, 3, 8},
                          {4, 4, 0, 8},
                          {4, 4, 5, 8},
                          {4, 4, 3, 0},
                          {4, 4, 3, 12},
                          {4, 4, 3, 64},
                          // 1 GiB and a row; the product overflows 32 bits
                          {16384, 5462, 3, 32},
                          {16384, 16384, 4, 32},
                          {0xFFFFFFFF, 0xFFFFFFFF, 4, 32}}) {
        VL_Image image = filled();
        EXPECT_FALSE(image.create(c.width, c.height, c.channels, c.bits)) << c.width << " x " << c.height;
        expectEmpty(image);
    }
}

TEST_F(VL_Image_test, createTakesTheLargestImage) {
    VL_Image image;
    EXPECT_TRUE(image.create(16384, 16384, 4, 8));
    EXPECT_EQ(image.getBuffer()[(std::size_t{1} << 30) - 1], 0);
}

TEST_F(VL_Image_test, createMayTakeItsSizesFromTheImageItself) {
    VL_Image image;
    image.create(3, 2, 3, 8);
    unsigned int const& width = 7;
    EXPECT_TRUE(image.create(width, image.height(), 3, 8));
    expectSizes(image, 7, 2, 3, 8);
}

TEST_F(VL_Image_test, destroyMakesTheImageEmptyAndMayBeRepeated) {
    VL_Image image = filled();
    image.destroy();
    expectEmpty(image);
    image.destroy();
    expectEmpty(image);
}

TEST_F(VL_Image_test, copiesHavePixelsOfTheirOwn) {
    VL_Image image = filled();
    image.getBuffer()[5] = 77;
    VL_Image const copy = image;
    image.getBuffer()[5] = 1;
    expectSizes(copy, 2, 2, 3, 8);
    EXPECT_EQ(copy.getBuffer()[5], 77);
    VL_Image const emptyCopy = VL_Image();
    expectEmpty(emptyCopy);
}

TEST_F(VL_Image_test, assignmentReplacesTheContents) {
    VL_Image source;
    source.create(1, 1, 4, 32);
    source.getBuffer32()[3] = 0.5F;
    VL_Image image = filled();
    image = source;
    expectSizes(image, 1, 1, 4, 32);
    EXPECT_EQ(image.getBuffer32()[3], 0.5F);
    VL_Image const& same = image;
    image = same;
    EXPECT_EQ(image.getBuffer32()[3], 0.5F);
}

TEST_F(VL_Image_test, movingLeavesTheSourceEmpty) {
    VL_Image source = filled();
    unsigned char const* const pixels = source.getBuffer();
    VL_Image const target = std::move(source);
    EXPECT_EQ(target.getBuffer(), pixels);
    expectEmpty(source);  // NOLINT(bugprone-use-after-move): its state is promised.
}

// == Files of other formats ==

TEST_F(VL_Image_test, missingFileIsRefused) {
    expectRefused(folder.file("missing.png"));
    expectRefused("");
}

TEST_F(VL_Image_test, folderIsRefused) {
    expectRefused(folder.file("."));
}

TEST_F(VL_Image_test, pipeIsRefusedWithoutWaitingForItsWriter) {
    ASSERT_EQ(mkfifo(folder.file("pipe.png").c_str(), 0600), 0);
    expectRefused(folder.file("pipe.png"));
}

TEST_F(VL_Image_test, endlessDeviceIsRefused) {
    expectRefused("/dev/zero");
}

TEST_F(VL_Image_test, emptyFileTextAndSignaturesAloneAreRefused) {
    expectRefused(folder.write("empty.png", ""));
    expectRefused(folder.write("text.png", "This is no picture, whatever its name says.\n"));
    expectRefused(folder.write("a.png", "\x89PNG\r\n\x1a\n"));
    expectRefused(folder.write("a.jpg", "\xFF\xD8\xFF\xE0\xFF\xD8\xFF\xE0"));
    expectRefused(folder.write("a.exr", std::string("\x76\x2f\x31\x01\x02\x00\x00\x00", 8)));
    expectRefused(folder.write("a.hdr", "#?RADIANCE\n"));
}

TEST_F(VL_Image_test, otherFormatsAreRefused) {
    expectRefused(folder.write("a.gif", "GIF89a\x01\x01\x01\x01\x01\x01\x01\x01\x01"));
    expectRefused(folder.write("a.bmp", std::string(200, 'B')));
    expectRefused(folder.write("a.ppm", "P3 1 1 255 255 255 255\n"));
}

// == PNG ==

TEST_F(VL_Image_test, readsPngRgbOfEightBits) {
    writePng(folder.file("a.png"), {5, 3, 8, PNG_RGB}, eightBits);
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.png").c_str()));
    expectSizes(image, 5, 3, 3, 8);
    for (std::size_t i = 0; i < 45; ++i) {
        std::size_t const x = i / 3 % 5, y = i / 15, k = i % 3;
        EXPECT_EQ(at(image.getBuffer(), image, x, y, k), eightBits(x, y, k)) << i;
    }
}

TEST_F(VL_Image_test, pngHasItsBottomRowFirst) {
    writePng(folder.file("a.png"), {1, 2, 8, PNG_RGB},
             [](std::size_t, std::size_t y, std::size_t) { return y == 0 ? 200U : 100U; });
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.png").c_str()));
    EXPECT_EQ(image.getBuffer()[0], 100);
    EXPECT_EQ(image.getBuffer()[3], 200);
}

TEST_F(VL_Image_test, readsPngRgbaWithItsAlphaAsStored) {
    writePng(folder.file("a.png"), {4, 4, 8, PNG_RGBA}, eightBits);
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.png").c_str()));
    expectSizes(image, 4, 4, 4, 8);
    EXPECT_EQ(at(image.getBuffer(), image, 2, 1, 3), eightBits(2, 1, 3));
    EXPECT_EQ(at(image.getBuffer(), image, 2, 1, 0), eightBits(2, 1, 0));
}

TEST_F(VL_Image_test, readsPngOfSixteenBits) {
    for (int const type : {PNG_RGB, PNG_RGBA}) {
        writePng(folder.file("a.png"), {3, 3, 16, type}, sixteenBits);
        VL_Image image;
        ASSERT_TRUE(image.read(folder.file("a.png").c_str()));
        std::size_t const channels = type == PNG_RGB ? 3 : 4;
        expectSizes(image, 3, 3, static_cast<int>(channels), 16);
        for (std::size_t k = 0; k < channels; ++k) {
            EXPECT_EQ(at(image.getBuffer16(), image, 1, 2, k), sixteenBits(1, 2, k));
        }
    }
}

TEST_F(VL_Image_test, grayPngBecomesRgb) {
    for (int const bits : {1, 2, 4, 8, 16}) {
        unsigned int const most = (1U << bits) - 1;
        auto const gray = [most](std::size_t x, std::size_t, std::size_t) {
            return static_cast<unsigned int>(x) * most / 3;
        };
        writePng(folder.file("a.png"), {4, 2, bits, PNG_GRAY}, gray);
        VL_Image image;
        ASSERT_TRUE(image.read(folder.file("a.png").c_str())) << bits;
        expectSizes(image, 4, 2, 3, bits == 16 ? 16 : 8);
        for (std::size_t x = 0; x < 4; ++x) {
            for (std::size_t k = 0; k < 3; ++k) {
                if (bits == 16) {
                    EXPECT_EQ(at(image.getBuffer16(), image, x, 1, k), gray(x, 1, 0));
                } else {
                    EXPECT_EQ(at(image.getBuffer(), image, x, 1, k), gray(x, 1, 0) * (255 / most)) << bits;
                }
            }
        }
    }
}

TEST_F(VL_Image_test, grayPngWithAlphaBecomesRgba) {
    for (int const bits : {8, 16}) {
        writePng(folder.file("a.png"), {4, 2, bits, PNG_GRAY_ALPHA}, eightBits);
        VL_Image image;
        ASSERT_TRUE(image.read(folder.file("a.png").c_str()));
        expectSizes(image, 4, 2, 4, bits);
        auto const sample = [&](std::size_t k) -> unsigned int {
            return bits == 8 ? at(image.getBuffer(), image, 3, 0, k)
                             : at(image.getBuffer16(), image, 3, 0, k);
        };
        EXPECT_EQ(sample(0), eightBits(3, 0, 0));
        EXPECT_EQ(sample(1), eightBits(3, 0, 0));
        EXPECT_EQ(sample(2), eightBits(3, 0, 0));
        EXPECT_EQ(sample(3), eightBits(3, 0, 1));
    }
}

TEST_F(VL_Image_test, palettePngBecomesRgb) {
    Png png{4, 1, 2, PNG_PALETTE};
    png.palette = {{{10, 20, 30}}, {{40, 50, 60}}, {{70, 80, 90}}, {{1, 2, 3}}};
    writePng(folder.file("a.png"), png,
             [](std::size_t x, std::size_t, std::size_t) { return 3 - static_cast<unsigned int>(x); });
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.png").c_str()));
    expectSizes(image, 4, 1, 3, 8);
    EXPECT_EQ(image.getBuffer()[0], 1);
    EXPECT_EQ(image.getBuffer()[3], 70);
    EXPECT_EQ(image.getBuffer()[11], 30);
}

TEST_F(VL_Image_test, transparentColorsOfPngBecomeAlpha) {
    Png palette{2, 1, 8, PNG_PALETTE};
    palette.palette = {{{10, 20, 30}}, {{40, 50, 60}}};
    palette.paletteAlpha = {128};
    writePng(folder.file("palette.png"), palette,
             [](std::size_t x, std::size_t, std::size_t) { return static_cast<unsigned int>(x); });
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("palette.png").c_str()));
    expectSizes(image, 2, 1, 4, 8);
    EXPECT_EQ(image.getBuffer()[3], 128);
    EXPECT_EQ(image.getBuffer()[7], 255);

    Png rgb{2, 1, 16, PNG_RGB};
    rgb.transparentColor = {500, 500, 500};
    writePng(folder.file("rgb.png"), rgb,
             [](std::size_t x, std::size_t, std::size_t) { return x == 0 ? 500U : 501U; });
    ASSERT_TRUE(image.read(folder.file("rgb.png").c_str()));
    expectSizes(image, 2, 1, 4, 16);
    EXPECT_EQ(image.getBuffer16()[3], 0);
    EXPECT_EQ(image.getBuffer16()[7], 65535);
}

TEST_F(VL_Image_test, readsInterlacedPng) {
    writePng(folder.file("a.png"), {13, 11, 8, PNG_RGBA, true}, eightBits);
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.png").c_str()));
    for (std::size_t y = 0; y < 11; ++y) {
        for (std::size_t x = 0; x < 13; ++x) {
            EXPECT_EQ(at(image.getBuffer(), image, x, y, 2), eightBits(x, y, 2));
        }
    }
}

TEST_F(VL_Image_test, pngThatIsCutOffIsRefused) {
    writePng(folder.file("a.png"), {9, 9, 8, PNG_RGBA}, eightBits);
    expectRefusedWhenCutOff("a.png");
}

TEST_F(VL_Image_test, damagedPngIsHarmless) {
    writePng(folder.file("a.png"), {9, 9, 16, PNG_RGB, true}, sixteenBits);
    expectHarmlessWhenDamaged("a.png");
}

// The checksums of chunks, for headers that no writer would produce.
std::string pngChunk(std::string const& type, std::string const& data) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (char const byte : type + data) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc >> 1 ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0);
        }
    }
    auto const number = [](std::uint32_t value) {
        return std::string{static_cast<char>(value >> 24), static_cast<char>(value >> 16),
                           static_cast<char>(value >> 8), static_cast<char>(value)};
    };
    return number(static_cast<std::uint32_t>(data.size())) + type + data + number(~crc);
}

std::string pngHeader(std::uint32_t width, std::uint32_t height, char bits, char colorType) {
    std::string data;
    for (std::uint32_t const value : {width, height}) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            data.push_back(static_cast<char>(value >> shift));
        }
    }
    data += {bits, colorType, 0, 0, 0};
    return "\x89PNG\r\n\x1a\n" + pngChunk("IHDR", data) + pngChunk("IDAT", "nothing");
}

TEST_F(VL_Image_test, pngWithAHugeHeaderIsRefused) {
    expectRefused(folder.write("a.png", pngHeader(0x7FFFFFFF, 0x7FFFFFFF, 16, 6)));
    expectRefused(folder.write("a.png", pngHeader(16385, 1, 8, 2)));
    expectRefused(folder.write("a.png", pngHeader(16384, 16384, 16, 6)), "2 GiB decoded");
    expectRefused(folder.write("a.png", pngHeader(0, 0, 8, 2)));
    expectRefused(folder.write("a.png", pngHeader(16384, 16384, 8, 2)),
                  "as large as allowed, without pixels");
}

// == JPEG ==

unsigned int smooth(std::size_t x, std::size_t y, std::size_t k) {
    return static_cast<unsigned int>(4 * x + 3 * y + 20 * k);
}

TEST_F(VL_Image_test, readsJpegAsRgbOfEightBits) {
    for (bool const isProgressive : {false, true}) {
        writeJpeg(folder.file("a.jpg"), 21, 19, JpegColors::rgb, isProgressive, smooth);
        VL_Image image;
        ASSERT_TRUE(image.read(folder.file("a.jpg").c_str()));
        expectSizes(image, 21, 19, 3, 8);
        for (std::size_t y = 0; y < 19; ++y) {
            for (std::size_t x = 0; x < 21; ++x) {
                // Rounding of the color transform and the halved color resolution.
                EXPECT_NEAR(at(image.getBuffer(), image, x, y, 1), static_cast<int>(smooth(x, y, 1)), 6);
            }
        }
    }
}

TEST_F(VL_Image_test, jpegHasItsBottomRowFirst) {
    writeJpeg(folder.file("a.jpg"), 16, 16, JpegColors::gray, false,
              [](std::size_t, std::size_t y, std::size_t) { return y < 8 ? 200U : 50U; });
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.jpg").c_str()));
    EXPECT_NEAR(image.getBuffer()[0], 50, 2);
    EXPECT_NEAR(image.getBuffer()[15 * 16 * 3], 200, 2);
}

TEST_F(VL_Image_test, grayJpegBecomesRgb) {
    writeJpeg(folder.file("a.jpg"), 16, 16, JpegColors::gray, false, smooth);
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.jpg").c_str()));
    expectSizes(image, 16, 16, 3, 8);
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_NEAR(at(image.getBuffer(), image, 7, 5, k), static_cast<int>(smooth(7, 5, 0)), 2);
    }
}

TEST_F(VL_Image_test, cmykJpegBecomesRgb) {
    // Cyan 51, magenta 0, yellow 255, black 0 of 255; Adobe's programs store 255 less the ink.
    for (bool const isAdobe : {false, true}) {
        auto const ink = [isAdobe](std::size_t, std::size_t, std::size_t k) {
            unsigned int const amount = k == 0 ? 51 : k == 2 ? 255 : 0;
            return isAdobe ? 255 - amount : amount;
        };
        writeJpeg(folder.file("a.jpg"), 16, 16, isAdobe ? JpegColors::adobeCmyk : JpegColors::cmyk, false,
                  ink);
        VL_Image image;
        ASSERT_TRUE(image.read(folder.file("a.jpg").c_str()));
        expectSizes(image, 16, 16, 3, 8);
        EXPECT_NEAR(image.getBuffer()[0], 204, 2) << isAdobe;
        EXPECT_NEAR(image.getBuffer()[1], 255, 2) << isAdobe;
        EXPECT_NEAR(image.getBuffer()[2], 0, 2) << isAdobe;
    }
}

TEST_F(VL_Image_test, jpegThatIsCutOffIsRefused) {
    writeJpeg(folder.file("a.jpg"), 40, 40, JpegColors::rgb, false, eightBits);
    expectRefusedWhenCutOff("a.jpg");
}

TEST_F(VL_Image_test, progressiveJpegThatIsCutOffIsRefused) {
    writeJpeg(folder.file("a.jpg"), 40, 40, JpegColors::rgb, true, eightBits);
    expectRefusedWhenCutOff("a.jpg");
}

TEST_F(VL_Image_test, damagedJpegIsHarmless) {
    for (bool const isProgressive : {false, true}) {
        writeJpeg(folder.file("a.jpg"), 24, 24, JpegColors::rgb, isProgressive, eightBits);
        expectHarmlessWhenDamaged("a.jpg");
    }
}

TEST_F(VL_Image_test, jpegWithAHugeHeaderIsRefused) {
    writeJpeg(folder.file("a.jpg"), 16, 16, JpegColors::rgb, false, smooth);
    std::string file = folder.read("a.jpg");
    std::size_t const frame = file.find("\xFF\xC0");
    ASSERT_NE(frame, std::string::npos);
    file.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC");  // 65,500 each way
    expectRefused(folder.write("huge.jpg", file));
    file.replace(frame + 5, 4, std::string("\x00\x10\x40\x01", 4));  // 16,385 wide
    expectRefused(folder.write("huge.jpg", file));
    file.replace(frame + 5, 4, std::string("\x40\x00\x40\x00", 4));  // as large as allowed, with few pixels
    expectRefused(folder.write("huge.jpg", file));
}

TEST_F(VL_Image_test, jpegWithThousandsOfScansIsRefused) {
    // A progressive file whose last scan is repeated: little data, much work.
    writeJpeg(folder.file("a.jpg"), 64, 64, JpegColors::gray, true, smooth);
    std::string const file = folder.read("a.jpg");
    std::size_t const scan = file.rfind("\xFF\xDA");
    std::string many = file.substr(0, file.size() - 2);
    for (int i = 0; i < 2000; ++i) {
        many += file.substr(scan, file.size() - 2 - scan);
    }
    expectRefused(folder.write("many.jpg", many + "\xFF\xD9"));
}

// == OpenEXR ==

TEST_F(VL_Image_test, readsExrOfHalfFloatAndIntegerAsFloats) {
    for (int const type : {0, 1, 2}) {
        Exr exr{0, 0, 6, 4};
        exr.channels = {{"R", type}, {"G", type}, {"B", type}};
        auto const sample = [](std::size_t x, std::size_t y, std::size_t k) {
            return static_cast<float>(x + 10 * y + 100 * k);
        };
        writeExr(folder.file("a.exr"), exr, sample);
        VL_Image image;
        ASSERT_TRUE(image.read(folder.file("a.exr").c_str())) << type;
        expectSizes(image, 6, 4, 3, 32);
        for (std::size_t i = 0; i < 72; ++i) {
            std::size_t const x = i / 3 % 6, y = i / 18, k = i % 3;
            EXPECT_EQ(at(image.getBuffer32(), image, x, y, k), sample(x, y, k)) << type;
        }
    }
}

TEST_F(VL_Image_test, readsExrOfEveryLosslessCompression) {
    for (int const compression : {0, 1, 2, 3, 4}) {  // none, runs, ZIP of lines and of blocks, wavelets
        Exr exr{0, 0, 40, 70};
        exr.channels = {{"R", 2}, {"G", 2}, {"B", 2}, {"A", 2}};
        exr.compression = compression;
        writeExr(folder.file("a.exr"), exr, floats);
        VL_Image image;
        ASSERT_TRUE(image.read(folder.file("a.exr").c_str())) << compression;
        expectSizes(image, 40, 70, 4, 32);
        EXPECT_EQ(at(image.getBuffer32(), image, 39, 69, 3), floats(39, 69, 3)) << compression;
        EXPECT_EQ(at(image.getBuffer32(), image, 0, 0, 0), floats(0, 0, 0)) << compression;
        EXPECT_EQ(at(image.getBuffer32(), image, 17, 33, 1), floats(17, 33, 1)) << compression;
    }
}

TEST_F(VL_Image_test, exrKeepsItsAlphaAndNumbersOfAnyRange) {
    float const infinity = std::numeric_limits<float>::infinity();
    Exr exr{0, 0, 2, 1};
    exr.channels = {{"R", 2}, {"G", 2}, {"B", 2}, {"A", 1}};
    writeExr(folder.file("a.exr"), exr, [infinity](std::size_t x, std::size_t, std::size_t k) {
        float const values[2][4] = {{-2.5F, 1e30F, infinity, 0.25F}, {std::nanf(""), 0, 1e-30F, 2}};
        return values[x][k];
    });
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.exr").c_str()));
    float const* const pixels = image.getBuffer32();
    EXPECT_EQ(pixels[0], -2.5F);
    EXPECT_EQ(pixels[1], 1e30F);
    EXPECT_EQ(pixels[2], infinity);
    EXPECT_EQ(pixels[3], 0.25F);
    EXPECT_TRUE(std::isnan(pixels[4]));
    EXPECT_EQ(pixels[6], 1e-30F);
    EXPECT_EQ(pixels[7], 2.0F);
}

TEST_F(VL_Image_test, exrHasItsBottomRowFirstAndStartsAtItsDataWindow) {
    Exr exr{-7, 12, 3, 2};
    exr.channels = {{"R", 2}, {"G", 2}, {"B", 2}};
    writeExr(folder.file("a.exr"), exr, floats);
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.exr").c_str()));
    expectSizes(image, 3, 2, 3, 32);
    EXPECT_EQ(image.getBuffer32()[0], floats(0, 1, 0));
    EXPECT_EQ(image.getBuffer32()[9], floats(0, 0, 0));
}

TEST_F(VL_Image_test, readsTiledExr) {
    Exr exr{3, -5, 50, 37};
    exr.channels = {{"R", 1}, {"G", 1}, {"B", 1}};
    exr.tileSize = 16;
    auto const sample = [](std::size_t x, std::size_t y, std::size_t k) {
        return static_cast<float>(x + 8 * y + k);
    };
    writeExr(folder.file("a.exr"), exr, sample);
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.exr").c_str()));
    expectSizes(image, 50, 37, 3, 32);
    for (std::size_t y = 0; y < 37; ++y) {
        EXPECT_EQ(at(image.getBuffer32(), image, 49, y, 2), sample(49, y, 2));
    }
}

TEST_F(VL_Image_test, grayExrBecomesRgb) {
    Exr exr{0, 0, 3, 2};
    exr.channels = {{"Y", 1}, {"A", 1}};
    writeExr(folder.file("a.exr"), exr, floats);
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.exr").c_str()));
    expectSizes(image, 3, 2, 4, 32);
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_EQ(at(image.getBuffer32(), image, 2, 1, k), floats(2, 1, 0));
    }
    EXPECT_EQ(at(image.getBuffer32(), image, 2, 1, 3), floats(2, 1, 1));
}

TEST_F(VL_Image_test, missingColorsOfExrAreZeroAndLayersAreLeftOut) {
    Exr exr{0, 0, 3, 2};
    exr.channels = {{"G", 2}, {"diffuse.R", 2}};
    writeExr(folder.file("a.exr"), exr, floats);
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.exr").c_str()));
    expectSizes(image, 3, 2, 3, 32);
    EXPECT_EQ(at(image.getBuffer32(), image, 1, 1, 0), 0.0F);
    EXPECT_EQ(at(image.getBuffer32(), image, 1, 1, 1), floats(1, 1, 0));
    EXPECT_EQ(at(image.getBuffer32(), image, 1, 1, 2), 0.0F);
}

TEST_F(VL_Image_test, exrWithoutColorsIsRefused) {
    Exr exr{0, 0, 4, 4};
    exr.channels = {{"Z", 2}};
    writeExr(folder.file("depth.exr"), exr, floats);
    expectRefused(folder.file("depth.exr"));
    exr.channels = {{"A", 2}};
    writeExr(folder.file("alpha.exr"), exr, floats);
    expectRefused(folder.file("alpha.exr"));
}

TEST_F(VL_Image_test, exrOfBrightnessAndColorDifferencesIsRefused) {
    Exr exr{0, 0, 4, 4};
    exr.channels = {{"Y", 1}, {"RY", 1, 2}, {"BY", 1, 2}};
    writeExr(folder.file("a.exr"), exr, floats);
    expectRefused(folder.file("a.exr"));
}

TEST_F(VL_Image_test, exrThatIsCutOffIsRefused) {
    Exr exr{0, 0, 12, 40};
    exr.channels = {{"R", 2}, {"G", 2}, {"B", 2}};
    writeExr(folder.file("a.exr"), exr, floats);
    expectRefusedWhenCutOff("a.exr");
    exr.tileSize = 8;
    writeExr(folder.file("tiled.exr"), exr, floats);
    expectRefusedWhenCutOff("tiled.exr");
}

TEST_F(VL_Image_test, damagedExrIsHarmless) {
    for (unsigned int const tileSize : {0U, 8U}) {
        for (int const compression : {0, 1, 3, 4, 5, 6, 8, 9}) {
            Exr exr{0, 0, 9, 20};
            exr.channels = {{"R", 1}, {"G", 1}, {"B", 2}};
            exr.compression = compression;
            exr.tileSize = tileSize;
            writeExr(folder.file("a.exr"), exr, floats);
            expectHarmlessWhenDamaged("a.exr", 60);
        }
    }
}

// Writes another value over an attribute of an OpenEXR file.
std::string withAttribute(std::string file, std::string const& name,
                          std::vector<std::int32_t> const& values) {
    std::size_t const begin = file.find(name + std::string(1, '\0'));
    std::size_t const type = begin + name.size() + 1;
    std::size_t const data = file.find('\0', type) + 1 + 4;
    std::memcpy(file.data() + data, values.data(), values.size() * 4);
    return file;
}

TEST_F(VL_Image_test, exrWithAHugeHeaderIsRefused) {
    std::int32_t const most = std::numeric_limits<std::int32_t>::max();
    Exr exr{0, 0, 9, 20};
    exr.channels = {{"R", 1}, {"G", 1}, {"B", 2}};
    for (unsigned int const tileSize : {0U, 8U}) {
        exr.tileSize = tileSize;
        writeExr(folder.file("a.exr"), exr, floats);
        std::string const file = folder.read("a.exr");
        std::vector<std::vector<std::int32_t>> const windows{
            {0, 0, most, most}, {-most - 1, -most - 1, most, most},
            {0, 0, 16384, 0},   {0, 0, 0, 16384},
            {5, 5, 4, 4},       {0, 0, 16383, 16383}};
        for (std::vector<std::int32_t> const& window : windows) {
            expectRefused(folder.write("huge.exr", withAttribute(file, "dataWindow", window)));
        }
    }
    std::string const file = folder.read("a.exr");
    std::vector<std::vector<std::int32_t>> const sizes{{most, most}, {0, 0}, {-1, -1}, {16384, 16384}};
    for (std::vector<std::int32_t> const& size : sizes) {
        VL_Image image;
        bool const isRead = image.read(folder.write("tiles.exr", withAttribute(file, "tiles", size)).c_str());
        EXPECT_EQ(isRead, image.width() > 0);
        EXPECT_FALSE(isRead) << size[0];
    }
}

TEST_F(VL_Image_test, exrWithAnAttributeLargerThanTheFileIsRefused) {
    Exr exr{0, 0, 9, 20};
    exr.channels = {{"R", 1}, {"G", 1}, {"B", 2}};
    writeExr(folder.file("a.exr"), exr, floats);
    std::string const header = folder.read("a.exr").substr(0, 8);
    auto const attribute = [](std::string const& type, std::int32_t size) {
        std::string text = "own" + std::string(1, '\0') + type + std::string(1, '\0') + std::string(4, '\0');
        std::memcpy(text.data() + text.size() - 4, &size, 4);
        return text;
    };
    expectRefused(folder.write("b.exr", header + attribute("own", 0x7FFFFFFF) + "short"));
    expectRefused(folder.write("b.exr", header + attribute("own", -1) + "short"));
    // A preview whose header announces more than its attribute has.
    std::string preview = attribute("preview", 12) + std::string("\xFF\xFF\xFF\x7F\xFF\xFF\xFF\x7F....", 12);
    expectRefused(folder.write("b.exr", header + preview + folder.read("a.exr").substr(8)));
}

// == Radiance ==

// RGBE: the color is mantissa / 256 times two to the power of the exponent less 128.
std::array<unsigned char, 4> rgbe(std::size_t x, std::size_t y) {
    return {static_cast<unsigned char>(128 + 2 * x), static_cast<unsigned char>(16 * y),
            static_cast<unsigned char>(x < 6 ? 5 : x), 129};
}

TEST_F(VL_Image_test, readsRadianceAsRgbFloats) {
    struct Case {
        unsigned int width;
        bool isRunLengthEncoded;
    };
    for (Case const& c : {Case{5, false}, {16, false}, {16, true}, {300, true}}) {
        writeHdr(folder.file("a.hdr"), c.width, 4, c.isRunLengthEncoded, rgbe);
        VL_Image image;
        ASSERT_TRUE(image.read(folder.file("a.hdr").c_str())) << c.width;
        expectSizes(image, c.width, 4, 3, 32);
        for (std::size_t y = 0; y < 4; ++y) {
            for (std::size_t x = 0; x < c.width; ++x) {
                for (std::size_t k = 0; k < 3; ++k) {
                    EXPECT_EQ(at(image.getBuffer32(), image, x, y, k),
                              static_cast<float>(rgbe(x, y)[k]) / 128);
                }
            }
        }
    }
}

TEST_F(VL_Image_test, radianceHasItsBottomRowFirst) {
    writeHdr(folder.file("a.hdr"), 1, 2, false, [](std::size_t, std::size_t y) {
        return std::array<unsigned char, 4>{static_cast<unsigned char>(y == 0 ? 255 : 128), 0, 0, 128};
    });
    VL_Image image;
    ASSERT_TRUE(image.read(folder.file("a.hdr").c_str()));
    EXPECT_EQ(image.getBuffer32()[0], 0.5F);
    EXPECT_EQ(image.getBuffer32()[3], 255.0F / 256);
}

TEST_F(VL_Image_test, radianceThatIsCutOffIsRefused) {
    writeHdr(folder.file("flat.hdr"), 7, 9, false, rgbe);
    expectRefusedWhenCutOff("flat.hdr");
    writeHdr(folder.file("runs.hdr"), 40, 9, true, rgbe);
    expectRefusedWhenCutOff("runs.hdr");
}

TEST_F(VL_Image_test, radianceCutOffInsideItsLastPixelIsRefusedWhereverThatIs) {
    // The reader reads blocks: the last pixel moves across their borders.
    for (unsigned int width = 1; width < 8; ++width) {
        for (unsigned int height = 1; height < 40; height += 3) {
            writeHdr(folder.file("a.hdr"), width, height, false, rgbe);
            std::string const whole = folder.read("a.hdr");
            for (std::size_t missing = 1; missing < 4; ++missing) {
                expectRefused(folder.write("cut.hdr", whole.substr(0, whole.size() - missing)));
            }
        }
    }
}

TEST_F(VL_Image_test, damagedRadianceIsHarmless) {
    writeHdr(folder.file("a.hdr"), 20, 9, true, rgbe);
    expectHarmlessWhenDamaged("a.hdr");
}

TEST_F(VL_Image_test, radianceWithAHugeHeaderOrOtherLayoutIsRefused) {
    auto const file = [this](std::string const& sizes) {
        return folder.write("a.hdr",
                            "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n" + sizes + "\n" + std::string(64, 'x'));
    };
    for (char const* sizes : {"-Y 2147483647 +X 2147483647", "-Y 16385 +X 1", "-Y 1 +X 16385", "-Y 0 +X 4",
                              "-Y 4 +X 0", "-Y -4 +X -4", "-Y 16384 +X 16384", "-Y 9000 +X 9000", "+Y 2 +X 2",
                              "", "-Y 99999999999999999999 +X 1"}) {
        expectRefused(file(sizes), sizes);
    }
    expectRefused(folder.write("a.hdr", "#?RADIANCE\nFORMAT=32-bit_rle_xyze\n\n-Y 1 +X 1\nabcd"));
}

// == All formats ==

TEST_F(VL_Image_test, theContentsDecideNotTheName) {
    writePng(folder.file("picture.jpg"), {2, 2, 8, PNG_RGB}, eightBits);
    writeJpeg(folder.file("picture.exr"), 3, 3, JpegColors::rgb, false, smooth);
    Exr exr{0, 0, 4, 4};
    exr.channels = {{"R", 2}};
    writeExr(folder.file("picture.png"), exr, floats);
    writeHdr(folder.file("picture"), 5, 5, false, rgbe);
    VL_Image image;
    EXPECT_TRUE(image.read(folder.file("picture.jpg").c_str()));
    EXPECT_EQ(image.width(), 2U);
    EXPECT_TRUE(image.read(folder.file("picture.exr").c_str()));
    EXPECT_EQ(image.width(), 3U);
    EXPECT_TRUE(image.read(folder.file("picture.png").c_str()));
    EXPECT_EQ(image.width(), 4U);
    EXPECT_TRUE(image.read(folder.file("picture").c_str()));
    EXPECT_EQ(image.width(), 5U);
}

}  // namespace
