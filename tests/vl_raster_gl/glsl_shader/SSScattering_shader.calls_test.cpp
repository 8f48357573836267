#include "glsl_shader/SSScattering_shader.h"

#include "Core_RL_GL.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/vl_raster_gl/glsl_shader/effect_calls.h"
#include "tests/vl_raster_gl/glsl_shader/effect_fixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace vellum {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Texts = std::vector<std::string>;

// Under the script the first names are: stages 1 and 2, program 3.
class SSScattering_shader_calls_test : public Surface_effect_calls_test {};

// == Stages ==

TEST_F(SSScattering_shader_calls_test, newEffectMakesNoCall) {
    { SSScattering_shader const effect; }
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(SSScattering_shader_calls_test, creatingEnablesOncePerParameterAndOnceMore) {
    driver.programStatus(true, "linked");
    SSScattering_shader effect;
    effect.create();
    EXPECT_TRUE(effect.created);
    EXPECT_THAT(stageKinds(recording), ElementsAre("GL_VERTEX_SHADER", "GL_FRAGMENT_SHADER"));
    EXPECT_EQ(recording.count("glLinkProgram"), 1U);
    EXPECT_EQ(recording.count("glUseProgram"), 5U) << "four parameters of a dirty effect, and the end";
    EXPECT_EQ(effect.getLog(), "linked");
    recording.clear();
    effect.postprocess();
    effect.create();
    EXPECT_EQ(recording.count("glUseProgram"), 1U) << "not dirty";
}

TEST_F(SSScattering_shader_calls_test, creatingTwiceAttachesNoSecondSet) {
    SSScattering_shader effect;
    effect.create();
    recording.clear();
    effect.create();
    EXPECT_EQ(recording.count("glDetachShader"), 2U);
    EXPECT_EQ(recording.count("glAttachShader"), 2U);
    EXPECT_EQ(driver.liveObjects(), 3U);
}

TEST_F(SSScattering_shader_calls_test, textsHaveTheirDeclarations) {
    SSScattering_shader effect;
    effect.create();
    Texts const texts = stageTexts(recording);
    for (std::string const& text : texts) {
        EXPECT_THAT(text, Not(HasSubstr("#version")));
        EXPECT_THAT(text, HasSubstr("uniform int nLights;"));
        for (char const* const varying : {"worldNormal", "eyeVec", "vertPos", "lightVec[3]", "lightPos[3]"}) {
            EXPECT_THAT(text, HasSubstr(std::string("varying vec3 ") + varying + ";"));
        }
    }
    for (char const* const uniform :
         {"float MaterialThickness", "vec3 ExtinctionCoefficient", "vec4 BaseColor", "float RimScalar"}) {
        EXPECT_THAT(texts.at(1), HasSubstr(std::string("uniform ") + uniform + ";"));
    }
}

TEST_F(SSScattering_shader_calls_test, deliberatelyHighlightsClampHasItsArgumentsInOddOrder) {
    SSScattering_shader effect;
    effect.create();
    EXPECT_THAT(stageTexts(recording).at(1), HasSubstr("clamp(0.0, 1.0, dot(n, normalize(n + l)))"));
}

// == Passes ==

TEST_F(SSScattering_shader_calls_test, initUsesProgramAndKeepsItsLog) {
    SSScattering_shader effect;
    effect.create();
    driver.programStatus(true, "later");
    recording.clear();
    effect.init();
    EXPECT_THAT(recording.texts(),
                ElementsAre("glUseProgram(3)", "glGetProgramInfoLog(3, 4096, null, pointer)"));
    EXPECT_EQ(effect.getLog(), "later");
}

TEST_F(SSScattering_shader_calls_test, passOfEffectThatIsNotInUseHasItsCallsInOrder) {
    SSScattering_shader effect;
    effect.setNLights(2);
    effect.init();
    runPass(effect);
    recording.clear();
    runPass(effect);
    EXPECT_THAT(recording.texts(),
                ElementsAre("glPushAttrib(0x6000)", "glDisable(GL_TEXTURE_2D)", "glDisable(GL_TEXTURE_3D)",
                            "glEnable(GL_LIGHTING)", "glEnable(GL_LIGHT0)", "glEnable(GL_LIGHT1)",
                            "glColor4f(1, 1, 1, 1)", "glEnable(GL_BLEND)",
                            "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
                            "glGetIntegerv(GL_VIEWPORT, pointer)",
                            "glGetProgramInfoLog(3, 4096, null, pointer)", "glUseProgram(0)",
                            "glUseProgramObjectARB(0)", "glPopAttrib()"));
}

TEST_F(SSScattering_shader_calls_test, deliberatelyPreprocessNeitherCreatesNorEnables) {
    SSScattering_shader effect;
    effect.preprocess();
    EXPECT_FALSE(effect.created);
    EXPECT_EQ(recording.count("glCreateShader"), 0U);
    EXPECT_EQ(recording.count("glUseProgram"), 0U);
    EXPECT_EQ(effect.getLog(), "");
    effect.cleanup();
    effect.create();
    effect.cleanup();
    effect.markDirty();
    recording.clear();
    effect.preprocess();
    EXPECT_EQ(recording.count("glUseProgram"), 0U) << "dirty as it is";
}

TEST_F(SSScattering_shader_calls_test, uniformsAreSentInTheirOrderWithFirstValues) {
    SSScattering_shader effect;
    effect.create();
    recording.clear();
    effect.preprocess();
    EXPECT_THAT(uniformsSent(recording),
                ElementsAre("FrameWidth glUniform1fv {1000}", "FrameHeight glUniform1fv {600}",
                            "textureWidth glUniform1fv {1024}", "textureHeight glUniform1fv {1024}",
                            "MaterialThickness glUniform1fv {0.1}", "RimScalar glUniform1fv {0.2}",
                            "ExtinctionCoefficient glUniform3fv {0.5, 0.5, 0.5}",
                            "BaseColor glUniform4fv {0.8, 0.8, 0.8, 1}", "nLights glUniform1iv {1}"));
}

TEST_F(SSScattering_shader_calls_test, parametersArriveInUniforms) {
    SSScattering_shader effect;
    effect.setBaseColor(1, 2, 3, 4);
    effect.setMaterialThickness(5);
    effect.setExtinctionCoefficient(6, 7, 8);
    effect.setRimScalar(9);
    effect.setNLights(10);
    recording.clear();
    effect.preprocess();
    Texts const sent = uniformsSent(recording);
    for (char const* const uniform : {"MaterialThickness glUniform1fv {5}", "RimScalar glUniform1fv {9}",
                                      "ExtinctionCoefficient glUniform3fv {6, 7, 8}",
                                      "BaseColor glUniform4fv {1, 2, 3, 4}", "nLights glUniform1iv {10}"}) {
        EXPECT_THAT(sent, Contains(uniform));
    }
    effect.setExtinctionCoefficient(Color4<float>{0.1F, 0.2F, 0.3F, 0.4F});
    recording.clear();
    effect.preprocess();
    EXPECT_THAT(uniformsSent(recording), Contains("ExtinctionCoefficient glUniform3fv {0.1, 0.2, 0.3}"));
}

// == Parameters ==

TEST_F(SSScattering_shader_calls_test, setterEnablesWhenValueDiffersOrEffectIsDirty) {
    struct Row {
        char const* name;
        std::function<void(SSScattering_shader&, float)> set;
    };
    std::vector<Row> const rows{
        {"base color", [](auto& effect, float v) { effect.setBaseColor(1, 1, 1, v); }},
        {"thickness", [](auto& effect, float v) { effect.setMaterialThickness(v); }},
        {"extinction", [](auto& effect, float v) { effect.setExtinctionCoefficient(1, 1, v); }},
        {"extinction as a color",
         [](auto& effect, float v) {
             effect.setExtinctionCoefficient(Color4<float>{1, 1, 1, v});
         }},
        {"rim", [](auto& effect, float v) { effect.setRimScalar(v); }},
        {"lights", [](auto& effect, float v) { effect.setNLights(static_cast<unsigned int>(v)); }}};
    for (Row const& row : rows) {
        SSScattering_shader effect;
        recording.clear();
        row.set(effect, 7);
        EXPECT_TRUE(effect.created) << row.name;
        unsigned int const id = static_cast<unsigned int>(recording.named("glCreateProgram").size());
        EXPECT_EQ(id, 1U) << row.name << ": the first setter creates the effect";

        recording.clear();
        row.set(effect, 7);
        EXPECT_EQ(recording.count("glUseProgram"), 1U) << row.name << ": the same, but dirty";
        effect.postprocess();
        recording.clear();
        row.set(effect, 7);
        EXPECT_THAT(recording.texts(), IsEmpty()) << row.name << ": the same";
        row.set(effect, 8);
        EXPECT_EQ(recording.count("glUseProgram"), 1U) << row.name << ": another value";
        recording.clear();
        row.set(effect, 8);
        EXPECT_THAT(recording.texts(), IsEmpty()) << row.name << ": another value does not make it dirty";
    }
}

TEST_F(SSScattering_shader_calls_test, changedValueArrivesThoughEffectIsNotDirty) {
    SSScattering_shader effect;
    effect.create();
    effect.init();
    runPass(effect);
    effect.setRimScalar(5);
    effect.init();
    recording.clear();
    effect.preprocess();
    EXPECT_THAT(uniformsSent(recording), Contains("RimScalar glUniform1fv {5}"));
}

TEST_F(SSScattering_shader_calls_test, nanAlwaysDiffers) {
    SSScattering_shader effect;
    effect.setRimScalar(NAN);
    effect.setMaterialThickness(NAN);
    effect.postprocess();
    recording.clear();
    effect.setRimScalar(NAN);
    EXPECT_EQ(recording.count("glUseProgram"), 1U);
    effect.reload();
    effect.create();
    EXPECT_TRUE(effect.created);
}

// == Copies ==

TEST_F(SSScattering_shader_calls_test, copyTakesThicknessExtinctionAndRimAlone) {
    SSScattering_shader original;
    original.setBaseColor(1, 0, 0, 1);
    original.setMaterialThickness(3);
    original.setExtinctionCoefficient(4, 5, 6);
    original.setRimScalar(7);
    original.setNLights(2);
    recording.clear();
    SSScattering_shader copy(original);
    EXPECT_THAT(recording.texts(), IsEmpty());
    EXPECT_FALSE(copy.created);
    copy.create();
    recording.clear();
    copy.preprocess();
    Texts const sent = uniformsSent(recording);
    for (char const* const uniform :
         {"MaterialThickness glUniform1fv {3}", "RimScalar glUniform1fv {7}",
          "ExtinctionCoefficient glUniform3fv {4, 5, 6}", "BaseColor glUniform4fv {0.8, 0.8, 0.8, 1}",
          "nLights glUniform1iv {1}"}) {
        EXPECT_THAT(sent, Contains(uniform));
    }
    copy.cleanup();
    copy.postprocess();
    recording.clear();
    copy.copy(original);
    EXPECT_THAT(recording.texts(), IsEmpty()) << "nothing differs";
    original.setRimScalar(8);
    recording.clear();
    copy.copy(original);
    EXPECT_EQ(recording.count("glUseProgram"), 1U);
}

}  // namespace
}  // namespace vellum
