#include "glsl_shader/Base_shader.h"
#include "Program_gl.h"
#include "Shader_gl.h"
#include "effect_fixtures.h"
#include "foundation/image/VL_Image.h"
#include "foundation/raster/Mesh_RL_Shader.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/picture_files.h"
#include "tests/vl_raster_gl/member_slots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdint>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

// The common part of all effects, call by call. The recording GL counts the names of shaders, programs and
// textures together, from 1, and the uniform locations of a program from 0.

namespace vellum {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned int VIEWPORT_STATE = 0x0BA2;
constexpr unsigned int INVALID_OPERATION = 0x0502;
constexpr unsigned int OUT_OF_MEMORY = 0x0505;
constexpr unsigned int RGB = 0x1907;
constexpr unsigned int RGB8 = 0x8051;

/// An effect of three shaders that counts how often it is created.
class Plain_shader : public Open<Base_shader> {
public:
    using Base_shader::_uploadTexture;

    void create() override {
        ++creations;
        stage1 = stage(VERTEX_STAGE);
        stage2 = stage(FRAGMENT_STAGE);
        stage3 = stage(GEOMETRY_STAGE);
        program->attach(stage1, stage2, stage3);
        created = true;
    }

    int creations = 0;

private:
    static Shader_gl* stage(unsigned int type) {
        auto* const shader = new Shader_gl;
        shader->loadShaderSource(type, "text", false);
        return shader;
    }
};

class Base_shader_calls_test : public Effect_fixture {};

// == The interface of effects ==

TEST_F(Base_shader_calls_test, interfaceDoesNothingByItself) {
    Mesh_RL_Shader effect;
    EXPECT_EQ(effect.label, VL_String(""));
    EXPECT_FALSE(effect.created);
    effect.create();
    effect.init();
    effect.preprocess();
    effect.postprocess();
    effect.cleanup();
    float value = 1;
    effect.setShaderConstant("u", Mesh_RL_Shader::CONSTANT_FLOAT, 1, &value);
    effect.setShaderConstant(nullptr, Mesh_RL_Shader::CONSTANT_MATRIX, 4, nullptr);
    EXPECT_FALSE(effect.created);
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Base_shader_calls_test, operationsHaveTheirSlots) {
    using member_slots::slotOf;
    EXPECT_EQ(slotOf(&Mesh_RL_Shader::create), 2U);
    EXPECT_EQ(slotOf(&Mesh_RL_Shader::init), 3U);
    EXPECT_EQ(slotOf(&Mesh_RL_Shader::preprocess), 4U);
    EXPECT_EQ(slotOf(&Mesh_RL_Shader::postprocess), 5U);
    EXPECT_EQ(slotOf(&Mesh_RL_Shader::cleanup), 6U);
    EXPECT_EQ(slotOf(&Mesh_RL_Shader::setShaderConstant), 7U);
    EXPECT_EQ(slotOf(&Base_shader::setShaderConstant), 7U);
    EXPECT_EQ(slotOf(&Base_shader::reload), 8U);
    EXPECT_EQ((slotOf<Base_shader, void(bool const&)>(&Base_shader::enable)), member_slots::NOT_VIRTUAL);
}

TEST_F(Base_shader_calls_test, enumerationsHaveTheirValues) {
    EXPECT_EQ(Mesh_RL_Shader::CONSTANT_INT, 0U);
    EXPECT_EQ(Mesh_RL_Shader::CONSTANT_FLOAT, 1U);
    EXPECT_EQ(Mesh_RL_Shader::CONSTANT_MATRIX, 2U);
    EXPECT_EQ(sizeof(Base_shader::ProcessType), 4U);
    EXPECT_EQ(Base_shader::ProcessType(7), 7U) << "any number converts";
}

// == Lifecycle ==

TEST_F(Base_shader_calls_test, newEffectHasEmptyProgram) {
    {
        Plain_shader effect;
        ASSERT_NE(effect.program, nullptr);
        EXPECT_EQ(effect.program->getId(), 0U);
        EXPECT_EQ(effect.stage1, nullptr);
        EXPECT_EQ(effect.stage2, nullptr);
        EXPECT_EQ(effect.stage3, nullptr);
        EXPECT_TRUE(effect.dirty);
        EXPECT_FALSE(effect.created);
        EXPECT_EQ(effect.getLog(), "");
        EXPECT_EQ(effect.getCompilationLog(), "");
    }
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Base_shader_calls_test, enablingCreatesOnce) {
    Plain_shader effect;
    effect.enable(true);
    EXPECT_EQ(effect.creations, 1);
    Texts const all = calls();
    ASSERT_GE(all.size(), 2U);
    EXPECT_EQ(all[all.size() - 2], "glLinkProgram(4)");
    EXPECT_EQ(all.back(), "glUseProgram(4)");
    effect.enable(true);
    effect.enable(false);
    EXPECT_EQ(effect.creations, 1);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(4)", "glUseProgram(0)"));
    EXPECT_TRUE(effect.dirty);
}

TEST_F(Base_shader_calls_test, deliberatelyDisablingCreatesToo) {
    Plain_shader effect;
    effect.enable(false);
    EXPECT_EQ(effect.creations, 1);
    EXPECT_EQ(calls().back(), "glUseProgram(0)");
    EXPECT_FALSE(effect.program->isEnabled());
}

TEST_F(Base_shader_calls_test, effectDeletesItsProgramAndThenItsStages) {
    {
        Plain_shader effect;
        effect.enable(true);
        recording.clear();
    }
    EXPECT_THAT(calls(), ElementsAre("glDeleteProgram(4)", "glDeleteShader(1)", "glDeleteShader(2)",
                                     "glDeleteShader(3)"));
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Base_shader_calls_test, reloadingDeletesSecondStageFirst) {
    Plain_shader effect;
    effect.enable(true);
    effect.dirty = false;
    recording.clear();
    effect.reload();
    EXPECT_THAT(calls(), ElementsAre("glDetachShader(4, 2)", "glDeleteShader(2)", "glDetachShader(4, 1)",
                                     "glDeleteShader(1)", "glDetachShader(4, 3)", "glDeleteShader(3)"));
    EXPECT_FALSE(effect.created);
    EXPECT_TRUE(effect.dirty);
    EXPECT_EQ(effect.stage1, nullptr);
    EXPECT_EQ(effect.stage2, nullptr);
    EXPECT_EQ(effect.stage3, nullptr);
    EXPECT_EQ(effect.program->getId(), 4U);
    effect.reload();
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Base_shader_calls_test, afterReloadingSameProgramHasNewStagesAndItsUniforms) {
    Plain_shader effect;
    effect.enable(true);
    effect.program->setUniform("u", 1.5F);
    effect.reload();
    recording.clear();
    effect.enable(true);
    EXPECT_EQ(effect.creations, 2);
    EXPECT_EQ(calls(), joined({variantMade(5, "GL_VERTEX_SHADER", "text"),
                               variantMade(6, "GL_FRAGMENT_SHADER", "text"),
                               variantMade(7, "GL_GEOMETRY_SHADER_EXT", "text"),
                               {"glAttachShader(4, 5)", "glAttachShader(4, 6)", "glAttachShader(4, 7)",
                                "glLinkProgram(4)", "glUseProgram(4)"},
                               uniformSent(4, "u", 0, "glUniform1fv", "1, {1.5}")}));
}

TEST_F(Base_shader_calls_test, reloadingWhatWasNotCreatedOnlyMarks) {
    Plain_shader effect;
    effect.dirty = false;
    effect.reload();
    EXPECT_TRUE(effect.dirty);
    EXPECT_FALSE(effect.created);
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Base_shader_calls_test, deliberatelyCopyTakesNothing) {
    Plain_shader effect;
    effect.enable(true);
    effect.dirty = false;
    effect.log = "text";
    effect.label = "label";
    effect.program->setUniform("u", 1);
    recording.clear();
    Plain_shader copy(effect);
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_NE(copy.program, effect.program);
    EXPECT_EQ(copy.program->getId(), 0U);
    EXPECT_EQ(copy.stage1, nullptr);
    EXPECT_EQ(copy.stage2, nullptr);
    EXPECT_EQ(copy.stage3, nullptr);
    EXPECT_TRUE(copy.dirty);
    EXPECT_FALSE(copy.created);
    EXPECT_EQ(copy.getLog(), "");
    EXPECT_EQ(copy.label, VL_String());
    copy.enable(true);
    EXPECT_EQ(calls().back(), "glUseProgram(8)");
}

TEST_F(Base_shader_calls_test, markingEffectDirtyMakesNoCall) {
    Plain_shader effect;
    effect.dirty = false;
    effect.markDirty();
    EXPECT_TRUE(effect.dirty);
    EXPECT_THAT(calls(), IsEmpty());
}

// == Constants by name ==

TEST_F(Base_shader_calls_test, constantsAreSentAsUniforms) {
    Plain_shader effect;
    effect.enable(true);
    recording.clear();
    std::array<int, 4> integers{1, 2, 3, 4};
    std::array<float, 16> floats{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    for (unsigned int size = 1; size <= 4; ++size) {
        effect.setShaderConstant("i", Mesh_RL_Shader::CONSTANT_INT, size, integers.data());
        effect.setShaderConstant("f", Mesh_RL_Shader::CONSTANT_FLOAT, size, floats.data());
    }
    for (unsigned int order = 2; order <= 3; ++order) {
        effect.setShaderConstant("m", Mesh_RL_Shader::CONSTANT_MATRIX, order, floats.data());
    }
    effect.setShaderConstant("m", static_cast<Mesh_RL_Shader::UNIFORM_TYPE>(3), 2, floats.data());
    EXPECT_THAT(uniformsSent(recording),
                ElementsAre("i glUniform1iv {1}", "f glUniform1fv {1}", "i glUniform2iv {1, 2}",
                            "f glUniform2fv {1, 2}", "i glUniform3iv {1, 2, 3}", "f glUniform3fv {1, 2, 3}",
                            "i glUniform4iv {1, 2, 3, 4}", "f glUniform4fv {1, 2, 3, 4}",
                            "m glUniformMatrix2fv {1, 2, 3, 4}",
                            "m glUniformMatrix3fv {1, 2, 3, 4, 5, 6, 7, 8, 9}",
                            "m glUniformMatrix2fv {1, 2, 3, 4}"));
}

TEST_F(Base_shader_calls_test, constantsAreKeptBeforeEffectIsCreated) {
    Plain_shader effect;
    int value = 7;
    effect.setShaderConstant("u", Mesh_RL_Shader::CONSTANT_INT, 1, &value);
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_EQ(effect.creations, 0);
    effect.enable(true);
    EXPECT_THAT(uniformsSent(recording), ElementsAre("u glUniform1iv {7}"));
}

TEST_F(Base_shader_calls_test, constantsWithBadSizesAreNotSent) {
    Plain_shader effect;
    effect.enable(true);
    recording.clear();
    float value = 7;
    for (unsigned int const size : {0U, 5U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        for (unsigned int const type : {0U, 1U, 2U, 99U}) {
            effect.setShaderConstant("u", static_cast<Mesh_RL_Shader::UNIFORM_TYPE>(type), size, &value);
        }
    }
    effect.setShaderConstant("u", Mesh_RL_Shader::CONSTANT_FLOAT, 1, nullptr);
    EXPECT_THAT(uniformsSent(recording), IsEmpty());
    effect.setShaderConstant(nullptr, Mesh_RL_Shader::CONSTANT_FLOAT, 1, &value);
    EXPECT_THAT(uniformsSent(recording), ElementsAre(" glUniform1fv {7}"));
}

// == Textures ==

/// Binds a texture for an upload and sets its parameters.
Texts bound(unsigned int texture) {
    return {"glBindTexture(GL_TEXTURE_2D, " + std::to_string(texture) + ")",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)"};
}

/// An upload into texture 70. `image` has the arguments from the internal format to the pixel type.
Texts uploaded(std::string const& image, bool isAligned = true) {
    Texts const unaligned{"glPushClientAttrib(0x1)", "glPixelStorei(GL_UNPACK_ALIGNMENT, 1)"};
    Texts const aligned{"glPopClientAttrib()"};
    return joined({{"glDeleteTextures(1, {70})", "glGenTextures(1, pointer)"},
                   bound(70),
                   isAligned ? Texts{} : unaligned,
                   {"glTexImage2D(GL_TEXTURE_2D, 0, " + image + ", pointer)"},
                   isAligned ? Texts{} : aligned,
                   {"glGetError()", "glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE)"}});
}

TEST_F(Base_shader_calls_test, formatAndTypeFollowImage) {
    struct Row {
        unsigned int channels;
        unsigned int bits;
        char const* expected;
    };
    for (Row const& row : {Row{3, 8, "GL_RGB, GL_UNSIGNED_BYTE"}, Row{4, 8, "GL_RGBA, GL_UNSIGNED_BYTE"},
                           Row{3, 16, "GL_RGB, GL_UNSIGNED_SHORT"}, Row{4, 16, "GL_RGBA, GL_UNSIGNED_SHORT"},
                           Row{3, 32, "GL_RGB, GL_FLOAT"}, Row{4, 32, "GL_RGBA, GL_FLOAT"},
                           Row{1, 8, "GL_RGBA, GL_UNSIGNED_BYTE"}, Row{2, 16, "GL_RGBA, GL_UNSIGNED_SHORT"},
                           Row{1, 32, "GL_RGBA, GL_FLOAT"}}) {
        Plain_shader effect;
        VL_Image image;
        ASSERT_TRUE(image.create(4, 2, row.channels, row.bits));
        void const* const pixels = row.bits == 8    ? static_cast<void const*>(image.getBuffer())
                                   : row.bits == 16 ? static_cast<void const*>(image.getBuffer16())
                                                    : static_cast<void const*>(image.getBuffer32());
        effect.loadTexture(image, 70, RGB8);
        bool const isSentAsItIs =
            recording.named("glTexImage2D").at(0).addresses.at(0) == reinterpret_cast<std::uintptr_t>(pixels);
        EXPECT_EQ(isSentAsItIs, row.channels >= 3) << "gray is spread over a copy";
        EXPECT_EQ(calls(), uploaded(std::string("GL_RGB8, 4, 2, 0, ") + row.expected))
            << row.channels << " channels of " << row.bits << " bits";
    }
}

TEST_F(Base_shader_calls_test, shortFormsChooseInternalFormat) {
    Plain_shader effect;
    VL_Image image;
    ASSERT_TRUE(image.create(4, 2, 4, 32));
    effect.loadTextureRGB(image, 70);
    EXPECT_EQ(calls(), uploaded("GL_RGB, 4, 2, 0, GL_RGBA, GL_FLOAT"));
    effect.loadTextureFloat32(image, 70);
    EXPECT_EQ(calls(), uploaded("GL_RGBA32F_ARB, 4, 2, 0, GL_RGBA, GL_FLOAT"));
}

TEST_F(Base_shader_calls_test, rowsOfOddLengthAreUploadedWithoutPadding) {
    Plain_shader effect;
    VL_Image image;
    ASSERT_TRUE(image.create(3, 2, 3, 8));
    effect.loadTextureRGB(image, 70);
    EXPECT_EQ(calls(), uploaded("GL_RGB, 3, 2, 0, GL_RGB, GL_UNSIGNED_BYTE", false));
    ASSERT_TRUE(image.create(1, 2, 3, 16));
    effect.loadTextureRGB(image, 70);
    EXPECT_EQ(calls(), uploaded("GL_RGB, 1, 2, 0, GL_RGB, GL_UNSIGNED_SHORT", false));
}

TEST_F(Base_shader_calls_test, uploadLargerThanItsImageReadsNothingBeyondIt) {
    VL_Image image;
    ASSERT_TRUE(image.create(5, 3, 3, 8));
    Plain_shader::_uploadTexture(image, 70, RGB, 8, 4);
    gl_spy::Call const upload = recording.calls().back();
    EXPECT_EQ(upload.text(),
              "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 8, 4, 0, GL_RGB, GL_UNSIGNED_BYTE, pointer)");
    EXPECT_NE(upload.addresses.at(0), reinterpret_cast<std::uintptr_t>(image.getBuffer()));
}

TEST_F(Base_shader_calls_test, emptyImageDoesNothing) {
    Plain_shader effect;
    effect.loadTexture(VL_Image(), 70, RGB);
    effect.loadTextureRGB(VL_Image(), 70);
    effect.loadTextureFloat32(VL_Image(), 70);
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_THAT(layer.requests, IsEmpty());
}

TEST_F(Base_shader_calls_test, deliberatelyNewTextureNameIsIgnored) {
    Plain_shader effect;
    VL_Image image;
    ASSERT_TRUE(image.create(4, 4, 3, 8));
    effect.loadTextureRGB(image, 70);
    EXPECT_THAT(layer.requests, ElementsAre("destroyTexture(70)", "createTexture()"));
}

TEST_F(Base_shader_calls_test, uploadErrorIsDiscarded) {
    Plain_shader effect;
    VL_Image image;
    ASSERT_TRUE(image.create(4, 4, 3, 8));
    driver.errors({OUT_OF_MEMORY, INVALID_OPERATION});
    StreamCapture const output(std::cout);
    StreamCapture const errors(std::cerr);
    effect.loadTextureRGB(image, 70);
    EXPECT_EQ(driver.errorsLeft(), 1U);
    EXPECT_EQ(recording.count("glGetError"), 1U);
    EXPECT_EQ(recording.count("gluErrorString"), 1U);
    EXPECT_EQ(calls().back(), "glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE)");
    EXPECT_EQ(output.text() + errors.text(), "");
}

TEST_F(Base_shader_calls_test, imagesAreReadFromFiles) {
    TemporaryFolder const folder;
    VL_String const path(folder.file("a.png").c_str());
    picture_files::Png png;
    png.width = 4;
    png.height = 2;
    picture_files::writePng(folder.file("a.png"), png, [](std::size_t x, std::size_t, std::size_t) {
        return static_cast<unsigned int>(x);
    });
    Plain_shader effect;
    Texts const destroyed{"glDeleteTextures(1, {70})"};
    effect.loadTextureRGB(path, 70);
    EXPECT_EQ(calls(), joined({destroyed, uploaded("GL_RGB, 4, 2, 0, GL_RGB, GL_UNSIGNED_BYTE")}));
    EXPECT_THAT(layer.requests, ElementsAre("destroyTexture(70)", "destroyTexture(70)", "createTexture()"));
    effect.loadTextureFloat32(path, 70);
    EXPECT_EQ(calls(), joined({destroyed, uploaded("GL_RGBA32F_ARB, 4, 2, 0, GL_RGB, GL_UNSIGNED_BYTE")}));
}

TEST_F(Base_shader_calls_test, missingImagesOnlyDestroyTexture) {
    Plain_shader effect;
    TemporaryFolder const folder;
    for (std::string const& file :
         {std::string(), folder.file("none.png"), std::string("/"), folder.write("a.png", "no image")}) {
        char const* const path = file.c_str();
        effect.loadTextureRGB(VL_String(path), 70);
        EXPECT_THAT(calls(), ElementsAre("glDeleteTextures(1, {70})")) << path;
        effect.loadTextureFloat32(VL_String(path), 71);
        EXPECT_THAT(calls(), ElementsAre("glDeleteTextures(1, {71})")) << path;
    }
}

TEST_F(Base_shader_calls_test, withoutLayerTexturesAreNotDestroyed) {
    Core_RL* const former = VL_Raster;
    VL_Raster = nullptr;
    Plain_shader effect;
    VL_Image image;
    ASSERT_TRUE(image.create(4, 4, 3, 8));
    effect.loadTextureRGB(image, 70);
    effect.loadTextureFloat32(VL_String("/none/of/these.png"), 70);
    VL_Raster = former;
    EXPECT_EQ(recording.count("glTexImage2D"), 1U);
    EXPECT_EQ(recording.count("glDeleteTextures"), 0U);
}

TEST_F(Base_shader_calls_test, nextPowerOfTwoRoundsUp) {
    for (std::pair<int, int> const& pair : std::vector<std::pair<int, int>>{{0, 0},
                                                                            {1, 1},
                                                                            {2, 2},
                                                                            {3, 4},
                                                                            {5, 8},
                                                                            {8, 8},
                                                                            {9, 16},
                                                                            {600, 1024},
                                                                            {1000, 1024},
                                                                            {1024, 1024},
                                                                            {1025, 2048},
                                                                            {65537, 131072},
                                                                            {-1, 0},
                                                                            {-1000, 0},
                                                                            {1 << 30, 1 << 30},
                                                                            {INT_MIN, INT_MIN},
                                                                            {INT_MAX, INT_MIN}}) {
        EXPECT_EQ(Base_shader::nextHighestPowerOf2(pair.first), pair.second) << pair.first;
    }
}

TEST_F(Base_shader_calls_test, deliberatelyFramebuffersAreCopiedBeyondViewport) {
    Plain_shader effect;
    driver.integer(VIEWPORT_STATE, {10, 20, 1000, 600});
    effect.copyFramebufferToTexture(70);
    EXPECT_EQ(calls(), joined({{"glGetIntegerv(GL_VIEWPORT, pointer)"},
                               bound(70),
                               {"glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 10, 20, 1024, 1024, 0)"}}));
    driver.integer(VIEWPORT_STATE, {0, 0, 512, 513});
    effect.copyFramebufferToTexture(70);
    EXPECT_EQ(calls().back(), "glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 0, 0, 512, 1024, 0)");
}

}  // namespace

}  // namespace vellum
