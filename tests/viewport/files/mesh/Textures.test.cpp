#include "viewport/files/mesh/Textures.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/viewport/files/images/picture_bytes.h"
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

TEST(Textures, foldersOfTexturesAreLookedThrough) {
    TemporaryFolder const folder;
    for (char const* const name : {"scene", "scene/Textures", "scene/art", "images"}) {
        ASSERT_EQ(mkdir(folder.file(name).c_str(), 0755), 0);
    }
    folder.write("scene/Textures/wood.png", "x");
    folder.write("scene/art/Stone.PNG", "x");
    folder.write("images/sky.png", "x");
    folder.write("images/both.png", "x");
    folder.write("scene/both.png", "x");
    std::string const mesh = folder.file("scene/model.obj");
    EXPECT_EQ(findTexture(mesh, "wood.png"), folder.file("scene/Textures/wood.png"));
    EXPECT_EQ(findTexture(mesh, "TEXTURES/WOOD.png"), folder.file("scene/Textures/wood.png"));
    EXPECT_EQ(findTexture(mesh, "D:\\work\\Art\\stone.png"), folder.file("scene/art/Stone.PNG"));
    EXPECT_EQ(findTexture(mesh, "sky.png"), folder.file("images/sky.png"));
    EXPECT_EQ(findTexture(mesh, "both.png"), folder.file("scene/both.png")) << "the nearest one";
    EXPECT_FALSE(findTexture(mesh, "stone.png")) << "not every folder is one of textures";
}

TEST(Textures, aNoteSaysWhereATextureWasLookedFor) {
    TemporaryFolder const folder;
    MeshData mesh = triangleWith("gone.png");
    std::vector<Fault> const notes = loadTextures(folder.file("m.obj"), mesh);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_THAT(notes[0].line(),
                testing::HasSubstr("'gone.png' is neither beside the file nor in textures, "));
    EXPECT_THAT(notes[0].line(), testing::HasSubstr("../textures"));
}

TEST(Textures, aTextureWithoutCoordinatesIsNoted) {
    MeshData mesh = triangleWith("skin.png");
    mesh.textureCoordinates.clear();
    std::vector<Fault> const notes = loadTextures("m.obj", mesh);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_THAT(notes[0].line(), testing::HasSubstr("'skin.png' has no place"));
}

TEST(Textures, aFaultCostsOneTextureOnly) {
    TemporaryFolder const folder;
    savePicture(folder.file("good.png"));
    MeshData mesh = triangleWith("gone.png");
    mesh.materials.push_back(mesh.materials[0]);
    mesh.materials[1].texture = "good.png";
    mesh.triangles.push_back({0, 1, 2});
    mesh.triangleMaterials = {0, 1};
    EXPECT_EQ(loadTextures(folder.file("m.obj"), mesh).size(), 1U);
    EXPECT_EQ(mesh.materials[0].image, nullptr);
    EXPECT_NE(mesh.materials[1].image, nullptr);
}

TEST(Textures, pixelsInsideTheMeshFileAreTaken) {
    MeshData mesh = triangleWith("*0");
    mesh.materials[0].texelColumns = 1;
    mesh.materials[0].texelRows = 2;
    mesh.materials[0].textureBytes = {255, 0, 0, 255, 0, 255, 0, 128};  // red above green
    EXPECT_TRUE(loadTextures("m.fbx", mesh).empty());
    ASSERT_NE(mesh.materials[0].image, nullptr);
    EXPECT_EQ(mesh.materials[0].image->height(), 2U);
    EXPECT_EQ(mesh.materials[0].image->getBuffer()[1], 255) << "the lower row comes first";
    EXPECT_EQ(mesh.materials[0].image->getBuffer()[3], 128);
    EXPECT_EQ(mesh.materials[0].image->getBuffer()[4], 255);
}

TEST(Textures, theLightOfATextureIsMultipliedWithTheColor) {
    MeshData mesh = triangleWith("");
    Material& material = mesh.materials[0];
    material.emissionTexture.name = "*0";
    material.emissionTexture.columns = 1;
    material.emissionTexture.rows = 1;
    material.emissionTexture.bytes = {200, 100, 50, 0};
    material.emission = {0.5F, 1, 0, 1};
    EXPECT_TRUE(loadTextures("m.fbx", mesh).empty());
    EXPECT_EQ(material.image, nullptr);
    ASSERT_NE(material.emissionImage, nullptr);
    EXPECT_EQ(material.emissionImage->pixdepth(), 24) << "its opacity means nothing";
    EXPECT_EQ(material.emissionImage->getBuffer()[0], 100);
    EXPECT_EQ(material.emissionImage->getBuffer()[1], 100);
    EXPECT_EQ(material.emissionImage->getBuffer()[2], 0);
    EXPECT_TRUE(material.emissionTexture.bytes.empty()) << "no longer needed";

    material = Material();
    material.emissionTexture.name = "gone.png";
    std::vector<Fault> const notes = loadTextures("m.fbx", mesh);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_THAT(notes[0].message, testing::HasSubstr("'gone.png' is neither beside the file"));
    EXPECT_EQ(material.emissionImage, nullptr);
}

TEST(Textures, addressesMayHoldThePicture) {
    // A BMP file of one red pixel.
    MeshData mesh =
        triangleWith("data:image/bmp;base64,Qk06AAAAAAAAADYAAAAoAAAAAQAAAAEAAAABABgAAAAAAAQAAAATCwAAEwsAAAAA"
                     "AAAAAAAAAAD/AA==");
    EXPECT_TRUE(loadTextures("m.dae", mesh).empty());
    ASSERT_NE(mesh.materials[0].image, nullptr);
    EXPECT_EQ(mesh.materials[0].image->getBuffer()[0], 255);
    EXPECT_EQ(mesh.materials[0].image->getBuffer()[1], 0);
}

TEST(Textures, theOpacityOfAnotherPictureIsTaken) {
    TemporaryFolder const folder;
    Picture colors;
    colors.width = 2;
    colors.height = 1;
    colors.pixels = {255, 0, 0, 255, 0, 255, 0, 255};
    ASSERT_FALSE(colors.savePng(folder.file("colors.png")));
    Picture mask = colors;
    mask.pixels = {255, 255, 255, 255, 255, 255, 255, 51};
    ASSERT_FALSE(mask.savePng(folder.file("mask.png")));
    MeshData mesh = triangleWith("colors.png");
    mesh.materials[0].opacityTexture = "mask.png";
    EXPECT_TRUE(loadTextures(folder.file("m.obj"), mesh).empty());
    vellum::VL_Image const* const image = mesh.materials[0].image.get();
    ASSERT_NE(image, nullptr);
    ASSERT_EQ(image->pixdepth(), 32);
    EXPECT_EQ(image->getBuffer()[0], 255);
    EXPECT_EQ(image->getBuffer()[3], 255);
    EXPECT_EQ(image->getBuffer()[5], 255);
    EXPECT_EQ(image->getBuffer()[7], 51);

    mesh = triangleWith("");
    mesh.materials[0].opacityTexture = "mask.png";
    EXPECT_TRUE(loadTextures(folder.file("m.obj"), mesh).empty());
    ASSERT_NE(mesh.materials[0].image, nullptr);
    EXPECT_EQ(mesh.materials[0].image->getBuffer()[5], 255) << "white where there are no colors";
    EXPECT_EQ(mesh.materials[0].image->getBuffer()[7], 51);
}

TEST(Textures, colorsThatAreNoNumbersAreBlackUnderAnOpacity) {
    TemporaryFolder const folder;
    std::string floats = picture_bytes::TIFF_FLOAT;
    floats.replace(8, 4, std::string("\0\0\xC0\x7F", 4));  // the red of the upper left pixel
    folder.write("colors.tif", floats);
    savePicture(folder.file("mask.png"));
    MeshData mesh = triangleWith("colors.tif");
    mesh.materials[0].opacityTexture = "mask.png";
    EXPECT_TRUE(loadTextures(folder.file("m.obj"), mesh).empty());
    vellum::VL_Image const* const image = mesh.materials[0].image.get();
    ASSERT_NE(image, nullptr);
    ASSERT_EQ(image->pixdepth(), 32);
    EXPECT_EQ(image->getBuffer()[8], 0);
    EXPECT_EQ(image->getBuffer()[13], 255) << "the green pixel beside it";
}

TEST(Textures, trianglesThatAreAllAlikeHaveTheFirstMaterial) {
    TemporaryFolder const folder;
    savePicture(folder.file("skin.png"));
    MeshData mesh = triangleWith("skin.png");
    mesh.triangleMaterials.clear();
    EXPECT_TRUE(loadTextures(folder.file("m.ply"), mesh).empty());
    EXPECT_NE(mesh.materials[0].image, nullptr);
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
