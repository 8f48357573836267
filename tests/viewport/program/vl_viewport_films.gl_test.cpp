#include "tests/support/TemporaryFolder.h"
#include "tests/support/build_facts.h"
#include "tests/viewport/files/mesh/mesh_texts.h"
#include "tests/viewport/playback/moving_files.h"
#include "tests/viewport/program/program_runner.h"

#include <gmock/gmock.h>

/// Films: several pictures from one run, as the program is started from a shell.

using moving_files::dumpOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

namespace {

class program_films_gl_test : public testing::Test {
protected:
    Outcome run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--size", "64x48", "--no-config"});
        return runProgram(VL_VIEWPORT_PROGRAM, arguments,
                          isAddressSanitized() ? std::vector<std::string>{"ASAN_OPTIONS=detect_leaks=0"}
                                               : std::vector<std::string>());
    }

    std::string pattern() const { return folder.file("f_%02d.png"); }

    TemporaryFolder folder;
};

}  // namespace

TEST_F(program_films_gl_test, aFilmHasThePicturesOfItsFrames) {
    std::string const dump = folder.write("a.dump", dumpOf(4));
    std::vector<std::string> const look{"--range", "0,40",   "--size-of-particles",
                                        "0.5",     "--clip", "-1,5,-1,5,-1,5"};
    auto const with = [&look](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), look.begin(), look.end());
        return arguments;
    };
    Outcome const film = run(with({dump, "--frames", "::-2", "--out", pattern()}));
    EXPECT_EQ(film.status, 0) << film.error;
    EXPECT_EQ(film.error, "");
    EXPECT_THAT(folder.names(), UnorderedElementsAre("a.dump", "f_00.png", "f_01.png"));
    EXPECT_EQ(run(with({dump, "--frame", "3", "--out", folder.file("s.png")})).status, 0);
    EXPECT_TRUE(folder.read("s.png") == folder.read("f_00.png")) << "the first one is framed as it alone";
    // With a camera and a box that contains the particles nothing is left to be held.
    std::vector<std::string> const placed{"--camera-position", "9,-12,8", "--camera-focus", "1.5,1.5,1.5"};
    auto const seen = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), placed.begin(), placed.end());
        return with(arguments);
    };
    EXPECT_EQ(run(seen({dump, "--frames", "1:2", "--out", pattern()})).status, 0);
    EXPECT_EQ(run(seen({dump, "--frame", "2", "--out", folder.file("s.png")})).status, 0);
    EXPECT_TRUE(folder.read("s.png") == folder.read("f_01.png"));
    EXPECT_FALSE(folder.read("s.png") == folder.read("f_00.png"));
}

TEST_F(program_films_gl_test, theRangeOfTheFirstFrameIsHeldUnlessEachHasItsOwn) {
    std::string const dump = folder.write("a.dump", dumpOf(3));
    EXPECT_EQ(run({dump, "--frames", ":", "--out", pattern()}).status, 0);
    EXPECT_EQ(run({dump, "--frames", ":", "--range", "each", "--out", folder.file("e%d.png")}).status, 0);
    EXPECT_EQ(run({dump, "--frames", ":", "--range", "0,5", "--out", folder.file("r%d.png")}).status, 0);
    EXPECT_TRUE(folder.read("f_00.png") == folder.read("e0.png"));
    EXPECT_TRUE(folder.read("f_02.png") == folder.read("r2.png")) << "0 to 5 is the range of the first one";
    EXPECT_FALSE(folder.read("f_02.png") == folder.read("e2.png"));
}

TEST_F(program_films_gl_test, seriesAndAnimationsAreFilmsToo) {
    for (int const number : {1, 2, 10}) {
        folder.write("s." + std::to_string(number) + ".xyz", "1\n\nH " + std::to_string(number) + " 0 0\n");
    }
    Outcome const series = run({"--series", folder.file("s.1.xyz"), folder.file("s.10.xyz"),
                                folder.file("s.2.xyz"), "--frames", "1:", "--out", pattern()});
    EXPECT_EQ(series.status, 0) << series.error;
    EXPECT_NE(folder.read("f_01.png"), "");
    std::string const walk = folder.write("walk.gltf", moving_files::animatedGltf);
    Outcome const poses = run({walk, "--frames", ":", "--fps", "1", "--out", folder.file("w%d.png")});
    EXPECT_EQ(poses.status, 0) << poses.error;
    EXPECT_EQ(run({walk, "--time", "0", "--out", folder.file("s.png")}).status, 0);
    EXPECT_TRUE(folder.read("s.png") == folder.read("w0.png"));
    EXPECT_FALSE(folder.read("w0.png") == folder.read("w1.png"));
    EXPECT_NE(folder.read("w2.png"), "");
}

TEST_F(program_films_gl_test, aTurntableGoesRoundTheScene) {
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    Outcome const turn = run({cube, "--turntable", "4", "--info", "--out", pattern()});
    EXPECT_EQ(turn.status, 0) << turn.error;
    std::size_t const start = turn.output.find("--projection");
    std::istringstream words(turn.output.substr(start, turn.output.find('\n', start) - start));
    std::vector<std::string> told{cube, "--out", folder.file("s.png")};
    for (std::string word; words >> word;) {
        told.push_back(word);
    }
    EXPECT_EQ(run(told).status, 0);
    EXPECT_TRUE(folder.read("s.png") == folder.read("f_00.png"))
        << "the camera that is told is the first one";
    EXPECT_FALSE(folder.read("f_00.png") == folder.read("f_01.png"));
    EXPECT_NE(folder.read("f_03.png"), "");
    std::string const dump = folder.write("a.dump", dumpOf(3));
    EXPECT_EQ(run({dump, "--frames", ":", "--turntable", "3", "--out", folder.file("b%d.png")}).status, 0);
    Outcome const uneven = run({dump, "--frames", ":", "--turntable", "4", "--out", folder.file("c%d.png")});
    EXPECT_EQ(uneven.status, 2);
    EXPECT_THAT(uneven.error, HasSubstr("--turntable: 4 pictures of a turn do not suit 3 frames"));
}

TEST_F(program_films_gl_test, faultsComeBeforeAnythingIsDrawnOrNameThePicture) {
    std::string const dump = folder.write("a.dump", dumpOf(3));
    Outcome const absent = run({dump, "--frames", "0:3", "--out", pattern()});
    EXPECT_EQ(absent.status, 1);
    EXPECT_THAT(absent.error, HasSubstr("a.dump: has no frame 3; its last one is 2"));
    // The picture after the next one would replace the file that is read.
    std::string const third = folder.write("in_2.png", dumpOf(3));
    Outcome const input = run({third, "--frames", ":", "--out", folder.file("in_%d.png")});
    EXPECT_EQ(input.status, 2);
    EXPECT_THAT(input.error, HasSubstr("in_2.png is one of the files that are read"));
    Outcome const twice =
        run({dump, "--frames", ":", "--out", folder.file("a%d.png"), "--out", folder.file("a%01d.png")});
    EXPECT_EQ(twice.status, 2);
    EXPECT_THAT(twice.error, HasSubstr("a0.png is the name of two pictures"));
    EXPECT_THAT(folder.names(), UnorderedElementsAre("a.dump", "in_2.png"));
    Outcome const nowhere = run({dump, "--frames", ":", "--out", folder.file("no/f%d.png")});
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_THAT(nowhere.error, HasSubstr("no/f0.png: cannot be"));
    std::string damaged = dumpOf(3);
    damaged.replace(damaged.rfind("\n1 2"), 4, "\n1 x");
    Outcome const damage = run({folder.write("bad.dump", damaged), "--frames", ":", "--out", pattern()});
    EXPECT_EQ(damage.status, 1);
    EXPECT_THAT(damage.error, HasSubstr("bad.dump: line"));
    EXPECT_NE(folder.read("f_01.png"), "") << "the pictures before it are kept";
}
