#include "viewport/files/mesh/StlMesh.h"

#include "foundation/basic/threads.h"
#include "tests/support/thread_limits.h"
#include "tests/viewport/files/mesh/mesh_checks.h"
#include "tests/viewport/files/mesh/mesh_texts.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

using namespace vellum;
using namespace vellum::viewport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

using Triangle = MeshData::Triangle;

Color4<float> const DEFAULT{0.74F, 0.76F, 0.80F, 1};

std::string facet(std::string const& vertices) {
    return "facet normal 0 0 1\nouter loop\n" + vertices + "endloop\nendfacet\n";
}

std::string const corners = "vertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n";

MeshData read(std::string_view bytes) {
    return mesh_checks::meshOf(readStlMesh, bytes);
}

std::string faultIn(std::string_view bytes) {
    return mesh_checks::faultOf(readStlMesh(bytes));
}

/// Three facets with these attributes, and a header that begins with the text.
std::string withAttributes(std::string const& header, std::vector<std::uint16_t> const& attributes) {
    std::string bytes = mesh_texts::binaryStl(static_cast<int>(attributes.size()));
    bytes.replace(0, header.size(), header);
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        bytes[84 + 50 * i + 48] = static_cast<char>(attributes[i] & 0xFF);
        bytes[84 + 50 * i + 49] = static_cast<char>(attributes[i] >> 8);
    }
    return bytes;
}

constexpr std::uint16_t bits(unsigned int high, unsigned int middle, unsigned int low) {
    return static_cast<std::uint16_t>(high << 10 | middle << 5 | low);
}

}  // namespace

TEST(StlMesh, binaryFacetsHaveTheirOwnVertices) {
    MeshData const mesh = read(mesh_texts::binaryStl(2));
    EXPECT_THAT(mesh.positions,
                ElementsAre(Vector3<double>{0, 0, 0}, Vector3<double>{1, 0, 0}, Vector3<double>{0, 1, 0},
                            Vector3<double>{1, 0, 0}, Vector3<double>{2, 0, 0}, Vector3<double>{1, 1, 0}));
    EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 2}, Triangle{3, 4, 5}));
    EXPECT_EQ(mesh.partCount, 1U);
    EXPECT_FALSE(mesh.hasVertexColors);
    EXPECT_THAT(mesh.colors, testing::Each(DEFAULT));
    EXPECT_TRUE(mesh.normals.empty()) << "a normal of a facet is none of a vertex";
    EXPECT_TRUE(mesh.notes.empty());
}

TEST(StlMesh, aBinaryFileMayBeginAsATextDoes) {
    std::string bytes = mesh_texts::binaryStl(3);
    bytes.replace(0, 12, "solid part\nf");
    EXPECT_EQ(read(bytes).triangles.size(), 3U);
    EXPECT_THAT(faultIn(bytes.substr(0, bytes.size() - 1)),
                "the file is cut off: it declares 3 facets and holds 2");
}

TEST(StlMesh, facetsWithTheirBitSetHaveAColor) {
    MeshData const mesh =
        read(withAttributes("", {bits(31, 0, 0), 0x8000 | bits(31, 0, 0), 0x8000 | bits(0, 31, 0)}));
    EXPECT_TRUE(mesh.hasVertexColors);
    EXPECT_EQ(mesh.colors[0], DEFAULT);
    EXPECT_EQ(mesh.colors[3], (Color4<float>{1, 0, 0, 1}));
    EXPECT_EQ(mesh.colors[5], (Color4<float>{1, 0, 0, 1}));
    EXPECT_EQ(mesh.colors[6], (Color4<float>{0, 1, 0, 1}));
}

TEST(StlMesh, attributesWithoutTheBitAreNoColors) {
    MeshData const mesh = read(withAttributes("", {1, 2, 0x7FFF}));
    EXPECT_FALSE(mesh.hasVertexColors);
    EXPECT_THAT(mesh.colors, testing::Each(DEFAULT));
}

TEST(StlMesh, aHeaderWithAColorTurnsTheBitAndTheOrderAround) {
    std::string const header("made COLOR=\xFF\x00\x00\x80", 15);
    MeshData const mesh = read(withAttributes(header, {0x8000, bits(31, 0, 0), bits(0, 0, 31)}));
    EXPECT_TRUE(mesh.hasVertexColors);
    EXPECT_EQ(mesh.colors[0], (Color4<float>{1, 0, 0, 128 / 255.0F}));
    EXPECT_EQ(mesh.colors[3], (Color4<float>{0, 0, 1, 1}));
    EXPECT_EQ(mesh.colors[6], (Color4<float>{1, 0, 0, 1}));
}

TEST(StlMesh, aHeaderWithAColorAloneColorsTheWhole) {
    std::string const header("COLOR=\x00\xFF\x00\x00", 10);
    MeshData const mesh = read(withAttributes(header, {0, 0, 0}));
    EXPECT_FALSE(mesh.hasVertexColors);
    EXPECT_THAT(mesh.colors, testing::Each(Color4<float>{0, 1, 0, 1}));
    // The key at the very end of the header has no color behind it.
    std::string const late = std::string(74, ' ') + "COLOR=";
    EXPECT_THAT(read(withAttributes(late, {0, 0, 0})).colors, testing::Each(DEFAULT));
}

TEST(StlMesh, theSolidsOfATextAreParts) {
    MeshData const mesh = read("solid facet vertex endsolid\n" + facet(corners) +
                               "endsolid one\nsolid\nendsolid\nSOLID two\r\n" +
                               "FACET NORMAL 0 0 1 OUTER LOOP VERTEX 1e7 +0.1 -2.5E-3 VERTEX 1 0 0 VERTEX 0 "
                               "1 0 ENDLOOP ENDFACET\nENDSOLID");
    EXPECT_EQ(mesh.partCount, 2U);
    EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 2}, Triangle{3, 4, 5}));
    EXPECT_EQ(mesh.positions[3], (Vector3<double>{1e7, 0.1, -2.5e-3}));
    EXPECT_THAT(mesh.colors, testing::Each(DEFAULT));
}

TEST(StlMesh, coordinatesOfATextKeepDoublePrecision) {
    MeshData const mesh =
        read("solid\n" + facet("vertex 10000000.125 0 0\nvertex 1 0 0\nvertex 0 1 0\n") + "endsolid");
    EXPECT_EQ(mesh.positions[0].x, 10000000.125);
}

TEST(StlMesh, linesMayEndWithACarriageReturnAlone) {
    std::string text = "solid a\n" + facet(corners) + facet("vertex 0 0 x\n") + "endsolid a\n";
    std::replace(text.begin(), text.end(), '\n', '\r');
    EXPECT_EQ(faultIn(text), "line 11: 'x' is not a number");
}

TEST(StlMesh, facetsWithMoreCornersAreCut) {
    MeshData const mesh =
        read("solid\n" + facet("vertex 0 0 0\nvertex 5 2 0\nvertex 10 0 0\nvertex 5 10 0\n") + "endsolid");
    EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 3}, Triangle{1, 2, 3}));
}

TEST(StlMesh, damageOfATextIsReportedWithItsLine) {
    std::string const start = "solid a\n" + facet(corners);
    EXPECT_EQ(faultIn(start), "line 9: the file is cut off before 'endsolid'");
    EXPECT_EQ(faultIn(start + "endsolid\nrubbish\n"), "line 10: 'solid' is expected and not 'rubbish'");
    EXPECT_EQ(faultIn(start + facet("vertex 0 0 nan\n")),
              "line 11: the vertex has a coordinate that is not a number or infinite");
    EXPECT_EQ(faultIn(start + facet("vertex 0 0 1,5\n")), "line 11: '1,5' is not a number");
    EXPECT_EQ(faultIn(start + facet("vertex 0 0 0\nvertex 1 1 1\n")),
              "line 13: the facet has 2 vertices, not 3");
    EXPECT_EQ(faultIn(start + "facet normal 0 0 1 vertex 1 2 3"),
              "line 9: 'outer loop' is expected and not 'vertex'");
    EXPECT_EQ(faultIn(start + "facet normal 0 0 1\nouter lop"), "line 10: 'loop' is expected and not 'lop'");
    EXPECT_EQ(faultIn(start + "facet normal 0 0"), "line 9: the file is cut off before 'outer loop'");
}

TEST(StlMesh, numbersOfABinaryFileMustBeFinite) {
    for (float const bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity()}) {
        std::string bytes = mesh_texts::binaryStl(3);
        std::string number;
        mesh_texts::append(number, bad);
        bytes.replace(84 + 50 + 12 + 16, 4, number);
        EXPECT_EQ(faultIn(bytes), "facet 1 at byte 134 has a coordinate that is not a number or infinite");
    }
}

TEST(StlMesh, theFirstDamagedFacetIsToldWhateverTheNumberOfThreads) {
    constexpr int COUNT = 70001;
    std::string const whole = mesh_texts::binaryStl(COUNT);
    std::string bytes = whole;
    float const lost = std::numeric_limits<float>::infinity();
    for (std::size_t const facet : {69999U, 40000U, 8193U, 8200U}) {
        std::memcpy(&bytes[84 + 50 * facet + 12 + 4 * 7], &lost, sizeof lost);
    }
    for (int const threads : threadLimits()) {
        setThreadLimit(threads);
        EXPECT_EQ(faultIn(bytes),
                  "facet 8193 at byte 409734 has a coordinate that is not a number or infinite");
        MeshData const mesh = read(whole);
        ASSERT_EQ(mesh.positions.size(), 3U * COUNT);
        EXPECT_EQ(mesh.triangles.back(), (Triangle{3 * COUNT - 3, 3 * COUNT - 2, 3 * COUNT - 1}));
        for (std::size_t facet = 0; facet < COUNT; ++facet) {
            float x = 0;
            std::memcpy(&x, &whole[84 + 50 * facet + 12], sizeof x);
            ASSERT_EQ(mesh.positions[3 * facet].x, x) << facet;
        }
    }
    setThreadLimit(0);
}

TEST(StlMesh, aSizeThatDoesNotFitTheNumberOfFacetsIsAFault) {
    EXPECT_EQ(faultIn(mesh_texts::binaryStl(3) + "more"),
              "the file has bytes behind its last facet: it declares 3 facets and holds 3");
    std::string huge = mesh_texts::binaryStl(1);
    huge.replace(80, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(faultIn(huge), "the file is cut off: it declares 4294967295 facets and holds 1");
    EXPECT_THAT(faultIn("so"), StartsWith("the STL file is cut off"));
    EXPECT_THAT(faultIn(""), StartsWith("the STL file is cut off"));
}

TEST(StlMesh, everyCutIsNoticed) {
    std::string const text = "solid a\n" + facet(corners) + "endsolid";
    EXPECT_EQ(mesh_checks::readBeginnings(readStlMesh, text), 0U);
    EXPECT_EQ(mesh_checks::readBeginnings(readStlMesh, mesh_texts::binaryStl(3)), 0U);
}

TEST(StlMesh, changedBytesDoNoHarm) {
    mesh_checks::readWithChangedBytes(readStlMesh, "solid a\n" + facet(corners) + "endsolid a\n");
    mesh_checks::readWithChangedBytes(readStlMesh, mesh_texts::binaryStl(3));
}

// == Pieces ==

namespace {

/// A text of several pieces, with solids of many sizes.
/// \param line called with the number of each hundredth facet; what it returns stands before it
template <class Line>
std::string longText(Line const& line) {
    std::mt19937 random(3);
    std::string text = "solid facet\n";
    char row[96];
    for (unsigned int i = 1; i <= 4001; ++i) {
        text += i % 100 == 0 ? line(i / 100) : "";
        text += i % 9 == 0 ? "FACET" : " facet normal 0 0 1";
        text += i % 11 == 0 ? " outer loop\n" : "\n\touter loop\n";
        for (unsigned int k = 0; k < (i % 13 == 0 ? 5U : 3U); ++k) {
            std::snprintf(row, sizeof row, "    vertex %.7g %.6f -%.3e\n", random() / 1e6, random() / 1e6,
                          random() / 1e6);
            text += row;
        }
        text += "  endloop\nendfacet\n";
    }
    return text + "endsolid facet\n";
}

std::string nextSolid(unsigned int number) {
    std::string const next = "endsolid of many\nsolid endsolid facet\n";
    return number % 3 == 0 ? next : number % 10 == 0 ? next + next : std::string();
}

/// What a file of an old system gives, which is read word by word.
Result<MeshData> readSlowly(std::string const& text) {
    return readStlMesh(mesh_checks::withLineEnds(text, "\r"));
}

}  // namespace

TEST(StlMesh, longTextsAreReadTheSameOnAnyNumberOfThreads) {
    std::string text = longText(nextSolid);
    ASSERT_GT(text.size(), 600'000U);
    mesh_checks::expectOnAllThreads(readStlMesh, text, readSlowly(text));
    mesh_checks::expectOnAllThreads(readStlMesh, mesh_checks::withLineEnds(text, "\r\n"), readSlowly(text));
    text.pop_back();
    mesh_checks::expectOnAllThreads(readStlMesh, text, readSlowly(text));
}

TEST(StlMesh, theFirstDamageOfALongTextIsToldOnAnyNumberOfThreads) {
    for (std::string const damage : {"facet vertex 1 2 3\n", "vertex 1 2 3\n", "endsolid\nfacet\n", "solid\n",
                                     "facet outer loop vertex 1 2 x\n", "facet outer loop vertex 1 2 inf\n",
                                     "facet outer loop vertex 1 2 3 endloop endfacet\n"}) {
        for (unsigned int const place : {2U, 39U}) {
            SCOPED_TRACE(damage + std::to_string(place));
            std::string const text = longText([&](unsigned int number) {
                return number == place || number == place + 1 ? damage : nextSolid(number);
            });
            Result<MeshData> const expected = readSlowly(text);
            ASSERT_FALSE(expected.isOk());
            mesh_checks::expectOnAllThreads(readStlMesh, text, expected);
        }
    }
    std::string const text = longText(nextSolid);
    for (std::size_t const size : {text.size() / 3, text.size() - 40}) {
        mesh_checks::expectOnAllThreads(readStlMesh, text.substr(0, size), readSlowly(text.substr(0, size)));
    }
}
