#include "glsl_shader/Displacement_XZ_shader.h"
#include "glsl_shader/Displacement_shader.h"

#include "Core_RL_GL.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/picture_files.h"
#include "tests/vl_raster_gl/glsl_shader/effect_calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using Texts = std::vector<std::string>;

class Displacement_calls_test : public testing::Test {
protected:
    Displacement_calls_test() { driver.integer(GL_VIEWPORT, {5, 6, 1000, 600}); }

    /// The part of a geometry stage that is the same in both dialects.
    static std::string bodyOf(std::string const& text) { return text.substr(text.find("uniform ")); }

    /// The number of a kind of call, less that of another.
    int surplus(char const* more, char const* less) const {
        return static_cast<int>(recording.count(more)) - static_cast<int>(recording.count(less));
    }

    /// A picture file of these sizes.
    VL_String picture(unsigned int const& width, unsigned int const& height, char const* name = "a.png") {
        picture_files::writePng(folder.file(name), {width, height, 8, 2},
                                [](std::size_t, std::size_t, std::size_t) { return 1U; });
        return {folder.file(name).c_str()};
    }

    static VL_Image image(unsigned int const& width, unsigned int const& height, unsigned int const& channels,
                          unsigned int const& bits) {
        VL_Image made;
        EXPECT_TRUE(made.create(width, height, channels, bits));
        return made;
    }

    /// The calls that upload the image of a file.
    static Texts fileCalls(std::string const& texture, std::string const& sizes) {
        return {"glDeleteTextures(1, {" + texture + "})",
                "glBindTexture(GL_TEXTURE_2D, " + texture + ")",
                "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)",
                "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)",
                "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
                "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)",
                "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F_ARB, " + sizes +
                    ", 0, GL_RGB, GL_UNSIGNED_BYTE, pointer)"};
    }

    gl_spy::Script driver = gl_spy::drivers::geometryShader4();
    Core_RL_GL layer;
    gl_spy::Recording recording;
    TemporaryFolder folder;
};

/// A driver of this version without the extension.
class Plain_driver {
public:
    explicit Plain_driver(char const* version) : driver(gl_spy::drivers::noExtensions()) {
        driver.string(GL_VERSION, version);
        layer = std::make_unique<Core_RL_GL>();
    }
    ~Plain_driver() { VL_Raster = former; }
    Plain_driver(Plain_driver const&) = delete;
    Plain_driver& operator=(Plain_driver const&) = delete;

    gl_spy::Script driver;

private:
    Core_RL* former = VL_Raster;
    std::unique_ptr<Core_RL_GL> layer;  // sees only this driver's extensions
};

constexpr char const* NEWER = "4.5 (Compatibility Profile) Mesa 22.3.6";

// == Construction and ownership ==

TEST_F(Displacement_calls_test, constructorNamesTwoTexturesAndDestructorDeletesThem) {
    {
        Displacement_shader const effect;
        EXPECT_THAT(recording.texts(), ElementsAre("glGenTextures(1, pointer)", "glGenTextures(1, pointer)"));
        EXPECT_FALSE(effect.isTesselated());
        EXPECT_EQ(effect.getLog(), "");
    }
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Displacement_calls_test, oceanNamesOneTextureAndDeletesIt) {
    {
        Displacement_XZ_shader const effect;
        EXPECT_THAT(recording.texts(), ElementsAre("glGenTextures(1, pointer)"));
    }
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Displacement_calls_test, allObjectsAreDeletedWithTheirEffects) {
    {
        Displacement_shader plain;
        Displacement_shader tesselated;
        Displacement_XZ_shader ocean;
        tesselated.tesselate(true);
        for (Base_shader* const effect : std::initializer_list<Base_shader*>{&plain, &tesselated, &ocean}) {
            isSent(*effect, recording);
        }
        Displacement_shader copied(tesselated);
        Displacement_XZ_shader copiedOcean(ocean);
        isSent(copied, recording);
        isSent(copiedOcean, recording);
    }
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Displacement_calls_test, withoutRenderLayerEffectsHaveNoTexturesAndWorkOn) {
    VL_Raster = nullptr;
    Displacement_shader effect;
    effect.tesselate(true);
    effect.setDisplacementTexture(picture(4, 4));
    Displacement_XZ_shader ocean;
    EXPECT_TRUE(isSent(effect, recording));
    EXPECT_TRUE(isSent(ocean, recording));
    EXPECT_EQ(recording.count("glGenTextures"), 0U);
    VL_Raster = &layer;
}

// == Passes ==

TEST_F(Displacement_calls_test, passHasItsCallsInOrder) {
    driver.uniformLocation("normalsMap", 20).uniformLocation("displacementMap", 21);
    Displacement_shader effect;
    effect.setNLights(3);
    effect.setBaseColor(0.5F, 0.25F, 0.125F, 1);
    effect.setScale(2, 3, 4);
    effect.setTileScale(5, 6);
    effect.setDepth(7);
    effect.create();
    recording.clear();
    effect.preprocess();
    EXPECT_THAT(
        recording.texts(),
        ElementsAre(
            "glUseProgram(5)", "glPushAttrib(0x6000)", "glDisable(GL_TEXTURE_2D)", "glDisable(GL_TEXTURE_3D)",
            "glEnable(GL_LIGHTING)", "glEnable(GL_LIGHT0)", "glEnable(GL_LIGHT1)", "glEnable(GL_LIGHT2)",
            "glColor4f(1, 1, 1, 1)", "glEnable(GL_BLEND)",
            "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)", "glGetIntegerv(GL_VIEWPORT, pointer)",
            "glGetUniformLocation(5, \"FrameWidth\")", "glUniform1fv(0, 1, {1000})",
            "glGetUniformLocation(5, \"FrameHeight\")", "glUniform1fv(1, 1, {600})",
            "glGetUniformLocation(5, \"textureWidth\")", "glUniform1fv(2, 1, {1024})",
            "glGetUniformLocation(5, \"textureHeight\")", "glUniform1fv(3, 1, {1024})",
            "glGetUniformLocation(5, \"depth\")", "glUniform1iv(4, 1, {7})",
            "glGetUniformLocation(5, \"basecolor\")", "glUniform4fv(5, 1, {0.5, 0.25, 0.125, 1})",
            "glGetUniformLocation(5, \"scale\")", "glUniform3fv(6, 1, {2, 3, 4})",
            "glGetUniformLocation(5, \"uvTileFactor\")", "glUniform2fv(7, 1, {5, 6})",
            // the normals, texture 2, on unit 0
            "glUseProgram(5)", "glGetUniformLocation(5, \"normalsMap\")", "glActiveTexture(GL_TEXTURE0)",
            "glBindTexture(GL_TEXTURE_2D, 2)", "glUniform1i(20, 0)",
            // the displacement, texture 1, on unit 1
            "glUseProgram(5)", "glGetUniformLocation(5, \"displacementMap\")", "glActiveTexture(GL_TEXTURE1)",
            "glBindTexture(GL_TEXTURE_2D, 1)", "glUniform1i(21, 1)", "glGetUniformLocation(5, \"nLights\")",
            "glUniform1iv(8, 1, {3})", "glGetProgramInfoLog(5, 4096, null, pointer)"));
    recording.clear();
    effect.postprocess();
    EXPECT_THAT(recording.texts(), IsEmpty());
    effect.cleanup();
    EXPECT_THAT(recording.texts(),
                ElementsAre("glUseProgram(0)", "glUseProgramObjectARB(0)", "glPopAttrib()"));
    recording.clear();
    effect.init();
    EXPECT_THAT(recording.texts(), ElementsAre("glUseProgram(5)"));
}

TEST_F(Displacement_calls_test, passOfOceanHasItsCallsInOrder) {
    driver.uniformLocation("displacementMap", 21);
    Displacement_XZ_shader effect;
    effect.setLightPosition(1, 2, 3, 4);
    effect.setBaseColor(0.5F, 0.25F, 0.125F, 1);
    effect.setScale(2);
    effect.setDim_X(10);
    effect.setDim_Z(20);
    effect.setRepeat_U(3);
    effect.setRepeat_V(4);
    effect.setResolution(256);
    effect.setFoamThreshold(0.5F);
    effect.create();
    recording.clear();
    effect.preprocess();
    EXPECT_THAT(recording.texts(),
                ElementsAre("glUseProgram(4)", "glPushAttrib(0x6000)", "glDisable(GL_TEXTURE_2D)",
                            "glDisable(GL_TEXTURE_3D)", "glEnable(GL_LIGHTING)", "glEnable(GL_LIGHT0)",
                            "glEnable(GL_LIGHT1)", "glColor4f(1, 1, 1, 1)", "glEnable(GL_BLEND)",
                            "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
                            "glGetIntegerv(GL_VIEWPORT, pointer)", "glGetUniformLocation(4, \"FrameWidth\")",
                            "glUniform1fv(0, 1, {1000})", "glGetUniformLocation(4, \"FrameHeight\")",
                            "glUniform1fv(1, 1, {600})", "glGetUniformLocation(4, \"textureWidth\")",
                            "glUniform1fv(2, 1, {1024})", "glGetUniformLocation(4, \"textureHeight\")",
                            "glUniform1fv(3, 1, {1024})", "glGetUniformLocation(4, \"scale\")",
                            "glUniform1fv(4, 1, {2})", "glGetUniformLocation(4, \"repeat_u\")",
                            "glUniform1fv(5, 1, {3})", "glGetUniformLocation(4, \"repeat_v\")",
                            "glUniform1fv(6, 1, {4})", "glGetUniformLocation(4, \"foamThreshold\")",
                            "glUniform1fv(7, 1, {0.5})", "glGetUniformLocation(4, \"dim_X\")",
                            "glUniform1fv(8, 1, {10})", "glGetUniformLocation(4, \"dim_Z\")",
                            "glUniform1fv(9, 1, {20})", "glGetUniformLocation(4, \"resolution\")",
                            "glUniform1iv(10, 1, {256})", "glGetUniformLocation(4, \"lightpos\")",
                            "glUniform4fv(11, 1, {1, 2, 3, 4})", "glGetUniformLocation(4, \"basecolor\")",
                            "glUniform4fv(12, 1, {0.5, 0.25, 0.125, 1})", "glUseProgram(4)",
                            "glGetUniformLocation(4, \"displacementMap\")", "glActiveTexture(GL_TEXTURE1)",
                            "glBindTexture(GL_TEXTURE_2D, 1)", "glUniform1i(21, 1)",
                            "glGetProgramInfoLog(4, 4096, null, pointer)"));
    recording.clear();
    effect.postprocess();
    EXPECT_THAT(recording.texts(), IsEmpty());
    effect.cleanup();
    EXPECT_THAT(recording.texts(),
                ElementsAre("glUseProgram(0)", "glUseProgramObjectARB(0)", "glPopAttrib()"));
    recording.clear();
    effect.init();
    EXPECT_THAT(recording.texts(), ElementsAre("glUseProgram(4)"));
}

TEST_F(Displacement_calls_test, firstValuesAreThoseOfInterface) {
    Displacement_shader effect;
    effect.preprocess();
    EXPECT_THAT(recording.texts(), Contains("glUniform1iv(4, 1, {2})")) << "depth";
    EXPECT_THAT(recording.texts(), Contains("glUniform4fv(5, 1, {1, 1, 1, 1})")) << "base color";
    EXPECT_THAT(recording.texts(), Contains("glUniform3fv(6, 1, {1, 1, 1})")) << "scale";
    EXPECT_THAT(recording.texts(), Contains("glUniform2fv(7, 1, {1, 1})")) << "tile factor";
    effect.cleanup();
    EXPECT_EQ(std::vector<float>(effect.getScalePtr(), effect.getScalePtr() + 3),
              (std::vector<float>{1, 1, 1}));
    EXPECT_EQ(std::vector<float>(effect.getTileFactorPtr(), effect.getTileFactorPtr() + 2),
              (std::vector<float>{1, 1}));

    recording.clear();
    Displacement_XZ_shader ocean;
    ocean.preprocess();
    EXPECT_THAT(recording.texts(), Contains("glUniform1fv(4, 1, {1})")) << "scale";
    EXPECT_THAT(recording.texts(), Contains("glUniform1iv(10, 1, {512})")) << "resolution";
    for (gl_spy::Call const& call : recording.calls()) {
        for (double const& number : call.numbers) {
            EXPECT_TRUE(std::isfinite(number)) << call.text() << ": nothing is left unset";
        }
    }
    ocean.cleanup();
}

TEST_F(Displacement_calls_test, onlyDifferentValueIsSentAgain) {
    Displacement_shader effect;
    EXPECT_TRUE(isSent(effect, recording));
    EXPECT_FALSE(isSent(effect, recording));
    effect.setBaseColor(1, 1, 1, 1);
    effect.setScale(1, 1, 1);
    effect.setScale(Vector3<float>{1, 1, 1});
    effect.setTileScale(1, 1);
    effect.setTileScale(Vector3<float>{1, 1, 99});
    effect.setDepth(2);
    effect.setNLights(1);
    effect.tesselate(false);
    EXPECT_FALSE(isSent(effect, recording));
    effect.setBaseColor(1, 1, 1, 0.5F);
    EXPECT_TRUE(isSent(effect, recording));
    effect.setScale(1, 1, 2);
    EXPECT_TRUE(isSent(effect, recording));
    effect.setScale(Vector3<float>{1, 3, 2});
    EXPECT_TRUE(isSent(effect, recording));
    effect.setTileScale(1, 2);
    EXPECT_TRUE(isSent(effect, recording));
    effect.setTileScale(Vector3<float>{3, 2, 0});
    EXPECT_TRUE(isSent(effect, recording));
    effect.setDepth(3);
    EXPECT_TRUE(isSent(effect, recording));
    effect.setNLights(2);
    EXPECT_TRUE(isSent(effect, recording));
    effect.setScale(1, NAN, 2);
    EXPECT_TRUE(isSent(effect, recording));
    effect.setScale(1, NAN, 2);
    EXPECT_TRUE(isSent(effect, recording)) << "not a number differs from itself";
}

TEST_F(Displacement_calls_test, valuesThatAreEditedInPlaceAreSentWhenMarked) {
    Displacement_shader effect;
    isSent(effect, recording);
    effect.getScalePtr()[1] = 9;
    effect.getTileFactorPtr()[0] = 8;
    effect.markDirty();
    EXPECT_TRUE(isSent(effect, recording));
    EXPECT_EQ(recording.named("glUniform3fv").back().numbers.at(3), 9);
    EXPECT_EQ(recording.named("glUniform2fv").back().numbers.at(2), 8);
}

TEST_F(Displacement_calls_test, cleanPassKeepsChangedValues) {
    Displacement_shader effect;
    isSent(effect, recording);
    effect.getScalePtr()[2] = 7;
    driver.integer(GL_VIEWPORT, {0, 0, 200, 100});
    EXPECT_FALSE(isSent(effect, recording));
    recording.clear();
    effect.enable(true);
    EXPECT_EQ(recording.named("glUniform1fv").at(0).numbers.at(2), 200) << "the frame's width";
    EXPECT_EQ(recording.named("glUniform1fv").at(3).numbers.at(2), 128) << "the texture's height";
    EXPECT_EQ(recording.named("glUniform3fv").at(0).numbers.at(4), 7) << "the edited scale";
    effect.preprocess();
    EXPECT_EQ(recording.count("glUniform1fv"), 8U) << "sent at once, as the program is in use";
    effect.cleanup();
}

TEST_F(Displacement_calls_test, passHasParametersOfEffectWhateverWasSetBetween) {
    Displacement_shader effect;
    isSent(effect, recording);
    int values[] = {7};
    effect.setShaderConstant("depth", Mesh_RL_Shader::CONSTANT_INT, 1, values);
    isSent(effect, recording);
    recording.clear();
    effect.enable(true);
    EXPECT_THAT(recording.texts(), Contains(EndsWith(", 1, {2})")));
    EXPECT_THAT(recording.texts(), Not(Contains(EndsWith(", 1, {7})"))));
    effect.enable(false);
}

TEST_F(Displacement_calls_test, deliberatelyOceanStaysDirtyAndIsEnabledInEveryPass) {
    Displacement_XZ_shader effect;
    EXPECT_TRUE(isSent(effect, recording));
    EXPECT_TRUE(isSent(effect, recording));
    EXPECT_TRUE(isSent(effect, recording));
    EXPECT_EQ(recording.count("glLinkProgram"), 0U);
}

TEST_F(Displacement_calls_test, deliberatelyOceanHasTwoLightsAlways) {
    Displacement_XZ_shader effect;
    isSent(effect, recording);
    EXPECT_THAT(recording.texts(), Contains("glEnable(GL_LIGHT1)"));
    EXPECT_THAT(recording.texts(), Not(Contains("glEnable(GL_LIGHT2)")));
}

TEST_F(Displacement_calls_test, logIsKeptAfterCreationAndEveryPass) {
    driver.programStatus(true, "first");
    Displacement_shader effect;
    Displacement_XZ_shader ocean;
    effect.create();
    ocean.create();
    EXPECT_EQ(effect.getLog(), "first");
    EXPECT_EQ(ocean.getLog(), "first");
    driver.programStatus(true, "second");
    isSent(effect, recording);
    isSent(ocean, recording);
    EXPECT_EQ(effect.getLog(), "second");
    EXPECT_EQ(ocean.getLog(), "second");
}

// == Stages ==

TEST_F(Displacement_calls_test, plainPathHasVertexAndFragmentStage) {
    Displacement_shader effect;
    effect.create();
    ASSERT_EQ(stageTexts(recording).size(), 2U);
    EXPECT_EQ(recording.count("glProgramParameteriEXT"), 0U);
    for (char const* const declaration :
         {"uniform sampler2D displacementMap;", "uniform vec2 uvTileFactor;", "uniform vec3 scale;",
          "varying vec3 vNormal;", "varying vec4 vPos;"}) {
        EXPECT_THAT(stageTexts(recording)[0], HasSubstr(declaration));
    }
    for (char const* const declaration :
         {"uniform sampler2D normalsMap;", "uniform sampler2D displacementMap;", "uniform vec4 basecolor;",
          "uniform int nLights;", "uniform vec3 scale;", "mapSize = 256.0;", "choppy = 1.0;",
          "varying vec4 vPos;"}) {
        EXPECT_THAT(stageTexts(recording)[1], HasSubstr(declaration));
    }
    EXPECT_THAT(stageTexts(recording), Each(Not(HasSubstr("#version"))));
}

TEST_F(Displacement_calls_test, tessellatedPathHasExtensionsTextAndParameters) {
    driver.integer(GL_MAX_GEOMETRY_OUTPUT_VERTICES, {777})
        .integer(GL_MAX_GEOMETRY_TOTAL_OUTPUT_COMPONENTS, {1024});
    Displacement_shader effect;
    effect.tesselate(true);
    recording.clear();
    effect.create();
    EXPECT_TRUE(effect.isTesselated());
    ASSERT_EQ(stageTexts(recording).size(), 3U);

    Texts kinds;
    for (gl_spy::Call const& call : recording.named("glCreateShader")) {
        kinds.push_back(call.arguments.at(0));
    }
    EXPECT_THAT(kinds, ElementsAre("GL_VERTEX_SHADER", "GL_FRAGMENT_SHADER", "GL_GEOMETRY_SHADER_EXT"));

    Texts calls;
    for (std::string const& text : recording.texts()) {
        for (char const* const name :
             {"glAttachShader", "glGetIntegerv(GL_MAX", "glProgramParameteriEXT", "glLinkProgram"}) {
            if (text.find(name) == 0) {
                calls.push_back(text);
            }
        }
    }
    EXPECT_THAT(calls,
                ElementsAre("glGetIntegerv(GL_MAX_GEOMETRY_OUTPUT_VERTICES_EXT, pointer)",
                            "glGetIntegerv(GL_MAX_GEOMETRY_TOTAL_OUTPUT_COMPONENTS_EXT, pointer)",
                            "glAttachShader(6, 3)", "glAttachShader(6, 4)", "glAttachShader(6, 5)",
                            "glProgramParameteriEXT(6, GL_GEOMETRY_INPUT_TYPE_EXT, GL_TRIANGLES)",
                            "glProgramParameteriEXT(6, GL_GEOMETRY_OUTPUT_TYPE_EXT, GL_TRIANGLE_STRIP)",
                            "glProgramParameteriEXT(6, GL_GEOMETRY_VERTICES_OUT_EXT, 777)",
                            "glLinkProgram(6)"));

    EXPECT_THAT(stageTexts(recording)[0], HasSubstr("uniform vec2 uvTileFactor;"));
    EXPECT_THAT(stageTexts(recording)[0], Not(HasSubstr("displacementMap")));
    for (char const* const declaration : {"mapSize = 256.0;", "Yscale = 1.0;", "choppy = 2.0;"}) {
        EXPECT_THAT(stageTexts(recording)[1], HasSubstr(declaration));
    }
    EXPECT_THAT(stageTexts(recording)[2],
                StartsWith("#version 120\n#extension GL_EXT_geometry_shader4 : enable\n"));
    for (char const* const declaration :
         {"uniform sampler2D normalsMap;", "uniform sampler2D displacementMap;", "uniform vec3 scale;",
          "uniform int depth;", "#define STAGE_OUT varying out", "STAGE_OUT vec4 vPos;",
          "STAGE_OUT vec3 vNormal;"}) {
        EXPECT_THAT(stageTexts(recording)[2], HasSubstr(declaration));
    }
}

TEST_F(Displacement_calls_test, bothDialectsAreOneText) {
    Displacement_shader effect;
    effect.tesselate(true);
    effect.create();
    Texts const extension = stageTexts(recording);

    Plain_driver const newer(NEWER);
    Displacement_shader other;
    other.tesselate(true);
    recording.clear();
    other.create();
    EXPECT_TRUE(other.isTesselated());
    EXPECT_EQ(recording.count("glProgramParameteriEXT"), 0U);
    EXPECT_EQ(stageTexts(recording).at(0), extension.at(0));
    EXPECT_EQ(stageTexts(recording).at(1), extension.at(1));
    EXPECT_EQ(bodyOf(stageTexts(recording).at(2)), bodyOf(extension.at(2)))
        << "both emit the same vertices in the same order";
    EXPECT_THAT(extension.at(2), Not(HasSubstr("#define MOST_DEPTH"))) << "nor a limit of the depth";
}

TEST_F(Displacement_calls_test, otherDialectGoesAsDeepAsLimitsAllow) {
    struct Limits {
        int vertices, components, depth, emitted;
    };
    for (Limits const& limits : {Limits{256, 1024, 5, 55},       // the limits of every driver
                                 Limits{1024, 1024, 5, 55},      // the limits of most drivers
                                 Limits{256, 15 * 77, 5, 55},    //
                                 Limits{256, 15 * 78, 6, 78},    //
                                 Limits{256, 1000000, 11, 253},  //
                                 Limits{1024, 16384, 22, 990},   //
                                 Limits{0, 0, 5, 55},            // a driver that tells nothing
                                 Limits{-1, 7, 5, 55}}) {
        Plain_driver newer(NEWER);
        newer.driver.integer(GL_MAX_GEOMETRY_OUTPUT_VERTICES, {limits.vertices})
            .integer(GL_MAX_GEOMETRY_TOTAL_OUTPUT_COMPONENTS, {limits.components});
        Displacement_shader effect;
        effect.tesselate(true);
        recording.clear();
        effect.create();
        EXPECT_THAT(stageTexts(recording).at(2),
                    StartsWith("#version 150 compatibility\nlayout(triangles) in;\n"
                               "layout(triangle_strip, max_vertices = " +
                               std::to_string(limits.emitted) + ") out;\n"));
        EXPECT_THAT(stageTexts(recording).at(2),
                    HasSubstr("#define MOST_DEPTH " + std::to_string(limits.depth) + '\n'));
    }
}

TEST_F(Displacement_calls_test, belowVersion21PlainPathIsDrawnWithMessage) {
    driver.string(GL_VERSION, "2.0.9");
    Displacement_shader effect;
    effect.tesselate(true);
    EXPECT_TRUE(effect.isTesselated()) << "it is asked for";
    StreamCapture const output(std::cout);
    effect.create();
    EXPECT_EQ(output.text(), "OpenGL 2.1 NOT ready");
    EXPECT_FALSE(effect.isTesselated());
    EXPECT_EQ(stageTexts(recording).size(), 2U);
}

TEST_F(Displacement_calls_test, driversWithNeitherDialectAreOfferedExtensions) {
    Plain_driver const older("3.1 Mesa");
    Displacement_shader effect;
    effect.tesselate(true);
    recording.clear();
    effect.create();
    EXPECT_TRUE(effect.isTesselated());
    EXPECT_THAT(stageTexts(recording).at(2), StartsWith("#version 120\n"));
    EXPECT_EQ(recording.count("glProgramParameteriEXT"), 3U);
}

TEST_F(Displacement_calls_test, oceanTextsHaveTheirDeclarations) {
    Displacement_XZ_shader effect;
    effect.create();
    ASSERT_EQ(stageTexts(recording).size(), 2U);
    for (char const* const declaration :
         {"uniform sampler2D displacementMap;", "uniform float scale;", "uniform float repeat_u;",
          "uniform float repeat_v;", "varying vec4 vPos;", "varying mat3 base;", "1.192092896e-07"}) {
        EXPECT_THAT(stageTexts(recording)[0], HasSubstr(declaration));
    }
    for (char const* const declaration :
         {"uniform sampler2D normalsMap;", "uniform sampler2D displacementMap;", "uniform vec4 basecolor;",
          "uniform float scale;", "uniform float dim_X;", "uniform float dim_Z;", "uniform int resolution;",
          "uniform float foamThreshold;", "varying vec4 vPos;", "varying mat3 base;"}) {
        EXPECT_THAT(stageTexts(recording)[1], HasSubstr(declaration));
    }
    EXPECT_THAT(stageTexts(recording), Each(Not(HasSubstr("#version"))));
}

TEST_F(Displacement_calls_test, creatingTwiceLeavesOneSetOfStages) {
    Displacement_shader plain;
    Displacement_shader tesselated;
    Displacement_XZ_shader ocean;
    tesselated.tesselate(true);
    struct Case {
        Base_shader& effect;
        int stages;
    };
    for (Case const& c : {Case{plain, 2}, Case{tesselated, 3}, Case{ocean, 2}}) {
        recording.clear();
        c.effect.create();
        c.effect.create();
        c.effect.create();
        EXPECT_EQ(surplus("glAttachShader", "glDetachShader"), c.stages);
        EXPECT_EQ(surplus("glCreateShader", "glDeleteShader"), c.stages);
        EXPECT_EQ(recording.count("glCreateProgram"), 1U);
    }
}

TEST_F(Displacement_calls_test, changingPathReloadsEffect) {
    Displacement_shader effect;
    isSent(effect, recording);
    recording.clear();
    effect.tesselate(false);
    EXPECT_THAT(recording.texts(), IsEmpty()) << "the same choice";
    effect.tesselate(true);
    EXPECT_EQ(recording.count("glDeleteShader"), 2U);
    EXPECT_FALSE(effect.created);
    EXPECT_TRUE(isSent(effect, recording));
    EXPECT_EQ(stageTexts(recording).size(), 3U);
    effect.tesselate(false);
    EXPECT_TRUE(isSent(effect, recording));
    EXPECT_EQ(stageTexts(recording).size(), 2U);
    EXPECT_EQ(surplus("glAttachShader", "glDetachShader"), 2) << "the others went with the reload";
    effect.markDirty();
    effect.tesselate(false);
    EXPECT_FALSE(effect.created) << "a dirty effect is reloaded for the same choice, too";
}

// == Textures ==

TEST_F(Displacement_calls_test, filesAreUploadedAsFloats) {
    Displacement_shader effect;
    recording.clear();
    effect.setDisplacementTexture(picture(4, 8));
    EXPECT_EQ(recording.texts(), fileCalls("1", "4, 8"));
    recording.clear();
    effect.setNormalsTexture(picture(4, 8));
    EXPECT_EQ(recording.texts(), fileCalls("2", "4, 8"));
}

TEST_F(Displacement_calls_test, deliberatelySizesOfFilesAreRoundedUpToPowersOfTwo) {
    Displacement_shader effect;
    recording.clear();
    effect.setDisplacementTexture(picture(5, 3));
    EXPECT_EQ(recording.texts(), fileCalls("1", "8, 4"));
}

TEST_F(Displacement_calls_test, sameFileIsReadAgainOnlyWhileEffectIsDirty) {
    Displacement_shader effect;
    VL_String const path = picture(4, 4);
    VL_String const other = picture(4, 4, "b.png");
    effect.setDisplacementTexture(path);
    effect.setNormalsTexture(path);
    recording.clear();
    effect.setDisplacementTexture(path);
    effect.setNormalsTexture(path);
    EXPECT_EQ(recording.count("glTexImage2D"), 2U);
    isSent(effect, recording);
    recording.clear();
    effect.setDisplacementTexture(path);
    effect.setNormalsTexture(path);
    EXPECT_THAT(recording.texts(), IsEmpty());
    effect.setDisplacementTexture(other);
    effect.setNormalsTexture(other);
    EXPECT_EQ(recording.count("glTexImage2D"), 2U);
}

TEST_F(Displacement_calls_test, creatingDirtyEffectReadsDisplacementFile) {
    Displacement_shader effect;
    effect.setDisplacementTexture(picture(4, 4));
    effect.setNormalsTexture(picture(4, 4));
    recording.clear();
    effect.create();
    EXPECT_EQ(recording.count("glTexImage2D"), 1U);
    effect.postprocess();
    recording.clear();
    effect.create();
    EXPECT_EQ(recording.count("glTexImage2D"), 0U);
}

TEST_F(Displacement_calls_test, fileThatCannotBeReadLeavesTextureEmpty) {
    Displacement_shader effect;
    for (std::string const& path :
         {std::string(), folder.file("missing.png"), folder.write("a.png", "no picture")}) {
        recording.clear();
        effect.setDisplacementTexture(VL_String(path.c_str()));
        EXPECT_THAT(recording.texts(), ElementsAre("glDeleteTextures(1, {1})"));
    }
    EXPECT_TRUE(isSent(effect, recording));
}

TEST_F(Displacement_calls_test, pictureOfFileGoesToCaller) {
    Displacement_shader effect;
    VL_Image* kept = nullptr;
    effect.loadTexture(picture(5, 3), kept, 9);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->width(), 5U);
    effect.loadTexture("missing", kept, 9);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->width(), 0U);
    delete kept;
}

TEST_F(Displacement_calls_test, imagesAreUploadedAsFloatsInTheirOwnSizes) {
    Displacement_shader effect;
    recording.clear();
    effect.setDisplacementTexture(image(5, 3, 4, 32));
    EXPECT_THAT(recording.texts(), Contains("glBindTexture(GL_TEXTURE_2D, 1)"));
    EXPECT_THAT(
        recording.texts(),
        Contains("glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F_ARB, 5, 3, 0, GL_RGBA, GL_FLOAT, pointer)"));
    recording.clear();
    effect.setNormalsTexture(image(4, 4, 3, 16));
    EXPECT_THAT(recording.texts(), Contains("glBindTexture(GL_TEXTURE_2D, 2)"));

    Displacement_XZ_shader ocean;
    recording.clear();
    ocean.setDisplacementTexture(image(4, 4, 4, 8));
    EXPECT_THAT(recording.texts(),
                Contains("glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F_ARB, 4, 4, 0, GL_RGBA, "
                         "GL_UNSIGNED_BYTE, pointer)"));
    recording.clear();
    ocean.setDisplacementTexture(VL_Image());
    effect.setDisplacementTexture(VL_Image());
    effect.setNormalsTexture(VL_Image());
    EXPECT_THAT(recording.texts(), IsEmpty());
}

// == Copies ==

TEST_F(Displacement_calls_test, copyTakesShapeAndFileAndNothingElse) {
    Displacement_shader original;
    original.setScale(2, 3, 4);
    original.setTileScale(5, 6);
    original.setDepth(7);
    original.setBaseColor(0, 0, 1, 1);
    original.setNLights(3);
    original.tesselate(true);
    original.setDisplacementTexture(picture(4, 4));
    original.create();

    recording.clear();
    Displacement_shader copied(original);
    EXPECT_THAT(recording.texts(), IsEmpty()) << "no objects before its first use";
    EXPECT_FALSE(copied.created);
    EXPECT_TRUE(copied.isTesselated());

    copied.preprocess();
    EXPECT_EQ(recording.count("glGenTextures"), 2U) << "textures of its own";
    EXPECT_EQ(recording.count("glTexImage2D"), 1U) << "with the file's picture";
    EXPECT_EQ(stageTexts(recording).size(), 3U);
    EXPECT_EQ(recording.named("glUniform3fv").back().numbers.at(3), 3);
    EXPECT_EQ(recording.named("glUniform2fv").back().numbers.at(3), 6);
    EXPECT_THAT(recording.texts(), Contains(HasSubstr("glUniform1iv(4, 1, {7})")));
    EXPECT_THAT(recording.texts(), Contains(HasSubstr("{1, 1, 1, 1})"))) << "the first base color";
    EXPECT_THAT(recording.texts(), Not(Contains("glEnable(GL_LIGHT1)"))) << "the first light count";
    copied.cleanup();
}

TEST_F(Displacement_calls_test, copyingIntoEffectInUseCreatesItAgainWhereItMust) {
    Displacement_shader original;
    Displacement_shader target;
    isSent(target, recording);
    recording.clear();
    target.copy(original);
    EXPECT_THAT(recording.texts(), IsEmpty());
    EXPECT_FALSE(isSent(target, recording)) << "nothing differs";

    original.setDepth(9);
    target.copy(original);
    EXPECT_TRUE(target.created);
    EXPECT_TRUE(isSent(target, recording));

    original.tesselate(true);
    target.copy(original);
    EXPECT_FALSE(target.created);
    EXPECT_TRUE(isSent(target, recording));
    EXPECT_EQ(stageTexts(recording).size(), 3U);

    original.setDisplacementTexture(picture(4, 4));
    target.copy(original);
    EXPECT_TRUE(isSent(target, recording));
    EXPECT_EQ(recording.count("glTexImage2D"), 1U);
}

TEST_F(Displacement_calls_test, copiedOceanHasParametersAndTextureOfItsOwn) {
    Displacement_XZ_shader original;
    original.setFoamThreshold(0.5F);
    original.setResolution(64);
    recording.clear();
    Displacement_XZ_shader copied(original);
    EXPECT_THAT(recording.texts(), IsEmpty());
    copied.preprocess();
    EXPECT_EQ(recording.count("glGenTextures"), 1U);
    EXPECT_THAT(recording.texts(), Contains("glUniform1fv(7, 1, {0.5})"));
    EXPECT_THAT(recording.texts(), Contains("glUniform1iv(10, 1, {64})"));
    copied.cleanup();
}

}  // namespace
}  // namespace vellum
