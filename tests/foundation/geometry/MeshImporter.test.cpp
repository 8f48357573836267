#include "foundation/geometry/MeshImporter.h"

#include "foundation/geometry/Mesh.h"
#include "mesh_shapes.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>

namespace vellum {
namespace {

using namespace mesh_shapes;

static_assert(offsetof(MeshImporter, triangles) == 0 && offsetof(MeshImporter, cornerNormals) == 16 &&
                  offsetof(MeshImporter, positions) == 32 && sizeof(MeshImporter) == 48,
              "three arrays in this order, each pointer, size and capacity");

MeshImporter cubeImport(bool isSmooth) {
    Shape const shape = cube();
    MeshImporter importer;
    importer.triangles = shape.triangles;
    importer.positions = shape.positions;
    for (Triangle const& t : shape.triangles) {
        Vector3<double> const a = shape.positions[t.e0];
        Vector3<double> const b = shape.positions[t.e1];
        Vector3<double> const c = shape.positions[t.e2];
        Vector3<double> const face = normalized(cross(b - a, c - a));
        if (isSmooth)
            importer.cornerNormals.pushBack({normalized(a), normalized(b), normalized(c), face});
        else
            importer.cornerNormals.pushBack({face, face, face, face});
    }
    return importer;
}

TEST(MeshImporter_test, anImportBecomesAMeshForEveryMode) {
    Mesh mesh;
    ASSERT_EQ(cubeImport(false).toMesh(mesh), MeshFault_ns::NONE);
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
    EXPECT_EQ(mesh.triangleCount(), 12U);
    EXPECT_EQ(mesh.flags() & MESH_GOT_BOX, 1U);
    EXPECT_EQ(mesh.box().max.x, 1.0);
    EXPECT_EQ(borderCount(mesh), 0U);
    EXPECT_EQ(VL_ArrayServer.resolve(mesh.faceNormals())->size, 12U);
}

TEST(MeshImporter_test, cornersWithTheSameNormalAtAVertexShareIt) {
    Mesh mesh;
    ASSERT_EQ(cubeImport(false).toMesh(mesh), MeshFault_ns::NONE);
    EXPECT_EQ(VL_ArrayServer.resolve(mesh.vertexNormals())->size, 24U);
    ASSERT_EQ(cubeImport(true).toMesh(mesh), MeshFault_ns::NONE);
    Array<Vector3<float>> const normals = copyOf<Vector3<float>>(mesh.vertexNormals());
    ASSERT_EQ(normals.size(), 8U) << "a smooth surface has one normal for each vertex, at its index";
    for (unsigned int i = 0; i < 8; ++i)
        EXPECT_GT(normals[i].x * cube().positions[i].x, 0.5);
}

TEST(MeshImporter_test, theCornerNormalsOfTheImportAreKept) {
    MeshImporter importer = cubeImport(false);
    importer.cornerNormals[3].e1 = {0.25, -0.5, 0.75};
    Mesh mesh;
    ASSERT_EQ(importer.toMesh(mesh), MeshFault_ns::NONE);
    unsigned int const index = copyOf<Triangle>(mesh.normalTriangles())[3].e1;
    Vector3<float> const n = copyOf<Vector3<float>>(mesh.vertexNormals())[index];
    EXPECT_EQ(n.x, 0.25F);
    EXPECT_EQ(n.y, -0.5F);
    EXPECT_EQ(n.z, 0.75F);
}

TEST(MeshImporter_test, withoutCornerNormalsTheSurfaceIsSmooth) {
    MeshImporter importer = cubeImport(false);
    importer.cornerNormals.clear();
    Mesh mesh;
    ASSERT_EQ(importer.toMesh(mesh), MeshFault_ns::NONE);
    EXPECT_EQ(VL_ArrayServer.resolve(mesh.vertexNormals())->size, 8U);
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
}

TEST(MeshImporter_test, trianglesWithoutAreaAreKept) {
    MeshImporter importer = cubeImport(false);
    importer.triangles[0] = {3, 3, 3};
    Mesh mesh;
    ASSERT_EQ(importer.toMesh(mesh), MeshFault_ns::NONE);
    EXPECT_EQ(mesh.triangleCount(), 12U);
    EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
}

TEST(MeshImporter_test, badInputIsRejectedAndLeavesTheMesh) {
    double const infinity = std::numeric_limits<double>::infinity();
    struct {
        void (*spoil)(MeshImporter&, double);
        MeshFault_ns::type fault;
    } const cases[] = {
        {[](MeshImporter& i, double) { i.triangles.clear(); }, MeshFault_ns::NO_TRIANGLES},
        {[](MeshImporter& i, double) { i.triangles[7].e1 = 8; }, MeshFault_ns::INDEX_OUT_OF_RANGE},
        {[](MeshImporter& i, double) { i.positions.clear(); }, MeshFault_ns::INDEX_OUT_OF_RANGE},
        {[](MeshImporter& i, double) { i.cornerNormals.setSize(11); }, MeshFault_ns::CORNER_NORMAL_COUNT},
        {[](MeshImporter& i, double bad) { i.positions[2].y = bad; }, MeshFault_ns::POSITION_NOT_FINITE},
        {[](MeshImporter& i, double bad) { i.positions[2].z = bad - bad; },
         MeshFault_ns::POSITION_NOT_FINITE},
    };
    for (auto const& bad : cases) {
        Mesh mesh;
        oneTriangle().fill(mesh);
        MeshImporter importer = cubeImport(false);
        bad.spoil(importer, infinity);
        EXPECT_EQ(importer.toMesh(mesh), bad.fault) << MeshFault_ns::text(bad.fault);
        EXPECT_EQ(mesh.triangleCount(), 1U);
        EXPECT_EQ(mesh.adjacency(), ARRAY_ID_NONE);
    }
}

/// The cube with a vertex of its own for each corner of each triangle.
MeshImporter explodedCube(bool hasNormals) {
    MeshImporter const cube = cubeImport(false);
    MeshImporter exploded;
    for (unsigned int t = 0; t < cube.triangles.size(); ++t) {
        exploded.triangles.pushBack({3 * t, 3 * t + 1, 3 * t + 2});
        for (unsigned int const corner : {cube.triangles[t].e0, cube.triangles[t].e1, cube.triangles[t].e2})
            exploded.positions.pushBack(cube.positions[corner]);
        if (hasNormals)
            exploded.cornerNormals.pushBack(cube.cornerNormals[t]);
    }
    return exploded;
}

TEST(MeshImporter_test, weldingClosesSeams) {
    for (bool const hasNormals : {false, true}) {
        MeshImporter importer = explodedCube(hasNormals);
        EXPECT_EQ(importer.weld().size(), 12U);
        EXPECT_EQ(importer.positions.size(), 8U);
        EXPECT_EQ(importer.cornerNormals.size(), hasNormals ? 12U : 0U);
        Mesh mesh;
        ASSERT_EQ(importer.toMesh(mesh), MeshFault_ns::NONE);
        EXPECT_EQ(borderCount(mesh), 0U);
    }
}

TEST(MeshImporter_test, weldingKeepsTheOrderAndNamesTheTrianglesThatAreLeft) {
    MeshImporter importer;
    importer.positions = {{0, 0, 0}, {1, 0, 0}, {-0.0, 0, 0}, {0, 1, 0}, {1, 0, 0}};
    importer.triangles = {{0, 1, 2}, {2, 4, 3}};
    importer.cornerNormals.pushBack({{1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {0, 0, 0}});
    importer.cornerNormals.pushBack({{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 0}});
    Array<unsigned int> const sources = importer.weld();
    ASSERT_EQ(sources.size(), 1U) << "both zeros are the same place";
    EXPECT_EQ(sources[0], 1U);
    ASSERT_EQ(importer.positions.size(), 3U);
    EXPECT_EQ(importer.positions[1].x, 1.0);
    EXPECT_EQ(importer.positions[2].y, 1.0);
    ASSERT_EQ(importer.triangles.size(), 1U);
    EXPECT_EQ(importer.triangles[0].e0, 0U);
    EXPECT_EQ(importer.triangles[0].e1, 1U);
    EXPECT_EQ(importer.triangles[0].e2, 2U);
    ASSERT_EQ(importer.cornerNormals.size(), 1U);
    EXPECT_EQ(importer.cornerNormals[0].e0.z, 1.0);
}

TEST(MeshImporter_test, aRejectedImportIsNotPrepared) {
    MeshImporter importer = explodedCube(true);
    importer.triangles[3].e1 = 99;
    EXPECT_EQ(importer.weld().size(), 0U);
    importer.shareNormals(0.5);
    EXPECT_FALSE(importer.workCornerNormals(Mesh::NO_CREASE));
    EXPECT_EQ(importer.positions.size(), 36U);
    EXPECT_EQ(importer.triangles.size(), 12U);
}

TEST(MeshImporter_test, normalsThatDifferByRoundingAreShared) {
    MeshImporter importer = cubeImport(true);
    unsigned int seed = 7;
    for (Tuple4<Vector3<double>>& n : importer.cornerNormals)
        for (Vector3<double>* const normal : {&n.e0, &n.e1, &n.e2})
            normal->x += 1e-4 * ((seed = seed * 1103515245U + 12345U) >> 16 & 7U);
    Mesh mesh;
    ASSERT_EQ(importer.toMesh(mesh), MeshFault_ns::NONE);
    EXPECT_GT(VL_ArrayServer.resolve(mesh.vertexNormals())->size, 8U);
    importer.shareNormals(0.999);
    ASSERT_EQ(importer.toMesh(mesh), MeshFault_ns::NONE);
    EXPECT_EQ(VL_ArrayServer.resolve(mesh.vertexNormals())->size, 8U);
    // Those of a hard edge stay apart.
    MeshImporter hard = cubeImport(false);
    hard.shareNormals(0.999);
    ASSERT_EQ(hard.toMesh(mesh), MeshFault_ns::NONE);
    EXPECT_EQ(VL_ArrayServer.resolve(mesh.vertexNormals())->size, 24U);
}

TEST(MeshImporter_test, cornerNormalsAreWorkedOutWithAndWithoutACrease) {
    MeshImporter importer = cubeImport(true);
    ASSERT_TRUE(importer.workCornerNormals(0.7F));
    MeshImporter const faceted = cubeImport(false);
    ASSERT_EQ(importer.cornerNormals.size(), 12U);
    for (unsigned int t = 0; t < 12; ++t)
        EXPECT_GT(dot(importer.cornerNormals[t].e1, faceted.cornerNormals[t].e1), 0.9999);
    importer.cornerNormals.clear();
    ASSERT_TRUE(importer.workCornerNormals(Mesh::NO_CREASE));
    for (unsigned int t = 0; t < 12; ++t)
        EXPECT_GT(dot(importer.cornerNormals[t].e1, normalized(importer.positions[importer.triangles[t].e1])),
                  0.9999);
}

}  // namespace
}  // namespace vellum
