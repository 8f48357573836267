#include "foundation/geometry/Mesh.h"

#include "foundation/geometry/Vector2.h"
#include "mesh_shapes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace vellum {
namespace {

using namespace mesh_shapes;

constexpr float CREASE = 0.7F;  // about 40 degrees
constexpr unsigned int NONE = Mesh::ADJACENCY_NONE;

// == Arrays and references ==

TEST(Mesh_test, aNewMeshHasNoArraysAndNoFault) {
    Mesh mesh;
    EXPECT_EQ(mesh.triangleCount(), 0U);
    EXPECT_EQ(mesh.flags(), 0U);
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
    for (ArrayId const& id : {mesh.positions(), mesh.vertexNormals(), mesh.faceNormals(), mesh.triangles(),
                              mesh.normalTriangles(), mesh.adjacency()}) {
        EXPECT_EQ(id, ARRAY_ID_NONE);
    }
}

TEST(Mesh_test, theMeshHoldsOneReferenceToEachArrayAndGivesItBack) {
    unsigned int const before = VL_ArrayServer.arrayCount();
    {
        Mesh mesh;
        cube().fill(mesh);
        mesh.workNormals(CREASE);
        mesh.workAdjacency();
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "uv", Array<Vector2<float>>{{0, 1}});
        EXPECT_EQ(VL_ArrayServer.arrayCount(), before + 7);
        EXPECT_EQ(VL_ArrayServer.resolve(mesh.positions())->references, 1);
        cube().fill(mesh);
        EXPECT_EQ(VL_ArrayServer.arrayCount(), before + 7) << "a replaced array is released";
    }
    EXPECT_EQ(VL_ArrayServer.arrayCount(), before);
}

TEST(Mesh_test, anArrayThatIsHeldOutlivesItsReplacement) {
    Mesh mesh;
    cube().fill(mesh);
    ArrayHandle const held(mesh.positions());
    mesh.setPositions({{5, 5, 5}});
    EXPECT_EQ(held.resolve()->size, 8U);
    EXPECT_EQ(VL_ArrayServer.resolve(mesh.positions())->size, 1U);
}

TEST(Mesh_test, everySetterStoresACopyAndRaisesTheModifiedBit) {
    Mesh mesh;
    EXPECT_TRUE(mesh.setPositions({{1, 2, 3}}));
    EXPECT_TRUE(mesh.setVertexNormals({{0, 1, 0}}));
    EXPECT_TRUE(mesh.setFaceNormals({{0, 0, 1, 9}}));
    EXPECT_TRUE(mesh.setTriangles({{0, 0, 0}}));
    EXPECT_TRUE(mesh.setNormalTriangles({{0, 0, 0}}));
    EXPECT_TRUE(mesh.setAdjacency({{NONE, NONE, NONE}}));
    for (ArrayId const& id : {mesh.positions(), mesh.vertexNormals(), mesh.faceNormals(), mesh.triangles(),
                              mesh.normalTriangles(), mesh.adjacency()}) {
        ASSERT_NE(id, ARRAY_ID_NONE);
        EXPECT_TRUE(isModified(id));
        EXPECT_EQ(VL_ArrayServer.resolve(id)->size, 1U);
    }
    EXPECT_EQ(copyOf<Vector3<double>>(mesh.positions())[0].z, 3.0);
    EXPECT_EQ(VL_ArrayServer.resolve(mesh.faceNormals())->elementSize, 16U);
    EXPECT_EQ(mesh.triangleCount(), 1U);
}

TEST(Mesh_test, markModifiedRaisesTheBitOfThatArrayAlone) {
    Mesh mesh;
    cube().fill(mesh);
    clearModified(mesh.positions());
    clearModified(mesh.triangles());
    EXPECT_TRUE(mesh.markModified(mesh.positions()));
    EXPECT_TRUE(isModified(mesh.positions()));
    EXPECT_FALSE(isModified(mesh.triangles()));
    EXPECT_FALSE(mesh.markModified(ARRAY_ID_NONE));
}

// == Named arrays ==

TEST(Mesh_test, namedArraysAreFoundByNameAndExactBits) {
    Mesh mesh;
    EXPECT_TRUE(mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "uv", Array<Vector2<float>>{{1, 2}, {3, 4}}));
    EXPECT_TRUE(mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX | MeshArrayInf_ns::UV, "uv",
                                   Array<Vector2<float>>{{5, 6}}));
    ArrayId const plain = mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "uv");
    ASSERT_NE(plain, ARRAY_ID_NONE);
    EXPECT_EQ(VL_ArrayServer.resolve(plain)->size, 2U);
    EXPECT_TRUE(isModified(plain));
    EXPECT_NE(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX | MeshArrayInf_ns::UV, "uv"), plain);
    EXPECT_EQ(mesh.namedArray(MeshArrayInf_ns::PER_FACE, "uv"), ARRAY_ID_NONE);
    EXPECT_EQ(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "UV"), ARRAY_ID_NONE);
    EXPECT_EQ(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "u"), ARRAY_ID_NONE);
}

TEST(Mesh_test, bitsOutsideTheSearchMaskDoNotCountInASearch) {
    Mesh mesh;
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX | MeshArrayInf_ns::ATTACHED_TO_LIFECYCLE, "uv",
                       Array<Vector2<float>>{{1, 2}});
    EXPECT_NE(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "uv"), ARRAY_ID_NONE);
    static_assert(MeshArrayInf_ns::SEARCH_MASK == 0xF01FF && MeshArrayInf_ns::TYPE_MASK == 0x70000);
}

TEST(Mesh_test, aNameThatIsGivenAgainReplacesItsArray) {
    Mesh mesh;
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "uv", Array<Vector2<float>>{{1, 2}});
    unsigned int const arrays = VL_ArrayServer.arrayCount();
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "uv", Array<Vector2<float>>{{3, 4}, {5, 6}});
    EXPECT_EQ(VL_ArrayServer.arrayCount(), arrays);
    EXPECT_EQ(copyOf<Vector2<float>>(mesh.namedArray(MeshArrayInf_ns::PER_VERTEX, "uv")).size(), 2U);
}

// == The box ==

TEST(Mesh_test, theBoxIsThatOfAllPositionsAndItsFlagSaysSo) {
    Mesh mesh;
    mesh.setPositions({{1, -2, 3}, {-4, 5, 0.5}});
    EXPECT_EQ(mesh.flags() & MESH_GOT_BOX, 0U);
    mesh.workBox();
    EXPECT_EQ(mesh.flags() & MESH_GOT_BOX, 1U);
    EXPECT_EQ(mesh.box().min.x, -4.0);
    EXPECT_EQ(mesh.box().max.y, 5.0);
    EXPECT_EQ(mesh.box().min.z, 0.5);
}

TEST(Mesh_test, positionsThatChangeTakeTheBoxFlagAway) {
    Mesh mesh;
    cube().fill(mesh);
    mesh.workBox();
    mesh.markModified(mesh.positions());
    EXPECT_EQ(mesh.flags() & MESH_GOT_BOX, 0U);
    mesh.workBox();
    mesh.setPositions({{7, 7, 7}});
    EXPECT_EQ(mesh.flags() & MESH_GOT_BOX, 0U);
}

TEST(Mesh_test, theBoxOfNothingHasSizeZeroAndWhatIsNoNumberIsPassedOver) {
    Mesh mesh;
    mesh.workBox();
    EXPECT_EQ(mesh.box().min.x, 0.0);
    EXPECT_EQ(mesh.box().max.x, 0.0);
    double const nan = std::numeric_limits<double>::quiet_NaN();
    mesh.setPositions({{nan, 1, 1}, {2, 3, 4}});
    mesh.workBox();
    EXPECT_EQ(mesh.box().min.x, 2.0);
    EXPECT_EQ(mesh.box().min.y, 1.0);
}

// == Adjacency ==

/// Checks every entry of an adjacency against the shape: the named corner has the position of the own corner,
/// and the two triangles share the edge.
void expectAdjacencyFits(Mesh const& mesh) {
    Array<Triangle> const triangles = copyOf<Triangle>(mesh.triangles());
    Array<Triangle> const adjacency = copyOf<Triangle>(mesh.adjacency());
    ASSERT_EQ(adjacency.size(), triangles.size());
    for (unsigned int t = 0; t < triangles.size(); ++t) {
        for (unsigned int k = 0; k < 3; ++k) {
            unsigned int const entry = at(adjacency[t], k);
            if (entry == NONE)
                continue;
            Triangle const& neighbor = triangles[entry >> 2];
            unsigned int const own = at(triangles[t], k);
            unsigned int const next = at(triangles[t], (k + 1) % 3);
            ASSERT_EQ(at(neighbor, entry & 3U), own) << "triangle " << t << ", edge " << k;
            EXPECT_TRUE(neighbor.e0 == next || neighbor.e1 == next || neighbor.e2 == next);
            EXPECT_NE(entry >> 2, t);
        }
    }
}

TEST(Mesh_test, anEntryNamesTheNeighborsCornerOnTheOwnCorner) {
    Mesh mesh;
    mesh.setPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, -1, 0}});
    mesh.setTriangles({{0, 1, 2}, {1, 0, 3}});
    ASSERT_TRUE(mesh.workAdjacency());
    Array<Triangle> const adjacency = copyOf<Triangle>(mesh.adjacency());
    EXPECT_EQ(adjacency[0].e0, 1U * 4 + 1);
    EXPECT_EQ(adjacency[1].e0, 0U * 4 + 1);
    for (unsigned int const border : {adjacency[0].e1, adjacency[0].e2, adjacency[1].e1, adjacency[1].e2})
        EXPECT_EQ(border, NONE);
    EXPECT_TRUE(isModified(mesh.adjacency()));
}

TEST(Mesh_test, closedShapesHaveNoBordersAndOpenOnesTheirOwn) {
    Mesh mesh;
    cube().fill(mesh);
    ASSERT_TRUE(mesh.workAdjacency());
    EXPECT_EQ(borderCount(mesh), 0U);
    expectAdjacencyFits(mesh);
    sphere(8).fill(mesh);
    ASSERT_TRUE(mesh.workAdjacency());
    EXPECT_EQ(borderCount(mesh), 0U);
    expectAdjacencyFits(mesh);
    grid(5).fill(mesh);
    ASSERT_TRUE(mesh.workAdjacency());
    EXPECT_EQ(borderCount(mesh), 20U);
    expectAdjacencyFits(mesh);
}

TEST(Mesh_test, theMoebiusBandIsConnectedAcrossItsSeam) {
    Mesh mesh;
    moebiusBand(12).fill(mesh);
    ASSERT_TRUE(mesh.workAdjacency());
    EXPECT_EQ(borderCount(mesh), 24U) << "one border that runs around twice";
    expectAdjacencyFits(mesh);
}

TEST(Mesh_test, edgesWithMoreThanTwoTrianglesAreBorders) {
    Mesh mesh;
    mesh.setPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}});
    for (unsigned int wings = 3; wings <= 4; ++wings) {
        Array<Triangle> triangles{{0, 1, 2}, {1, 0, 3}, {0, 1, 4}, {5, 0, 1}};
        triangles.setSize(wings);
        mesh.setTriangles(triangles);
        ASSERT_TRUE(mesh.workAdjacency());
        EXPECT_EQ(borderCount(mesh), 3 * wings);
    }
}

TEST(Mesh_test, theNeighborsOfANonManifoldEdgeKeepTheirOtherEdges) {
    // The first two triangles share a second edge with others, which must be kept.
    Mesh mesh;
    mesh.setPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {1, 1, 0}, {1, -1, 0}});
    mesh.setTriangles({{0, 1, 2}, {1, 0, 3}, {2, 1, 5}, {1, 3, 6}, {0, 1, 4}});
    ASSERT_TRUE(mesh.workAdjacency());
    EXPECT_EQ(borderCount(mesh), 15U - 4U);
    expectAdjacencyFits(mesh);
}

TEST(Mesh_test, aTriangleThatNamesAVertexTwiceHasNoNeighbors) {
    Mesh mesh;
    mesh.setPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}});
    mesh.setTriangles({{0, 1, 2}, {1, 1, 2}, {2, 1, 3}, {0, 1, 0}});
    ASSERT_TRUE(mesh.workAdjacency());
    Array<Triangle> const adjacency = copyOf<Triangle>(mesh.adjacency());
    EXPECT_EQ(adjacency[0].e1, 2U * 4 + 1) << "the triangles beside it find each other";
    for (unsigned int const t : {1U, 3U}) {
        for (unsigned int k = 0; k < 3; ++k)
            EXPECT_EQ(at(adjacency[t], k), NONE);
    }
}

TEST(Mesh_test, theAdjacencyIsThatOfAComparisonOfAllEdges) {
    // Random triangles: many share edges, and some edges are shared by more than two.
    unsigned int random = 1;
    auto const next = [&](unsigned int end) {
        random = random * 1664525U + 1013904223U;
        return (random >> 8) % end;
    };
    for (unsigned int round = 0; round < 20; ++round) {
        Shape shape;
        for (unsigned int i = 0; i < 12; ++i)
            shape.positions.pushBack({double(next(100)), double(next(100)), double(next(100))});
        for (unsigned int i = 0; i < 30; ++i)
            shape.triangles.pushBack({next(12), next(12), next(12)});
        Mesh mesh;
        shape.fill(mesh);
        ASSERT_TRUE(mesh.workAdjacency());

        std::map<std::pair<unsigned int, unsigned int>, std::set<unsigned int>> users;
        auto const isFlat = [](Triangle const& t) { return t.e0 == t.e1 || t.e1 == t.e2 || t.e2 == t.e0; };
        for (unsigned int t = 0; t < 30; ++t) {
            for (unsigned int k = 0; k < 3 && !isFlat(shape.triangles[t]); ++k)
                users[std::minmax({at(shape.triangles[t], k), at(shape.triangles[t], (k + 1) % 3)})].insert(
                    t);
        }
        Array<Triangle> const adjacency = copyOf<Triangle>(mesh.adjacency());
        for (unsigned int t = 0; t < 30; ++t) {
            for (unsigned int k = 0; k < 3; ++k) {
                auto const edge =
                    std::minmax({at(shape.triangles[t], k), at(shape.triangles[t], (k + 1) % 3)});
                std::set<unsigned int> others = users[edge];
                others.erase(t);
                bool const isShared = !isFlat(shape.triangles[t]) && others.size() == 1;
                ASSERT_EQ(at(adjacency[t], k) >> 2, isShared ? *others.begin() : NONE >> 2)
                    << "round " << round << ", triangle " << t << ", edge " << k;
            }
        }
        expectAdjacencyFits(mesh);
    }
}

TEST(Mesh_test, adjacencyReachesBeyondTheNumbersOf16Bits) {
    Mesh mesh;
    grid(200).fill(mesh);
    ASSERT_EQ(mesh.triangleCount(), 80000U);
    ASSERT_TRUE(mesh.workAdjacency());
    EXPECT_EQ(borderCount(mesh), 800U);
    expectAdjacencyFits(mesh);
}

// == Normals ==

TEST(Mesh_test, aFlatGridHasOneNormalEverywhere) {
    Mesh mesh;
    grid(4).fill(mesh);
    ASSERT_TRUE(mesh.workNormals(CREASE));
    Array<Vector3<float>> const normals = copyOf<Vector3<float>>(mesh.vertexNormals());
    ASSERT_EQ(normals.size(), 25U);
    for (Vector3<float> const& n : normals) {
        EXPECT_EQ(n.x, 0.0F);
        EXPECT_EQ(n.y, 0.0F);
        EXPECT_EQ(n.z, 1.0F);
    }
    for (Color4<float> const& n : copyOf<Color4<float>>(mesh.faceNormals()))
        EXPECT_EQ(n, (Color4<float>{0, 0, 1, 0}));
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
}

TEST(Mesh_test, theHardEdgesOfACubeSplitItsNormals) {
    Mesh mesh;
    Shape const shape = cube();
    shape.fill(mesh);
    ASSERT_TRUE(mesh.workNormals(CREASE));
    Array<Vector3<float>> const normals = copyOf<Vector3<float>>(mesh.vertexNormals());
    Array<Triangle> const normalTriangles = copyOf<Triangle>(mesh.normalTriangles());
    Array<Color4<float>> const faceNormals = copyOf<Color4<float>>(mesh.faceNormals());
    EXPECT_EQ(normals.size(), 24U) << "three at each of the eight vertices";
    bool isSplit = false;
    for (unsigned int t = 0; t < 12; ++t) {
        for (unsigned int k = 0; k < 3; ++k) {
            Vector3<float> const& n = normals[at(normalTriangles[t], k)];
            EXPECT_NEAR(n.x, faceNormals[t].r, 1e-6);
            EXPECT_NEAR(n.y, faceNormals[t].g, 1e-6);
            EXPECT_NEAR(n.z, faceNormals[t].b, 1e-6);
            isSplit = isSplit || at(normalTriangles[t], k) != at(shape.triangles[t], k);
        }
    }
    EXPECT_TRUE(isSplit);
}

TEST(Mesh_test, withoutACreaseTheNormalTrianglesAreTheTriangles) {
    Mesh mesh;
    Shape const shape = cube();
    shape.fill(mesh);
    ASSERT_TRUE(mesh.workNormals());
    Array<Vector3<float>> const normals = copyOf<Vector3<float>>(mesh.vertexNormals());
    Array<Triangle> const normalTriangles = copyOf<Triangle>(mesh.normalTriangles());
    ASSERT_EQ(normals.size(), 8U);
    for (unsigned int i = 0; i < 8; ++i) {
        // Angle weights do not depend on the triangulation of the faces: the normal is the diagonal.
        EXPECT_NEAR(normals[i].x, shape.positions[i].x / std::sqrt(3.0), 1e-6);
        EXPECT_NEAR(normals[i].y, shape.positions[i].y / std::sqrt(3.0), 1e-6);
        EXPECT_NEAR(normals[i].z, shape.positions[i].z / std::sqrt(3.0), 1e-6);
    }
    for (unsigned int t = 0; t < 12; ++t) {
        for (unsigned int k = 0; k < 3; ++k)
            EXPECT_EQ(at(normalTriangles[t], k), at(shape.triangles[t], k));
    }
}

TEST(Mesh_test, aSphereIsSmoothAlsoWithACrease) {
    Mesh mesh;
    Shape const shape = sphere(16);
    shape.fill(mesh);
    ASSERT_TRUE(mesh.workNormals(CREASE));
    Array<Vector3<float>> const normals = copyOf<Vector3<float>>(mesh.vertexNormals());
    ASSERT_EQ(normals.size(), shape.positions.size()) << "one smoothing group";
    for (unsigned int i = 0; i < normals.size(); ++i) {
        EXPECT_GT(dot(convert<double>(normals[i]), shape.positions[i]), 0.995);
        EXPECT_NEAR(length(normals[i]), 1.0F, 1e-6);
    }
}

TEST(Mesh_test, theMoebiusBandIsSplitWhereItsSidesAreSwapped) {
    Mesh mesh;
    Shape const shape = moebiusBand(24);
    shape.fill(mesh);
    ASSERT_TRUE(mesh.workNormals(1.5F));
    EXPECT_EQ(VL_ArrayServer.resolve(mesh.vertexNormals())->size, shape.positions.size() + 2);
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
    for (Vector3<float> const& n : copyOf<Vector3<float>>(mesh.vertexNormals()))
        EXPECT_NEAR(length(n), 1.0F, 1e-5);
}

TEST(Mesh_test, anAdjacencyOfOtherTrianglesDoesNotMisleadTheNormals) {
    Mesh derived;
    cube().fill(derived);
    derived.workNormals(CREASE);
    Mesh mesh;
    cube().fill(mesh);
    mesh.setAdjacency(Array<Triangle>{{4, 8, 12},
                                      {16, 20, 24},
                                      {28, 32, 36},
                                      {40, 44, 0},
                                      {1, 5, 9},
                                      {13, 17, 21},
                                      {2, 6, 10},
                                      {14, 18, 22},
                                      {4, 8, 12},
                                      {16, 20, 24},
                                      {28, 32, 36},
                                      {40, 44, 0}});
    ASSERT_EQ(mesh.fault(), MeshFault_ns::NONE);
    ASSERT_TRUE(mesh.workNormals(CREASE));
    for (Vector3<float> const& n : copyOf<Vector3<float>>(mesh.vertexNormals()))
        EXPECT_NEAR(length(n), 1.0F, 1e-6);
}

TEST(Mesh_test, trianglesWithoutAreaHaveNoNormalAndSpoilNone) {
    Mesh mesh;
    mesh.setPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {2, 0, 0}, {9, 9, 9}});
    mesh.setTriangles({{0, 1, 3}, {0, 0, 0}, {0, 1, 2}});
    for (float const crease : {CREASE, Mesh::NO_CREASE}) {
        ASSERT_TRUE(mesh.workNormals(crease));
        Array<Color4<float>> const faceNormals = copyOf<Color4<float>>(mesh.faceNormals());
        EXPECT_EQ(faceNormals[0], (Color4<float>{0, 0, 0, 0}));
        EXPECT_EQ(faceNormals[1], (Color4<float>{0, 0, 0, 0}));
        EXPECT_EQ(faceNormals[2], (Color4<float>{0, 0, 1, 0}));
        Array<Vector3<float>> const normals = copyOf<Vector3<float>>(mesh.vertexNormals());
        for (unsigned int const i : {0U, 1U, 2U})
            EXPECT_EQ(normals[i].z, 1.0F);
        for (unsigned int const i : {3U, 4U})
            EXPECT_EQ(length(normals[i]), 0.0F);
        EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
    }
}

TEST(Mesh_test, veryLargeAndVerySmallShapesHaveNormalsToo) {
    for (double const scale : {1e-200, 1e-30, 1e30, 1e150}) {
        Mesh mesh;
        Shape shape = oneTriangle();
        for (Vector3<double>& p : shape.positions)
            p = p * scale;
        shape.fill(mesh);
        ASSERT_TRUE(mesh.workNormals());
        EXPECT_EQ(copyOf<Vector3<float>>(mesh.vertexNormals())[0].z, 1.0F) << scale;
    }
}

TEST(Mesh_test, theFaceNormalsAloneLeaveTheVertexNormals) {
    Mesh mesh;
    oneTriangle().fill(mesh);
    mesh.setVertexNormals({{1, 0, 0}});
    ASSERT_TRUE(mesh.workFaceNormals());
    EXPECT_EQ(copyOf<Color4<float>>(mesh.faceNormals())[0], (Color4<float>{0, 0, 1, 0}));
    EXPECT_EQ(VL_ArrayServer.resolve(mesh.vertexNormals())->size, 1U);
}

// == Faults ==

struct FaultCase {
    char const* name;
    void (*spoil)(Mesh&);
    MeshFault_ns::type fault;
};

class Mesh_fault_test : public testing::TestWithParam<FaultCase> {};

TEST_P(Mesh_fault_test, isFoundAndTheMeshIsFineAgainWhenItIsRepaired) {
    Mesh mesh;
    auto const repair = [&] {
        cube().fill(mesh);
        mesh.workNormals(CREASE);
        mesh.workAdjacency();
    };
    repair();
    ASSERT_EQ(mesh.fault(), MeshFault_ns::NONE);
    GetParam().spoil(mesh);
    EXPECT_EQ(mesh.fault(), GetParam().fault) << MeshFault_ns::text(mesh.fault());
    repair();
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
}

void write(Mesh& mesh, ArrayId const& id, unsigned int value) {
    VL_ArrayServer.resolve(id)->as<Triangle>()[5].e2 = value;
    mesh.markModified(id);
}

INSTANTIATE_TEST_SUITE_P(
    All, Mesh_fault_test,
    testing::Values(
        FaultCase{"fewerPositions",
                  [](Mesh& m) {
                      m.setPositions({{0, 0, 0}});
                  },
                  MeshFault_ns::INDEX_OUT_OF_RANGE},
        FaultCase{"noPositions", [](Mesh& m) { m.setPositions({}); }, MeshFault_ns::INDEX_OUT_OF_RANGE},
        FaultCase{"indexInPlace", [](Mesh& m) { write(m, m.triangles(), 8); },
                  MeshFault_ns::INDEX_OUT_OF_RANGE},
        FaultCase{"indexOfAllOnes", [](Mesh& m) { write(m, m.triangles(), 0xFFFFFFFFU); },
                  MeshFault_ns::INDEX_OUT_OF_RANGE},
        FaultCase{"moreTriangles", [](Mesh& m) { m.setTriangles(Array<Triangle>(sphere(4).triangles)); },
                  MeshFault_ns::INDEX_OUT_OF_RANGE},
        FaultCase{"fewerTriangles",
                  [](Mesh& m) {
                      m.setTriangles({{0, 1, 2}});
                  },
                  MeshFault_ns::NORMAL_TRIANGLE_COUNT},
        FaultCase{"fewerNormalTriangles",
                  [](Mesh& m) {
                      m.setNormalTriangles({{0, 1, 2}});
                  },
                  MeshFault_ns::NORMAL_TRIANGLE_COUNT},
        FaultCase{"fewerNormals",
                  [](Mesh& m) {
                      m.setVertexNormals({{0, 0, 1}});
                  },
                  MeshFault_ns::NORMAL_INDEX_OUT_OF_RANGE},
        FaultCase{"noNormals", [](Mesh& m) { m.setVertexNormals({}); },
                  MeshFault_ns::NORMAL_INDEX_OUT_OF_RANGE},
        FaultCase{"normalIndexInPlace", [](Mesh& m) { write(m, m.normalTriangles(), 24); },
                  MeshFault_ns::NORMAL_INDEX_OUT_OF_RANGE},
        FaultCase{"fewerFaceNormals",
                  [](Mesh& m) {
                      m.setFaceNormals({{0, 0, 1, 0}});
                  },
                  MeshFault_ns::FACE_NORMAL_COUNT},
        FaultCase{"fewerEntries",
                  [](Mesh& m) {
                      m.setAdjacency({{NONE, NONE, NONE}});
                  },
                  MeshFault_ns::ADJACENCY_COUNT},
        FaultCase{"entryBeyondTheTriangles", [](Mesh& m) { write(m, m.adjacency(), 12 * 4); },
                  MeshFault_ns::ADJACENCY_OUT_OF_RANGE},
        FaultCase{"entryOfAFourthCorner", [](Mesh& m) { write(m, m.adjacency(), 3); },
                  MeshFault_ns::ADJACENCY_OUT_OF_RANGE},
        FaultCase{"entryOfNearlyAllOnes", [](Mesh& m) { write(m, m.adjacency(), 0xFFFFFFFEU); },
                  MeshFault_ns::ADJACENCY_OUT_OF_RANGE}),
    [](auto const& info) { return std::string(info.param.name); });

TEST(Mesh_test, theLastIndicesThatExistAreNoFault) {
    Mesh mesh;
    cube().fill(mesh);
    mesh.workNormals(CREASE);
    mesh.workAdjacency();
    write(mesh, mesh.triangles(), 7);
    write(mesh, mesh.normalTriangles(), 23);
    write(mesh, mesh.adjacency(), 11 * 4 + 2);
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
}

TEST(Mesh_test, whatAnIndexReachesUpToIsRememberedWhileTheBitIsClear) {
    Mesh mesh;
    cube().fill(mesh);
    ASSERT_EQ(mesh.fault(), MeshFault_ns::NONE);
    clearModified(mesh.triangles());
    mesh.setPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    EXPECT_EQ(mesh.fault(), MeshFault_ns::INDEX_OUT_OF_RANGE) << "fewer positions need no new look";
    mesh.setPositions(cube().positions);
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
}

TEST(Mesh_test, nothingIsDerivedFromTrianglesThatNameMissingVertices) {
    Mesh mesh;
    mesh.setPositions({{0, 0, 0}});
    mesh.setTriangles({{0, 0, 1}});
    EXPECT_FALSE(mesh.workNormals(CREASE));
    EXPECT_FALSE(mesh.workNormals());
    EXPECT_FALSE(mesh.workFaceNormals());
    EXPECT_FALSE(mesh.workAdjacency());
    EXPECT_EQ(mesh.vertexNormals(), ARRAY_ID_NONE);
    EXPECT_EQ(mesh.adjacency(), ARRAY_ID_NONE);
}

TEST(Mesh_test, anEmptyMeshIsDerivedFromWithoutHarm) {
    Mesh mesh;
    EXPECT_TRUE(mesh.workNormals(CREASE));
    EXPECT_TRUE(mesh.workNormals());
    EXPECT_TRUE(mesh.workAdjacency());
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
}

TEST(Mesh_test, everyFaultHasItsWords) {
    std::set<std::string> texts;
    for (unsigned int i = 0; i <= MeshFault_ns::ADJACENCY_OUT_OF_RANGE; ++i)
        texts.insert(MeshFault_ns::text(MeshFault_ns::type(i)));
    EXPECT_EQ(texts.size(), MeshFault_ns::ADJACENCY_OUT_OF_RANGE + 1U);
    EXPECT_STREQ(MeshFault_ns::text(MeshFault_ns::type(99)), "the fault is not known");
}

}  // namespace
}  // namespace vellum
