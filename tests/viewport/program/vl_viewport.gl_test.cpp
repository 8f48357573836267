#include "tests/support/TemporaryFolder.h"
#include "tests/support/build_facts.h"
#include "tests/viewport/files/mesh/mesh_texts.h"
#include "tests/viewport/files/particles/particle_texts.h"
#include "tests/viewport/program/program_runner.h"
#include "viewport/files/images/Picture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include <sys/stat.h>
#include <unistd.h>

/// The program as it is started from a shell: every case with its exit status, what it says, and what it
/// leaves.

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using vellum::viewport::Picture;
using vellum::viewport::Result;

namespace {

class program_gl_test : public testing::Test {
protected:
    Outcome run(std::vector<std::string> const& arguments, std::vector<std::string> environment = {}) const {
        if (isAddressSanitized()) {
            // Drivers keep memory to the end. The unit tests look for leaks of the program's own.
            environment.push_back("ASAN_OPTIONS=detect_leaks=0");
        }
        return runProgram(VL_VIEWPORT_PROGRAM, arguments, environment);
    }

    /// The program says one line that names the file, gives this status, and leaves the folder as it was.
    void expectFault(std::string const& file, std::string const& fault,
                     std::vector<std::string> const& more = {}) {
        std::vector<std::string> const before = folder.names();
        std::vector<std::string> arguments{file, "--out", folder.file("out.png"), "--size", "64x48"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        Outcome const outcome = run(arguments);
        EXPECT_EQ(outcome.status, 1) << outcome.error;
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.error, StartsWith("vl_viewport: " + file + ": "));
        EXPECT_THAT(outcome.error, HasSubstr(fault));
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
        EXPECT_EQ(folder.names(), before) << "something is left behind";
    }

    void expectUsageError(std::vector<std::string> const& arguments) {
        Outcome const outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2) << outcome.error;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
        EXPECT_THAT(folder.names(), testing::Not(testing::Contains("out.png")));
    }

    TemporaryFolder folder;
};

std::size_t countColors(Picture const& picture) {
    std::set<unsigned int> colors;
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4) {
        colors.insert(picture.pixels[i] << 16U | picture.pixels[i + 1] << 8U | picture.pixels[i + 2]);
    }
    return colors.size();
}

}  // namespace

// == What is done ==

TEST_F(program_gl_test, aMeshBecomesAPictureOfTheSizeAskedFor) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    std::string const out = folder.file("out.png");
    for (char const* const size : {"320x200", "1x1", "1100x37"}) {
        Outcome const outcome = run({mesh, "--out", out, "--size", size, "--gizmo", "rotate"});
        ASSERT_EQ(outcome.status, 0) << outcome.error;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.error, "");
        Result<Picture> const picture = Picture::loadPng(out);
        ASSERT_TRUE(picture.isOk()) << picture.fault().line();
        EXPECT_EQ(std::to_string(picture.value().width) + "x" + std::to_string(picture.value().height), size);
        if (picture.value().width > 1) {
            EXPECT_GT(countColors(picture.value()), 100U);
        }
    }
    EXPECT_THAT(folder.names(), ElementsAre("cube.off", "out.png"));
}

TEST_F(program_gl_test, whatIsPickedIsPrinted) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    struct Row {
        std::vector<std::string> arguments;
        char const* output;
    };
    // In the front view the handle of x, 118 of 720 pixels long, goes to the right from the middle. In OFF
    // files z is up.
    for (Row const& row :
         {Row{{"--pick", "418,360", "--gizmo", "move"}, "1 gizmo move X\n"},
          Row{{"--pick", "360,242", "--gizmo", "move"}, "3 gizmo move Z\n"},
          Row{{"--pick", "200,500", "--gizmo", "move"}, "16 cube.off\n"}, Row{{"--pick", "3,3"}, "nothing\n"},
          Row{{"--pick", "200,500", "--transform", "1:0,0,0:0,0,0:0.1,1,1"}, "nothing\n"}}) {
        std::vector<std::string> arguments{mesh, "--size", "720x720", "--view", "front"};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        Outcome const outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        EXPECT_EQ(withoutFacts(outcome.output), row.output);
        bool const isMesh = row.output == std::string("16 cube.off\n");
        EXPECT_EQ(outcome.output != row.output, isMesh) << "facts of all but handles";
        EXPECT_EQ(outcome.error, "");
    }
    EXPECT_THAT(folder.names(), ElementsAre("cube.off"));
}

TEST_F(program_gl_test, pickingTellsWhatTheFileSays) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    std::vector<std::string> const front{"--size", "64x48", "--view", "front", "--pick", "20,34"};
    std::vector<std::string> words{mesh};
    words.insert(words.end(), front.begin(), front.end());
    EXPECT_THAT(run(words).output,
                testing::MatchesRegex("16 cube.off\n  triangle: 5\n  position: -0[.][0-9]*, -1, -0[.][0-9]*\n"
                                      "  vertex: 0\n  vertex position: -1, -1, -1\n"));
    std::string const dump = folder.write("some.dump", "ITEM: TIMESTEP\n7\nITEM: NUMBER OF ATOMS\n2\n"
                                                       "ITEM: BOX BOUNDS pp pp pp\n0 4\n0 4\n0 4\n"
                                                       "ITEM: ATOMS id element x y z pe vx vy vz\n"
                                                       "5 O 1 9.5 1 nan 1 2 3\n3 H 2 2 2 -4.5 0 0 1\n");
    words = {dump,
             "--size",
             "64x48",
             "--view",
             "front",
             "--pick",
             "20,34",
             "--particles",
             "points",
             "--wrap",
             "--size-of-particles",
             "20"};
    EXPECT_EQ(run(words).output,
              "16 some.dump\n  particle: 1\n  id: 5\n  position: 1, 9.5, 1\n  shown at: 1, 1.5, 1\n"
              "  element: O\n  pe: nan\n  vx: 1\n  vy: 2\n  vz: 3\n  velocity: 1, 2, 3\n");
    words.emplace_back("--info=json");
    std::string const document = run(words).output;
    EXPECT_EQ(document.front(), '{');
    EXPECT_THAT(document, HasSubstr("\"shownAt\""));
    EXPECT_EQ(document.substr(document.size() - 3), "\n}\n") << "nothing behind the document";
}

TEST_F(program_gl_test, pickingAndDrawingGoTogether) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    Outcome const outcome =
        run({mesh, mesh, "--pick", "1,1", "--out", folder.file("out.png"), "--size", "64x48"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.output, "nothing\n");
    EXPECT_TRUE(Picture::loadPng(folder.file("out.png")).isOk());
}

TEST_F(program_gl_test, texturesAreFoundBesideTheModelOrNoted) {
    std::string const mesh =
        folder.write("square.obj",
                     "mtllib square.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                     "usemtl skin\nf 1/1 2/2 3/3 4/4\n");
    // The name comes from another system.
    folder.write("square.mtl", "newmtl skin\nKd 1 1 1\nmap_Kd C:\\pictures\\Skin.PNG\n");
    std::vector<std::string> const arguments{mesh,     "--out", folder.file("out.png"), "--size", "64x64",
                                             "--view", "front"};
    Outcome const without = run(arguments);
    EXPECT_EQ(without.status, 0);
    EXPECT_THAT(without.error, HasSubstr("Skin.PNG' is neither beside the file nor in textures, "));
    EXPECT_EQ(std::count(without.error.begin(), without.error.end(), '\n'), 1) << without.error;

    Picture skin;
    skin.width = 2;
    skin.height = 2;
    for (int i = 0; i < 4; ++i) {
        skin.pixels.insert(skin.pixels.end(), {20, 220, 20, 255});
    }
    ASSERT_FALSE(skin.savePng(folder.file("skin.png")));
    for (std::vector<std::string> const& more :
         {std::vector<std::string>{}, {"--immediate"}, {"--texture", folder.file("skin.png")}}) {
        std::vector<std::string> words = arguments;
        words.insert(words.end(), more.begin(), more.end());
        Outcome const outcome = run(words);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.error, "");
        Result<Picture> const picture = Picture::loadPng(folder.file("out.png"));
        ASSERT_TRUE(picture.isOk());
        unsigned char const* const middle = picture.value().pixels.data() + std::size_t{4} * (32 * 64 + 32);
        EXPECT_GT(middle[1], 3 * middle[0]) << "green";
    }
}

TEST_F(program_gl_test, aTextureThatCannotBeReadIsAFault) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    std::string const noise = folder.write("noise.png", mesh_texts::noise(500));
    for (std::string const& texture : {folder.file("gone.png"), noise, mesh, std::string("/dev/null")}) {
        Outcome const outcome = run({mesh, "--texture", texture, "--out", folder.file("out.png")});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.error, StartsWith("vl_viewport: " + texture + ": "));
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
        EXPECT_THAT(folder.names(), ElementsAre("cube.off", "noise.png"));
    }
}

TEST_F(program_gl_test, infoTellsWhatIsThere) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    Outcome const outcome = run({mesh, "--info"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    for (std::string const& text :
         {mesh, std::string("triangles: "), std::string(" 12\n"), std::string("computed"),
          std::string("OpenGL"), std::string("renderer: ")}) {
        EXPECT_THAT(outcome.output, HasSubstr(text));
    }
}

TEST_F(program_gl_test, helpAndVersionNeedNoOpenGL) {
    std::vector<std::string> const noDriver{"__EGL_VENDOR_LIBRARY_FILENAMES=/nonexistent", "DISPLAY="};
    EXPECT_EQ(run({"--help"}, noDriver).status, 0);
    EXPECT_THAT(run({"--version"}, noDriver).output, StartsWith("vl_viewport "));
}

// == Exit status 1 ==

TEST_F(program_gl_test, filesThatCannotBeReadAreFaults) {
    expectFault(folder.file("gone.obj"), "No such file");
    ASSERT_EQ(mkdir(folder.file("folder.obj").c_str(), 0755), 0);
    expectFault(folder.file("folder.obj"), "folder");
    expectFault(folder.write("mesh.teapot", mesh_texts::triangleObj), "unknown mesh file extension");
    expectFault(folder.write("empty.obj", ""), "empty");
    expectFault(folder.write("comment.obj", "# nothing to see here, move on\n"), "");
}

TEST_F(program_gl_test, damagedFilesAreFaults) {
    for (char const* const name : {"a.obj", "a.ply", "a.stl", "a.off", "a.glb", "a.3ds", "a.fbx", "a.dae"}) {
        expectFault(folder.write(name, mesh_texts::noise(2000)), "");
    }
    std::string const ply = mesh_texts::binaryPly(50);
    std::string const stl = mesh_texts::binaryStl(50);
    expectFault(folder.write("cut.ply", ply.substr(0, ply.size() - 20)), "cut off");
    expectFault(folder.write("cut.stl", stl.substr(0, stl.size() - 20)), "");
    expectFault(folder.write("cut.off", mesh_texts::cubeOff.substr(0, 60)), "cut off");
    expectFault(folder.write("nan.obj", "v 0 0 0\nv 1 0 0\nv 0 nan 0\nf 1 2 3\n"), "not a number");
    expectFault(folder.write("none.stl", "solid a\nendsolid a\n"), "the mesh is empty: it has no triangle");
    expectFault(folder.write("flat.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 1 1\nf 1 2 2\n"),
                "the mesh is empty: no triangle has three different corners");
    expectFault(
        folder.write("index.ply", std::string(mesh_texts::trianglePly)
                                      .replace(mesh_texts::trianglePly.find("3 0 1 2"), 7, "3 0 1 9")),
        "out of range");
}

TEST_F(program_gl_test, importsThatWouldNotEndAreStopped) {
    expectFault(folder.write("endless.off", mesh_texts::endlessOff), "cut off");
    expectFault(folder.write("large.off", mesh_texts::stripOff(300'000)), "did not end within 0.001 s",
                {"--import-timeout", "0.001"});
}

TEST_F(program_gl_test, theFirstBadFileOfSeveralIsNamed) {
    std::string const good = folder.write("cube.off", mesh_texts::cubeOff);
    expectFault(folder.file("gone.obj"), "No such file", {good});
}

TEST_F(program_gl_test, aPictureThatCannotBeWrittenIsAFault) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    ASSERT_EQ(mkdir(folder.file("folder").c_str(), 0755), 0);
    for (std::string const& out : {folder.file("gone/out.png"), folder.file("folder"),
                                   std::string("/proc/out.png"), std::string("/dev/full")}) {
        Outcome const outcome = run({mesh, "--out", out, "--size", "64x48"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.error, StartsWith("vl_viewport: " + out + ": cannot be written: "));
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
        EXPECT_THAT(folder.names(), ElementsAre("cube.off", "folder"));
    }
}

TEST_F(program_gl_test, aFaultLeavesAnEarlierPictureAsItWas) {
    folder.write("out.png", "an earlier picture");
    EXPECT_EQ(run({folder.file("gone.obj"), "--out", folder.file("out.png")}).status, 1);
    EXPECT_EQ(folder.read("out.png"), "an earlier picture");
}

// == Exit status 2 ==

TEST_F(program_gl_test, commandLinesThatMakeNoSenseAreUsageErrors) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    std::string const out = folder.file("out.png");
    expectUsageError({"--out", out});
    expectUsageError({mesh, "--out", out, "--teapot"});
    expectUsageError({mesh, "--out", out, "--shading", "shiny"});
    expectUsageError({mesh, "--out", out, "--normals", "edge"});
    expectUsageError({mesh, "--out", out, "--gizmo", "bend"});
    expectUsageError({mesh, "--out", out, "--transform", "2:0,0,0"});
    expectUsageError({mesh, "--out", out, "--transform", "1:1e300,0,0"});
    expectUsageError({mesh, "--out", out, "--view", "below"});
    for (char const* const size : {"0x0", "0x100", "16385x1", "99999999999x99999999999", "-1x5", "many"}) {
        expectUsageError({mesh, "--out", out, "--size", size});
    }
    expectUsageError({mesh, "--out", out, "--size", "10x10", "--pick", "10,0"});
}

// == Particles ==

TEST_F(program_gl_test, particleFilesOfEveryKindBecomePictures) {
    std::string const out = folder.file("out.png");
    std::string const dump = folder.write("melt.lammpstrj", particle_texts::dump);
    std::string const xyz = folder.write("water.xyz", "3\nwater\nO 0 0 0\nH 0.76 0.59 0\nH -0.76 0.59 0\n");
    std::string const csv = folder.write("table.csv", "x,y,z,t\n0,0,0,1\n1,0,0,2\n0,1,0,3\n");
    std::string const ply =
        folder.write("points.ply", "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\n"
                                   "property float y\nproperty float z\nend_header\n0 0 0\n1 1 1\n");
    for (std::string const& file : {dump, xyz, csv, ply}) {
        for (char const* const mode : {"points", "spheres"}) {
            Outcome const outcome = run({file, "--out", out, "--size", "200x150", "--particles", mode});
            EXPECT_EQ(outcome.status, 0) << outcome.error;
            EXPECT_EQ(outcome.output + outcome.error, "");
            Result<Picture> const picture = Picture::loadPng(out);
            ASSERT_TRUE(picture.isOk());
            EXPECT_GT(countColors(picture.value()), 100U);
        }
    }
    EXPECT_EQ(run({dump, "--frame", "0", "--particles", "arrows", "--out", out, "--size", "200x150"}).status,
              0);
}

TEST_F(program_gl_test, meshesAndParticlesShareAPicture) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    std::string const csv = folder.write("table.csv", "x,y,z\n9,9,9\n");
    Outcome const outcome = run({mesh, csv, "--pick", "60,60", "--size", "120x120", "--view", "front"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.output, "nothing\n");
}

TEST_F(program_gl_test, infoTellsWhatParticleFilesHold) {
    std::string const dump = folder.write("melt.lammpstrj", particle_texts::dump);
    Outcome const outcome = run({dump, "--info", "--frame", "0", "--gpu-memory", "77"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    for (char const* const text :
         {"frames:                         2\n",
          "frame shown:                    0 (timestep 100, time 0.5)\n",
          "particles:                      3\n", "velocities:                     yes\n",
          "channels:                       id, type, c_pe\n", "box to:                         10, 20, 5\n",
          "particle memory:                8.01086e-05 MB\n", "taken to be free:               77 MB\n"}) {
        EXPECT_THAT(outcome.output, HasSubstr(text));
    }
}

TEST_F(program_gl_test, theLastFrameIsShownWhereNoneIsAskedFor) {
    std::string const dump = folder.write("melt.lammpstrj", particle_texts::dump);
    EXPECT_THAT(run({dump, "--info"}).output,
                HasSubstr("frame shown:                    1 (timestep 200)\n"));
    expectFault(dump, "has no frame 2; its last one is 1", {"--frame", "2"});
    // Of the second frame, which has no velocities.
    expectFault(dump, "has no velocities to be shown as arrows", {"--particles", "arrows"});
}

TEST_F(program_gl_test, channelsThatAFileLacksAreFaults) {
    std::string const dump = folder.write("melt.lammpstrj", particle_texts::dump);
    expectFault(dump, "has no channel 'charge' (it has: speed, id, type, vx, vy, vz, c_pe, x, y, z)",
                {"--channel", "charge", "--frame", "0"});
}

TEST_F(program_gl_test, aDumpThatIsCutOffShowsItsCompleteFramesAndSaysSo) {
    std::string const& whole = particle_texts::dump;
    std::string const out = folder.file("out.png");
    std::string const dump = folder.write("cut.lammpstrj", whole.substr(0, whole.size() - 12));
    Outcome const outcome = run({dump, "--out", out, "--size", "200x150"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.error, StartsWith("vl_viewport: " + dump + ": "));
    EXPECT_THAT(outcome.error, HasSubstr("cut off in frame 1, which is left out"));
    EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
    EXPECT_TRUE(Picture::loadPng(out).isOk());
    expectFault(folder.write("first.lammpstrj", whole.substr(0, 160)), "cut off in frame 0");
}

TEST_F(program_gl_test, damagedParticleFilesAreFaults) {
    for (char const* const name : {"a.lammpstrj", "a.dump", "a.xyz", "a.csv", "a.gz"}) {
        expectFault(folder.write(name, mesh_texts::noise(2000)), "");
        expectFault(folder.write(name, ""), "");
    }
    expectFault(folder.file("gone.xyz"), "No such file");
    std::string damaged = particle_texts::dump;
    damaged.replace(damaged.find("10.25"), 5, "teapot");
    expectFault(folder.write("bad.dump", damaged), "line 16", {"--frame", "0"});
}

TEST_F(program_gl_test, particlesWithoutAPlaceAreNoted) {
    std::string const csv = folder.write("table.csv", "x,y,z,t\n0,0,0,nan\n1,0,nan,2\n0,inf,0,3\n1,1,1,4\n");
    std::string const out = folder.file("out.png");
    Outcome const outcome = run({csv, "--out", out, "--size", "200x150"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error,
              "vl_viewport: " + csv + ": 2 of 4 particles are left out: their positions are not finite\n");
}

TEST_F(program_gl_test, aPictureOfParticlesThatCannotBeWrittenIsAFault) {
    std::string const csv = folder.write("table.csv", "x,y,z\n0,0,0\n");
    for (std::string const& out : {folder.file("gone/out.png"), std::string("/dev/full")}) {
        Outcome const outcome = run({csv, "--out", out, "--size", "64x48"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.error, StartsWith("vl_viewport: " + out + ": cannot be written: "));
        EXPECT_THAT(folder.names(), ElementsAre("table.csv"));
    }
}

TEST_F(program_gl_test, particleOptionsThatMakeNoSenseAreUsageErrors) {
    std::string const csv = folder.write("table.csv", "x,y,z\n0,0,0\n");
    std::string const out = folder.file("out.png");
    for (std::vector<std::string> const& words : {std::vector<std::string>{"--particles", "cubes"},
                                                  {"--percent", "101"},
                                                  {"--range", "2,1"},
                                                  {"--colors", "red,blue"},
                                                  {"--frame", "-1"},
                                                  {"--size-of-particles", "0"},
                                                  {"--gpu-memory", "much"},
                                                  {"--channel", ""}}) {
        expectUsageError({csv, "--out", out, words[0], words[1]});
    }
}

// == Old drivers ==

class old_driver_program_gl_test : public program_gl_test, public testing::WithParamInterface<char const*> {};

TEST_P(old_driver_program_gl_test, everythingButEffectsIsDrawn) {
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    std::string const csv =
        folder.write("table.csv", "x,y,z,vx,vy,vz\n0,0,0,1,0,0\n1,1,0,0,1,0\n2,0,0,0,0,1\n");
    std::string const out = folder.file("out.png");
    std::string const asPoints =
        "vl_viewport: OpenGL here has no geometry stages for spheres and arrows; drawn as points\n";
    struct Row {
        std::vector<std::string> words;
        std::string output;
        std::string error;
    };
    std::vector<Row> const rows{{{cube, "--shading", "box"}, "", ""},
                                {{cube, "--shading", "wireframe"}, "", ""},
                                {{cube, "--shading", "faceted"}, "", ""},
                                {{cube, "--shading", "smooth"}, "", ""},
                                {{cube, "--edges"}, "", ""},
                                {{cube, "--edges-blend"}, "", ""},
                                {{cube, "--normals", "vertex", "--connectivity"}, "", ""},
                                {{cube, "--normals", "face", "--wireframe-back"}, "", ""},
                                {{cube, "--import-preview"}, "", ""},
                                {{cube, "--immediate"}, "", ""},
                                {{cube, "--gizmo", "move"}, "", ""},
                                {{cube, "--gizmo", "rotate"}, "", ""},
                                {{cube, "--gizmo", "scale"}, "", ""},
                                {{cube, "--pick", "100,75"}, "16 cube.off\n", ""},
                                {{csv, "--particles", "points"}, "", ""},
                                {{csv, "--particles", "points", "--gpu-memory", "0"}, "", ""},
                                {{csv, "--particles", "spheres"}, "", asPoints},
                                {{csv, "--particles", "arrows"}, "", asPoints},
                                {{csv, "--particles", "points", "--pick", "1,1"}, "nothing\n", ""}};
    char const* const version = GetParam();
    std::string const driver = std::string("MESA_GL_VERSION_OVERRIDE=") + version;
    for (Row const& row : rows) {
        std::vector<std::string> words = row.words;
        words.insert(words.end(), {"--size", "200x150", "--out", out});
        unlink(out.c_str());
        SCOPED_TRACE(testing::PrintToString(row.words) + " on " + version);
        Outcome const outcome = run(words, {driver});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(withoutFacts(outcome.output), row.output);
        EXPECT_EQ(outcome.error, row.error);
        Result<Picture> const picture = Picture::loadPng(out);
        ASSERT_TRUE(picture.isOk());
        EXPECT_GT(countColors(picture.value()), 100U);
    }
    Outcome const information = run({cube, "--info"}, {driver});
    EXPECT_EQ(information.status, 0);
    EXPECT_THAT(information.output, HasSubstr(std::string("version:                        ") + version));
}

INSTANTIATE_TEST_SUITE_P(versions, old_driver_program_gl_test, testing::Values("1.5", "2.0", "2.1"),
                         [](auto const& version) {
                             std::string name = version.param;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

// == Nothing is lost ==

TEST_F(program_gl_test, aPictureNeverReplacesAnInput) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    Outcome const drawn = run({mesh, "--out", folder.file("map.png"), "--size", "64x64"});
    ASSERT_EQ(drawn.status, 0) << drawn.error;
    std::string const map = folder.file("map.png");
    std::string const object =
        folder.write("model.obj", "mtllib model.mtl\nusemtl one\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\n"
                                  "vt 1 0\nvt 0 1\nf 1/1 2/2 3/3\n");
    folder.write("model.mtl", "newmtl one\nmap_Kd map.png\n");
    std::string const link = folder.file("link.png");
    std::filesystem::create_symlink(map, link);
    std::string const hard = folder.file("hard.png");
    std::filesystem::create_hard_link(mesh, hard);
    std::string const mapBefore = folder.read("map.png");
    struct Row {
        std::vector<std::string> words;
        std::string out;
    };
    for (Row const& row :
         {Row{{mesh}, mesh}, Row{{mesh}, hard},
          Row{{mesh},
              folder.file("../" + std::filesystem::path(folder.file("")).parent_path().filename().string() +
                          "/cube.off")},
          Row{{mesh, "--texture", map}, link}, Row{{object}, map},
          Row{{mesh, "--effect", "glass", "--environment", map}, map},
          Row{{mesh, "--effect", "custom", "--shader-fragment", folder.write("a.frag", "void main() {}")},
              folder.file("a.frag")},
          Row{{mesh, "--config", folder.write("config.png", "quality = 80\n")}, folder.file("config.png")}}) {
        std::vector<std::string> words = row.words;
        words.insert(words.end(), {"--out", row.out, "--size", "64x64"});
        SCOPED_TRACE(testing::PrintToString(words));
        Outcome const outcome = run(words);
        EXPECT_EQ(outcome.status, 2) << outcome.error;
        EXPECT_EQ(outcome.error, "vl_viewport: --out: " + row.out + " is one of the files that are read\n");
    }
    Outcome const window = run({mesh, "--texture", map, "--window-picture", link});
    EXPECT_EQ(window.status, 2);
    EXPECT_EQ(window.error,
              "vl_viewport: --window-picture: " + link + " is one of the files that are read\n");
    EXPECT_EQ(folder.read("cube.off"), mesh_texts::cubeOff);
    EXPECT_EQ(folder.read("map.png"), mapBefore);
    EXPECT_EQ(folder.read("config.png"), "quality = 80\n");
}

TEST_F(program_gl_test, closedStandardStreamsDoNoHarm) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    std::string const out = folder.file("out.png");
    for (char const* const closed : {"<&-", ">&-", "2>&-", "<&- >&- 2>&-"}) {
        unlink(out.c_str());
        std::string command = VL_VIEWPORT_PROGRAM;
        command.append(" " + mesh + " --info --size 64x48 --out " + out + " ").append(closed);
        Outcome const outcome = runProgram("/bin/sh", {"-c", command}, {"ASAN_OPTIONS=detect_leaks=0"});
        EXPECT_EQ(outcome.status, 0) << closed << outcome.error;
        EXPECT_EQ(outcome.error, "") << closed;
        EXPECT_TRUE(Picture::loadPng(out).isOk()) << closed;
    }
}

TEST_F(program_gl_test, helpThatCannotBeWrittenIsAFault) {
    for (char const* const option : {"--help", "--version"}) {
        std::string const command = std::string(VL_VIEWPORT_PROGRAM) + " " + option + " > /dev/full";
        Outcome const outcome = runProgram("/bin/sh", {"-c", command}, {"ASAN_OPTIONS=detect_leaks=0"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.error, "vl_viewport: standard output: cannot be written\n");
    }
}

TEST_F(program_gl_test, quietSilencesNotesAndNotFaults) {
    std::string const object =
        folder.write("model.obj", "mtllib model.mtl\nusemtl one\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\n"
                                  "vt 1 0\nvt 0 1\nf 1/1 2/2 3/3\n");
    folder.write("model.mtl", "newmtl one\nmap_Kd missing.png\n");
    std::vector<std::string> words{object, "--out", folder.file("out.png"), "--size", "64x48"};
    EXPECT_THAT(run(words).error, HasSubstr("missing.png"));
    words.emplace_back("--quiet");
    Outcome const outcome = run(words);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "");
    expectFault(folder.write("broken.off", "OFF\n"), "", {"--quiet"});
}

// == Exit status 3 ==

TEST_F(program_gl_test, withoutOpenGLTheProgramSaysSo) {
    std::string const mesh = folder.write("cube.off", mesh_texts::cubeOff);
    Outcome const outcome =
        run({mesh, "--out", folder.file("out.png")},
            {"__EGL_VENDOR_LIBRARY_FILENAMES=/nonexistent", "DISPLAY=", "WAYLAND_DISPLAY="});
    EXPECT_EQ(outcome.status, 3) << outcome.error;
    EXPECT_THAT(outcome.error, StartsWith("vl_viewport: No OpenGL context: "));
    EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
    EXPECT_THAT(folder.names(), ElementsAre("cube.off"));
}
