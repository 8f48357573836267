#include "viewport/drawing/layer/ViewportLayer.h"

#include "tests/gl_spy/GlTest.h"

using namespace vellum;
using namespace vellum::viewport;

class ViewportLayer_gl_test : public gl_spy::GlTest {};

TEST_F(ViewportLayer_gl_test, memoryThatIsGivenIsAnswered) {
    EXPECT_EQ(ViewportLayer(512).getFreeGpuMemory(), 512U * 1024U);
    EXPECT_EQ(ViewportLayer(0).getFreeGpuMemory(), 0U);
    EXPECT_EQ(ViewportLayer(1 << 20).getFreeGpuMemory(), 1U << 30U);
}

TEST_F(ViewportLayer_gl_test, whereTheDriverIsSilentMainMemoryIsAnswered) {
    ViewportLayer layer;
    unsigned int const told = layer.Core_RL_GL::getFreeGpuMemory();
    if (told != 0) {
        EXPECT_NEAR(layer.getFreeGpuMemory(), told, told / 2.0);
        return;
    }
    // Others take and give back memory meanwhile.
    EXPECT_GT(layer.getFreeGpuMemory(), 0U);
    EXPECT_NEAR(layer.getFreeGpuMemory(), availableMainMemory() / 2.0, availableMainMemory() / 4.0);
}
