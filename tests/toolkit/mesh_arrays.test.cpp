#include "toolkit/mesh_arrays.h"

#include "foundation/basic/ArrayServer.h"
#include "tests/foundation/geometry/mesh_shapes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;
using testing::ElementsAre;

namespace {

using Triangle = Tuple3<unsigned int>;
using Point = std::array<double, 3>;

template <class T>
std::vector<T> elements(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    T const* const first = array != nullptr ? array->as<T>() : nullptr;
    return first != nullptr ? std::vector<T>(first, first + array->size) : std::vector<T>{};
}

std::vector<Point> positionsOf(Mesh const& mesh) {
    std::vector<Point> points;
    for (Vector3<double> const& p : elements<Vector3<double>>(mesh.positions())) {
        points.push_back({p.x, p.y, p.z});
    }
    return points;
}

std::vector<std::array<unsigned int, 3>> triples(ArrayId const& id) {
    std::vector<std::array<unsigned int, 3>> all;
    for (Triangle const& t : elements<Triangle>(id)) {
        all.push_back({t.e0, t.e1, t.e2});
    }
    return all;
}

std::vector<std::array<float, 2>> pairs(ArrayId const& id) {
    std::vector<std::array<float, 2>> all;
    for (Vector2<float> const& v : elements<Vector2<float>>(id)) {
        all.push_back({v.x, v.y});
    }
    return all;
}

class mesh_arrays_test : public testing::Test {
protected:
    /// Two triangles of a square.
    void fillSquare() {
        ASSERT_TRUE(setPositions(mesh, std::vector<float>{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}));
        ASSERT_TRUE(setTriangles(mesh, std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3}));
    }

    void fillCube() {
        mesh_shapes::Shape const cube = mesh_shapes::cube();
        ASSERT_TRUE(setPositions(mesh, cube.positions));
        ASSERT_TRUE(setTriangles(mesh, cube.triangles));
    }

    unsigned int normalCount() const {
        return static_cast<unsigned int>(elements<Vector3<float>>(mesh.vertexNormals()).size());
    }

    Mesh mesh;
};

// == Positions ==

TEST_F(mesh_arrays_test, positionsComeFromPointsAndNumbersOfBothPrecisions) {
    std::vector<Point> const expected{{1, 2, 3}, {4, 5, 6.5}};
    EXPECT_TRUE(setPositions(mesh, std::vector<Vector3<double>>{{1, 2, 3}, {4, 5, 6.5}}));
    EXPECT_EQ(positionsOf(mesh), expected);
    EXPECT_TRUE(setPositions(mesh, std::vector<Vector3<float>>{{1, 2, 3}, {4, 5, 6.5F}}));
    EXPECT_EQ(positionsOf(mesh), expected);
    EXPECT_TRUE(setPositions(mesh, std::vector<double>{1, 2, 3, 4, 5, 6.5}));
    EXPECT_EQ(positionsOf(mesh), expected);
    float const xyz[] = {1, 2, 3, 4, 5, 6.5F};
    EXPECT_TRUE(setPositions(mesh, xyz));
    EXPECT_EQ(positionsOf(mesh), expected);
    EXPECT_TRUE(setPositions(mesh, {&xyz[0], 3}));
    EXPECT_EQ(positionsOf(mesh), (std::vector<Point>{{1, 2, 3}}));
}

TEST_F(mesh_arrays_test, numbersThatAreNoPointsChangeNothing) {
    ASSERT_TRUE(setPositions(mesh, std::vector<float>{1, 2, 3}));
    EXPECT_FALSE(setPositions(mesh, std::vector<float>{1, 2, 3, 4}));
    EXPECT_FALSE(setPositions(mesh, std::vector<double>{1, 2}));
    EXPECT_EQ(positionsOf(mesh), (std::vector<Point>{{1, 2, 3}}));
}

TEST_F(mesh_arrays_test, noPositionsAreAllowed) {
    ASSERT_TRUE(setPositions(mesh, std::vector<float>{1, 2, 3}));
    EXPECT_TRUE(setPositions(mesh, Span<float>()));
    EXPECT_TRUE(positionsOf(mesh).empty());
}

TEST_F(mesh_arrays_test, newPositionsCountAsModifiedAndHaveNoBox) {
    fillSquare();
    ASSERT_TRUE(prepareMesh(mesh));
    mesh_shapes::clearModified(mesh.positions());
    EXPECT_TRUE(setPositions(mesh, std::vector<float>{1, 2, 3}));
    EXPECT_TRUE(mesh_shapes::isModified(mesh.positions()));
    EXPECT_EQ(mesh.flags() & MESH_GOT_BOX, 0U);
}

TEST_F(mesh_arrays_test, arraysChangedInPlaceAreNotModifiedUntilTheyAreMarked) {
    fillSquare();
    mesh_shapes::clearModified(mesh.positions());
    VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>()[0].z = 1;
    EXPECT_FALSE(mesh_shapes::isModified(mesh.positions()));
    EXPECT_TRUE(mesh.markModified(mesh.positions()));
    EXPECT_TRUE(mesh_shapes::isModified(mesh.positions()));
}

TEST_F(mesh_arrays_test, allArraysAreMarkedAtOnce) {
    fillSquare();
    ASSERT_TRUE(prepareMesh(mesh));
    std::vector<ArrayId> const arrays{mesh.positions(),       mesh.triangles(),   mesh.vertexNormals(),
                                      mesh.normalTriangles(), mesh.faceNormals(), mesh.adjacency()};
    for (ArrayId const& array : arrays) {
        mesh_shapes::clearModified(array);
    }
    markChanged(mesh);
    for (ArrayId const& array : arrays) {
        EXPECT_TRUE(mesh_shapes::isModified(array));
    }
    Mesh empty;
    markChanged(empty);
}

// == Triangles ==

TEST_F(mesh_arrays_test, trianglesComeFromIndicesOfBothWidths) {
    EXPECT_TRUE(setTriangles(mesh, std::vector<std::uint32_t>{0, 1, 2, 2, 1, 3}));
    EXPECT_THAT(triples(mesh.triangles()), ElementsAre(ElementsAre(0, 1, 2), ElementsAre(2, 1, 3)));
    EXPECT_TRUE(setTriangles(mesh, std::vector<std::uint64_t>{3, 4, 0xFFFFFFFFU}));
    EXPECT_THAT(triples(mesh.triangles()), ElementsAre(ElementsAre(3, 4, 0xFFFFFFFFU)));
    EXPECT_TRUE(setTriangles(mesh, std::vector<Triangle>{{5, 6, 7}}));
    EXPECT_THAT(triples(mesh.triangles()), ElementsAre(ElementsAre(5, 6, 7)));
}

TEST_F(mesh_arrays_test, indicesThatAreNoTrianglesChangeNothing) {
    fillSquare();
    EXPECT_FALSE(setTriangles(mesh, std::vector<std::uint32_t>{0, 1}));
    EXPECT_FALSE(setTriangles(mesh, std::vector<std::uint64_t>{0, 1, 2, 3}));
    EXPECT_FALSE(setTriangles(mesh, std::vector<std::uint64_t>{0, 1, 0x100000000U}))
        << "the index would become 0";
    EXPECT_EQ(triples(mesh.triangles()).size(), 2U);
}

TEST_F(mesh_arrays_test, moreTrianglesThanAMeshTakesAreRefusedUnread) {
    fillSquare();
    std::uint32_t const corners[3] = {0, 1, 2};
    Triangle const triangles[1] = {{0, 1, 2}};
    std::size_t const tooMany = std::size_t{Mesh::MOST_TRIANGLES} + 1;
    EXPECT_FALSE(setTriangles(mesh, Span<std::uint32_t>(corners, tooMany * 3)));
    EXPECT_FALSE(setTriangles(mesh, Span<Triangle>(triangles, tooMany)));
    EXPECT_FALSE(setTextureCoordinates(mesh, "uv", Span<Vector2<float>>(), {corners, tooMany * 3}));
    EXPECT_EQ(triples(mesh.triangles()).size(), 2U);
}

TEST_F(mesh_arrays_test, moreElementsThan32BitsCountAreRefusedUnread) {
    std::size_t const tooMany = std::size_t{1} << 32U;
    Vector3<double> const point{0, 0, 0};
    Color4<float> const color{0, 0, 0, 1};
    Vector2<float> const coordinate{0, 0};
    EXPECT_FALSE(setPositions(mesh, Span<Vector3<double>>(&point, tooMany)));
    EXPECT_FALSE(setColors(mesh, "c", {&color, tooMany}));
    EXPECT_FALSE(setTextureCoordinates(mesh, "uv", {&coordinate, tooMany}));
    EXPECT_EQ(mesh.positions(), ARRAY_ID_NONE);
}

// == Normals ==

TEST_F(mesh_arrays_test, vertexNormalsBelongToPositionsInAllTriangles) {
    fillCube();
    ASSERT_TRUE(prepareMesh(mesh, 40));
    std::vector<Vector3<float>> const normals(8, {0, 0, 1});
    EXPECT_TRUE(setVertexNormals(mesh, normals));
    EXPECT_EQ(triples(mesh.normalTriangles()), triples(mesh.triangles()));
    EXPECT_EQ(normalCount(), 8U);
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
}

TEST_F(mesh_arrays_test, vertexNormalsNeedTriangles) {
    EXPECT_FALSE(setVertexNormals(mesh, std::vector<Vector3<float>>(3)));
    EXPECT_EQ(mesh.vertexNormals(), ARRAY_ID_NONE);
}

TEST_F(mesh_arrays_test, tooFewVertexNormalsAreAFaultOfTheMesh) {
    fillSquare();
    EXPECT_TRUE(setVertexNormals(mesh, std::vector<Vector3<float>>(2, {0, 0, 1})));
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NORMAL_INDEX_OUT_OF_RANGE);
}

// == Named arrays ==

TEST_F(mesh_arrays_test, coordinatesOfPositionsAreFoundPerVertex) {
    fillSquare();
    std::vector<Vector2<float>> const uv{{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    EXPECT_TRUE(setTextureCoordinates(mesh, "uv", uv));
    EXPECT_EQ(pairs(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "uv")).size(), 4U);
    EXPECT_EQ(mesh.namedArray(MeshArrayInf_ns::PER_FACE, "uv"), ARRAY_ID_NONE);
}

TEST_F(mesh_arrays_test, coordinatesWithCornersAreFoundPerFace) {
    fillSquare();
    std::vector<Vector2<float>> const uv{{0, 0}, {1, 0}, {1, 1}};
    EXPECT_TRUE(setTextureCoordinates(mesh, "uv", uv, std::vector<std::uint32_t>{0, 1, 2, 2, 1, 0}));
    EXPECT_EQ(pairs(mesh.namedArray(MeshArrayInf_ns::PER_FACE, "uv")).size(), 3U);
    EXPECT_THAT(triples(mesh.namedArray(MeshArrayInf_ns::TRINDEXED, "uv")),
                ElementsAre(ElementsAre(0, 1, 2), ElementsAre(2, 1, 0)));
    EXPECT_FALSE(setTextureCoordinates(mesh, "uv", uv, std::vector<std::uint32_t>{0, 1}));
    EXPECT_EQ(triples(mesh.namedArray(MeshArrayInf_ns::TRINDEXED, "uv")).size(), 2U) << "nothing changed";
}

TEST_F(mesh_arrays_test, coordinatesOfPositionsReplaceThoseWithCorners) {
    fillSquare();
    ASSERT_TRUE(setTextureCoordinates(mesh, "uv", std::vector<Vector2<float>>{{9, 9}},
                                      std::vector<std::uint32_t>{0, 0, 0}));
    ASSERT_TRUE(
        setTextureCoordinates(mesh, "uv", std::vector<Vector2<float>>{{0, 0}, {1, 0}, {1, 1}, {0, 1}}));
    EXPECT_EQ(triples(mesh.namedArray(MeshArrayInf_ns::TRINDEXED, "uv")), triples(mesh.triangles()));
    EXPECT_THAT(pairs(mesh.namedArray(MeshArrayInf_ns::PER_FACE, "uv")),
                ElementsAre(ElementsAre(0, 0), ElementsAre(1, 0), ElementsAre(1, 1), ElementsAre(0, 1)));
}

TEST_F(mesh_arrays_test, colorsAreFoundPerVertex) {
    EXPECT_TRUE(setColors(mesh, "heat", std::vector<Color4<float>>{{1, 0, 0, 1}, {0, 1, 0, 1}}));
    auto const colors = elements<Color4<float>>(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "heat"));
    ASSERT_EQ(colors.size(), 2U);
    EXPECT_TRUE(colors[1] == (Color4<float>{0, 1, 0, 1}));
}

TEST_F(mesh_arrays_test, namesMustNotBeNullOrEmpty) {
    for (char const* const name : {static_cast<char const*>(nullptr), ""}) {
        EXPECT_FALSE(setColors(mesh, name, std::vector<Color4<float>>(1)));
        EXPECT_FALSE(setTextureCoordinates(mesh, name, std::vector<Vector2<float>>(1)));
        EXPECT_FALSE(setTextureCoordinates(mesh, name, std::vector<Vector2<float>>(1),
                                           std::vector<std::uint32_t>{0, 0, 0}));
        EXPECT_EQ(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, name), ARRAY_ID_NONE);
    }
}

// == Preparing ==

TEST_F(mesh_arrays_test, preparedMeshHasAdjacencyNormalsAndBox) {
    fillCube();
    EXPECT_TRUE(prepareMesh(mesh));
    EXPECT_EQ(mesh_shapes::borderCount(mesh), 0U);
    EXPECT_EQ(triples(mesh.adjacency()).size(), 12U);
    EXPECT_EQ(elements<Color4<float>>(mesh.faceNormals()).size(), 12U);
    EXPECT_NE(mesh.flags() & MESH_GOT_BOX, 0U);
    EXPECT_EQ(mesh.box().max.x, 1);
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
}

TEST_F(mesh_arrays_test, hardEdgesAreThoseAboveTheAngleInDegrees) {
    struct Row {
        double degrees;
        unsigned int normals;
    };
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (Row const& row : {Row{NO_HARD_EDGES, 8}, Row{91, 8}, Row{89, 24}, Row{1, 24}, Row{0, 24},
                           Row{-30, 24}, Row{1000, 8}, Row{nan, 8}}) {
        fillCube();
        EXPECT_TRUE(prepareMesh(mesh, row.degrees));
        EXPECT_EQ(normalCount(), row.normals) << row.degrees << " degrees";
    }
}

TEST_F(mesh_arrays_test, normalsOfCounterclockwiseTrianglesPointOutside) {
    fillCube();
    ASSERT_TRUE(prepareMesh(mesh));
    std::vector<Point> const positions = positionsOf(mesh);
    auto const normals = elements<Vector3<float>>(mesh.vertexNormals());
    for (std::size_t i = 0; i < positions.size(); ++i) {
        EXPECT_GT(positions[i][0] * static_cast<double>(normals[i].x), 0) << "corner " << i;
        EXPECT_GT(positions[i][2] * static_cast<double>(normals[i].z), 0) << "corner " << i;
    }
}

TEST_F(mesh_arrays_test, edgesWhereTheWindingDisagreesAreHard) {
    ASSERT_TRUE(setPositions(mesh, std::vector<float>{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}));
    ASSERT_TRUE(setTriangles(mesh, std::vector<std::uint32_t>{0, 1, 2, 0, 3, 2}));
    ASSERT_TRUE(prepareMesh(mesh, 179));
    EXPECT_EQ(normalCount(), 6U) << "both corners of the common edge have two normals";
}

TEST_F(mesh_arrays_test, preparingAgainFollowsTheShape) {
    fillSquare();
    ASSERT_TRUE(prepareMesh(mesh));
    fillCube();
    ASSERT_TRUE(prepareMesh(mesh));
    EXPECT_EQ(triples(mesh.adjacency()).size(), 12U);
    EXPECT_EQ(mesh.box().min.z, -1);
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
}

TEST_F(mesh_arrays_test, trianglesOfMissingPositionsAreNotPrepared) {
    fillSquare();
    ASSERT_TRUE(setTriangles(mesh, std::vector<std::uint32_t>{0, 1, 4}));
    EXPECT_FALSE(prepareMesh(mesh));
    EXPECT_EQ(mesh.fault(), MeshFault_ns::INDEX_OUT_OF_RANGE);
    EXPECT_EQ(mesh.vertexNormals(), ARRAY_ID_NONE);
    EXPECT_EQ(mesh.adjacency(), ARRAY_ID_NONE);
}

TEST_F(mesh_arrays_test, emptyMeshIsPrepared) {
    EXPECT_TRUE(prepareMesh(mesh, 30));
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
}

}  // namespace
