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
            {"GIF", GIF, 8, false},
            {"DDS", DDS, 8, false}};
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

// == DDS ==

namespace {

void append(std::string& bytes, std::initializer_list<unsigned int> const& values) {
    for (unsigned int const value : values) {
        for (unsigned int k = 0; k < 4; ++k) {
            bytes.push_back(static_cast<char>(value >> (8 * k) & 0xFFU));
        }
    }
}

/// A file of 4 x 4 pixels, or of the size given.
std::string dds(std::string const& fourLetters, std::string const& content, unsigned int side = 4) {
    std::string bytes = "DDS ";
    append(bytes, {124, 0x1007, side, side, 0, 0, 0});
    bytes.append(44, '\0');
    append(bytes, {32, 4});
    bytes += fourLetters;
    bytes.append(40, '\0');
    EXPECT_EQ(bytes.size(), 128U);
    return bytes + content;
}

/// The same of a format of DXGI.
std::string ddsOfDxgi(unsigned int format, unsigned int opacityMode, std::string const& content,
                      unsigned int side = 4) {
    std::string header;
    append(header, {format, 3, 0, 1, opacityMode});
    return dds("DX10", header + content, side);
}

std::string const redToBlue("\x00\xF8\x1F\x00\x1B\x00\x00\x00", 8);

}  // namespace

TEST(TextureFile, ddsBlocksOfColorsAreDecoded) {
    Image const image = read(dds("DXT1", redToBlue));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->pixdepth(), 24);
    // The upper row has the indices 3, 2, 1 and 0; the others 0.
    float const reds[] = {1.0F / 3, 2.0F / 3, 0, 1};
    for (unsigned int column = 0; column < 4; ++column) {
        EXPECT_NEAR(channel(*image, column, 3, 0), reds[column], 0.003F);
        EXPECT_NEAR(channel(*image, column, 3, 2), 1 - reds[column], 0.003F);
        EXPECT_EQ(channel(*image, column, 0, 0), 1);
    }
    // With the smaller color first: one between them, and a hole.
    Image const holes = read(dds("DXT1", std::string("\x1F\x00\x00\xF8\x1B\x00\x00\x00", 8)));
    ASSERT_NE(holes, nullptr);
    ASSERT_EQ(holes->pixdepth(), 32);
    EXPECT_EQ(channel(*holes, 0, 3, 3), 0);
    EXPECT_NEAR(channel(*holes, 1, 3, 0), 0.5F, 0.003F);
    EXPECT_EQ(channel(*holes, 1, 3, 3), 1);
}

TEST(TextureFile, ddsBlocksOfOpacitiesAreDecoded) {
    // Opacities of 4 bits: 15 and 3 in the upper row.
    Image const four = read(dds("DXT3", std::string("\x3F\x00\x00\x00\x00\x00\x00\x00", 8) + redToBlue));
    ASSERT_NE(four, nullptr);
    ASSERT_EQ(four->pixdepth(), 32);
    EXPECT_EQ(channel(*four, 0, 3, 3), 1);
    EXPECT_NEAR(channel(*four, 1, 3, 3), 0.2F, 0.003F);
    EXPECT_EQ(channel(*four, 2, 3, 3), 0);
    // From 255 to 0 in eight steps: the indices 2 and 7.
    Image const eight = read(dds("DXT5", std::string("\xFF\x00\x3A\x00\x00\x00\x00\x00", 8) + redToBlue));
    ASSERT_NE(eight, nullptr);
    EXPECT_NEAR(channel(*eight, 0, 3, 3), 6.0F / 7, 0.003F);
    EXPECT_NEAR(channel(*eight, 1, 3, 3), 1.0F / 7, 0.003F);
    EXPECT_EQ(channel(*eight, 2, 3, 3), 1);
    // From 0 to 255 in six steps, and both ends: the indices 2, 6 and 7.
    Image const six = read(dds("DXT5", std::string("\x00\xFF\xF2\x01\x00\x00\x00\x00", 8) + redToBlue));
    ASSERT_NE(six, nullptr);
    EXPECT_NEAR(channel(*six, 0, 3, 3), 0.2F, 0.003F);
    EXPECT_EQ(channel(*six, 1, 3, 3), 0);
    EXPECT_EQ(channel(*six, 2, 3, 3), 1);
}

TEST(TextureFile, ddsBlocksOfOneAndTwoChannelsAreDecoded) {
    std::string const ramp("\xFF\x00\x3A\x00\x00\x00\x00\x00", 8);
    Image const one = read(dds("ATI1", ramp));
    ASSERT_NE(one, nullptr);
    EXPECT_NEAR(channel(*one, 0, 3, 0), 6.0F / 7, 0.003F);
    EXPECT_EQ(channel(*one, 0, 3, 0), channel(*one, 0, 3, 2)) << "gray";
    Image const two = read(dds("ATI2", ramp + std::string("\x00\xFF\x00\x00\x00\x00\x00\x00", 8)));
    ASSERT_NE(two, nullptr);
    EXPECT_NEAR(channel(*two, 1, 3, 0), 1.0F / 7, 0.003F);
    EXPECT_EQ(channel(*two, 1, 3, 1), 0);
}

TEST(TextureFile, anOpacityThatIsMultipliedIntoTheColorsOfDdsIsDividedOut) {
    // Half of red, half opaque; of four bits the nearest is 8 of 15.
    std::string const halfRed("\x00\x78\x00\x78\x00\x00\x00\x00", 8);
    std::string const eightOf15(8, '\x88');
    std::string const half("\x80\x80\x00\x00\x00\x00\x00\x00", 8);
    struct Row {
        char const* name;
        std::string bytes;
        float red;
        float opacity;
    };
    for (Row const& row : {Row{"DXT2", dds("DXT2", eightOf15 + halfRed), 123.0F / 136, 136.0F / 255},
                           Row{"DXT3", dds("DXT3", eightOf15 + halfRed), 123.0F / 255, 136.0F / 255},
                           Row{"DXT4", dds("DXT4", half + halfRed), 123.0F / 128, 128.0F / 255},
                           Row{"DXT5", dds("DXT5", half + halfRed), 123.0F / 255, 128.0F / 255},
                           Row{"multiplied", ddsOfDxgi(77, 2, half + halfRed), 123.0F / 128, 128.0F / 255},
                           Row{"straight", ddsOfDxgi(77, 1, half + halfRed), 123.0F / 255, 128.0F / 255}}) {
        SCOPED_TRACE(row.name);
        Image const image = read(row.bytes);
        ASSERT_NE(image, nullptr);
        EXPECT_NEAR(channel(*image, 1, 1, 0), row.red, 0.003F);
        EXPECT_NEAR(channel(*image, 1, 1, 3), row.opacity, 0.001F);
    }
    Image const opaque = read(ddsOfDxgi(77, 3, half + halfRed));
    ASSERT_NE(opaque, nullptr);
    EXPECT_EQ(opaque->pixdepth(), 24);
    // Where nothing is seen there is nothing to divide by, and no part becomes more than whole.
    Image const gone = read(dds("DXT4", std::string(8, '\0') + halfRed));
    ASSERT_NE(gone, nullptr);
    EXPECT_NEAR(channel(*gone, 1, 1, 0), 123.0F / 255, 0.003F);
    Image const more = read(dds("DXT4", std::string("\x10\x10\x00\x00\x00\x00\x00\x00", 8) + halfRed));
    ASSERT_NE(more, nullptr);
    EXPECT_EQ(channel(*more, 1, 1, 0), 1);
}

TEST(TextureFile, ddsFormatsThatAreNotReadAreNamed) {
    auto const reason = [](std::string const& bytes) {
        EXPECT_EQ(read(bytes), nullptr);
        return unreadableReason(std::vector<unsigned char>(bytes.begin(), bytes.end()));
    };
    std::string const block(16, '\0');
    EXPECT_EQ(reason(ddsOfDxgi(95, 0, block)), "is a DDS file of BC6H, which is not read");
    EXPECT_EQ(reason(ddsOfDxgi(98, 0, block)), "is a DDS file of BC7, which is not read");
    EXPECT_EQ(reason(ddsOfDxgi(2, 0, block)), "is a DDS file of DXGI format 2, which is not read");
    EXPECT_EQ(reason(dds("ABCD", block)), "is a DDS file of ABCD, which is not read");
    EXPECT_EQ(reason(dds("\x71\x01\x01\x01", block)), "is a DDS file of format 16843121, which is not read");
    // Damaged, of a format that is read.
    EXPECT_THAT(reason(dds("DXT1", redToBlue, 8)), testing::HasSubstr("is not a readable picture"));
    EXPECT_THAT(reason(dds("DX10", redToBlue)), testing::HasSubstr("is not a readable picture"));
    TemporaryFolder const folder;
    EXPECT_EQ(readTexture(folder.write("a.dds", ddsOfDxgi(98, 0, block))).fault().message,
              "is a DDS file of BC7, which is not read");
}

TEST(TextureFile, ddsFilesOfOtherKindsAreRefused) {
    EXPECT_EQ(read(dds("ABCD", redToBlue)), nullptr);
    EXPECT_EQ(read(dds("DXT1", redToBlue, 8)), nullptr) << "four blocks are needed";
    EXPECT_EQ(read(dds("DXT1", redToBlue, 0)), nullptr);
    EXPECT_EQ(read(dds("DXT1", redToBlue, 0xFFFFFFFFU)), nullptr);
    EXPECT_EQ(read(dds("DX10", redToBlue)), nullptr);
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

// == TIFF ==

namespace {

/// A TIFF file of one row of pixels of four channels, little-endian.
/// \param opacity EXTRASAMPLE_ASSOCALPHA (1) or EXTRASAMPLE_UNASSALPHA (2)
std::string tiff(unsigned int bits, unsigned int format, unsigned int opacity, std::string const& pixels) {
    constexpr unsigned int SHORT = 3;
    constexpr unsigned int LONG = 4;
    unsigned int const width = static_cast<unsigned int>(pixels.size()) / (bits / 2);
    struct Entry {
        unsigned int tag;
        unsigned int type;
        unsigned int count;
        unsigned int value;  // or its place
    };
    unsigned int const first = 8 + static_cast<unsigned int>(pixels.size());
    unsigned int const lists = first + 2 + 12 * 12 + 4;
    std::vector<Entry> const entries{{256, LONG, 1, width},
                                     {257, LONG, 1, 1},
                                     {258, SHORT, 4, lists},
                                     {259, SHORT, 1, 1},
                                     {262, SHORT, 1, 2},
                                     {273, LONG, 1, 8},
                                     {277, SHORT, 1, 4},
                                     {278, LONG, 1, 1},
                                     {279, LONG, 1, static_cast<unsigned int>(pixels.size())},
                                     {284, SHORT, 1, 1},
                                     {338, SHORT, 1, opacity},
                                     {339, SHORT, 4, lists + 8}};
    std::string bytes("II*\0", 4);
    append(bytes, {first});
    bytes += pixels;
    bytes += std::string("\x0C\x00", 2);
    for (Entry const& entry : entries) {
        append(bytes, {entry.tag | entry.type << 16, entry.count, entry.value});
    }
    append(bytes, {0, bits | bits << 16, bits | bits << 16, format | format << 16, format | format << 16});
    return bytes;
}

}  // namespace

TEST(TextureFile, anOpacityThatIsMultipliedIntoTheColorsOfTiffIsDividedOut) {
    // Red 0.25, green 0.5 and half opaque; then a pixel of which nothing is seen; then one with more color
    // than opacity.
    std::string words;
    append(words, {0x80004000, 0x80000000, 0x00001234, 0x00000000, 0x0000FFFF, 0x40000000});
    Image const sixteen = read(tiff(16, 1, 1, words));
    ASSERT_NE(sixteen, nullptr);
    ASSERT_EQ(sixteen->pixdepth(), 64);
    EXPECT_NEAR(channel(*sixteen, 0, 0, 0), 0.5F, 0.0001F);
    EXPECT_EQ(channel(*sixteen, 0, 0, 1), 1);
    EXPECT_NEAR(channel(*sixteen, 0, 0, 3), 0.5F, 0.0001F);
    EXPECT_EQ(sixteen->getBuffer16()[4], 0x1234);
    EXPECT_EQ(sixteen->getBuffer16()[8], 0xFFFF);
    Image const straight = read(tiff(16, 1, 2, words));
    ASSERT_NE(straight, nullptr);
    EXPECT_EQ(straight->getBuffer16()[0], 0x4000);
    std::string floats;
    append(floats, {0x3E800000, 0x3F000000, 0x40000000, 0x3F000000});  // 0.25, 0.5, 2 and 0.5
    Image const real = read(tiff(32, 3, 1, floats));
    ASSERT_NE(real, nullptr);
    EXPECT_EQ(real->getBuffer32()[0], 0.5F);
    EXPECT_EQ(real->getBuffer32()[1], 1);
    EXPECT_EQ(real->getBuffer32()[2], 4) << "brighter than white";
    EXPECT_EQ(real->getBuffer32()[3], 0.5F);
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
