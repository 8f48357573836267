#include "glsl_shader/Base_shader.h"

#include "Core_RL_GL.h"
#include "Program_gl.h"
#include "Shader_gl.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/picture_files.h"
#include "tests/vl_raster_gl/member_slots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using gl_spy::Recording;
using testing::ElementsAre;
using testing::IsEmpty;

using Texts = std::vector<std::string>;

// The smallest effect: two stages, one parameter, the common shape of a pass.
class Small_shader : public Base_shader {
public:
    void setSize(float const& value) { _store(size, value); }
    void setColor(Color4<float> const& value) { _store(color, value); }

    void create() override {
        ++creations;
        stage1 = new Shader_gl;
        stage1->loadShaderSource(GL_VERTEX_SHADER, "vertex", false);
        stage2 = new Shader_gl;
        stage2->loadShaderSource(GL_FRAGMENT_SHADER, "fragment", false);
        program->attach(stage1, stage2, stage3);
        created = true;
        enable(true);
        log = program->getInfoLog();
    }
    void init() override { _useProgram(); }
    void preprocess() override {
        if (dirty) {
            enable(true);
        }
        _openPass(lights);
        _useProgram();
        program->setUniform("size", size);
    }
    void postprocess() override { dirty = false; }
    void cleanup() override { _closePass(); }

    // What tests look at.
    using Base_shader::_closePass;
    using Base_shader::_openPass;
    using Base_shader::_readFrameSize;
    using Base_shader::_sendFrameSize;
    using Base_shader::_uploadTexture;
    using Base_shader::dirty;
    using Base_shader::FrameSize;
    using Base_shader::log;
    using Base_shader::program;
    using Base_shader::stage1;
    using Base_shader::stage2;
    using Base_shader::stage3;

    unsigned int lights = 1;
    int creations = 0;
    float size = 1;
    Color4<float> color{0, 0, 0, 1};
};

class Base_shader_calls_test : public testing::Test {
protected:
    Base_shader_calls_test() { VL_Raster = &layer; }
    ~Base_shader_calls_test() override { VL_Raster = nullptr; }

    static VL_Image image(unsigned int width, unsigned int height, unsigned int channels, unsigned int bits) {
        VL_Image made;
        EXPECT_TRUE(made.create(width, height, channels, bits));
        return made;
    }

    // The calls of an upload of an image into texture 9 as RGB. The first texture that is made is 1.
    static Texts uploadCalls(std::string const& upload, bool isUnaligned = false) {
        Texts texts{"glDeleteTextures(1, {9})",
                    "glGenTextures(1, pointer)",
                    "glBindTexture(GL_TEXTURE_2D, 9)",
                    "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)",
                    "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)",
                    "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
                    "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)"};
        if (isUnaligned) {
            texts.emplace_back("glPushClientAttrib(0x1)");
            texts.emplace_back("glPixelStorei(GL_UNPACK_ALIGNMENT, 1)");
        }
        texts.push_back("glTexImage2D(GL_TEXTURE_2D, 0, " + upload + ", pointer)");
        if (isUnaligned) {
            texts.emplace_back("glPopClientAttrib()");
        }
        texts.emplace_back("glGetError()");
        texts.emplace_back("glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE)");
        return texts;
    }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
    TemporaryFolder folder;
};

// == The interface of renderers ==

TEST_F(Base_shader_calls_test, virtualOperationsHaveTheirSlots) {
    using member_slots::slotOf;
    EXPECT_EQ((slotOf<Mesh_RL_Shader, void()>(&Mesh_RL_Shader::create)), 2U);
    EXPECT_EQ((slotOf<Mesh_RL_Shader, void()>(&Mesh_RL_Shader::init)), 3U);
    EXPECT_EQ((slotOf<Mesh_RL_Shader, void()>(&Mesh_RL_Shader::preprocess)), 4U);
    EXPECT_EQ((slotOf<Mesh_RL_Shader, void()>(&Mesh_RL_Shader::postprocess)), 5U);
    EXPECT_EQ((slotOf<Mesh_RL_Shader, void()>(&Mesh_RL_Shader::cleanup)), 6U);
    EXPECT_EQ((slotOf<Mesh_RL_Shader, void(char const*, Mesh_RL_Shader::UNIFORM_TYPE, unsigned int, void*)>(
                  &Mesh_RL_Shader::setShaderConstant)),
              7U);
    EXPECT_EQ((slotOf<Base_shader, void()>(&Base_shader::reload)), 8U);
    EXPECT_EQ((slotOf<Base_shader, void(bool const&)>(&Base_shader::enable)), member_slots::NOT_VIRTUAL);
}

TEST_F(Base_shader_calls_test, interfaceAloneDoesNothing) {
    Recording const recording;
    Mesh_RL_Shader effect;
    EXPECT_FALSE(effect.created);
    EXPECT_EQ(effect.label, VL_String());
    effect.create();
    effect.init();
    effect.preprocess();
    effect.postprocess();
    effect.cleanup();
    effect.setShaderConstant("name", Mesh_RL_Shader::CONSTANT_MATRIX, 4, nullptr);
    EXPECT_FALSE(effect.created);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Base_shader_calls_test, valueNumbersAreThoseOfTheInterface) {
    EXPECT_EQ(Mesh_RL_Shader::CONSTANT_INT, 0U);
    EXPECT_EQ(Mesh_RL_Shader::CONSTANT_FLOAT, 1U);
    EXPECT_EQ(Mesh_RL_Shader::CONSTANT_MATRIX, 2U);
    EXPECT_EQ(sizeof(Base_shader::ProcessType), 4U);
    EXPECT_EQ(Base_shader::ProcessType(7), 7U) << "any number converts";
}

// == Lifecycle ==

TEST_F(Base_shader_calls_test, newEffectIsDirtyAndMakesNoCall) {
    Recording const recording;
    Small_shader effect;
    EXPECT_FALSE(effect.created);
    EXPECT_TRUE(effect.dirty);
    EXPECT_NE(effect.program, nullptr);
    EXPECT_EQ(effect.stage1, nullptr);
    EXPECT_EQ(effect.stage2, nullptr);
    EXPECT_EQ(effect.stage3, nullptr);
    EXPECT_EQ(effect.getLog(), "");
    EXPECT_EQ(effect.getCompilationLog(), "");
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Base_shader_calls_test, enableCreatesTheEffectExactlyOnce) {
    driver.programStatus(true, "linked");
    Small_shader effect;
    effect.enable(true);
    effect.enable(true);
    EXPECT_EQ(effect.creations, 1);
    EXPECT_TRUE(effect.created);
    EXPECT_TRUE(effect.program->isEnabled());
    EXPECT_EQ(effect.getLog(), "linked");
}

TEST_F(Base_shader_calls_test, deliberatelyTakingAnEffectOutOfUseCreatesItToo) {
    Small_shader effect;
    effect.enable(false);
    EXPECT_EQ(effect.creations, 1);
    EXPECT_FALSE(effect.program->isEnabled());
}

TEST_F(Base_shader_calls_test, firstPassHasItsCallsInOrder) {
    driver.uniformLocation("size", 3);
    Small_shader effect;
    effect.create();
    Recording recording;
    effect.init();
    effect.preprocess();
    effect.postprocess();
    effect.cleanup();
    EXPECT_THAT(recording.texts(),
                ElementsAre("glUseProgram(3)", "glUseProgram(3)",
                            // the prologue
                            "glPushAttrib(0x6000)", "glDisable(GL_TEXTURE_2D)", "glDisable(GL_TEXTURE_3D)",
                            "glEnable(GL_LIGHTING)", "glEnable(GL_LIGHT0)", "glColor4f(1, 1, 1, 1)",
                            "glEnable(GL_BLEND)", "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
                            "glUseProgram(3)", "glGetUniformLocation(3, \"size\")", "glUniform1fv(3, 1, {1})",
                            // the epilogue
                            "glUseProgram(0)", "glUseProgramObjectARB(0)", "glPopAttrib()"));
    EXPECT_FALSE(effect.dirty);
}

TEST_F(Base_shader_calls_test, deliberatelyPassThatIsNotDirtyOnlyKeepsItsUniforms) {
    Small_shader effect;
    effect.preprocess();
    effect.postprocess();
    effect.cleanup();
    Recording recording;
    effect.preprocess();
    EXPECT_EQ(recording.count("glUniform1fv"), 0U);
    effect.postprocess();
    effect.cleanup();
    effect.setSize(2);
    recording.clear();
    effect.preprocess();
    EXPECT_EQ(recording.count("glUniform1fv"), 2U) << "the kept value, then the new one";
}

TEST_F(Base_shader_calls_test, markedEffectSendsEverythingAgain) {
    Small_shader effect;
    effect.preprocess();
    effect.postprocess();
    effect.cleanup();
    Recording const recording;
    effect.markDirty();
    EXPECT_THAT(recording.texts(), IsEmpty());
    effect.preprocess();
    EXPECT_EQ(recording.count("glUniform1fv"), 2U);
}

TEST_F(Base_shader_calls_test, equalParameterLeavesTheEffectClean) {
    Small_shader effect;
    effect.dirty = false;
    effect.setSize(1);
    effect.setColor({0, 0, 0, 1});
    EXPECT_FALSE(effect.dirty);
    effect.setColor({0, 0, 0, 0.5F});
    EXPECT_TRUE(effect.dirty);
    EXPECT_EQ(effect.color.a, 0.5F);
    effect.setColor({0, 0, 0, 0.5F});
    EXPECT_TRUE(effect.dirty) << "an equal value never cleans";
}

TEST_F(Base_shader_calls_test, prologueSwitchesOnAsManyLightsAsAsked) {
    Recording recording;
    Small_shader::_openPass(0);
    EXPECT_EQ(recording.count("glEnable"), 2U) << "lighting and blending";
    recording.clear();
    Small_shader::_openPass(3);
    EXPECT_EQ(recording.count("glEnable"), 5U);
    EXPECT_EQ(recording.texts()[6], "glEnable(GL_LIGHT2)");
    recording.clear();
    Small_shader::_openPass(0xFFFFFFFF);
    EXPECT_EQ(recording.count("glEnable"), 34U) << "a wild number of lights ends";
}

TEST_F(Base_shader_calls_test, frameSizesAreSentAsFloats) {
    driver.integer(GL_VIEWPORT, {5, 6, 1000, 600});
    driver.uniformLocation("FrameWidth", 1).uniformLocation("FrameHeight", 2);
    driver.uniformLocation("textureWidth", 3).uniformLocation("textureHeight", 4);
    Small_shader effect;
    effect.enable(true);
    Recording const recording;
    effect._sendFrameSize(Small_shader::_readFrameSize());
    EXPECT_THAT(recording.texts(),
                ElementsAre("glGetIntegerv(GL_VIEWPORT, pointer)", "glGetUniformLocation(3, \"FrameWidth\")",
                            "glUniform1fv(1, 1, {1000})", "glGetUniformLocation(3, \"FrameHeight\")",
                            "glUniform1fv(2, 1, {600})", "glGetUniformLocation(3, \"textureWidth\")",
                            "glUniform1fv(3, 1, {1024})", "glGetUniformLocation(3, \"textureHeight\")",
                            "glUniform1fv(4, 1, {1024})"));
}

TEST_F(Base_shader_calls_test, reloadDeletesTheStagesAndKeepsTheProgram) {
    Small_shader effect;
    effect.setShaderConstant("size", Mesh_RL_Shader::CONSTANT_FLOAT, 1, &effect.size);
    effect.enable(true);  // stages 1 and 2, program 3
    effect.dirty = false;
    Recording recording;
    effect.reload();
    EXPECT_THAT(recording.texts(), ElementsAre("glDetachShader(3, 2)", "glDeleteShader(2)",
                                               "glDetachShader(3, 1)", "glDeleteShader(1)"));
    EXPECT_FALSE(effect.created);
    EXPECT_TRUE(effect.dirty);
    EXPECT_EQ(effect.stage1, nullptr);
    EXPECT_EQ(effect.stage2, nullptr);
    EXPECT_EQ(effect.program->getId(), 3U);

    recording.clear();
    effect.preprocess();
    EXPECT_EQ(effect.creations, 2);
    EXPECT_EQ(recording.count("glCreateProgram"), 0U);
    EXPECT_EQ(recording.count("glLinkProgram"), 1U);
    EXPECT_GE(recording.count("glUniform1fv"), 1U) << "uniforms of before are sent again";
}

TEST_F(Base_shader_calls_test, reloadMayBeRepeatedAndComeBeforeTheFirstUse) {
    Small_shader effect;
    Recording const recording;
    effect.reload();
    effect.reload();
    EXPECT_THAT(recording.texts(), IsEmpty());
    effect.enable(true);
    EXPECT_EQ(effect.creations, 1);
}

TEST_F(Base_shader_calls_test, destructorDeletesTheProgramBeforeTheStages) {
    auto effect = std::make_unique<Small_shader>();
    effect->enable(true);
    effect->stage3 = new Shader_gl;
    effect->stage3->loadShaderSource(GL_GEOMETRY_SHADER_EXT, "geometry", false);
    Recording const recording;
    effect.reset();
    EXPECT_THAT(recording.texts(), ElementsAre("glDeleteProgram(3)", "glDeleteShader(1)", "glDeleteShader(2)",
                                               "glDeleteShader(4)"));
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Base_shader_calls_test, deliberatelyCopyTakesNothing) {
    driver.programStatus(true, "linked");
    Small_shader effect;
    effect.label = "label";
    effect.enable(true);
    effect.postprocess();
    Recording const recording;
    Base_shader const& base = effect;
    Base_shader copy(base);
    EXPECT_THAT(recording.texts(), IsEmpty());
    EXPECT_FALSE(copy.created);
    EXPECT_EQ(copy.label, VL_String());
    EXPECT_EQ(copy.getLog(), "");

    Small_shader own(effect);
    EXPECT_NE(own.program, effect.program);
    EXPECT_EQ(own.stage1, nullptr);
    EXPECT_TRUE(own.dirty);
    own.creations = 0;
    own.enable(true);
    EXPECT_EQ(own.creations, 1);
}

TEST_F(Base_shader_calls_test, stagesThatDoNotCompileLeaveAnEffectThatWorksOn) {
    driver.shaderStatus(false, "0:1: no");
    StreamCapture const output(std::cout);
    Small_shader effect;
    effect.preprocess();
    effect.postprocess();
    effect.cleanup();
    EXPECT_EQ(effect.creations, 1);
    effect.reload();
    effect.preprocess();
    effect.cleanup();
    EXPECT_EQ(effect.creations, 2);
}

TEST_F(Base_shader_calls_test, constantsArePassedByTheirType) {
    driver.uniformLocation("u", 7);
    Small_shader effect;
    effect.enable(true);
    int integers[] = {1, 2, 3};
    float numbers[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    Recording const recording;
    effect.setShaderConstant("u", Mesh_RL_Shader::CONSTANT_INT, 3, integers);
    effect.setShaderConstant("u", Mesh_RL_Shader::CONSTANT_FLOAT, 2, numbers);
    effect.setShaderConstant("u", Mesh_RL_Shader::CONSTANT_MATRIX, 2, numbers);
    effect.setShaderConstant("u", Mesh_RL_Shader::UNIFORM_TYPE(99), 3, numbers);
    Texts sent;
    for (std::string const& text : recording.texts()) {
        if (text.find("glUniform") == 0) {
            sent.push_back(text);
        }
    }
    EXPECT_THAT(sent, ElementsAre("glUniform3iv(7, 1, {1, 2, 3})", "glUniform2fv(7, 1, {1, 2})",
                                  "glUniformMatrix2fv(7, 1, GL_FALSE, {1, 2, 3, 4})",
                                  "glUniformMatrix3fv(7, 1, GL_FALSE, {1, 2, 3, 4, 5, 6, 7, 8, 9})"));
    effect.setShaderConstant("u", Mesh_RL_Shader::CONSTANT_FLOAT, 0xFFFFFFFF, numbers);
    effect.setShaderConstant(nullptr, Mesh_RL_Shader::CONSTANT_FLOAT, 1, nullptr);
}

// == Textures ==

TEST_F(Base_shader_calls_test, imageIsUploadedIntoTheTextureThatIsNamed) {
    Small_shader effect;
    Recording const recording;
    effect.loadTexture(image(4, 2, 3, 8), 9, GL_RGB);
    EXPECT_EQ(recording.texts(), uploadCalls("GL_RGB, 4, 2, 0, GL_RGB, GL_UNSIGNED_BYTE"));
}

TEST_F(Base_shader_calls_test, formatAndTypeFollowTheImage) {
    struct Case {
        unsigned int channels, bits;
        std::string upload;
    };
    for (Case const& c : {Case{3, 8, "GL_RGB, GL_UNSIGNED_BYTE"},
                          {4, 8, "GL_RGBA, GL_UNSIGNED_BYTE"},
                          {3, 16, "GL_RGB, GL_UNSIGNED_SHORT"},
                          {4, 16, "GL_RGBA, GL_UNSIGNED_SHORT"},
                          {3, 32, "GL_RGB, GL_FLOAT"},
                          {4, 32, "GL_RGBA, GL_FLOAT"},
                          {1, 8, "GL_RGBA, GL_UNSIGNED_BYTE"},
                          {2, 16, "GL_RGBA, GL_UNSIGNED_SHORT"},
                          {1, 32, "GL_RGBA, GL_FLOAT"}}) {
        Small_shader effect;
        Recording const recording;
        effect.loadTexture(image(4, 2, c.channels, c.bits), 9, GL_RGBA8);
        EXPECT_EQ(recording.texts(), uploadCalls("GL_RGBA8, 4, 2, 0, " + c.upload))
            << c.channels << ' ' << c.bits;
    }
}

TEST_F(Base_shader_calls_test, rowsOfOddLengthAreUploadedWithoutGaps) {
    Small_shader effect;
    Recording recording;
    effect.loadTexture(image(3, 2, 3, 8), 9, GL_RGB);
    EXPECT_EQ(recording.texts(), uploadCalls("GL_RGB, 3, 2, 0, GL_RGB, GL_UNSIGNED_BYTE", true));
    recording.clear();
    effect.loadTexture(image(1, 2, 3, 16), 9, GL_RGB);
    EXPECT_EQ(recording.texts(), uploadCalls("GL_RGB, 1, 2, 0, GL_RGB, GL_UNSIGNED_SHORT", true));
}

TEST_F(Base_shader_calls_test, emptyImageDoesNothing) {
    Small_shader effect;
    Recording const recording;
    effect.loadTexture(VL_Image(), 9, GL_RGB);
    effect.loadTextureRGB(VL_Image(), 9);
    effect.loadTextureFloat32(VL_Image(), 9);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Base_shader_calls_test, shortFormsChooseTheInternalFormat) {
    Small_shader effect;
    Recording recording;
    effect.loadTextureFloat32(image(4, 2, 4, 32), 9);
    EXPECT_EQ(recording.texts(), uploadCalls("GL_RGBA32F_ARB, 4, 2, 0, GL_RGBA, GL_FLOAT"));
    static_assert(GL_RGBA32F_ARB == 34836);
    recording.clear();
    effect.loadTextureRGB(image(4, 2, 4, 8), 9);
    EXPECT_EQ(recording.texts(), uploadCalls("GL_RGB, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE"));
}

TEST_F(Base_shader_calls_test, uploadErrorIsTakenAndNamedForNobody) {
    driver.errors({GL_OUT_OF_MEMORY, GL_INVALID_VALUE});
    Small_shader effect;
    StreamCapture const output(std::cout);
    Recording const recording;
    effect.loadTextureRGB(image(4, 2, 3, 8), 9);
    EXPECT_EQ(recording.count("gluErrorString"), 1U);
    EXPECT_EQ(recording.texts().back(), "glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE)");
    EXPECT_EQ(driver.errorsLeft(), 1U);
    EXPECT_EQ(output.text(), "");
}

TEST_F(Base_shader_calls_test, textureIsReadFromAFile) {
    picture_files::writePng(folder.file("a.png"), {4, 2, 8, 2},
                            [](std::size_t, std::size_t, std::size_t) { return 1U; });
    Small_shader effect;
    Recording recording;
    effect.loadTextureRGB(VL_String(folder.file("a.png").c_str()), 9);
    Texts expected = uploadCalls("GL_RGB, 4, 2, 0, GL_RGB, GL_UNSIGNED_BYTE");
    expected.insert(expected.begin(), "glDeleteTextures(1, {9})");
    EXPECT_EQ(recording.texts(), expected);
    recording.clear();
    effect.loadTextureFloat32(VL_String(folder.file("a.png").c_str()), 9);
    expected = uploadCalls("GL_RGBA32F_ARB, 4, 2, 0, GL_RGB, GL_UNSIGNED_BYTE");
    expected.insert(expected.begin(), "glDeleteTextures(1, {9})");
    EXPECT_EQ(recording.texts(), expected);
}

TEST_F(Base_shader_calls_test, fileThatCannotBeReadOnlyDeletesTheTexture) {
    Small_shader effect;
    for (std::string const& path : {std::string(), folder.file("missing.png"), folder.write("a.png", "no")}) {
        Recording recording;
        effect.loadTextureRGB(VL_String(path.c_str()), 9);
        EXPECT_THAT(recording.texts(), ElementsAre("glDeleteTextures(1, {9})"));
        recording.clear();
        effect.loadTextureFloat32(VL_String(path.c_str()), 9);
        EXPECT_THAT(recording.texts(), ElementsAre("glDeleteTextures(1, {9})"));
    }
}

TEST_F(Base_shader_calls_test, withoutRenderLayerTexturesAreUploadedAllTheSame) {
    VL_Raster = nullptr;
    Small_shader effect;
    Recording const recording;
    effect.loadTextureRGB(image(4, 2, 3, 8), 9);
    effect.loadTextureRGB(VL_String("missing"), 9);
    EXPECT_EQ(recording.count("glTexImage2D"), 1U);
    EXPECT_EQ(recording.count("glDeleteTextures"), 0U);
}

TEST_F(Base_shader_calls_test, uploadLargerThanItsImageReadsNothingBeyondIt) {
    VL_Image const small = image(5, 3, 3, 8);
    Recording const recording;
    Small_shader::_uploadTexture(small, 9, GL_RGB, 8, 4);
    EXPECT_EQ(recording.texts().back(),
              "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 8, 4, 0, GL_RGB, GL_UNSIGNED_BYTE, pointer)");
    EXPECT_NE(recording.calls().back().addresses[0], reinterpret_cast<std::uintptr_t>(small.getBuffer()));
}

TEST_F(Base_shader_calls_test, powersOfTwoAreRoundedUp) {
    EXPECT_EQ(Base_shader::nextHighestPowerOf2(0), 0);
    EXPECT_EQ(Base_shader::nextHighestPowerOf2(1), 1);
    EXPECT_EQ(Base_shader::nextHighestPowerOf2(2), 2);
    EXPECT_EQ(Base_shader::nextHighestPowerOf2(3), 4);
    EXPECT_EQ(Base_shader::nextHighestPowerOf2(5), 8);
    EXPECT_EQ(Base_shader::nextHighestPowerOf2(1024), 1024);
    EXPECT_EQ(Base_shader::nextHighestPowerOf2(1025), 2048);
    EXPECT_EQ(Base_shader::nextHighestPowerOf2(1 << 30), 1 << 30);
    EXPECT_EQ(Base_shader::nextHighestPowerOf2(-5), 0);
    EXPECT_EQ(Base_shader::nextHighestPowerOf2(INT_MIN), INT_MIN) << "no overflow";
    EXPECT_EQ(Base_shader::nextHighestPowerOf2(INT_MAX), INT_MIN) << "no overflow";
}

TEST_F(Base_shader_calls_test, framebufferIsCopiedInPowersOfTwo) {
    driver.integer(GL_VIEWPORT, {5, 6, 1000, 600});
    Small_shader effect;
    Recording const recording;
    effect.copyFramebufferToTexture(9);
    EXPECT_THAT(recording.texts(),
                ElementsAre("glGetIntegerv(GL_VIEWPORT, pointer)", "glBindTexture(GL_TEXTURE_2D, 9)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)",
                            "glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 5, 6, 1024, 1024, 0)"));
}

}  // namespace
}  // namespace vellum
