#include "viewport/files/particles/LasFile.h"

#include "tests/viewport/files/mesh/mesh_texts.h"
#include "tests/viewport/files/particles/particle_texts.h"

#include <gmock/gmock.h>

#include <cstdint>

using namespace vellum;
using namespace vellum::viewport;
using particle_texts::nobody;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Point = Vector3<double>;

template <class T>
void put(std::string& bytes, std::size_t place, T value) {
    std::string raw;
    mesh_texts::append(raw, value);
    bytes.replace(place, raw.size(), raw);
}

std::string las(unsigned int minor, unsigned int format, std::size_t recordSize,
                std::vector<std::string> const& records) {
    std::size_t const size = minor == 4 ? 375 : 227;
    std::string bytes(size, '\0');
    bytes.replace(0, 4, "LASF");
    put<std::uint8_t>(bytes, 24, 1);
    put(bytes, 25, static_cast<std::uint8_t>(minor));
    put(bytes, 94, static_cast<std::uint16_t>(size));
    put(bytes, 96, static_cast<std::uint32_t>(size));
    put(bytes, 104, static_cast<std::uint8_t>(format));
    put(bytes, 105, static_cast<std::uint16_t>(recordSize));
    if (minor == 4) {
        put(bytes, 247, static_cast<std::uint64_t>(records.size()));
    } else {
        put(bytes, 107, static_cast<std::uint32_t>(records.size()));
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        put(bytes, 131 + 8 * axis, 0.01);
        put(bytes, 155 + 8 * axis, 4'500'000.0);
    }
    for (std::string record : records) {
        record.resize(recordSize, '\0');
        bytes += record;
    }
    return bytes;
}

/// Of the older formats: place, intensity, 2 of 3 returns, class, angle.
std::string older(std::int32_t x, std::uint8_t kind) {
    std::string record(34, '\0');
    put(record, 0, x);
    put<std::int32_t>(record, 4, -200);
    put<std::int32_t>(record, 8, 300);
    put<std::uint16_t>(record, 12, 40'000);
    put<std::uint8_t>(record, 14, 2 | 3 << 3);
    put(record, 15, kind);
    put<std::int8_t>(record, 16, -15);
    put<std::uint8_t>(record, 17, 9);
    put<std::uint16_t>(record, 18, 77);
    put(record, 20, 123.5);
    put<std::uint16_t>(record, 28, 65535);
    put<std::uint16_t>(record, 32, 300);
    return record;
}

std::string faultIn(std::string const& bytes) {
    return faultOf(readLas(bytes, nobody));
}

}  // namespace

TEST(LasFile, pointsOfTheOlderFormatsAreRead) {
    std::string const bytes = las(2, 3, 36, {older(100, 2), older(200, 6 | 128)});
    ASSERT_TRUE(isLas(bytes));
    Result<LoadedFrame> const result = readLas(bytes, nobody);
    ASSERT_EQ(faultOf(result), "");
    EXPECT_EQ(result.value().warning, "");
    ParticleFrame const& frame = result.value().frame;
    ASSERT_EQ(frame.positions.size(), 2U);
    EXPECT_NEAR(frame.positions[1].x, 4'500'002, 1e-6);
    EXPECT_NEAR(frame.positions[0].y, 4'499'998, 1e-6);
    EXPECT_THAT(frame.channel("type")->values, ElementsAre(2, 6)) << "without the flags";
    EXPECT_EQ(frame.typeNames.at(2), "ground");
    EXPECT_EQ(frame.channel("intensity")->values[0], 40'000);
    EXPECT_EQ(frame.channel("return number")->values[0], 2);
    EXPECT_EQ(frame.channel("number of returns")->values[0], 3);
    EXPECT_EQ(frame.channel("scan angle")->values[0], -15);
    EXPECT_EQ(frame.channel("user data")->values[0], 9);
    EXPECT_EQ(frame.channel("point source")->values[0], 77);
    EXPECT_EQ(frame.channel("gps time")->values[0], 123.5);
    EXPECT_EQ(frame.channel("blue")->values[0], 300);
    ASSERT_TRUE(frame.colors);
    EXPECT_EQ(frame.colors->full, 65535);
}

TEST(LasFile, pointsOfTheNewerFormatsAreRead) {
    std::string record(38, '\0');
    put<std::int32_t>(record, 0, 100);
    put<std::uint16_t>(record, 12, 7);
    put<std::uint8_t>(record, 14, 5 | 6 << 4);
    put<std::uint8_t>(record, 16, 17);
    put<std::int16_t>(record, 18, -1000);
    put<std::uint16_t>(record, 20, 8);
    put(record, 22, 0.25);
    put<std::uint16_t>(record, 32, 200);
    put<std::uint16_t>(record, 36, 12);
    ParticleFrame const frame = readLas(las(4, 8, 38, {record}), nobody).value().frame;
    EXPECT_EQ(frame.channel("number of returns")->values.at(0), 6);
    EXPECT_EQ(frame.channel("type")->values.at(0), 17);
    EXPECT_NEAR(frame.channel("scan angle")->values.at(0), -6, 1e-9);
    EXPECT_EQ(frame.channel("gps time")->values.at(0), 0.25);
    EXPECT_EQ(frame.channel("green")->values.at(0), 200);
    EXPECT_EQ(frame.channel("near infrared")->values.at(0), 12);
    EXPECT_EQ(frame.colors->full, 255) << "colors of 8 bits";
}

TEST(LasFile, colorsThatAreAllZeroAreNone) {
    std::string black = older(100, 2);
    put<std::uint16_t>(black, 28, 0);
    put<std::uint16_t>(black, 32, 0);
    ParticleFrame frame = readLas(las(2, 3, 34, {black, black}), nobody).value().frame;
    EXPECT_FALSE(frame.colors);
    EXPECT_THAT(frame.notes, ElementsAre("all of its colors are 0: it is taken to have none"));
    EXPECT_NE(frame.channel("red"), nullptr) << "the numbers stay";
    frame = readLas(las(2, 3, 34, {black, older(200, 2)}), nobody).value().frame;
    EXPECT_TRUE(frame.colors) << "some point is black";
    EXPECT_TRUE(frame.notes.empty());
}

TEST(LasFile, whatCannotBeReadIsAFault) {
    EXPECT_THAT(faultIn(las(2, 128 + 3, 34, {older(1, 1)})), HasSubstr("is compressed as LAZ"));
    EXPECT_THAT(faultIn(las(2, 11, 34, {older(1, 1)})), HasSubstr("the format 11"));
    EXPECT_THAT(faultIn(las(2, 3, 33, {older(1, 1)})), HasSubstr("records of 33 bytes"));
    EXPECT_THAT(faultIn(las(5, 3, 34, {older(1, 1)})), HasSubstr("version"));
    std::string beyond = las(2, 3, 34, {older(1, 1)});
    put<std::uint32_t>(beyond, 96, 4'000'000'000);
    EXPECT_THAT(faultIn(beyond), HasSubstr("do not begin within it"));
}

TEST(LasFile, ofAFileCutOffTheCompletePointsAreGiven) {
    std::string const whole = las(2, 3, 34, {older(100, 2), older(200, 2)});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        std::vector<char> const bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        Result<LoadedFrame> const result = readLas({bytes.data(), bytes.size()}, nobody);
        EXPECT_EQ(result.isOk(), size >= 227 + 34) << size;
        if (result.isOk()) {
            EXPECT_EQ(result.value().warning, "the file is cut off: it declares 2 points and holds 1");
        }
    }
    std::string many = whole;
    put<std::uint32_t>(many, 107, 4'000'000'000);
    EXPECT_EQ(readLas(many, nobody).value().frame.positions.size(), 2U);
}

TEST(LasFile, everySingleByteMayBeWrong) {
    for (std::string const& whole : {las(2, 3, 34, {older(100, 2)}), las(4, 6, 30, {older(100, 2)})}) {
        for (std::size_t place = 4; place < whole.size(); ++place) {
            for (int const wrong : {0, 1, 127, 255}) {
                std::string damaged = whole;
                damaged[place] = static_cast<char>(wrong);
                Result<LoadedFrame> const result = readLas(damaged, nobody);
                EXPECT_TRUE(result.isOk() || !result.fault().message.empty());
            }
        }
    }
}
