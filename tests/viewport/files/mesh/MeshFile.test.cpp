#include "viewport/files/mesh/MeshFile.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/WithoutRights.h"
#include "tests/viewport/files/mesh/mesh_texts.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

using namespace vellum;
using namespace vellum::viewport;
using testing::AnyOf;
using testing::HasSubstr;

namespace {

class MeshFile_test : public testing::Test {
protected:
    Result<MeshData> load(std::string const& path) const { return MeshFile(path).load(ImportLimits{}); }

    Result<MeshData> loadText(std::string const& name, std::string const& content) const {
        return load(folder.write(name, content));
    }

    /// The fault as one line, without the folder; empty for a mesh. Fails when it does not name the file.
    std::string faultOf(Result<MeshData> const& result, std::string const& name) const {
        if (result.isOk()) {
            return "";
        }
        std::string const line = result.fault().line();
        std::string const start = folder.file(name) + ": ";
        EXPECT_EQ(line.substr(0, start.size()), start);
        EXPECT_EQ(line.find('\n'), std::string::npos);
        return line.substr(start.size());
    }

    std::string faultOfText(std::string const& name, std::string const& content) const {
        return faultOf(loadText(name, content), name);
    }

    TemporaryFolder folder;
};

}  // namespace

// == What is up ==

TEST_F(MeshFile_test, upIsThatOfTheFormat) {
    EXPECT_EQ(loadText("a.obj", mesh_texts::triangleObj).value().up, UpAxis::Y);
    EXPECT_EQ(loadText("a.off", mesh_texts::cubeOff).value().up, UpAxis::Z);
    EXPECT_EQ(loadText("a.PLY", mesh_texts::trianglePly).value().up, UpAxis::Z);
    EXPECT_EQ(loadText("a.stl", mesh_texts::binaryStl(1)).value().up, UpAxis::Z);
    EXPECT_EQ(upOfFormat(".stl"), UpAxis::Z);
    EXPECT_EQ(upOfFormat(".3ds"), UpAxis::Z);
    EXPECT_EQ(upOfFormat(".ply"), UpAxis::Z);
    EXPECT_EQ(upOfFormat(".glb"), UpAxis::Y);
}

TEST_F(MeshFile_test, colladaFilesSayWhatIsUpAndKeepTheirCoordinates) {
    std::string const start =
        "<?xml version=\"1.0\"?><COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" "
        "version=\"1.4.1\"><asset>";
    std::string const rest = R"(</asset><library_geometries><geometry id="g"><mesh>
        <source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 0 5</float_array><technique_common>
        <accessor source="#pa" count="3" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
        <param name="Z" type="float"/></accessor></technique_common></source>
        <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
        <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
        </mesh></geometry></library_geometries><library_visual_scenes><visual_scene id="s"><node>
        <instance_geometry url="#g"/></node></visual_scene></library_visual_scenes>
        <scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
    struct Row {
        char const* word;
        UpAxis up;
    };
    for (Row const& row : {Row{"X_UP", UpAxis::X}, Row{"Y_UP", UpAxis::Y}, Row{"Z_UP", UpAxis::Z}}) {
        Result<MeshData> const result =
            loadText("a.dae", start + "<up_axis>" + row.word + "</up_axis>" + rest);
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        EXPECT_EQ(result.value().up, row.up) << row.word;
        EXPECT_EQ(result.value().box().max.z, 5) << row.word;
    }
    Result<MeshData> const silent = loadText("b.dae", start + rest);
    ASSERT_TRUE(silent.isOk());
    EXPECT_EQ(silent.value().up, UpAxis::Y);
}

// == Good files ==

TEST_F(MeshFile_test, polygonsBecomeTriangles) {
    Result<MeshData> const result = loadText("cube.off", mesh_texts::cubeOff);
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    MeshData const& mesh = result.value();
    EXPECT_EQ(mesh.name, "cube.off");
    EXPECT_EQ(mesh.triangles.size(), 12U);
    EXPECT_EQ(mesh.partCount, 1U);
    EXPECT_TRUE(mesh.normals.empty());
    EXPECT_EQ(mesh.missingNormalCount(), mesh.positions.size());
    EXPECT_FALSE(mesh.hasVertexColors);
    EXPECT_TRUE(mesh.textureCoordinates.empty());
    EXPECT_EQ(mesh.box().min.x, -1);
    EXPECT_EQ(mesh.box().max.z, 1);
}

TEST_F(MeshFile_test, normalsAndTextureCoordinatesOfTheFileAreKept) {
    Result<MeshData> const result =
        loadText("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 3 4\nvt 0.25 0.5\nf 1/1/1 2/1/1 3/1/1\n");
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    EXPECT_EQ(result.value().missingNormalCount(), 0U);
    EXPECT_NEAR(result.value().normals[0].y, 0.6, 1e-6);
    EXPECT_NEAR(result.value().normals[0].z, 0.8, 1e-6);
    ASSERT_EQ(result.value().textureCoordinates.size(), 3U);
    EXPECT_EQ(result.value().textureCoordinates[1].x, 0.25F);
}

TEST_F(MeshFile_test, normalsThatOnlySomeVerticesHaveAreKept) {
    Result<MeshData> const result =
        loadText("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nvn 0 0 0\nf 1//1 2//2 3//1\n");
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    EXPECT_EQ(result.value().missingNormalCount(), 1U);
    ASSERT_EQ(result.value().normals.size(), 3U);
    EXPECT_TRUE(result.value().hasNormal(0));
    EXPECT_FALSE(result.value().hasNormal(1));
}

TEST_F(MeshFile_test, normalsWithoutADirectionAreMissing) {
    for (char const* const normal : {"0 0 0", "nan 0 1"}) {
        Result<MeshData> const result = loadText("a.obj", std::string("v 0 0 0\nv 1 0 0\nv 0 1 0\nvn ") +
                                                              normal + "\nf 1//1 2//1 3//1\n");
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        EXPECT_EQ(result.value().missingNormalCount(), 3U);
        EXPECT_TRUE(result.value().normals.empty());
    }
}

TEST_F(MeshFile_test, colorsComeFromTheMaterial) {
    folder.write("a.mtl", "newmtl paint\nKd 0.1 0.2 0.3\n");
    Result<MeshData> const result =
        loadText("a.obj", "mtllib a.mtl\nusemtl paint\n" + mesh_texts::triangleObj);
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    EXPECT_EQ(result.value().colors[0].r, 0.1F);
    EXPECT_EQ(result.value().colors[2].b, 0.3F);
    EXPECT_EQ(result.value().colors[2].a, 1.0F);
}

TEST_F(MeshFile_test, colorsComeFromTheVertices) {
    Result<MeshData> const result =
        loadText("a.obj", "v 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 0 1 0 0 0 1\nf 1 2 3\n");
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    EXPECT_TRUE(result.value().hasVertexColors);
    EXPECT_EQ(result.value().colors[0].r, 1.0F);
    EXPECT_EQ(result.value().colors[1].g, 1.0F);
    EXPECT_EQ(result.value().colors[1].r, 0.0F);
}

TEST_F(MeshFile_test, coordinatesKeepDoublePrecision) {
    std::string ply = mesh_texts::trianglePly;
    ply.replace(ply.find("1 0 0"), 5, "10000000.125 0 0");
    struct Row {
        char const* name;
        std::string content;
    };
    for (Row const& row :
         {Row{"a.obj", "v 0 0 0\nv 10000000.125 0 0\nv 0 1 0\nf 1 2 3\n"}, Row{"a.ply", ply},
          Row{"a.stl", "solid\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 10000000.125 0 0\n"
                       "vertex 0 1 0\nendloop\nendfacet\nendsolid\n"}}) {
        Result<MeshData> const result = loadText(row.name, row.content);
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        EXPECT_EQ(result.value().box().max.x, 10000000.125) << row.name;
        EXPECT_EQ(result.value().name, row.name);
    }
}

TEST_F(MeshFile_test, aFileWithoutItsMaterialsIsStillAMesh) {
    Result<MeshData> const result =
        loadText("a.obj", "mtllib gone.mtl\nusemtl a\n" + mesh_texts::triangleObj);
    EXPECT_TRUE(result.isOk()) << result.fault().line();
}

TEST_F(MeshFile_test, pointsAndLinesAreKept) {
    Result<MeshData> const result = loadText("a.obj", mesh_texts::triangleObj + "l 1 2\np 3\n");
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    MeshData const& mesh = result.value();
    EXPECT_EQ(mesh.triangles.size(), 1U);
    ASSERT_EQ(mesh.lines.size(), 1U);
    EXPECT_NEAR(length(mesh.positions[mesh.lines[0].e0] - mesh.positions[mesh.triangles[0].e0]), 0, 1e-9);
    EXPECT_EQ(mesh.points.size(), 1U);
}

TEST_F(MeshFile_test, linesAloneAreAMesh) {
    Result<MeshData> const result = loadText("b.obj", "v 0 0 0\nv 1 0 0\nv 1 5 0\nl 1 2 3\n");
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    EXPECT_TRUE(result.value().triangles.empty());
    EXPECT_EQ(result.value().lines.size(), 2U);
    EXPECT_EQ(result.value().partCount, 1U);
    EXPECT_EQ(result.value().box().max.y, 5);
}

TEST_F(MeshFile_test, materialsSayWhatTheySay) {
    folder.write("a.mtl", "newmtl glass\nKd 0.1 0.2 0.3\nKs 0.5 0.6 0.7\nNs 20\nKe 0 0.25 0\nd 0.4\n"
                          "map_Kd skin.png\nmap_d hole.png\n");
    Result<MeshData> const result =
        loadText("a.obj", "mtllib a.mtl\nusemtl glass\n" + mesh_texts::triangleObj);
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    MeshData const& mesh = result.value();
    ASSERT_FALSE(mesh.triangleMaterials.empty());
    Material const& glass = mesh.materials[mesh.triangleMaterials[0]];
    EXPECT_EQ(glass.name, "glass");
    EXPECT_NEAR(glass.opacity, 0.4F, 1e-6);
    EXPECT_EQ(glass.emission.g, 0.25F);
    ASSERT_TRUE(glass.specular.has_value());
    EXPECT_EQ(glass.specular->b, 0.7F);
    EXPECT_EQ(glass.shininess, 20);
    EXPECT_EQ(glass.texture, "skin.png");
    EXPECT_EQ(glass.opacityTexture, "hole.png");
    EXPECT_EQ(glass.alphaMode, AlphaMode::BLEND);
}

TEST_F(MeshFile_test, materialsThatAreSilentAboutLightHaveNone) {
    folder.write("a.mtl", "newmtl plain\nKd 0.1 0.2 0.3\n");
    Result<MeshData> const result =
        loadText("a.obj", "mtllib a.mtl\nusemtl plain\n" + mesh_texts::triangleObj);
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    Material const& plain = result.value().materials[result.value().triangleMaterials[0]];
    EXPECT_EQ(plain.opacity, 1);
    EXPECT_FALSE(plain.specular.has_value());
    EXPECT_EQ(plain.emission.r + plain.emission.g + plain.emission.b, 0);
    EXPECT_EQ(plain.alphaMode, AlphaMode::SOLID);
}

TEST_F(MeshFile_test, aFileThatWouldShowNothingIsOpaque) {
    folder.write("a.mtl", "newmtl gone\nd 0\nnewmtl glass\nd 0.5\n");
    Result<MeshData> const nothing =
        loadText("a.obj", "mtllib a.mtl\nusemtl gone\n" + mesh_texts::triangleObj);
    ASSERT_TRUE(nothing.isOk()) << nothing.fault().line();
    EXPECT_EQ(nothing.value().materials[nothing.value().triangleMaterials[0]].opacity, 1);
    Result<MeshData> const something = loadText(
        "b.obj", "mtllib a.mtl\nusemtl gone\n" + mesh_texts::triangleObj + "usemtl glass\nf 3 2 1\n");
    ASSERT_TRUE(something.isOk()) << something.fault().line();
    EXPECT_EQ(something.value().materials[something.value().triangleMaterials[0]].opacity, 0);
    EXPECT_EQ(something.value().materials[something.value().triangleMaterials[1]].opacity, 0.5F);
}

TEST_F(MeshFile_test, facetsOfAnStlFileAreSmoothed) {
    // Two facets that meet at a right angle along an edge.
    Result<MeshData> const result = loadText(
        "a.stl", "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
                 "endloop\nendfacet\nfacet normal 0 1 0\nouter loop\nvertex 0 0 0\nvertex 1 0 0\n"
                 "vertex 0 0 -1\nendloop\nendfacet\nendsolid a\n");
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    MeshData const& mesh = result.value();
    EXPECT_EQ(mesh.triangles.size(), 2U);
    EXPECT_TRUE(mesh.normals.empty()) << "a normal of a facet is none of a vertex";
}

TEST_F(MeshFile_test, nodesArePlacedAndMirroredOnesKeepTheirFront) {
    // A triangle placed twice: moved by 10 and made three times as large, and mirrored in x.
    std::string const gltf = R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0,1]}],
        "nodes":[{"mesh":0,"translation":[10,0,0],"scale":[3,3,3]},{"mesh":0,"scale":[-1,1,1]}],
        "meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],
        "accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[1,1,0]}],
        "bufferViews":[{"buffer":0,"byteLength":36}],
        "buffers":[{"byteLength":36,"uri":"a.bin"}]})";
    std::string bytes;
    for (float const& value : {0.0F, 0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 1.0F, 0.0F}) {
        mesh_texts::append(bytes, value);
    }
    folder.write("a.bin", bytes);
    Result<MeshData> const result = loadText("a.gltf", gltf);
    ASSERT_TRUE(result.isOk()) << result.fault().line();
    MeshData const& mesh = result.value();
    EXPECT_EQ(mesh.partCount, 2U);
    EXPECT_EQ(mesh.box().max.x, 13);
    EXPECT_EQ(mesh.box().max.y, 3);
    EXPECT_EQ(mesh.box().min.x, -1);
    for (MeshData::Triangle const& t : mesh.triangles) {
        Vector3<double> const& a = mesh.positions[t.e0];
        EXPECT_GT(cross(mesh.positions[t.e1] - a, mesh.positions[t.e2] - a).z, 0) << "its back is turned";
    }
}

TEST_F(MeshFile_test, binaryFormatsLoad) {
    Result<MeshData> const ply = loadText("a.ply", mesh_texts::binaryPly(20));
    ASSERT_TRUE(ply.isOk()) << ply.fault().line();
    EXPECT_EQ(ply.value().triangles.size(), 20U);
    Result<MeshData> const stl = loadText("a.STL", mesh_texts::binaryStl(20));
    ASSERT_TRUE(stl.isOk()) << stl.fault().line();
    EXPECT_EQ(stl.value().triangles.size(), 20U);
}

// == Pipes ==

namespace {

/// What a pipe delivers, under the name that a shell gives it.
Result<MeshData> loadPipe(std::string const& bytes, std::optional<std::string> const& format = std::nullopt) {
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0) {
        return Fault{{}, "no pipe"};
    }
    // As few bytes as these fit into the pipe, without a thread that writes them.
    EXPECT_EQ(::write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    ::close(ends[1]);
    Result<InputFile> const file = InputFile::open("/dev/fd/" + std::to_string(ends[0]));
    ::close(ends[0]);
    return file.isOk() ? MeshFile(file.value(), format).load(ImportLimits{}) : Result<MeshData>(file.fault());
}

std::string reasonOf(Result<MeshData> const& result) {
    return result.isOk() ? "" : result.fault().message;
}

constexpr char gltfTriangle[] =
    R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],
"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],
"buffers":[{"byteLength":36,"uri":"data:application/octet-stream;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"}],
"bufferViews":[{"buffer":0,"byteLength":36}],
"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[1,1,0]}]})";

}  // namespace

TEST_F(MeshFile_test, pipesAreReadAsTheirBytesSay) {
    struct Row {
        std::string bytes;
        UpAxis up;
        std::size_t triangles;
    };
    for (Row const& row :
         {Row{mesh_texts::triangleObj, UpAxis::Y, 1}, Row{mesh_texts::binaryPly(20), UpAxis::Z, 20},
          Row{mesh_texts::binaryStl(20), UpAxis::Z, 20}, Row{mesh_texts::cubeOff, UpAxis::Z, 12},
          Row{gltfTriangle, UpAxis::Y, 1}}) {
        Result<MeshData> const mesh = loadPipe(row.bytes);
        ASSERT_TRUE(mesh.isOk()) << mesh.fault().line();
        EXPECT_EQ(mesh.value().triangles.size(), row.triangles);
        EXPECT_EQ(mesh.value().up, row.up);
    }
}

TEST_F(MeshFile_test, aFormatThatIsNamedIsNotGuessed) {
    EXPECT_EQ(reasonOf(loadPipe("# nothing but this\n")),
              "neither its name nor its first bytes tell the mesh format");
    EXPECT_THAT(reasonOf(loadPipe(mesh_texts::triangleObj, "ply")), HasSubstr("PLY"));
    EXPECT_EQ(reasonOf(loadPipe(mesh_texts::triangleObj, "OBJ")), "");
    EXPECT_EQ(reasonOf(loadPipe(gltfTriangle, "gltf")), "");
    EXPECT_EQ(reasonOf(loadPipe(mesh_texts::triangleObj, "teapot")), "unknown mesh format 'teapot'");
    EXPECT_EQ(reasonOf(loadPipe(mesh_texts::triangleObj, "")), "unknown mesh format ''");

    // Of files with names, too.
    Result<InputFile> const file = InputFile::open(folder.write("cube.txt", mesh_texts::cubeOff));
    EXPECT_EQ(reasonOf(MeshFile(file.value(), "off").load(ImportLimits{})), "");
    EXPECT_THAT(reasonOf(MeshFile(file.value()).load(ImportLimits{})), HasSubstr("extension '.txt'"));
}

TEST_F(MeshFile_test, damageInAPipeIsAFault) {
    EXPECT_THAT(reasonOf(loadPipe(std::string("glTF") + mesh_texts::noise(500))), testing::Not(""));
    std::string const cube = mesh_texts::cubeOff;
    EXPECT_THAT(reasonOf(loadPipe(cube.substr(0, cube.size() - 30))), HasSubstr("cut off"));
}

TEST_F(MeshFile_test, allNamesOfFormatsAreKnown) {
    std::vector<std::string> const names = meshFormatNames();
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    for (char const* const name : {"obj", "ply", "stl", "gltf", "glb", "dae", "fbx", "off", "3ds"}) {
        EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
    }
    EXPECT_EQ(std::count(names.begin(), names.end(), ""), 0);
}

TEST_F(MeshFile_test, otherFilesLieBesideTheFileOrInTheCurrentFolder) {
    std::string const path = folder.write("a.obj", mesh_texts::triangleObj);
    EXPECT_EQ(MeshFile(InputFile::open(path).value()).place(), path);
    EXPECT_EQ(MeshFile(std::string("-")).place(), "-");
    EXPECT_EQ(MeshFile(std::string("/dev/fd/63")).place(), "63");
    EXPECT_EQ(MeshFile(std::string("/proc/self/fd/63")).place(), "63");
}

TEST_F(MeshFile_test, aNamedFormatFindsItsBuffersBesideTheFile) {
    std::string text = gltfTriangle;
    std::size_t const start = text.find("data:");
    text.replace(start, text.find('"', start) - start, "points.bin");
    float const points[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    folder.write("points.bin", std::string(reinterpret_cast<char const*>(points), sizeof points));
    Result<InputFile> const file = InputFile::open(folder.write("scene.json", text));
    Result<MeshData> const mesh = MeshFile(file.value(), "gltf").load(ImportLimits{});
    ASSERT_TRUE(mesh.isOk()) << mesh.fault().line();
    EXPECT_EQ(mesh.value().positions[1].x, 1);
}

// == Files that cannot be read ==

TEST_F(MeshFile_test, aMissingFileIsAFault) {
    EXPECT_EQ(faultOf(load(folder.file("gone.obj")), "gone.obj"),
              "cannot be opened: No such file or directory");
    EXPECT_FALSE(load("").isOk());
}

TEST_F(MeshFile_test, aFolderIsAFault) {
    ASSERT_EQ(mkdir(folder.file("a.obj").c_str(), 0755), 0);
    EXPECT_THAT(faultOf(load(folder.file("a.obj")), "a.obj"), HasSubstr("folder"));
}

TEST_F(MeshFile_test, aNamedPipeIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(folder.file("a.obj").c_str(), 0644), 0);
    EXPECT_THAT(faultOf(load(folder.file("a.obj")), "a.obj"), HasSubstr("not a regular file"));
}

TEST_F(MeshFile_test, aFileWithoutReadPermissionIsAFault) {
    std::string const path = folder.write("a.obj", mesh_texts::triangleObj);
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    WithoutRights const user;
    EXPECT_EQ(faultOf(load(path), "a.obj"), "cannot be opened: Permission denied");
}

TEST_F(MeshFile_test, anUnknownExtensionIsAFault) {
    EXPECT_EQ(faultOfText("a.teapot", mesh_texts::triangleObj), "unknown mesh file extension '.teapot'");
    EXPECT_THAT(faultOfText("noextension", mesh_texts::triangleObj), HasSubstr("no extension"));
}

TEST_F(MeshFile_test, aNameWithALineEndStaysOneLine) {
    Result<MeshData> const result = load(folder.file("a\nb.obj"));
    ASSERT_FALSE(result.isOk());
    EXPECT_EQ(result.fault().line().find('\n'), std::string::npos);
}

// == Damaged files ==

TEST_F(MeshFile_test, anEmptyFileIsAFault) {
    for (char const* const name : {"a.obj", "a.ply", "a.stl", "a.off", "a.glb", "a.3ds", "a.fbx"}) {
        EXPECT_EQ(faultOfText(name, ""), "the file is empty");
    }
}

TEST_F(MeshFile_test, aMeshWithoutAnythingIsAFault) {
    EXPECT_THAT(faultOfText("a.obj", "# nothing to see\n# at all, really nothing\n"), testing::Not(""));
    EXPECT_THAT(faultOfText("b.obj", "v 0 0 0\nv 1 0 0\nvt 1 2\n"), HasSubstr("empty"));
}

TEST_F(MeshFile_test, noiseIsAFaultInEveryFormat) {
    for (char const* const name : {"a.obj", "a.ply", "a.stl", "a.off", "a.glb", "a.gltf", "a.3ds", "a.fbx",
                                   "a.dae", "a.x", "a.lwo", "a.blend", "a.ifc", "a.dxf"}) {
        for (unsigned int const& size : {40U, 3000U}) {
            EXPECT_NE(faultOfText(name, mesh_texts::noise(size)), "") << name;
        }
    }
}

TEST_F(MeshFile_test, truncatedFilesAreFaults) {
    struct Row {
        char const* name;
        std::string content;
        std::size_t firstCut;  // before it, nothing but a header is left
    };
    std::string const ply = mesh_texts::binaryPly(3);
    std::string const stl = mesh_texts::binaryStl(3);
    Row const rows[] = {
        {"a.ply", ply, ply.size() - 60}, {"a.stl", stl, 90}, {"a.off", mesh_texts::cubeOff, 8}};
    for (Row const& row : rows) {
        // The last bytes of a text file are a line end and a digit that may go missing unnoticed.
        for (std::size_t size = row.firstCut; size + 3 < row.content.size(); size += 13) {
            EXPECT_NE(faultOfText(row.name, row.content.substr(0, size)), "")
                << row.name << " cut to " << size;
        }
    }
}

TEST_F(MeshFile_test, coordinatesThatAreNotNumbersAreFaults) {
    for (char const* const bad : {"nan", "inf", "-inf"}) {
        std::string const number = bad;
        EXPECT_THAT(faultOfText("a.obj", "v 0 0 0\nv 1 0 0\nv 0 " + number + " 0\nf 1 2 3\n"),
                    HasSubstr("not a number or infinite"));
        EXPECT_THAT(faultOfText("a.off", "OFF\n3 1 0\n0 0 0\n1 0 0\n0 " + number + " 0\n3 0 1 2\n"),
                    HasSubstr("not a number or infinite"));
        std::string ply = mesh_texts::trianglePly;
        ply.replace(ply.find("1 0 0"), 5, "1 " + number + " 0");
        EXPECT_THAT(faultOfText("a.ply", ply), HasSubstr("not a number or infinite"));
    }
}

TEST_F(MeshFile_test, indicesOutOfRangeAreFaults) {
    for (char const* const index : {"3", "99", "-1", "2147483647"}) {
        std::string ply = mesh_texts::trianglePly;
        ply.replace(ply.find("3 0 1 2"), 7, std::string("3 0 1 ") + index);
        EXPECT_THAT(faultOfText("a.ply", ply), HasSubstr("out of range")) << index;
        EXPECT_THAT(
            faultOfText("a.off", std::string("OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 ") + index + "\n"),
            HasSubstr("out of range"))
            << index;
    }
    for (char const* const index : {"4", "99", "-4", "0"}) {
        EXPECT_THAT(faultOfText("a.obj", std::string("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 ") + index + "\n"),
                    AnyOf(HasSubstr("out of range"), HasSubstr("Invalid face index")))
            << index;
    }
}

TEST_F(MeshFile_test, aFileThatDeclaresMoreThanMemoryHoldsIsAFault) {
    EXPECT_EQ(faultOfText("a.off", mesh_texts::endlessOff),
              "the file is cut off: it declares 987654321012 of 'vertex' and holds 10");
}

TEST_F(MeshFile_test, anImportBeyondItsMemoryIsAFault) {
    if (!IMPORT_MEMORY_IS_LIMITED) {
        GTEST_SKIP() << "a sanitizer reserves the address space, so there is no limit to meet";
    }
    std::string const path = folder.write("a.off", mesh_texts::stripOff(300'000));
    EXPECT_EQ(faultOf(MeshFile(path).load({ImportLimits{}.deadline, std::uint64_t(12) << 20}), "a.off"),
              "the import needs more memory than the limit of 12 MB");
}

TEST_F(MeshFile_test, anImportBeyondItsDeadlineIsAFault) {
    std::string const path = folder.write("a.off", mesh_texts::stripOff(300'000));
    EXPECT_EQ(
        faultOf(MeshFile(path).load({std::chrono::milliseconds(1), ImportLimits{}.memoryBytes}), "a.off"),
        "the import did not end within 0.001 s and was stopped");
}

TEST_F(MeshFile_test, assimpSaysNothingOnTheStreams) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    loadText("a.obj", mesh_texts::noise(500));
    loadText("b.obj", "mtllib gone.mtl\nusemtl a\n" + mesh_texts::triangleObj);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
