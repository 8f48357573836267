#include "glsl_shader/ArrowRendering_shader.h"
#include "glsl_shader/PointRendering_shader.h"
#include "glsl_shader/SphereRendering_shader.h"

#include "Core_RL_GL.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/vl_raster_gl/glsl_shader/effect_calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using Texts = std::vector<std::string>;
using Type = Base_shader::ProcessType;

constexpr char const* EXT_LINES = "#version 120\n#extension GL_EXT_geometry_shader4: enable\n";

class Impostors_calls_test : public testing::Test {
protected:
    /// The part of a text from its first `void` on: what is the same in both dialects.
    static std::string bodyOf(std::string const& text) { return text.substr(text.find("void ")); }

    Texts uniformNames() const {
        Texts result;
        for (gl_spy::Call const& call : recording.named("glGetUniformLocation")) {
            result.push_back(call.strings.at(0));
        }
        return result;
    }

    gl_spy::Script driver = gl_spy::drivers::geometryShader4();
    Core_RL_GL layer;
    gl_spy::Recording recording;
};

// == Stages ==

TEST_F(Impostors_calls_test, theConstructorMakesNoCall) {
    { PointRendering_shader const effect((Type(0))); }
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Impostors_calls_test, geometryStagesHaveTheExtensionsParameters) {
    SphereRendering_shader sphere((Type(0)));
    sphere.create();
    ASSERT_EQ(recording.count("glProgramParameteriEXT"), 3U);
    Texts parameters;
    for (gl_spy::Call const& call : recording.named("glProgramParameteriEXT")) {
        parameters.push_back(call.arguments.at(1) + " " + call.arguments.at(2));
    }
    EXPECT_THAT(parameters, ElementsAre("GL_GEOMETRY_INPUT_TYPE_EXT GL_POINTS",
                                        "GL_GEOMETRY_OUTPUT_TYPE_EXT GL_TRIANGLE_STRIP",
                                        "GL_GEOMETRY_VERTICES_OUT_EXT 8"));
    Texts const names = [this] {
        Texts result;
        for (gl_spy::Call const& call : recording.calls()) {
            result.push_back(call.name);
        }
        return result;
    }();
    auto const parameter = std::find(names.begin(), names.end(), "glProgramParameteriEXT");
    EXPECT_LT(std::find(names.begin(), names.end(), "glAttachShader"), parameter);
    EXPECT_LT(parameter, std::find(names.begin(), names.end(), "glLinkProgram"));

    recording.clear();
    ArrowRendering_shader arrow((Type(0)));
    arrow.create();
    EXPECT_EQ(recording.named("glProgramParameteriEXT").at(1).arguments.at(2), "GL_LINE_STRIP");

    recording.clear();
    PointRendering_shader point((Type(0)));
    point.create();
    EXPECT_EQ(recording.count("glProgramParameteriEXT"), 0U);
    EXPECT_EQ(recording.count("glCreateShader"), 2U);
}

TEST_F(Impostors_calls_test, stagesAreLoadedVertexFragmentGeometry) {
    SphereRendering_shader sphere((Type(0)));
    sphere.create();
    Texts kinds;
    for (gl_spy::Call const& call : recording.named("glCreateShader")) {
        kinds.push_back(call.arguments.at(0));
    }
    EXPECT_THAT(kinds, ElementsAre("GL_VERTEX_SHADER", "GL_FRAGMENT_SHADER", "GL_GEOMETRY_SHADER_EXT"));
    EXPECT_THAT(stageTexts(recording).at(0), Not(HasSubstr("#version")));
    EXPECT_THAT(stageTexts(recording).at(2), StartsWith(EXT_LINES));
}

TEST_F(Impostors_calls_test, newerDriversWithoutTheExtensionGetTheOtherDialect) {
    for (bool const isArrow : {false, true}) {
        auto const make = [&isArrow]() -> std::unique_ptr<Base_shader> {
            if (isArrow) {
                return std::make_unique<ArrowRendering_shader>(Type(0));
            }
            return std::make_unique<SphereRendering_shader>(Type(0));
        };
        recording.clear();
        make()->create();
        std::string const extension = stageTexts(recording).at(2);

        gl_spy::Script newer = gl_spy::drivers::gl21();
        newer.string(GL_VERSION, "4.5 (Compatibility Profile) Mesa 22.3.6")
            .string(GL_EXTENSIONS, "GL_ARB_sync");
        Core_RL_GL newLayer;
        recording.clear();
        make()->create();
        std::string const core = stageTexts(recording).at(2);
        EXPECT_THAT(core,
                    StartsWith(std::string("#version 150 compatibility\nlayout(points) in;\nlayout(") +
                               (isArrow ? "line_strip" : "triangle_strip") + ", max_vertices = 8) out;\n"));
        EXPECT_EQ(recording.count("glProgramParameteriEXT"), 0U);
        EXPECT_EQ(bodyOf(core), bodyOf(extension)) << "both emit the same vertices in the same order";
        VL_Raster = &layer;
    }
}

TEST_F(Impostors_calls_test, olderDriversWithoutTheExtensionAreOfferedItsText) {
    for (char const* const version : {"2.1.0", "3.1 Mesa", "3", ""}) {
        gl_spy::Script older = gl_spy::drivers::noExtensions();
        older.string(GL_VERSION, version);
        Core_RL_GL const oldLayer;
        recording.clear();
        SphereRendering_shader effect((Type(0)));
        effect.create();
        EXPECT_THAT(stageTexts(recording).at(2), StartsWith(EXT_LINES)) << version;
        EXPECT_EQ(recording.count("glProgramParameteriEXT"), 3U);
    }
    VL_Raster = &layer;
}

TEST_F(Impostors_calls_test, theProcessTypeChoosesTheVertexText) {
    auto const vertexText = [this](Base_shader&& effect) {
        recording.clear();
        effect.create();
        return stageTexts(recording).at(0);
    };
    std::vector<std::string> points;
    std::vector<std::string> arrows;
    for (unsigned int type = 0; type <= 7; ++type) {
        points.push_back(vertexText(PointRendering_shader(Type(type))));
        arrows.push_back(vertexText(ArrowRendering_shader(Type(type))));
    }
    for (std::vector<std::string> const& texts : {points, arrows}) {
        EXPECT_THAT(texts[0], HasSubstr("length(gl_Color.rgb)"));
        EXPECT_THAT(texts[1], HasSubstr("length(gl_Color.rrr)"));
        EXPECT_THAT(texts[2], HasSubstr("length(gl_Color.ggg)"));
        EXPECT_THAT(texts[3], HasSubstr("length(gl_Color.bbb)"));
        EXPECT_THAT(texts[4], Not(HasSubstr("rate")));
    }
    for (unsigned int type = 5; type <= 7; ++type) {
        EXPECT_EQ(points[type], points[0]);
        EXPECT_EQ(arrows[type], arrows[4]);
    }
    EXPECT_THAT(points[0], HasSubstr("rate > 1.0"));
    EXPECT_THAT(arrows[0], HasSubstr("rate < 1.0"));
    EXPECT_THAT(arrows[0], Not(HasSubstr("uniform float size")));
}

// == Passes ==

TEST_F(Impostors_calls_test, aPassSavesSetsAndSends) {
    SphereRendering_shader effect((Type(0)));
    effect.create();
    effect.enable(false);
    effect.setNLights(2);
    effect.preprocess();
    effect.postprocess();
    effect.cleanup();
    recording.clear();
    effect.preprocess();
    Texts const calls = recording.texts();
    ASSERT_GE(calls.size(), 11U);
    EXPECT_THAT(Texts(calls.begin(), calls.begin() + 10),
                ElementsAre("glPushAttrib(0x6000)", "glDisable(GL_TEXTURE_2D)", "glDisable(GL_TEXTURE_3D)",
                            "glEnable(GL_LIGHTING)", "glEnable(GL_LIGHT0)", "glEnable(GL_LIGHT1)",
                            "glColor4f(1, 1, 1, 1)", "glEnable(GL_BLEND)",
                            "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
                            "glGetIntegerv(GL_VIEWPORT, pointer)"));
    EXPECT_THAT(calls[10], StartsWith("glUseProgram("));
    recording.clear();
    effect.postprocess();
    EXPECT_THAT(recording.texts(), IsEmpty());
    effect.cleanup();
    EXPECT_THAT(recording.texts(),
                ElementsAre("glUseProgram(0)", "glUseProgramObjectARB(0)", "glPopAttrib()"));
}

TEST_F(Impostors_calls_test, uniformsAreSentInTheirOrder) {
    SphereRendering_shader sphere((Type(0)));
    sphere.preprocess();
    EXPECT_THAT(uniformNames(),
                ElementsAre("LightPos", "nLights", "maxMagnitude", "minMagnitude", "magnitudeScale", "size",
                            "minColor", "maxColor", "maxClampColor"));
    sphere.cleanup();
    recording.clear();
    ArrowRendering_shader arrow((Type(0)));
    arrow.preprocess();
    EXPECT_THAT(uniformNames(),
                ElementsAre("LightPos", "nLights", "maxMagnitude", "minMagnitude", "magnitudeScale",
                            "minColor", "maxColor", "maxClampColor", "size"));
    EXPECT_THAT(recording.texts(), Contains("glLineWidth(2)"));
    arrow.cleanup();
}

TEST_F(Impostors_calls_test, theFirstValuesAreThoseOfTheInterface) {
    PointRendering_shader effect((Type(0)));
    effect.setMagnitudeScale(7);
    effect.setSize(5);
    effect.preprocess();
    std::vector<std::vector<double>> values;
    for (gl_spy::Call const& call : recording.calls()) {
        if (call.name.find("glUniform") == 0) {
            values.emplace_back(call.numbers.begin() + 2, call.numbers.end());  // behind location and count
        }
    }
    using Values = std::vector<double>;
    EXPECT_THAT(values, ElementsAre(Values{1, 1, 0}, Values{1}, Values{1}, Values{0}, Values{7}, Values{5},
                                    Values{double{0.6666667F}, 1, 1},
                                    Values{0, double{0.21568627F}, double{0.31764707F}}, Values{1, 0, 1}));
    effect.cleanup();
}

TEST_F(Impostors_calls_test, onlyADifferentValueMakesAnEffectDirty) {
    PointRendering_shader effect((Type(0)));
    effect.preprocess();
    effect.postprocess();
    effect.cleanup();
    auto const isSent = [&] {
        recording.clear();
        effect.preprocess();
        effect.postprocess();
        effect.cleanup();
        return recording.count("glGetUniformLocation") != 0;
    };
    EXPECT_FALSE(isSent());
    effect.setMinColor({0.6666667F, 1, 1, 1});
    effect.setMaxMagnitude(1);
    effect.setLightPosition(1, 1, 0, 0);
    effect.setNLights(1);
    EXPECT_FALSE(isSent()) << "the same values";
    effect.setMaxMagnitude(2);
    effect.setMaxMagnitude(2);
    EXPECT_TRUE(isSent()) << "the second setter does not take it back";
    effect.setMinColor({0.6666667F, 1, 1, 0.5F});
    EXPECT_TRUE(isSent());
    effect.setLightPosition(1, 1, 0, 1);
    EXPECT_TRUE(isSent());
    effect.setNLights(3);
    EXPECT_TRUE(isSent());
    effect.setSize(2);
    EXPECT_TRUE(isSent());
}

TEST_F(Impostors_calls_test, aCopyTakesTheLookAndNothingElse) {
    ArrowRendering_shader original((Type(3)));
    original.setMaxMagnitude(9);
    original.setSize(8);
    original.setNLights(4);
    original.create();
    ArrowRendering_shader copy(original);
    EXPECT_EQ(copy.processType(), 0U);
    EXPECT_FALSE(copy.created);
    recording.clear();
    copy.preprocess();
    EXPECT_THAT(recording.texts(), Not(Contains("glEnable(GL_LIGHT1)")));
    EXPECT_EQ(recording.named("glUniform1fv").at(0).numbers.at(2), 9);
    EXPECT_EQ(recording.named("glUniform1fv").back().numbers.at(2), 8);
    copy.cleanup();
}

// == Reload on demand ==

TEST_F(Impostors_calls_test, arrowsReloadWhenAWatchedFileIsNewer) {
    namespace fs = std::filesystem;
    fs::path const folder = fs::path(testing::TempDir()) / "watched_arrows";
    fs::remove_all(folder);
    fs::create_directories(folder / "shaders");
    ArrowRendering_shader::setWatchedFolder(folder.c_str());
    ArrowRendering_shader effect((Type(0)));
    effect.create();

    testing::internal::CaptureStdout();
    effect.reloadShaders();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_TRUE(effect.created);

    std::ofstream(folder / "shaders" / "arrow_geometry.c") << "text that is not read";
    testing::internal::CaptureStdout();
    effect.reloadShaders();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), " RELOADING!\n");
    EXPECT_FALSE(effect.created);

    testing::internal::CaptureStdout();
    effect.reloadShaders();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "not newer than the last time";
    ArrowRendering_shader::setWatchedFolder(nullptr);
    fs::remove_all(folder);
}

}  // namespace
}  // namespace vellum
