#include "tests/support/TemporaryFolder.h"
#include "tests/support/build_facts.h"
#include "tests/viewport/files/mesh/mesh_texts.h"
#include "tests/viewport/program/program_runner.h"
#include "viewport/files/images/Picture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

/// Pictures that the program makes: their formats, cameras and looks, as it is started from a shell.

using testing::ElementsAre;
using testing::HasSubstr;
using vellum::viewport::Picture;
using vellum::viewport::Result;

namespace {

class program_pictures_gl_test : public testing::Test {
protected:
    void SetUp() override { cube = folder.write("cube.off", mesh_texts::cubeOff); }

    Outcome run(std::vector<std::string> arguments, std::vector<std::string> environment = {}) const {
        if (isAddressSanitized()) {
            environment.push_back("ASAN_OPTIONS=detect_leaks=0");
        }
        arguments.insert(arguments.end(), {"--size", "64x48", "--no-config"});
        return runProgram(VL_VIEWPORT_PROGRAM, arguments, environment);
    }

    /// The picture that these options give of the cube.
    Picture draw(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {cube, "--out", folder.file("out.png")});
        Outcome const outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        Result<Picture> const picture = Picture::loadPng(folder.file("out.png"));
        EXPECT_TRUE(picture.isOk());
        return picture.isOk() ? picture.value() : Picture{};
    }

    TemporaryFolder folder;
    std::string cube;
};

std::array<int, 4> at(Picture const& picture, int x, int y) {
    unsigned char const* const pixel = picture.pixels.data() + 4 * (y * picture.width + x);
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

/// The words of the line with this label in the output of --info.
std::vector<std::string> wordsOf(std::string const& output, std::string const& label) {
    std::size_t const start = output.find("  " + label + ":");
    std::istringstream line(output.substr(start, output.find('\n', start) - start));
    std::vector<std::string> words;
    std::string word;
    line >> word;
    while (line >> word) {
        words.push_back(word);
    }
    return words;
}

}  // namespace

// == Formats ==

TEST_F(program_pictures_gl_test, theNameSaysTheFormat) {
    Outcome const outcome = run({cube, "--out", folder.file("a.jpg"), "--out", folder.file("b.exr"), "--out",
                                 folder.file("c.PNG"), "--out", folder.file("d.jpeg"), "--quality", "5"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    EXPECT_THAT(folder.read("a.jpg"), testing::StartsWith("\xFF\xD8\xFF"));
    EXPECT_THAT(folder.read("b.exr"), testing::StartsWith("\x76\x2F\x31\x01"));
    EXPECT_THAT(folder.read("b.exr"), HasSubstr("depth.Z"));
    EXPECT_THAT(folder.read("c.PNG"), testing::StartsWith("\x89PNG"));
    EXPECT_LT(folder.read("d.jpeg").size(), folder.read("a.jpg").size());
}

TEST_F(program_pictures_gl_test, unknownFormatsAreRefusedBeforeAnythingIsRead) {
    for (char const* const name : {"a.bmp", "a", "a.png.bak"}) {
        Outcome const outcome = run({folder.file("gone.off"), "--out", folder.file(name)});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.error, HasSubstr("known: .png, .jpg, .jpeg, .exr"));
    }
    Outcome const outcome = run({cube, "--out", folder.file("a.jpg"), "--background", "transparent"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.error, HasSubstr("--background"));
    EXPECT_THAT(folder.names(), ElementsAre("cube.off"));
}

TEST_F(program_pictures_gl_test, standardOutputTakesAPictureAndNothingElse) {
    Picture const expected = draw({});
    for (char const* const name : {"-", "/dev/stdout"}) {
        Outcome const outcome = run({cube, "--out", name});
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        Result<Picture> const picture = Picture::loadPng(folder.write("copy.png", outcome.output));
        ASSERT_TRUE(picture.isOk());
        EXPECT_TRUE(picture.value().pixels == expected.pixels);
    }
    std::string const command =
        std::string(VL_VIEWPORT_PROGRAM) + " " + cube + " --size 8x8 --out - > /dev/full";
    Outcome const full = runProgram("/bin/sh", {"-c", command}, {"ASAN_OPTIONS=detect_leaks=0"});
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.error, "vl_viewport: -: cannot be written: No space left on device\n");
}

TEST_F(program_pictures_gl_test, aMaterialFileIsNotReplaced) {
    std::string const object = folder.write("a.obj", "mtllib a.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    std::string const material = folder.write("a.mtl", "newmtl x\n");
    Outcome const outcome = run({object, "--out", material});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.error, HasSubstr("is one of the files that are read"));
    EXPECT_EQ(folder.read("a.mtl"), "newmtl x\n");
}

// == Cameras ==

TEST_F(program_pictures_gl_test, theCameraThatIsToldGivesTheSamePicture) {
    std::vector<std::vector<std::string>> const cameras{
        {},
        {"--azimuth", "200", "--elevation", "-35", "--zoom", "1.3"},
        {"--projection", "parallel", "--azimuth", "10"},
        {"--projection", "parallel", "--camera-focus", "1,1,1", "--zoom", "3"},
        {"--camera-focus", "1,0.5,0.25", "--fov", "70"},
        {"--camera-position", "5,3.3,-2", "--camera-up", "1,0,0"},
        {"--camera-up", "0.3,0,1"},
        {"--view", "left", "--zoom", "0.7"}};
    auto const nameOf = [](char const* kind, std::size_t i) { return kind + std::to_string(i) + ".png"; };
    // A size that is given before all pictures is that of all.
    std::vector<std::string> asked{cube, "--size", "64x48", "--info"};
    for (std::size_t i = 0; i < cameras.size(); ++i) {
        asked.insert(asked.end(), {"--out", folder.file(nameOf("asked", i))});
        asked.insert(asked.end(), cameras[i].begin(), cameras[i].end());
    }
    Outcome const first = run(asked);
    ASSERT_EQ(first.status, 0) << first.error;
    std::vector<std::string> again{cube, "--size", "64x48"};
    std::string rest = first.output;
    for (std::size_t i = 0; i < cameras.size(); ++i) {
        std::size_t const start = rest.find("  camera:");
        ASSERT_NE(start, std::string::npos);
        rest.erase(0, start);
        std::vector<std::string> const told = wordsOf(rest, "camera");
        rest.erase(0, 1 + rest.find('\n'));
        again.insert(again.end(), {"--out", folder.file(nameOf("told", i))});
        again.insert(again.end(), told.begin(), told.end());
    }
    Outcome const second = run(again);
    ASSERT_EQ(second.status, 0) << second.error;
    for (std::size_t i = 0; i < cameras.size(); ++i) {
        EXPECT_TRUE(folder.read(nameOf("told", i)) == folder.read(nameOf("asked", i)))
            << testing::PrintToString(cameras[i]);
    }
    EXPECT_NE(folder.read(nameOf("asked", 0)), folder.read(nameOf("asked", 1)));
}

TEST_F(program_pictures_gl_test, aCameraThatDoesNotSuitTheSceneIsAUsageError) {
    // The middle of the cube, which is what would be looked at.
    Outcome const first = run({cube, "--info", "--view", "top"});
    ASSERT_EQ(first.status, 0);
    Outcome const outcome = run({cube, "--out", folder.file("out.png"), "--azimuth", "0", "--elevation", "0",
                                 "--camera-up", "0,1,0"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.error, HasSubstr("--camera-up: is the direction of view"));
    EXPECT_THAT(folder.names(), ElementsAre("cube.off"));
}

TEST_F(program_pictures_gl_test, picturesOfOneRunAreThoseOfSeveral) {
    draw({"--view", "top"});
    std::string const top = folder.read("out.png");
    draw({"--no-grid", "--shading", "faceted"});
    std::string const plain = folder.read("out.png");
    Outcome const outcome = run({cube, "--shading", "faceted", "--out", folder.file("big.png"), "--size",
                                 "90x80", "--out", folder.file("plain.png"), "--no-grid"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    // The size that the runner adds belongs to the last one.
    EXPECT_TRUE(folder.read("plain.png") == plain);
    EXPECT_EQ(Picture::loadPng(folder.file("big.png")).value().width, 90);
    EXPECT_NE(top, plain);
}

// == Looks ==

TEST_F(program_pictures_gl_test, theBackgroundIsWhatIsAskedFor) {
    EXPECT_THAT(at(draw({"--background", "ff8000", "--no-grid", "--no-axes"}), 0, 0),
                ElementsAre(255, 128, 0, 255));
    Picture const blended = draw({"--background", "ff0000,0000ff", "--no-grid", "--no-axes"});
    EXPECT_GT(at(blended, 0, 0)[0], 240);
    EXPECT_GT(at(blended, 0, 47)[2], 240);
}

TEST_F(program_pictures_gl_test, aTransparentPictureIsOpaqueWhereTheModelIs) {
    Picture const opaque = draw({"--no-grid", "--no-axes", "--background", "000000"});
    Picture const picture = draw({"--no-grid", "--no-axes", "--background", "transparent"});
    EXPECT_THAT(at(picture, 0, 0), ElementsAre(0, 0, 0, 0));
    EXPECT_EQ(at(picture, 32, 24)[3], 255);
    EXPECT_EQ(at(picture, 32, 24), at(opaque, 32, 24));
    int partly = 0;
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4) {
        partly += picture.pixels[i] > 0 && picture.pixels[i] < 255 ? 1 : 0;
    }
    EXPECT_GT(partly, 20) << "rims are soft";
}

TEST_F(program_pictures_gl_test, gridAndAxesCanBeLeftOut) {
    std::vector<std::string> const black{"--background", "000000", "--zoom", "0.5"};
    auto const litPixels = [&](std::vector<std::string> more) {
        more.insert(more.end(), black.begin(), black.end());
        Picture const picture = draw(more);
        int count = 0;
        for (std::size_t i = 0; i < picture.pixels.size(); i += 4) {
            count += picture.pixels[i] + picture.pixels[i + 1] + picture.pixels[i + 2] > 12 ? 1 : 0;
        }
        return count;
    };
    int const all = litPixels({});
    int const withoutAxes = litPixels({"--no-axes"});
    int const nothing = litPixels({"--no-axes", "--no-grid"});
    EXPECT_GT(all, withoutAxes);
    EXPECT_GT(withoutAxes, nothing + 100);
    EXPECT_GT(nothing, 100) << "the cube itself";
}

TEST_F(program_pictures_gl_test, clippedModelsEndAtTheBox) {
    std::vector<std::string> const words{"--no-grid", "--no-axes", "--background",
                                         "000000",    "--view",    "front"};
    std::vector<std::string> clipped = words;
    // The left half, which then fills what is framed no more: views along an axis frame the whole scene.
    clipped.insert(clipped.end(), {"--clip", "-100,0,-100,100,-100,100"});
    Picture const whole = draw(words);
    Picture const half = draw(clipped);
    EXPECT_GT(at(whole, 20, 24)[0], 20);
    EXPECT_GT(at(whole, 44, 24)[0], 20);
    EXPECT_GT(at(half, 20, 24)[0], 20);
    EXPECT_EQ(at(half, 44, 24)[0], 0);
    std::vector<std::string> pick = clipped;
    pick.insert(pick.begin(), {cube, "--pick", "44,24"});
    EXPECT_EQ(run(pick).output, "nothing\n");
}

TEST_F(program_pictures_gl_test, colorAndOpacityReachTheModel) {
    std::vector<std::string> words{"--no-grid", "--no-axes",    "--background",
                                   "0000ff",    "--mesh-color", "ff0000"};
    std::array<int, 4> const solid = at(draw(words), 32, 24);
    EXPECT_GT(solid[0], 60);
    EXPECT_LT(solid[2], 30);
    words.insert(words.end(), {"--opacity", "0.5"});
    std::array<int, 4> const clear = at(draw(words), 32, 24);
    EXPECT_GT(clear[2], 60);
    EXPECT_GT(clear[0], 30);
    words.insert(words.end(), {"--background", "transparent"});
    words.erase(words.begin() + 2, words.begin() + 4);
    EXPECT_LT(at(draw(words), 32, 24)[3], 220);
}

TEST_F(program_pictures_gl_test, theLightComesFromWhereItIsAskedFor) {
    std::vector<std::string> const words{"--no-grid", "--no-axes", "--azimuth", "45", "--elevation", "20"};
    auto const brightnesses = [&](char const* light) {
        std::vector<std::string> all = words;
        all.insert(all.end(), {"--light", light});
        Picture const picture = draw(all);
        return std::pair<int, int>{at(picture, 24, 28)[1], at(picture, 40, 28)[1]};
    };
    auto const [frontLit, sideDark] = brightnesses("0,0");
    auto const [frontDark, sideLit] = brightnesses("90,0");
    EXPECT_GT(frontLit, frontDark + 40);
    EXPECT_GT(sideLit, sideDark + 40);
}

// == Without effect ==

TEST_F(program_pictures_gl_test, optionsWithoutEffectAreSaidUnlessItIsQuiet) {
    std::vector<std::string> words{cube, "--out", folder.file("out.png"), "--percent", "50"};
    Outcome const outcome = run(words);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "vl_viewport: --percent has no effect: there are no particles\n");
    words.emplace_back("--quiet");
    EXPECT_EQ(run(words).error, "");
}

// == Without OpenGL ==

TEST_F(program_pictures_gl_test, filesAreToldWithoutOpenGL) {
    std::vector<std::string> const noDriver{"__EGL_VENDOR_LIBRARY_FILENAMES=/nonexistent",
                                            "DISPLAY=", "WAYLAND_DISPLAY="};
    Outcome const text = run({cube, "--info"}, noDriver);
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.error, "");
    EXPECT_THAT(text.output, HasSubstr("triangles:                      12\n"));
    EXPECT_THAT(text.output, HasSubstr("--camera-position "));
    EXPECT_THAT(text.output, HasSubstr("OpenGL is not to be had: No OpenGL context: "));
    Outcome const json = run({cube, "--info=json"}, noDriver);
    EXPECT_EQ(json.status, 0);
    EXPECT_THAT(json.output, HasSubstr("\"driver\": null"));
    EXPECT_EQ(run({cube, "--info", "--pick", "1,1"}, noDriver).status, 3);
}

// == The sea ==

TEST_F(program_pictures_gl_test, aViewerUnderWaterIsAUsageError) {
    std::vector<std::string> const sea{"--effect",       "ocean",   "--effect-param", "wind=30",
                                       "--effect-param", "size=32", "--effect-param", "patch=50"};
    int refused = 0;
    for (char const* const time : {"0", "1", "2", "3", "4", "5"}) {
        std::vector<std::string> words = sea;
        words.insert(words.end(),
                     {"--effect-param", std::string("time=") + time, "--effect-param", "eye=0.5", "--info"});
        Outcome const outcome = run(words);
        if (outcome.status == 2) {
            EXPECT_THAT(outcome.error, HasSubstr("the viewer is under water"));
            ++refused;
        } else {
            EXPECT_EQ(outcome.status, 0) << outcome.error;
        }
    }
    EXPECT_GT(refused, 0) << "crests pass by";
    EXPECT_LT(refused, 6) << "and troughs";
    std::vector<std::string> words = sea;
    words.insert(words.end(), {"--effect-param", "eye=30", "--info"});
    EXPECT_EQ(run(words).status, 0);
}
