#include "viewport/files/mesh/DeclaredCounts.h"

#include "tests/viewport/files/mesh/mesh_texts.h"

#include <gmock/gmock.h>

using vellum::viewport::plyFault;

namespace {

std::string faultOf(std::string const& bytes) {
    return plyFault("file", bytes).value_or(vellum::viewport::Fault()).message;
}

std::string offFaultOf(std::string const& bytes) {
    return vellum::viewport::offFault("file", bytes).value_or(vellum::viewport::Fault()).message;
}

std::string bigEndian() {
    std::string bytes = "ply\r\nformat binary_big_endian 1.0\r\nelement face 1\r\n"
                        "property list ushort int vertex_indices\r\nend_header\r\n";
    bytes += std::string("\0\2", 2) + std::string(8, '\1');
    return bytes;
}

}  // namespace

TEST(DeclaredCounts_ply, wholeFilesHaveNoFault) {
    EXPECT_EQ(faultOf(mesh_texts::trianglePly), "");
    EXPECT_EQ(faultOf(mesh_texts::binaryPly(5)), "");
    EXPECT_EQ(faultOf(bigEndian()), "");
}

TEST(DeclaredCounts_ply, everyBinaryFileCutInItsBodyIsNoticed) {
    for (std::string const& whole : {mesh_texts::binaryPly(3), bigEndian()}) {
        std::size_t const body = whole.find("end_header") + std::string("end_header\r\n").size();
        for (std::size_t size = body; size < whole.size(); ++size) {
            EXPECT_THAT(faultOf(whole.substr(0, size)), testing::HasSubstr("cut off")) << size;
        }
    }
}

TEST(DeclaredCounts_ply, textFilesThatLackValuesAreNoticed) {
    std::string const& whole = mesh_texts::trianglePly;
    std::size_t const body = whole.find("end_header\n") + 11;
    // The last value is a single digit: every cut before it leaves a value out.
    for (std::size_t size = body; size < whole.size() - 2; ++size) {
        EXPECT_THAT(faultOf(whole.substr(0, size)), testing::HasSubstr("cut off")) << size;
    }
}

TEST(DeclaredCounts_ply, theFaultSaysWhatIsMissing) {
    std::string const whole = mesh_texts::binaryPly(3);
    EXPECT_EQ(faultOf(whole.substr(0, whole.size() - 1)),
              "the file is cut off: it declares 3 of 'face' and holds 2");
}

TEST(DeclaredCounts_ply, countsBeyondAllMemoryAreNoticedAtOnce) {
    EXPECT_THAT(faultOf("ply\nformat binary_little_endian 1.0\nelement vertex 18446744073709551615\n"
                        "property double x\nend_header\n12345678"),
                testing::HasSubstr("cut off"));
    EXPECT_THAT(faultOf("ply\nformat binary_little_endian 1.0\nelement face 1\n"
                        "property list uint double x\nend_header\n\xFF\xFF\xFF\xFF 12345678"),
                testing::HasSubstr("cut off"));
    EXPECT_EQ(faultOf("ply\nformat ascii 1.0\nelement nothing 18446744073709551615\nend_header\n"), "");
}

TEST(DeclaredCounts_ply, whatItDoesNotUnderstandIsLeftToTheImporter) {
    for (std::string const& text :
         {std::string(), std::string("ply"), std::string("OFF\n"), mesh_texts::noise(500),
          std::string("ply\nformat ascii 1.0\nelement vertex many\nend_header\n"),
          std::string("ply\nformat ascii 1.0\nproperty float x\nend_header\n"),
          std::string("ply\nformat ascii 1.0\nelement v 1\nproperty quaternion x\nend_header\n"),
          std::string("ply\nformat morse 1.0\nelement v 1\nproperty float x\nend_header\n"),
          std::string("ply\nformat ascii 1.0\nelement v 1\nproperty list uchar int x\nend_header\n-3 1\n")}) {
        EXPECT_EQ(faultOf(text), "") << text;
    }
}

TEST(DeclaredCounts_off, wholeFilesHaveNoFault) {
    EXPECT_EQ(offFaultOf(mesh_texts::cubeOff), "");
    EXPECT_EQ(offFaultOf("COFF 3 1 0 # a comment\n\n# another\n0 0 0 255 0 0\n1 0 0 0 0 0\r\n0 1 0 1 1 1\n"
                         "3 0 1 2 0.5 0.5 0.5\n"),
              "");
}

TEST(DeclaredCounts_off, everyCutBeforeTheLastDigitIsNoticed) {
    std::string const& whole = mesh_texts::cubeOff;
    for (std::size_t size = whole.find('-'); size < whole.size() - 2; ++size) {
        EXPECT_NE(offFaultOf(whole.substr(0, size)), "") << size;
    }
}

TEST(DeclaredCounts_off, indicesMustNameVertices) {
    for (char const* const index : {"3", "-1", "x", "1.5", "99999999999999999999"}) {
        std::string const fault =
            offFaultOf(std::string("OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 ") + index + "\n");
        EXPECT_THAT(fault, testing::HasSubstr("out of range")) << index;
        EXPECT_THAT(fault, testing::HasSubstr(index));
    }
}

TEST(DeclaredCounts_off, countsBeyondAllMemoryAreNoticedAtOnce) {
    EXPECT_EQ(offFaultOf(mesh_texts::endlessOff),
              "the file is cut off: it declares 987654321012 of 'vertex' and holds 10");
}
