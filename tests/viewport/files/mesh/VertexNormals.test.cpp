#include "viewport/files/mesh/VertexNormals.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vellum;
using viewport::MeshData;
using viewport::smoothVertexNormals;

namespace {

using Positions = std::vector<Vector3<double>>;
using Triangles = std::vector<MeshData::Triangle>;

void expectNear(Vector3<float> const& actual, Vector3<float> const& expected) {
    EXPECT_NEAR(actual.x, expected.x, 1e-6);
    EXPECT_NEAR(actual.y, expected.y, 1e-6);
    EXPECT_NEAR(actual.z, expected.z, 1e-6);
}

/// A unit cube at the origin; every face is cut into two triangles, the diagonals as they come.
Positions const cube{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {1, 1, 1}};
Triangles const cubeTriangles{{0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}, {0, 1, 5}, {0, 5, 4},
                              {2, 6, 7}, {2, 7, 3}, {0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}};

}  // namespace

TEST(VertexNormals, aFlatTriangleHasItsFaceNormalEverywhere) {
    for (Vector3<float> const& normal : smoothVertexNormals({{0, 0, 0}, {2, 0, 0}, {0, 5, 0}}, {{0, 1, 2}})) {
        expectNear(normal, {0, 0, 1});
    }
}

TEST(VertexNormals, aCubesCornersPointAlongItsDiagonalsHoweverItsFacesAreCut) {
    // Weighted by area or by count, the two triangles at one end of a face's diagonal would pull the normal.
    float const part = 1 / std::sqrt(3.0F);
    std::vector<Vector3<float>> const normals = smoothVertexNormals(cube, cubeTriangles);
    for (unsigned int i = 0; i < 8; ++i) {
        expectNear(normals[i],
                   {(i & 1) != 0 ? part : -part, (i & 2) != 0 ? part : -part, (i & 4) != 0 ? part : -part});
    }
}

TEST(VertexNormals, verticesAtOnePositionShareANormal) {
    Positions apart;
    Triangles triangles;
    for (MeshData::Triangle const& triangle : cubeTriangles) {
        unsigned int const base = static_cast<unsigned int>(apart.size());
        apart.insert(apart.end(), {cube[triangle.e0], cube[triangle.e1], cube[triangle.e2]});
        triangles.push_back({base, base + 1, base + 2});
    }
    apart[0].x = -0.0;  // The same position as +0.
    std::vector<Vector3<float>> const shared = smoothVertexNormals(cube, cubeTriangles);
    std::vector<Vector3<float>> const normals = smoothVertexNormals(apart, triangles);
    for (std::size_t t = 0; t < cubeTriangles.size(); ++t) {
        expectNear(normals[3 * t], shared[cubeTriangles[t].e0]);
        expectNear(normals[3 * t + 1], shared[cubeTriangles[t].e1]);
        expectNear(normals[3 * t + 2], shared[cubeTriangles[t].e2]);
    }
}

TEST(VertexNormals, sizeDoesNotMatter) {
    for (double const& scale : {1e-30, 1e30}) {
        Positions scaled = cube;
        for (Vector3<double>& p : scaled) {
            p = p * scale;
        }
        std::vector<Vector3<float>> const normals = smoothVertexNormals(scaled, cubeTriangles);
        expectNear(normals[7], {0.57735027F, 0.57735027F, 0.57735027F});
    }
}

TEST(VertexNormals, withoutAreaTheNormalIsUp) {
    std::vector<Vector3<float>> const normals =
        smoothVertexNormals({{1, 1, 1}, {2, 2, 2}, {3, 3, 3}, {9, 9, 9}}, {{0, 1, 2}, {0, 0, 0}});
    for (Vector3<float> const& normal : normals) {
        expectNear(normal, {0, 1, 0});
    }
}
