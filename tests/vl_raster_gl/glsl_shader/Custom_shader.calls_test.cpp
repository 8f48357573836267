#include "glsl_shader/Custom_shader.h"

#include "Core_RL_GL.h"
#include "Shader_gl.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/StreamCapture.h"
#include "tests/vl_raster_gl/glsl_shader/effect_calls.h"
#include "tests/vl_raster_gl/glsl_shader/effect_fixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <iostream>
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

constexpr int WRONG_INDICES[] = {-1, 10, 11, INT_MAX, INT_MIN};

// Under the script the first names are: textures 1 to 8, fragment stage 9, vertex stage 10, and, without a
// geometry stage, program 11.
class Custom_shader_calls_test : public Textured_effect_calls_test {
protected:
    VL_String path(std::string const& name, std::string const& text) const {
        return folder.write(name, text).c_str();
    }
};

// == Life ==

TEST_F(Custom_shader_calls_test, effectOwnsEightTextures) {
    { Custom_shader const effect; }
    EXPECT_EQ(recording.count("glGenTextures"), 8U);
    EXPECT_EQ(recording.count("glDeleteTextures"), 8U);
    EXPECT_EQ(recording.calls().size(), 16U);
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Custom_shader_calls_test, everythingIsDeletedWithEffect) {
    {
        Custom_shader effect;
        effect.grabFrameBuffer(true);
        effect.init();
        runPass(effect);
        effect.setShaders(path("a.vert", "vertex"), path("a.frag", "fragment"), "");
    }
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Custom_shader_calls_test, effectWithoutRenderLayerHasNoTextures) {
    VL_Raster = nullptr;
    Custom_shader effect;
    effect.setTexture(picture.c_str(), 0);
    effect.init();
    runPass(effect);
    EXPECT_EQ(recording.count("glGenTextures"), 0U);
}

// == Stages ==

TEST_F(Custom_shader_calls_test, threeEmptyPathsGivePassingStagesAndNoGeometryStage) {
    Custom_shader effect;
    effect.setShaders("", "", "");
    EXPECT_TRUE(effect.created);
    EXPECT_THAT(stageKinds(recording), ElementsAre("GL_FRAGMENT_SHADER", "GL_VERTEX_SHADER"));
    EXPECT_THAT(stageTexts(recording),
                ElementsAre(Shader_gl::fragmentPassThrough(), Shader_gl::vertexPassThrough()));
    EXPECT_EQ(recording.count("glProgramParameteriEXT"), 0U);
    EXPECT_THAT(recording.texts(), Contains("glUseProgram(11)"));
    EXPECT_EQ(recording.texts().back(), "glGetError()");
}

TEST_F(Custom_shader_calls_test, samePathsSecondTimeDoNothing) {
    Custom_shader effect;
    VL_String const vertex = path("a.vert", "vertex");
    VL_String const fragment = path("a.frag", "fragment");
    effect.setShaders(vertex, fragment, "");
    recording.clear();
    effect.setShaders(vertex, fragment, "");
    EXPECT_THAT(recording.texts(), IsEmpty());
    effect.setShaders(vertex, "", "");
    EXPECT_THAT(stageTexts(recording), ElementsAre(Shader_gl::fragmentPassThrough(), "vertex\n"))
        << "one path alone loads all stages again";
}

TEST_F(Custom_shader_calls_test, filesAreLoadedFragmentFirst) {
    Custom_shader effect;
    effect.setShaders(path("a.vert", "vertex text"), path("a.frag", "fragment text"), "");
    EXPECT_THAT(stageTexts(recording), ElementsAre("fragment text\n", "vertex text\n"));
}

TEST_F(Custom_shader_calls_test, otherPathsReplaceStagesSecondFirstThird) {
    gl_spy::Script extended = gl_spy::drivers::geometryShader4();
    Core_RL_GL newLayer;
    Custom_shader effect;
    effect.setShaders("", "", path("a.geom", "geometry"));
    recording.clear();
    effect.setShaders(path("a.vert", "vertex"), "", "");
    Texts const calls = recording.texts();
    ASSERT_GE(calls.size(), 6U);
    EXPECT_THAT(Texts(calls.begin(), calls.begin() + 6),
                ElementsAre(StartsWith("glDetachShader("), "glDeleteShader(9)", StartsWith("glDetachShader("),
                            "glDeleteShader(10)", StartsWith("glDetachShader("), "glDeleteShader(11)"));
    EXPECT_EQ(recording.count("glAttachShader"), 2U);
    EXPECT_EQ(recording.count("glLinkProgram"), 1U);
}

TEST_F(Custom_shader_calls_test, missingFileIsReplacedByPassingStage) {
    StreamCapture const errors(std::cerr);
    Custom_shader effect;
    effect.setShaders("/no/a.vert", "/no/a.frag", "");
    EXPECT_THAT(stageTexts(recording),
                ElementsAre(Shader_gl::fragmentPassThrough(), Shader_gl::vertexPassThrough()));
    EXPECT_EQ(errors.text(), "can not open shader source file /no/a.frag\n"
                             "can not open shader source file /no/a.vert\n");
}

TEST_F(Custom_shader_calls_test, fileThatDoesNotCompileIsReplacedByPassingStage) {
    StreamCapture const prints(std::cout);
    driver.shaderStatus(false, "0:1: broken", [](std::string const& text) { return text == "broken\n"; });
    Custom_shader effect;
    effect.setShaders(path("a.vert", "vertex"), path("a.frag", "broken"), "");
    EXPECT_THAT(stageTexts(recording), ElementsAre("broken\n", Shader_gl::fragmentPassThrough(), "vertex\n"));
    EXPECT_EQ(recording.count("glAttachShader"), 2U);
    EXPECT_THAT(prints.text(), HasSubstr("0:1: broken"));
    EXPECT_EQ(driver.liveObjects(), 8U + 3U);
}

TEST_F(Custom_shader_calls_test, geometryStageGetsExtensionsParameters) {
    gl_spy::Script extended = gl_spy::drivers::geometryShader4();
    Core_RL_GL newLayer;
    Custom_shader effect;
    effect.setShaders("", "", path("a.geom", "geometry"));
    EXPECT_THAT(stageKinds(recording),
                ElementsAre("GL_FRAGMENT_SHADER", "GL_VERTEX_SHADER", "GL_GEOMETRY_SHADER_EXT"));
    EXPECT_EQ(stageTexts(recording).at(2), "geometry\n");
    Texts parameters;
    for (gl_spy::Call const& call : recording.named("glProgramParameteriEXT")) {
        parameters.push_back(call.arguments.at(1) + " " + call.arguments.at(2));
    }
    EXPECT_THAT(parameters, ElementsAre("GL_GEOMETRY_INPUT_TYPE_EXT GL_TRIANGLES",
                                        "GL_GEOMETRY_OUTPUT_TYPE_EXT GL_TRIANGLE_STRIP",
                                        "GL_GEOMETRY_VERTICES_OUT_EXT 1024"));
    EXPECT_EQ(recording.count("glAttachShader"), 3U);
}

TEST_F(Custom_shader_calls_test, geometryFileThatIsNoGoodIsReplacedByPassingStage) {
    StreamCapture const errors(std::cerr);
    {
        gl_spy::Script extended = gl_spy::drivers::geometryShader4();
        Core_RL_GL newLayer;
        Custom_shader effect;
        effect.setShaders("", "", "/no/a.geom");
        EXPECT_EQ(stageTexts(recording).at(2), Shader_gl::geometryPassThrough());
        EXPECT_EQ(recording.count("glProgramParameteriEXT"), 3U);
    }
    {
        gl_spy::Script newer = gl_spy::drivers::gl21();
        newer.string(GL_VERSION, "4.5 (Compatibility Profile)").string(GL_EXTENSIONS, "GL_ARB_sync");
        Core_RL_GL newLayer;
        recording.clear();
        Custom_shader effect;
        effect.setShaders("", "", "/no/a.geom");
        EXPECT_THAT(stageTexts(recording).at(2),
                    StartsWith("#version 150 compatibility\nlayout(triangles) in;\n"
                               "layout(triangle_strip, max_vertices = 3) out;\n"));
        EXPECT_EQ(recording.count("glProgramParameteriEXT"), 0U);
    }
}

TEST_F(Custom_shader_calls_test, creatingUsesStoredPathsAndKeepsLog) {
    driver.programStatus(true, "linked");
    Custom_shader effect;
    effect.create();
    EXPECT_EQ(stageTexts(recording).size(), 2U);
    EXPECT_EQ(effect.getLog(), "linked");
    recording.clear();
    effect.create();
    EXPECT_THAT(recording.texts(), ElementsAre(StartsWith("glGetProgramInfoLog(11"))) << "no second set";
}

TEST_F(Custom_shader_calls_test, reloadingReadsFilesAgain) {
    Custom_shader effect;
    VL_String const fragment = path("a.frag", "before");
    effect.setShaders("", fragment, "");
    path("a.frag", "after");
    effect.reload();
    recording.clear();
    runPass(effect);
    EXPECT_EQ(stageTexts(recording).at(0), "after\n");
}

// == Textures ==

TEST_F(Custom_shader_calls_test, pictureIsUploadedIntoItsTexture) {
    Custom_shader effect;
    effect.create();
    effect.postprocess();
    for (int index = 0; index < 7; ++index) {
        recording.clear();
        effect.setTexture(picture.c_str(), index);
        EXPECT_EQ(recording.count("glTexImage2D"), 1U) << index;
        EXPECT_THAT(recording.texts(),
                    Contains("glBindTexture(GL_TEXTURE_2D, " + std::to_string(index + 1) + ")"));
        EXPECT_EQ(effect.getTexturePath(index), VL_String(picture.c_str()));
        recording.clear();
        effect.setTexture(picture.c_str(), index);
        EXPECT_THAT(recording.texts(), IsEmpty()) << "the same path";
    }
    effect.markDirty();
    effect.setTexture(picture.c_str(), 3);
    EXPECT_EQ(recording.count("glTexImage2D"), 1U) << "the same path, dirty";
}

TEST_F(Custom_shader_calls_test, deliberatelyUnreadablePictureLeavesTextureAsItWas) {
    Custom_shader effect;
    effect.setTexture(picture.c_str(), 2);
    recording.clear();
    effect.setTexture("/no/picture.png", 2);
    EXPECT_THAT(recording.texts(), IsEmpty());
    runPass(effect);
    EXPECT_THAT(uniformsSent(recording), Contains("Texture2 glUniform1i 2"));
}

TEST_F(Custom_shader_calls_test, onlyTexturesWithPathAreBound) {
    Custom_shader effect;
    effect.setTexture(picture.c_str(), 1);
    effect.setTexture(picture.c_str(), 4);
    effect.create();
    recording.clear();
    effect.preprocess();
    Texts const sent = uniformsSent(recording);
    EXPECT_THAT(Texts(sent.begin(), sent.begin() + 3),
                ElementsAre("Texture1 glUniform1i 1", "Texture4 glUniform1i 4", "TextureFB glUniform1i 7"));
    EXPECT_THAT(recording.texts(), Contains("glActiveTexture(GL_TEXTURE4)"));
    EXPECT_THAT(recording.texts(), Contains("glBindTexture(GL_TEXTURE_2D, 5)"));
    effect.cleanup();
}

TEST_F(Custom_shader_calls_test, pathSetBackToNothingIsNoLongerBound) {
    Custom_shader effect;
    effect.setTexture(picture.c_str(), 1);
    effect.setTexture("", 1);
    EXPECT_EQ(effect.getTexturePath(1), VL_String());
    effect.create();
    recording.clear();
    runPass(effect);
    EXPECT_EQ(uniformsSent(recording).at(0), "TextureFB glUniform1i 7");
}

TEST_F(Custom_shader_calls_test, withoutGrabbingFrameIsBoundAndNotCopied) {
    Custom_shader effect;
    EXPECT_FALSE(effect.isGrabbingFrameBuffer());
    effect.grabFrameBuffer(false);
    EXPECT_FALSE(effect.created) << "the flag has not changed";
    recording.clear();
    effect.init();
    EXPECT_THAT(recording.texts(), IsEmpty());
    effect.preprocess();
    EXPECT_THAT(recording.texts(), Contains("glActiveTexture(GL_TEXTURE7)"));
    EXPECT_THAT(recording.texts(), Contains("glBindTexture(GL_TEXTURE_2D, 8)"));
    effect.cleanup();

    effect.grabFrameBuffer(true);
    EXPECT_TRUE(effect.isGrabbingFrameBuffer());
    recording.clear();
    effect.init();
    EXPECT_THAT(recording.texts(), Contains("glBindTexture(GL_TEXTURE_2D, 8)"));
    EXPECT_EQ(recording.texts().back(), "glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 0, 0, 1024, 1024, 0)");
    effect.grabFrameBuffer(false);
    recording.clear();
    effect.init();
    EXPECT_THAT(recording.texts(), IsEmpty());
    effect.preprocess();
    EXPECT_THAT(recording.texts(), Contains("glBindTexture(GL_TEXTURE_2D, 8)")) << "the last contents";
    effect.cleanup();
}

TEST_F(Custom_shader_calls_test, changingWhatIsGrabbedEnablesAtOnce) {
    Custom_shader effect;
    effect.grabFrameBuffer(true);
    EXPECT_TRUE(effect.created);
    recording.clear();
    effect.grabFrameBuffer(true);
    EXPECT_THAT(recording.texts(), IsEmpty());
    effect.grabFrameBuffer(false);
    EXPECT_EQ(recording.texts().at(0), "glUseProgram(11)");
}

TEST_F(Custom_shader_calls_test, pathEditedInPlaceIsReadByDirtyEffect) {
    Custom_shader effect;
    effect.refTexturePath(3) = picture.c_str();
    EXPECT_EQ(effect.getTexturePath(3), VL_String(picture.c_str()));
    recording.clear();
    effect.markDirty();
    effect.setTexture(effect.refTexturePath(3), 3);
    EXPECT_EQ(recording.count("glTexImage2D"), 1U);
}

// == Passes ==

TEST_F(Custom_shader_calls_test, passThatIsNotDirtyHasItsCallsInOrder) {
    driver.uniformLocation("Texture2", 5).uniformLocation("TextureFB", 6);
    Custom_shader effect;
    // The upload makes a name that it leaves alone, so the program is 12.
    effect.setTexture(picture.c_str(), 2);
    effect.setNLights(2);
    runPass(effect);
    recording.clear();
    runPass(effect);
    EXPECT_THAT(
        recording.texts(),
        ElementsAre("glPushAttrib(0x6000)", "glDisable(GL_TEXTURE_2D)", "glDisable(GL_TEXTURE_3D)",
                    "glEnable(GL_LIGHTING)", "glEnable(GL_LIGHT0)", "glEnable(GL_LIGHT1)",
                    "glColor4f(1, 1, 1, 1)", "glEnable(GL_BLEND)",
                    "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
                    // the picture
                    "glUseProgram(12)", "glGetUniformLocation(12, \"Texture2\")",
                    "glActiveTexture(GL_TEXTURE2)", "glBindTexture(GL_TEXTURE_2D, 3)", "glUniform1i(5, 2)",
                    // the copy of the framebuffer
                    "glUseProgram(12)", "glGetUniformLocation(12, \"TextureFB\")",
                    "glActiveTexture(GL_TEXTURE7)", "glBindTexture(GL_TEXTURE_2D, 8)", "glUniform1i(6, 7)",
                    // the end
                    "glGetProgramInfoLog(12, 4096, null, pointer)", "glGetError()", "glUseProgram(0)",
                    "glUseProgramObjectARB(0)", "glPopAttrib()"));
}

TEST_F(Custom_shader_calls_test, allVariablesAreSentInTheirOrder) {
    Custom_shader effect;
    effect.create();
    for (int i = 0; i < 10; ++i) {
        auto const v = static_cast<float>(i);
        effect.setFloatVar(v + 1, i);
        effect.setVec3Var({v, v + 2, v + 3}, i);
        effect.setVec4Var({v, v + 4, v + 5, v + 6}, i);
    }
    effect.setBaseColor({0.1F, 0.2F, 0.3F, 0.4F});
    effect.setNLights(3);
    recording.clear();
    effect.preprocess();
    Texts expected{"TextureFB glUniform1i 7"};
    for (int i = 0; i < 10; ++i) {
        auto const at = [i](int more) { return std::to_string(i + more); };
        expected.push_back("FloatVar" + at(0) + " glUniform1fv {" + at(1) + "}");
        expected.push_back("Vec3Var" + at(0) + " glUniform3fv {" + at(0) + ", " + at(2) + ", " + at(3) + "}");
        expected.push_back("Vec4Var" + at(0) + " glUniform4fv {" + at(0) + ", " + at(4) + ", " + at(5) +
                           ", " + at(6) + "}");
    }
    expected.emplace_back("BaseColor glUniform4fv {0.1, 0.2, 0.3, 0.4}");
    expected.emplace_back("nLights glUniform1iv {3}");
    EXPECT_EQ(uniformsSent(recording), expected);
    effect.cleanup();
}

TEST_F(Custom_shader_calls_test, firstValuesAreZeroBlackAndOneLight) {
    Custom_shader effect;
    effect.create();
    recording.clear();
    effect.preprocess();
    Texts const sent = uniformsSent(recording);
    ASSERT_EQ(sent.size(), 33U);
    EXPECT_EQ(sent[1], "FloatVar0 glUniform1fv {0}");
    EXPECT_EQ(sent[29], "Vec3Var9 glUniform3fv {0, 0, 0}");
    EXPECT_EQ(sent[30], "Vec4Var9 glUniform4fv {0, 0, 0, 0}");
    EXPECT_EQ(sent[31], "BaseColor glUniform4fv {0, 0, 0, 1}");
    EXPECT_EQ(sent[32], "nLights glUniform1iv {1}");
    effect.cleanup();
}

TEST_F(Custom_shader_calls_test, pendingErrorIsDiscarded) {
    Custom_shader effect;
    effect.create();
    driver.errors({GL_INVALID_OPERATION});
    recording.clear();
    effect.preprocess();
    EXPECT_EQ(driver.errorsLeft(), 0U);
    EXPECT_EQ(recording.texts().back(), "gluErrorString(GL_INVALID_OPERATION)");
}

// == Variables ==

TEST_F(Custom_shader_calls_test, onlyDifferentValueMakesEffectDirty) {
    Custom_shader effect;
    runPass(effect);
    EXPECT_FALSE(isSent(effect, recording));
    effect.setFloatVar(0, 9);
    effect.setVec3Var({0, 0, 0}, 9);
    effect.setVec4Var({0, 0, 0, 0}, 9);
    effect.setBaseColor({0, 0, 0, 1});
    effect.setNLights(1);
    EXPECT_FALSE(isSent(effect, recording)) << "the same values";
    effect.setFloatVar(1, 9);
    effect.setFloatVar(1, 9);
    EXPECT_TRUE(isSent(effect, recording)) << "the second call does not take it back";
    for (Vector3<float> const& value : {Vector3<float>{1, 0, 0}, {1, 1, 0}, {1, 1, 1}}) {
        effect.setVec3Var(value, 0);
        EXPECT_TRUE(isSent(effect, recording)) << "one component";
    }
    effect.setVec4Var({0, 0, 0, 1}, 0);
    EXPECT_TRUE(isSent(effect, recording));
    effect.setBaseColor({0, 0, 0, 0});
    EXPECT_TRUE(isSent(effect, recording));
    effect.setNLights(2);
    EXPECT_TRUE(isSent(effect, recording));
}

TEST_F(Custom_shader_calls_test, variablesAreReadBackAsValuesAndThroughPointers) {
    Custom_shader effect;
    effect.setFloatVar(1, 4);
    effect.setVec3Var({1, 2, 3}, 5);
    effect.setVec4Var({1, 2, 3, 4}, 6);
    EXPECT_EQ(effect.getFloatVar(4), 1);
    EXPECT_EQ(effect.getVec3Var(5).z, 3);
    EXPECT_EQ(effect.getVec4Var(6), (Color4<float>{1, 2, 3, 4}));
    *effect.getFloatVarPtr(4) = 7;
    effect.getVec3VarPtr(5)->y = 8;
    effect.getVec4VarPtr(6)->a = 9;
    EXPECT_EQ(effect.getFloatVar(4), 7);
    EXPECT_EQ(effect.getVec3Var(5).y, 8);
    EXPECT_EQ(effect.getVec4Var(6).a, 9);
}

TEST_F(Custom_shader_calls_test, wrongIndicesAreIgnored) {
    Custom_shader effect;
    runPass(effect);
    recording.clear();
    for (int const index : WRONG_INDICES) {
        effect.setFloatVar(1, index);
        effect.setVec3Var({1, 1, 1}, index);
        effect.setVec4Var({1, 1, 1, 1}, index);
        EXPECT_EQ(effect.getFloatVar(index), 0);
        EXPECT_EQ(effect.getVec3Var(index).x, 0);
        EXPECT_EQ(effect.getVec4Var(index), (Color4<float>{0, 0, 0, 0}));
        EXPECT_EQ(effect.getFloatVarPtr(index), nullptr);
        EXPECT_EQ(effect.getVec3VarPtr(index), nullptr);
        EXPECT_EQ(effect.getVec4VarPtr(index), nullptr);
    }
    for (int const index : {-1, 7, 8, 10, INT_MAX, INT_MIN}) {
        effect.setTexture(picture.c_str(), index);
        EXPECT_EQ(effect.getTexturePath(index), VL_String());
        effect.refTexturePath(index) = "somewhere";
        EXPECT_EQ(effect.refTexturePath(index), VL_String()) << "the written value is gone";
    }
    EXPECT_THAT(recording.texts(), IsEmpty());
    EXPECT_FALSE(isSent(effect, recording)) << "nothing has become dirty";
}

TEST_F(Custom_shader_calls_test, nanIsSent) {
    Custom_shader effect;
    effect.create();
    effect.setFloatVar(NAN, 0);
    effect.setVec3Var({NAN, INFINITY, 0}, 0);
    effect.setVec4Var({NAN, 0, 0, 0}, 0);
    effect.setBaseColor({NAN, NAN, NAN, NAN});
    recording.clear();
    runPass(effect);
    EXPECT_EQ(uniformsSent(recording).size(), 33U);
    effect.setFloatVar(NAN, 0);
    EXPECT_TRUE(isSent(effect, recording)) << "it never equals the stored one";
}

// == Copies ==

TEST_F(Custom_shader_calls_test, copyTakesAllParametersAndReadsFilesItself) {
    Custom_shader original;
    original.setShaders(path("a.vert", "vertex"), path("a.frag", "fragment"), "");
    original.setTexture(picture.c_str(), 5);
    original.setFloatVar(1, 1);
    original.setVec3Var({2, 2, 2}, 2);
    original.setVec4Var({3, 3, 3, 3}, 3);
    original.setBaseColor({4, 4, 4, 4});
    original.setNLights(5);
    original.grabFrameBuffer(true);
    recording.clear();
    Custom_shader copy(original);
    EXPECT_EQ(recording.calls().size(), 8U) << "its textures";
    EXPECT_FALSE(copy.created);
    EXPECT_TRUE(copy.isGrabbingFrameBuffer());
    EXPECT_EQ(copy.getTexturePath(5), VL_String(picture.c_str()));
    recording.clear();
    copy.preprocess();
    EXPECT_EQ(recording.count("glTexImage2D"), 1U);
    EXPECT_THAT(stageTexts(recording), ElementsAre("fragment\n", "vertex\n"));
    Texts const sent = uniformsSent(recording);
    for (char const* const uniform : {"Texture5 glUniform1i 5", "FloatVar1 glUniform1fv {1}",
                                      "Vec3Var2 glUniform3fv {2, 2, 2}", "Vec4Var3 glUniform4fv {3, 3, 3, 3}",
                                      "BaseColor glUniform4fv {4, 4, 4, 4}", "nLights glUniform1iv {5}"}) {
        EXPECT_THAT(sent, Contains(uniform));
    }
    copy.cleanup();
}

TEST_F(Custom_shader_calls_test, copyingIntoCreatedEffectCreatesItAgain) {
    Custom_shader original;
    original.setShaders("", path("a.frag", "fragment"), "");
    Custom_shader effect;
    runPass(effect);
    effect.copy(original);
    EXPECT_FALSE(effect.created);
    recording.clear();
    runPass(effect);
    EXPECT_THAT(stageTexts(recording), Contains("fragment\n"));
    recording.clear();
    effect.copy(effect);
    EXPECT_TRUE(effect.created);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

}  // namespace
}  // namespace vellum
