#include "viewport/scene/ModelParts.h"

#include "foundation/basic/ArrayServer.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vellum;
using namespace vellum::viewport;

namespace {

Placement const inPlace;

/// A cube as exchange formats have it: every face with four vertices of its own, and their normals.
MeshData cubeOfFaces() {
    MeshData mesh;
    for (int axis = 0; axis < 3; ++axis) {
        for (double const& side : {-1.0, 1.0}) {
            unsigned int const base = static_cast<unsigned int>(mesh.positions.size());
            for (int corner = 0; corner < 4; ++corner) {
                double const u = corner == 1 || corner == 2 ? side : -side;
                double const v = corner >= 2 ? 1 : -1;
                double e[3];
                e[axis] = side;
                e[(axis + 1) % 3] = u;
                e[(axis + 2) % 3] = v;
                mesh.positions.push_back({e[0], e[1], e[2]});
                Vector3<float> const normal{axis == 0 ? 1.0F : 0.0F, axis == 1 ? 1.0F : 0.0F,
                                            axis == 2 ? 1.0F : 0.0F};
                mesh.normals.push_back(normal * static_cast<float>(side));
            }
            mesh.triangles.push_back({base, base + 1, base + 2});
            mesh.triangles.push_back({base, base + 2, base + 3});
        }
    }
    mesh.colors.assign(mesh.positions.size(), {1, 0, 0, 1});
    return mesh;
}

unsigned int sizeOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->size : 0;
}

unsigned int borderCount(Mesh const& mesh) {
    auto const* const entries = VL_ArrayServer.resolve(mesh.adjacency())->as<Tuple3<unsigned int>>();
    unsigned int count = 0;
    for (unsigned int t = 0; t < mesh.triangleCount(); ++t) {
        for (unsigned int const& entry : {entries[t].e0, entries[t].e1, entries[t].e2}) {
            count += entry == Mesh::ADJACENCY_NONE ? 1 : 0;
        }
    }
    return count;
}

}  // namespace

TEST(ModelParts, seamsAreClosedAndHardEdgesKept) {
    for (bool const& hasNormals : {true, false}) {
        MeshData data = cubeOfFaces();
        std::vector<Vector3<float>> const faceNormals = data.normals;
        if (!hasNormals) {
            data.normals.clear();
        }
        std::vector<ModelPart> const parts = makeParts(data, inPlace, nullptr);
        ASSERT_EQ(parts.size(), 1U);
        Mesh const& mesh = *parts[0].mesh;
        EXPECT_EQ(mesh.fault(), MeshFault_ns::NONE);
        EXPECT_EQ(sizeOf(mesh.positions()), 8U);
        EXPECT_EQ(sizeOf(mesh.vertexNormals()), 24U) << "three at each corner";
        EXPECT_EQ(borderCount(mesh), 0U);
        EXPECT_TRUE(parts[0].hasHardNormals);
        // Each corner of a triangle has the normal of its face.
        auto const* const triangles =
            VL_ArrayServer.resolve(mesh.normalTriangles())->as<Tuple3<unsigned int>>();
        auto const* const normals = VL_ArrayServer.resolve(mesh.vertexNormals())->as<Vector3<float>>();
        for (unsigned int t = 0; t < mesh.triangleCount(); ++t) {
            Vector3<float> const expected = faceNormals[data.triangles[t].e0];
            for (unsigned int const& i : {triangles[t].e0, triangles[t].e1, triangles[t].e2}) {
                EXPECT_NEAR(dot(normals[i], expected), 1.0F, 1e-5F);
            }
        }
    }
}

TEST(ModelParts, everyMaterialIsAPartOfItsOwn) {
    MeshData data = cubeOfFaces();
    data.materials.resize(4);
    data.triangleMaterials.assign(12, 3);
    data.triangleMaterials[0] = 1;
    data.triangleMaterials[1] = 1;
    for (unsigned int v = 0; v < 4; ++v) {
        data.colors[v] = {0, 0, 1, 1};
    }
    std::vector<ModelPart> const parts = makeParts(data, inPlace, nullptr);
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(parts[0].mesh->triangleCount(), 2U);
    EXPECT_EQ(sizeOf(parts[0].mesh->positions()), 4U);
    EXPECT_EQ(parts[0].color.b, 1.0F);
    EXPECT_EQ(parts[0].colors.size(), 0U);
    EXPECT_EQ(parts[1].mesh->triangleCount(), 10U);
    EXPECT_EQ(parts[1].mesh->fault(), MeshFault_ns::NONE);
}

TEST(ModelParts, colorsOfVerticesAreKeptWhereTheyDiffer) {
    MeshData data = cubeOfFaces();
    data.colors[5] = {0, 1, 0, 1};
    std::vector<ModelPart> const parts = makeParts(data, inPlace, nullptr);
    ASSERT_EQ(parts.size(), 1U);
    ASSERT_EQ(parts[0].colors.size(), 24U);
    EXPECT_EQ(parts[0].triangles.size(), 12U);
}

TEST(ModelParts, trianglesWithoutAreaAreLeftOut) {
    MeshData data = cubeOfFaces();
    data.triangles = {{0, 0, 1}};
    EXPECT_TRUE(makeParts(data, inPlace, nullptr).empty());
    data.triangles.push_back({0, 1, 2});
    EXPECT_EQ(makeParts(data, inPlace, nullptr)[0].mesh->triangleCount(), 1U);
}

TEST(ModelParts, aTextureForAllGetsCoordinatesWhereThereAreNone) {
    MeshData const data = cubeOfFaces();
    auto const image = std::make_shared<VL_Image>();
    std::vector<ModelPart> const parts = makeParts(data, inPlace, image);
    ASSERT_EQ(parts.size(), 1U);
    EXPECT_EQ(parts[0].texture, image);
    EXPECT_EQ(parts[0].color.g, 1.0F) << "the texture alone gives the color";
    ArrayId const id = parts[0].mesh->namedArray(MeshArrayInf_ns::PER_FACE, ModelPart::CHANNEL);
    ASSERT_EQ(sizeOf(id), 36U);
    auto const* const coordinates = VL_ArrayServer.resolve(id)->as<Vector2<float>>();
    for (unsigned int i = 0; i < 36; ++i) {
        // Each face is covered by the whole texture, once.
        EXPECT_NEAR(std::abs(coordinates[i].x), coordinates[i].x == 0 ? 0.0F : 1.0F, 1e-6F);
        EXPECT_NEAR(std::abs(coordinates[i].y), coordinates[i].y == 0 ? 0.0F : 1.0F, 1e-6F);
    }
}

TEST(ModelParts, verticesWithoutANormalGetASmoothOne) {
    MeshData data = cubeOfFaces();
    data.normals[0] = {0, 0, 0};
    std::vector<ModelPart> const parts = makeParts(data, inPlace, nullptr);
    ASSERT_EQ(parts.size(), 1U);
    Vector3<double> const corner = data.positions[0];
    EXPECT_NEAR(dot(parts[0].import->cornerNormals[0].e0, corner), std::sqrt(3.0), 1e-6)
        << "along the diagonal of the cube";
    EXPECT_NEAR(std::abs(parts[0].import->cornerNormals[0].e1.x), 1, 1e-6) << "that of the file";
}

TEST(ModelParts, coloredVerticesWithoutNormalsAreSmooth) {
    MeshData data = cubeOfFaces();
    data.normals.clear();
    data.colors[5] = {0, 1, 0, 1};
    std::vector<ModelPart> const parts = makeParts(data, inPlace, nullptr);
    ASSERT_EQ(parts[0].normals.size(), 24U);
    for (unsigned int i = 0; i < 24; ++i) {
        EXPECT_NEAR(dot(convert<double>(parts[0].normals[i]), parts[0].vertices[i]), std::sqrt(3.0), 1e-6);
    }
    EXPECT_TRUE(parts[0].hasHardNormals) << "those of the mesh have the edges of the shape";
}

TEST(ModelParts, theImportOfAPartIsWhatItsMeshIsMadeOf) {
    std::vector<ModelPart> const parts = makeParts(cubeOfFaces(), inPlace, nullptr);
    ASSERT_NE(parts[0].import, nullptr);
    EXPECT_EQ(parts[0].import->positions.size(), 8U);
    EXPECT_EQ(parts[0].import->cornerNormals.size(), 12U);
}

TEST(ModelParts, shapesAndNormalsTurnTogether) {
    MeshData data = cubeOfFaces();
    data.normals.assign(data.positions.size(), {0, 0, 1});
    std::vector<ModelPart> const parts = makeParts(data, {{0, 0, 0}, 2, Turn(UpAxis::Z)}, nullptr);
    ASSERT_EQ(parts.size(), 1U);
    auto const* const normals = VL_ArrayServer.resolve(parts[0].mesh->vertexNormals())->as<Vector3<float>>();
    EXPECT_EQ(normals[0].y, 1);
    EXPECT_EQ(normals[0].z, 0);
}

TEST(ModelParts, whatShinesThroughIsTold) {
    auto const part = [](MeshData const& data) {
        std::vector<ModelPart> parts = makeParts(data, inPlace, nullptr);
        return std::move(parts.at(0));
    };
    MeshData data = cubeOfFaces();
    data.materials.resize(1);
    data.triangleMaterials.assign(data.triangles.size(), 0);
    EXPECT_FALSE(part(data).isBlended);
    EXPECT_EQ(part(data).colors.size(), 0U);

    data.materials[0].opacity = 0.5F;
    EXPECT_TRUE(part(data).isBlended);
    EXPECT_EQ(part(data).color.a, 0.5F);
    EXPECT_EQ(part(data).colors.size(), 24U);
    EXPECT_EQ(part(data).colors[3].a, 0.5F);
    EXPECT_EQ(part(data).colors[3].r, 1);

    data.materials[0].opacity = 1;
    data.colors[7].a = 0.25F;
    EXPECT_TRUE(part(data).isBlended);
    data.materials[0].opacity = 0.5F;
    bool isFound = false;
    for (Color4<float> const& color : part(data).colors) {
        isFound = isFound || color.a == 0.125F;
    }
    EXPECT_TRUE(isFound) << "opacities are multiplied";
}

TEST(ModelParts, theOpacityOfATextureCountsAsItsMaterialSays) {
    MeshData data = cubeOfFaces();
    data.materials.resize(1);
    data.triangleMaterials.assign(data.triangles.size(), 0);
    data.textureCoordinates.assign(data.positions.size(), {0.5F, 0.25F});
    auto const holes = std::make_shared<VL_Image>();
    ASSERT_TRUE(holes->create(1, 1, 4, 8));
    auto const whole = std::make_shared<VL_Image>(*holes);
    whole->getBuffer()[3] = 255;
    struct Row {
        AlphaMode mode;
        std::shared_ptr<VL_Image> image;
        bool isBlended;
    };
    for (Row const& row : {Row{AlphaMode::BLEND, holes, true}, Row{AlphaMode::BLEND, whole, false},
                           Row{AlphaMode::MASK, holes, false}, Row{AlphaMode::SOLID, holes, false}}) {
        data.materials[0].image = row.image;
        data.materials[0].alphaMode = row.mode;
        std::vector<ModelPart> const parts = makeParts(data, inPlace, nullptr);
        EXPECT_EQ(parts[0].isBlended, row.isBlended) << static_cast<int>(row.mode);
        EXPECT_EQ(parts[0].alphaMode, row.mode);
    }
}

TEST(ModelParts, textureCoordinatesAreTransformed) {
    MeshData data = cubeOfFaces();
    data.materials.resize(1);
    data.materials[0].image = std::make_shared<VL_Image>();
    data.materials[0].textureTransform = TextureTransform::ofMtl({2, 4}, {1, 0});
    data.triangleMaterials.assign(data.triangles.size(), 0);
    data.textureCoordinates.assign(data.positions.size(), {0.5F, 0.25F});
    auto const first = [&data](std::shared_ptr<VL_Image const> const& texture) {
        std::vector<ModelPart> const parts = makeParts(data, inPlace, texture);
        return VL_ArrayServer
            .resolve(parts[0].mesh->namedArray(MeshArrayInf_ns::PER_FACE, ModelPart::CHANNEL))
            ->as<Vector2<float>>()[0];
    };
    EXPECT_EQ(first(nullptr).x, 2);
    EXPECT_EQ(first(nullptr).y, 1);
    EXPECT_EQ(first(std::make_shared<VL_Image>()).x, 0.5F) << "a texture of the user's own";
}

TEST(ModelParts, aMeshWithoutTrianglesHasNone) {
    MeshData data;
    data.positions = {{0, 0, 0}, {1, 0, 0}};
    data.colors.assign(2, {1, 1, 1, 1});
    data.lines = {{0, 1}};
    EXPECT_TRUE(makeParts(data, inPlace, nullptr).empty());
}
