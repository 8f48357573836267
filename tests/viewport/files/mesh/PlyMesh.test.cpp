#include "viewport/files/mesh/PlyMesh.h"

#include "tests/viewport/files/mesh/mesh_checks.h"
#include "tests/viewport/files/mesh/mesh_texts.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>

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
using Place = Vector2<float>;

Color const DEFAULT{0.74F, 0.76F, 0.80F, 1};

MeshData read(std::string_view bytes) {
    return mesh_checks::meshOf(readPlyMesh, bytes);
}

std::string faultIn(std::string_view bytes) {
    return mesh_checks::faultOf(readPlyMesh(bytes));
}

/// A text with the three corners of a triangle and one face, with these properties and numbers besides.
struct Text {
    std::string comments = {};
    std::string vertexProperties = {};
    std::string vertexNumbers[3] = {};
    std::string faceProperties = {};
    std::vector<std::string> faces = {"3 0 1 2"};
    std::string otherElements = {};
    std::string otherItems = {};

    std::string text() const {
        std::string text = "ply\nformat ascii 1.0\n" + comments +
                           "element vertex 3\nproperty double x\nproperty double y\nproperty double z\n" +
                           vertexProperties + "element face " + std::to_string(faces.size()) +
                           "\nproperty list uchar int vertex_indices\n" + faceProperties + otherElements +
                           "end_header\n";
        char const* const corners[] = {"0 0 0 ", "1 0 0 ", "0 1 0 "};
        for (int i = 0; i < 3; ++i) {
            text += corners[i] + vertexNumbers[i] + "\n";
        }
        for (std::string const& face : faces) {
            text += face + "\n";
        }
        return text + otherItems;
    }
};

/// The same mesh in all three formats: two triangles, numbers of every type, an element that is not drawn,
/// and the faces before the vertices.
std::string headerOf(std::string const& format) {
    return "ply\r\nformat " + format +
           " 1.0\r\nelement face 2\r\nproperty short number\r\nproperty list ushort uint vertex_index\r\n"
           "element camera 1\r\nproperty list char double view\r\nelement vertex 4\r\nproperty double x\r\n"
           "property float y\r\nproperty int z\r\nproperty ushort red\r\nproperty ushort green\r\n"
           "property ushort blue\r\nproperty char c\r\nproperty uint u\r\nend_header\r\n";
}

std::string textOfAll() {
    return headerOf("ascii") + "-7 3 0 1 2\r\n\r\n-7 3 0 2 3\r\n2 0.5 0.25\r\n"
                               "10000000.125 0.5 -3 65535 0 0 -100 4000000000\r\n1 0 0 0 65535 0 1 2\r\n"
                               "1 1 0 0 0 65535 1 2\r\n0 1 0 0 0 0 1 2";
}

template <class T>
void append(std::string& bytes, bool isBig, T value) {
    std::string raw;
    mesh_texts::append(raw, value);
    if (isBig) {
        std::reverse(raw.begin(), raw.end());
    }
    bytes += raw;
}

std::string binaryOfAll(bool big) {
    std::string bytes = headerOf(big ? "binary_big_endian" : "binary_little_endian");
    for (std::array<std::uint32_t, 3> const& face : {std::array<std::uint32_t, 3>{0, 1, 2}, {0, 2, 3}}) {
        append<std::int16_t>(bytes, big, -7);
        append<std::uint16_t>(bytes, big, 3);
        for (std::uint32_t const index : face) {
            append(bytes, big, index);
        }
    }
    append<std::int8_t>(bytes, big, 2);
    append(bytes, big, 0.5);
    append(bytes, big, 0.25);
    struct Vertex {
        double x;
        float y;
        std::int32_t z;
        std::uint16_t color[3];
        std::int8_t c;
        std::uint32_t u;
    };
    for (Vertex const& v : {Vertex{10000000.125, 0.5F, -3, {65535, 0, 0}, -100, 4000000000U},
                            Vertex{1, 0, 0, {0, 65535, 0}, 1, 2}, Vertex{1, 1, 0, {0, 0, 65535}, 1, 2},
                            Vertex{0, 1, 0, {0, 0, 0}, 1, 2}}) {
        append(bytes, big, v.x);
        append(bytes, big, v.y);
        append(bytes, big, v.z);
        for (std::uint16_t const part : v.color) {
            append(bytes, big, part);
        }
        append(bytes, big, v.c);
        append(bytes, big, v.u);
    }
    return bytes;
}

}  // namespace

TEST(PlyMesh, textAndBothByteOrdersGiveTheSame) {
    for (std::string const& bytes : {textOfAll(), binaryOfAll(false), binaryOfAll(true)}) {
        MeshData const mesh = read(bytes);
        EXPECT_THAT(mesh.positions, ElementsAre(Point{10000000.125, 0.5, -3}, Point{1, 0, 0}, Point{1, 1, 0},
                                                Point{0, 1, 0}));
        EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 2}, Triangle{0, 2, 3}));
        EXPECT_THAT(mesh.colors,
                    ElementsAre(Color{1, 0, 0, 1}, Color{0, 1, 0, 1}, Color{0, 0, 1, 1}, Color{0, 0, 0, 1}));
        EXPECT_TRUE(mesh.hasVertexColors);
        ASSERT_EQ(mesh.scalars.size(), 3U);
        EXPECT_EQ(mesh.scalars[0].name, "c");
        EXPECT_THAT(mesh.scalars[0].values, ElementsAre(-100, 1, 1, 1));
        EXPECT_THAT(mesh.scalars[1].values, ElementsAre(4000000000.0, 2, 2, 2));
        EXPECT_EQ(mesh.scalars[2].name, "number");
        EXPECT_THAT(mesh.scalars[2].values, Each(-7)) << "what all faces share repeats no vertex";
        EXPECT_THAT(mesh.notes, ElementsAre("the element 'camera' is not drawn"));
        EXPECT_EQ(mesh.partCount, 1U);
        EXPECT_EQ(mesh.firstFault("").value_or(Fault()).message, "");
    }
}

// == Vertices ==

TEST(PlyMesh, plainVerticesHaveTheDefaultColor) {
    MeshData const mesh = read(mesh_texts::trianglePly);
    EXPECT_THAT(mesh.colors, Each(DEFAULT));
    EXPECT_FALSE(mesh.hasVertexColors);
    EXPECT_TRUE(mesh.normals.empty());
    EXPECT_TRUE(mesh.textureCoordinates.empty());
    EXPECT_THAT(mesh.scalars, IsEmpty());
    EXPECT_EQ(mesh.materials.size(), 1U);
}

TEST(PlyMesh, normalsAreOfUnitLengthOrMissing) {
    Text text{{}, "property float nx\nproperty float ny\nproperty float nz\n", {"0 0 2", "0 0 0", "nan 1 1"}};
    EXPECT_THAT(read(text.text()).normals,
                ElementsAre(Vector3<float>{0, 0, 1}, Vector3<float>{0, 0, 0}, Vector3<float>{0, 0, 0}));
    text.vertexNumbers[0] = "0 0 0";
    EXPECT_TRUE(read(text.text()).normals.empty());
}

TEST(PlyMesh, colorsAreKnownByTheirNamesAndTypes) {
    struct Row {
        char const* properties;
        char const* numbers;
        Color color;
    };
    for (Row const& row :
         {Row{"property uchar red\nproperty uchar green\nproperty uchar blue\n", "255 0 51", {1, 0, 0.2F, 1}},
          Row{"property uchar blue\nproperty uchar green\nproperty uchar red\nproperty uchar alpha\n",
              "255 0 51 0",
              {0.2F, 0, 1, 0}},
          Row{"property float red\nproperty float green\nproperty float blue\nproperty float alpha\n",
              "0.5 2 -1 0.25",
              {0.5F, 1, 0, 0.25F}},
          Row{"property float32 r\nproperty double g\nproperty float b\nproperty float a\n",
              "0.5 nan 1 1",
              {0.5F, 0, 1, 1}},
          Row{"property uchar diffuse_red\nproperty uchar diffuse_green\nproperty uchar diffuse_blue\n",
              "0 255 0",
              {0, 1, 0, 1}},
          Row{"property int Red\nproperty uint Green\nproperty int Blue\n", "255 51 0", {1, 0.2F, 0, 1}}}) {
        MeshData const mesh = read(Text{{}, row.properties, {row.numbers, row.numbers, row.numbers}}.text());
        EXPECT_THAT(mesh.colors, Each(row.color)) << row.properties;
        EXPECT_THAT(mesh.scalars, IsEmpty());
    }
    MeshData const lone = read(Text{{}, "property uchar red\n", {"1", "2", "3"}}.text());
    EXPECT_FALSE(lone.hasVertexColors);
    EXPECT_THAT(lone.scalars.at(0).values, ElementsAre(1, 2, 3));
}

TEST(PlyMesh, textureCoordinatesAreKnownByTheirNames) {
    for (char const* const names : {"u v", "s t", "texture_u texture_v", "texture_s texture_t", "tx ty"}) {
        std::string const words = names;
        std::size_t const blank = words.find(' ');
        MeshData const mesh = read(Text{
            "comment TextureFile  my wood.png \ncomment TextureFile\n",
            "property float " + words.substr(0, blank) + "\nproperty float " + words.substr(blank + 1) + "\n",
            {"0.5 1", "0 0", "nan 1"}}.text());
        EXPECT_THAT(mesh.textureCoordinates, ElementsAre(Place{0.5F, 1}, Place{0, 0}, Place{0, 0})) << names;
        ASSERT_EQ(mesh.materials.size(), 1U);
        EXPECT_EQ(mesh.materials[0].texture, "my wood.png");
        EXPECT_EQ(mesh.materials[0].tint, (Color{1, 1, 1, 1}));
    }
}

TEST(PlyMesh, threeComponentsAreNoTextureCoordinates) {
    MeshData const mesh =
        read(Text{{}, "property float u\nproperty float v\nproperty float w\n", {"1 2 3", "4 5 6", "7 8 9"}}
                 .text());
    EXPECT_TRUE(mesh.textureCoordinates.empty());
    ASSERT_EQ(mesh.scalars.size(), 3U);
    EXPECT_THAT(mesh.scalars[2].values, ElementsAre(3, 6, 9));
}

TEST(PlyMesh, otherNumbersAreScalarsAndMayBeMissing) {
    MeshData const mesh = read(
        Text{{}, "property double quality\nproperty float quality\n", {"nan 1", "-inf 2", "1e400 3"}}.text());
    ASSERT_EQ(mesh.scalars.size(), 2U);
    EXPECT_EQ(mesh.scalars[0].name, "quality");
    EXPECT_TRUE(std::isnan(mesh.scalars[0].values[0]));
    EXPECT_THAT(mesh.scalars[1].values, ElementsAre(1, 2, 3));
}

// == Faces ==

TEST(PlyMesh, facesMayHaveAnyNumberOfCorners) {
    Text text;
    text.faces = {"0", "1 0", "2 0 1", "3 0 1 2", "4 0 1 2 0"};
    EXPECT_EQ(read(text.text()).triangles.size(), 3U);
    MeshData const arrow =
        read("ply\nformat ascii 1.0\nelement vertex 4\nproperty int x\nproperty int y\nproperty int z\n"
             "element face 1\nproperty list int int vertex_index\nend_header\n"
             "0 0 0\n5 2 0\n10 0 0\n5 10 0\n4 0 1 2 3\n");
    EXPECT_THAT(arrow.triangles, ElementsAre(Triangle{0, 1, 3}, Triangle{1, 2, 3}));
}

TEST(PlyMesh, whatFacesHaveIsSpreadToTheirCorners) {
    Text text{{},
              "property float q\n",
              {"1", "2", "3"},
              "property uchar red\nproperty uchar green\nproperty uchar blue\nproperty float q\nproperty "
              "float p\n"};
    text.faces = {"3 0 1 2 255 0 0 7 nan", "3 0 2 1 0 255 0 8 0"};
    MeshData const mesh = read(text.text());
    EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 2}, Triangle{3, 4, 5}));
    EXPECT_EQ(mesh.positions[4], (Point{0, 1, 0}));
    EXPECT_EQ(mesh.colors[2], (Color{1, 0, 0, 1}));
    EXPECT_EQ(mesh.colors[3], (Color{0, 1, 0, 1}));
    EXPECT_TRUE(mesh.hasVertexColors);
    ASSERT_EQ(mesh.scalars.size(), 3U);
    EXPECT_THAT(mesh.scalars[0].values, ElementsAre(1, 2, 3, 1, 3, 2));
    EXPECT_EQ(mesh.scalars[1].name, "face q");
    EXPECT_THAT(mesh.scalars[1].values, ElementsAre(7, 7, 7, 8, 8, 8));
    EXPECT_EQ(mesh.scalars[2].name, "p");
}

TEST(PlyMesh, colorsOfVerticesOutrankThoseOfFaces) {
    std::string const colors = "property uchar red\nproperty uchar green\nproperty uchar blue\n";
    Text text{{}, colors, {"0 0 255", "0 0 255", "0 0 255"}, colors};
    text.faces = {"3 0 1 2 255 0 0"};
    MeshData const mesh = read(text.text());
    EXPECT_THAT(mesh.colors, Each(Color{0, 0, 1, 1}));
    EXPECT_THAT(mesh.notes, ElementsAre(HasSubstr("both vertices and faces have colors")));
}

TEST(PlyMesh, cornersMayHaveTextureCoordinatesOfTheirOwn) {
    Text text{"comment TextureFile a.png\ncomment TextureFile b.png\n",
              {},
              {},
              "property list uchar float texcoord\nproperty int texnumber\n"};
    text.faces = {"3 0 1 2 6 0 0 1 0 0 1 1", "3 0 2 1 6 0 0 0.5 0.5 1 0 0", "3 0 1 2 0 -1"};
    MeshData const mesh = read(text.text());
    EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 2}, Triangle{0, 3, 1}, Triangle{0, 4, 5}));
    EXPECT_THAT(mesh.textureCoordinates, ElementsAre(Place{0, 0}, Place{1, 0}, Place{0, 1}, Place{0.5F, 0.5F},
                                                     Place{0, 0}, Place{0, 0}));
    EXPECT_THAT(mesh.triangleMaterials, ElementsAre(1U, 0U, 2U));
    ASSERT_EQ(mesh.materials.size(), 3U);
    EXPECT_EQ(mesh.materials[1].texture, "b.png");
    EXPECT_EQ(mesh.materials[2].texture, "");
    text.faces = {"3 0 1 2 4 0 0 1 0 0"};
    EXPECT_EQ(faultIn(text.text()), "line 17: face 0 has 4 texture coordinates for its 3 corners");
}

TEST(PlyMesh, emptyListsOfTextureCoordinatesAreNone) {
    Text text{{}, {}, {}, "property list uchar float texcoord\n"};
    text.faces = {"3 0 1 2 0"};
    EXPECT_TRUE(read(text.text()).textureCoordinates.empty());
}

// == Strips and edges ==

TEST(PlyMesh, stripsTurnAtEveryTriangleAndBeginAgain) {
    MeshData const mesh =
        read("ply\nformat ascii 1.0\nelement vertex 5\nproperty float x\nproperty float y\nproperty float z\n"
             "element tristrips 1\nproperty list int int vertex_indices\nend_header\n"
             "0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 2 0\n12 0 1 2 3 -1 2 3 3 4 -1 4 -1\n");
    EXPECT_THAT(mesh.triangles, ElementsAre(Triangle{0, 1, 2}, Triangle{2, 1, 3}));
    EXPECT_EQ(mesh.partCount, 1U);
    EXPECT_EQ(mesh.positions.size(), 5U);
}

TEST(PlyMesh, edgesAreLines) {
    Text text;
    text.otherElements = "element edge 2\nproperty int vertex1\nproperty int vertex2\n";
    text.otherItems = "0 1\n1 2\n";
    MeshData const plain = read(text.text());
    EXPECT_THAT(plain.lines, ElementsAre(MeshLine{0, 1}, MeshLine{1, 2}));
    EXPECT_EQ(plain.positions.size(), 3U);
    text.otherItems = "0 1\n2 2\n";
    MeshData const pointless = read(text.text());
    EXPECT_THAT(pointless.lines, ElementsAre(MeshLine{0, 1}));
    EXPECT_THAT(pointless.notes, ElementsAre("an edge from a vertex to itself is skipped"));
    text.otherElements +=
        "property uchar red\nproperty uchar green\nproperty uchar blue\nproperty int weight\n";
    text.otherItems = "0 1 255 0 0 1\n1 2 0 255 0 1\n";
    text.vertexProperties = "property float q\n";
    text.vertexNumbers[0] = text.vertexNumbers[1] = text.vertexNumbers[2] = "5";
    MeshData const colored = read(text.text());
    EXPECT_THAT(colored.lines, ElementsAre(MeshLine{3, 4}, MeshLine{5, 6}));
    EXPECT_THAT(colored.colors, ElementsAre(DEFAULT, DEFAULT, DEFAULT, Color{1, 0, 0, 1}, Color{1, 0, 0, 1},
                                            Color{0, 1, 0, 1}, Color{0, 1, 0, 1}));
    EXPECT_EQ(colored.positions[5], (Point{1, 0, 0}));
    EXPECT_EQ(colored.scalars[0].values.size(), 7U);
    EXPECT_THAT(colored.notes, ElementsAre("the numbers 'weight' of the edges are skipped"));
    EXPECT_EQ(colored.firstFault("").value_or(Fault()).message, "");
}

TEST(PlyMesh, linesAndStripsFollowTheCornersThatAreSplit) {
    Text text{{}, {}, {}, "property list uchar float texcoord\nproperty int id\n"};
    text.faces = {"3 0 1 2 6 0 0 1 0 0 1 1", "3 0 1 2 6 0 0 1 0 0 1 2"};
    text.otherElements = "element edge 1\nproperty int vertex1\nproperty int vertex2\n"
                         "element tristrips 1\nproperty list int int vertex_indices\n";
    text.otherItems = "2 0\n3 2 1 0\n";
    MeshData const mesh = read(text.text());
    EXPECT_EQ(mesh.firstFault("").value_or(Fault()).message, "");
    ASSERT_EQ(mesh.triangles.size(), 3U);
    ASSERT_EQ(mesh.lines.size(), 1U);
    EXPECT_EQ(mesh.positions[mesh.lines[0].e0], (Point{0, 1, 0}));
    EXPECT_EQ(mesh.positions[mesh.triangles[2].e0], (Point{0, 1, 0}));
    EXPECT_EQ(mesh.scalars.at(0).values[mesh.triangles[1].e0], 2);
    EXPECT_TRUE(std::isnan(mesh.scalars.at(0).values[mesh.triangles[2].e0]));
}

// == Damage ==

TEST(PlyMesh, headersThatLackWhatIsNeededAreFaults) {
    std::string const start = "ply\nformat ascii 1.0\n";
    std::string const vertex = "element vertex 1\nproperty float x\nproperty float y\nproperty float z\n";
    EXPECT_EQ(faultIn("ply\n"), "the header of the PLY file is cut off or not understood");
    EXPECT_EQ(faultIn(start + "element face 0\nend_header\n"), "the PLY file has no element 'vertex'");
    EXPECT_THAT(faultIn(start + "element vertex 1\nproperty float x\nend_header\n1\n"),
                HasSubstr("x, y and z"));
    EXPECT_THAT(
        faultIn(start + vertex + "element face 1\nproperty int vertex_indices\nend_header\n0 0 0\n1\n"),
        HasSubstr("no list vertex_indices"));
    EXPECT_THAT(faultIn(start + vertex + "element edge 1\nproperty int vertex1\nend_header\n0 0 0\n1\n"),
                HasSubstr("vertex1 and vertex2"));
}

TEST(PlyMesh, facesAndEdgesOfSeveralElementsAreAFault) {
    // The second faces have colors of their own and the first have none.
    Text twice;
    twice.otherElements =
        "element face 2\nproperty list uchar int vertex_indices\nproperty uchar red\nproperty uchar green\n"
        "property uchar blue\n";
    twice.otherItems = "3 0 1 2 255 0 0\n3 0 1 2 0 255 0\n";
    EXPECT_EQ(faultIn(twice.text()), "the PLY file has more than one element 'face'");

    Text edges;
    edges.otherElements = "element edge 1\nproperty int vertex1\nproperty int vertex2\n"
                          "element edge 1\nproperty int vertex1\nproperty int vertex2\n";
    edges.otherItems = "0 1\n1 2\n";
    EXPECT_EQ(faultIn(edges.text()), "the PLY file has more than one element 'edge'");
}

TEST(PlyMesh, damageIsReportedWithItsLine) {
    Text text;
    text.faces = {"3 0 1 2", "3 0 1 3"};
    EXPECT_EQ(faultIn(text.text()), "line 14: face 1 has vertex index 3, out of range: there are 3 vertices");
    for (char const* const bad : {"-1", "1.5", "nan", "99999999999"}) {
        text.faces[1] = std::string("3 0 1 ") + bad;
        EXPECT_THAT(faultIn(text.text()), HasSubstr(std::string("line 14: face 1 has vertex index ") + bad));
    }
    text.faces[1] = "3 0 1 x";
    EXPECT_EQ(faultIn(text.text()), "line 14: 'face' 1 has 'x' in place of a number");
    text.faces[1] = "3 0 1";
    EXPECT_EQ(faultIn(text.text()), "line 14: 'face' 1 has fewer numbers than the header declares");
    text.faces[1] = "-3 0 1 2";
    EXPECT_EQ(faultIn(text.text()), "line 14: 'face' 1 has a list whose length is not a whole number");
    std::string infinite = mesh_texts::trianglePly;
    infinite.replace(infinite.find("1 0 0"), 5, "1 inf 0");
    EXPECT_EQ(faultIn(infinite), "line 11: vertex 1 has a coordinate that is not a number or infinite");
}

TEST(PlyMesh, numbersThatAreNotDeclaredAreNoted) {
    MeshData const mesh = read(Text{{}, {}, {"7 7", "", ""}}.text());
    EXPECT_EQ(mesh.triangles.size(), 1U);
    EXPECT_THAT(mesh.notes, ElementsAre("line 10: more numbers than the header declares are skipped"));
}

TEST(PlyMesh, damageOfABinaryFileIsReportedWithItsByte) {
    std::string bytes = mesh_texts::binaryPly(3);
    bytes[bytes.size() - 1] = '\x7F';
    EXPECT_EQ(faultIn(bytes), "byte " + std::to_string(bytes.size() - 13) +
                                  ": face 2 has vertex index 2130706436, out of range: there are 5 vertices");
    EXPECT_EQ(faultIn(mesh_texts::binaryPly(3).substr(0, bytes.size() - 1)),
              "the file is cut off: it declares 3 of 'face' and holds 2");
    std::string const lists =
        "ply\nformat binary_big_endian 1.0\nelement vertex 0\nproperty float x\nproperty float y\n"
        "property float z\nelement face 1\nproperty list char char vertex_indices\nend_header\n\xFF";
    EXPECT_THAT(faultIn(lists), HasSubstr("'face' 0 has a list of negative length"));
}

TEST(PlyMesh, countsBeyondTheFileTakeNoMemory) {
    for (char const* const format : {"ascii", "binary_little_endian", "binary_big_endian"}) {
        for (char const* const count : {"18446744073709551615", "4611686018427387904", "500000000"}) {
            std::string const start = std::string("ply\nformat ") + format + " 1.0\n";
            std::string const numbers = "\nproperty float x\nproperty float y\nproperty float z\n";
            EXPECT_NE(faultIn(start + "element vertex " + count + numbers + "end_header\n1 2 3\n"), "")
                << count;
            EXPECT_THAT(faultIn(start + "element vertex 0" + numbers + "element face " + count +
                                "\nproperty list uint int vertex_indices\nend_header\n0\n"),
                        HasSubstr("cut off"))
                << count;
            EXPECT_THAT(
                faultIn(start + "element vertex 0" + numbers + "element nothing " + count + "\nend_header\n"),
                "")
                << count;
        }
    }
    EXPECT_THAT(
        faultIn(std::string("ply\nformat binary_little_endian 1.0\nelement vertex 0\nproperty float x\n"
                            "property float y\nproperty float z\nelement face 1\n"
                            "property list uint double vertex_indices\nend_header\n") +
                "\xFF\xFF\xFF\xFF 12345678"),
        HasSubstr("cut off"));
}

TEST(PlyMesh, everyCutIsNoticed) {
    // The last number of the text is a single digit, so every cut before it leaves one out.
    for (std::string const& whole :
         {textOfAll(), binaryOfAll(false), binaryOfAll(true), mesh_texts::binaryPly(3)}) {
        EXPECT_EQ(mesh_checks::readBeginnings(readPlyMesh, whole), 0U);
    }
}

TEST(PlyMesh, changedBytesDoNoHarm) {
    mesh_checks::readWithChangedBytes(readPlyMesh, textOfAll());
    mesh_checks::readWithChangedBytes(readPlyMesh, binaryOfAll(false));
    Text text{"comment TextureFile a\n",
              "property float u\nproperty float v\n",
              {"0 0", "1 0", "0 1"},
              "property list uchar float texcoord\nproperty int texnumber\nproperty uchar red\nproperty "
              "uchar green\nproperty uchar blue\n"};
    text.faces = {"3 0 1 2 6 0 0 1 0 0 1 1 1 2 3", "3 0 1 2 0 -1 4 5 6"};
    text.otherElements = "element edge 1\nproperty int vertex1\nproperty int vertex2\nproperty uchar red\n"
                         "property uchar green\nproperty uchar blue\n"
                         "element tristrips 1\nproperty list int int vertex_indices\n";
    text.otherItems = "2 0 1 2 3\n4 2 1 0 2\n";
    mesh_checks::readWithChangedBytes(readPlyMesh, text.text());
}

// == Pieces ==

namespace {

/// A file of several pieces as lines, and the same file in binary numbers.
struct LongFile {
    static constexpr unsigned int VERTICES = 9001;
    static constexpr unsigned int FACES = 15001;
    static constexpr unsigned int OTHERS = 401;

    std::string textHeader;
    std::vector<std::string> lines;  // of the items
    std::string binary;

    std::string text(std::string const& lineEnd = "\n") const {
        std::string text = textHeader;
        for (std::string const& line : lines) {
            text += line + lineEnd;
        }
        return text;
    }
};

LongFile longFile() {
    std::string const elements = "element vertex " + std::to_string(LongFile::VERTICES) +
                                 "\nproperty double x\nproperty double y\nproperty double z\nproperty uchar "
                                 "red\nproperty uchar green\n"
                                 "property uchar blue\nelement note " +
                                 std::to_string(LongFile::OTHERS) +
                                 "\nproperty list uchar uchar letters\nproperty uchar length\nelement face " +
                                 std::to_string(LongFile::FACES) +
                                 "\nproperty list uchar uint vertex_indices\nend_header\n";
    LongFile file;
    file.textHeader = "ply\nformat ascii 1.0\n" + elements;
    file.binary = "ply\nformat binary_little_endian 1.0\n" + elements;
    std::mt19937 random(5);
    auto const addByte = [&](std::string& line, unsigned int value) {
        mesh_texts::append(file.binary, static_cast<std::uint8_t>(value));
        line += (line.empty() ? "" : " ") + std::to_string(value);
    };
    for (unsigned int i = 0; i < LongFile::VERTICES; ++i) {
        std::string line;
        for (int k = 0; k < 3; ++k) {
            double const value = (random() - 2e9) / (1 + random() % 1000);
            mesh_texts::append(file.binary, value);
            char number[40];
            std::snprintf(number, sizeof number, k == 1 ? "\t%.17g" : " %.17g", value);
            line += number;
        }
        for (int k = 0; k < 3; ++k) {
            addByte(line, random() % 256);
        }
        file.lines.push_back(line);
    }
    for (unsigned int i = 0; i < LongFile::OTHERS; ++i) {
        std::string line;
        addByte(line, i % 3);
        for (unsigned int k = 0; k <= i % 3; ++k) {
            addByte(line, k);
        }
        file.lines.push_back(line);
    }
    for (unsigned int i = 0; i < LongFile::FACES; ++i) {
        std::string line;
        addByte(line, 3 + i % 3);
        for (unsigned int k = 0; k < 3 + i % 3; ++k) {
            auto const index = static_cast<std::uint32_t>(random() % LongFile::VERTICES);
            mesh_texts::append(file.binary, index);
            line += " " + std::to_string(index);
        }
        file.lines.push_back(line);
    }
    return file;
}

}  // namespace

TEST(PlyMesh, longTextsAreReadTheSameOnAnyNumberOfThreads) {
    LongFile file = longFile();
    Result<MeshData> expected = readPlyMesh(file.binary);
    ASSERT_GT(file.text().size(), 900'000U);
    mesh_checks::expectOnAllThreads(readPlyMesh, file.text(), expected);
    mesh_checks::expectOnAllThreads(readPlyMesh, file.text("\r\n"), expected);
    mesh_checks::expectOnAllThreads(readPlyMesh, file.text(" \n \n\r\n"), expected);
    std::string text = file.text();
    text.pop_back();
    mesh_checks::expectOnAllThreads(readPlyMesh, text, expected);
    // The header has 15 lines.
    for (std::size_t const line : {8000U, 10000U, 20000U}) {
        file.lines[line] += " 7 words";
    }
    expected.value().notes.insert(expected.value().notes.end(),
                                  "line 8016: more numbers than the header declares are skipped");
    mesh_checks::expectOnAllThreads(readPlyMesh, file.text(), expected);
}

TEST(PlyMesh, theFirstDamageOfALongTextIsToldOnAnyNumberOfThreads) {
    LongFile const file = longFile();
    std::size_t const firstFace = LongFile::VERTICES + LongFile::OTHERS;
    struct Damage {
        std::size_t line;
        std::string text;
        std::string fault;
    };
    for (Damage const& damage :
         {Damage{0, "1 2", "line 16: 'vertex' 0 has fewer numbers than the header declares"},
          Damage{6001, "1 2 3 4 5 x", "line 6017: 'vertex' 6001 has 'x' in place of a number"},
          Damage{8999, "1 2 inf 4 5 6",
                 "line 9015: vertex 8999 has a coordinate that is not a number or infinite"},
          Damage{LongFile::VERTICES, "0.5 1 1",
                 "line 9017: 'note' 0 has a list whose length is not a whole number"},
          Damage{firstFace, "4 1 2 3", "line 9418: 'face' 0 has fewer numbers than the header declares"},
          Damage{firstFace + 12000, "3 1 2 9001",
                 "line 21418: face 12000 has vertex index 9001, out of range: there are 9001 vertices"},
          Damage{firstFace + 14900, "99999999 1 2 3",
                 "line 24419: the file is cut off: it declares 15001 of 'face' and holds 14900"}}) {
        LongFile damaged = file;
        damaged.lines[damage.line] = damage.text;
        // One behind it is not told.
        damaged.lines[damage.line + 50] = "damage";
        mesh_checks::expectOnAllThreads(readPlyMesh, damaged.text(), Fault{{}, damage.fault});
    }
    LongFile shorter = file;
    shorter.lines.pop_back();
    mesh_checks::expectOnAllThreads(
        readPlyMesh, shorter.text(),
        Fault{{}, "line 24418: the file is cut off: it declares 15001 of 'face' and holds 15000"});
}
