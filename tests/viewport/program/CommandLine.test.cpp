#include "viewport/program/CommandLine.h"

#include "viewport/program/transform_words.h"

#include <gmock/gmock.h>

using vellum::Color4;
using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

CommandLine parse(std::vector<char const*> arguments) {
    arguments.insert(arguments.begin(), "vl_viewport");
    return parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

Options optionsOf(std::vector<char const*> const& arguments) {
    CommandLine const line = parse(arguments);
    EXPECT_TRUE(line.options.has_value()) << line.error;
    EXPECT_EQ(line.exitStatus, 0);
    return line.options.value_or(Options{});
}

/// The message of a usage error. Fails when there is none, or not one line.
std::string errorOf(std::vector<char const*> const& arguments) {
    CommandLine const line = parse(arguments);
    EXPECT_FALSE(line.options.has_value());
    EXPECT_EQ(line.exitStatus, 2);
    EXPECT_EQ(line.output, "");
    EXPECT_THAT(line.error, testing::StartsWith("vl_viewport: "));
    EXPECT_EQ(line.error.find('\n'), std::string::npos);
    return line.error;
}

}  // namespace

TEST(CommandLine, theShortestCommandLineTakesTheDefaults) {
    Options const options = optionsOf({"a.obj", "--out", "a.png"});
    EXPECT_EQ(options.files, std::vector<std::string>{"a.obj"});
    EXPECT_EQ(options.pictures[0].out, "a.png");
    EXPECT_EQ(options.pictures[0].size.width, 1280);
    EXPECT_EQ(options.pictures[0].size.height, 720);
    EXPECT_EQ(options.mesh.shading, Shading::SMOOTH);
    EXPECT_EQ(options.pictures[0].gizmo, Gizmo::NONE);
    EXPECT_EQ(options.pictures[0].camera.view, vellum::toolkit::ViewKind::PERSPECTIVE);
    EXPECT_FALSE(options.pictures[0].pick.has_value());
    EXPECT_EQ(options.info, InfoForm::NONE);
    EXPECT_EQ(options.limits.deadline.count(), 20'000);
    EXPECT_EQ(options.limits.memoryBytes, 4096ULL << 20);
}

TEST(CommandLine, everyOptionIsRead) {
    Options const options = optionsOf({"a.obj", "--size", "640x480", "b.ply", "--shading", "box", "--gizmo",
                                       "rotate", "--view", "left", "--pick", "639,0", "--info",
                                       "--import-timeout", "0.25", "--import-memory", "512", "--out=x"});
    EXPECT_EQ(options.files, (std::vector<std::string>{"a.obj", "b.ply"}));
    EXPECT_EQ(options.pictures[0].size.width, 640);
    EXPECT_EQ(options.pictures[0].size.height, 480);
    EXPECT_EQ(options.mesh.shading, Shading::BOX);
    EXPECT_EQ(options.pictures[0].gizmo, Gizmo::ROTATE);
    EXPECT_EQ(options.pictures[0].camera.view, vellum::toolkit::ViewKind::LEFT);
    EXPECT_EQ(options.pictures[0].pick->x, 639);
    EXPECT_EQ(options.pictures[0].pick->y, 0);
    EXPECT_EQ(options.info, InfoForm::TEXT);
    EXPECT_EQ(options.limits.deadline.count(), 250);
    EXPECT_EQ(options.limits.memoryBytes, 512ULL << 20);
    EXPECT_EQ(options.pictures[0].out, "x");
}

TEST(CommandLine, everyModeIsKnown) {
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--shading", "wireframe"}).mesh.shading, Shading::WIREFRAME);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--shading", "faceted"}).mesh.shading, Shading::FACETED);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--shading", "smooth"}).mesh.shading, Shading::SMOOTH);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--gizmo", "move"}).pictures[0].gizmo, Gizmo::MOVE);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--gizmo", "scale"}).pictures[0].gizmo, Gizmo::SCALE);
    char const* const names[] = {"perspective", "front", "back", "top", "bottom", "left", "right"};
    for (unsigned int kind = 0; kind < 7; ++kind) {
        EXPECT_EQ(optionsOf({"a", "--out", "b", "--view", names[kind]}).pictures[0].camera.view,
                  static_cast<vellum::toolkit::ViewKind>(kind));
    }
}

TEST(CommandLine, theWaysToShowAMeshAreRead) {
    Options const plain = optionsOf({"a", "--out", "b"});
    EXPECT_FALSE(plain.mesh.edges || plain.mesh.edgesBlend || plain.mesh.connectivity ||
                 plain.mesh.wireframeBack || plain.mesh.importPreview || plain.mesh.immediate);
    EXPECT_EQ(plain.mesh.normals, Normals::NONE);
    EXPECT_EQ(plain.texture, "");
    EXPECT_TRUE(optionsOf({"a", "--out", "b", "--edges"}).mesh.edges);
    EXPECT_TRUE(optionsOf({"a", "--out", "b", "--edges-blend"}).mesh.edgesBlend);
    EXPECT_TRUE(optionsOf({"a", "--out", "b", "--connectivity"}).mesh.connectivity);
    EXPECT_TRUE(optionsOf({"a", "--out", "b", "--wireframe-back"}).mesh.wireframeBack);
    EXPECT_TRUE(optionsOf({"a", "--out", "b", "--import-preview"}).mesh.importPreview);
    EXPECT_TRUE(optionsOf({"a", "--out", "b", "--immediate"}).mesh.immediate);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--normals", "vertex"}).mesh.normals, Normals::VERTEX);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--normals", "face"}).mesh.normals, Normals::FACE);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--texture", "c.png"}).texture, "c.png");
    EXPECT_THAT(errorOf({"a", "--out", "b", "--normals", "edge"}), HasSubstr("face, vertex"));
    EXPECT_THAT(errorOf({"a", "--out", "b", "--texture", ""}), HasSubstr("--texture"));
    EXPECT_THAT(errorOf({"a", "--out", "b", "--edges", "--edges-blend"}), HasSubstr("--edges-blend"));
}

TEST(CommandLine, theLargestAndSmallestPicturesAreTaken) {
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--size", "16384x1"}).pictures[0].size.width, 16384);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--size", "1x16384"}).pictures[0].size.height, 16384);
}

TEST(CommandLine, sizesThatMakeNoPictureAreUsageErrors) {
    for (char const* const size : {"0x0",
                                   "0x10",
                                   "10x0",
                                   "16385x10",
                                   "10x16385",
                                   "10",
                                   "x",
                                   "10x",
                                   "x10",
                                   "-5x10",
                                   "10x-5",
                                   "1e2x10",
                                   "10x10x10",
                                   "10 x 10",
                                   "+10x10",
                                   " 10x10",
                                   "10x10 ",
                                   "10X10",
                                   "99999999999999999999x10",
                                   "axb",
                                   ""}) {
        EXPECT_THAT(errorOf({"a", "--out", "b", "--size", size}), HasSubstr("--size")) << size;
    }
}

TEST(CommandLine, picksOutsideThePictureAreUsageErrors) {
    for (char const* const pick : {"100,0", "0,50", "-1,0", "0,-1", "5", "5,", ",5", "5,5,5", "a,b", ""}) {
        EXPECT_THAT(errorOf({"a", "--size", "100x50", "--pick", pick}), HasSubstr("--pick")) << pick;
    }
    EXPECT_EQ(optionsOf({"a", "--pick", "99,49", "--size", "100x50"}).pictures[0].pick->x, 99);
}

TEST(CommandLine, unknownModesAreUsageErrors) {
    EXPECT_THAT(errorOf({"a", "--out", "b", "--shading", "shiny"}), HasSubstr("shiny"));
    EXPECT_THAT(errorOf({"a", "--out", "b", "--shading", "shiny"}), HasSubstr("wireframe"));
    EXPECT_THAT(errorOf({"a", "--out", "b", "--gizmo", "bend"}), HasSubstr("--gizmo"));
    EXPECT_THAT(errorOf({"a", "--out", "b", "--view", "Front"}), HasSubstr("--view"));
    EXPECT_THAT(errorOf({"a", "--out", "b", "--shading", ""}), HasSubstr("--shading"));
}

TEST(CommandLine, unknownAndIncompleteOptionsAreUsageErrors) {
    EXPECT_THAT(errorOf({"a", "--out", "b", "--teapot"}), HasSubstr("--teapot"));
    EXPECT_THAT(errorOf({"a", "--out"}), HasSubstr("--out"));
    EXPECT_THAT(errorOf({"a", "--out", ""}), HasSubstr("--out"));
    EXPECT_THAT(errorOf({"a", "--out", "b", "--out", "b"}), HasSubstr("--out"));
    EXPECT_THAT(errorOf({"a", "--out", "b", "--shading", "box", "--shading", "box"}), HasSubstr("--shading"));
    errorOf({"--out", "b"});
    errorOf({"", "--out", "b"});
}

TEST(CommandLine, aWindowIsOpenedWhereNothingElseIsAskedFor) {
    EXPECT_TRUE(optionsOf({"a.obj"}).opensWindow());
    EXPECT_TRUE(optionsOf({}).opensWindow()) << "files can be dropped onto it";
    EXPECT_FALSE(optionsOf({"a.obj", "--out", "b.png"}).opensWindow());
    EXPECT_FALSE(optionsOf({"a.obj", "--info"}).opensWindow());
    EXPECT_FALSE(optionsOf({"a.obj", "--pick", "0,0"}).opensWindow());
    EXPECT_TRUE(optionsOf({"a.obj", "--info"}).pictures[0].out.empty());
    EXPECT_TRUE(optionsOf({"a.obj", "--pick", "0,0"}).pictures[0].out.empty());
}

TEST(CommandLine, limitsMustBeSensible) {
    for (char const* const seconds : {"0", "-1", "nan", "inf", "1e9", "5s", ""}) {
        EXPECT_THAT(errorOf({"a", "--out", "b", "--import-timeout", seconds}), HasSubstr("--import-timeout"))
            << seconds;
    }
    for (char const* const megabytes : {"0", "-1", "1.5", "99999999", "1G", ""}) {
        EXPECT_THAT(errorOf({"a", "--out", "b", "--import-memory", megabytes}), HasSubstr("--import-memory"))
            << megabytes;
    }
}

TEST(CommandLine, helpAndVersionAreShown) {
    CommandLine const help = parse({"--help"});
    EXPECT_FALSE(help.options.has_value());
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_EQ(help.error, "");
    for (char const* const option :
         {"--out", "--size", "--shading", "--gizmo", "--pick", "--view", "--info", "--import-timeout",
          "--import-memory", "--version", "--edges", "--edges-blend", "--normals", "--connectivity",
          "--texture", "--wireframe-back", "--import-preview", "--immediate"}) {
        EXPECT_THAT(help.output, HasSubstr(option));
    }
    CommandLine const version = parse({"--version"});
    EXPECT_EQ(version.exitStatus, 0);
    EXPECT_THAT(version.output, testing::MatchesRegex("vl_viewport [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

// == Particles ==

TEST(CommandLine, particlesHaveDefaults) {
    Options const options = optionsOf({"a", "--out", "b"});
    EXPECT_FALSE(options.particles.mode.has_value());
    EXPECT_EQ(options.particles.channel, "");
    EXPECT_EQ(options.particles.percent, 100);
    EXPECT_FALSE(options.particles.size.has_value());
    EXPECT_FALSE(options.particles.range.has_value());
    EXPECT_FALSE(options.particles.frame.has_value());
    EXPECT_FALSE(options.gpuMemory.has_value());
}

TEST(CommandLine, theWaysToShowParticlesAreRead) {
    Options const options =
        optionsOf({"a", "--out", "b", "--particles", "arrows", "--channel", "c_pe", "--percent", "33.3",
                   "--size-of-particles", "0.5", "--range", "-1,2.5e3", "--colors", "#ff0000,00FF80",
                   "--frame", "4", "--gpu-memory", "512"});
    EXPECT_EQ(options.particles.mode, ParticleMode::ARROWS);
    EXPECT_EQ(options.particles.channel, "c_pe");
    EXPECT_EQ(options.particles.percent, 33.3F);
    EXPECT_EQ(options.particles.size, 0.5);
    EXPECT_EQ(options.particles.range->low, -1);
    EXPECT_EQ(options.particles.range->high, 2500);
    EXPECT_TRUE(options.particles.colors.low == (Color4<float>{1, 0, 0, 1}));
    EXPECT_TRUE(options.particles.colors.high == (Color4<float>{0, 1, 128 / 255.0F, 1}));
    EXPECT_TRUE(options.particles.colors.above == RampColors{}.above) << "as it was";
    EXPECT_EQ(options.particles.frame, 4U);
    EXPECT_EQ(options.gpuMemory, 512U);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--particles", "points"}).particles.mode, ParticleMode::POINTS);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--particles", "spheres"}).particles.mode, ParticleMode::SPHERES);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--percent", "0"}).particles.percent, 0);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--frame", "0"}).particles.frame, 0U);
    EXPECT_EQ(optionsOf({"a", "--out", "b", "--gpu-memory", "0"}).gpuMemory, 0U);
    EXPECT_TRUE(optionsOf({"a", "--out", "b", "--colors", "000000,000000,ff0000"}).particles.colors.above ==
                (Color4<float>{1, 0, 0, 1}));
}

TEST(CommandLine, particleOptionsThatMakeNoSenseAreUsageErrors) {
    struct Row {
        char const* option;
        std::vector<char const*> words;
    };
    for (Row const& row :
         {Row{"--particles", {"", "cubes", "Points"}}, Row{"--channel", {""}},
          Row{"--percent", {"", "-1", "100.01", "nan", "inf", "10%", " 10", "many"}},
          Row{"--size-of-particles", {"", "0", "-1", "nan", "inf", "1px"}},
          Row{"--range", {"", "1", "1,", ",1", "2,1", "1,1", "1,2,3", "nan,1", "0,inf", "a,b", "0, 1"}},
          Row{"--colors",
              {"", "red,blue", "ff0000", "ff0000,00ff0", "ff0000,00ff000", "ff0000,,00ff00", "-f0000,00ff00",
               "ff0000,00ff00,0000ff,ffffff", "0xff00,00ff00"}},
          Row{"--frame", {"", "-1", "last", "1.5", "99999999999"}},
          Row{"--gpu-memory", {"", "-1", "1048577", "1GB", "99999999999"}}}) {
        for (char const* const word : row.words) {
            EXPECT_THAT(errorOf({"a", "--out", "b", row.option, word}), HasSubstr(row.option)) << word;
        }
    }
}

TEST(CommandLine, helpSaysHowParticlesAreShown) {
    std::string const help = parse({"--help"}).output;
    for (char const* const option : {"--particles", "--channel", "--percent", "--size-of-particles",
                                     "--range", "--colors", "--frame", "--gpu-memory", "RRGGBB"}) {
        EXPECT_THAT(help, HasSubstr(option));
    }
}

TEST(CommandLine, formatsAndSelectionsAreUnderstoodBeforeAnythingIsRead) {
    EXPECT_EQ(optionsOf({"a", "--out", "b.png", "--format", "xyz"}).format, "xyz");
    EXPECT_THAT(errorOf({"a", "--out", "b.png", "--format", "foo"}),
                HasSubstr("--format: unknown format 'foo' (known: lammps-dump, "));
    EXPECT_EQ(optionsOf({"a", "--out", "b.png", "--select", "z > 0"}).particles.selection, "z > 0");
    EXPECT_THAT(errorOf({"a", "--out", "b.png", "--select", "z >"}),
                HasSubstr("--select: the selection 'z >'"));
    EXPECT_THAT(errorOf({"-", "/dev/stdin", "--info"}), HasSubstr("standard input can be read only once"));
    EXPECT_TRUE(optionsOf({"a1", "a2", "--info", "--series"}).isSeries);
}

TEST(transform_words, objectsAreCountedFromOneAndAnglesAndScalesMayBeLeftOut) {
    GivenTransforms const given =
        optionsOf({"a", "--out", "b", "--transform", "2:1,-2,3.5", "--transform", "1:0,0,0:0,0,90:2,-1,0.5"})
            .transforms;
    ASSERT_EQ(given.size(), 2U);
    EXPECT_EQ(given.at(1).translation.z, 3.5);
    EXPECT_EQ(given.at(1).rotation, vellum::viewport::Rotation());
    EXPECT_EQ(given.at(1).scale.x, 1);
    EXPECT_NEAR(given.at(0).rotation.toDegrees().z, 90, 1e-12);
    EXPECT_EQ(given.at(0).scale.y, -1);
}

TEST(transform_words, aWordOfAnotherFormIsAFault) {
    for (char const* const word : {"1", "0:1,2,3", "x:1,2,3", "1:1,2", "1:1,2,3:4", "1:1,2,3:0,0,0:1,1,1:1",
                                   "1:1,2,nan", "1:1,2,3:0,0,0:1,0,1", ":1,2,3", "1:1,2,3:"}) {
        EXPECT_THAT(errorOf({"a", "--out", "b", "--transform", word}),
                    HasSubstr(std::string("--transform: '") + word + "' is not"));
    }
    EXPECT_THAT(errorOf({"a", "--out", "b", "--transform", "1:1,2,3", "--transform", "1:1,2,3"}),
                HasSubstr("--transform: object 1 is given twice"));
}

TEST(transform_words, theWordOfATransformGivesItAgain) {
    ObjectTransform transform;
    transform.translation = {0.1, -1e-7, 3e20};
    transform.rotation = vellum::viewport::Rotation::ofDegrees({10, 20, -30});
    transform.scale = {1, -2, 0.3};
    GivenTransforms given;
    ASSERT_FALSE(readTransform(transformWord(4, transform), given));
    ObjectTransform const again = given.at(4);
    EXPECT_EQ(again.translation.x, transform.translation.x);
    EXPECT_EQ(again.translation.z, transform.translation.z);
    EXPECT_EQ(again.scale.z, transform.scale.z);
    EXPECT_NEAR(again.rotation.x, transform.rotation.x, 1e-14);
    EXPECT_NEAR(again.rotation.w, transform.rotation.w, 1e-14);
}

// == Films ==

TEST(CommandLine, filmsAreRead) {
    Options const frames = optionsOf(
        {"a.dump", "--frames", "2:10:4", "--fps", "12.5", "--range", "each", "--out", "f_%04d.png"});
    EXPECT_EQ(frames.film.frames->first, 2U);
    EXPECT_EQ(frames.film.frames->last, 10U);
    EXPECT_EQ(frames.film.frames->step, 4);
    EXPECT_EQ(frames.film.framesPerSecond, 12.5);
    EXPECT_TRUE(frames.film.isRangeOfEach);
    EXPECT_EQ(frames.pictures[0].names->of(3), "f_0003.png");
    EXPECT_FALSE(frames.particles.range);
    EXPECT_FALSE(frames.opensWindow());
    Options const turn = optionsOf({"a.obj", "--turntable", "36", "--out", "a%d.png", "--out", "b%d.png"});
    EXPECT_EQ(turn.film.turn, 36U);
    EXPECT_EQ(turn.pictures[1].names->of(0), "b0.png");
    EXPECT_FALSE(turn.film.frames);
    EXPECT_FALSE(
        optionsOf({"a.dump", "--frames", "::-1", "--range", "first", "--out", "%d.png"}).film.isRangeOfEach);
    EXPECT_FALSE(optionsOf({"a.dump", "--out", "100%.png"}).pictures[0].names) << "no film, any name";
}

TEST(CommandLine, filmsThatMakeNoSenseAreUsageErrors) {
    struct Row {
        std::vector<char const*> arguments;
        char const* message;
    };
    for (Row const& row : {Row{{"--frames", "1-2", "--out", "%d.png"}, "--frames: '1-2' is not A:B:STEP"},
                           Row{{"--frames", "3:1", "--out", "%d.png"}, "--frames: '3:1' is not"},
                           Row{{"--frames", ":", "--out", "a.png"}, "--out: 'a.png' has no %d"},
                           Row{{"--frames", ":", "--out", "-"}, "has no %d"},
                           Row{{"--frames", ":", "--out", "%s.png"}, "percent sign"},
                           Row{{"--frames", ":", "--out", "%d.png", "--out", "b.png"}, "'b.png' has no %d"},
                           Row{{"--frames", ":", "--info"}, "needs --out"},
                           Row{{"--frames", ":", "--frame", "1", "--out", "%d.png"}, "--frame: cannot"},
                           Row{{"--frames", ":", "--time", "1", "--out", "%d.png"}, "--time: cannot"},
                           Row{{"--frames", ":", "--pick", "1,1", "--info=json", "--out", "%d.png"},
                               "--pick: of a film it is not together with --info=json"},
                           Row{{"--frames", ":"}, "--frames: needs --out"},
                           Row{{"--fps", "0", "--out", "a.png"}, "--fps: '0'"},
                           Row{{"--turntable", "0", "--out", "%d.png"}, "--turntable: '0'"},
                           Row{{"--turntable", "9", "--out", "a.png"}, "has no %d"},
                           Row{{"--turntable", "9", "--view", "top", "--out", "%d.png"}, "cannot turn"},
                           Row{{"--range", "each", "--out", "a.png"}, "--range: each needs"},
                           Row{{"--range", "some", "--out", "a.png"}, "nor first or each"}}) {
        std::vector<char const*> arguments = row.arguments;
        arguments.insert(arguments.begin(), "a.dump");
        EXPECT_THAT(errorOf(arguments), HasSubstr(row.message));
    }
    EXPECT_THAT(errorOf({"--effect", "ocean", "--turntable", "9", "--out", "%d.png"}), HasSubstr("the sea"));
}
