#include "toolkit/Layer.h"

#include "Shader_gl.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>

#include "toolkit/internal/gl.h"

namespace vellum::toolkit {
namespace {

constexpr unsigned int CURRENT_AVAILABLE = 0x9049;  // GL_GPU_MEMORY_INFO_CURRENT_AVAILABLE_VIDMEM_NVX

class Layer_calls_test : public testing::Test {
protected:
    gl_spy::Script driver = gl_spy::drivers::gl21();
};

}  // namespace

// == Memory ==

TEST_F(Layer_calls_test, assumedMemoryIsAnswered) {
    driver.string(GL_EXTENSIONS, "GL_NVX_gpu_memory_info").integer(CURRENT_AVAILABLE, {2048});
    Layer layer;
    for (unsigned int const megabytes : {512U, 0U, 1U << 20U}) {
        layer.assumeFreeGpuMemory(megabytes);
        EXPECT_EQ(layer.getFreeGpuMemory(), megabytes * 1024U);
    }
    // The answer is in kilobytes, and 32 bits hold no more.
    layer.assumeFreeGpuMemory(0xFFFFFFFFU);
    EXPECT_EQ(layer.getFreeGpuMemory(), 0xFFFFFC00U);
    layer.assumeFreeGpuMemory(std::nullopt);
    EXPECT_EQ(layer.getFreeGpuMemory(), 2048U);
}

TEST_F(Layer_calls_test, whereTheDriverIsSilentHalfOfTheMainMemoryIsAnswered) {
    Layer layer;
    ASSERT_EQ(layer.Core_RL_GL::getFreeGpuMemory(), 0U);
    // Others take and give back memory meanwhile.
    EXPECT_GT(layer.getFreeGpuMemory(), 0U);
    EXPECT_NEAR(layer.getFreeGpuMemory(), availableMainMemory() / 2.0, availableMainMemory() / 4.0);
}

// == Compile logs ==

TEST_F(Layer_calls_test, logsAreKeptUntilTheyAreTakenAndNotPrinted) {
    Layer layer;
    driver.shaderStatus(false, "0:1(1): error: nothing\n");
    testing::internal::CaptureStdout();
    {
        Shader_gl stage;
        EXPECT_FALSE(stage.loadShaderSource(GL_FRAGMENT_SHADER, "nothing", false));
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    std::vector<CompileLog> const logs = layer.takeCompileLogs();
    ASSERT_EQ(logs.size(), 1U);
    EXPECT_EQ(logs[0].stage, static_cast<unsigned int>(GL_FRAGMENT_SHADER));
    EXPECT_EQ(logs[0].log, "0:1(1): error: nothing\n");
    EXPECT_TRUE(layer.takeCompileLogs().empty());
}

TEST_F(Layer_calls_test, aStageThatCompilesLeavesNoLog) {
    Layer layer;
    Shader_gl stage;
    EXPECT_TRUE(stage.loadShaderSource(GL_VERTEX_SHADER, "void main() {}", false));
    EXPECT_TRUE(layer.takeCompileLogs().empty());
}

TEST_F(Layer_calls_test, anEmptyLogIsKeptWhateverItsLengthIsSaidToBe) {
    for (int const length : {0, 1}) {
        Layer layer;
        driver.shaderStatus(false, "").emptyLogLength(length);
        Shader_gl stage;
        EXPECT_FALSE(stage.loadShaderSource(GL_VERTEX_SHADER, "nothing", false));
        std::vector<CompileLog> const logs = layer.takeCompileLogs();
        ASSERT_EQ(logs.size(), 1U);
        EXPECT_EQ(logs[0].log, "");
    }
}

TEST_F(Layer_calls_test, returnedLogsComeBeforeThoseKeptSince) {
    Layer layer;
    driver.shaderStatus(false, "new");
    Shader_gl stage;
    stage.loadShaderSource(GL_VERTEX_SHADER, "nothing", false);
    layer.returnCompileLogs({{GL_FRAGMENT_SHADER, "old"}});
    std::vector<CompileLog> const logs = layer.takeCompileLogs();
    ASSERT_EQ(logs.size(), 2U);
    EXPECT_EQ(logs[0].log, "old");
    EXPECT_EQ(logs[1].log, "new");
}

// == Geometry stages ==

TEST_F(Layer_calls_test, geometryStagesNeedShadersAndAnExtensionOrAVersion) {
    struct Row {
        char const* version;
        char const* extensions;
        bool expected;
    };
    for (Row const& row : {Row{"2.1.0", "", false}, Row{"2.1.0", "GL_EXT_geometry_shader4", true},
                           Row{"3.2.0", "", true}, Row{"1.5.0", "GL_EXT_geometry_shader4", false}}) {
        driver.string(GL_VERSION, row.version).string(GL_EXTENSIONS, row.extensions);
        Layer layer;
        EXPECT_EQ(hasGeometryStages(layer), row.expected) << row.version << " " << row.extensions;
    }
}

}  // namespace vellum::toolkit
