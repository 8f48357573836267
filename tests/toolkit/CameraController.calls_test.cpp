#include "toolkit/CameraController.h"

#include "Camera_RL_GL.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/toolkit/camera_view.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

using Texts = std::vector<std::string>;

class CameraController_calls_test : public testing::Test {
protected:
    gl_spy::Script driver = gl_spy::drivers::gl21();
    Camera_RL_GL camera;
    CameraController controls{camera};
};

Texts namesOf(gl_spy::Recording const& recording) {
    Texts names;
    for (gl_spy::Call const& call : recording.calls()) {
        names.push_back(call.name);
    }
    return names;
}

}  // namespace

TEST_F(CameraController_calls_test, onlyLoadMakesGlCalls) {
    gl_spy::Recording recording;
    CameraController other(camera);
    other.fit({{0, 0, 0}, {1, 2, 3}});
    other.setViewKind(ViewKind::TOP);
    other.orbit(3, 4);
    other.pan(3, 4);
    other.zoom(1, 3, 4);
    other.lookAlong({0, -1, 0});
    other.setFieldOfView(40);
    other.update({0, 0, 640, 480});
    EXPECT_TRUE(recording.calls().empty());
}

TEST_F(CameraController_calls_test, loadSetsViewportAndMatricesAndReadsThemBack) {
    gl_spy::Recording recording;
    controls.load({5, 6, 640, 480});
    EXPECT_EQ(recording.texts()[0], "glViewport(5, 6, 640, 480)");
    EXPECT_EQ(namesOf(recording), (Texts{"glViewport", "glMatrixMode", "glLoadIdentity", "gluPerspective",
                                         "glMatrixMode", "glMatrixMode", "glLoadIdentity", "gluLookAt",
                                         "glGetIntegerv", "glGetDoublev", "glGetDoublev"}));
}

TEST_F(CameraController_calls_test, orthographicViewsLoadABox) {
    controls.setViewKind(ViewKind::TOP);
    gl_spy::Recording recording;
    controls.load({0, 0, 640, 480});
    EXPECT_EQ(recording.count("glOrtho"), 1U);
    EXPECT_EQ(recording.named("glRotated").at(0).text(), "glRotated(90, 1, 0, 0)");
    EXPECT_EQ(recording.count("gluLookAt"), 0U);
}

TEST_F(CameraController_calls_test, viewIsThatOfTheCamerasParameters) {
    controls.fit({{1, 2, 3}, {2, 4, 6}});
    for (ViewKind const kind : {ViewKind::PERSPECTIVE, ViewKind::FRONT, ViewKind::BACK, ViewKind::TOP,
                                ViewKind::BOTTOM, ViewKind::LEFT, ViewKind::RIGHT}) {
        controls.setViewKind(kind);
        View const view = controls.load({5, 6, 640, 480});
        View const expected = viewOf(camera, {5, 6, 640, 480});
        EXPECT_EQ(view.viewport.x, 5);
        EXPECT_EQ(view.viewport.width, 640);
        for (int i = 0; i < 16; ++i) {
            EXPECT_NEAR(view.projection.e[i], expected.projection.e[i], 1e-12) << i;
            EXPECT_NEAR(view.modelView.e[i], expected.modelView.e[i], 1e-12) << i;
        }
    }
}

TEST_F(CameraController_calls_test, emptyViewportIsLoadedAsOnePixel) {
    gl_spy::Recording recording;
    View const view = controls.load({5, 6, 0, 0});
    EXPECT_EQ(recording.texts()[0], "glViewport(5, 6, 1, 1)");
    EXPECT_EQ(view.viewport.height, 1);
}
