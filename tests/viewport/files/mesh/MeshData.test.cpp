#include "viewport/files/mesh/MeshData.h"

#include <gmock/gmock.h>

#include <limits>

using namespace vellum;
using viewport::MeshData;

namespace {

MeshData triangle() {
    MeshData mesh;
    mesh.positions = {{0, 0, 0}, {1, 0, 0}, {0, 2, -3}};
    mesh.triangles = {{0, 1, 2}};
    mesh.normals.assign(3, {0, 0, 1});
    mesh.colors.assign(3, {1, 1, 1, 1});
    return mesh;
}

std::string faultOf(MeshData const& mesh) {
    return mesh.firstFault("file").value_or(vellum::viewport::Fault()).message;
}

}  // namespace

TEST(MeshData, aWholeMeshHasNoFault) {
    EXPECT_EQ(faultOf(triangle()), "");
}

TEST(MeshData, aMeshWithoutTrianglesIsEmpty) {
    MeshData mesh = triangle();
    mesh.triangles.clear();
    EXPECT_THAT(faultOf(mesh), testing::HasSubstr("empty"));
    EXPECT_THAT(faultOf(MeshData()), testing::HasSubstr("empty"));
}

TEST(MeshData, linesOrPointsAreEnough) {
    MeshData mesh = triangle();
    mesh.triangles.clear();
    mesh.lines = {{0, 2}};
    EXPECT_EQ(faultOf(mesh), "");
    mesh.lines = {{0, 1}, {0, 3}};
    EXPECT_THAT(faultOf(mesh), testing::HasSubstr("line 1 has vertex index 3"));
    mesh.lines.clear();
    mesh.points = {1};
    EXPECT_EQ(faultOf(mesh), "");
    mesh.points = {7};
    EXPECT_THAT(faultOf(mesh), testing::HasSubstr("point 0 has vertex index 7"));
}

TEST(MeshData, scalarsHaveAValueForEachVertex) {
    MeshData mesh = triangle();
    mesh.scalars = {{"heat", "K", {1, std::numeric_limits<double>::quiet_NaN(), 3}}};
    EXPECT_EQ(faultOf(mesh), "");
    mesh.scalars[0].values.pop_back();
    EXPECT_THAT(faultOf(mesh), testing::HasSubstr("length"));
}

TEST(MeshData, numbersOfMaterialsAreChecked) {
    constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
    MeshData mesh = triangle();
    mesh.materials.resize(1);
    EXPECT_EQ(faultOf(mesh), "");
    viewport::Material bad[9];
    bad[0].opacity = 1.5F;
    bad[1].emission.g = NOT_A_NUMBER;
    bad[2].specular = {0, 0, -1, 1};
    bad[3].shininess = NOT_A_NUMBER;
    bad[4].textureTransform.v0 = NOT_A_NUMBER;
    bad[5].texelColumns = 3;
    bad[6].alphaCutoff = NOT_A_NUMBER;
    bad[7].emissionTexture.rows = 3;
    bad[8].emissionTexture.transform.uu = NOT_A_NUMBER;
    for (viewport::Material const& material : bad) {
        mesh.materials[0] = material;
        EXPECT_THAT(faultOf(mesh), testing::HasSubstr("material")) << &material - bad;
    }
}

TEST(MeshData, aMeshOfLinesThatShowNothingIsEmpty) {
    MeshData mesh = triangle();
    mesh.triangles.clear();
    mesh.lines = {{1, 1}};
    EXPECT_EQ(faultOf(mesh), "the mesh is empty: no line has two different ends");
    mesh.triangles = {{0, 0, 1}};
    EXPECT_THAT(faultOf(mesh), testing::HasSubstr("and no line two different ends"));
    mesh.lines.push_back({0, 1});
    EXPECT_EQ(faultOf(mesh), "") << "one is enough";
}

TEST(MeshData, aMeshOfTrianglesThatShowNothingIsEmpty) {
    MeshData mesh = triangle();
    mesh.triangles = {{0, 0, 0}, {0, 1, 1}, {2, 0, 2}};
    EXPECT_EQ(faultOf(mesh), "the mesh is empty: no triangle has three different corners");
    mesh.triangles.push_back({0, 1, 2});
    EXPECT_EQ(faultOf(mesh), "") << "one is enough; the others are left out";
    mesh.positions[1] = mesh.positions[0];
    EXPECT_THAT(faultOf(mesh), testing::HasSubstr("empty")) << "corners are told by their positions";
}

TEST(MeshData, theFirstIndexOutOfRangeIsNamed) {
    MeshData mesh = triangle();
    mesh.triangles.push_back({0, 3, 1});
    EXPECT_THAT(faultOf(mesh), testing::HasSubstr("triangle 1 has vertex index 3"));
    mesh.triangles[1] = {0, 1, 0xFFFFFFFFU};
    EXPECT_THAT(faultOf(mesh), testing::HasSubstr("4294967295"));
}

TEST(MeshData, numbersMustBeFinite) {
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (double const& bad : {notANumber, infinite, -infinite}) {
        MeshData mesh = triangle();
        mesh.positions[2].y = bad;
        EXPECT_THAT(faultOf(mesh), testing::HasSubstr("vertex 2"));
        mesh = triangle();
        mesh.normals[1].x = static_cast<float>(bad);
        EXPECT_THAT(faultOf(mesh), testing::HasSubstr("normal"));
        mesh = triangle();
        mesh.colors[0].b = static_cast<float>(bad);
        EXPECT_THAT(faultOf(mesh), testing::HasSubstr("vertex 0"));
        mesh = triangle();
        mesh.textureCoordinates.assign(3, {0, static_cast<float>(bad)});
        EXPECT_THAT(faultOf(mesh), testing::HasSubstr("texture"));
    }
}

TEST(MeshData, theListsMustFitEachOther) {
    MeshData mesh = triangle();
    mesh.normals.pop_back();
    EXPECT_THAT(faultOf(mesh), testing::HasSubstr("length"));
    mesh = triangle();
    mesh.colors.push_back({});
    EXPECT_THAT(faultOf(mesh), testing::HasSubstr("length"));
    mesh = triangle();
    mesh.textureCoordinates.resize(1);
    EXPECT_THAT(faultOf(mesh), testing::HasSubstr("length"));
}

TEST(MeshData, theBoxHoldsAllVertices) {
    Box3<double> const box = triangle().box();
    EXPECT_EQ(box.min.x, 0);
    EXPECT_EQ(box.min.z, -3);
    EXPECT_EQ(box.max.x, 1);
    EXPECT_EQ(box.max.y, 2);
    EXPECT_EQ(MeshData().box().max.x, 0);
}
