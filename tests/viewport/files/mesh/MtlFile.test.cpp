#include "viewport/files/mesh/MtlFile.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/viewport/files/mesh/mesh_checks.h"
#include "tests/viewport/files/mesh/mesh_texts.h"

#include <gmock/gmock.h>

#include <set>

#include <sys/stat.h>

using namespace vellum;
using namespace vellum::viewport;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Color = Color4<float>;

/// The only material of "newmtl a" with these lines.
MtlMaterial materialOf(std::string const& lines) {
    MtlFile const file = readMtl("newmtl a\n" + lines);
    EXPECT_EQ(file.materials.size(), 1U);
    EXPECT_THAT(file.notes, ElementsAre());
    return file.materials.empty() ? MtlMaterial() : file.materials.front();
}

MtlFile load(std::string const& objPath, std::string const& names) {
    std::set<std::string> added;
    return loadMtl(objPath, names, added);
}

TextureTransform transformOf(std::string const& options) {
    return materialOf("map_Kd " + options + " a.png\n").material.textureTransform;
}

}  // namespace

TEST(MtlFile, allPartsOfAMaterialAreRead) {
    MtlMaterial const read =
        materialOf("Ka 1 1 1\nKd 0.25 0.5 0.75\nKs 0.5 0.5 0.5\nKe 0 1 0\nNs 96.5\nNi 1.5\nd 0.5\n"
                   "illum 2\nPr 0.1\nPm 0.2\nmap_Bump bump.png\nmap_Kd wood.png\nmap_d holes.png\n");
    EXPECT_EQ(read.color, (Color{0.25F, 0.5F, 0.75F, 1}));
    Material const& material = read.material;
    EXPECT_EQ(material.name, "a");
    EXPECT_EQ(material.tint, (Color{0.25F, 0.5F, 0.75F, 1}));
    EXPECT_EQ(material.specular, (Color{0.5F, 0.5F, 0.5F, 1}));
    EXPECT_EQ(material.emission, (Color{0, 1, 0, 1}));
    EXPECT_EQ(material.shininess, 96.5F);
    EXPECT_EQ(material.opacity, 0.5F);
    EXPECT_EQ(material.texture, "wood.png");
    EXPECT_EQ(material.opacityTexture, "holes.png");
    EXPECT_EQ(material.alphaMode, AlphaMode::BLEND);
}

TEST(MtlFile, emissionMayHaveATexture) {
    Material const plain = materialOf("map_Ke -s 2 3 glow.png\n").material;
    EXPECT_EQ(plain.emissionTexture.name, "glow.png");
    EXPECT_EQ(plain.emissionTexture.transform.vv, 3);
    EXPECT_EQ(plain.emission, (Color{1, 1, 1, 1})) << "it is all that the file says of light";
    EXPECT_EQ(materialOf("Ke 0 0 0\nmap_Ke glow.png\n").material.emission, (Color{1, 1, 1, 1}));
    EXPECT_EQ(materialOf("Ke 0 0.5 0\nmap_Ke glow.png\n").material.emission, (Color{0, 0.5F, 0, 1}));
}

TEST(MtlFile, whatIsMissingHasItsDefault) {
    MtlMaterial const read = materialOf("");
    EXPECT_EQ(read.color, std::nullopt);
    EXPECT_EQ(read.material.tint, (Color{1, 1, 1, 1}));
    EXPECT_EQ(read.material.opacity, 1.0F);
    EXPECT_EQ(read.material.specular, std::nullopt);
    EXPECT_EQ(read.material.texture, "");
    EXPECT_TRUE(read.material.textureTransform.isIdentity());
    EXPECT_EQ(read.material.alphaMode, AlphaMode::SOLID);
}

TEST(MtlFile, oneNumberStandsForAllThreeAndColorsAreLimited) {
    EXPECT_EQ(materialOf("Kd 0.5\n").color, (Color{0.5F, 0.5F, 0.5F, 1}));
    EXPECT_EQ(materialOf("Kd 0.5 0.25\n").color, (Color{0.5F, 0.25F, 0.25F, 1}));
    EXPECT_EQ(materialOf("Kd -1 2 1e30\n").color, (Color{0, 1, 1, 1}));
}

TEST(MtlFile, aBlackColorDoesNotHideItsTexture) {
    MtlMaterial const textured = materialOf("Kd 0 0 0\nmap_Kd a.png\n");
    EXPECT_EQ(textured.material.tint, (Color{1, 1, 1, 1}));
    EXPECT_EQ(textured.color, std::nullopt);
    MtlMaterial const plain = materialOf("Kd 0 0 0\n");
    EXPECT_EQ(plain.color, (Color{0, 0, 0, 1}));
}

TEST(MtlFile, opacityOutranksTransparency) {
    EXPECT_EQ(materialOf("Tr 0.25\n").material.opacity, 0.75F);
    EXPECT_EQ(materialOf("d 1\nTr 1\n").material.opacity, 1.0F);
    EXPECT_EQ(materialOf("Tr 1\nd 0.5\n").material.opacity, 0.5F);
    EXPECT_EQ(materialOf("d -halo 0.5\n").material.opacity, 0.5F);
    EXPECT_EQ(materialOf("d 7\n").material.opacity, 1.0F);
}

TEST(MtlFile, modelsWithoutHighlightsHaveNone) {
    EXPECT_EQ(materialOf("illum 1\nKs 1 1 1\nNs 8\n").material.specular, std::nullopt);
    EXPECT_EQ(materialOf("Ks 1 1 1\nNs 8\nillum 0\n").material.specular, std::nullopt);
    EXPECT_EQ(materialOf("Ks 1 1 1\nNs 8\nillum 2\n").material.specular, (Color{1, 1, 1, 1}));
}

TEST(MtlFile, anExponentOfZeroIsNoHighlight) {
    EXPECT_EQ(materialOf("Ks 1 1 1\nNs 0\n").material.specular, std::nullopt);
    EXPECT_EQ(materialOf("Ks 1 1 1\n").material.specular, std::nullopt);
}

TEST(MtlFile, texturesAreFoundBehindTheirOptions) {
    struct Row {
        char const* line;
        char const* name;
    };
    for (Row const& row :
         {Row{"a.png", "a.png"}, Row{"  my wood 2.png \r", "my wood 2.png"},
          Row{"-clamp on -bm 0.5 -type sphere a.png", "a.png"},
          Row{"-mm 0 1 -o 1 -s 1 2 3 -t 0.1 0.2 7.png", "7.png"},
          Row{"-blendu off -texres 64 -cc on -imfchan l -boost 2 C:\\x\\a b.png", "C:\\x\\a b.png"},
          Row{"-unknown.png", "-unknown.png"}, Row{"-o", ""}, Row{"-bm", ""}, Row{"", ""}}) {
        EXPECT_EQ(materialOf(std::string("map_Kd ") + row.line + "\n").material.texture, row.name)
            << row.line;
        EXPECT_EQ(materialOf(std::string("map_d ") + row.line + "\n").material.opacityTexture, row.name)
            << row.line;
    }
}

TEST(MtlFile, texturesAreScaledAndMoved) {
    TextureTransform const both = transformOf("-s 2 3 1 -o 0.25 -0.5 0");
    EXPECT_EQ(both.apply({1, 1}), (Vector2<float>{2.25F, 2.5F}));
    EXPECT_EQ(transformOf("-s 2").apply({1, 1}), (Vector2<float>{2, 1}));
    EXPECT_EQ(transformOf("-o 0.5").apply({1, 1}), (Vector2<float>{1.5F, 1}));
    EXPECT_TRUE(transformOf("-s x -t 0.5 0.5").isIdentity());
    EXPECT_TRUE(transformOf("-s nan inf 1e60 -o 1e60").isIdentity());
}

TEST(MtlFile, materialsKeepTheirOrderAndNamesTheirBlanks) {
    MtlFile const file = readMtl(
        "# first\r\nKd 1 1 1\r\nnewmtl  a b \r\nKd 1 0 0\r\nnewmtl\nnewmtl c\n  kD 0 0 1\nnewmtl a b\nd 0.5");
    ASSERT_EQ(file.materials.size(), 3U);
    EXPECT_EQ(file.materials[0].material.name, "a b");
    EXPECT_EQ(file.materials[0].color, (Color{1, 0, 0, 1}));
    EXPECT_EQ(file.materials[0].material.opacity, 0.5F) << "a name that comes again is the same material";
    EXPECT_EQ(file.materials[1].material.name, "");
    EXPECT_EQ(file.materials[2].color, (Color{0, 0, 1, 1}));
}

TEST(MtlFile, whatIsNoNumberIsNoted) {
    MtlFile const file = readMtl("newmtl a\nKd red\nNs\nKd 1 x 1\nd nan\n");
    EXPECT_THAT(file.notes, ElementsAre("line 2: 'red' behind 'kd' is not a number; skipped",
                                        "line 3: '' behind 'ns' is not a number; skipped",
                                        "line 4: 'x' behind 'kd' is not a number; skipped",
                                        "line 5: 'nan' behind 'd' is not a number; skipped"));
    EXPECT_EQ(file.materials[0].color, std::nullopt);
}

TEST(MtlFile, ofManyBadNumbersTheFirstAreNotedAndTheOthersCounted) {
    std::string text = "newmtl a\n";
    for (int i = 0; i < 100; ++i) {
        text += "d none\n";
    }
    std::vector<std::string> const notes = readMtl(text).notes;
    ASSERT_EQ(notes.size(), 9U);
    EXPECT_EQ(notes.back(), "92 more numbers are none; skipped");
}

TEST(MtlFile, changedBytesDoNoHarm) {
    std::string text = "newmtl a\nKd 0.1 0.2 0.3\nTr 1\nNs 1e3\nmap_Kd -s 1 2 -o 3 a b.png\nillum 2\n";
    for (std::size_t place = 0; place < text.size(); ++place) {
        std::string changed = text;
        for (char const other : {'\0', '\n', ' ', '-', '9', '\xFF'}) {
            changed[place] = other;
            for (MtlMaterial const& each : readMtl(changed).materials) {
                MeshData mesh;
                mesh.positions = {{0, 0, 0}};
                mesh.colors = {{1, 1, 1, 1}};
                mesh.points = {0};
                mesh.materials = {each.material};
                EXPECT_EQ(mesh.firstFault("").value_or(Fault()).message, "") << changed;
            }
        }
        readMtl(std::string_view(text).substr(0, place));
    }
}

// == Finding files ==

TEST(MtlFile_load, namesWithBlanksAndSeveralNamesAreFound) {
    TemporaryFolder const folder;
    std::string const object = folder.file("model.obj");
    folder.write("my paint.mtl", "newmtl one\n");
    folder.write("B.MTL", "newmtl two\n");
    struct Row {
        char const* names;
        std::vector<std::string> materials;
    };
    for (Row const& row :
         {Row{"my paint.mtl", {"one"}}, Row{" ./my paint.mtl\r", {"one"}}, Row{"b.mtl", {"two"}},
          Row{"C:\\models\\b.mtl", {"two"}}, Row{"b.mtl b.mtl", {"two"}}}) {
        MtlFile const file = load(object, row.names);
        std::vector<std::string> names;
        for (MtlMaterial const& each : file.materials) {
            names.push_back(each.material.name);
        }
        EXPECT_EQ(names, row.materials) << row.names;
        EXPECT_THAT(file.notes, ElementsAre()) << row.names;
    }
}

TEST(MtlFile_load, missingFilesAreNoted) {
    TemporaryFolder const folder;
    folder.write("b.mtl", "newmtl two\nKd x\n");
    MtlFile const some = load(folder.file("model.obj"), "gone.mtl b.mtl");
    EXPECT_EQ(some.materials.size(), 1U);
    EXPECT_THAT(some.notes, ElementsAre("b.mtl: line 2: 'x' behind 'kd' is not a number; skipped",
                                        "material file 'gone.mtl' is not beside the file; drawn without it"));
    MtlFile const none = load(folder.file("model.obj"), "gone.mtl lost.mtl");
    EXPECT_TRUE(none.materials.empty());
    EXPECT_THAT(none.notes,
                ElementsAre("material file 'gone.mtl lost.mtl' is not beside the file; drawn without it"));
    EXPECT_TRUE(load(folder.file("model.obj"), " ").notes.empty());
}

TEST(MtlFile_load, theFileOfTheSameNameTakesThePlaceOfAMissingOne) {
    TemporaryFolder const folder;
    folder.write("model.mtl", "newmtl one\n");
    MtlFile const file = load(folder.file("model.obj"), "gone.mat");
    EXPECT_EQ(file.materials.size(), 1U);
    EXPECT_THAT(
        file.notes,
        ElementsAre("material file 'gone.mat' is not beside the file; 'model.mtl' is read in its place"));
}

TEST(MtlFile_load, noFileIsReadTwice) {
    TemporaryFolder const folder;
    folder.write("a.mtl", "newmtl one\n");
    std::set<std::string> added;
    EXPECT_EQ(loadMtl(folder.file("model.obj"), "a.mtl x", added).materials.size(), 1U);
    EXPECT_TRUE(loadMtl(folder.file("model.obj"), "a.mtl y", added).materials.empty());
    EXPECT_TRUE(loadMtl(folder.file("model.obj"), "./a.mtl", added).materials.empty());
}

TEST(MtlFile_load, anEmptyFileIsNoted) {
    TemporaryFolder const folder;
    folder.write("a.mtl", "");
    EXPECT_THAT(load(folder.file("model.obj"), "a.mtl").notes,
                ElementsAre("material file 'a.mtl': the file is empty"));
}
