#include "viewport/program/Options.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace vellum;
using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

CommandLine parse(std::vector<std::string> const& words) {
    std::vector<char const*> arguments{"vl_viewport"};
    for (std::string const& word : words) {
        arguments.push_back(word.c_str());
    }
    return parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

EffectOptions effectOf(std::vector<std::string> words) {
    words.insert(words.begin(), {"a.obj", "b.obj", "--out", "a.png"});
    CommandLine const line = parse(words);
    EXPECT_TRUE(line.options.has_value()) << line.error;
    return line.options.value_or(Options{}).effect;
}

/// The message of a usage error. Fails when there is none, or not one line.
std::string errorOf(std::vector<std::string> words) {
    words.insert(words.begin(), {"a.obj", "b.obj", "--out", "a.png"});
    CommandLine const line = parse(words);
    EXPECT_FALSE(line.options.has_value());
    EXPECT_EQ(line.exitStatus, 2);
    EXPECT_EQ(line.output, "");
    EXPECT_EQ(line.error.find('\n'), std::string::npos);
    return line.error;
}

std::vector<float> list(Vector3<float> const& v) {
    return {v.x, v.y, v.z};
}

std::vector<float> list(Color4<float> const& c) {
    return {c.r, c.g, c.b, c.a};
}

constexpr Effect everyEffect[] = {Effect::DISPLACEMENT, Effect::OCEAN, Effect::GLASS, Effect::SSS,
                                  Effect::CUSTOM};

}  // namespace

// == Effects ==

TEST(EffectOptions, everyEffectIsKnown) {
    EXPECT_EQ(effectOf({}).effect, Effect::NONE);
    EXPECT_EQ(effectOf({"--effect", "displacement", "--effect-param", "map=m.png"}).effect,
              Effect::DISPLACEMENT);
    EXPECT_EQ(effectOf({"--effect", "ocean"}).effect, Effect::OCEAN);
    EXPECT_EQ(effectOf({"--effect", "glass"}).effect, Effect::GLASS);
    EXPECT_EQ(effectOf({"--effect", "sss"}).effect, Effect::SSS);
    EXPECT_EQ(effectOf({"--effect", "custom", "--shader-fragment", "f"}).effect, Effect::CUSTOM);
    EXPECT_THAT(errorOf({"--effect", "fog"}), HasSubstr("unknown effect 'fog'"));
    EXPECT_THAT(errorOf({"--effect", ""}), HasSubstr("--effect"));
}

TEST(EffectOptions, onlyAnOceanNeedsNoFiles) {
    EXPECT_TRUE(parse({"--out", "a.png", "--effect", "ocean"}).options.has_value());
    EXPECT_EQ(parse({"--out", "a.png", "--effect", "glass"}).exitStatus, 2);
    EXPECT_THAT(parse({"--out", "a.png"}).error, HasSubstr("FILE"));
}

TEST(EffectOptions, theFilesOfAnEffectAreRead) {
    EXPECT_EQ(effectOf({"--effect", "glass", "--environment", "sky.hdr"}).environment, "sky.hdr");
    EffectOptions const options = effectOf({"--effect", "custom", "--shader-vertex", "v", "--shader-fragment",
                                            "f", "--shader-geometry", "g", "--effect-model", "2"});
    EXPECT_EQ(options.vertexShader, "v");
    EXPECT_EQ(options.fragmentShader, "f");
    EXPECT_EQ(options.geometryShader, "g");
    EXPECT_EQ(options.model, 2U);
}

TEST(EffectOptions, whatBelongsToAnotherEffectIsAnError) {
    EXPECT_THAT(errorOf({"--environment", "e"}), HasSubstr("belongs to --effect glass"));
    EXPECT_THAT(errorOf({"--effect", "sss", "--environment", "e"}), HasSubstr("belongs to --effect glass"));
    for (char const* const stage : {"--shader-vertex", "--shader-fragment", "--shader-geometry"}) {
        EXPECT_THAT(errorOf({stage, "f"}), HasSubstr("belongs to --effect custom"));
        EXPECT_THAT(errorOf({"--effect", "glass", stage, "f"}), HasSubstr(stage));
        EXPECT_THAT(errorOf({"--effect", "custom", stage, ""}), HasSubstr("empty"));
    }
    EXPECT_THAT(errorOf({"--effect-param", "depth=1"}), HasSubstr("belongs to --effect"));
    EXPECT_THAT(errorOf({"--effect-param", "help"}), HasSubstr("belongs to --effect"));
    EXPECT_THAT(errorOf({"--effect-model", "1"}), HasSubstr("belongs to --effect"));
}

TEST(EffectOptions, whatAnEffectCannotDoWithoutIsRequired) {
    EXPECT_THAT(errorOf({"--effect", "displacement"}), HasSubstr("map=FILE is required"));
    EXPECT_THAT(errorOf({"--effect", "custom"}), HasSubstr("--shader-fragment"));
}

TEST(EffectOptions, theModelIsOneOfTheFiles) {
    for (char const* const number : {"0", "3", "-1", "1.5", "two", "", "99999999999999999999", "nan"}) {
        EXPECT_THAT(errorOf({"--effect", "glass", "--effect-model", number}), HasSubstr("--effect-model"));
    }
}

TEST(EffectOptions, otherWaysToShowASurfaceExcludeAnEffect) {
    for (std::vector<std::string> words : std::vector<std::vector<std::string>>{{"--shading", "box"},
                                                                                {"--shading", "wireframe"},
                                                                                {"--edges"},
                                                                                {"--edges-blend"},
                                                                                {"--normals", "vertex"},
                                                                                {"--connectivity"},
                                                                                {"--texture", "t.png"},
                                                                                {"--import-preview"}}) {
        std::string const option = words.front();
        words.insert(words.end(), {"--effect", "glass"});
        EXPECT_THAT(errorOf(words), HasSubstr(option + ": cannot be drawn together with --effect"));
    }
    EXPECT_EQ(
        effectOf({"--effect", "glass", "--shading", "faceted", "--immediate", "--gizmo", "move"}).effect,
        Effect::GLASS);
}

// == Parameters ==

TEST(EffectOptions, everyParameterHasADefaultThatItWouldTake) {
    for (Effect const& effect : everyEffect) {
        EXPECT_FALSE(parametersOf(effect).empty());
        for (EffectParameter const& parameter : parametersOf(effect)) {
            SCOPED_TRACE(parameter.name);
            EXPECT_FALSE(parameter.meaning.empty());
            if (parameter.type != EffectParameter::Type::FILE) {
                EXPECT_EQ(EffectValues(effect).assign(parameter.name + "=" + parameter.standard),
                          std::nullopt);
            }
        }
    }
    EXPECT_TRUE(parametersOf(Effect::NONE).empty());
}

TEST(EffectOptions, valuesAreRead) {
    EffectValues const ocean = effectOf({"--effect", "ocean", "--effect-param", "wind=7.5", "--effect-param",
                                         "time=-3", "--effect-param", "seed=9", "--effect-param", "sun=12"})
                                   .values;
    EXPECT_EQ(ocean.number("wind"), 7.5);
    EXPECT_EQ(ocean.number("time"), -3);
    EXPECT_EQ(ocean.whole("seed"), 9);
    EXPECT_THAT(list(ocean.triple("sun")), testing::ElementsAre(12, 12, 0)) << "one number for both";
    EXPECT_EQ(ocean.whole("size"), 512) << "the default";

    EffectValues const displacement =
        effectOf({"--effect", "displacement", "--effect-param", "map=a=b.png", "--effect-param",
                  "scale=1,2,3", "--effect-param", "tessellate=yes", "--effect-param", "color=0.1,0.2,0.3"})
            .values;
    EXPECT_EQ(displacement.file("map"), "a=b.png");
    EXPECT_EQ(displacement.file("normals"), "");
    EXPECT_THAT(list(displacement.triple("scale")), testing::ElementsAre(1, 2, 3));
    EXPECT_TRUE(displacement.isYes("tessellate"));
    EXPECT_THAT(list(displacement.color("color")), testing::ElementsAre(0.1F, 0.2F, 0.3F, 1.0F));

    EffectValues const custom =
        effectOf({"--effect", "custom", "--shader-vertex", "v", "--effect-param", "FloatVar9=-0.5",
                  "--effect-param", "Vec4Var0=1,2,3,4", "--effect-param", "Texture6=t.png"})
            .values;
    EXPECT_EQ(custom.number("FloatVar9"), -0.5);
    EXPECT_THAT(list(custom.color("Vec4Var0")), testing::ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(custom.file("Texture6"), "t.png");
    EXPECT_EQ(custom.number("nothing of the kind"), 0);
}

TEST(EffectOptions, theLastValueOfAParameterCounts) {
    EXPECT_EQ(effectOf({"--effect", "sss", "--effect-param", "lights=2", "--effect-param", "lights=1"})
                  .values.whole("lights"),
              1);
}

TEST(EffectOptions, malformedValuesAreErrorsThatSayWhatIsExpected) {
    struct Row {
        char const* effect;
        char const* assignment;
        char const* message;
    };
    for (Row const& row : {Row{"glass", "depth", "is not NAME=VALUE"},
                           Row{"glass", "=1", "no parameter ''"},
                           Row{"glass", "wind=1", "the effect glass has no parameter 'wind'"},
                           Row{"glass", "depth=", "a number from"},
                           Row{"glass", "depth=nan", "a number from"},
                           Row{"glass", "depth=inf", "a number from"},
                           Row{"glass", "depth=1e99", "a number from -100 to 100"},
                           Row{"glass", "depth=1,2", "a number from"},
                           Row{"glass", "depth=1x", "a number from"},
                           Row{"glass", "lights=0", "a whole number from 1 to 2"},
                           Row{"glass", "lights=3", "a whole number"},
                           Row{"glass", "lights=1.5", "a whole number"},
                           Row{"glass", "color=1", "three or four numbers"},
                           Row{"glass", "color=1,1,1,1,1", "three or four numbers"},
                           Row{"glass", "color=1,,1", "three or four numbers"},
                           Row{"glass", "light=1,2", "one or three numbers"},
                           Row{"ocean", "sun=1,2,3", "one or two numbers"},
                           Row{"ocean", "size=100", "power of two"},
                           Row{"ocean", "size=8", "a whole number from 16"},
                           Row{"ocean", "size=0", "a whole number"},
                           Row{"ocean", "wind=0", "a number from 0.5"},
                           Row{"ocean", "patch=0", "a number from 1"},
                           Row{"custom", "grab=maybe", "yes or no"},
                           Row{"custom", "Texture0=", "file is missing"},
                           Row{"custom", "FloatVar10=1", "no parameter"},
                           Row{"custom", "Texture7=a", "no parameter"}}) {
        SCOPED_TRACE(row.assignment);
        std::string const error = errorOf({"--effect", row.effect, "--effect-param", row.assignment});
        EXPECT_THAT(error, HasSubstr("--effect-param: "));
        EXPECT_THAT(error, HasSubstr(row.message));
    }
}

// == Help ==

TEST(EffectOptions, helpListsTheParametersOfTheEffect) {
    for (auto const& [name, effect] : {std::pair<char const*, Effect>{"displacement", Effect::DISPLACEMENT},
                                       {"ocean", Effect::OCEAN},
                                       {"glass", Effect::GLASS},
                                       {"sss", Effect::SSS},
                                       {"custom", Effect::CUSTOM}}) {
        // Neither files nor --out nor what the effect requires.
        CommandLine const line = parse({"--effect", name, "--effect-param", "help"});
        EXPECT_FALSE(line.options.has_value());
        EXPECT_EQ(line.exitStatus, 0);
        EXPECT_EQ(line.error, "");
        for (EffectParameter const& parameter : parametersOf(effect)) {
            EXPECT_THAT(line.output, HasSubstr("\n  " + parameter.name + "="));
            if (!parameter.standard.empty()) {
                EXPECT_THAT(line.output, HasSubstr("(" + parameter.standard + ")"));
            }
        }
        EXPECT_EQ(line.output.back(), '\n');
    }
    EXPECT_EQ(parse({"--effect", "fog", "--effect-param", "help"}).exitStatus, 2);
}

TEST(EffectOptions, theGeneralHelpNamesTheOptions) {
    std::string const help = parse({"--help"}).output;
    for (char const* const option : {"--effect ", "--effect-param ", "--effect-model ", "--environment ",
                                     "--shader-vertex ", "--shader-fragment ", "--shader-geometry "}) {
        EXPECT_THAT(help, HasSubstr(option));
    }
}
