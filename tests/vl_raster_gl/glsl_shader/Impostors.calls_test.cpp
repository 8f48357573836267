#include "Program_gl.h"
#include "Shader_gl.h"
#include "effect_fixtures.h"
#include "glsl_shader/ArrowRendering_shader.h"
#include "glsl_shader/PointRendering_shader.h"
#include "glsl_shader/SphereRendering_shader.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <utime.h>

// The three particle effects, call by call.

namespace vellum {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr unsigned int VERSION_STRING = 0x1F02;

/// The differences between the three effects.
template <class Effect>
struct Kind {
    static constexpr bool IS_POINT = std::is_same_v<Effect, PointRendering_shader>;
    static constexpr bool IS_ARROW = std::is_same_v<Effect, ArrowRendering_shader>;
    static constexpr unsigned int PROGRAM = IS_POINT ? 3 : 4;  // made behind the stages
    static constexpr char const* OUTPUT = IS_ARROW ? "GL_LINE_STRIP" : "GL_TRIANGLE_STRIP";
};

template <class Effect>
class Impostors_calls_test : public Effect_fixture {
protected:
    using Opened = Open<Effect>;
    static constexpr bool IS_POINT = Kind<Effect>::IS_POINT;
    static constexpr bool IS_ARROW = Kind<Effect>::IS_ARROW;
    static constexpr unsigned int PROGRAM = Kind<Effect>::PROGRAM;

    static std::string inProgram(std::string const& before, std::string const& after) {
        return before + std::to_string(PROGRAM) + after;
    }
    static std::string programUsed() { return inProgram("glUseProgram(", ")"); }

    /// Creates and attaches shaders with these names and texts.
    static Texts stagesMade(std::array<unsigned int, 3> const& stages, Texts const& texts, bool isFirst) {
        Texts all = joined({variantMade(stages[0], "GL_VERTEX_SHADER", texts.at(0)),
                            variantMade(stages[1], "GL_FRAGMENT_SHADER", texts.at(1))});
        if (!IS_POINT) {
            all = joined({all, variantMade(stages[2], "GL_GEOMETRY_SHADER_EXT", texts.at(2))});
        }
        if (isFirst) {
            all.emplace_back("glCreateProgram()");
        }
        for (unsigned int i = 0; i < (IS_POINT ? 2 : 3); ++i) {
            all.push_back(paired("glAttachShader", PROGRAM, stages.at(i)));
        }
        if (!IS_POINT) {
            std::string const output = std::string(", GL_GEOMETRY_OUTPUT_TYPE_EXT, ") + Kind<Effect>::OUTPUT;
            all.push_back(inProgram("glProgramParameteriEXT(", ", GL_GEOMETRY_INPUT_TYPE_EXT, GL_POINTS)"));
            all.push_back(inProgram("glProgramParameteriEXT(", output + ")"));
            all.push_back(inProgram("glProgramParameteriEXT(", ", GL_GEOMETRY_VERTICES_OUT_EXT, 8)"));
        }
        return all;
    }

    /// Links and uses the program with these uniforms, keeps its log, and uses it once more.
    static Texts enabledByCreating(Texts const& uniforms) {
        return joined({{inProgram("glLinkProgram(", ")"), programUsed()},
                       uniforms,
                       {inProgram("glGetProgramInfoLog(", ", 4096)"), programUsed()},
                       uniforms});
    }

    /// Opens a pass with these lights and uses the program.
    static Texts opened(unsigned int lightCount) {
        Texts all{"glPushAttrib(0x6000)", "glDisable(GL_TEXTURE_2D)", "glDisable(GL_TEXTURE_3D)",
                  "glEnable(GL_LIGHTING)"};
        for (unsigned int i = 0; i < lightCount; ++i) {
            all.push_back("glEnable(GL_LIGHT" + std::to_string(i) + ")");
        }
        all = joined({all,
                      {"glColor4f(1, 1, 1, 1)", "glEnable(GL_BLEND)",
                       "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)"}});
        if (IS_ARROW) {
            all.emplace_back("glLineWidth(2)");
        }
        return joined({all, {"glGetIntegerv(GL_VIEWPORT, pointer)", programUsed()}});
    }

    struct Values {
        std::string light = "1, 1, 0";
        std::string lightCount = "1";
        std::string maxMagnitude = "1";
        std::string minMagnitude = "0";
        std::string magnitudeScale = "1";
        std::string size = "1";
        std::string minColor = "0.6666667, 1, 1";            // 170 / 255
        std::string maxColor = "0, 0.21568628, 0.31764707";  // 55 / 255 and 81 / 255
        std::string maxClampColor = "1, 0, 1";
    };

    /// Sends the parameters in order.
    static Texts sent(Values const& values) {
        Texts all;
        unsigned int location = 0;
        auto const send = [&](std::string const& name, std::string const& call, std::string const& value) {
            all = joined({all, uniformSent(PROGRAM, name, location++, call, "1, {" + value + "}")});
        };
        send("LightPos", "glUniform3fv", values.light);
        send("nLights", "glUniform1iv", values.lightCount);
        send("maxMagnitude", "glUniform1fv", values.maxMagnitude);
        send("minMagnitude", "glUniform1fv", values.minMagnitude);
        send("magnitudeScale", "glUniform1fv", values.magnitudeScale);
        if (!IS_ARROW) {
            send("size", "glUniform1fv", values.size);
        }
        send("minColor", "glUniform3fv", values.minColor);
        send("maxColor", "glUniform3fv", values.maxColor);
        send("maxClampColor", "glUniform3fv", values.maxClampColor);
        if (IS_ARROW) {
            send("size", "glUniform1fv", values.size);
        }
        return all;
    }

    static Texts closed() { return {"glUseProgram(0)", "glUseProgramObjectARB(0)", "glPopAttrib()"}; }

    static void setAll(Effect& effect) {
        effect.setLightPosition(2, 3, 4, 5);
        effect.setNLights(3);
        effect.setMinColor({0.125F, 0.25F, 0.5F, 0.75F});
        effect.setMaxColor({1.5F, 2.5F, 3.5F, 4.5F});
        effect.setMaxClampColor({-1, -2, -3, -4});
        effect.setMinMagnitude(-6);
        effect.setMaxMagnitude(7);
        effect.setMagnitudeScale(8);
        effect.setSize(9);
    }
    static Values allSet() {
        return {"2, 3, 4", "3", "7", "-6", "8", "9", "0.125, 0.25, 0.5", "1.5, 2.5, 3.5", "-1, -2, -3"};
    }
    static Values allCopied() {
        Values values = allSet();
        values.light = Values().light;
        values.lightCount = Values().lightCount;
        return values;
    }

    /// The text of the vertex shader for this process type.
    std::string vertexText(unsigned int type) {
        Opened made{Base_shader::ProcessType(type)};
        recording.clear();
        made.create();
        std::string const text = stageTexts(recording).at(0);
        recording.clear();
        return text;
    }

    Opened effect{Base_shader::ProcessType(0)};
};

using Effects = testing::Types<PointRendering_shader, SphereRendering_shader, ArrowRendering_shader>;
TYPED_TEST_SUITE(Impostors_calls_test, Effects, );

TYPED_TEST(Impostors_calls_test, newEffectMakesNothing) {
    EXPECT_TRUE(this->effect.dirty);
    EXPECT_FALSE(this->effect.created);
    EXPECT_EQ(this->effect.stage1, nullptr);
    EXPECT_EQ(this->effect.stage2, nullptr);
    EXPECT_EQ(this->effect.stage3, nullptr);
    EXPECT_EQ(this->effect.getLog(), "");
    EXPECT_THAT(this->calls(), IsEmpty());
}

TYPED_TEST(Impostors_calls_test, firstPassCreatesOpensAndSends) {
    using Test = Impostors_calls_test<TypeParam>;
    this->effect.preprocess();
    Texts const texts = stageTexts(this->recording);
    EXPECT_EQ(this->calls(), joined({Test::stagesMade({1, 2, 3}, texts, true), Test::enabledByCreating({}),
                                     Test::opened(1), Test::sent({})}));
    EXPECT_TRUE(this->effect.created);
    EXPECT_TRUE(this->effect.dirty);
    this->effect.postprocess();
    EXPECT_FALSE(this->effect.dirty);
    EXPECT_THAT(this->calls(), IsEmpty());
    this->effect.cleanup();
    EXPECT_EQ(this->calls(), Test::closed());
}

TYPED_TEST(Impostors_calls_test, deliberatelyPassOfCleanEffectSendsNothing) {
    using Test = Impostors_calls_test<TypeParam>;
    runPass(this->effect);
    this->recording.clear();
    runPass(this->effect);
    EXPECT_EQ(this->calls(), joined({Test::opened(1), Test::closed()}));
}

TYPED_TEST(Impostors_calls_test, dirtyPassSendsWhatIsKeptAndThenParameters) {
    using Test = Impostors_calls_test<TypeParam>;
    runPass(this->effect);
    Test::setAll(this->effect);
    this->recording.clear();
    this->effect.preprocess();
    EXPECT_EQ(this->calls(),
              joined({{Test::programUsed()}, Test::sent({}), Test::opened(3), Test::sent(Test::allSet())}));
}

TYPED_TEST(Impostors_calls_test, initUsesProgram) {
    this->effect.init();
    EXPECT_THAT(this->calls(), ElementsAre("glUseProgram(0)"));
    this->effect.create();
    this->recording.clear();
    this->effect.init();
    EXPECT_THAT(this->calls(), ElementsAre(this->programUsed()));
}

TYPED_TEST(Impostors_calls_test, stagesAreKeptInTheirSlots) {
    this->effect.create();
    ASSERT_NE(this->effect.stage1, nullptr);
    ASSERT_NE(this->effect.stage2, nullptr);
    EXPECT_EQ(this->effect.stage1->getID(0), 1U);
    EXPECT_EQ(this->effect.stage2->getID(0), 2U);
    EXPECT_EQ(this->effect.stage3 == nullptr, this->IS_POINT);
    EXPECT_TRUE(this->effect.created);
}

TYPED_TEST(Impostors_calls_test, primitivesAreSetThroughLayer) {
    this->effect.create();
    if (this->IS_POINT) {
        EXPECT_THAT(this->layer.asked("programParameterI"), IsEmpty());
    } else {
        EXPECT_THAT(this->layer.asked("programParameterI"),
                    ElementsAre("programParameterI(4, 36315, 0)",
                                std::string("programParameterI(4, 36316, ") + (this->IS_ARROW ? "3)" : "5)"),
                                "programParameterI(4, 36314, 8)"));
    }
}

TYPED_TEST(Impostors_calls_test, afterReloadingPassMakesNewStages) {
    using Test = Impostors_calls_test<TypeParam>;
    runPass(this->effect);
    this->recording.clear();
    this->effect.reload();
    EXPECT_TRUE(this->effect.dirty);
    EXPECT_FALSE(this->effect.created);
    Texts deleted;
    for (unsigned int const stage : {2U, 1U, 3U}) {
        if (stage < 3 || !this->IS_POINT) {
            deleted.push_back(paired("glDetachShader", Test::PROGRAM, stage));
            deleted.push_back(numbered("glDeleteShader", stage));
        }
    }
    EXPECT_EQ(this->calls(), deleted);
    this->effect.preprocess();
    Texts const texts = stageTexts(this->recording);
    unsigned int const next = Test::PROGRAM + 1;
    EXPECT_EQ(this->calls(),
              joined({Test::stagesMade({next, next + 1, next + 2}, texts, false),
                      Test::enabledByCreating(Test::sent({})), Test::opened(1), Test::sent({})}));
}

TYPED_TEST(Impostors_calls_test, programIsDeletedBeforeStages) {
    using Test = Impostors_calls_test<TypeParam>;
    {
        TypeParam made{Base_shader::ProcessType(0)};
        runPass(made);
        this->recording.clear();
    }
    Texts deleted{Test::inProgram("glDeleteProgram(", ")"), "glDeleteShader(1)", "glDeleteShader(2)"};
    if (!this->IS_POINT) {
        deleted.emplace_back("glDeleteShader(3)");
    }
    EXPECT_EQ(this->calls(), deleted);
    EXPECT_EQ(this->driver.liveObjects(), 0U);
}

TYPED_TEST(Impostors_calls_test, creatingTwiceLeavesNothingBehind) {
    {
        TypeParam made{Base_shader::ProcessType(0)};
        made.create();
        made.create();
        runPass(made);
    }
    EXPECT_EQ(this->driver.liveObjects(), 0U);
}

TYPED_TEST(Impostors_calls_test, differentValueMarksEffectDirty) {
    Open<TypeParam>& effect = this->effect;
    float const nan = std::numeric_limits<float>::quiet_NaN();
    std::vector<std::function<void()>> const changes{
        [&] { effect.setLightPosition(9, 1, 0, 0); },
        [&] { effect.setLightPosition(9, 9, 0, 0); },
        [&] { effect.setLightPosition(9, 9, 9, 0); },
        [&] { effect.setLightPosition(9, 9, 9, 9); },
        [&] { effect.setNLights(2); },
        [&] {
            effect.setMinColor({0, 1, 1, 1});
        },
        [&] {
            effect.setMinColor({0, 0, 1, 1});
        },
        [&] {
            effect.setMinColor({0, 0, 0, 1});
        },
        [&] {
            effect.setMinColor({0, 0, 0, 0});
        },
        [&] {
            effect.setMaxColor({0, 0, 0, 0});
        },
        [&] {
            effect.setMaxColor({0, 0, 0, 1});
        },
        [&] {
            effect.setMaxClampColor({0, 0, 0, 1});
        },
        [&] {
            effect.setMaxClampColor({0, 0, 0, 0});
        },
        [&] { effect.setMinMagnitude(std::nextafter(0.0F, 1.0F)); },
        [&] { effect.setMaxMagnitude(std::nextafter(1.0F, 2.0F)); },
        [&] { effect.setMagnitudeScale(2); },
        [&] { effect.setSize(2); },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        effect.dirty = false;
        changes[i]();
        EXPECT_TRUE(effect.dirty) << i;
        changes[i]();
        EXPECT_TRUE(effect.dirty) << i;
        effect.dirty = false;
        changes[i]();
        EXPECT_FALSE(effect.dirty) << i;
    }
    effect.setSize(nan);
    effect.dirty = false;
    effect.setSize(nan);
    EXPECT_TRUE(effect.dirty);
    EXPECT_THAT(this->calls(), IsEmpty());
}

TYPED_TEST(Impostors_calls_test, defaultValuesLeaveEffectClean) {
    Open<TypeParam>& effect = this->effect;
    effect.dirty = false;
    effect.setLightPosition(1, 1, 0, 0);
    effect.setNLights(1);
    effect.setMinColor({0.6666667F, 1, 1, 1});
    effect.setMaxColor({0, 0.21568627F, 0.31764707F, 1});
    effect.setMaxClampColor({1, 0, 1, 1});
    effect.setMinMagnitude(0);
    effect.setMaxMagnitude(1);
    EXPECT_FALSE(effect.dirty);
}

TYPED_TEST(Impostors_calls_test, deliberatelyCopyTakesNeitherLightsNorProcessType) {
    Open<TypeParam> source{Base_shader::ProcessType(4)};
    this->setAll(source);
    runPass(source);
    this->recording.clear();
    Open<TypeParam> const made(source);
    EXPECT_TRUE(made.dirty);
    EXPECT_FALSE(made.created);
    EXPECT_EQ(made.stage1, nullptr);
    EXPECT_EQ(made.stage2, nullptr);
    EXPECT_EQ(made.stage3, nullptr);
    EXPECT_EQ(made.getLog(), "");
    EXPECT_EQ(made.processType(), Base_shader::ProcessType(0));
    EXPECT_THAT(this->calls(), IsEmpty());
}

TYPED_TEST(Impostors_calls_test, copySendsParametersOfItsSource) {
    using Test = Impostors_calls_test<TypeParam>;
    Test::setAll(this->effect);
    Open<TypeParam> made(this->effect);
    made.preprocess();
    Texts const texts = stageTexts(this->recording);
    EXPECT_EQ(this->calls(), joined({Test::stagesMade({1, 2, 3}, texts, true), Test::enabledByCreating({}),
                                     Test::opened(1), Test::sent(Test::allCopied())}));
}

TYPED_TEST(Impostors_calls_test, copyOfEffectInUseHasProgramOfItsOwn) {
    auto source = std::make_unique<TypeParam>(Base_shader::ProcessType(0));
    this->setAll(*source);
    runPass(*source);
    TypeParam made(*source);
    this->recording.clear();
    made.preprocess();
    std::vector<std::string> const uniforms = uniformsSent(this->recording);
    source.reset();
    made.markDirty();
    this->recording.clear();
    made.preprocess();
    // The kept uniforms come first, then the parameters again.
    EXPECT_EQ(uniformsSent(this->recording), joined({uniforms, uniforms}));
    EXPECT_THAT(uniforms, testing::Contains("maxMagnitude glUniform1fv {7}"));
}

TYPED_TEST(Impostors_calls_test, copyingKeepsOnesOwnLightsAndProcessType) {
    using Test = Impostors_calls_test<TypeParam>;
    Open<TypeParam> source{Base_shader::ProcessType(4)};
    Test::setAll(source);
    Open<TypeParam> target{Base_shader::ProcessType(2)};
    target.setLightPosition(6, 6, 6, 6);
    target.setNLights(2);
    target.copy(source);
    EXPECT_EQ(target.processType(), Base_shader::ProcessType(2));
    target.preprocess();
    std::vector<std::string> const uniforms = uniformsSent(this->recording);
    EXPECT_THAT(uniforms, testing::Contains("LightPos glUniform3fv {6, 6, 6}"));
    EXPECT_THAT(uniforms, testing::Contains("nLights glUniform1iv {2}"));
    EXPECT_THAT(uniforms, testing::Contains("size glUniform1fv {9}"));
    std::string const text = stageTexts(this->recording).at(0);
    EXPECT_EQ(text, this->vertexText(2));
}

TYPED_TEST(Impostors_calls_test, lightsAreEnabledUpTo32) {
    using Test = Impostors_calls_test<TypeParam>;
    for (unsigned int const count : {0U, 1U, 8U}) {
        this->effect.setNLights(count);
        runPass(this->effect);
        this->recording.clear();
        runPass(this->effect);
        EXPECT_EQ(this->calls(), joined({Test::opened(count), Test::closed()}));
    }
    this->effect.setNLights(0xFFFFFFFFU);
    runPass(this->effect);
    this->recording.clear();
    runPass(this->effect);
    EXPECT_EQ(this->recording.count("glEnable"), 34U) << "lighting, blending and 32 lights";
}

TYPED_TEST(Impostors_calls_test, logIsProgramInfoLog) {
    this->driver.programStatus(false, "does not link");
    this->effect.preprocess();
    EXPECT_EQ(this->effect.getLog(), "does not link");
    this->driver.programStatus(true, "fine");
    EXPECT_EQ(this->effect.getLog(), "does not link");
    this->effect.reload();
    this->effect.preprocess();
    EXPECT_EQ(this->effect.getLog(), "fine");
    EXPECT_EQ(this->effect.getCompilationLog(), "");
}

TYPED_TEST(Impostors_calls_test, passRunsWithoutLayer) {
    Core_RL* const former = VL_Raster;
    VL_Raster = nullptr;
    runPass(this->effect);
    VL_Raster = former;
    EXPECT_TRUE(this->effect.created);
}

TYPED_TEST(Impostors_calls_test, failedCompileStopsNoPass) {
    using Test = Impostors_calls_test<TypeParam>;
    this->driver.shaderStatus(false, "bad");
    StreamCapture const output(std::cout);
    runPass(this->effect);
    std::string const printed = "bad\n\nwhen compiling:\nasdf\n";
    EXPECT_EQ(output.text(), this->IS_POINT ? printed + printed : printed + printed + printed);
    EXPECT_EQ(this->recording.count("glAttachShader"), 0U);
    this->recording.clear();
    runPass(this->effect);
    EXPECT_EQ(this->calls(), joined({Test::opened(1), Test::closed()}));
}

TYPED_TEST(Impostors_calls_test, processTypesChooseVertexStage) {
    std::vector<std::string> texts;
    for (unsigned int type = 0; type < 5; ++type) {
        texts.push_back(this->vertexText(type));
        for (unsigned int other = 0; other < type; ++other) {
            EXPECT_NE(texts[type], texts[other]) << type << " and " << other;
        }
    }
    // Deliberate (process-types-above-4): the length for two of the effects, the constant color for the
    // third.
    for (unsigned int const type : {5U, 7U, 0xFFFFFFFFU}) {
        EXPECT_EQ(this->vertexText(type), texts[this->IS_ARROW ? 4 : 0]) << type;
    }
}

TYPED_TEST(Impostors_calls_test, processTypesChooseMagnitude) {
    EXPECT_THAT(this->vertexText(0), HasSubstr("length(gl_Color.rgb)"));
    EXPECT_THAT(this->vertexText(1), HasSubstr("length(gl_Color.rrr)"));
    EXPECT_THAT(this->vertexText(2), HasSubstr("length(gl_Color.ggg)"));
    EXPECT_THAT(this->vertexText(3), HasSubstr("length(gl_Color.bbb)"));
}

TYPED_TEST(Impostors_calls_test, geometryStageHasDialectOfDriver) {
    // Both dialects have the same text from the first `void` on.
    auto const bodyOf = [](std::string const& text) { return text.substr(text.find("void ")); };
    std::string const extensionLines = "#version 120\n#extension GL_EXT_geometry_shader4: enable\n";
    this->effect.create();
    Texts const texts = stageTexts(this->recording);
    ASSERT_EQ(texts.size(), this->IS_POINT ? 2U : 3U);
    if (this->IS_POINT) {
        return;
    }
    std::string const& extension = texts[2];
    EXPECT_THAT(extension, StartsWith(extensionLines));

    gl_spy::Script driver = gl_spy::drivers::noExtensions();
    auto const geometryText = [&](char const* version) {
        driver.string(VERSION_STRING, version);
        Core_RL_GL const layer;
        TypeParam made{Base_shader::ProcessType(0)};
        this->recording.clear();
        made.create();
        return stageTexts(this->recording).at(2);
    };
    for (char const* const version : {"3.2.0", "4.5 (Compatibility Profile) Mesa 22.3.6"}) {
        std::string const core = geometryText(version);
        EXPECT_THAT(core, StartsWith(std::string("#version 150 compatibility\nlayout(points) in;\nlayout(") +
                                     (this->IS_ARROW ? "line_strip" : "triangle_strip") +
                                     ", max_vertices = 8) out;\n"))
            << version;
        EXPECT_EQ(bodyOf(core), bodyOf(extension)) << version;
        EXPECT_EQ(this->recording.count("glProgramParameteriEXT"), 0U) << version;
    }
    for (char const* const version : {"2.1.0", "3.1 Mesa", "3", ""}) {
        EXPECT_THAT(geometryText(version), StartsWith(extensionLines)) << version;
        EXPECT_EQ(this->recording.count("glProgramParameteriEXT"), 3U) << version;
    }
    VL_Raster = &this->layer;
}

TYPED_TEST(Impostors_calls_test, vertexStagesHaveTheirUniforms) {
    for (unsigned int type = 0; type < 4; ++type) {
        std::string const text = this->vertexText(type);
        EXPECT_THAT(text, Not(HasSubstr("#version")));
        for (char const* part :
             {"uniform float maxMagnitude;", "uniform float minMagnitude;", "uniform float magnitudeScale;",
              "uniform vec3 minColor;", "uniform vec3 maxColor;", "uniform vec3 maxClampColor;", "1.0e-14",
              "gl_TexCoord[0] = gl_MultiTexCoord0;"}) {
            EXPECT_THAT(text, HasSubstr(part));
        }
        EXPECT_EQ(text.find("uniform float size;") == std::string::npos, this->IS_ARROW);
        // Deliberate (full-rate): a full rate has the clamp color for arrows only.
        EXPECT_THAT(text, HasSubstr(this->IS_ARROW ? "rate < 1.0" : "rate > 1.0"));
    }
    EXPECT_THAT(this->vertexText(4), Not(HasSubstr("rate")));
    EXPECT_THAT(this->vertexText(4), HasSubstr("maxColor"));
}

TYPED_TEST(Impostors_calls_test, stagesPassOnNeededVaryings) {
    this->effect.create();
    Texts const texts = stageTexts(this->recording);
    if (this->IS_POINT) {
        ASSERT_EQ(texts.size(), 2U);
        EXPECT_THAT(texts[0], HasSubstr("gl_ModelViewProjectionMatrix * gl_Vertex"));
        EXPECT_THAT(texts[0], HasSubstr("varying float vradius;"));
        EXPECT_THAT(texts[1], HasSubstr("gl_FragColor = gl_Color;"));
        return;
    }
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_THAT(texts[0], HasSubstr("gl_Position = gl_Vertex;"));
    EXPECT_THAT(texts[0], HasSubstr("varying mat4 matrix;"));
    EXPECT_THAT(texts[0], HasSubstr(this->IS_ARROW ? "varying vec3 magnitude;" : "varying float vradius;"));
    EXPECT_THAT(texts[1], HasSubstr(this->IS_ARROW ? "gl_FragColor = gl_Color;" : "discard"));
    EXPECT_THAT(texts[2], StartsWith("#version 120\n#extension GL_EXT_geometry_shader4: enable\n"));
}

// == Watched files of arrows ==

class ArrowReload_calls_test : public Effect_fixture {
protected:
    class Watched : public Open<ArrowRendering_shader> {
    public:
        using Open<ArrowRendering_shader>::Open;
        void reload() override {
            ++reloads;
            Open<ArrowRendering_shader>::reload();
        }
        int reloads = 0;
    };

    void SetUp() override {
        Effect_fixture::SetUp();
        std::filesystem::create_directory(folder.file("shaders"));
        ArrowRendering_shader::setWatchedFolder(folder.file("").c_str());
    }
    void TearDown() override { ArrowRendering_shader::setWatchedFolder("."); }

    /// Writes a file with this time. Times increase from test to test, because all arrow effects share one.
    void write(std::string const& name, long seconds) const {
        std::string const path = folder.write("shaders/" + name, "not read");
        utimbuf const times{start + seconds, start + seconds};
        ASSERT_EQ(utime(path.c_str(), &times), 0);
    }

    /// The output of one check of the files.
    std::string look() {
        StreamCapture const output(std::cout);
        effect.reloadShaders();
        return output.text();
    }

    static inline long start = 1000;
    TemporaryFolder folder;
    Watched effect{Base_shader::ProcessType(0)};
};

TEST_F(ArrowReload_calls_test, missingFilesReloadNothing) {
    EXPECT_EQ(look(), "");
    EXPECT_EQ(effect.reloads, 0);
    ArrowRendering_shader::setWatchedFolder(nullptr);
    EXPECT_EQ(look(), "");
}

TEST_F(ArrowReload_calls_test, newerFilesReloadInTheirOrder) {
    start += 1000;
    write("arrow_vertex.c", 5);
    write("arrow_geometry.c", 7);
    write("arrow_fragment.c", 6);
    EXPECT_EQ(look(), " RELOADING!\n");  // vertex
    EXPECT_EQ(look(), " RELOADING!\n");  // geometry, and the fragment stage is older
    EXPECT_EQ(look(), "");
    EXPECT_EQ(effect.reloads, 2);
    write("arrow_fragment.c", 7);
    EXPECT_EQ(look(), "");
    write("arrow_fragment.c", 8);
    EXPECT_EQ(look(), " RELOADING!\n");
    EXPECT_EQ(look(), "");
    EXPECT_EQ(effect.reloads, 3);
}

TEST_F(ArrowReload_calls_test, deliberatelyTimeIsThatOfAllArrows) {
    start += 1000;
    write("arrow_geometry.c", 1);
    EXPECT_EQ(look(), " RELOADING!\n");
    Watched other{Base_shader::ProcessType(0)};
    other.reloadShaders();
    EXPECT_EQ(other.reloads, 0);
}

TEST_F(ArrowReload_calls_test, deliberatelyFilesAreNotRead) {
    start += 1000;
    runPass(effect);
    Texts const before = stageTexts(recording);
    write("arrow_vertex.c", 1);
    EXPECT_EQ(look(), " RELOADING!\n");
    recording.clear();
    runPass(effect);
    EXPECT_EQ(stageTexts(recording), before);
}

}  // namespace

}  // namespace vellum
