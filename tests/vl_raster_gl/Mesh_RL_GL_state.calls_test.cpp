#include "Mesh_RL_GL.h"

#include "Core_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "tests/gl_spy/gl_spy.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vellum {
namespace {

/// The last call of an entry point, or of one for a capability.
std::string last(gl_spy::Recording const& recording, std::string const& part) {
    std::string text;
    for (std::string const& call : recording.texts()) {
        if (call.find(part) != std::string::npos)
            text = call;
    }
    return text;
}

TEST(Mesh_RL_GL_state_calls_test, blendedEdgesKeepTheStateThatTheApplicationHasSet) {
    gl_spy::Script const driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
    Mesh mesh;
    Mesh_RL_GL renderer(&mesh, false);
    layer.setDepthTest({DEPTH_LESS, true});
    layer.setCulling({true, false});
    layer.setBlending(BLENDING_ALPHA);
    gl_spy::Recording const recording;
    renderer.renderWithEdgesBlending({1, 1, 1, 1}, true);
    EXPECT_EQ(last(recording, "GL_DEPTH_TEST"), "glEnable(GL_DEPTH_TEST)");
    EXPECT_EQ(last(recording, "glDepthFunc"), "glDepthFunc(GL_LESS)");
    EXPECT_EQ(last(recording, "glDepthMask"), "glDepthMask(GL_TRUE)");
    EXPECT_EQ(last(recording, "GL_CULL_FACE"), "glEnable(GL_CULL_FACE)");
    EXPECT_EQ(last(recording, "glCullFace"), "glCullFace(GL_FRONT)");
    EXPECT_EQ(last(recording, "GL_BLEND"), "glEnable(GL_BLEND)");
}

TEST(Mesh_RL_GL_state_calls_test, anUnknownModeAppliesTheFillingsThatTheApplicationHasSet) {
    gl_spy::Script const driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
    Mesh mesh;
    Mesh_RL_GL renderer(&mesh, false);
    layer.setFillingFront(FILLING_LINES);
    layer.setFillingBack(FILLING_LINES);
    MeshShading shading;
    shading.mode = 9;
    gl_spy::Recording const recording;
    renderer.render(shading);
    EXPECT_EQ(recording.texts(), (std::vector<std::string>{"glPolygonMode(GL_FRONT, GL_LINE)",
                                                           "glPolygonMode(GL_BACK, GL_LINE)"}));
}

}  // namespace
}  // namespace vellum
