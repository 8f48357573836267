#include "viewport/content/input_files.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>

using namespace vellum::viewport;
using testing::Contains;
using testing::IsEmpty;

TEST(materialFiles, areThoseThatAnObjFileNames) {
    TemporaryFolder const folder;
    std::string const object =
        folder.write("a.obj", "# a comment\nmtllib one.mtl two words.mtl\r\nv 0 0 0\nmtllib sub/three.mtl");
    std::vector<std::string> const files = materialFiles({object, folder.write("b.ply", "mtllib no.mtl\n")});
    for (char const* const name :
         {"a.mtl", "one.mtl", "two", "words.mtl", "one.mtl two words.mtl", "sub/three.mtl"}) {
        EXPECT_THAT(files, Contains(folder.file(name)));
    }
    EXPECT_THAT(files, testing::Not(Contains(folder.file("no.mtl"))));
    EXPECT_THAT(materialFiles({folder.file("gone.ply")}), IsEmpty());
    EXPECT_THAT(materialFiles({folder.write("c.obj", "mtllib")}), Contains(folder.file("c.mtl")));
}

TEST(isOneOf, streamsReplaceNothing) {
    EXPECT_FALSE(isOneOf("/dev/null", {"/dev/null"}));
    EXPECT_FALSE(isOneOf("-", {"-"}));
    EXPECT_FALSE(isOneOf("", {""}));
}

TEST(textureFiles, areThoseOfColorsAndOfOpacity) {
    TemporaryFolder const folder;
    MeshData mesh;
    mesh.materials.resize(2);
    mesh.materials[0].texture = "a.png";
    mesh.materials[0].opacityTexture = "b.png";
    mesh.materials[1].texture = "gone.png";
    std::vector<std::string> const files{folder.write("a.png", "x"), folder.write("b.png", "x")};
    EXPECT_EQ(textureFiles(folder.file("a.obj"), mesh), files);
}

TEST(FileSet, filesAreKnownUnderEveryName) {
    TemporaryFolder const folder;
    std::string const file = folder.write("a", "x");
    std::string const other = folder.write("b", "x");
    std::filesystem::create_symlink(file, folder.file("link"));
    FileSet const set({file, folder.file("gone"), ""});
    EXPECT_TRUE(set.contains(file));
    EXPECT_TRUE(set.contains(folder.file("link")));
    EXPECT_TRUE(set.contains(folder.file("./a")));
    EXPECT_FALSE(set.contains(other));
    EXPECT_FALSE(set.contains(folder.file("gone")));
    EXPECT_TRUE(FileSet::isFile(other));
    EXPECT_FALSE(FileSet::isFile(folder.file("gone")));
}
