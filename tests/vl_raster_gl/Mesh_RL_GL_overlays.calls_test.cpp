#include "Mesh_RL_GL.h"

#include "Core_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Vector2.h"
#include "mesh_calls.h"
#include "tests/foundation/geometry/mesh_shapes.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <set>
#include <utility>
#include <vector>

// The overlays of a mesh: normals, edges and connectivity marks. The last tests draw everything of random
// meshes.

namespace vellum {

namespace {

using namespace mesh_calls;
using testing::ElementsAre;
using testing::IsEmpty;

class Mesh_RL_GL_overlays_calls_test : public Mesh_fixture {};

// Single-precision constants in double arithmetic.
constexpr double THIRD = 0.3333333432674408;
constexpr double W45 = 0.44999998807907104;
constexpr double W10 = 0.10000000149011612;
constexpr double W70 = 0.699999988079071;
constexpr double W30 = 0.30000001192092896;

Point operator+(Point const& a, Point const& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
Point operator*(double s, Point const& a) {
    return {s * a[0], s * a[1], s * a[2]};
}

// == Normals ==

TEST_F(Mesh_RL_GL_overlays_calls_test, vertexNormalsStandOnPositionsOfSameIndex) {
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
    EXPECT_EQ(recording.calls().size(), 2U + 10U) << "no color, no width, no normal";
}

TEST_F(Mesh_RL_GL_overlays_calls_test, faceNormalsStandOnCenters) {
    gl_spy::Recording const recording;
    renderer->renderFaceNormals(2);
    std::vector<Point> expected;
    for (unsigned int t = 0; t < 2; ++t) {
        Point const sum = data.p(t, 0) + data.p(t, 1) + data.p(t, 2);
        Point const center = THIRD * sum;
        expected.push_back(center);
        expected.push_back(center + 2 * pointOf(data.faceNormals[t]));
    }
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, LINES);
    EXPECT_EQ(positionsOf(primitive), expected);
    EXPECT_EQ(recording.calls().size(), 2U + 4U);
}

TEST_F(Mesh_RL_GL_overlays_calls_test, deliberatelyCenterIsTakenWithSinglePrecisionThird) {
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

TEST_F(Mesh_RL_GL_overlays_calls_test, normalsOfOneTriangleGoThroughItsNormalTriangle) {
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

TEST_F(Mesh_RL_GL_overlays_calls_test, normalsOfTriangleBeyondLastAreEmptyBlock) {
    for (unsigned int const index : {2U, 3U, 0x55555555U, 0xFFFFFFFFU}) {
        gl_spy::Recording const recording;
        renderer->renderNormals(index, 1);
        EXPECT_THAT(recording.texts(), ElementsAre("glBegin(GL_LINES)", "glEnd()")) << index;
    }
}

class Mesh_RL_GL_named_calls_test : public Mesh_fixture {
protected:
    void SetUp() override {
        Mesh_fixture::SetUp();
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "points", points);
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "vectors", perVertex);
        mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, "face vectors", perFace);
    }

    Array<Vector3<double>> const points{{10, 11, 12}, {13, 14, 15}, {16, 17, 18}, {19, 20, 21}, {22, 23, 24}};
    Array<Color4<float>> const perVertex{
        {1, 2, 3, 99}, {4, 5, 6, 99}, {7, 8, 9, 99}, {0.5F, 0, 0, 99}, {0, 0.25F, 0, 99}};
    Array<Color4<float>> const perFace{{1, -2, 3, 99}, {-4, 5, -6, 99}};
};

TEST_F(Mesh_RL_GL_named_calls_test, vectorsStandOnPointsOfFirstName) {
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

TEST_F(Mesh_RL_GL_named_calls_test, faceVectorsStandOnCentersOfNamedPoints) {
    gl_spy::Recording const recording;
    renderer->renderFaceNormals("points", "face vectors", 0.5F);
    std::vector<Point> expected;
    for (unsigned int t = 0; t < 2; ++t) {
        Triangle const& triangle = data.triangles[t];
        Point const center = THIRD * (pointOf(points[triangle.e0]) + pointOf(points[triangle.e1]) +
                                      pointOf(points[triangle.e2]));
        expected.push_back(center);
        expected.push_back(center + 0.5 * pointOf(perFace[t]));
    }
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, LINES);
    EXPECT_EQ(positionsOf(primitive), expected);
}

TEST_F(Mesh_RL_GL_named_calls_test, namesThatAreNotFoundDrawNothing) {
    gl_spy::Recording const recording;
    renderer->renderVertexNormals("points", "missing", 1);
    renderer->renderVertexNormals("missing", "vectors", 1);
    renderer->renderVertexNormals("points", "face vectors", 1);  // of faces, not of vertices
    renderer->renderFaceNormals("points", "missing", 1);
    renderer->renderFaceNormals("missing", "face vectors", 1);
    renderer->renderFaceNormals("points", "vectors", 1);   // of vertices, not of faces
    renderer->renderVertexNormals("points", "points", 1);  // of another type
    EXPECT_THAT(vertexCallsOf(recording), IsEmpty());
}

TEST_F(Mesh_RL_GL_named_calls_test, namedArraysAreReleased) {
    unsigned int const handles = VL_ArrayServer.handleCount();
    ArrayTypeable const* const array =
        VL_ArrayServer.resolve(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "points"));
    unsigned int const references = array->references;
    renderer->renderVertexNormals("points", "vectors", 1);
    renderer->renderFaceNormals("points", "face vectors", 1);
    EXPECT_EQ(VL_ArrayServer.handleCount(), handles);
    EXPECT_EQ(array->references, references);
}

TEST_F(Mesh_RL_GL_named_calls_test, shorterArraysEndDrawing) {
    auto const segments = [](auto const& draw) {
        gl_spy::Recording const recording;
        draw();
        return vertexCallsOf(recording).size() / 2;
    };
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "one", Array<Color4<float>>{{1, 0, 0, 9}});
    EXPECT_EQ(segments([&] { renderer->renderVertexNormals("points", "one", 1); }), 1U);
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "three",
                       Array<Vector3<double>>{{0, 0, 0}, {3, 0, 0}, {0, 3, 0}});
    EXPECT_EQ(segments([&] { renderer->renderFaceNormals("three", "face vectors", 1); }), 1U)
        << "the second triangle has a corner without a point";
    Mesh other;
    other.setPositions({{0, 0, 0}, {1, 0, 0}});
    other.setVertexNormals({{0, 0, 1}});
    Mesh_RL_GL otherRenderer(&other, false);
    EXPECT_EQ(segments([&] { otherRenderer.renderVertexNormals(1); }), 1U);
}

// == Edges in immediate mode ==

TEST_F(Mesh_RL_GL_overlays_calls_test, edgesAreSentWithNormalsOfTheirCorners) {
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
    EXPECT_EQ(vertexCallsOf(recording), repeated({"glNormal3fv", "glVertex3dv"}, 12));
    EXPECT_EQ(recording.calls().size(), 2U + 24U) << "no color, no width";
}

/// Normal and position of one end of an edge by their bits, so that NaNs compare equal.
using EdgeEnd = std::array<std::uint32_t, 6>;

EdgeEnd edgeEnd(std::array<float, 6> const& values) {
    EdgeEnd bits;
    std::memcpy(bits.data(), values.data(), sizeof(bits));
    return bits;
}

/// The ends of the edges that immediate mode draws, two for each edge.
std::vector<EdgeEnd> immediateEdges(Mesh_RL_GL& renderer) {
    renderer.useBufferObjects = false;
    gl_spy::Recording const recording;
    renderer.renderEdges();
    std::vector<EdgeEnd> ends;
    for (gl_spy::Vertex const& v : onlyPrimitive(recording).vertices) {
        ends.push_back(edgeEnd({float(v.normal[0]), float(v.normal[1]), float(v.normal[2]),
                                float(v.position[0]), float(v.position[1]), float(v.position[2])}));
    }
    return ends;
}

/// The ends of the edges that the index buffer draws.
std::vector<EdgeEnd> bufferedEdges(Mesh_RL_GL& renderer, gl_spy::Script const& driver) {
    renderer.useBufferObjects = true;
    gl_spy::Recording const recording;
    renderer.renderEdges();
    // Normals, positions and indices are bound last, in this order.
    std::vector<unsigned int> bound;
    for (gl_spy::Call const& c : recording.calls()) {
        if (c.name == "glDrawElements") {
            break;
        }
        if (c.name == "glBindBuffer") {
            bound.push_back(static_cast<unsigned int>(c.numbers.back()));
        }
    }
    EXPECT_GE(bound.size(), 3U);
    bound.erase(bound.begin(), bound.end() - 3);
    auto const normals = gl_spy::as<float>(driver.bufferContents(bound[0]));
    auto const positions = gl_spy::as<float>(driver.bufferContents(bound[1]));
    std::vector<EdgeEnd> ends;
    for (unsigned int const i : gl_spy::as<unsigned int>(driver.bufferContents(bound[2]))) {
        ends.push_back(edgeEnd({normals[3 * i], normals[3 * i + 1], normals[3 * i + 2], positions[3 * i],
                                positions[3 * i + 1], positions[3 * i + 2]}));
    }
    EXPECT_EQ(recording.named("glDrawElements").at(0).numbers.front(), double(ends.size()));
    return ends;
}

TEST_F(Mesh_RL_GL_overlays_calls_test, edgeIsSmoothWhenFirstCornersNormalsAreEqual) {
    data.normalTriangles[1] = {2, 3, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(immediateEdges(*renderer).size() / 2, 4U);
}

TEST_F(Mesh_RL_GL_overlays_calls_test, onlyFirstCornerOfEdgeDecides) {
    // Both triangles have normal 2 at vertex 2, and different normals at vertex 1. The edge of the first
    // triangle starts at vertex 1, that of the second at vertex 2.
    data.normalTriangles[1] = {2, 0, 0};
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(immediateEdges(*renderer).size() / 2, 5U);
    update(nullptr, true);
    std::multiset<std::pair<unsigned int, unsigned int>> const expected{
        {0, 1}, {1, 2}, {2, 0}, {4, 5}, {5, 3}};
    EXPECT_EQ(edgesIn(4), expected);
}

TEST_F(Mesh_RL_GL_overlays_calls_test, normalsAreComparedByValueNotByIndex) {
    // The second triangle has its own copies of the normals.
    data.vertexNormals[1] = data.vertexNormals[2];
    data.vertexNormals[0] = data.vertexNormals[3];
    data.normalTriangles[1] = {1, 0, 4};
    mesh.setVertexNormals(data.vertexNormals);
    mesh.setNormalTriangles(data.normalTriangles);
    EXPECT_EQ(immediateEdges(*renderer).size() / 2, 4U);
    update(nullptr, true);
    EXPECT_EQ(edgesIn(4).size(), 4U);
}

TEST_F(Mesh_RL_GL_overlays_calls_test, normalsAreComparedAsFloats) {
    constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
    struct Row {
        char const* name;
        Vector3<float> first, second;
        bool isSmooth;
    };
    for (Row const& row : {Row{"negative zero", {0.0F, 1, 0}, {-0.0F, 1, -0.0F}, true},
                           Row{"last bit", {0, 0, 1}, {0, 0, 0.99999994F}, false},
                           Row{"denormal", {0, 0, 1}, {0, 1e-40F, 1}, false},
                           Row{"NaN", {NOT_A_NUMBER, 0, 1}, {NOT_A_NUMBER, 0, 1}, false}}) {
        // Each triangle has its own normals at both ends of the shared edge.
        mesh.setVertexNormals({row.second, row.second, row.first, row.first, {1, 0, 0}});
        mesh.setNormalTriangles({{4, 3, 2}, {1, 0, 4}});
        EXPECT_EQ(immediateEdges(*renderer).size() / 2, row.isSmooth ? 4U : 6U) << row.name;
        EXPECT_EQ(bufferedEdges(*renderer, driver), immediateEdges(*renderer)) << row.name;
    }

    // Both triangles share a normal of NaNs, and the edge is drawn from both sides.
    mesh.setVertexNormals({{0, 0, 1}, {0, 0, 1}, {NOT_A_NUMBER, 0, 0}, {NOT_A_NUMBER, 0, 0}, {1, 0, 0}});
    mesh.setNormalTriangles({{4, 3, 2}, {2, 3, 4}});
    EXPECT_EQ(immediateEdges(*renderer).size() / 2, 6U);
}

TEST_F(Mesh_RL_GL_overlays_calls_test, indexBufferHasEdgesOfImmediatePath) {
    using namespace mesh_shapes;
    struct Row {
        char const* name;
        Shape shape;
        float crease;
        std::size_t edges;
    };
    for (Row const& row : {Row{"grid", grid(7), 0.7F, 28}, Row{"cube with hard edges", cube(), 0.7F, 24},
                           Row{"smooth cube", cube(), Mesh::NO_CREASE, 0}, Row{"sphere", sphere(9), 0.7F, 0},
                           Row{"Moebius band", moebiusBand(24), 1.5F, 48 + 2},
                           Row{"more than 65536 triangles", grid(190, 0.3), 0.7F, 760}}) {
        Mesh shape;
        row.shape.fill(shape);
        ASSERT_TRUE(shape.workNormals(row.crease));
        ASSERT_TRUE(shape.workAdjacency());
        Mesh_RL_GL other(&shape, false);
        std::vector<EdgeEnd> const immediate = immediateEdges(other);
        EXPECT_EQ(immediate.size(), 2 * row.edges) << row.name;
        EXPECT_EQ(bufferedEdges(other, driver), immediate) << row.name;
    }
}

// == Connectivity ==

void expectSegments(gl_spy::Recording const& recording, std::vector<Point> const& expected) {
    gl_spy::Primitive const primitive = onlyPrimitive(recording);
    EXPECT_EQ(primitive.mode, LINES);
    std::vector<Point> const actual = positionsOf(primitive);
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_DOUBLE_EQ(actual[i][c], expected[i][c]) << "vertex " << i << "[" << c << "]";
        }
    }
    for (gl_spy::Vertex const& vertex : primitive.vertices) {
        EXPECT_EQ(vertex.color, (std::array<double, 4>{1, 1, 1, 1}));
    }
}

TEST_F(Mesh_RL_GL_overlays_calls_test, connectionsMeetInsideNeighbor) {
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
    EXPECT_EQ(recording.texts().front(), "glColor3f(1, 1, 1)");
    EXPECT_EQ(recording.calls().size(), 3U + 8U) << "the color, the block and its vertices";
}

TEST_F(Mesh_RL_GL_overlays_calls_test, deliberatelyNeighborOfConnectionIsTakenAsSixteenBits) {
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

TEST_F(Mesh_RL_GL_overlays_calls_test, borderHasWedgeThatPointsIntoItsTriangle) {
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

TEST_F(Mesh_RL_GL_overlays_calls_test, overlaysUseImmediateModeEvenWithBuffers) {
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

TEST_F(Mesh_RL_GL_overlays_calls_test, closedMeshDrawsHardEdgesTwiceAndSmoothEdgesNever) {
    Mesh solid;
    solid.setPositions({{1, 1, 1}, {-1, -1, 1}, {-1, 1, -1}, {1, -1, -1}});
    solid.setTriangles({{0, 1, 3}, {0, 2, 1}, {0, 3, 2}, {1, 2, 3}});
    solid.workNormals(Mesh::NO_CREASE);
    solid.workAdjacency();
    Mesh_RL_GL solidRenderer(&solid, false);
    EXPECT_THAT(immediateEdges(solidRenderer), IsEmpty());
    solidRenderer.createBufferObjects(nullptr, true);
    EXPECT_THAT(driver.bufferContents(4), IsEmpty());

    solid.workNormals(0.5F);
    EXPECT_EQ(immediateEdges(solidRenderer).size() / 2, 12U) << "six edges, each from both sides";
    solidRenderer.createBufferObjects(nullptr, true);
    EXPECT_EQ(edgesIn(5).size(), 12U);

    gl_spy::Recording const recording;
    solidRenderer.renderEdgesUnconnected();
    EXPECT_THAT(vertexCallsOf(recording), IsEmpty()) << "a closed mesh has no border";
    solidRenderer.renderEdgesConnection();
    EXPECT_EQ(vertexCallsOf(recording).size(), 12U * 4);
}

TEST_F(Mesh_RL_GL_overlays_calls_test, bordersHaveWedgesAndNoConnections) {
    Mesh open;
    open.setPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    open.setTriangles({{0, 1, 2}});
    open.workAdjacency();
    Mesh_RL_GL openRenderer(&open, false);
    {
        gl_spy::Recording const recording;
        openRenderer.renderEdgesConnection();
        EXPECT_THAT(vertexCallsOf(recording), IsEmpty());
    }
    gl_spy::Recording const recording;
    openRenderer.renderEdgesUnconnected();
    EXPECT_EQ(onlyPrimitive(recording).vertices.size(), 3U * 4U);
}

// == Random meshes ==

/// Random meshes with arrays of any length and content; most of them have faults.
class Any_mesh {
public:
    explicit Any_mesh(unsigned int seed) : random(seed) {}

    void fill(Mesh& mesh) {
        mesh.setPositions(vectors<Vector3<double>>());
        mesh.setTriangles(triples(8));
        mesh.setVertexNormals(vectors<Vector3<float>>());
        if (isChosen()) {
            mesh.setNormalTriangles(triples(8));
        }
        if (isChosen()) {
            mesh.setFaceNormals(colors());
        }
        if (isChosen()) {
            mesh.setAdjacency(triples(32));
        } else if (isChosen()) {
            mesh.workAdjacency();
        }
        if (isChosen()) {
            mesh.workNormals(isChosen() ? 0.5F : Mesh::NO_CREASE);
        }
        mesh.addNamedArray(MeshArrayInf_ns::TRINDEXED, "uv", triples(8));
        mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, isChosen() ? "uv" : "other", coordinates());
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "uv", coordinates());
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "points", vectors<Vector3<double>>());
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "vectors", colors());
        mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, "vectors", colors());
    }

private:
    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(random() % limit); }
    bool isChosen() { return below(2) == 0; }
    unsigned int length() { return below(10); }

    /// Mostly an index in range, sometimes one far outside.
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

    Array<Color4<float>> colors() {
        Array<Color4<float>> values;
        for (unsigned int i = length(); i > 0; --i) {
            values.pushBack({static_cast<float>(below(3)), 0, 1, 0});
        }
        return values;
    }

    Array<Vector2<float>> coordinates() {
        Array<Vector2<float>> values;
        for (unsigned int i = length(); i > 0; --i) {
            values.pushBack({static_cast<float>(below(3)), 1});
        }
        return values;
    }

    std::mt19937 random;
};

void drawEverything(Mesh_RL_GL& renderer, unsigned int triangleCount) {
    MeshShading shading;
    shading.textureChannel = "uv";
    for (shading.mode = 0; shading.mode < 4; ++shading.mode) {
        for (shading.flags = 0; shading.flags < 4; ++shading.flags) {
            renderer.render(shading);
        }
    }
    renderer.renderPoints(1);
    renderer.renderEdges();
    renderer.renderEdgesConnection();
    renderer.renderEdgesUnconnected();
    renderer.renderVertexNormals(1);
    renderer.renderFaceNormals(1);
    renderer.renderVertexNormals("points", "vectors", 1);
    renderer.renderFaceNormals("points", "vectors", 1);
    for (unsigned int t = 0; t <= triangleCount; ++t) {
        renderer.renderNormals(t, 1);
    }
    renderer.renderWithEdges({1, 1, 1, 1});
    renderer.renderWithEdgesBlending({1, 1, 1, 1}, true);
}

// Meant for the sanitizers, which detect reads outside an array.
TEST_F(Mesh_RL_GL_overlays_calls_test, anyMeshIsDrawnWithinItsArrays) {
    unsigned int sound = 0;
    unsigned int faulty = 0;
    Mesh changing;
    Mesh_RL_GL keeping(&changing, false);  // its buffers outlive their arrays
    for (unsigned int seed = 0; seed < 300; ++seed) {
        Any_mesh(seed).fill(changing);
        Mesh_RL_GL fresh(&changing, false);
        for (Mesh_RL_GL* const subject : {&keeping, &fresh}) {
            for (bool const hasBuffers : {true, false}) {
                subject->useBufferObjects = hasBuffers;
                drawEverything(*subject, changing.triangleCount());
            }
        }
        bool const isSound = changing.triangleFault() == MeshFault_ns::NONE &&
                             changing.vertexNormalFault() == MeshFault_ns::NONE;
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

TEST_F(Mesh_RL_GL_overlays_calls_test, trianglesWithoutAreaAreDrawn) {
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
    for (float const& component : contents(POSITIONS)) {
        EXPECT_TRUE(std::isfinite(component));
    }
    for (unsigned int const normals : {SMOOTH, FACETED}) {
        for (float const& component : contents(normals)) {
            EXPECT_TRUE(std::isfinite(component));
        }
    }
    EXPECT_EQ(contents(POSITIONS).size(), std::size_t{4} * 9);
}

}  // namespace

}  // namespace vellum
