#include "viewport/program/EffectWords.h"

#include "viewport/drawing/effects/EffectParameter.h"
#include "viewport/program/CommandLine.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace vellum;
using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

CommandLine parseEffect(std::vector<std::string> const& words) {
    std::vector<char const*> arguments{"vl_viewport"};
    for (std::string const& word : words) {
        arguments.push_back(word.c_str());
    }
    return parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

std::optional<EffectSpec> effectOf(std::vector<std::string> words) {
    words.insert(words.begin(), {"a.obj", "b.obj", "--out", "a.png"});
    CommandLine const line = parseEffect(words);
    EXPECT_TRUE(line.options.has_value()) << line.error;
    return line.options.value_or(Options{}).effect;
}

/// The parameters of an effect E. Fails when another one is read, or none.
template <class E>
E valuesOf(std::vector<std::string> const& words) {
    std::optional<EffectSpec> const effect = effectOf(words);
    bool const isRead = effect && std::holds_alternative<E>(effect->values);
    EXPECT_TRUE(isRead);
    return isRead ? std::get<E>(effect->values) : E();
}

/// The message of a usage error. Fails when there is none, or not one line.
std::string effectError(std::vector<std::string> words) {
    words.insert(words.begin(), {"a.obj", "b.obj", "--out", "a.png"});
    CommandLine const line = parseEffect(words);
    EXPECT_FALSE(line.options.has_value());
    EXPECT_EQ(line.exitStatus, 2);
    EXPECT_EQ(line.output, "");
    EXPECT_EQ(line.error.find('\n'), std::string::npos);
    return line.error;
}

std::vector<float> partsOf(Vector3<float> const& v) {
    return {v.x, v.y, v.z};
}

std::vector<float> partsOf(Color4<float> const& c) {
    return {c.r, c.g, c.b, c.a};
}

}  // namespace

// == Effects ==

TEST(EffectWords, everyEffectIsKnown) {
    EXPECT_FALSE(effectOf({}).has_value());
    valuesOf<DisplacementEffect>({"--effect", "displacement", "--effect-param", "map=m.png"});
    valuesOf<OceanEffect>({"--effect", "ocean"});
    valuesOf<GlassEffect>({"--effect", "glass"});
    valuesOf<ScatteringEffect>({"--effect", "sss"});
    valuesOf<CustomEffect>({"--effect", "custom", "--shader-fragment", "f"});
    EXPECT_THAT(effectError({"--effect", "fog"}),
                HasSubstr("unknown effect 'fog' (known: custom, displacement, glass, ocean, sss)"));
    EXPECT_THAT(effectError({"--effect", ""}), HasSubstr("--effect"));
}

TEST(EffectWords, onlyAnOceanNeedsNoFiles) {
    EXPECT_TRUE(parseEffect({"--out", "a.png", "--effect", "ocean"}).options.has_value());
    EXPECT_EQ(parseEffect({"--out", "a.png", "--effect", "glass"}).exitStatus, 2);
    EXPECT_THAT(parseEffect({"--out", "a.png"}).error, HasSubstr("FILE"));
}

TEST(EffectWords, theFilesOfAnEffectAreRead) {
    EXPECT_EQ(valuesOf<GlassEffect>({"--effect", "glass", "--environment", "sky.hdr"}).environment,
              "sky.hdr");
    std::vector<std::string> const words{"--effect",          "custom", "--shader-vertex",   "v",
                                         "--shader-fragment", "f",      "--shader-geometry", "g",
                                         "--effect-model",    "2"};
    CustomEffect const custom = valuesOf<CustomEffect>(words);
    EXPECT_EQ(custom.vertexShader, "v");
    EXPECT_EQ(custom.fragmentShader, "f");
    EXPECT_EQ(custom.geometryShader, "g");
    EXPECT_FALSE(custom.replacesStages);
    EXPECT_EQ(effectOf(words)->onlyModel, 1U);
    EXPECT_FALSE(effectOf({"--effect", "glass"})->onlyModel.has_value());
}

TEST(EffectWords, stagesAreReplacedOnlyOnRequest) {
    EXPECT_TRUE(valuesOf<CustomEffect>({"--effect", "custom", "--shader-fragment", "f", "--shader-fallback"})
                    .replacesStages);
}

TEST(EffectWords, whatBelongsToAnotherEffectIsAnError) {
    EXPECT_THAT(effectError({"--effect", "glass", "--shader-fallback"}),
                HasSubstr("belongs to --effect custom"));
    EXPECT_THAT(effectError({"--shader-fallback"}), HasSubstr("belongs to --effect custom"));
    EXPECT_THAT(effectError({"--environment", "e"}), HasSubstr("belongs to --effect glass"));
    EXPECT_THAT(effectError({"--effect", "sss", "--environment", "e"}),
                HasSubstr("belongs to --effect glass"));
    for (char const* const stage : {"--shader-vertex", "--shader-fragment", "--shader-geometry"}) {
        EXPECT_THAT(effectError({stage, "f"}), HasSubstr("belongs to --effect custom"));
        EXPECT_THAT(effectError({"--effect", "glass", stage, "f"}), HasSubstr(stage));
        EXPECT_THAT(effectError({"--effect", "custom", stage, ""}), HasSubstr("empty"));
    }
    EXPECT_THAT(effectError({"--effect-param", "depth=1"}), HasSubstr("belongs to --effect"));
    EXPECT_THAT(effectError({"--effect-param", "help"}), HasSubstr("belongs to --effect"));
    EXPECT_THAT(effectError({"--effect-model", "1"}), HasSubstr("belongs to --effect"));
}

TEST(EffectWords, whatAnEffectCannotDoWithoutIsRequired) {
    EXPECT_THAT(effectError({"--effect", "displacement"}), HasSubstr("map=FILE is required"));
    EXPECT_THAT(effectError({"--effect", "custom"}), HasSubstr("--shader-fragment"));
}

TEST(EffectWords, theModelIsOneOfTheFiles) {
    for (char const* const number : {"0", "3", "-1", "1.5", "two", "", "99999999999999999999", "nan"}) {
        EXPECT_THAT(effectError({"--effect", "glass", "--effect-model", number}),
                    HasSubstr("--effect-model"));
    }
}

TEST(EffectWords, otherWaysToShowASurfaceExcludeAnEffect) {
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
        EXPECT_THAT(effectError(words), HasSubstr(option + ": cannot be drawn together with --effect"));
    }
    valuesOf<GlassEffect>({"--effect", "glass", "--shading", "faceted", "--immediate", "--gizmo", "move"});
}

// == Parameters ==

TEST(EffectWords, valuesAreRead) {
    OceanEffect const ocean =
        valuesOf<OceanEffect>({"--effect", "ocean", "--effect-param", "wind=7.5", "--effect-param", "time=-3",
                               "--effect-param", "seed=9", "--effect-param", "sun=12"});
    EXPECT_EQ(ocean.sea.windSpeed, 7.5);
    EXPECT_EQ(ocean.time, -3);
    EXPECT_EQ(ocean.sea.seed, 9U);
    EXPECT_EQ(ocean.sun.x, 12);
    EXPECT_EQ(ocean.sun.y, 12) << "one number for both";
    EXPECT_EQ(ocean.sea.size, 512U) << "the default";

    DisplacementEffect const displacement = valuesOf<DisplacementEffect>(
        {"--effect", "displacement", "--effect-param", "map=a=b.png", "--effect-param", "scale=1,2,3",
         "--effect-param", "tessellate=yes", "--effect-param", "color=0.1,0.2,0.3"});
    EXPECT_EQ(displacement.map, "a=b.png");
    EXPECT_EQ(displacement.normals, "");
    EXPECT_THAT(partsOf(displacement.scale), testing::ElementsAre(1, 2, 3));
    EXPECT_TRUE(displacement.tessellate);
    EXPECT_THAT(partsOf(displacement.color), testing::ElementsAre(0.1F, 0.2F, 0.3F, 1.0F));

    CustomEffect const custom = valuesOf<CustomEffect>(
        {"--effect", "custom", "--shader-vertex", "v", "--effect-param", "FloatVar9=-0.5", "--effect-param",
         "Vec4Var0=1,2,3,4", "--effect-param", "Texture6=t.png"});
    EXPECT_EQ(custom.floats[9], -0.5);
    EXPECT_THAT(partsOf(custom.vec4s[0]), testing::ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(custom.textures[6], "t.png");
}

TEST(EffectWords, theLastValueOfAParameterCounts) {
    EXPECT_EQ(valuesOf<ScatteringEffect>(
                  {"--effect", "sss", "--effect-param", "lights=2", "--effect-param", "lights=1"})
                  .lights.count,
              1U);
}

TEST(EffectWords, malformedValuesAreErrorsThatSayWhatIsExpected) {
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
        std::string const error = effectError({"--effect", row.effect, "--effect-param", row.assignment});
        EXPECT_THAT(error, HasSubstr("--effect-param: "));
        EXPECT_THAT(error, HasSubstr(row.message));
    }
}

// == Help ==

TEST(EffectWords, helpListsTheParametersOfTheEffect) {
    for (std::string const& name : effectNames()) {
        // Neither files nor --out nor what the effect requires.
        CommandLine const line = parseEffect({"--effect", name, "--effect-param", "help"});
        EXPECT_FALSE(line.options.has_value());
        EXPECT_EQ(line.exitStatus, 0);
        EXPECT_EQ(line.error, "");
        for (EffectParameter const& parameter : parametersOf(*effectNamed(name))) {
            EXPECT_THAT(line.output, HasSubstr("\n  " + parameter.name + "="));
            if (!parameter.standard.empty()) {
                EXPECT_THAT(line.output, HasSubstr("(" + parameter.standard + ")"));
            }
        }
        EXPECT_EQ(line.output.back(), '\n');
    }
    EXPECT_EQ(parseEffect({"--effect", "fog", "--effect-param", "help"}).exitStatus, 2);
}

TEST(EffectWords, theGeneralHelpNamesTheOptions) {
    std::string const help = parseEffect({"--help"}).output;
    for (char const* const option :
         {"--effect ", "--effect-param ", "--effect-model ", "--environment ", "--shader-vertex ",
          "--shader-fragment ", "--shader-geometry ", "--shader-fallback "}) {
        EXPECT_THAT(help, HasSubstr(option));
    }
}
