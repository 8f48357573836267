#include "viewport/files/mesh/AssimpImport.h"

#include "tests/support/TemporaryFolder.h"
#include "viewport/files/mesh/MeshFile.h"
#include "viewport/files/mesh/gltf_weights.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <optional>

using namespace vellum;
using namespace vellum::viewport;

namespace {

class AssimpImport_test : public testing::Test {
protected:
    Result<MeshData> loadText(std::string const& name, std::string const& content) const {
        return MeshFile(folder.write(name, content)).load(ImportLimits{});
    }

    TemporaryFolder folder;
};

}  // namespace

// == Materials of glTF ==

namespace {

template <class T>
void append(std::string& bytes, std::initializer_list<T> const& values) {
    for (T const& value : values) {
        bytes.append(reinterpret_cast<char const*>(&value), sizeof value);
    }
}

/// A triangle in the plane z = 0 in a.bin from byte 0, with whatever else is asked for.
std::string gltfOf(std::string const& more, std::size_t byteCount, std::string const& primitive = "",
                   std::string const& accessors = "", std::string const& views = "") {
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],)" + more +
           R"("meshes":[{"primitives":[{"attributes":{"POSITION":0)" + primitive +
           R"(}]}],"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3",)"
           R"("min":[0,0,0],"max":[1,1,0]})" +
           accessors + R"(],"bufferViews":[{"buffer":0,"byteLength":36})" + views +
           R"(],"buffers":[{"byteLength":)" + std::to_string(byteCount) + R"(,"uri":"a.bin"}]})";
}

std::string const triangleBytes = [] {
    std::string bytes;
    append<float>(bytes, {0, 0, 0, 1, 0, 0, 0, 1, 0});
    return bytes;
}();

}  // namespace

TEST_F(AssimpImport_test, gltfSaysHowOpacityIsTaken) {
    folder.write("a.bin", triangleBytes);
    struct Row {
        char const* mode;
        AlphaMode taken;
        float opacity;
    };
    for (Row const& row : {Row{"OPAQUE", AlphaMode::SOLID, 1}, Row{"BLEND", AlphaMode::BLEND, 0.5F},
                           Row{"MASK", AlphaMode::MASK, 0.5F}}) {
        std::string const text = gltfOf(
            R"("nodes":[{"mesh":0}],"materials":[{"doubleSided":true,"alphaCutoff":0.75,"alphaMode":")" +
                std::string(row.mode) + R"(","pbrMetallicRoughness":{"baseColorFactor":[1,0.5,0,0.5]}}],)",
            36, R"(},"material":0)");
        Result<MeshData> const result = loadText("a.gltf", text);
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        Material const& material = result.value().materials[result.value().triangleMaterials[0]];
        EXPECT_EQ(material.alphaMode, row.taken) << row.mode;
        EXPECT_EQ(material.opacity, row.opacity) << row.mode;
        EXPECT_TRUE(material.isTwoSided);
        if (row.taken == AlphaMode::MASK) {
            EXPECT_EQ(material.alphaCutoff, 0.75F);
        }
    }
}

TEST_F(AssimpImport_test, emissionMayHaveATexture) {
    std::string bytes = triangleBytes;
    append<float>(bytes, {0, 0, 1, 0, 0, 1});
    folder.write("a.bin", bytes);
    // A list of texture coordinates under two names.
    std::string const primitive = R"(,"TEXCOORD_0":1,"TEXCOORD_1":1},"material":0)";
    std::string const accessor = R"(,{"bufferView":1,"componentType":5126,"count":3,"type":"VEC2"})";
    std::string const view = R"(,{"buffer":0,"byteOffset":36,"byteLength":24})";
    struct Row {
        char const* name;
        std::string material;
        char const* texture;
        float green;
        std::size_t notes;
    };
    std::string const color = R"("pbrMetallicRoughness":{"baseColorTexture":{"index":0}},)";
    for (Row const& row :
         {Row{"with its color", color + R"("emissiveTexture":{"index":1},"emissiveFactor":[1,0.5,0])",
              "b.png", 0.5F, 0},
          Row{"without a color", R"("emissiveTexture":{"index":1,"texCoord":1},"emissiveFactor":[1,1,1])",
              "b.png", 1, 0},
          Row{"black", color + R"("emissiveTexture":{"index":1})", "", 0, 0},
          Row{"in another place",
              color + R"("emissiveTexture":{"index":1,"texCoord":1},"emissiveFactor":[1,1,1])", "", 0, 1}}) {
        SCOPED_TRACE(row.name);
        Result<MeshData> const result =
            loadText("a.gltf", gltfOf(R"("nodes":[{"mesh":0}],"textures":[{"source":0},{"source":1}],)"
                                      R"("images":[{"uri":"a.png"},{"uri":"b.png"}],"materials":[{)" +
                                          row.material + "}],",
                                      bytes.size(), primitive, accessor, view));
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        Material const& material = result.value().materials[result.value().triangleMaterials[0]];
        EXPECT_EQ(material.emissionTexture.name, row.texture);
        EXPECT_EQ(material.emission.g, row.green);
        ASSERT_EQ(result.value().notes.size(), row.notes);
        if (row.notes > 0) {
            EXPECT_EQ(result.value().notes[0],
                      "emission texture 'b.png' lies by other texture coordinates than "
                      "the color; drawn without it");
        }
    }
}

TEST_F(AssimpImport_test, texturesLieByTheCoordinatesThatTheyName) {
    std::string bytes = triangleBytes;
    append<float>(bytes, {0, 0, 1, 0, 0, 1});
    append<float>(bytes, {0.25F, 0.25F, 0.25F, 0.25F, 0.25F, 0.25F});
    folder.write("a.bin", bytes);
    for (int const list : {0, 1}) {
        Result<MeshData> const result = loadText(
            "a.gltf",
            gltfOf(R"("nodes":[{"mesh":0}],"textures":[{"source":0}],"images":[{"uri":"a.png"}],)"
                   R"("materials":[{"pbrMetallicRoughness":{"baseColorTexture":{"index":0,"texCoord":)" +
                       std::to_string(list) + "}}}],",
                   bytes.size(), R"(,"TEXCOORD_0":1,"TEXCOORD_1":2},"material":0)",
                   R"(,{"bufferView":1,"componentType":5126,"count":3,"type":"VEC2"})"
                   R"(,{"bufferView":2,"componentType":5126,"count":3,"type":"VEC2"})",
                   R"(,{"buffer":0,"byteOffset":36,"byteLength":24})"
                   R"(,{"buffer":0,"byteOffset":60,"byteLength":24})"));
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        EXPECT_EQ(result.value().textureCoordinates[1].x, list == 0 ? 1 : 0.25F);
    }
}

TEST_F(AssimpImport_test, colorsOfPointsAreNumbersFromZeroToOne) {
    std::string bytes = triangleBytes;
    float const none = std::numeric_limits<float>::quiet_NaN();
    append<float>(bytes, {none, 0.5F, 2, 1, -1, 0.25F, 1, none, 1});
    folder.write("a.bin", bytes);
    Result<MeshData> const result =
        loadText("a.gltf", gltfOf(R"("nodes":[{"mesh":0}],)", bytes.size(), R"(,"COLOR_0":1},"mode":0)",
                                  R"(,{"bufferView":1,"componentType":5126,"count":3,"type":"VEC3"})",
                                  R"(,{"buffer":0,"byteOffset":36,"byteLength":36})"));
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    MeshData const& mesh = result.value();
    ASSERT_EQ(mesh.points.size(), 3U);
    ASSERT_EQ(mesh.colors.size(), 3U);
    EXPECT_EQ(mesh.colors[0], (Color4<float>{0, 0.5F, 1, 1}));
    EXPECT_EQ(mesh.colors[1], (Color4<float>{1, 0, 0.25F, 1}));
    EXPECT_EQ(mesh.colors[2], (Color4<float>{1, 0, 1, 1}));
    EXPECT_EQ(mesh.notes, (std::vector<std::string>{"colors of vertices above 1 are shown as 1"}));
}

// == Bones and movements ==

TEST_F(AssimpImport_test, bonesMoveTheirVertices) {
    std::string bytes = triangleBytes;
    append<unsigned char>(bytes, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    append<float>(bytes, {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
    append<float>(bytes, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -3, 0, 0, 1});
    folder.write("a.bin", bytes);
    Result<MeshData> const result = loadText(
        "a.gltf",
        gltfOf(R"("nodes":[{"children":[1,2]},{"mesh":0,"skin":0},{"name":"bone","translation":[10,0,0]}],)"
               R"("skins":[{"joints":[2],"inverseBindMatrices":3}],)",
               bytes.size(), R"(,"JOINTS_0":1,"WEIGHTS_0":2})",
               R"(,{"bufferView":1,"componentType":5121,"count":3,"type":"VEC4"})"
               R"(,{"bufferView":2,"componentType":5126,"count":3,"type":"VEC4"})"
               R"(,{"bufferView":3,"componentType":5126,"count":1,"type":"MAT4"})",
               R"(,{"buffer":0,"byteOffset":36,"byteLength":12},{"buffer":0,"byteOffset":48,"byteLength":48})"
               R"(,{"buffer":0,"byteOffset":96,"byteLength":64})"));
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    EXPECT_NEAR(result.value().box().min.x, 7, 1e-6);
    EXPECT_NEAR(result.value().box().max.x, 8, 1e-6);
}

TEST_F(AssimpImport_test, animationsMoveNodesToTheirPlaceAtATime) {
    std::string bytes = triangleBytes;
    append<float>(bytes, {0, 2});
    append<float>(bytes, {0, 0, 0, 4, 0, 0});
    folder.write("a.bin", bytes);
    std::string const path = folder.write(
        "a.gltf",
        gltfOf(
            R"("nodes":[{"mesh":0,"name":"n","translation":[100,0,0]}],"animations":[{"name":"walk",)"
            R"("channels":[{"sampler":0,"target":{"node":0,"path":"translation"}}],)"
            R"("samplers":[{"input":1,"output":2}]}],)",
            bytes.size(), "}",
            R"(,{"bufferView":1,"componentType":5126,"count":2,"type":"SCALAR","min":[0],"max":[2]})"
            R"(,{"bufferView":2,"componentType":5126,"count":2,"type":"VEC3"})",
            R"(,{"buffer":0,"byteOffset":36,"byteLength":8},{"buffer":0,"byteOffset":44,"byteLength":24})"));
    struct Row {
        std::optional<double> time;
        double place;
    };
    for (Row const& row : {Row{std::nullopt, 100}, Row{0, 0}, Row{0.5, 1}, Row{2, 4}, Row{1000, 4}}) {
        Result<MeshData> const result = MeshFile(path).load(ImportLimits{}, {row.time});
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        EXPECT_NEAR(result.value().box().min.x, row.place, 1e-5) << row.time.value_or(-1);
        ASSERT_EQ(result.value().animations.size(), 1U);
        EXPECT_EQ(result.value().animations[0].name, "walk");
        EXPECT_NEAR(result.value().animations[0].duration, 2, 1e-9);
    }
}

TEST_F(AssimpImport_test, morphTargetsMoveTheVertices) {
    std::string bytes = triangleBytes;
    append<float>(bytes, {8, 0, 0, 8, 0, 0, 8, 0, 0});  // the first target, an offset
    append<float>(bytes, {0, 4, 0, 0, 4, 0, 0, 4, 0});
    append<float>(bytes, {0, 2});
    append<float>(bytes, {0, 0, 1, 0.5F});
    folder.write("a.bin", bytes);
    std::string const movement =
        R"("animations":[{"channels":[{"sampler":0,"target":{"node":0,"path":"weights"}}],)"
        R"("samplers":[{"input":3,"output":4}]}],)";
    struct Row {
        char const* name;
        std::string node;
        std::string movement;
        std::optional<double> time;
        double x;
        double y;
    };
    for (Row const& row :
         {Row{"weights of the mesh", "", "", std::nullopt, 2, 4},
          Row{"weights of a node", R"(,"weights":[0.5])", "", std::nullopt, 4, 0},
          Row{"weights of a node with a name", R"(,"name":"n","weights":[0,0.5])", "", std::nullopt, 0, 2},
          Row{"at rest", "", movement, std::nullopt, 2, 4}, Row{"first", "", movement, 0, 0, 0},
          Row{"between", "", movement, 1, 4, 1}, Row{"last", "", movement, 9, 8, 2}}) {
        SCOPED_TRACE(row.name);
        std::string const path = folder.write(
            "a.gltf",
            gltfOf(
                R"("nodes":[{"mesh":0)" + row.node + "}]," + row.movement, bytes.size(),
                R"(},"targets":[{"POSITION":1},{"POSITION":2}]}],"weights":[0.25,1]},{"primitives":[{"attributes":{"POSITION":0})",
                R"(,{"bufferView":1,"componentType":5126,"count":3,"type":"VEC3"})"
                R"(,{"bufferView":2,"componentType":5126,"count":3,"type":"VEC3"})"
                R"(,{"bufferView":3,"componentType":5126,"count":2,"type":"SCALAR","min":[0],"max":[2]})"
                R"(,{"bufferView":4,"componentType":5126,"count":4,"type":"SCALAR"})",
                R"(,{"buffer":0,"byteOffset":36,"byteLength":36},{"buffer":0,"byteOffset":72,"byteLength":36})"
                R"(,{"buffer":0,"byteOffset":108,"byteLength":8},{"buffer":0,"byteOffset":116,"byteLength":16})"));
        Result<MeshData> const result = MeshFile(path).load(ImportLimits{}, {row.time});
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        EXPECT_NEAR(result.value().box().min.x, row.x, 1e-5);
        EXPECT_NEAR(result.value().box().min.y, row.y, 1e-5);
        EXPECT_TRUE(result.value().notes.empty());
    }
}

TEST(gltfNodeWeights, areThoseOfNodesInBothKindsOfFiles) {
    std::string const text = R"({"nodes":[{"weights":[0.5,1]},{"name":"b","weights":[2]},{"name":"c"}]})";
    std::string glb("glTF\2\0\0\0\0\0\0\0", 12);
    append<std::uint32_t>(glb, {static_cast<std::uint32_t>(text.size()), 0x4E4F534AU});
    for (std::string const& bytes : {text, glb + text + std::string(8, '\0')}) {
        NodeWeights const weights = gltfNodeWeights(bytes);
        ASSERT_EQ(weights.size(), 2U);
        EXPECT_EQ(weights.at("nodes[0]"), (std::vector<double>{0.5, 1}));
        EXPECT_EQ(weights.at("b"), (std::vector<double>{2}));
    }
    for (char const* const other : {"", "{", "[]", "7", R"({"nodes":7})", R"({"nodes":[7,{"weights":7}]})",
                                    R"({"nodes":[{"name":7,"weights":{}}]})"}) {
        EXPECT_TRUE(gltfNodeWeights(other).empty()) << other;
    }
}
