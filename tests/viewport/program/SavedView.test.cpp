#include "viewport/program/SavedView.h"

#include "tests/support/TemporaryFolder.h"
#include "viewport/live/Change.h"
#include "viewport/program/CommandLine.h"
#include "viewport/program/OptionTable.h"
#include "viewport/program/to_words.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

using namespace vellum::viewport;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace {

CommandLine parseWords(std::vector<std::string> const& words, std::string const& configuration = "") {
    std::vector<char const*> arguments{"vl_viewport"};
    for (std::string const& word : words) {
        arguments.push_back(word.c_str());
    }
    return parseCommandLine(static_cast<int>(arguments.size()), arguments.data(), configuration);
}

/// One line for each set of options that go together; in all of them each option has another value than by
/// default.
std::vector<std::vector<std::string>> const LINES{
    {"--format=ply", "--series", "--up=-x", "--clip=-1,1.5,-2,2,-3,1e3", "--import-timeout=0.25",
     "--import-memory=77", "--transform=1:1,2,3:0,0,90:2,2,2", "--transform=2:0,0,1"},
    {"--size=64x48", "--quality=17", "--projection=parallel", "--camera-position=1,2.25,-3",
     "--camera-focus=0.1,0,1e-9", "--camera-up=0,0,1", "--camera-height=0.125", "--zoom=1.7",
     "--background=010203,fffefd", "--light=-30,45.5", "--gizmo=rotate", "--no-grid", "--no-axes", "--no-bar",
     "--no-box", "--sizes"},
    {"--azimuth=-12.5", "--elevation=80", "--fov=50", "--background=transparent"},
    {"--view=top", "--camera-focus=1,2,3", "--zoom=0.5"},
    {"--shading=box", "--mesh-color=8090a0", "--opacity=0.3", "--edges=all", "--line-width=2.5",
     "--normals=face", "--connectivity", "--texture=/t/a b.png", "--wireframe-back", "--import-preview",
     "--immediate"},
    {"--edges", "--normals=vertex"},
    {"--edges-blend"},
    {"--particles=arrows3d", "--channel=vx", "--range=-1,2e5", "--log", "--colors=000001,020304,ff0000",
     "--percent=33.3", "--select=type==2 and z>0", "--size-of-particles=0.7", "--wrap", "--replicate=2,3,4",
     "--frame=7", "--gpu-memory=0"},
    {"--time=-0.5", "--colormap=viridis"},
    {"--effect=glass", "--environment=/e.hdr", "--effect-param=depth=0.3", "--effect-param=light=1,2,3",
     "--effect-param=color=0.1,0.2,0.3", "--effect-model=2"},
    {"--effect=displacement", "--effect-param=map=/m.png", "--effect-param=tessellate=yes",
     "--effect-param=depth=7", "--effect-param=scale=0,1,0"},
    {"--effect=ocean", "--effect-param=seed=3", "--effect-param=sun=1,2"},
    {"--effect=custom", "--shader-vertex=/v.glsl", "--shader-fragment=/f.glsl", "--shader-geometry=/g.glsl",
     "--shader-fallback", "--effect-param=Texture3=/t.png", "--effect-param=Vec4Var1=1,2,3,4"}};

std::vector<std::string> withFiles(std::vector<std::string> words) {
    words.insert(words.end(), {"a.obj", "b.obj"});
    return words;
}

/// Same in everything that is compared nowhere else.
void expectSame(Options const& a, Options const& b) {
    EXPECT_EQ(changeBetween(a, b), Change::NOTHING);
    EXPECT_EQ(a.limits.deadline, b.limits.deadline);
    EXPECT_EQ(a.limits.memoryBytes, b.limits.memoryBytes);
    EXPECT_EQ(a.pictures[0].quality, b.pictures[0].quality);
    EXPECT_EQ(a.pictures[0].size, b.pictures[0].size);
    EXPECT_EQ(a.gpuMemory, b.gpuMemory);
    EXPECT_EQ(a.texture, b.texture);
    ASSERT_EQ(a.effect.has_value(), b.effect.has_value());
    if (a.effect && std::holds_alternative<GlassEffect>(a.effect->values)) {
        EXPECT_EQ(std::get<GlassEffect>(a.effect->values).environment,
                  std::get<GlassEffect>(b.effect->values).environment);
    }
    if (a.effect && std::holds_alternative<CustomEffect>(a.effect->values)) {
        auto const& one = std::get<CustomEffect>(a.effect->values);
        auto const& other = std::get<CustomEffect>(b.effect->values);
        EXPECT_EQ(one.vertexShader + one.fragmentShader + one.geometryShader,
                  other.vertexShader + other.fragmentShader + other.geometryShader);
        EXPECT_EQ(one.replacesStages, other.replacesStages);
    }
}

std::string nameOfArgument(std::string const& argument) {
    return argument.substr(0, argument.find('='));
}

/// The fault of a view with this text.
std::string faultOf(std::string const& text) {
    TemporaryFolder const folder;
    std::string const path = folder.write("v.vlview", text);
    CommandLine const line = parseWords({path, "--out", "p.png"});
    EXPECT_FALSE(line.options.has_value());
    EXPECT_EQ(line.exitStatus, 1);
    EXPECT_EQ(line.error, "vl_viewport: " + path + ": " + line.fault.message);
    EXPECT_EQ(line.error.find('\n'), std::string::npos);
    return line.fault.message;
}

}  // namespace

TEST(ToWords, everyOptionBecomesTheWordsThatItWasReadFrom) {
    std::set<std::string> seen(std::begin(NEVER_IN_WORDS), std::end(NEVER_IN_WORDS));
    for (std::vector<std::string> const& words : LINES) {
        CommandLine const line = parseWords(withFiles(words));
        ASSERT_TRUE(line.options.has_value()) << line.error;
        std::vector<std::string> again;
        for (OptionWord const& word : toWords(*line.options)) {
            again.push_back(word.argument(word.word == "true"));
            seen.insert(word.option);
        }
        EXPECT_EQ(again.size(), words.size()) << testing::PrintToString(again);
        for (std::string const& word : words) {
            EXPECT_THAT(again, Contains(testing::StartsWith(nameOfArgument(word))));
        }
        CommandLine const second = parseWords(withFiles(again));
        ASSERT_TRUE(second.options.has_value()) << second.error;
        expectSame(*line.options, *second.options);
    }
    for (OptionEntry const& option : optionTable()) {
        EXPECT_TRUE(option.isPositional() || seen.count(option.name) == 1)
            << option.name << " has no word and is not among NEVER_IN_WORDS";
    }
}

TEST(commandLineOf, aShellReadsItBackAsThePicture) {
    TemporaryFolder const folder;
    std::string const file = folder.write("it's a $HOME `b`.obj", "");
    for (std::vector<std::string> words : LINES) {
        words.insert(words.end(), {file, folder.file("b.obj")});
        CommandLine const line = parseWords(words);
        ASSERT_TRUE(line.options.has_value()) << line.error;
        std::string const text = commandLineOf(*line.options, {320, 200}, "a picture.png");
        // The words that a shell makes of it, a line for each.
        std::string const listed = folder.file("words");
        std::string const command = "vl_viewport() { printf '%s\\n' \"$@\" > '" + listed + "'; }; " + text;
        ASSERT_EQ(std::system(command.c_str()), 0) << text;
        std::ifstream stream(listed);
        std::vector<std::string> shellWords;
        for (std::string word; std::getline(stream, word);) {
            shellWords.push_back(word);
        }
        CommandLine const second = parseWords(shellWords);
        ASSERT_TRUE(second.options.has_value()) << second.error << "\n" << text;
        Options expected = *line.options;
        expected.pictures[0].size = {320, 200};
        expected.pictures[0].gizmo = Gizmo::NONE;
        expectSame(expected, *second.options);
        EXPECT_EQ(second.options->files, (std::vector<std::string>{file, folder.file("b.obj")}));
        EXPECT_EQ(second.options->pictures[0].out,
                  (std::filesystem::current_path() / "a picture.png").string());
        EXPECT_FALSE(second.options->opensWindow());
    }
}

TEST(ToWords, defaultsNeedNoWords) {
    EXPECT_THAT(toWords(Options()), testing::IsEmpty());
}

TEST(SavedView, isReadBackAsItWasSaved) {
    for (std::vector<std::string> const& words : LINES) {
        TemporaryFolder const folder;
        std::string const path = folder.file("v.vlview");
        CommandLine line = parseWords(withFiles(words));
        ASSERT_TRUE(line.options.has_value()) << line.error;
        line.options->files = {folder.file("a.obj"), "/elsewhere/b.obj"};
        EXPECT_FALSE(saveView(path, *line.options).has_value());
        Result<Options> const loaded = loadView(path);
        ASSERT_TRUE(loaded.isOk()) << loaded.fault().line() << folder.read("v.vlview");
        expectSame(*line.options, loaded.value());
        EXPECT_THAT(folder.read("v.vlview"), HasSubstr("\"a.obj\""));
    }
}

TEST(SavedView, namesPathsBelowItsFolderAsSeenFromThere) {
    TemporaryFolder const folder;
    std::filesystem::create_directories(folder.file("deep/x"));
    CommandLine line =
        parseWords({folder.file("deep/x/-a.obj"), folder.file("b.obj"), "--effect=displacement",
                    "--effect-param=map=" + folder.file("deep/map.png")});
    ASSERT_TRUE(line.options.has_value()) << line.error;
    EXPECT_FALSE(saveView(folder.file("deep/v.vlview"), *line.options).has_value());
    EXPECT_THAT(folder.read("deep/v.vlview"), HasSubstr("\"x/-a.obj\""));
    EXPECT_THAT(folder.read("deep/v.vlview"), HasSubstr("\"" + folder.file("b.obj") + "\""));
    EXPECT_THAT(folder.read("deep/v.vlview"), HasSubstr("\"map=map.png\""));
    std::filesystem::rename(folder.file("deep"), folder.file("moved"));
    Result<Options> const moved = loadView(folder.file("moved/v.vlview"));
    ASSERT_TRUE(moved.isOk()) << moved.fault().line();
    EXPECT_EQ(moved.value().files[0], folder.file("moved/x/-a.obj"));
    EXPECT_EQ(std::get<DisplacementEffect>(moved.value().effect->values).map, folder.file("moved/map.png"));
}

TEST(SavedView, theCommandLineOutranksIt) {
    TemporaryFolder const folder;
    std::string const path = folder.write(
        "v.vlview", R"({"version":1,"files":["a.obj"],"options":{"--camera-position":"1,2,3","--zoom":2,
                       "--no-grid":true,"--percent":50,"--effect":"glass","--effect-param":["depth=0.5"]}})");
    CommandLine const line =
        parseWords({path, "--azimuth", "10", "--percent=20", "--effect=sss", "--out", "p.png"});
    ASSERT_TRUE(line.options.has_value()) << line.error;
    PictureOptions const& picture = line.options->pictures.front();
    EXPECT_FALSE(picture.camera.position.has_value());
    EXPECT_EQ(picture.camera.azimuth, 10);
    EXPECT_EQ(picture.camera.zoom, 2);
    EXPECT_FALSE(picture.explanations.hasGrid);
    EXPECT_EQ(line.options->particles.percent, 20);
    EXPECT_EQ(line.options->files, std::vector<std::string>{folder.file("a.obj")});
    EXPECT_FALSE(line.options->opensWindow());
    EXPECT_EQ(line.options->view, path);
}

TEST(SavedView, noConfigurationIsReadWithIt) {
    TemporaryFolder const folder;
    std::string const path = folder.write("v.vlview", R"({"version":1,"files":["a.obj"],"options":{}})");
    std::string const configuration = folder.write("config", "no-grid\n");
    CommandLine const line = parseWords({path}, configuration);
    ASSERT_TRUE(line.options.has_value()) << line.error;
    EXPECT_TRUE(line.options->pictures.front().explanations.hasGrid);
    EXPECT_THAT(parseWords({path, "--config", configuration}).error,
                HasSubstr("--config: cannot be used with"));
}

TEST(SavedView, takesNoOtherFiles) {
    EXPECT_THAT(parseWords({"a.obj", "v.vlview"}).error,
                HasSubstr("v.vlview: a saved view has its own files"));
}

TEST(SavedView, whatIsDamagedIsOneClearLine) {
    EXPECT_EQ(faultOf(""), "is empty");
    EXPECT_EQ(faultOf("{\"version\":1,"), "is damaged: it is not a complete JSON document");
    EXPECT_EQ(faultOf("[]"), "is not a saved view");
    EXPECT_EQ(faultOf("{\"version\":2}"), "is a view of version 2, of which nothing is known");
    EXPECT_EQ(faultOf(R"({"version":1,"files":"a"})"), "'files' is not a list");
    EXPECT_EQ(faultOf(R"({"version":1,"files":["a\u0000b"]})"), "'files' holds something other than a path");
    EXPECT_EQ(faultOf(R"({"version":1,"more":1})"), "has an unknown entry 'more'");
    EXPECT_EQ(faultOf(R"({"version":1,"options":{"--nonsense":"1"}})"), "there is no option 'nonsense'");
    EXPECT_EQ(faultOf(R"({"version":1,"options":{"--out":"p.png"}})"), "out: belongs on the command line");
    EXPECT_EQ(faultOf(R"({"version":1,"options":{"--percent":null}})"),
              "--percent: is neither a text nor a number, true or false");
    EXPECT_EQ(faultOf(R"({"version":1,"files":["a.obj"],"options":{"--percent":"200"}})"),
              "--percent: '200' is not a number from 0 to 100");
    EXPECT_EQ(faultOf(R"({"version":1,"files":["a.obj"],"options":{"--fov":900}})"),
              "--fov: '900' is not a number of degrees from 1 to 170");
    EXPECT_THAT(parseWords({"/no/such.vlview"}).error,
                HasSubstr("/no/such.vlview: cannot be read: No such file"));
}

TEST(SavedView, standardInputCannotBeSaved) {
    TemporaryFolder const folder;
    Options options;
    options.files = {"-"};
    std::optional<Fault> const fault = saveView(folder.file("v.vlview"), options);
    ASSERT_TRUE(fault.has_value());
    EXPECT_EQ(fault->message, "is not written: standard input cannot be read again");
    EXPECT_THAT(folder.names(), testing::IsEmpty());
}

TEST(SavedView, newNamesReplaceNothing) {
    TemporaryFolder const folder;
    EXPECT_EQ(newViewPath({folder.file("run.dump"), "b"}), folder.file("run.vlview"));
    folder.write("run.vlview", "x");
    EXPECT_EQ(newViewPath({folder.file("run.dump")}), folder.file("run-2.vlview"));
    EXPECT_EQ(newViewPath({}), "");
}
