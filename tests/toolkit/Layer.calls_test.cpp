#include "toolkit/Layer.h"

#include "Shader_gl.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/recorded_calls.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

constexpr unsigned int EXTENSIONS = 0x1F03;
constexpr unsigned int VERSION = 0x1F02;
constexpr unsigned int RENDERER = 0x1F01;
constexpr unsigned int VERTEX_STAGE = 0x8B31;
constexpr unsigned int FRAGMENT_STAGE = 0x8B30;

}  // namespace

TEST(Layer, constructionMakesNoCallAndBecomesTheRenderLayer) {
    gl_spy::Script const driver = gl_spy::drivers::gl21();
    gl_spy::Recording const recording;
    Layer const layer;
    EXPECT_EQ(VL_Raster, &layer);
    EXPECT_EQ(recording.texts(), Texts{});
}

TEST(Layer, assumedMemoryIsAnsweredInKilobytesWithoutAskingTheDriver) {
    gl_spy::Script const driver = gl_spy::drivers::nvxMemory(4000, 3000);
    Layer layer;
    layer.assumeFreeGpuMemory(100);
    gl_spy::Recording const recording;
    EXPECT_EQ(layer.getFreeGpuMemory(), 102400U);
    EXPECT_EQ(recording.texts(), Texts{});
    layer.assumeFreeGpuMemory(0);
    EXPECT_EQ(layer.getFreeGpuMemory(), 0U);
}

TEST(Layer, assumedMemoryThatExceedsTheAnswerIsTheLargestOne) {
    gl_spy::Script const driver = gl_spy::drivers::gl21();
    Layer layer;
    layer.assumeFreeGpuMemory(std::numeric_limits<unsigned int>::max());
    EXPECT_EQ(layer.getFreeGpuMemory(), 0xFFFFFC00U);
}

TEST(Layer, driverIsAskedAgainWhenNothingIsAssumed) {
    gl_spy::Script const driver = gl_spy::drivers::nvxMemory(4000, 3000);
    Layer layer;
    EXPECT_EQ(layer.getFreeGpuMemory(), 3000U);
    layer.assumeFreeGpuMemory(7);
    layer.assumeFreeGpuMemory(std::nullopt);
    EXPECT_EQ(layer.getFreeGpuMemory(), 3000U);
}

TEST(Layer, silentDriverHasHalfOfTheAvailableMainMemory) {
    gl_spy::Script const driver = gl_spy::drivers::gl21();
    Layer layer;
    unsigned int const available = availableMainMemory();
    ASSERT_GT(available, 0U);
    // Other programs take and return memory in the meantime.
    EXPECT_NEAR(static_cast<double>(layer.getFreeGpuMemory()), available / 2.0, available * 0.1);
}

TEST(Layer, softwareRasterizerPausesBehindManyPoints) {
    constexpr unsigned long MANY = Layer::POINTS_AT_ONCE;
    gl_spy::Script driver = gl_spy::drivers::gl21();
    driver.string(RENDERER, "llvmpipe (LLVM 15.0.6, 256 bits)");
    Layer layer;
    gl_spy::Recording const recording;
    layer.drawArrays(Primitive::POINTS, 7, MANY);
    layer.drawArrays(Primitive::TRIANGLES, 0, 10 * MANY);
    EXPECT_EQ(recording.count("glFinish"), 0U);
    layer.drawArrays(Primitive::POINTS, 3, 2 * MANY + 5);
    layer.drawElements(Primitive::POINTS, MANY - 5, DataType::UNSIGNED_SHORT, nullptr);
    layer.drawElements(Primitive::POINTS, 1, DataType::UNSIGNED_SHORT, nullptr);
    EXPECT_EQ(
        recording.texts(),
        (Texts{"glDrawArrays(GL_POINTS, 7, 262144)", "glDrawArrays(GL_TRIANGLES, 0, 2621440)",
               "glGetString(GL_RENDERER)", "glFinish()", "glDrawArrays(GL_POINTS, 3, 262144)", "glFinish()",
               "glDrawArrays(GL_POINTS, 262147, 262144)", "glFinish()", "glDrawArrays(GL_POINTS, 524291, 5)",
               "glDrawElements(GL_POINTS, 262139, GL_UNSIGNED_SHORT, null)",
               "glDrawElements(GL_POINTS, 1, GL_UNSIGNED_SHORT, null)", "glFinish()"}));
}

TEST(Layer, otherDriversDrawManyPointsAtOnce) {
    gl_spy::Script driver = gl_spy::drivers::gl21();
    driver.string(RENDERER, "NVIDIA GeForce");
    Layer layer;
    gl_spy::Recording const recording;
    layer.drawArrays(Primitive::POINTS, 0, 20'000'000);
    layer.drawArrays(Primitive::POINTS, 0, 20'000'000);
    EXPECT_EQ(recording.texts(), (Texts{"glGetString(GL_RENDERER)", "glDrawArrays(GL_POINTS, 0, 20000000)",
                                        "glDrawArrays(GL_POINTS, 0, 20000000)"}));
}

TEST(Layer, logsOfFailedStagesAreKeptAndNotPrinted) {
    gl_spy::Script driver = gl_spy::drivers::gl21();
    Layer layer;
    unsigned int const vertex = layer.createShader(static_cast<ShaderType::type>(VERTEX_STAGE));
    unsigned int const fragment = layer.createShader(static_cast<ShaderType::type>(FRAGMENT_STAGE));
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    driver.shaderStatus(false, "0:3(1): error: what");
    layer.checkShaderCompilationErrors(vertex, "a name");
    driver.shaderStatus(false, "second");
    layer.checkShaderCompilationErrors(fragment, nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    std::vector<CompileLog> const logs = layer.takeCompileLogs();
    ASSERT_EQ(logs.size(), 2U);
    EXPECT_EQ(logs[0].log, "0:3(1): error: what");
    EXPECT_EQ(logs[0].stage, VERTEX_STAGE);
    EXPECT_EQ(logs[1].log, "second");
    EXPECT_EQ(logs[1].stage, FRAGMENT_STAGE);
    EXPECT_TRUE(layer.takeCompileLogs().empty());
}

TEST(Layer, failedStageWithoutLogIsKeptWithAnEmptyOne) {
    gl_spy::Script driver = gl_spy::drivers::gl21();
    Layer layer;
    unsigned int const vertex = layer.createShader(static_cast<ShaderType::type>(VERTEX_STAGE));
    for (int const length : {0, 1}) {
        driver.shaderStatus(false, "").emptyLogLength(length);
        layer.checkShaderCompilationErrors(vertex, "");
        std::vector<CompileLog> const logs = layer.takeCompileLogs();
        ASSERT_EQ(logs.size(), 1U);
        EXPECT_EQ(logs[0].log, "");
    }
}

TEST(Layer, compiledStageLeavesNoLog) {
    gl_spy::Script driver = gl_spy::drivers::gl21();
    driver.shaderStatus(true, "0:3(1): warning: what");
    Layer layer;
    unsigned int const vertex = layer.createShader(static_cast<ShaderType::type>(VERTEX_STAGE));
    gl_spy::Recording const recording;
    layer.checkShaderCompilationErrors(vertex, "a name");
    EXPECT_TRUE(layer.takeCompileLogs().empty());
    EXPECT_EQ(recording.count("glGetShaderInfoLog"), 0U);
}

TEST(Layer, geometryStagesNeedShadersAndTheirExtensionOrVersion) {
    struct Row {
        char const* version;
        char const* extensions;
        bool expected;
    };
    for (Row const& row : {Row{"1.5.0", "GL_EXT_geometry_shader4", false},
                           {"2.1.0", "", false},
                           {"2.1.0", "GL_EXT_geometry_shader4", true},
                           {"3.1.0", "", false},
                           {"3.2.0", "", true}}) {
        gl_spy::Script driver = gl_spy::drivers::gl21();
        driver.string(VERSION, row.version).string(EXTENSIONS, row.extensions);
        Layer layer;
        EXPECT_EQ(hasGeometryStages(layer), row.expected) << row.version << " " << row.extensions;
    }
}

TEST(Layer, returnedLogsComeBeforeThoseKeptSince) {
    gl_spy::Script driver = gl_spy::drivers::gl21();
    driver.shaderStatus(false, "new");
    Layer layer;
    Shader_gl stage;
    stage.loadShaderSource(VERTEX_STAGE, "nothing", false);
    layer.returnCompileLogs({{FRAGMENT_STAGE, "old"}});
    std::vector<CompileLog> const logs = layer.takeCompileLogs();
    ASSERT_EQ(logs.size(), 2U);
    EXPECT_EQ(logs[0].log, "old");
    EXPECT_EQ(logs[1].log, "new");
}
