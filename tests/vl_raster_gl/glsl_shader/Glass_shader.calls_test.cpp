#include "glsl_shader/Glass_shader.h"

#include "Core_RL_GL.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/vl_raster_gl/glsl_shader/effect_calls.h"
#include "tests/vl_raster_gl/glsl_shader/effect_fixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
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

// Under the script the first names are: environment texture 1, refraction texture 2, stages 3 and 4,
// program 5.
class Glass_shader_calls_test : public Textured_effect_calls_test {};

// == Textures ==

TEST_F(Glass_shader_calls_test, effectOwnsTwoTextures) {
    { Glass_shader const effect; }
    EXPECT_THAT(recording.texts(), ElementsAre("glGenTextures(1, pointer)", "glGenTextures(1, pointer)",
                                               "glDeleteTextures(1, {1})", "glDeleteTextures(1, {2})"));
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Glass_shader_calls_test, everythingIsDeletedWithEffect) {
    {
        Glass_shader effect;
        effect.init();
        runPass(effect);
        effect.create();
    }
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Glass_shader_calls_test, effectWithoutRenderLayerHasNoTextures) {
    VL_Raster = nullptr;
    Glass_shader effect;
    effect.setEnvironmentTexture(picture.c_str());
    effect.init();
    runPass(effect);
    EXPECT_EQ(recording.count("glGenTextures"), 0U);
}

TEST_F(Glass_shader_calls_test, anotherEnvironmentIsLoadedAtOnce) {
    Glass_shader effect;
    effect.create();
    effect.postprocess();
    recording.clear();
    effect.setEnvironmentTexture(picture.c_str());
    ASSERT_EQ(recording.count("glTexImage2D"), 1U);
    EXPECT_EQ(recording.named("glTexImage2D").at(0).arguments.at(2), "GL_RGB");
    EXPECT_THAT(recording.texts(), Contains("glBindTexture(GL_TEXTURE_2D, 1)"));
    recording.clear();
    effect.setEnvironmentTexture(picture.c_str());
    EXPECT_THAT(recording.texts(), IsEmpty()) << "the same path";
    effect.markDirty();
    effect.setEnvironmentTexture(picture.c_str());
    EXPECT_EQ(recording.count("glTexImage2D"), 1U) << "the same path, dirty";
}

TEST_F(Glass_shader_calls_test, missingAndEmptyEnvironmentsOnlyDeleteTexture) {
    Glass_shader effect;
    recording.clear();
    effect.setEnvironmentTexture("/does/not/exist.png");
    effect.setEnvironmentTexture("");
    EXPECT_THAT(recording.texts(), ElementsAre("glDeleteTextures(1, {1})", "glDeleteTextures(1, {1})"));
}

TEST_F(Glass_shader_calls_test, creatingDirtyEffectLoadsEnvironment) {
    Glass_shader effect;
    effect.setEnvironmentTexture(picture.c_str());
    recording.clear();
    effect.create();
    EXPECT_EQ(recording.count("glTexImage2D"), 1U);
    recording.clear();
    effect.postprocess();
    effect.create();
    EXPECT_EQ(recording.count("glTexImage2D"), 0U) << "not dirty";
}

// == Stages ==

TEST_F(Glass_shader_calls_test, creatingLoadsTwoStagesAndKeepsLog) {
    driver.programStatus(true, "linked");
    Glass_shader effect;
    effect.create();
    EXPECT_TRUE(effect.created);
    EXPECT_THAT(stageKinds(recording), ElementsAre("GL_VERTEX_SHADER", "GL_FRAGMENT_SHADER"));
    EXPECT_THAT(recording.texts(), Contains("glAttachShader(5, 3)"));
    EXPECT_THAT(recording.texts(), Contains("glAttachShader(5, 4)"));
    EXPECT_THAT(recording.texts(), Contains("glUseProgram(5)"));
    EXPECT_EQ(effect.getLog(), "linked");
}

TEST_F(Glass_shader_calls_test, textsHaveTheirDeclarations) {
    Glass_shader effect;
    effect.create();
    Texts const texts = stageTexts(recording);
    for (std::string const& text : texts) {
        EXPECT_THAT(text, Not(HasSubstr("#version")));
        EXPECT_THAT(text, HasSubstr("const int nLights = gl_MaxLights;"));
        for (char const* const varying :
             {"vec3 Normal", "vec3 EyeDir", "vec4 EyePos", "float LightIntensity[nLights]"}) {
            EXPECT_THAT(text, HasSubstr(std::string("varying ") + varying + ";"));
        }
    }
    for (char const* const uniform :
         {"vec3 BaseColor", "float Depth", "float MixRatio", "float FrameWidth", "float FrameHeight",
          "float textureWidth", "float textureHeight", "sampler2D EnvMap", "sampler2D RefractionMap"}) {
        EXPECT_THAT(texts.at(1), HasSubstr(std::string("uniform ") + uniform + ";"));
    }
    EXPECT_THAT(texts.at(0), HasSubstr("gl_TexCoord[0].xy = gl_Vertex.xz + 0.5;"));
}

TEST_F(Glass_shader_calls_test, creatingTwiceAttachesNoSecondSet) {
    Glass_shader effect;
    effect.create();
    recording.clear();
    effect.create();
    EXPECT_EQ(recording.count("glDetachShader"), 2U);
    EXPECT_EQ(recording.count("glDeleteShader"), 2U);
    EXPECT_EQ(recording.count("glAttachShader"), 2U);
    EXPECT_EQ(recording.count("glCreateProgram"), 0U);
}

TEST_F(Glass_shader_calls_test, reloadingCreatesAgainInNextPass) {
    Glass_shader effect;
    runPass(effect);
    effect.reload();
    recording.clear();
    runPass(effect);
    EXPECT_EQ(recording.count("glCreateShader"), 2U);
    EXPECT_EQ(recording.count("glLinkProgram"), 1U);
}

// == Passes ==

TEST_F(Glass_shader_calls_test, initCopiesFrameRoundedUpToPowersOfTwo) {
    Glass_shader effect;
    recording.clear();
    effect.init();
    EXPECT_THAT(recording.texts(),
                ElementsAre("glGetIntegerv(GL_VIEWPORT, pointer)", "glBindTexture(GL_TEXTURE_2D, 2)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)",
                            "glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 0, 0, 1024, 1024, 0)"));
}

TEST_F(Glass_shader_calls_test, passThatIsNotDirtyHasItsCallsInOrder) {
    driver.uniformLocation("EnvMap", 8).uniformLocation("RefractionMap", 9);
    Glass_shader effect;
    effect.setNLights(2);
    runPass(effect);
    recording.clear();
    runPass(effect);
    EXPECT_THAT(
        recording.texts(),
        ElementsAre(
            "glPushAttrib(0x6000)", "glDisable(GL_TEXTURE_2D)", "glDisable(GL_TEXTURE_3D)",
            "glEnable(GL_LIGHTING)", "glEnable(GL_LIGHT0)", "glEnable(GL_LIGHT1)", "glColor4f(1, 1, 1, 1)",
            "glEnable(GL_BLEND)", "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
            "glGetIntegerv(GL_VIEWPORT, pointer)", "glUseProgram(5)",
            // the environment
            "glUseProgram(5)", "glGetUniformLocation(5, \"EnvMap\")", "glActiveTexture(GL_TEXTURE0)",
            "glBindTexture(GL_TEXTURE_2D, 1)", "glUniform1i(8, 0)",
            // the copy of the framebuffer
            "glUseProgram(5)", "glGetUniformLocation(5, \"RefractionMap\")", "glActiveTexture(GL_TEXTURE1)",
            "glBindTexture(GL_TEXTURE_2D, 2)", "glUniform1i(9, 1)",
            // the end
            "glUseProgram(0)", "glUseProgramObjectARB(0)", "glPopAttrib()", "glDeleteTextures(1, {2})"));
}

TEST_F(Glass_shader_calls_test, uniformsAreSentInTheirOrderWithFirstValues) {
    Glass_shader effect;
    effect.create();
    recording.clear();
    effect.preprocess();
    EXPECT_THAT(uniformsSent(recording),
                ElementsAre("BaseColor glUniform3fv {0, 1, 0}", "LightPos glUniform3fv {1, 1, 0}",
                            "Depth glUniform1fv {0.1}", "MixRatio glUniform1fv {1}",
                            "FrameWidth glUniform1fv {1000}", "FrameHeight glUniform1fv {600}",
                            "textureWidth glUniform1fv {1024}", "textureHeight glUniform1fv {1024}",
                            "EnvMap glUniform1i 0", "RefractionMap glUniform1i 1",
                            "nLights glUniform1iv {1}"));
    recording.clear();
    effect.postprocess();
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Glass_shader_calls_test, parametersArriveInUniforms) {
    Glass_shader effect;
    effect.setBaseColor(0.1F, 0.2F, 0.3F, 0.4F);
    effect.setLightPosition(5, 6, 7, 8);
    effect.setDepth(2);
    effect.setMixRatio(3);
    effect.setNLights(4);
    effect.create();
    recording.clear();
    effect.preprocess();
    Texts const sent = uniformsSent(recording);
    for (char const* const uniform :
         {"BaseColor glUniform3fv {0.1, 0.2, 0.3}", "LightPos glUniform3fv {5, 6, 7}",
          "Depth glUniform1fv {2}", "MixRatio glUniform1fv {3}", "nLights glUniform1iv {4}"}) {
        EXPECT_THAT(sent, Contains(uniform));
    }
    EXPECT_THAT(recording.texts(), Contains("glEnable(GL_LIGHT3)"));
}

// == Parameters ==

TEST_F(Glass_shader_calls_test, onlyDifferentValueMakesEffectDirty) {
    Glass_shader effect;
    runPass(effect);
    EXPECT_FALSE(isSent(effect, recording));
    effect.setBaseColor(0, 1, 0, 1);
    effect.setLightPosition(1, 1, 0, 0);
    effect.setDepth(0.1F);
    effect.setMixRatio(1);
    effect.setNLights(1);
    EXPECT_FALSE(isSent(effect, recording)) << "the same values";
    effect.setBaseColor(0, 1, 0, 0.5F);
    EXPECT_TRUE(isSent(effect, recording));
    effect.setLightPosition(1, 1, 0, 1);
    EXPECT_TRUE(isSent(effect, recording));
    effect.setDepth(0.2F);
    effect.setDepth(0.2F);
    EXPECT_TRUE(isSent(effect, recording)) << "the second call does not take it back";
    effect.setMixRatio(2);
    EXPECT_TRUE(isSent(effect, recording));
    effect.setNLights(2);
    EXPECT_TRUE(isSent(effect, recording));
    EXPECT_FALSE(isSent(effect, recording));
}

TEST_F(Glass_shader_calls_test, settersMakeNoCall) {
    Glass_shader effect;
    recording.clear();
    effect.setBaseColor(1, 1, 1, 1);
    effect.setLightPosition(2, 2, 2, 2);
    effect.setDepth(NAN);
    effect.setMixRatio(INFINITY);
    effect.setNLights(2);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Glass_shader_calls_test, wildNumberOfLightsEnds) {
    Glass_shader effect;
    effect.setNLights(0xFFFFFFFF);
    effect.preprocess();
    EXPECT_THAT(uniformsSent(recording), Contains("nLights glUniform1iv {-1}"));
    EXPECT_LT(recording.count("glEnable"), 50U);
    effect.cleanup();
}

// == Copies ==

TEST_F(Glass_shader_calls_test, copyTakesDepthMixRatioAndEnvironmentAlone) {
    Glass_shader original;
    original.setDepth(3);
    original.setMixRatio(4);
    original.setBaseColor(1, 1, 1, 1);
    original.setLightPosition(9, 9, 9, 9);
    original.setNLights(2);
    original.setEnvironmentTexture(picture.c_str());
    original.create();
    recording.clear();
    Glass_shader copy(original);
    EXPECT_THAT(recording.texts(), ElementsAre("glGenTextures(1, pointer)", "glGenTextures(1, pointer)"));
    EXPECT_FALSE(copy.created);
    copy.create();
    EXPECT_EQ(recording.count("glTexImage2D"), 1U) << "the environment, in a texture of its own";
    recording.clear();
    copy.preprocess();
    Texts const sent = uniformsSent(recording);
    for (char const* const uniform :
         {"BaseColor glUniform3fv {0, 1, 0}", "LightPos glUniform3fv {1, 1, 0}", "Depth glUniform1fv {3}",
          "MixRatio glUniform1fv {4}", "nLights glUniform1iv {1}"}) {
        EXPECT_THAT(sent, Contains(uniform));
    }
    copy.cleanup();
}

TEST_F(Glass_shader_calls_test, copyingIntoCreatedEffectLoadsEnvironment) {
    Glass_shader original;
    original.setEnvironmentTexture(picture.c_str());
    Glass_shader effect;
    runPass(effect);
    recording.clear();
    effect.copy(original);
    EXPECT_EQ(recording.count("glTexImage2D"), 1U);
    recording.clear();
    effect.copy(original);
    effect.copy(effect);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

}  // namespace
}  // namespace vellum
