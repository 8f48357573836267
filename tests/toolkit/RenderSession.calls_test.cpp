#include "toolkit/RenderSession.h"

#include "foundation/geometry/Mesh.h"
#include "glsl_shader/Glass_shader.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vellum::toolkit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RenderSession_calls_test : public testing::Test {
protected:
    ~RenderSession_calls_test() override { VL_Raster = nullptr; }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    gl_spy::Recording recording;
};

/// Notes the order in which parts end.
struct Part {
    Part(std::vector<std::string>& ends, std::string name) : ends(ends), name(std::move(name)) {}
    ~Part() { ends.push_back(VL_Raster != nullptr ? name : name + " without a layer"); }
    Part(Part const&) = delete;
    Part& operator=(Part const&) = delete;

    std::vector<std::string>& ends;
    std::string name;
};

TEST_F(RenderSession_calls_test, beginsWithTheDepthTest) {
    RenderSession const session;
    EXPECT_THAT(recording.texts(),
                ElementsAre("glDepthMask(GL_TRUE)", "glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_LESS)"));
}

TEST_F(RenderSession_calls_test, itsLayerIsTheRenderLayerWithItsCamera) {
    RenderSession session;
    EXPECT_EQ(VL_Raster, &session.layer());
    EXPECT_EQ(session.layer().getCamera(), &session.camera());
}

TEST_F(RenderSession_calls_test, anApplicationCanBringItsOwnLayer) {
    class Own : public Layer {
    public:
        explicit Own(bool& isGone) : isGone(isGone) {}
        ~Own() override { isGone = true; }
        bool& isGone;
    };
    bool isGone = false;
    {
        RenderSession session(std::make_unique<Own>(isGone));
        EXPECT_NE(dynamic_cast<Own*>(&session.layer()), nullptr);
        EXPECT_EQ(VL_Raster, &session.layer());
        EXPECT_EQ(session.layer().getCamera(), &session.camera());
    }
    EXPECT_TRUE(isGone);
    EXPECT_EQ(VL_Raster, nullptr);
}

TEST_F(RenderSession_calls_test, noRenderLayerIsLeftBehind) {
    { RenderSession const session; }
    EXPECT_EQ(VL_Raster, nullptr);
}

TEST_F(RenderSession_calls_test, partsEndInReverseWhileTheLayerIsThere) {
    std::vector<std::string> ends;
    {
        RenderSession session;
        session.add<Part>(ends, "first");
        session.add<Part>(ends, "second");
        session.add<Part>(ends, "third");
    }
    EXPECT_THAT(ends, ElementsAre("third", "second", "first"));
}

TEST_F(RenderSession_calls_test, aRemovedPartEndsAtOnce) {
    std::vector<std::string> ends;
    RenderSession session;
    Part const& first = session.add<Part>(ends, "first");
    session.add<Part>(ends, "second");
    session.remove(&first);
    EXPECT_THAT(ends, ElementsAre("first"));
    session.remove(&ends);
    EXPECT_THAT(ends, ElementsAre("first")) << "what was not added is left alone";
}

TEST_F(RenderSession_calls_test, everyObjectOfItsPartsIsDeleted) {
    Mesh mesh;
    mesh.setPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    mesh.setTriangles({{0, 1, 2}});
    mesh.workNormals();
    {
        RenderSession session;
        Mesh_RL_GL& renderer = session.addMeshRenderer(mesh);
        renderer.shader = &session.add<Glass_shader>();
        MeshShading shading;
        shading.flags = MeshShadingFlags_ns::GPU_SHADER;
        renderer.render(shading);
        EXPECT_GT(driver.liveObjects(), 0U);
    }
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(RenderSession_calls_test, meshRenderersHaveBuffersWhereTheDriverHas) {
    Mesh mesh;
    {
        RenderSession session;
        EXPECT_TRUE(session.addMeshRenderer(mesh).useBufferObjects);
    }
    gl_spy::Script const bare = gl_spy::drivers::noExtensions();
    RenderSession session;
    EXPECT_FALSE(session.addMeshRenderer(mesh).useBufferObjects);
}

TEST_F(RenderSession_calls_test, texturesThatAnotherThreadDroppedAreDeletedOnRequest) {
    RenderSession session;
    unsigned char const pixel[4] = {};
    unsigned int texture = 0;
    session.layer().loadTextureColor(1, 1, pixel, texture, TEXTURE_REPEAT);
    std::thread([&] { session.layer().queueUnloadTextureColor(texture); }).join();
    EXPECT_EQ(driver.liveObjects(), 1U);
    session.deleteQueuedTextures();
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(RenderSession_calls_test, texturesThatAreStillQueuedAreDeletedAtItsEnd) {
    {
        RenderSession session;
        unsigned char const pixel[4] = {};
        unsigned int texture = 0;
        session.layer().loadTextureColor(1, 1, pixel, texture, TEXTURE_REPEAT);
        session.layer().queueUnloadTextureColor(texture);
    }
    EXPECT_EQ(driver.liveObjects(), 0U);
}

// Two contexts.

TEST_F(RenderSession_calls_test, theRenderLayerIsThatOfTheSessionMadeCurrent) {
    RenderSession first;
    RenderSession second;
    EXPECT_EQ(VL_Raster, &second.layer());
    first.makeCurrent();
    EXPECT_EQ(VL_Raster, &first.layer());
}

TEST_F(RenderSession_calls_test, theEndOfAnotherSessionLeavesTheRenderLayer) {
    std::vector<std::string> ends;
    RenderSession first;
    std::optional<RenderSession> second(std::in_place);
    second->add<Part>(ends, "part");
    first.makeCurrent();
    second.reset();
    EXPECT_EQ(VL_Raster, &first.layer());
    EXPECT_THAT(ends, ElementsAre("part"));
}

}  // namespace
}  // namespace vellum::toolkit
