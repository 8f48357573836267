#include "tests/vl_raster_gl/particle_calls.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace vellum {
namespace {

using namespace particle_calls;

/// A render layer of a driver whose stores may grow up to a limit. A larger one is refused with an error, and
/// the former store stays and is mapped.
class RefusingLayer : public Core_RL_GL {
public:
    static constexpr std::byte UNTOUCHED{0x5A};

    std::size_t limit = 1U << 30;
    bool hasPendingError = false;  // as a call of the application leaves it
    unsigned int mappings = 0;
    unsigned int deletions = 0;

    void bufferData(BufferTarget::type, unsigned long size, void*, BufferUsage::type) override {
        if (size > limit) {
            hasPendingError = true;
            return;
        }
        storeSize = size;
    }
    void* mapBuffer(BufferTarget::type, BufferAccess::type) override {
        ++mappings;
        memory.assign(std::size_t{1} << 16, UNTOUCHED);
        return storeSize != 0 ? memory.data() : nullptr;
    }
    void unmapBuffer(BufferTarget::type) override {}
    void deleteBuffers(unsigned long, unsigned int*) override {
        ++deletions;
        storeSize = 0;
    }
    using Core_RL_GL::getError;
    bool getError(char const*, int) override { return std::exchange(hasPendingError, false); }

    bool isWrittenBeyondTheEnd() const {
        for (std::size_t i = storeSize; i < memory.size(); ++i) {
            if (memory[i] != UNTOUCHED) {
                return true;
            }
        }
        return false;
    }

private:
    std::size_t storeSize = 0;
    std::vector<std::byte> memory;
};

class Particles_RL_GL_v2_refusals_calls_test : public testing::TestWithParam<bool> {
protected:
    Particles_RL_GL_v2_refusals_calls_test() {
        driver.string(VERSION, "2.1.0")
            .string(EXTENSIONS, "GL_ARB_vertex_buffer_object GL_NVX_gpu_memory_info GL_EXT_geometry_shader4")
            .integer(FREE_MEMORY, {PLENTY});
        renderer.init();
    }
    ~Particles_RL_GL_v2_refusals_calls_test() override { renderer.releaseEffects(); }

    /// Draws with or without an effect. \return false where the buffer was refused.
    bool draw(float percent) {
        Arguments arguments;
        arguments.percent = percent;
        return GetParam() ? renderer.vboEffect(particles.system, arguments)
                          : renderer.vbo(particles.system, arguments);
    }

    gl_spy::Script driver = gl_spy::drivers::geometryShader4();
    RefusingLayer layer;
    Probe renderer;
    Particles particles{100};
};

TEST_P(Particles_RL_GL_v2_refusals_calls_test, aStoreThatMayNotGrowIsNotWrittenBeyondItsEnd) {
    ASSERT_TRUE(draw(10));
    layer.limit = 10 * 24;
    EXPECT_FALSE(draw(100));
    EXPECT_FALSE(layer.isWrittenBeyondTheEnd());
    EXPECT_EQ(layer.deletions, 1U);
    EXPECT_FALSE(draw(100)) << "nor in the next frame";
    layer.limit = 1U << 30;
    EXPECT_TRUE(draw(100)) << "until there is memory";
}

TEST_P(Particles_RL_GL_v2_refusals_calls_test, aStoreThatWasSmallerMeanwhileIsNotWrittenBeyondItsEnd) {
    ASSERT_TRUE(draw(100));
    ASSERT_TRUE(draw(10));  // the renderer has sized a buffer for 100, yet its store holds 10
    layer.limit = 10 * 24;
    EXPECT_FALSE(draw(90));
    EXPECT_FALSE(layer.isWrittenBeyondTheEnd());
}

TEST_P(Particles_RL_GL_v2_refusals_calls_test, pendingErrorCostsAGrowingBufferOneFrame) {
    for (float const percent : {10.0F, 50.0F, 100.0F}) {
        layer.hasPendingError = true;
        EXPECT_FALSE(draw(percent)) << "the error may be that of the store";
        EXPECT_TRUE(draw(percent));
    }
    EXPECT_EQ(layer.deletions, 3U);
    EXPECT_EQ(layer.mappings, 6U);
}

TEST_P(Particles_RL_GL_v2_refusals_calls_test, aPendingErrorCostsNothingWhereTheStoreDoesNotGrow) {
    ASSERT_TRUE(draw(100));
    layer.hasPendingError = true;
    EXPECT_TRUE(draw(100));
    layer.hasPendingError = true;
    EXPECT_TRUE(draw(50));
    EXPECT_EQ(layer.deletions, 0U);
    EXPECT_EQ(layer.mappings, 3U);
}

TEST_P(Particles_RL_GL_v2_refusals_calls_test, aRefusedReplacementOfALargeEnoughStoreIsStillFilled) {
    ASSERT_TRUE(draw(100));
    layer.limit = 0;
    EXPECT_TRUE(draw(50)) << "the former store has room";
    EXPECT_FALSE(layer.isWrittenBeyondTheEnd());
}

INSTANTIATE_TEST_SUITE_P(Paths, Particles_RL_GL_v2_refusals_calls_test, testing::Bool(),
                         [](auto const& info) { return info.param ? "withEffect" : "withoutEffect"; });

TEST(Particles_RL_GL_v2_refused_names_calls_test, withoutABufferNameTheParticlesAreDrawnAnotherWay) {
    Particles const particles(10);
    for (bool const withEffect : {false, true}) {
        Rig rig;
        rig.driver.noBufferNames();
        Arguments a;
        a.useShaders = withEffect;
        gl_spy::Recording const recording;
        rig.renderer.dispatch(particles.system, a);
        EXPECT_EQ(rig.renderer.lastPath, withEffect ? 3U : 4U);
        for (gl_spy::Call const& call : recording.named("glVertexPointer")) {
            EXPECT_NE(call.addresses.at(0), 0U) << "drawn from main memory";
        }
    }
}

}  // namespace
}  // namespace vellum
