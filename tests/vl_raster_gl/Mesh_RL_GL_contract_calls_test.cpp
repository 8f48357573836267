#include "Mesh_RL_GL.h"

#include "Core_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/raster/Mesh_RL_Shader.h"
#include "gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

// The mesh renderer call by call: what each operation asks of OpenGL, in its order, what the buffers hold, and
// what the marks and segments of the overlays are. The mesh of most tests is as irregular as a mesh can be: no
// two of its numbers are the same, and normals are shared in another way than positions.

namespace vellum {

namespace {

using gl_spy::as;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Texts = std::vector<std::string>;
using Triangle = Tuple3<unsigned int>;
using Point = std::array<double, 3>;

constexpr unsigned int POINTS = 0;
constexpr unsigned int LINES = 1;
constexpr unsigned int TRIANGLES = 4;
constexpr unsigned int QUADS = 7;
constexpr unsigned int BORDER = 0xFFFFFFFFU;
constexpr char ARRAY[] = "GL_ARRAY_BUFFER";
constexpr char ELEMENTS[] = "GL_ELEMENT_ARRAY_BUFFER";

// Single-precision constants in double arithmetic.
constexpr double THIRD = 0.3333333432674408;
constexpr double W45 = 0.44999998807907104;
constexpr double W10 = 0.10000000149011612;
constexpr double W70 = 0.699999988079071;
constexpr double W30 = 0.30000001192092896;

Texts joined(std::initializer_list<Texts> lists) {
    Texts all;
    for (Texts const& list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}

std::string call(std::string const& name, std::string const& arguments) {
    return name + "(" + arguments + ")";
}

std::string binding(std::string const& target, unsigned int name) {
    return call("glBindBuffer", target + ", " + std::to_string(name));
}

Texts writing(std::string const& target) {
    return {call("glMapBuffer", target + ", GL_WRITE_ONLY"), call("glUnmapBuffer", target),
            binding(target, 0)};
}

/// A buffer that did not exist is made and written.
Texts made(unsigned int name, std::size_t bytes, std::string const& target = ARRAY) {
    return joined({{"glGenBuffers(1, pointer)", binding(target, name),
                    call("glBufferData", target + ", " + std::to_string(bytes) + ", null, GL_DYNAMIC_DRAW")},
                   writing(target)});
}

std::string deleted(unsigned int name) {
    return call("glDeleteBuffers", "1, {" + std::to_string(name) + "}");
}

/// A buffer of another size takes the place of an old one.
Texts replaced(unsigned int old, unsigned int name, std::size_t bytes, std::string const& target = ARRAY) {
    return joined({{deleted(old)}, made(name, bytes, target)});
}

/// A buffer is written in place.
Texts rewritten(unsigned int name, std::string const& target = ARRAY) {
    return joined({{binding(target, name)}, writing(target)});
}

Point operator+(Point const& a, Point const& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
Point operator*(double s, Point const& a) {
    return {s * a[0], s * a[1], s * a[2]};
}
Point pointOf(Vector3<double> const& v) {
    return {v.x, v.y, v.z};
}
Point pointOf(Vector3<float> const& v) {
    return {v.x, v.y, v.z};
}
Point pointOf(Color4<float> const& v) {
    return {v.r, v.g, v.b};
}

unsigned int corner(Triangle const& t, unsigned int k) {
    return k == 0 ? t.e0 : k == 1 ? t.e1 : t.e2;
}

bool isModified(ArrayId const& id) {
    return (VL_ArrayServer.resolve(id)->flags & ARRAY_TYPEABLE_MODIFIED_CONTROL_0) != 0;
}

/// Positions of the primitive in the order in which they were sent.
std::vector<Point> positionsOf(gl_spy::Primitive const& primitive) {
    std::vector<Point> points;
    for (gl_spy::Vertex const& vertex : primitive.vertices)
        points.push_back(vertex.position);
    return points;
}

std::vector<Point> normalsOf(gl_spy::Primitive const& primitive) {
    std::vector<Point> normals;
    for (gl_spy::Vertex const& vertex : primitive.vertices)
        normals.push_back(vertex.normal);
    return normals;
}

gl_spy::Primitive onlyPrimitive(gl_spy::Recording const& recording) {
    std::vector<gl_spy::Primitive> const primitives = recording.primitives();
    EXPECT_EQ(primitives.size(), 1U);
    return primitives.size() == 1 ? primitives.front() : gl_spy::Primitive{};
}

/// The names of the calls that describe vertices, without the suffix of their argument types.
Texts stemsOf(gl_spy::Recording const& recording) {
    Texts stems;
    for (gl_spy::Call const& c : recording.calls()) {
        for (char const* stem : {"glNormal", "glTexCoord", "glVertex"}) {
            if (c.name.compare(0, std::string(stem).size(), stem) == 0)
                stems.emplace_back(stem);
        }
    }
    return stems;
}

Texts repeated(Texts const& part, std::size_t times) {
    Texts all;
    for (std::size_t i = 0; i < times; ++i)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// Two triangles that share one edge. Their vertex normals are listed in another order than the positions, and
/// one position belongs to no triangle.
struct Data {
    Array<Vector3<double>> positions{
        {0.1, 0.2, 0.3}, {1.25, 0.7, -0.4}, {0.9, 2.1, 0.6}, {3.3, 2.7, 1.1}, {9, 8, 7}};
    Array<Triangle> triangles{{0, 1, 2}, {2, 1, 3}};
    Array<Vector3<float>> vertexNormals{
        {0.5F, 0, 1}, {0, 0.25F, 1}, {0.125F, 0.5F, 1}, {-0.5F, 0, 1}, {0, -0.25F, 1}};
    Array<Triangle> normalTriangles{{4, 3, 2}, {1, 0, 2}};
    Array<Color4<float>> faceNormals{{0.5F, 0.25F, 2, 77}, {-0.75F, 1.5F, 4, 88}};
    // Edge 1 of the first triangle is edge 0 of the second.
    Array<Triangle> adjacency{{BORDER, 1 * 4 + 1, BORDER}, {0 * 4 + 2, BORDER, BORDER}};

    void fill(Mesh& mesh) const {
        mesh.setPositions(positions);
        mesh.setTriangles(triangles);
        mesh.setVertexNormals(vertexNormals);
        mesh.setNormalTriangles(normalTriangles);
        mesh.setFaceNormals(faceNormals);
        mesh.setAdjacency(adjacency);
    }

    Point p(unsigned int t, unsigned int k) const { return pointOf(positions[corner(triangles[t], k)]); }
    Point n(unsigned int t, unsigned int k) const {
        return pointOf(vertexNormals[corner(normalTriangles[t], k)]);
    }

    std::vector<float> soupOfPositions() const {
        std::vector<float> soup;
        for (unsigned int t = 0; t < triangles.size(); ++t) {
            for (unsigned int k = 0; k < 3; ++k) {
                for (double const& component : p(t, k))
                    soup.push_back(static_cast<float>(component));
            }
        }
        return soup;
    }
    std::vector<float> soupOfVertexNormals() const {
        std::vector<float> soup;
        for (unsigned int t = 0; t < triangles.size(); ++t) {
            for (unsigned int k = 0; k < 3; ++k) {
                for (double const& component : n(t, k))
                    soup.push_back(static_cast<float>(component));
            }
        }
        return soup;
    }
    std::vector<float> soupOfFaceNormals() const {
        std::vector<float> soup;
        for (unsigned int t = 0; t < triangles.size(); ++t) {
            for (unsigned int k = 0; k < 3; ++k) {
                for (double const& component : pointOf(faceNormals[t]))
                    soup.push_back(static_cast<float>(component));
            }
        }
        return soup;
    }
    std::vector<Point> corners() const { return {p(0, 0), p(0, 1), p(0, 2), p(1, 0), p(1, 1), p(1, 2)}; }
    std::vector<Point> cornerNormals() const {
        return {n(0, 0), n(0, 1), n(0, 2), n(1, 0), n(1, 1), n(1, 2)};
    }
};

/// Coordinates of the five positions.
Array<Vector2<float>> const PER_POSITION{
    {0.5F, 0.25F}, {0.75F, 0.125F}, {0.375F, 1}, {2, 3}, {0.0625F, 0.875F}};
std::vector<float> const PER_POSITION_SOUP{0.5F,   0.25F, 0.75F, 0.125F, 0.375F, 1,
                                           0.375F, 1,     0.75F, 0.125F, 2,      3};

/// Coordinates with triangles of their own.
Array<Vector2<float>> const INDEXED{{10, 11}, {12, 13}, {14, 15}, {16, 17}};
Array<Triangle> const COORDINATE_TRIANGLES{{3, 2, 1}, {0, 0, 3}};
std::vector<float> const INDEXED_SOUP{16, 17, 14, 15, 12, 13, 10, 11, 10, 11, 16, 17};

// The buffers' names: the recording OpenGL counts up from 1, and they are made in this order.
constexpr unsigned int POSITIONS = 1;
constexpr unsigned int SMOOTH = 2;
constexpr unsigned int FACETED = 3;

constexpr std::size_t THREE_FLOATS = std::size_t{2} * 3 * 3 * 4;  // bytes for two triangles
constexpr std::size_t TWO_FLOATS = std::size_t{2} * 3 * 2 * 4;

class Mesh_RL_GL_contract_calls_test : public testing::Test {
protected:
    void SetUp() override {
        data.fill(mesh);
        renderer = std::make_unique<Mesh_RL_GL>(&mesh, false);
    }

    void useBuffers() { renderer->useBufferObjects = true; }

    void addPerVertex(char const* name) {
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, name, PER_POSITION);
    }
    void addIndexed(char const* name) {
        mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, name, INDEXED);
        mesh.addNamedArray(MeshArrayInf_ns::TRINDEXED, name, COORDINATE_TRIANGLES);
    }

    /// The calls of one update of the buffers.
    Texts update(char const* channel = nullptr, bool withEdges = false) {
        gl_spy::Recording const recording;
        if (channel != nullptr) {
            VL_String const name(channel);
            renderer->createBufferObjects(&name, withEdges);
        } else {
            renderer->createBufferObjects(nullptr, withEdges);
        }
        return recording.texts();
    }

    std::vector<float> contents(unsigned int name) const { return as<float>(driver.bufferContents(name)); }
    std::vector<unsigned int> indices(unsigned int name) const {
        return as<unsigned int>(driver.bufferContents(name));
    }

    /// The edges, as pairs of corners of the soup, that the index buffer holds.
    std::multiset<std::pair<unsigned int, unsigned int>> edgesIn(unsigned int name) const {
        std::multiset<std::pair<unsigned int, unsigned int>> edges;
        std::vector<unsigned int> const all = indices(name);
        for (std::size_t i = 0; i + 1 < all.size(); i += 2)
            edges.insert({all[i], all[i + 1]});
        return edges;
    }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
    Data data;
    Mesh mesh;
    std::unique_ptr<Mesh_RL_GL> renderer;
};

// == Life ==

TEST_F(Mesh_RL_GL_contract_calls_test, aNewRendererHasNoEffectAndMakesNoCall) {
    gl_spy::Recording const recording;
    Mesh_RL_GL const plain(&mesh, false);

    EXPECT_EQ(plain.mesh, &mesh);
    EXPECT_EQ(plain.shader, nullptr);
    EXPECT_FALSE(plain.useBufferObjects);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Mesh_RL_GL_contract_calls_test, deliberatelyTheConstructorsSecondArgumentIsIgnored) {
    Mesh_RL_GL const asked(&mesh, true);
    EXPECT_FALSE(asked.useBufferObjects);
}

TEST_F(Mesh_RL_GL_contract_calls_test, destroyingARendererWithoutBuffersDeletesNone) {
    gl_spy::Recording const recording;
    renderer->render();
    renderer->renderEdges();
    renderer.reset();
    EXPECT_EQ(recording.count("glDeleteBuffers"), 0U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, destroyingARendererDeletesItsBuffersInOrder) {
    addPerVertex("map");
    update("map", true);
    gl_spy::Recording const recording;
    renderer.reset();
    EXPECT_THAT(recording.texts(), ElementsAre(deleted(1), deleted(2), deleted(3), deleted(4), deleted(5)));
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, destroyingARendererDeletesOnlyTheBuffersThatExist) {
    update(nullptr, false);
    gl_spy::Recording const recording;
    renderer.reset();
    EXPECT_THAT(recording.texts(), ElementsAre(deleted(1), deleted(2), deleted(3)));
}

// == Buffers: first filling ==

TEST_F(Mesh_RL_GL_contract_calls_test, theFirstUpdateMakesPositionsSmoothAndFacetedNormals) {
    EXPECT_EQ(update(), joined({made(POSITIONS, THREE_FLOATS), made(SMOOTH, THREE_FLOATS),
                                made(FACETED, THREE_FLOATS)}));

    EXPECT_EQ(contents(POSITIONS), data.soupOfPositions());
    EXPECT_EQ(contents(SMOOTH), data.soupOfVertexNormals());
    EXPECT_EQ(contents(FACETED), data.soupOfFaceNormals());
}

TEST_F(Mesh_RL_GL_contract_calls_test, theFirstUpdateWithAChannelAndEdgesMakesAllFive) {
    addPerVertex("map");
    // Six lines: two borders of each triangle, and the shared edge from both sides.
    std::size_t const edgeBytes = std::size_t{6} * 2 * 4;
    EXPECT_EQ(update("map", true),
              joined({made(POSITIONS, THREE_FLOATS), made(SMOOTH, THREE_FLOATS), made(FACETED, THREE_FLOATS),
                      made(4, TWO_FLOATS), made(5, edgeBytes, ELEMENTS)}));
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
}

TEST_F(Mesh_RL_GL_contract_calls_test, theFirstFillingDoesNotAskForModifiedArrays) {
    // Another renderer of the same mesh has consumed the bits.
    update();
    Mesh_RL_GL second(&mesh, false);
    second.createBufferObjects(nullptr, false);
    EXPECT_EQ(contents(4), data.soupOfPositions());
    EXPECT_EQ(contents(5), data.soupOfVertexNormals());
    EXPECT_EQ(contents(6), data.soupOfFaceNormals());
}

TEST_F(Mesh_RL_GL_contract_calls_test, positionsAreNarrowedToTheNearestFloat) {
    data.positions[0] = {1.0 / 3.0, 16777217.0, 1e300};
    mesh.setPositions(data.positions);
    update();
    std::vector<float> const soup = contents(POSITIONS);
    EXPECT_EQ(soup[0], static_cast<float>(1.0 / 3.0));
    EXPECT_EQ(soup[1], 16777216.0F);
    EXPECT_EQ(soup[2], std::numeric_limits<float>::infinity());
}

TEST_F(Mesh_RL_GL_contract_calls_test, anUpdateClearsTheModifiedBitsOfWhatItHasConsumed) {
    addIndexed("map");
    for (ArrayId const& id : {mesh.positions(), mesh.triangles(), mesh.vertexNormals(),
                              mesh.normalTriangles(), mesh.faceNormals()})
        EXPECT_TRUE(isModified(id));
    update("map");
    for (ArrayId const& id :
         {mesh.positions(), mesh.triangles(), mesh.vertexNormals(), mesh.normalTriangles(),
          mesh.faceNormals(), mesh.namedArray(MeshArrayInf_ns::PER_FACE, "map"),
          mesh.namedArray(MeshArrayInf_ns::TRINDEXED, "map")})
        EXPECT_FALSE(isModified(id));
}

TEST_F(Mesh_RL_GL_contract_calls_test, anUpdateLeavesTheOtherReadersBitsAlone) {
    ArrayTypeable* const positions = VL_ArrayServer.resolve(mesh.positions());
    positions->flags |= ARRAY_TYPEABLE_MODIFIED_CONTROL_1 | ARRAY_TYPEABLE_MODIFIED_CONTROL_2;
    update();
    EXPECT_EQ(positions->flags & ARRAY_TYPEABLE_MODIFIED_CONTROL_MASK,
              ARRAY_TYPEABLE_MODIFIED_CONTROL_1 | ARRAY_TYPEABLE_MODIFIED_CONTROL_2);
}

TEST_F(Mesh_RL_GL_contract_calls_test, aMeshWithoutTrianglesHasBuffersOfNoBytesAndWritesNothing) {
    Mesh empty;
    Mesh_RL_GL emptyRenderer(&empty, false);
    VL_String const channel("map");
    gl_spy::Recording const recording;
    emptyRenderer.createBufferObjects(&channel, true);

    EXPECT_EQ(recording.count("glMapBuffer"), 0U);
    EXPECT_EQ(recording.count("glGenBuffers"), 5U);
    for (gl_spy::Call const& c : recording.named("glBufferData"))
        EXPECT_EQ(c.numbers.at(0), 0) << c.text();
    EXPECT_EQ(recording.count("glBufferData"), 5U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, aMeshWithoutTrianglesIsDrawnAsNoCorners) {
    Mesh empty;
    Mesh_RL_GL emptyRenderer(&empty, false);
    emptyRenderer.useBufferObjects = true;
    gl_spy::Recording const recording;
    emptyRenderer.render();
    emptyRenderer.renderFaceted();
    emptyRenderer.renderEdges();
    for (gl_spy::Call const& c : recording.named("glDrawArrays"))
        EXPECT_EQ(c.text(), "glDrawArrays(GL_TRIANGLES, 0, 0)");
}

// == Buffers: refilling ==

TEST_F(Mesh_RL_GL_contract_calls_test, updatingTwiceWithoutEditsFillsOnce) {
    addPerVertex("map");
    update("map", true);
    EXPECT_THAT(update("map", true), IsEmpty());
    EXPECT_THAT(update(nullptr, false), IsEmpty());
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedPositionsRewriteThePositionsAlone) {
    update();
    data.positions[3] = {-1, -2, -3};
    *(VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>() + 3) = data.positions[3];
    mesh.markModified(mesh.positions());

    EXPECT_EQ(update(), rewritten(POSITIONS));
    EXPECT_EQ(contents(POSITIONS), data.soupOfPositions());
    EXPECT_FALSE(isModified(mesh.positions()));
}

TEST_F(Mesh_RL_GL_contract_calls_test, anEditWithoutItsModifiedBitIsNotSeen) {
    update();
    VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>()[3] = {-1, -2, -3};
    EXPECT_THAT(update(), IsEmpty());
    EXPECT_EQ(contents(POSITIONS), data.soupOfPositions());
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedTrianglesRewriteThePositionsAlone) {
    update();
    data.triangles[0] = {4, 2, 1};
    mesh.setTriangles(data.triangles);
    EXPECT_EQ(update(), rewritten(POSITIONS));
    EXPECT_EQ(contents(POSITIONS), data.soupOfPositions());
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedVertexNormalsRewriteTheSmoothNormalsAlone) {
    update();
    data.vertexNormals[4] = {7, 8, 9};
    mesh.setVertexNormals(data.vertexNormals);
    EXPECT_EQ(update(), rewritten(SMOOTH));
    EXPECT_EQ(contents(SMOOTH), data.soupOfVertexNormals());
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedNormalTrianglesRewriteTheSmoothNormalsAlone) {
    update();
    data.normalTriangles[1] = {4, 4, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(update(), rewritten(SMOOTH));
    EXPECT_EQ(contents(SMOOTH), data.soupOfVertexNormals());
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedFaceNormalsRewriteTheFacetedNormalsAlone) {
    update();
    data.faceNormals[1] = {7, 8, 9, 0};
    mesh.setFaceNormals(data.faceNormals);
    EXPECT_EQ(update(), rewritten(FACETED));
    EXPECT_EQ(contents(FACETED), data.soupOfFaceNormals());
}

TEST_F(Mesh_RL_GL_contract_calls_test, anotherTriangleCountReallocatesAllBuffersTogether) {
    update();
    // Only the arrays that must follow the count are set: the positions and vertex normals carry no bit.
    data.triangles = {{0, 1, 2}};
    data.normalTriangles = {{4, 3, 2}};
    data.faceNormals = {{1, 2, 3, 4}};
    mesh.setTriangles(data.triangles);
    mesh.setNormalTriangles(data.normalTriangles);
    mesh.setFaceNormals(data.faceNormals);
    mesh.setAdjacency({{BORDER, BORDER, BORDER}});

    EXPECT_EQ(update(), joined({replaced(1, 4, 36), replaced(2, 5, 36), replaced(3, 6, 36)}));
    EXPECT_EQ(contents(4), data.soupOfPositions());
    EXPECT_EQ(contents(5), data.soupOfVertexNormals());
    EXPECT_EQ(contents(6), data.soupOfFaceNormals());
    EXPECT_THAT(update(), IsEmpty()) << "the new count is the one to compare with";
}

TEST_F(Mesh_RL_GL_contract_calls_test, anotherTriangleCountReallocatesTheCoordinatesToo) {
    addPerVertex("map");
    update("map");
    mesh.setTriangles({{0, 1, 2}});
    mesh.setNormalTriangles({{4, 3, 2}});
    mesh.setFaceNormals({{1, 2, 3, 4}});
    mesh.setAdjacency({{BORDER, BORDER, BORDER}});
    EXPECT_EQ(update("map"),
              joined({replaced(1, 5, 36), replaced(2, 6, 36), replaced(3, 7, 36), replaced(4, 8, 24)}));
    EXPECT_EQ(contents(8), (std::vector<float>{0.5F, 0.25F, 0.75F, 0.125F, 0.375F, 1}));
}

TEST_F(Mesh_RL_GL_contract_calls_test, coordinatesOfAnOldTriangleCountAreNeverDrawnFrom) {
    addPerVertex("map");
    update("map");
    mesh.setTriangles({{0, 1, 2}, {2, 1, 3}, {1, 4, 3}});
    mesh.setNormalTriangles({{4, 3, 2}, {1, 0, 2}, {0, 0, 0}});
    mesh.setFaceNormals({{1, 2, 3, 4}, {1, 2, 3, 4}, {1, 2, 3, 4}});
    mesh.setAdjacency({{BORDER, BORDER, BORDER}, {BORDER, BORDER, BORDER}, {BORDER, BORDER, BORDER}});
    update();  // takes the new count without looking at the coordinates
    Texts const calls = update("map");
    EXPECT_THAT(calls, testing::Contains("glBufferData(GL_ARRAY_BUFFER, 72, null, GL_DYNAMIC_DRAW)"));
    EXPECT_EQ(driver.liveObjects(), 4U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, aMapThatFailsSkipsTheWritingAndLeavesNothingBound) {
    gl_spy::Script broken;
    broken.nullMap();
    addPerVertex("map");
    update("map", true);
    for (unsigned int name = 1; name <= 5; ++name) {
        for (unsigned char const& byte : driver.bufferContents(name))
            EXPECT_EQ(byte, 0xA5);
    }
    EXPECT_THAT(gl_spy::bufferContents(0x8892), IsEmpty());  // GL_ARRAY_BUFFER
    EXPECT_THAT(gl_spy::bufferContents(0x8893), IsEmpty());  // GL_ELEMENT_ARRAY_BUFFER
}

// == Buffers: texture coordinates ==

TEST_F(Mesh_RL_GL_contract_calls_test, anotherChannelRefillsTheCoordinatesAlone) {
    addPerVertex("map");
    addIndexed("other");
    update("map");
    EXPECT_EQ(update("other"), rewritten(4));
    EXPECT_EQ(contents(4), INDEXED_SOUP);
    EXPECT_EQ(update("map"), rewritten(4)) << "back again";
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
}

TEST_F(Mesh_RL_GL_contract_calls_test, theChannelIsComparedByItsText) {
    addPerVertex("map");
    update("map");
    EXPECT_THAT(update("map"), IsEmpty()) << "another string with the same text";
    EXPECT_EQ(update("Map"), rewritten(4));
}

TEST_F(Mesh_RL_GL_contract_calls_test, aNullChannelLeavesTheCoordinatesAlone) {
    addPerVertex("map");
    update("map");
    mesh.markModified(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "map"));
    EXPECT_THAT(update(nullptr), IsEmpty());
    EXPECT_EQ(update("map"), rewritten(4)) << "the bit has waited";
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedCoordinatesRefillTheChannel) {
    addPerVertex("map");
    update("map");
    ArrayId const id = mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "map");
    VL_ArrayServer.resolve(id)->as<Vector2<float>>()[0] = {42, 43};
    mesh.markModified(id);
    EXPECT_EQ(update("map"), rewritten(4));
    EXPECT_EQ(contents(4).at(0), 42);
    EXPECT_EQ(contents(4).at(1), 43);
    EXPECT_FALSE(isModified(id));
}

TEST_F(Mesh_RL_GL_contract_calls_test, eachArrayOfAnIndexedChannelRefillsIt) {
    addIndexed("map");
    update("map");
    for (unsigned int const bits : {MeshArrayInf_ns::PER_FACE, MeshArrayInf_ns::TRINDEXED}) {
        mesh.markModified(mesh.namedArray(bits, "map"));
        EXPECT_EQ(update("map"), rewritten(4)) << bits;
        EXPECT_FALSE(isModified(mesh.namedArray(bits, "map")));
    }
}

TEST_F(Mesh_RL_GL_contract_calls_test, theChannelsOwnTrianglesComeBeforeThePositions) {
    addPerVertex("map");
    addIndexed("map");
    update("map");
    EXPECT_EQ(contents(4), INDEXED_SOUP);
}

TEST_F(Mesh_RL_GL_contract_calls_test, ownTrianglesWithoutValuesAreNoChannel) {
    addPerVertex("map");
    mesh.addNamedArray(MeshArrayInf_ns::TRINDEXED, "map", COORDINATE_TRIANGLES);
    update("map");
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
}

TEST_F(Mesh_RL_GL_contract_calls_test, aChannelsBitsMustBeExactUnderTheSearchMask) {
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX | MeshArrayInf_ns::UV, "map", PER_POSITION);
    update("map");
    EXPECT_EQ(driver.bufferContents(4), std::vector<unsigned char>(TWO_FLOATS, 0xA5));

    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX | MeshArrayInf_ns::ATTACHED_TO_LIFECYCLE, "owned",
                       PER_POSITION);
    update("owned");
    EXPECT_EQ(contents(4), PER_POSITION_SOUP) << "the state bit is not searched for";
}

TEST_F(Mesh_RL_GL_contract_calls_test, deliberatelyAMissingChannelMapsItsBufferAndWritesNothing) {
    EXPECT_EQ(update("missing"), joined({made(POSITIONS, THREE_FLOATS), made(SMOOTH, THREE_FLOATS),
                                         made(FACETED, THREE_FLOATS), made(4, TWO_FLOATS)}));
    EXPECT_EQ(driver.bufferContents(4), std::vector<unsigned char>(TWO_FLOATS, 0xA5));
    EXPECT_THAT(update("missing"), IsEmpty());
}

// == Buffers: edges ==

TEST_F(Mesh_RL_GL_contract_calls_test, theIndexBufferHoldsCornersOfTheSoup) {
    update(nullptr, true);
    // Each border once, the crease from both sides; corner k of triangle t is 3t + k.
    std::multiset<std::pair<unsigned int, unsigned int>> const expected{{0, 1}, {1, 2}, {2, 0},
                                                                        {3, 4}, {4, 5}, {5, 3}};
    EXPECT_EQ(edgesIn(4), expected);
}

TEST_F(Mesh_RL_GL_contract_calls_test, aSmoothEdgeIsNoneOfTheIndices) {
    // The second triangle has the first one's normals at the shared corners.
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    update(nullptr, true);
    std::multiset<std::pair<unsigned int, unsigned int>> const expected{{0, 1}, {2, 0}, {4, 5}, {5, 3}};
    EXPECT_EQ(edgesIn(4), expected);
}

TEST_F(Mesh_RL_GL_contract_calls_test, anotherNumberOfEdgesReallocatesTheIndexBuffer) {
    update(nullptr, true);
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(update(nullptr, true), joined({rewritten(SMOOTH), replaced(4, 5, 32, ELEMENTS)}));
}

TEST_F(Mesh_RL_GL_contract_calls_test, theSameNumberOfEdgesRewritesTheIndexBuffer) {
    update(nullptr, true);
    data.vertexNormals[0] = {3, 2, 1};
    mesh.setVertexNormals(data.vertexNormals);
    EXPECT_EQ(update(nullptr, true), joined({rewritten(SMOOTH), rewritten(4, ELEMENTS)}));
}

TEST_F(Mesh_RL_GL_contract_calls_test, edgesFollowAnEditThatAnotherDrawingHasConsumed) {
    update(nullptr, true);
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    update();  // clears the bit, and does not ask for edges
    EXPECT_EQ(update(nullptr, true), replaced(4, 5, 32, ELEMENTS));
}

TEST_F(Mesh_RL_GL_contract_calls_test, modifiedAdjacencyRewritesTheIndexBufferAlone) {
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    update(nullptr, true);
    mesh.setAdjacency({{BORDER, BORDER, BORDER}, {BORDER, BORDER, BORDER}});
    EXPECT_EQ(update(nullptr, true), replaced(4, 5, 48, ELEMENTS));
}

// == Drawing from buffers ==

class Mesh_RL_GL_contract_buffers_calls_test : public Mesh_RL_GL_contract_calls_test {
protected:
    void SetUp() override {
        Mesh_RL_GL_contract_calls_test::SetUp();
        addPerVertex("map");
        update("map", true);  // 1 to 5
        useBuffers();
    }

    template <class Drawing>
    Texts callsOf(Drawing const& draw) {
        gl_spy::Recording const recording;
        draw();
        return recording.texts();
    }
};

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, renderDrawsPositionsWithSmoothNormals) {
    EXPECT_THAT(callsOf([&] { renderer->render(); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            binding(ARRAY, SMOOTH), "glNormalPointer(GL_FLOAT, 0, null)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            "glDrawArrays(GL_TRIANGLES, 0, 6)", binding(ARRAY, 0),
                            "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, renderFacetedDrawsPositionsWithFacetedNormals) {
    EXPECT_THAT(callsOf([&] { renderer->renderFaceted(); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            binding(ARRAY, FACETED), "glNormalPointer(GL_FLOAT, 0, null)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            "glDrawArrays(GL_TRIANGLES, 0, 6)", binding(ARRAY, 0),
                            "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, renderTexturedAddsTheCoordinates) {
    EXPECT_THAT(callsOf([&] { renderer->renderTextured("map"); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            "glEnableClientState(GL_TEXTURE_COORD_ARRAY)", binding(ARRAY, 4),
                            "glTexCoordPointer(2, GL_FLOAT, 0, null)", binding(ARRAY, SMOOTH),
                            "glNormalPointer(GL_FLOAT, 0, null)", binding(ARRAY, POSITIONS),
                            "glVertexPointer(3, GL_FLOAT, 0, null)", "glDrawArrays(GL_TRIANGLES, 0, 6)",
                            binding(ARRAY, 0), "glDisableClientState(GL_TEXTURE_COORD_ARRAY)",
                            "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, renderFacetedTexturedAddsTheCoordinates) {
    EXPECT_THAT(callsOf([&] { renderer->renderFacetedTextured("map"); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            "glEnableClientState(GL_TEXTURE_COORD_ARRAY)", binding(ARRAY, 4),
                            "glTexCoordPointer(2, GL_FLOAT, 0, null)", binding(ARRAY, FACETED),
                            "glNormalPointer(GL_FLOAT, 0, null)", binding(ARRAY, POSITIONS),
                            "glVertexPointer(3, GL_FLOAT, 0, null)", "glDrawArrays(GL_TRIANGLES, 0, 6)",
                            binding(ARRAY, 0), "glDisableClientState(GL_TEXTURE_COORD_ARRAY)",
                            "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, deliberatelyPointsOfBuffersAreTheCornersOfTheSoup) {
    layer.setPointSize(2);
    EXPECT_THAT(callsOf([&] { renderer->renderPoints(5); }),
                ElementsAre("glPointSize(5)", "glEnableClientState(GL_VERTEX_ARRAY)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            "glDrawArrays(GL_POINTS, 0, 6)", binding(ARRAY, 0),
                            "glDisableClientState(GL_VERTEX_ARRAY)", "glPointSize(2)"));
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, renderEdgesDrawsTheIndexedLines) {
    EXPECT_THAT(callsOf([&] { renderer->renderEdges(); }),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            binding(ARRAY, SMOOTH), "glNormalPointer(GL_FLOAT, 0, null)",
                            binding(ARRAY, POSITIONS), "glVertexPointer(3, GL_FLOAT, 0, null)",
                            binding(ELEMENTS, 5), "glDrawElements(GL_LINES, 12, GL_UNSIGNED_INT, null)",
                            binding(ELEMENTS, 0), binding(ARRAY, 0), "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, eachDrawingBringsTheBuffersUpToDateFirst) {
    VL_String const channel("map");
    std::vector<std::pair<char const*, std::function<void()>>> const drawings{
        {"render", [&] { renderer->render(); }},
        {"renderFaceted", [&] { renderer->renderFaceted(); }},
        {"renderTextured", [&] { renderer->renderTextured(channel); }},
        {"renderFacetedTextured", [&] { renderer->renderFacetedTextured(channel); }},
        {"renderEdges", [&] { renderer->renderEdges(); }}};
    for (auto const& drawing : drawings) {
        mesh.markModified(mesh.positions());
        Texts const calls = callsOf(drawing.second);
        Texts const update = rewritten(POSITIONS);
        ASSERT_GE(calls.size(), update.size()) << drawing.first;
        EXPECT_THAT(Texts(calls.begin(), calls.begin() + 4), ElementsAreArray(update)) << drawing.first;
    }
    mesh.markModified(mesh.positions());
    Texts const points = callsOf([&] { renderer->renderPoints(3); });
    EXPECT_THAT(Texts(points.begin() + 1, points.begin() + 5), ElementsAreArray(rewritten(POSITIONS)));
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, theDrawingsAskForTheirOwnChannel) {
    addIndexed("other");
    renderer->renderFacetedTextured("other");
    EXPECT_EQ(contents(4), INDEXED_SOUP);
    renderer->renderTextured("map");
    EXPECT_EQ(contents(4), PER_POSITION_SOUP);
}

TEST_F(Mesh_RL_GL_contract_buffers_calls_test, onlyTheEdgesAskForTheIndexBuffer) {
    Mesh_RL_GL other(&mesh, false);
    other.useBufferObjects = true;
    gl_spy::Recording const recording;
    other.render();
    other.renderFaceted();
    other.renderTextured("map");
    other.renderFacetedTextured("map");
    other.renderPoints(1);
    EXPECT_EQ(recording.count("glGenBuffers"), 4U);
    other.renderEdges();
    EXPECT_EQ(recording.count("glGenBuffers"), 5U);
}

// == Drawing in immediate mode ==

TEST_F(Mesh_RL_GL_contract_calls_test, renderSendsNormalAndPositionOfEachCorner) {
    gl_spy::Recording const recording;
    renderer->render();
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, TRIANGLES);
    EXPECT_EQ(positionsOf(primitive), data.corners());
    EXPECT_EQ(normalsOf(primitive), data.cornerNormals());
    EXPECT_EQ(stemsOf(recording), repeated({"glNormal", "glVertex"}, 6));
    EXPECT_EQ(recording.calls().size(), 2U + 12U) << "nothing but the block";
}

TEST_F(Mesh_RL_GL_contract_calls_test, renderFacetedSendsTheNormalOncePerTriangle) {
    gl_spy::Recording const recording;
    renderer->renderFaceted();
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    Point const f0 = pointOf(data.faceNormals[0]);
    Point const f1 = pointOf(data.faceNormals[1]);
    EXPECT_EQ(primitive.mode, TRIANGLES);
    EXPECT_EQ(positionsOf(primitive), data.corners());
    EXPECT_EQ(normalsOf(primitive), (std::vector<Point>{f0, f0, f0, f1, f1, f1}));
    EXPECT_EQ(stemsOf(recording), repeated({"glNormal", "glVertex", "glVertex", "glVertex"}, 2));
    EXPECT_EQ(recording.calls().size(), 2U + 8U);
}

std::vector<float> coordinatesOf(gl_spy::Primitive const& primitive) {
    std::vector<float> coordinates;
    for (gl_spy::Vertex const& vertex : primitive.vertices) {
        coordinates.push_back(static_cast<float>(vertex.textureCoordinate[0]));
        coordinates.push_back(static_cast<float>(vertex.textureCoordinate[1]));
    }
    return coordinates;
}

TEST_F(Mesh_RL_GL_contract_calls_test, renderTexturedSendsNormalCoordinateAndPosition) {
    addPerVertex("map");
    gl_spy::Recording const recording;
    renderer->renderTextured("map");
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, TRIANGLES);
    EXPECT_EQ(positionsOf(primitive), data.corners());
    EXPECT_EQ(normalsOf(primitive), data.cornerNormals());
    EXPECT_EQ(coordinatesOf(primitive), PER_POSITION_SOUP);
    EXPECT_EQ(stemsOf(recording), repeated({"glNormal", "glTexCoord", "glVertex"}, 6));
    EXPECT_EQ(recording.calls().size(), 2U + 18U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, renderFacetedTexturedSendsTheFaceNormalAtEachCorner) {
    addIndexed("map");
    gl_spy::Recording const recording;
    renderer->renderFacetedTextured("map");
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    Point const f0 = pointOf(data.faceNormals[0]);
    Point const f1 = pointOf(data.faceNormals[1]);
    EXPECT_EQ(positionsOf(primitive), data.corners());
    EXPECT_EQ(normalsOf(primitive), (std::vector<Point>{f0, f0, f0, f1, f1, f1}));
    EXPECT_EQ(coordinatesOf(primitive), INDEXED_SOUP);
    EXPECT_EQ(stemsOf(recording), repeated({"glNormal", "glTexCoord", "glVertex"}, 6));
}

TEST_F(Mesh_RL_GL_contract_calls_test, aMissingChannelHasTheCoordinateZeroEverywhere) {
    mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, "map", INDEXED);  // values that nothing names
    for (bool const isFaceted : {false, true}) {
        gl_spy::Recording const recording;
        if (isFaceted)
            renderer->renderFacetedTextured("map");
        else
            renderer->renderTextured("map");
        EXPECT_EQ(coordinatesOf(onlyPrimitive(recording)), std::vector<float>(12, 0.0F));
        EXPECT_EQ(stemsOf(recording), repeated({"glNormal", "glTexCoord", "glVertex"}, 6));
    }
}

TEST_F(Mesh_RL_GL_contract_calls_test, inImmediateModeTooOwnTrianglesComeFirst) {
    addPerVertex("map");
    addIndexed("map");
    gl_spy::Recording const recording;
    renderer->renderTextured("map");
    EXPECT_EQ(coordinatesOf(onlyPrimitive(recording)), INDEXED_SOUP);
}

TEST_F(Mesh_RL_GL_contract_calls_test, aTexturedDrawingGivesTheArraysBack) {
    addIndexed("map");
    ArrayTypeable const* const values =
        VL_ArrayServer.resolve(mesh.namedArray(MeshArrayInf_ns::PER_FACE, "map"));
    unsigned int const references = values->references;
    unsigned int const handles = VL_ArrayServer.handleCount();
    renderer->renderTextured("map");
    renderer->renderFacetedTextured("map");
    EXPECT_EQ(values->references, references);
    EXPECT_EQ(VL_ArrayServer.handleCount(), handles);
}

TEST_F(Mesh_RL_GL_contract_calls_test, pointsInImmediateModeAreAllPositionsOnce) {
    layer.setPointSize(2);
    gl_spy::Recording const recording;
    renderer->renderPoints(7);
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, POINTS);
    std::vector<Point> all;
    for (Vector3<double> const& p : data.positions)
        all.push_back(pointOf(p));
    EXPECT_EQ(positionsOf(primitive), all);
    Texts const texts = recording.texts();
    EXPECT_EQ(texts.front(), "glPointSize(7)");
    EXPECT_EQ(texts.back(), "glPointSize(2)");
    EXPECT_EQ(texts.size(), 2U + 2U + 5U);
    EXPECT_EQ(layer.currentPointSize(), 2);
}

TEST_F(Mesh_RL_GL_contract_calls_test, immediateModeTouchesNoBufferAndNoModifiedBit) {
    addPerVertex("map");
    gl_spy::Recording const recording;
    renderer->render();
    renderer->renderFaceted();
    renderer->renderTextured("map");
    renderer->renderFacetedTextured("map");
    renderer->renderPoints(1);
    renderer->renderEdges();
    for (gl_spy::Call const& c : recording.calls()) {
        EXPECT_EQ(c.name.find("Buffer"), std::string::npos) << c.text();
        EXPECT_EQ(c.name.find("ClientState"), std::string::npos) << c.text();
    }
    EXPECT_TRUE(isModified(mesh.positions()));
    EXPECT_TRUE(isModified(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "map")));
}

// == Shading requests ==

/// Notes which drawings a request comes to, among the calls of OpenGL.
class Tracing_renderer : public Mesh_RL_GL {
public:
    using Mesh_RL_GL::Mesh_RL_GL;
    using Mesh_RL_GL::render;

    void render() override { note("render"); }
    void renderFaceted() const override { note("renderFaceted"); }
    void renderTextured(VL_String const& channel) override {
        note(std::string("renderTextured ") + channel.c_str());
    }
    void renderFacetedTextured(VL_String const& channel) override {
        note(std::string("renderFacetedTextured ") + channel.c_str());
    }

    void note(std::string const& event) const {
        while (seen < recording->calls().size())
            trace.push_back(recording->calls()[seen++].text());
        trace.push_back(event);
    }
    Texts const& ended() const {
        note("end");
        trace.pop_back();
        return trace;
    }

    gl_spy::Recording const* recording = nullptr;
    mutable std::size_t seen = 0;
    mutable Texts trace;
};

class Tracing_effect : public Mesh_RL_Shader {
public:
    explicit Tracing_effect(Tracing_renderer const& renderer) : target(renderer) {}
    void create() override {
        target.note("create");
        created = true;
    }
    void init() override { target.note("init"); }
    void preprocess() override { target.note("preprocess"); }
    void postprocess() override { target.note("postprocess"); }
    void cleanup() override { target.note("cleanup"); }

private:
    Tracing_renderer const& target;
};

constexpr unsigned int TEXTURE = MeshShadingFlags_ns::TEXTURE;
constexpr unsigned int BACK = MeshShadingFlags_ns::WIREFRAME_BACK_FACES;
constexpr unsigned int EFFECT = MeshShadingFlags_ns::GPU_SHADER;

char const backLines[] = "glPolygonMode(GL_BACK, GL_LINE)";
char const backFill[] = "glPolygonMode(GL_BACK, GL_FILL)";
char const frontLines[] = "glPolygonMode(GL_FRONT, GL_LINE)";
char const frontFill[] = "glPolygonMode(GL_FRONT, GL_FILL)";

class Mesh_RL_GL_contract_requests_calls_test : public Mesh_RL_GL_contract_calls_test {
protected:
    Texts request(unsigned int mode, unsigned int flags, Mesh_RL_Shader* effect = nullptr) {
        gl_spy::Recording const recording;
        tracing.recording = &recording;
        tracing.seen = 0;
        tracing.trace.clear();
        tracing.shader = effect;
        MeshShading shading;
        shading.mode = mode;
        shading.flags = flags;
        shading.textureChannel = "map";
        tracing.render(shading);
        Texts const trace = tracing.ended();
        tracing.recording = nullptr;
        return trace;
    }

    Tracing_renderer tracing{&mesh, false};
};

TEST_F(Mesh_RL_GL_contract_requests_calls_test, theWireframeIsTheSurfaceInLines) {
    for (unsigned int const flags : {0U, TEXTURE, BACK}) {
        EXPECT_THAT(request(1, flags), ElementsAre(backLines, frontLines, "render", frontFill, backFill))
            << flags;
    }
}

TEST_F(Mesh_RL_GL_contract_requests_calls_test, theFacetedModeIsFilled) {
    EXPECT_THAT(request(2, 0), ElementsAre(backFill, frontFill, "renderFaceted", frontFill, backFill));
    EXPECT_THAT(request(2, TEXTURE),
                ElementsAre(backFill, frontFill, "renderFacetedTextured map", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_contract_requests_calls_test, theFacetedModeWithBackFacesInLines) {
    EXPECT_THAT(request(2, BACK), ElementsAre(backLines, frontFill, "renderFaceted", frontFill, backFill));
    EXPECT_THAT(request(2, BACK | TEXTURE),
                ElementsAre(backLines, frontFill, "renderFacetedTextured map", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_contract_requests_calls_test, theSmoothModeIsFilled) {
    EXPECT_THAT(request(3, 0), ElementsAre(backFill, frontFill, "render", frontFill, backFill));
    EXPECT_THAT(request(3, TEXTURE),
                ElementsAre(backFill, frontFill, "renderTextured map", frontFill, backFill));
    EXPECT_THAT(request(3, BACK), ElementsAre(backLines, frontFill, "render", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_contract_requests_calls_test, theStateBeforeTheRequestComesBack) {
    layer.pushFillingFront(FILLING_LINES);
    layer.pushFillingBack(FILLING_LINES);
    EXPECT_THAT(request(3, 0), ElementsAre(backFill, frontFill, "render", frontLines, backLines));
    EXPECT_EQ(layer.currentFillingFront(), FILLING_LINES);
    EXPECT_EQ(layer.currentFillingBack(), FILLING_LINES);
}

TEST_F(Mesh_RL_GL_contract_requests_calls_test, deliberatelyAModeAboveThreeDrawsNothingAndPopsBothFillings) {
    for (unsigned int const mode : {4U, 5U, 0xFFFFFFFFU}) {
        layer.pushFillingBack(FILLING_LINES);
        layer.pushFillingFront(FILLING_LINES);
        EXPECT_THAT(request(mode, 0), ElementsAre(frontFill, backFill)) << mode;
        EXPECT_EQ(layer.currentFillingFront(), FILLING_SOLID) << "what the caller has pushed is gone";
        EXPECT_EQ(layer.currentFillingBack(), FILLING_SOLID);
    }
}

TEST_F(Mesh_RL_GL_contract_requests_calls_test, anEffectIsMadeAndSurroundsTheDrawing) {
    Tracing_effect effect(tracing);
    EXPECT_THAT(request(3, EFFECT, &effect),
                ElementsAre("create", "init", "preprocess", backFill, frontFill, "render", "postprocess",
                            "cleanup", frontFill, backFill));
    EXPECT_THAT(request(2, EFFECT | TEXTURE, &effect),
                ElementsAre("init", "preprocess", backFill, frontFill, "renderFacetedTextured map",
                            "postprocess", "cleanup", frontFill, backFill))
        << "it is made once";
}

TEST_F(Mesh_RL_GL_contract_requests_calls_test, anEffectSurroundsEveryMode) {
    Tracing_effect effect(tracing);
    effect.created = true;
    EXPECT_THAT(request(1, EFFECT, &effect),
                ElementsAre("init", "preprocess", backLines, frontLines, "render", "postprocess", "cleanup",
                            frontFill, backFill));
    EXPECT_THAT(request(4, EFFECT, &effect),
                ElementsAre("init", "preprocess", "postprocess", "cleanup", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_contract_requests_calls_test, withoutItsFlagAnEffectIsNotAsked) {
    Tracing_effect effect(tracing);
    EXPECT_THAT(request(3, 0, &effect), ElementsAre(backFill, frontFill, "render", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_contract_requests_calls_test, theFlagWithoutAnEffectDrawsPlainly) {
    EXPECT_THAT(request(3, EFFECT), ElementsAre(backFill, frontFill, "render", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_contract_calls_test, theBoxIsSixQuadsInLines) {
    MeshShading box;
    box.mode = MeshShadingMode_ns::BOX;
    ASSERT_EQ(mesh.flags() & MESH_GOT_BOX, 0U);
    gl_spy::Recording const recording;
    renderer->render(box);

    EXPECT_EQ(mesh.flags() & MESH_GOT_BOX, MESH_GOT_BOX);
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, QUADS);
    ASSERT_EQ(primitive.vertices.size(), 24U);
    std::set<Point> corners;
    for (gl_spy::Vertex const& vertex : primitive.vertices)
        corners.insert(vertex.position);
    EXPECT_EQ(corners.size(), 8U);
    // The smallest and the largest coordinates of all positions, also of the one that no triangle uses.
    EXPECT_EQ(*corners.begin(), (Point{double(0.1F), double(0.2F), double(-0.4F)}));
    EXPECT_EQ(*corners.rbegin(), (Point{9, 8, 7}));
    Texts const texts = recording.texts();
    EXPECT_THAT(Texts(texts.begin(), texts.begin() + 3),
                ElementsAre(backLines, frontLines, "glBegin(GL_QUADS)"));
    EXPECT_THAT(Texts(texts.end() - 3, texts.end()), ElementsAre("glEnd()", frontFill, backFill));
}

TEST_F(Mesh_RL_GL_contract_calls_test, theBoxIsComputedOnce) {
    MeshShading box;
    box.mode = MeshShadingMode_ns::BOX;
    renderer->render(box);
    // The writer has left the mesh's flag alone, so the box counts as valid.
    VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>()[4] = {100, 100, 100};
    gl_spy::Recording const recording;
    renderer->render(box);
    for (gl_spy::Vertex const& vertex : onlyPrimitive(recording).vertices)
        EXPECT_LT(vertex.position[0], 10);
}

TEST_F(Mesh_RL_GL_contract_calls_test, theBoxTouchesNoBuffer) {
    useBuffers();
    MeshShading box;
    box.mode = MeshShadingMode_ns::BOX;
    gl_spy::Recording const recording;
    renderer->render(box);
    EXPECT_EQ(recording.count("glGenBuffers"), 0U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, theBoxGoesThroughTheLayersOwnBox) {
    struct Box_layer : Core_RL_GL {
        using Core_RL_GL::render;
        void render(Box3<float> const& box, bool const& wire) const override {
            boxes.push_back(box);
            wires.push_back(wire);
        }
        mutable std::vector<Box3<float>> boxes;
        mutable std::vector<bool> wires;
    };
    Box_layer const own;
    MeshShading box;
    box.mode = MeshShadingMode_ns::BOX;
    renderer->render(box);
    VL_Raster = &layer;
    ASSERT_EQ(own.boxes.size(), 1U);
    EXPECT_FALSE(own.wires[0]);
    EXPECT_EQ(own.boxes[0].max.x, 9);
}

TEST_F(Mesh_RL_GL_contract_calls_test, noRequestBindsATexture) {
    addPerVertex("map");
    for (bool const hasBuffers : {false, true}) {
        renderer->useBufferObjects = hasBuffers;
        gl_spy::Recording const recording;
        MeshShading shading;
        shading.flags = TEXTURE;
        shading.textureChannel = "map";
        for (shading.mode = 0; shading.mode < 5; ++shading.mode)
            renderer->render(shading);
        EXPECT_EQ(recording.count("glBindTexture"), 0U);
        EXPECT_EQ(recording.count("glEnable"), 0U);
    }
}

// == Composites ==

/// Notes the edges and surfaces that the composites ask for, with the colour that is current there.
class Composite_renderer : public Tracing_renderer {
public:
    using Tracing_renderer::Tracing_renderer;
    void renderEdges() override { note("renderEdges"); }
};

class Mesh_RL_GL_contract_composites_calls_test : public Mesh_RL_GL_contract_calls_test {
protected:
    template <class Drawing>
    Texts traceOf(Drawing const& draw) {
        gl_spy::Recording const recording;
        composite.recording = &recording;
        composite.seen = 0;
        composite.trace.clear();
        draw();
        Texts const trace = composite.ended();
        colours = recording.named("glColor4f");
        composite.recording = nullptr;
        return trace;
    }

    void expectColour(std::size_t index, double r, double g, double b, double a) {
        ASSERT_LT(index, colours.size());
        std::array<double, 4> const expected{r, g, b, a};
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(colours[index].numbers.at(i), expected[i], 1e-7)
                << "colour " << index << "[" << i << "]";
    }

    static Texts names(Texts const& texts) {
        Texts result = texts;
        for (std::string& text : result) {
            if (text.compare(0, 10, "glColor4f(") == 0)
                text = "colour";
        }
        return result;
    }

    Composite_renderer composite{&mesh, false};
    std::vector<gl_spy::Call> colours;
    Color4<float> const colour{0.5F, 0.25F, 1, 0.625F};
};

TEST_F(Mesh_RL_GL_contract_composites_calls_test, renderWithEdgesDrawsEdgesThenADarkerSurface) {
    Texts const trace = traceOf([&] { composite.renderWithEdges(colour); });
    EXPECT_THAT(names(trace), ElementsAre("glEnable(GL_CULL_FACE)", "glCullFace(GL_BACK)", "colour",
                                          "renderEdges", "colour", "render", "glDisable(GL_CULL_FACE)",
                                          testing::StartsWith("glCullFace(")));
    expectColour(0, 0.5, 0.25, 1, 0.625);
    expectColour(1, 0.25, 0.125, 0.5, 1);
    EXPECT_FALSE(layer.currentCulling().enabled);
    EXPECT_EQ(layer.currentColor().r, 0.25F) << "the colour is left as last set";
    EXPECT_EQ(layer.currentColor().a, 1);
}

TEST_F(Mesh_RL_GL_contract_composites_calls_test, renderWithEdgesBlendingDrawsTwoSidesThenTheSurface) {
    layer.pushDepthTest({DEPTH_LESS_OR_EQUAL, true});
    layer.pushCulling({true, false});
    Texts const trace = traceOf([&] { composite.renderWithEdgesBlending(colour, true); });
    EXPECT_THAT(names(trace),
                ElementsAre("glEnable(GL_CULL_FACE)", "glCullFace(GL_FRONT)",  // a copy of the current mode
                            "glEnable(GL_CULL_FACE)", "glCullFace(GL_BACK)",   //
                            "colour", "renderEdges",                           //
                            "glEnable(GL_CULL_FACE)", "glCullFace(GL_FRONT)",  //
                            "colour", "renderEdges",                           //
                            "glEnable(GL_CULL_FACE)", "glCullFace(GL_BACK)",   //
                            "glEnable(GL_BLEND)", "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
                            "glDepthMask(GL_FALSE)", "glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_LEQUAL)",
                            "colour", "render",                                                           //
                            "glDisable(GL_BLEND)",                                                        //
                            "glDepthMask(GL_TRUE)", "glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_LEQUAL)",  //
                            "glEnable(GL_CULL_FACE)", "glCullFace(GL_FRONT)"));
    expectColour(0, 0.15, 0.075, 0.3, 1);
    expectColour(1, 0.05, 0.025, 0.1, 1);
    expectColour(2, 0.5, 0.25, 1, 0.625);
    EXPECT_FALSE(layer.currentCulling().back);
    EXPECT_TRUE(layer.currentDepthTest().write);
    EXPECT_EQ(layer.currentBlending(), BLENDING_OFF);
    EXPECT_EQ(layer.currentColor().a, 0.625F);
}

TEST_F(Mesh_RL_GL_contract_composites_calls_test, renderWithEdgesBlendingWithoutTheSurfaceStillSetsItsState) {
    Texts const with = traceOf([&] { composite.renderWithEdgesBlending(colour, true); });
    Texts const without = traceOf([&] { composite.renderWithEdgesBlending(colour, false); });
    Texts expected = with;
    expected.erase(std::find(expected.begin(), expected.end(), "render"));
    EXPECT_EQ(without, expected);
}

// == Normals ==

TEST_F(Mesh_RL_GL_contract_calls_test, vertexNormalsStandOnThePositionsOfTheSameIndex) {
    gl_spy::Recording const recording;
    renderer->renderVertexNormals(0.5F);
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    std::vector<Point> expected;
    for (unsigned int i = 0; i < data.positions.size(); ++i) {
        Point const p = pointOf(data.positions[i]);
        expected.push_back(p);
        expected.push_back(p + 0.5 * pointOf(data.vertexNormals[i]));
    }
    EXPECT_EQ(primitive.mode, LINES);
    EXPECT_EQ(positionsOf(primitive), expected);
    EXPECT_EQ(recording.calls().size(), 2U + 10U) << "no colour, no width, no normal";
}

TEST_F(Mesh_RL_GL_contract_calls_test, faceNormalsStandOnTheCentres) {
    gl_spy::Recording const recording;
    renderer->renderFaceNormals(2);
    std::vector<Point> expected;
    for (unsigned int t = 0; t < 2; ++t) {
        Point const sum = data.p(t, 0) + data.p(t, 1) + data.p(t, 2);
        Point const centre = THIRD * sum;
        expected.push_back(centre);
        expected.push_back(centre + 2 * pointOf(data.faceNormals[t]));
    }
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, LINES);
    EXPECT_EQ(positionsOf(primitive), expected);
    EXPECT_EQ(recording.calls().size(), 2U + 4U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, deliberatelyTheCentreIsTakenWithTheSinglePrecisionThird) {
    mesh.setPositions({{0, 0, 0}, {3, 0, 0}, {0, 3, 0}});
    mesh.setTriangles({{0, 1, 2}});
    mesh.setVertexNormals({});
    mesh.setNormalTriangles({});
    mesh.setAdjacency({});
    mesh.setFaceNormals({{0, 0, 1, 0}});
    gl_spy::Recording const recording;
    renderer->renderFaceNormals(1);
    std::vector<Point> const points = positionsOf(onlyPrimitive(recording));
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[0], (Point{1.0000000298023224, 1.0000000298023224, 0}));
    EXPECT_EQ(points[1], (Point{1.0000000298023224, 1.0000000298023224, 1}));
}

TEST_F(Mesh_RL_GL_contract_calls_test, normalsOfOneTriangleGoThroughItsNormalTriangle) {
    gl_spy::Recording const recording;
    renderer->renderNormals(1, 4);
    std::vector<Point> expected;
    for (unsigned int k = 0; k < 3; ++k) {
        expected.push_back(data.p(1, k));
        expected.push_back(data.p(1, k) + 4 * data.n(1, k));
    }
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, LINES);
    EXPECT_EQ(positionsOf(primitive), expected);
}

TEST_F(Mesh_RL_GL_contract_calls_test, normalsOfATriangleBeyondTheLastAreAnEmptyBlock) {
    for (unsigned int const index : {2U, 3U, 0x55555555U, 0xFFFFFFFFU}) {
        gl_spy::Recording const recording;
        renderer->renderNormals(index, 1);
        EXPECT_THAT(recording.texts(), ElementsAre("glBegin(GL_LINES)", "glEnd()")) << index;
    }
}

class Mesh_RL_GL_contract_named_calls_test : public Mesh_RL_GL_contract_calls_test {
protected:
    void SetUp() override {
        Mesh_RL_GL_contract_calls_test::SetUp();
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "points", points);
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "vectors", perVertex);
        mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, "face vectors", perFace);
    }

    Array<Vector3<double>> const points{{10, 11, 12}, {13, 14, 15}, {16, 17, 18}, {19, 20, 21}, {22, 23, 24}};
    Array<Color4<float>> const perVertex{
        {1, 2, 3, 99}, {4, 5, 6, 99}, {7, 8, 9, 99}, {0.5F, 0, 0, 99}, {0, 0.25F, 0, 99}};
    Array<Color4<float>> const perFace{{1, -2, 3, 99}, {-4, 5, -6, 99}};
};

TEST_F(Mesh_RL_GL_contract_named_calls_test, vectorsStandOnThePointsOfTheFirstName) {
    gl_spy::Recording const recording;
    renderer->renderVertexNormals("points", "vectors", 2);
    std::vector<Point> expected;
    for (unsigned int i = 0; i < 5; ++i) {
        expected.push_back(pointOf(points[i]));
        expected.push_back(pointOf(points[i]) + 2 * pointOf(perVertex[i]));
    }
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, LINES);
    EXPECT_EQ(positionsOf(primitive), expected);
    EXPECT_EQ(recording.calls().size(), 2U + 10U);
}

TEST_F(Mesh_RL_GL_contract_named_calls_test, faceVectorsStandOnTheCentresOfTheNamedPoints) {
    gl_spy::Recording const recording;
    renderer->renderFaceNormals("points", "face vectors", 0.5F);
    std::vector<Point> expected;
    for (unsigned int t = 0; t < 2; ++t) {
        Triangle const& triangle = data.triangles[t];
        Point const centre = THIRD * (pointOf(points[triangle.e0]) + pointOf(points[triangle.e1]) +
                                      pointOf(points[triangle.e2]));
        expected.push_back(centre);
        expected.push_back(centre + 0.5 * pointOf(perFace[t]));
    }
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, LINES);
    EXPECT_EQ(positionsOf(primitive), expected);
}

TEST_F(Mesh_RL_GL_contract_named_calls_test, namesThatAreNotFoundDrawNothing) {
    gl_spy::Recording const recording;
    renderer->renderVertexNormals("points", "missing", 1);
    renderer->renderVertexNormals("missing", "vectors", 1);
    renderer->renderVertexNormals("points", "face vectors", 1);  // of faces, not of vertices
    renderer->renderFaceNormals("points", "missing", 1);
    renderer->renderFaceNormals("missing", "face vectors", 1);
    renderer->renderFaceNormals("points", "vectors", 1);  // of vertices, not of faces
    EXPECT_THAT(stemsOf(recording), IsEmpty());
}

TEST_F(Mesh_RL_GL_contract_named_calls_test, theNamedArraysAreGivenBack) {
    unsigned int const handles = VL_ArrayServer.handleCount();
    ArrayTypeable const* const array =
        VL_ArrayServer.resolve(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "points"));
    unsigned int const references = array->references;
    renderer->renderVertexNormals("points", "vectors", 1);
    renderer->renderFaceNormals("points", "face vectors", 1);
    EXPECT_EQ(VL_ArrayServer.handleCount(), handles);
    EXPECT_EQ(array->references, references);
}

// == Edges in immediate mode ==

TEST_F(Mesh_RL_GL_contract_calls_test, edgesAreSentWithTheNormalsOfTheirCorners) {
    gl_spy::Recording const recording;
    renderer->renderEdges();
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    std::vector<Point> positions;
    std::vector<Point> normals;
    for (unsigned int t = 0; t < 2; ++t) {
        for (unsigned int k = 0; k < 3; ++k) {
            for (unsigned int const c : {k, (k + 1) % 3}) {
                positions.push_back(data.p(t, c));
                normals.push_back(data.n(t, c));
            }
        }
    }
    EXPECT_EQ(primitive.mode, LINES);
    EXPECT_EQ(positionsOf(primitive), positions);
    EXPECT_EQ(normalsOf(primitive), normals);
    EXPECT_EQ(stemsOf(recording), repeated({"glNormal", "glVertex"}, 12));
    EXPECT_EQ(recording.calls().size(), 2U + 24U) << "no colour, no width";
}

/// The number of edges that immediate mode draws.
std::size_t immediateEdges(Mesh_RL_GL& renderer) {
    renderer.useBufferObjects = false;
    gl_spy::Recording const recording;
    renderer.renderEdges();
    return onlyPrimitive(recording).vertices.size() / 2;
}

TEST_F(Mesh_RL_GL_contract_calls_test, anEdgeIsSmoothWhenTheFirstCornersNormalsAreEqual) {
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(immediateEdges(*renderer), 4U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, onlyTheFirstCornerOfAnEdgeDecides) {
    // At vertex 2 both have normal 2, at vertex 1 they differ. The first triangle's edge starts at vertex 1, the
    // second one's at vertex 2.
    data.normalTriangles[1] = {2, 0, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(immediateEdges(*renderer), 5U);
    update(nullptr, true);
    std::multiset<std::pair<unsigned int, unsigned int>> const expected{
        {0, 1}, {1, 2}, {2, 0}, {4, 5}, {5, 3}};
    EXPECT_EQ(edgesIn(4), expected);
}

TEST_F(Mesh_RL_GL_contract_calls_test, normalsAreComparedByValueNotByIndex) {
    // The second triangle has copies of its own.
    data.vertexNormals[1] = data.vertexNormals[2];
    data.vertexNormals[0] = data.vertexNormals[3];
    data.normalTriangles[1] = {1, 0, 4};
    mesh.setVertexNormals(data.vertexNormals);
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(immediateEdges(*renderer), 4U);
    update(nullptr, true);
    EXPECT_EQ(edgesIn(4).size(), 4U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, negativeZeroEqualsZeroAndANumberThatIsNoneEqualsNothing) {
    float const nan = std::numeric_limits<float>::quiet_NaN();
    data.normalTriangles[1] = {1, 0, 4};
    data.vertexNormals[2] = {0.0F, 1, 0};
    data.vertexNormals[1] = {-0.0F, 1, -0.0F};
    data.vertexNormals[0] = data.vertexNormals[3];
    mesh.setVertexNormals(data.vertexNormals);
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(immediateEdges(*renderer), 4U);
    update(nullptr, true);
    EXPECT_EQ(edgesIn(4).size(), 4U);

    // One normal for both triangles, and still a crease on both sides of it.
    data.normalTriangles[1] = {2, 3, 4};
    data.vertexNormals[2] = {0, nan, 1};
    data.vertexNormals[3] = {nan, nan, nan};
    mesh.setVertexNormals(data.vertexNormals);
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(immediateEdges(*renderer), 6U);
    update(nullptr, true);
    EXPECT_EQ(edgesIn(5).size(), 6U);
}

// == Connectivity ==

void expectSegments(gl_spy::Recording const& recording, std::vector<Point> const& expected) {
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, LINES);
    std::vector<Point> const actual = positionsOf(primitive);
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        for (std::size_t c = 0; c < 3; ++c)
            EXPECT_DOUBLE_EQ(actual[i][c], expected[i][c]) << "vertex " << i << "[" << c << "]";
    }
    for (gl_spy::Vertex const& vertex : primitive.vertices)
        EXPECT_EQ(vertex.colour, (std::array<double, 4>{1, 1, 1, 1}));
}

TEST_F(Mesh_RL_GL_contract_calls_test, connectionsMeetInsideTheNeighbour) {
    layer.setColor({0.5F, 0.5F, 0.5F, 1});
    gl_spy::Recording const recording;
    renderer->renderEdgesConnection();

    std::vector<Point> expected;
    struct Shared {
        unsigned int t, k, u, c;
    };
    for (Shared const& s : {Shared{0, 1, 1, 1}, Shared{1, 0, 0, 2}}) {
        unsigned int const next = (s.c + 1) % 3;
        unsigned int const previous = (s.c + 2) % 3;
        Point const a = W45 * data.p(s.u, s.c) + W45 * data.p(s.u, next) + W10 * data.p(s.u, previous);
        Point const pk = data.p(s.t, s.k);
        Point const pj = data.p(s.t, (s.k + 1) % 3);
        Point const b = W70 * pk + W30 * pj;
        Point const c = W30 * pk + W70 * pj;
        expected.insert(expected.end(), {b, a, a, c});
    }
    expectSegments(recording, expected);
    EXPECT_EQ(recording.calls().size(), 3U + 8U) << "the colour, the block and its vertices";
}

TEST_F(Mesh_RL_GL_contract_calls_test, deliberatelyTheNeighbourOfAConnectionIsTakenAsSixteenBits) {
    constexpr unsigned int COUNT = 65538;
    Array<Vector3<double>> const positions{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 5, 5}, {6, 5, 5}, {5, 6, 5}};
    Array<Triangle> triangles;
    Array<Triangle> adjacency;
    triangles.reserve(COUNT, false);
    adjacency.reserve(COUNT, false);
    for (unsigned int t = 0; t < COUNT; ++t) {
        triangles.pushBack(t == 1 ? Triangle{3, 4, 5} : Triangle{0, 1, 2});
        adjacency.pushBack({BORDER, BORDER, BORDER});
    }
    adjacency[0].e0 = 65537 * 4;  // 65537 is 1 in 16 bits
    Mesh large;
    large.setPositions(positions);
    large.setTriangles(triangles);
    large.setAdjacency(adjacency);
    Mesh_RL_GL largeRenderer(&large, false);
    gl_spy::Recording const recording;
    largeRenderer.renderEdgesConnection();
    Point const a = W45 * Point{5, 5, 5} + W45 * Point{6, 5, 5} + W10 * Point{5, 6, 5};
    expectSegments(recording, {{W30, 0, 0}, a, a, {W70, 0, 0}});
}

TEST_F(Mesh_RL_GL_contract_calls_test, aBorderHasAWedgeThatPointsIntoItsTriangle) {
    layer.setColor({0.5F, 0.5F, 0.5F, 1});
    gl_spy::Recording const recording;
    renderer->renderEdgesUnconnected();

    std::vector<Point> expected;
    std::vector<std::pair<unsigned int, unsigned int>> const borders{{0, 0}, {0, 2}, {1, 1}, {1, 2}};
    for (auto const& [t, k] : borders) {
        Point const a = data.p(t, k);
        Point const b = data.p(t, (k + 1) % 3);
        Point const c = data.p(t, (k + 2) % 3);
        Point const from = W70 * a + W30 * b;
        Point const to = W30 * a + W70 * b;
        Point const tip = 0.25 * c + 0.75 * (0.5 * (a + b));
        expected.insert(expected.end(), {from, tip, tip, to});
    }
    expectSegments(recording, expected);
    EXPECT_EQ(recording.calls().size(), 3U + 16U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, bothMarksUseImmediateModeEvenWithBuffers) {
    useBuffers();
    gl_spy::Recording const recording;
    renderer->renderEdgesConnection();
    renderer->renderEdgesUnconnected();
    renderer->renderVertexNormals(1);
    renderer->renderFaceNormals(1);
    renderer->renderNormals(0, 1);
    EXPECT_EQ(recording.count("glGenBuffers"), 0U);
    EXPECT_EQ(recording.primitives().size(), 5U);
}

// == Whole shapes ==

TEST_F(Mesh_RL_GL_contract_calls_test, aClosedSmoothMeshHasNoEdgesAndATetrahedronWithHardEdgesHasEachTwice) {
    Mesh solid;
    solid.setPositions({{1, 1, 1}, {-1, -1, 1}, {-1, 1, -1}, {1, -1, -1}});
    solid.setTriangles({{0, 1, 3}, {0, 2, 1}, {0, 3, 2}, {1, 2, 3}});
    solid.workNormals(Mesh::NO_CREASE);
    solid.workAdjacency();
    Mesh_RL_GL solidRenderer(&solid, false);
    EXPECT_EQ(immediateEdges(solidRenderer), 0U);
    solidRenderer.createBufferObjects(nullptr, true);
    EXPECT_THAT(driver.bufferContents(4), IsEmpty());

    solid.workNormals(0.5F);
    EXPECT_EQ(immediateEdges(solidRenderer), 12U) << "six edges, each from both sides";
    solidRenderer.createBufferObjects(nullptr, true);
    EXPECT_EQ(edgesIn(5).size(), 12U);

    gl_spy::Recording const recording;
    solidRenderer.renderEdgesUnconnected();
    EXPECT_THAT(stemsOf(recording), IsEmpty()) << "a closed mesh has no border";
}

TEST_F(Mesh_RL_GL_contract_calls_test, bordersHaveWedgesAndNoConnections) {
    Mesh open;
    open.setPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    open.setTriangles({{0, 1, 2}});
    open.workAdjacency();
    Mesh_RL_GL openRenderer(&open, false);
    {
        gl_spy::Recording const recording;
        openRenderer.renderEdgesConnection();
        EXPECT_THAT(stemsOf(recording), IsEmpty());
    }
    gl_spy::Recording const recording;
    openRenderer.renderEdgesUnconnected();
    EXPECT_EQ(onlyPrimitive(recording).vertices.size(), 3U * 4U);
}

// == Whatever a mesh accepts ==

/// Meshes with arrays of any length and any content, most of them with faults.
class Any_mesh {
public:
    explicit Any_mesh(unsigned int seed) : random(seed) {}

    void fill(Mesh& mesh) {
        mesh.setPositions(vectors<Vector3<double>>());
        mesh.setTriangles(triples(8));
        mesh.setVertexNormals(vectors<Vector3<float>>());
        if (isChosen())
            mesh.setNormalTriangles(triples(8));
        if (isChosen())
            mesh.setFaceNormals(colours());
        if (isChosen())
            mesh.setAdjacency(triples(32));
        else if (isChosen())
            mesh.workAdjacency();
        if (isChosen())
            mesh.workNormals(isChosen() ? 0.5F : Mesh::NO_CREASE);
        mesh.addNamedArray(MeshArrayInf_ns::TRINDEXED, "uv", triples(8));
        mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, isChosen() ? "uv" : "other", coordinates());
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "uv", coordinates());
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "points", vectors<Vector3<double>>());
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "vectors", colours());
        mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, "vectors", colours());
    }

private:
    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(random() % limit); }
    bool isChosen() { return below(2) == 0; }
    unsigned int length() { return below(10); }

    /// Mostly an index that may exist, now and then one that cannot.
    unsigned int index(unsigned int limit) {
        return below(40) != 0 ? below(limit) : isChosen() ? BORDER : static_cast<unsigned int>(random());
    }

    Array<Triangle> triples(unsigned int limit) {
        Array<Triangle> values;
        for (unsigned int i = length(); i > 0; --i) {
            unsigned int const first = index(limit);
            values.pushBack({first, below(6) != 0 ? index(limit) : first, index(limit)});
        }
        return values;
    }

    template <class Vector>
    Array<Vector> vectors() {
        Array<Vector> values;
        for (unsigned int i = length(); i > 0; --i) {
            Vector v;
            v.x = static_cast<decltype(v.x)>(below(3));
            v.y = static_cast<decltype(v.y)>(below(3));
            v.z = static_cast<decltype(v.z)>(below(3));
            values.pushBack(v);
        }
        return values;
    }

    Array<Color4<float>> colours() {
        Array<Color4<float>> values;
        for (unsigned int i = length(); i > 0; --i)
            values.pushBack({static_cast<float>(below(3)), 0, 1, 0});
        return values;
    }

    Array<Vector2<float>> coordinates() {
        Array<Vector2<float>> values;
        for (unsigned int i = length(); i > 0; --i)
            values.pushBack({static_cast<float>(below(3)), 1});
        return values;
    }

    std::mt19937 random;
};

void drawEverything(Mesh_RL_GL& renderer, unsigned int triangleCount) {
    MeshShading shading;
    shading.textureChannel = "uv";
    for (shading.mode = 0; shading.mode < 4; ++shading.mode) {
        for (shading.flags = 0; shading.flags < 4; ++shading.flags)
            renderer.render(shading);
    }
    renderer.renderPoints(1);
    renderer.renderEdges();
    renderer.renderEdgesConnection();
    renderer.renderEdgesUnconnected();
    renderer.renderVertexNormals(1);
    renderer.renderFaceNormals(1);
    renderer.renderVertexNormals("points", "vectors", 1);
    renderer.renderFaceNormals("points", "vectors", 1);
    for (unsigned int t = 0; t <= triangleCount; ++t)
        renderer.renderNormals(t, 1);
    renderer.renderWithEdges({1, 1, 1, 1});
    renderer.renderWithEdgesBlending({1, 1, 1, 1}, true);
}

// The sanitizers see every read outside an array.
TEST_F(Mesh_RL_GL_contract_calls_test, whateverAMeshHoldsIsDrawnWithinItsArrays) {
    unsigned int sound = 0;
    unsigned int faulty = 0;
    Mesh changing;
    Mesh_RL_GL keeping(&changing, false);  // its buffers outlive what they were made of
    for (unsigned int seed = 0; seed < 300; ++seed) {
        Any_mesh(seed).fill(changing);
        Mesh_RL_GL fresh(&changing, false);
        for (Mesh_RL_GL* const subject : {&keeping, &fresh}) {
            for (bool const hasBuffers : {true, false}) {
                subject->useBufferObjects = hasBuffers;
                drawEverything(*subject, changing.triangleCount());
            }
        }
        bool const isSound = changing.surfaceFault() == MeshFault_ns::NONE;
        ++(isSound ? sound : faulty);
        unsigned int const corners = isSound ? changing.triangleCount() * 3 : 0;
        gl_spy::Recording const recording;
        keeping.useBufferObjects = true;
        keeping.render();
        keeping.useBufferObjects = false;
        keeping.render();
        ASSERT_EQ(recording.named("glDrawArrays").at(0).numbers.at(1), corners) << "seed " << seed;
        ASSERT_EQ(onlyPrimitive(recording).vertices.size(), corners) << "seed " << seed;
    }
    EXPECT_GT(sound, 30U) << "both kinds are among them";
    EXPECT_GT(faulty, 30U);
}

TEST_F(Mesh_RL_GL_contract_calls_test, trianglesWithoutAreaAreDrawnAsTheyAre) {
    Mesh flat;
    flat.setPositions({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0, 1, 0}});
    flat.setTriangles({{0, 1, 2}, {3, 3, 3}, {0, 1, 3}, {1, 1, 0}});
    ASSERT_TRUE(flat.workNormals(0.5F));
    ASSERT_TRUE(flat.workAdjacency());
    ASSERT_EQ(flat.fault(), MeshFault_ns::NONE);
    Mesh_RL_GL flatRenderer(&flat, false);
    for (bool const hasBuffers : {true, false}) {
        flatRenderer.useBufferObjects = hasBuffers;
        drawEverything(flatRenderer, 4);
    }
    for (float const& component : contents(POSITIONS))
        EXPECT_TRUE(std::isfinite(component));
    for (unsigned int const normals : {SMOOTH, FACETED}) {
        for (float const& component : contents(normals))
            EXPECT_TRUE(std::isfinite(component));
    }
    EXPECT_EQ(contents(POSITIONS).size(), std::size_t{4} * 9);
}

}  // namespace

}  // namespace vellum
