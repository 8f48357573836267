#include "viewport/files/mesh/Textures.h"

#include "tests/support/TemporaryFolder.h"
#include "viewport/files/images/Picture.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

using namespace vellum::viewport;

namespace {

void savePicture(std::string const& path) {
    Picture picture;
    picture.width = 3;
    picture.height = 1;
    picture.pixels.assign(12, 255);
    ASSERT_FALSE(picture.savePng(path));
}

MeshData triangleWith(std::string const& texture) {
    MeshData mesh;
    mesh.triangles = {{0, 1, 2}};
    mesh.triangleMaterials = {0};
    mesh.textureCoordinates.resize(3);
    mesh.materials.resize(1);
    mesh.materials[0].texture = texture;
    return mesh;
}

}  // namespace

TEST(Textures, namesOfOtherSystemsAreFound) {
    TemporaryFolder const folder;
    ASSERT_EQ(mkdir(folder.file("maps").c_str(), 0755), 0);
    folder.write("maps/a.png", "x");
    folder.write("Skin 1.png", "x");
    std::string const mesh = folder.file("model.obj");
    for (char const* const name :
         {"Skin 1.png", ".\\Skin 1.png", "C:\\work\\Skin 1.png", "/elsewhere/Skin 1.png", "Skin%201.png",
          "SKIN 1.PNG", "file://Skin%201.png"}) {
        EXPECT_EQ(findTexture(mesh, name), folder.file("Skin 1.png")) << name;
    }
    EXPECT_EQ(findTexture(mesh, "maps\\a.png"), folder.file("maps/a.png"));
    EXPECT_FALSE(findTexture(mesh, "maps"));
    EXPECT_FALSE(findTexture(mesh, "gone.png"));
    EXPECT_FALSE(findTexture(mesh, ""));
}

TEST(Textures, whatCannotBeReadIsNotedAndLeftOut) {
    TemporaryFolder const folder;
    savePicture(folder.file("good.png"));
    folder.write("bad.png", "no picture");
    MeshData good = triangleWith("good.png");
    EXPECT_TRUE(loadTextures(folder.file("m.obj"), good).empty());
    ASSERT_NE(good.materials[0].image, nullptr);
    EXPECT_EQ(good.materials[0].image->width(), 3U);

    for (char const* const name : {"bad.png", "gone.png"}) {
        MeshData mesh = triangleWith(name);
        std::vector<Fault> const notes = loadTextures(folder.file("m.obj"), mesh);
        ASSERT_EQ(notes.size(), 1U);
        EXPECT_THAT(notes[0].line(), testing::HasSubstr(name));
        EXPECT_EQ(mesh.materials[0].image, nullptr);
    }
}

TEST(Textures, picturesInsideTheMeshFileAreRead) {
    TemporaryFolder const folder;
    savePicture(folder.file("good.png"));
    std::string const bytes = folder.read("good.png");
    MeshData mesh = triangleWith("*0");
    mesh.materials[0].textureBytes.assign(bytes.begin(), bytes.end());
    EXPECT_TRUE(loadTextures(folder.file("m.glb"), mesh).empty());
    ASSERT_NE(mesh.materials[0].image, nullptr);
    mesh = triangleWith("*0");
    mesh.materials[0].textureBytes = {1, 2, 3};
    EXPECT_EQ(loadTextures(folder.file("m.glb"), mesh).size(), 1U);
}
