#include "viewport/files/mesh/MeshTransfer.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>

using namespace vellum;
using namespace vellum::viewport;

namespace {

MeshData triangle() {
    MeshData mesh;
    mesh.name = "triangle.obj";
    mesh.positions = {{0, 0, 0}, {1.5, 0, 0}, {0, 2, -3}};
    mesh.triangles = {{0, 1, 2}};
    mesh.normals.assign(3, {0, 0.6F, 0.8F});
    mesh.colors.assign(3, {1, 0.5F, 0.25F, 1});
    mesh.partCount = 7;
    mesh.hasVertexColors = true;
    return mesh;
}

std::vector<unsigned char> encoded(MeshData const& mesh) {
    std::vector<unsigned char> bytes;
    encodeMesh(mesh, [&bytes](void const* data, std::size_t size) {
        auto const* const first = static_cast<unsigned char const*>(data);
        bytes.insert(bytes.end(), first, first + size);
    });
    return bytes;
}

Result<MeshData> decode(std::vector<unsigned char> const& bytes) {
    return decodeMesh(bytes.data(), bytes.size(), "file.obj");
}

std::string faultOf(std::vector<unsigned char> const& bytes) {
    Result<MeshData> const result = decode(bytes);
    return result.isOk() ? "" : result.fault().line();
}

/// The offsets of the header's fields, which the damages below aim at.
constexpr std::size_t contentOffset = 8;
constexpr std::size_t textLengthOffset = 20;
constexpr std::size_t vertexCountOffset = 24;
constexpr std::size_t triangleCountOffset = 32;

template <class T>
std::vector<unsigned char> with(std::vector<unsigned char> bytes, std::size_t const& offset, T const& value) {
    std::memcpy(bytes.data() + offset, &value, sizeof value);
    return bytes;
}

}  // namespace

TEST(MeshTransfer, aMeshComesBackAsItWas) {
    for (bool const& hasTexture : {false, true}) {
        MeshData sent = triangle();
        if (hasTexture) {
            sent.textureCoordinates = {{0, 0}, {1, 0}, {0, 0.5F}};
        }
        Result<MeshData> const result = decode(encoded(sent));
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        MeshData const& mesh = result.value();
        EXPECT_EQ(mesh.name, "triangle.obj");
        EXPECT_EQ(mesh.positions[1].x, 1.5);
        EXPECT_EQ(mesh.positions[2].z, -3);
        EXPECT_EQ(mesh.triangles[0].e2, 2U);
        EXPECT_EQ(mesh.normals[2].z, 0.8F);
        EXPECT_EQ(mesh.colors[2].b, 0.25F);
        EXPECT_EQ(mesh.textureCoordinates.size(), hasTexture ? 3U : 0U);
        EXPECT_EQ(mesh.partCount, 7U);
        EXPECT_TRUE(mesh.hasVertexColors);
    }
}

TEST(MeshTransfer, materialsComeBackAsTheyWere) {
    MeshData sent = triangle();
    sent.materials.resize(2);
    sent.materials[0].texture = "skin.png";
    sent.materials[1].tint = {0.5F, 0.25F, 1, 1};
    sent.materials[1].textureBytes = {1, 2, 3};
    sent.triangleMaterials = {1};
    std::vector<unsigned char> const whole = encoded(sent);
    Result<MeshData> const result = decode(whole);
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    ASSERT_EQ(result.value().materials.size(), 2U);
    EXPECT_EQ(result.value().triangleMaterials, std::vector<unsigned int>{1});
    EXPECT_EQ(result.value().materials[0].texture, "skin.png");
    EXPECT_EQ(result.value().materials[1].tint.g, 0.25F);
    EXPECT_EQ(result.value().materials[1].textureBytes, (std::vector<unsigned char>{1, 2, 3}));

    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_THAT(faultOf({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}),
                    testing::HasSubstr("damaged"));
    }
    // The lengths in the header of the last material, whose three bytes end the message.
    for (std::size_t const& fromEnd : {std::size_t(3 + 8), std::size_t(3 + 16)}) {
        for (std::uint64_t const& length : {std::uint64_t(4), ~std::uint64_t(0)}) {
            EXPECT_THAT(faultOf(with(whole, whole.size() - fromEnd, length)), testing::HasSubstr("damaged"));
        }
    }
    sent.triangleMaterials = {2};
    EXPECT_THAT(faultOf(encoded(sent)), testing::HasSubstr("material that does not exist"));
}

TEST(MeshTransfer, allThatAMaterialSaysComesBack) {
    MeshData sent = triangle();
    Material material;
    material.name = "leaf";
    material.opacity = 0.25F;
    material.emission = {0.5F, 0, 0, 1};
    material.specular = {0, 0.75F, 0, 1};
    material.shininess = 12;
    material.isTwoSided = true;
    material.texture = "*0";
    material.textureBytes.assign(8, 7);
    material.texelColumns = 1;
    material.texelRows = 2;
    material.textureTransform = {1, 2, 3, 4, 5, 6};
    material.alphaMode = AlphaMode::MASK;
    material.alphaCutoff = 0.125F;
    material.opacityTexture = "hole.png";
    material.emissionTexture = {"glow.png", {1, 2, 3, 4}, 1, 1, {6, 5, 4, 3, 2, 1}};
    sent.materials = {Material(), material};
    Result<MeshData> const result = decode(encoded(sent));
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    ASSERT_EQ(result.value().materials.size(), 2U);
    EXPECT_FALSE(result.value().materials[0].specular.has_value());
    EXPECT_FALSE(result.value().materials[0].isTwoSided);
    Material const& back = result.value().materials[1];
    EXPECT_EQ(back.name, "leaf");
    EXPECT_EQ(back.opacity, 0.25F);
    EXPECT_EQ(back.emission.r, 0.5F);
    EXPECT_EQ(back.emissionTexture.name, "glow.png");
    EXPECT_EQ(back.emissionTexture.bytes, (std::vector<unsigned char>{1, 2, 3, 4}));
    EXPECT_EQ(back.emissionTexture.columns, 1U);
    EXPECT_EQ(back.emissionTexture.rows, 1U);
    EXPECT_EQ(back.emissionTexture.transform.u0, 2);
    ASSERT_TRUE(back.specular.has_value());
    EXPECT_EQ(back.specular->g, 0.75F);
    EXPECT_EQ(back.shininess, 12);
    EXPECT_TRUE(back.isTwoSided);
    EXPECT_EQ(back.textureBytes.size(), 8U);
    EXPECT_EQ(back.texelColumns, 1U);
    EXPECT_EQ(back.texelRows, 2U);
    EXPECT_EQ(back.textureTransform.vv, 4);
    EXPECT_EQ(back.textureTransform.v0, 6);
    EXPECT_EQ(back.alphaMode, AlphaMode::MASK);
    EXPECT_EQ(back.alphaCutoff, 0.125F);
    EXPECT_EQ(back.opacityTexture, "hole.png");
}

TEST(MeshTransfer, linesPointsScalarsUpAndAnimationsComeBack) {
    MeshData sent = triangle();
    sent.lines = {{0, 1}, {1, 2}};
    sent.points = {2};
    sent.scalars = {{"heat", "K", {1, 2, 3}}, {"age", "", {4, std::numeric_limits<double>::quiet_NaN(), 6}}};
    sent.up = UpAxis::MINUS_X;
    sent.notes = {"a light is not drawn", ""};
    sent.animations = {{"walk", 2.5}};
    std::vector<unsigned char> const whole = encoded(sent);
    Result<MeshData> const result = decode(whole);
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    MeshData const& mesh = result.value();
    ASSERT_EQ(mesh.lines.size(), 2U);
    EXPECT_EQ(mesh.lines[1].e1, 2U);
    EXPECT_EQ(mesh.points, std::vector<unsigned int>{2});
    ASSERT_EQ(mesh.scalars.size(), 2U);
    EXPECT_EQ(mesh.scalars[0].name, "heat");
    EXPECT_EQ(mesh.scalars[0].unit, "K");
    EXPECT_EQ(mesh.scalars[0].values, (std::vector<double>{1, 2, 3}));
    EXPECT_TRUE(std::isnan(mesh.scalars[1].values[1])) << "a scalar may be missing";
    EXPECT_EQ(mesh.up, UpAxis::MINUS_X);
    EXPECT_EQ(mesh.notes, sent.notes);
    ASSERT_EQ(mesh.animations.size(), 1U);
    EXPECT_EQ(mesh.animations[0].name, "walk");
    EXPECT_EQ(mesh.animations[0].duration, 2.5);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_THAT(faultOf({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}),
                    testing::HasSubstr("damaged"));
    }
}

TEST(MeshTransfer, noDamagedByteIsTrusted) {
    MeshData sent = triangle();
    sent.lines = {{0, 1}};
    sent.scalars = {{"heat", "K", {1, 2, 3}}};
    sent.animations = {{"walk", 2.5}};
    sent.materials.resize(1);
    sent.materials[0].texture = "skin.png";
    std::vector<unsigned char> const whole = encoded(sent);
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (unsigned char const value : {0x00, 0x7F, 0xFF}) {
            Result<MeshData> const result = decode(with(whole, place, value));
            if (result.isOk()) {
                EXPECT_FALSE(result.value().firstFault("file").has_value()) << place;
            }
        }
    }
}

TEST(MeshTransfer, aFaultComesBackWithTheFilesName) {
    EXPECT_EQ(faultOf(encodeFault("is a teapot")), "file.obj: is a teapot");
    EXPECT_EQ(faultOf(encodeFault("")), "file.obj: ");
}

TEST(MeshTransfer, everyShorterOrLongerBufferIsRefused) {
    std::vector<unsigned char> const whole = encoded(triangle());
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_THAT(faultOf({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}),
                    testing::HasSubstr("damaged"))
            << size;
    }
    std::vector<unsigned char> longer = whole;
    longer.push_back(0);
    EXPECT_THAT(faultOf(longer), testing::HasSubstr("damaged"));
}

TEST(MeshTransfer, absurdHeadersAreRefused) {
    std::vector<unsigned char> const whole = encoded(triangle());
    std::vector<unsigned char> const damaged[] = {
        with(whole, 0, 'x'),
        with(whole, contentOffset, std::uint32_t(3)),
        with(whole, textLengthOffset, std::uint32_t(0xFFFFFFFF)),
        with(whole, vertexCountOffset, std::uint64_t(4)),
        with(whole, vertexCountOffset, ~std::uint64_t(0)),
        // Times 52 bytes this wraps around to the three vertices that there are.
        with(whole, vertexCountOffset, std::uint64_t(3) + (std::uint64_t(1) << 62)),
        with(whole, triangleCountOffset, std::uint64_t(1) << 62),
        with(whole, triangleCountOffset, std::uint64_t(0)),
    };
    for (std::vector<unsigned char> const& bytes : damaged) {
        EXPECT_THAT(faultOf(bytes), testing::HasSubstr("damaged")) << &bytes - damaged;
    }
}

TEST(MeshTransfer, theContentIsChecked) {
    MeshData mesh = triangle();
    mesh.triangles[0].e1 = 3;
    EXPECT_THAT(faultOf(encoded(mesh)), testing::HasSubstr("out of range"));
    mesh = triangle();
    mesh.positions[0].x = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THAT(faultOf(encoded(mesh)), testing::HasSubstr("not a number"));
    mesh = triangle();
    mesh.triangles.clear();
    EXPECT_THAT(faultOf(encoded(mesh)), testing::HasSubstr("empty"));
}
