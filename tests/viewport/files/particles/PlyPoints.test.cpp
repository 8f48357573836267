#include "viewport/files/particles/PlyPoints.h"

#include "foundation/basic/threads.h"

#include "tests/viewport/files/mesh/mesh_texts.h"
#include "tests/viewport/files/particles/particle_texts.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace vellum;
using namespace vellum::viewport;
using particle_texts::nobody;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Point = Vector3<double>;

std::string headerOf(std::string const& format, std::string const& count) {
    return "ply\nformat " + format +
           " 1.0\ncomment made by hand\nelement camera 2\nproperty short a\nelement vertex " + count +
           "\nproperty double x\nproperty float y\nproperty int z\nproperty float vx\nproperty float vy\n"
           "property float vz\nproperty uchar red\nproperty char c\nproperty ushort s\nproperty uint "
           "id\nend_header\n";
}

std::string const text =
    headerOf("ascii", "2") + "7\n8\n1.5 2 -3 4 5 6 200 -100 65535 9\n2.5 3 -4 5 6 7 0 1 2 8\n";

template <class T>
void append(std::string& bytes, T const& value, bool const& isBigEndian) {
    std::string raw;
    mesh_texts::append(raw, value);
    if (isBigEndian) {
        std::reverse(raw.begin(), raw.end());
    }
    bytes += raw;
}

std::string binary(bool const& big) {
    std::string bytes = headerOf(big ? "binary_big_endian" : "binary_little_endian", "2");
    append<std::int16_t>(bytes, 7, big);
    append<std::int16_t>(bytes, 8, big);
    for (int i = 0; i < 2; ++i) {
        append(bytes, 1.5 + i, big);
        append(bytes, 2.0F + static_cast<float>(i), big);
        append<std::int32_t>(bytes, -3 - i, big);
        for (int axis = 0; axis < 3; ++axis) {
            append(bytes, static_cast<float>(4 + i + axis), big);
        }
        append(bytes, static_cast<std::uint8_t>(i == 0 ? 200 : 0), big);
        append(bytes, static_cast<std::int8_t>(i == 0 ? -100 : 1), big);
        append(bytes, static_cast<std::uint16_t>(i == 0 ? 65535 : 2), big);
        append(bytes, static_cast<std::uint32_t>(9 - i), big);
    }
    return bytes;
}

std::string faultIn(std::string const& bytes) {
    return faultOf(readPlyPoints(bytes, nobody));
}

}  // namespace

TEST(PlyPoints, textAndBothByteOrdersGiveTheSame) {
    for (std::string const& bytes : {text, binary(false), binary(true)}) {
        Result<LoadedFrame> const result = readPlyPoints(bytes, nobody);
        ASSERT_EQ(faultOf(result), "");
        EXPECT_EQ(result.value().warning, "");
        ParticleFrame const& frame = result.value().frame;
        EXPECT_THAT(frame.positions, ElementsAre(Point{2.5, 3, -4}, Point{1.5, 2, -3}));
        EXPECT_THAT(velocitiesOf(frame), ElementsAre(Point{5, 6, 7}, Point{4, 5, 6}));
        ASSERT_EQ(frame.channels.size(), 7U);
        EXPECT_THAT(frame.channel("red")->values, ElementsAre(0, 200));
        EXPECT_THAT(frame.channel("c")->values, ElementsAre(1, -100));
        EXPECT_THAT(frame.channel("s")->values, ElementsAre(2, 65535));
        EXPECT_THAT(frame.channel("id")->values, ElementsAre(8, 9));
    }
}

TEST(PlyPoints, theTypeOfColorsTellsTheBrightest) {
    struct Row {
        char const* type;
        char const* value;
        double full;
    };
    for (Row const& row :
         {Row{"uchar", "1", 255}, {"ushort", "1", 65535}, {"float", "1", 1}, {"float", "90", 255}}) {
        std::string bytes = "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float "
                            "y\nproperty float z\n";
        for (char const* const name : {"red", "green", "blue"}) {
            bytes += std::string("property ") + row.type + " " + name + "\n";
        }
        Result<LoadedFrame> const result =
            readPlyPoints(bytes + "end_header\n0 0 0 0 0 " + row.value + "\n", nobody);
        ASSERT_EQ(faultOf(result), "");
        ASSERT_TRUE(result.value().frame.colors);
        EXPECT_EQ(result.value().frame.colors->full, row.full) << row.type << row.value;
    }
}

TEST(PlyPoints, meshesAreNoParticles) {
    EXPECT_EQ(faultIn(mesh_texts::trianglePly), "has faces: it is a mesh, not particles");
    EXPECT_EQ(faultIn(mesh_texts::binaryPly(3)), "has faces: it is a mesh, not particles");
}

TEST(PlyPoints, headersThatLackWhatIsNeededAreFaults) {
    std::string const start = "ply\nformat binary_little_endian 1.0\n";
    EXPECT_EQ(faultIn("ply\n"), "the header of the PLY file is cut off or not understood");
    EXPECT_EQ(faultIn(start + "element point 1\nproperty float x\nend_header\n1234"),
              "the PLY file has no element 'vertex'");
    EXPECT_THAT(faultIn(start + "element vertex 1\nproperty float x\nend_header\n1234"),
                HasSubstr("x, y and z"));
    EXPECT_THAT(faultIn(start + "element vertex 0\nend_header\n"), HasSubstr("x, y and z"));
    EXPECT_THAT(faultIn(start + "element vertex 1\nproperty list uchar int x\nend_header\n"),
                HasSubstr("lists"));
    EXPECT_THAT(faultIn(start +
                        "element camera 1\nproperty list uchar int a\nelement vertex 0\nproperty float x\n"
                        "property float y\nproperty float z\nend_header\n"),
                HasSubstr("'camera' before the vertices has lists"));
}

TEST(PlyPoints, countsBeyondTheFileTakeNoMemory) {
    for (char const* const format : {"ascii", "binary_little_endian", "binary_big_endian"}) {
        for (char const* const count : {"18446744073709551615", "4611686018427387904", "99999999999"}) {
            EXPECT_THAT(faultIn(headerOf(format, count) + "1\n2\n1 2 3"), HasSubstr("cut off"))
                << format << count;
        }
    }
    EXPECT_THAT(faultIn("ply\nformat ascii 1.0\nelement nothing 18446744073709551615\nelement vertex 1\n"
                        "property float x\nproperty float y\nproperty float z\nend_header\n1 2 x\n"),
                HasSubstr("line 9: 'x' in column 'z'"));
}

TEST(PlyPoints, damageOfTextIsReportedWithItsLine) {
    EXPECT_EQ(faultIn(headerOf("ascii", "1") + "7\n8\n1 2 3 4 5 6 7 8 9 0.5\n"),
              "line 20: the particle's id is not a whole number");
    EXPECT_EQ(faultIn(headerOf("ascii", "1") + "7\n8\n1 2 3 4 5 6 red 8 9 1\n"),
              "line 20: 'red' in column 'red' is not a number");
    EXPECT_EQ(faultIn(headerOf("ascii", "2") + "7\n8\n1 2 3 4 5 6 7 8 9 1\n"),
              "line 20: the text ends after 1 of 2 particles; the file is cut off");
}

TEST(PlyPoints, everyCutIsNoticed) {
    for (std::string const& whole : {text, binary(false), binary(true)}) {
        for (std::size_t size = 0; size < whole.size(); ++size) {
            std::vector<char> const bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            Result<LoadedFrame> const result = readPlyPoints({bytes.data(), bytes.size()}, nobody);
            EXPECT_FALSE(result.isOk() && result.value().warning.empty()) << size;
        }
    }
}

TEST(PlyPoints, everySingleByteMayBeWrong) {
    for (std::string const& whole : {text, binary(false), binary(true)}) {
        for (std::size_t place = 0; place < whole.size(); ++place) {
            for (char const wrong : {'\0', '\n', ' ', '9', '\x7F', '\xFF'}) {
                std::string damaged = whole;
                damaged[place] = wrong;
                Result<LoadedFrame> const result = readPlyPoints(damaged, nobody);
                EXPECT_TRUE(result.isOk() || !result.fault().message.empty());
            }
        }
    }
}

TEST(PlyPoints, manyVerticesAreTheSameOnAnyNumberOfThreads) {
    // Of several steps of the loop over all cores, the last one not full.
    constexpr std::uint32_t count = 530'001;
    for (bool const isBig : {false, true}) {
        std::string bytes =
            std::string("ply\nformat ") + (isBig ? "binary_big_endian" : "binary_little_endian") +
            " 1.0\nelement vertex " + std::to_string(count) +
            "\nproperty float x\nproperty double y\nproperty short z\nproperty double id\nend_header\n";
        std::size_t const body = bytes.size();
        for (std::uint32_t i = 0; i < count; ++i) {
            append(bytes, 0.1F * static_cast<float>(i), isBig);
            append(bytes, 0.1 * i, isBig);
            append(bytes, static_cast<std::int16_t>(i), isBig);
            append(bytes, static_cast<double>(i), isBig);
        }
        for (int const threads : {1, 3}) {
            setThreadLimit(threads);
            Result<LoadedFrame> const result = readPlyPoints(bytes, nobody);
            ASSERT_EQ(faultOf(result), "");
            ParticleFrame const& frame = result.value().frame;
            ASSERT_EQ(frame.positions.size(), count);
            for (std::uint32_t i = 0; i < count; ++i) {
                Point const expected{static_cast<double>(0.1F * static_cast<float>(i)), 0.1 * i,
                                     static_cast<double>(static_cast<std::int16_t>(i))};
                ASSERT_EQ(frame.positions[i], expected) << i;
                ASSERT_EQ(frame.channels[0].values[i], i);
            }
        }
        for (std::uint32_t const wrong : {count - 1, 529'000U, 70'000U}) {
            std::string id;
            append(id, 0.5, isBig);
            bytes.replace(body + wrong * std::size_t(22) + 14, id.size(), id);
            for (int const threads : {1, 3}) {
                setThreadLimit(threads);
                EXPECT_EQ(faultIn(bytes),
                          "the id of vertex " + std::to_string(wrong) + " is not a whole number");
            }
        }
        setThreadLimit(0);
    }
}
