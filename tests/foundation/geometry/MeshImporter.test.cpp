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

}  // namespace
}  // namespace vellum
