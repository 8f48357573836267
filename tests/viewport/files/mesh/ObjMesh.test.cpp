#include "viewport/files/mesh/ObjMesh.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/viewport/files/mesh/mesh_checks.h"
#include "tests/viewport/files/mesh/mesh_texts.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

using namespace vellum;
using namespace vellum::viewport;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using Triangle = MeshData::Triangle;
using Color = Color4<float>;
using Point = Vector3<double>;

Color const DEFAULT{0.74F, 0.76F, 0.80F, 1};

/// Without any file beside it.
Result<MeshData> readAlone(std::string_view text) {
    return readObjMesh("/nowhere/at/all/a.obj", text);
}

MeshData read(std::string_view text) {
    return mesh_checks::meshOf(readAlone, text);
}

std::string faultIn(std::string_view text) {
    return mesh_checks::faultOf(readAlone(text));
}

std::string const square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

}  // namespace

// == Corners ==

TEST(ObjMesh, verticesAreTheDifferentCorners) {
    MeshData const mesh = read(square + "vt 0 0\nvt 1 1\nvn 0 0 2\nvn 0 3 0\n"
                                        "f 1/1/1 2/1/1 3/1/1\nf 1/1/1 3/1/1 4/2/1\nf 1/1/2 2/1 3//1\n");
    EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 2}, Triangle{0, 2, 3}, Triangle{4, 5, 6}));
    ASSERT_EQ(mesh.positions.size(), 7U);
    EXPECT_EQ(mesh.positions[4], (Point{0, 0, 0}));
    EXPECT_THAT(mesh.normals,
                ElementsAre(Vector3<float>{0, 0, 1}, Vector3<float>{0, 0, 1}, Vector3<float>{0, 0, 1},
                            Vector3<float>{0, 0, 1}, Vector3<float>{0, 1, 0}, Vector3<float>{0, 0, 0},
                            Vector3<float>{0, 0, 1}));
    EXPECT_EQ(mesh.textureCoordinates[3], (Vector2<float>{1, 1}));
    EXPECT_EQ(mesh.textureCoordinates[6], (Vector2<float>{0, 0}));
    EXPECT_EQ(mesh.partCount, 1U);
    EXPECT_THAT(mesh.colors, Each(DEFAULT));
}

TEST(ObjMesh, whatNoElementNamesIsLeftOut) {
    MeshData const mesh = read("v nan 7 7\nv 3.1+e2 1 x\nv 1\n" + square + "f 4 5 6\n");
    EXPECT_THAT(mesh.positions, ElementsAre(Point{0, 0, 0}, Point{1, 0, 0}, Point{1, 1, 0}));
    EXPECT_TRUE(mesh.normals.empty());
    EXPECT_TRUE(mesh.textureCoordinates.empty());
    EXPECT_THAT(mesh.notes, IsEmpty());
}

TEST(ObjMesh, negativeIndicesCountBackFromTheirLine) {
    MeshData const mesh = read(square + "f -4 -3 -2\nv 5 5 5\nf -5 -4 -1\n");
    EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 2}, Triangle{0, 1, 3}));
    EXPECT_EQ(mesh.positions[3], (Point{5, 5, 5}));
}

TEST(ObjMesh, facesMayStandBeforeTheirVertices) {
    MeshData const mesh = read("f 1/1/1 2/1/1 4/1/1\nvn 0 0 1\nvt 0.5 0.5\n" + square);
    EXPECT_THAT(mesh.positions, ElementsAre(Point{0, 0, 0}, Point{1, 0, 0}, Point{0, 1, 0}));
}

TEST(ObjMesh, aSecondIndexIsTheNormalWhereThereAreNoTextureCoordinates) {
    MeshData const mesh = read(square + "vn 0 0 1\nf 1/1 2/1 3/1\n");
    EXPECT_THAT(mesh.normals, Each(Vector3<float>{0, 0, 1}));
    EXPECT_TRUE(mesh.textureCoordinates.empty());
}

TEST(ObjMesh, polygonsAreCutInside) {
    MeshData const mesh = read("f 1 2 3 4\nv 0 0 0\nv 5 2 0\nv 10 0 0\nv 5 10 0\n");
    EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 3}, Triangle{1, 2, 3}));
    EXPECT_EQ(read(square + "v 0.5 0.5 0\nf 1 2 3 5 4\n").triangles.size(), 3U);
}

TEST(ObjMesh, linesAndPointsAreRead) {
    MeshData const mesh = read(square + "vt 0 1\nl 1 2 3\nl 4\np 4 1\nf 1 2\nf 3\n");
    EXPECT_THAT(mesh.lines, ElementsAre(MeshLine{0, 1}, MeshLine{1, 2}, MeshLine{0, 1}));
    EXPECT_THAT(mesh.points, ElementsAre(3U, 0U, 2U));
    EXPECT_TRUE(mesh.triangles.empty());
    EXPECT_EQ(mesh.partCount, 1U);
    EXPECT_EQ(read(square + "vt 0 1\nl 1/1 2/1\n").textureCoordinates[1], (Vector2<float>{0, 1}));
}

// == Numbers ==

TEST(ObjMesh, coordinatesKeepDoublePrecision) {
    EXPECT_EQ(read("v 10000000.125 -2.5E-3 +1\nv 1 0 0\nv 0 1 0\nf 1 2 3\n").positions[0],
              (Point{10000000.125, -0.0025, 1}));
}

TEST(ObjMesh, positionsAreDividedByTheirWeight) {
    EXPECT_EQ(read("v 2 4 6 2\nv 1 0 0 1\nv 0 1 0\nf 1 2 3\n").positions[0], (Point{1, 2, 3}));
    EXPECT_THAT(faultIn("v 2 4 6 0\nv 1 0 0 1\nv 0 1 0\nf 1 2 3\n"), HasSubstr("line 1: vertex 1"));
}

TEST(ObjMesh, verticesMayHaveColors) {
    MeshData const mesh =
        read("v 0 0 0\nv 1 0 0 1 0 0\nv 0 1 0 0 2 -1 0.5\nv 2 2 0 2 0 0 1 1\nf 1 2 3\nf 1 3 4\n");
    EXPECT_TRUE(mesh.hasVertexColors);
    EXPECT_THAT(mesh.colors,
                ElementsAre(DEFAULT, Color{1, 0, 0, 1}, Color{0, 1, 0, 0.5F}, Color{0, 0, 1, 1}));
    EXPECT_EQ(mesh.positions[3], (Point{1, 1, 0}));
}

TEST(ObjMesh, colorsOfWholeNumbersAboveOneAreBytes) {
    MeshData const mesh =
        read("v 0 0 0 255 0 51\nv 1 0 0 0 255 0 51\nv 0 1 0 0 0 255\nv 1 1 0\nf 1 2 3\nf 4 3 2\n");
    EXPECT_THAT(mesh.colors,
                ElementsAre(Color{1, 0, 0.2F, 1}, Color{0, 1, 0, 0.2F}, Color{0, 0, 1, 1}, DEFAULT));
    EXPECT_THAT(mesh.notes, IsEmpty());
}

TEST(ObjMesh, otherColorsAboveOneAreShownAsOne) {
    MeshData const mesh = read("v 0 0 0 2 0.5 0\nv 1 0 0 0 1 0\nv 0 1 0 1e300 -1 nan\nf 1 2 3\n");
    EXPECT_THAT(mesh.colors, ElementsAre(Color{1, 0.5F, 0, 1}, Color{0, 1, 0, 1}, Color{1, 0, 0, 1}));
    EXPECT_THAT(mesh.notes, ElementsAre("colors of vertices above 1 are shown as 1"));
}

TEST(ObjMesh, normalsWithoutADirectionAreMissing) {
    for (char const* const normal : {"0 0 0", "nan 0 1", "1e300 1e300 0", "x"}) {
        EXPECT_TRUE(read(square + "vn " + normal + "\nf 1//1 2//1 3//1\n").normals.empty()) << normal;
    }
}

// == Text ==

TEST(ObjMesh, linesMayGoOnAndEndInEveryWay) {
    std::string const plain =
        "# a comment \\\n\t v 0 0 \\\n 0\nv 1 0 0 # right\n \nv 1 1 0\nf 1\\\n 2 3 #all\ns off\nf 1 2 3\\";
    std::string windows;
    std::string mac = plain;
    for (char const character : plain) {
        windows += character == '\n' ? "\r\n" : std::string(1, character);
    }
    std::replace(mac.begin(), mac.end(), '\n', '\r');
    for (std::string const& text : {plain, windows, mac, "\xEF\xBB\xBF" + plain}) {
        MeshData const mesh = read(text);
        EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 2}, Triangle{0, 1, 2})) << text;
        EXPECT_THAT(mesh.notes, IsEmpty()) << text;
    }
}

TEST(ObjMesh, aTextMayBeUtf16) {
    std::string text("\xFF\xFE", 2);
    for (char const character : mesh_texts::triangleObj) {
        text += character;
        text += '\0';
    }
    EXPECT_EQ(read(text).triangles.size(), 1U);
}

TEST(ObjMesh, whatIsSkippedIsNoted) {
    MeshData const mesh = read(
        square + "vx 1 2\nf\nf 1 2 3\ncstype bezier\nsurf 0 1 0 1 1 2 3 4\nend\ncurv 0 1 1 2\nrubbish\nf\n"
                 "s 1\nlod 3\nmg off\nvp 1 2\n");
    EXPECT_THAT(mesh.notes,
                ElementsAre("line 6: a face without corners is skipped, and so are 1 more",
                            "line 5: a statement that OBJ does not have is skipped, and so are 1 more",
                            "its 2 curves and surfaces are not drawn, only its polygons, lines and points"));
}

TEST(ObjMesh, linesFromAVertexToItselfAreSkippedAndNoted) {
    MeshData const mesh = read(square + "vt 0 0\nvt 1 1\nl 1 1\nl 1/1 1/2 2\nf 3 3\n");
    EXPECT_EQ(mesh.lines.size(), 1U);
    EXPECT_THAT(mesh.notes,
                ElementsAre("line 7: a line from a vertex to itself is skipped, and so are 2 more"));
    Result<MeshData> const alone = readAlone(square + "l 1 1\n");
    ASSERT_TRUE(!alone.isOk() || alone.value().firstFault("")) << "nothing is left to be seen";
}

// == Parts and materials ==

TEST(ObjMesh, objectsGroupsAndMaterialsBeginParts) {
    struct Row {
        char const* text;
        unsigned int parts;
    };
    std::string const f = "f 1 2 3\n";
    for (Row const& row :
         {Row{"o a\nf 1 2 3\no b\nf 1 2 3\n", 2}, Row{"g a\nf 1 2 3\ng\nf 1 2 3\ng a\nf 1 2 3\n", 3},
          Row{"g a\ng b\nf 1 2 3\ng b\nf 1 2 3\n", 1}, Row{"o a\nf 1 2 3\no a\nf 1 2 3\n", 1},
          Row{"usemtl a\nf 1 2 3\nusemtl b\nf 1 2 3\nusemtl b\nf 1 2 3\n", 2},
          Row{"g a\nusemtl a\nusemtl b\nf 1 2 3\n", 1}, Row{"g a\nl 1 2\ng b\np 1\n", 2}, Row{"g a\n", 0}}) {
        EXPECT_EQ(read(square + row.text).partCount, row.parts) << row.text;
    }
}

TEST(ObjMesh, materialsComeFromTheirFile) {
    TemporaryFolder const folder;
    folder.write("a.mtl",
                 "newmtl red paint\nKd 1 0 0\nd 0.5\nnewmtl wood\nKd 0.5 0.5 0.5\nmap_Kd wood.png\n");
    Result<MeshData> const result = readObjMesh(
        folder.file("a.obj"), "usemtl wood\nmtllib a.mtl\nmtllib a.mtl\n" + square +
                                  "f 1 2 3\nusemtl  red paint \nf 1 2 3\nf 1 3 4\nusemtl wood\nf 1 2 3\n");
    ASSERT_EQ(mesh_checks::faultOf(result), "");
    MeshData const& mesh = result.value();
    ASSERT_EQ(mesh.materials.size(), 3U);
    EXPECT_EQ(mesh.materials[1].name, "wood");
    EXPECT_EQ(mesh.materials[1].texture, "wood.png");
    EXPECT_EQ(mesh.materials[2].opacity, 0.5F);
    EXPECT_THAT(mesh.triangleMaterials, ElementsAre(1U, 2U, 2U, 1U));
    EXPECT_EQ(mesh.triangles[3], mesh.triangles[0]);
    EXPECT_EQ(mesh.colors[mesh.triangles[1].e0], (Color{1, 0, 0, 1}));
    EXPECT_EQ(mesh.colors[mesh.triangles[0].e0], (Color{0.5F, 0.5F, 0.5F, 1}));
    EXPECT_FALSE(mesh.hasVertexColors);
    EXPECT_THAT(mesh.notes, IsEmpty());
}

TEST(ObjMesh, missingMaterialsAreNotedOnceAndDrawnInTheDefaultColor) {
    MeshData const mesh = read("mtllib gone.mtl\nmtllib gone.mtl\n" + square +
                               "usemtl a\nf 1 2 3\nusemtl b\nf 1 2 3\nusemtl a\nf 1 2 3\nusemtl c\n");
    EXPECT_THAT(mesh.notes,
                ElementsAre("material file 'gone.mtl' is not beside the file; drawn without it",
                            "material 'a' and 1 more are in no material file; drawn in the default color"));
    EXPECT_THAT(mesh.colors, Each(DEFAULT));
    EXPECT_THAT(mesh.triangleMaterials, ElementsAre(1U, 2U, 1U));
}

// == Damage ==

TEST(ObjMesh, damageIsReportedWithItsLine) {
    struct Row {
        char const* text;
        char const* fault;
    };
    for (Row const& row :
         {Row{"f 1 2 5\n", "line 5: vertex index 5 is out of range: there are 4"},
          Row{"\n# x\nf 1 2 0\n", "line 7: vertex index 0 is out of range: there are 4"},
          Row{"f 1 2 -5\n", "line 5: vertex index -5 is out of range: there are 4"},
          Row{"f 1 2 99999999999999999999\n", "out of range"},
          Row{"f 1/1 2/1 3/1\n", "line 5: texture coordinate index 1 is out of range: there are 0"},
          Row{"vn 0 0 1\nf 1//1 2//2 3//1\n", "line 6: normal index 2 is out of range: there are 1"},
          Row{"f 1 2 x\n", "line 5: 'x' is not an index"},
          Row{"f 1 2 3.5\n", "line 5: '.5' does not belong to a corner"},
          Row{"f 1 2 /3\n", "line 5: '/3' is not an index"},
          Row{"f 1///1 2 3\n", "line 5: '/1' does not belong to a corner"},
          Row{"f 1 2 -\n", "line 5: an index is missing"},
          Row{"v 1 \\\n 2 inf\nf 1 2 5\n",
              "line 5: vertex 5 has a coordinate that is not a number or infinite"},
          Row{"v 1 2\nf 1 2 5\n", "line 5: vertex 5 has a coordinate that is not a number or infinite"},
          Row{"v 1 2 1.#QNAN\nf 1 2 5\n",
              "line 5: vertex 5 has a coordinate that is not a number or infinite"}}) {
        EXPECT_THAT(faultIn(square + row.text), HasSubstr(row.fault)) << row.text;
    }
}

TEST(ObjMesh, textsWithoutElementsAreEmpty) {
    for (std::string const& text : {std::string(), std::string("\n"), square, mesh_texts::noise(3000)}) {
        Result<MeshData> const result = readAlone(text);
        EXPECT_TRUE(!result.isOk() || result.value().firstFault("")) << text;
    }
}

TEST(ObjMesh, cutsAndChangedBytesDoNoHarm) {
    std::string const text =
        square + "vt 0 0\nvn 0 0 1\ng a\nusemtl b\nf 1/1/1 2/1/1 3/1/1 4//1 -3\nl 1 2\\\n3\np -1\n";
    mesh_checks::readBeginnings(readAlone, text);
    mesh_checks::readWithChangedBytes(readAlone, text);
}

// == Pieces ==

namespace {

/// A text of several pieces that has all kinds of statements. Each line has its own random numbers.
/// \param line called with the number of each hundredth line of vertices; what it returns stands there
template <class Line>
std::string longText(Line const& line) {
    std::mt19937 random(7);
    auto const upTo = [&random](unsigned int most) { return 1 + random() % most; };
    std::string text;
    char row[96];
    for (unsigned int i = 1; i <= 9001; ++i) {
        std::snprintf(row, sizeof row, "v %.7g %.6f -%.3e%s\n", random() / 1e6, random() / 1e6,
                      random() / 1e6, i % 7 == 0 ? " 0.5 1 0.25" : "");
        text += row;
        text += i % 3 == 0 ? "vt 0." + std::to_string(random()) + " 0.5 0\n" : "";
        text += i % 4 == 0 ? "vn 0 " + std::to_string(random()) + " -1e3\n" : "";
        if (i >= 4) {
            std::string const a = std::to_string(upTo(i));
            std::string const b = "-" + std::to_string(upTo(i));
            std::string const t = std::to_string(upTo(i / 3));
            std::string const n = "-" + std::to_string(upTo(i / 4));
            text += "f " + a + "/" + t + "/" + n + " " + b + "//" + n + " " + std::to_string(i) + "/" + t;
            text += i % 5 == 0 ? "\t" + a + " \n" : "\n";
        }
        text += i % 100 == 0 ? line(i / 100) : "";
    }
    return text;
}

/// Statements that are not read in pieces, one after the other.
std::string unusual(unsigned int number) {
    static std::vector<std::string> const lines{"usemtl a\n",
                                                "g one two\n",
                                                "# v 1 2\\\n",
                                                "v 1 2 \\\n 3\n",
                                                "f 1 2 \\\n3 4\n",
                                                "l 1 2 \\\n 3\n",
                                                "p 1\n",
                                                "\n",
                                                "usemtl b\n",
                                                "v 1 2 3 2\n",
                                                "f 2 3\n",
                                                "f 1 2 3 # of it\n",
                                                "g a \\\n b\n",
                                                "f +1 2 3\n",
                                                "o an object\n",
                                                "unknown\n",
                                                "v 1 1\n",
                                                "curv 0 1\n",
                                                "f 1 2 3 9001 1\n",
                                                "l 5 5\n",
                                                "s off\n",
                                                "f 1//1 2 3/1/1\n"};
    return lines[number % lines.size()];
}

/// What a file of an old system gives, which is read statement by statement.
Result<MeshData> readSlowly(std::string const& text) {
    return readAlone(mesh_checks::withLineEnds(text, "\r"));
}

}  // namespace

TEST(ObjMesh, longTextsAreReadTheSameOnAnyNumberOfThreads) {
    std::string text = longText(unusual);
    mesh_checks::expectOnAllThreads(readAlone, text, readSlowly(text));
    mesh_checks::expectOnAllThreads(readAlone, mesh_checks::withLineEnds(text, "\r\n"), readSlowly(text));
    text.pop_back();
    mesh_checks::expectOnAllThreads(readAlone, text, readSlowly(text));
    // Normals in the second place until there are texture coordinates.
    std::string const pairs =
        "v 0 0 0\nv 1 0 0\nv 1 1 0\nvn 0 0 1\nvn 0 1 0\nf 1/1 2/2 3/-1\nvt 1 1\nvt 0 0\n";
    mesh_checks::expectOnAllThreads(readAlone, pairs + text, readSlowly(pairs + text));
}

TEST(ObjMesh, theFirstDamageOfALongTextIsToldOnAnyNumberOfThreads) {
    unsigned int place = 1;
    for (std::string const damage :
         {"f 1 2 x\n", "f 1 2 0\n", "f 1 -99999 2\n", "f 3/-77777/1 1 2\n", "f 1 2 3 \\\n 4/5/6/7\n",
          "l 0 1\n", "f 99999 1 2\n", "v nan 1 1\nf -1 1 2\n", "f 1 2/3/999999999999 3\n"}) {
        place += 9;
        SCOPED_TRACE(damage + std::to_string(place));
        std::string const text = longText([&](unsigned int number) {
            return number == place || number == place + 1 ? damage : unusual(number);
        });
        Result<MeshData> const expected = readSlowly(text);
        ASSERT_FALSE(expected.isOk());
        mesh_checks::expectOnAllThreads(readAlone, text, expected);
    }
}
