#include "viewport/files/FileKind.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/viewport/files/mesh/mesh_texts.h"
#include "tests/viewport/files/particles/particle_texts.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using vellum::viewport::isParticleFile;

namespace {

vellum::viewport::InputFile pipeOf(std::string const& bytes) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    // As few bytes as these fit into the pipe.
    EXPECT_EQ(::write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    ::close(ends[1]);
    auto const file = vellum::viewport::InputFile::open("/dev/fd/" + std::to_string(ends[0]));
    ::close(ends[0]);
    return file.value();
}

}  // namespace

TEST(FileKind, namesDecideWhereNothingCanBeRead) {
    for (char const* const name : {"a.lammpstrj", "a.dump", "a.xyz", "a.XYZ", "a.extxyz", "a.csv", "a.gz",
                                   "a.zst", "a.xz", "a.data"}) {
        EXPECT_TRUE(isParticleFile(std::string("/nonexistent/") + name)) << name;
    }
}

TEST(FileKind, namesOfMeshFilesOutrankTextsWithoutASignature) {
    TemporaryFolder const folder;
    for (char const* const name : {"a.obj", "a.stl", "a.off", "a.glb"}) {
        for (char const* const text :
             {"1\n\nH 0 0 0\n", "# v x y z\nv 0 0 0\nf 1 1 1\n", "nothing of this kind\n"}) {
            EXPECT_FALSE(isParticleFile(folder.write(name, text))) << name << text;
        }
    }
    EXPECT_TRUE(isParticleFile(folder.write("a.txt", "# v x y z\n1 0 0 0\n")));
}

TEST(FileKind, objFilesOfPointsAreParticles) {
    TemporaryFolder const folder;
    EXPECT_TRUE(isParticleFile(folder.write("a.obj", "# v x y z\nv 0 0 0\n")));
    EXPECT_FALSE(isParticleFile(folder.write("a.off", "# v x y z\nv 0 0 0\n")));
    EXPECT_FALSE(isParticleFile(folder.write("b.obj", mesh_texts::triangleObj)));
}

TEST(FileKind, aSignatureOutranksTheName) {
    TemporaryFolder const folder;
    EXPECT_TRUE(isParticleFile(folder.write("melt.obj", particle_texts::dump)));
    EXPECT_TRUE(
        isParticleFile(folder.write("points.stl", "ply\nformat ascii 1.0\nelement vertex 0\nend_header\n")));
}

TEST(FileKind, theContentOfPlyFilesDecides) {
    TemporaryFolder const folder;
    EXPECT_FALSE(isParticleFile(folder.write("mesh.ply", mesh_texts::trianglePly)));
    EXPECT_TRUE(isParticleFile(folder.write("points.ply",
                                            "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\n"
                                            "property float y\nproperty float z\nend_header\n0 0 0\n")));
    for (std::string const element : {"face", "tristrips", "edge"}) {
        std::string const start = "ply\nformat ascii 1.0\nelement vertex 0\nelement " + element;
        EXPECT_FALSE(isParticleFile(folder.write("mesh.ply", start + " 1\nend_header\n"))) << element;
        EXPECT_TRUE(isParticleFile(folder.write("mesh.ply", start + " 0\nend_header\n"))) << element;
    }
    EXPECT_FALSE(isParticleFile(folder.file("gone.ply")));
    EXPECT_FALSE(isParticleFile(folder.write("noise.ply", mesh_texts::noise(500))));
}

TEST(FileKind, theBytesOfAPipeDecide) {
    for (std::string const text :
         {"# v x y z\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", "OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n"}) {
        EXPECT_FALSE(isParticleFile(pipeOf(text))) << text;
    }
    EXPECT_TRUE(isParticleFile(pipeOf("# v x y z\nv 0 0 0\n")));
    EXPECT_TRUE(isParticleFile(pipeOf("1\n\nH 0 0 0\n")));
}

TEST(FileKind, pipesAreNotOpenedByTheirPaths) {
    TemporaryFolder const folder;
    ASSERT_EQ(mkfifo(folder.file("a.xyz").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(folder.file("a.obj").c_str(), 0600), 0);
    EXPECT_TRUE(isParticleFile(folder.file("a.xyz")));
    EXPECT_FALSE(isParticleFile(folder.file("a.obj")));
    EXPECT_FALSE(isParticleFile("-"));
}

TEST(FileKind, whereNamesSayNothingTheContentDecides) {
    TemporaryFolder const folder;
    EXPECT_TRUE(isParticleFile(folder.write("dump.melt", particle_texts::dump)));
    EXPECT_TRUE(isParticleFile(folder.write("melt", particle_texts::dump)));
    EXPECT_FALSE(isParticleFile(folder.write("notes.txt", "nothing of this kind\n")));
    EXPECT_FALSE(isParticleFile(folder.file("gone")));
}
