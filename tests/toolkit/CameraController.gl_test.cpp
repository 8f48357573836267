#include "toolkit/CameraController.h"

#include "Camera_RL_GL.h"
#include "Core_RL_GL.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/support/counted_memory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <GL/gl.h>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

using Point = Vector3<double>;

class CameraController_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        layer.reset(new Core_RL_GL);
    }

    View load() { return controls.load({0, 0, width, height}); }

    std::unique_ptr<Core_RL> layer;
    Camera_RL_GL camera;
    CameraController controls{camera};
};

}  // namespace

TEST_F(CameraController_gl_test, targetIsDrawnInTheMiddleFromEverySide) {
    controls.fit({{1, 2, 3}, {2, 4, 6}});
    auto const expectTargetInTheMiddle = [this](std::string const& what) {
        View const view = load();
        ScreenPoint const target = view.project(controls.target());
        EXPECT_NEAR(target.x, 128, 1e-3) << what;
        EXPECT_NEAR(target.y, 128, 1e-3) << what;
        layer->setDepthTest({DEPTH_LESS, true});
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        layer->renderSphere(convert<float>(controls.target()),
                            static_cast<float>(20 * controls.unitsPerPixel()));
        // A ball of 20 pixels: covered at 18, not at 22.
        for (int const side : {-1, 1}) {
            EXPECT_GT(readPixel(128 + 17 * side, 128)[0], 200) << what << savePicture("camera_target");
            EXPECT_GT(readPixel(128, 128 + 17 * side)[0], 200) << what << savePicture("camera_target");
            EXPECT_EQ(readPixel(128 + 22 * side, 128)[0], 0) << what << savePicture("camera_target");
            EXPECT_EQ(readPixel(128, 128 + 22 * side)[0], 0) << what << savePicture("camera_target");
        }
    };
    for (unsigned int kind = 0; kind < 7; ++kind) {
        controls.setViewKind(static_cast<ViewKind>(kind));
        expectTargetInTheMiddle("view kind " + std::to_string(kind));
    }
    for (Point const& direction : {Point{0, -1, 0}, Point{0, 1, 0}, Point{1, 0, 0}, Point{-1, -2, 3}}) {
        controls.lookAlong(direction);
        expectTargetInTheMiddle("direction " + std::to_string(direction.x) + " " +
                                std::to_string(direction.y));
    }
}

TEST_F(CameraController_gl_test, topAndStraightDownShowTheSamePicture) {
    controls.fit({{-1, -0.01, -1}, {1, 0, 1}});
    auto const draw = [this](ViewKind kind) {
        controls.setViewKind(kind);
        load();
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        // Neither symmetric in x nor in z.
        layer->renderTriangle({-0.8F, 0, -0.8F}, {0.8F, 0, -0.3F}, {-0.2F, 0, 0.9F});
        return readPixels();
    };
    controls.lookAlong({0, 0, -1});
    controls.lookAlong({0, -1, 0});
    std::vector<unsigned char> const down = draw(ViewKind::PERSPECTIVE);
    std::vector<unsigned char> const top = draw(ViewKind::TOP);
    int different = 0;
    int covered = 0;
    for (std::size_t i = 0; i < top.size(); i += 4) {
        different += top[i] != down[i] ? 1 : 0;
        covered += top[i] != 0 ? 1 : 0;
    }
    EXPECT_GT(covered, 5000);
    EXPECT_LT(different, 100) << savePicture("camera_top");
}

TEST_F(CameraController_gl_test, framesTakeNoMemory) {
    load();
    std::size_t const before = counted_memory::allocations();
    for (int i = 0; i < 10; ++i) {
        controls.orbit(3, 2);
        controls.pan(1, 2);
        controls.zoom(0.1, 30, 40);
        load();
    }
    EXPECT_EQ(counted_memory::allocations(), before);
}

TEST_F(CameraController_gl_test, whateverComesInLoadsWithoutAnErrorOfOpenGL) {
    std::mt19937 random(9);
    std::uniform_real_distribution<double> exponent(-18, 18);
    std::uniform_int_distribution<int> which(0, 6);
    auto const number = [&] { return (which(random) % 2 == 0 ? 1 : -1) * std::pow(10, exponent(random)); };
    for (int i = 0; i < 3000; ++i) {
        switch (which(random)) {
        case 0:
            controls.fit({{number(), number(), number()}, {number(), number(), number()}});
            break;
        case 1:
            controls.setViewKind(static_cast<ViewKind>(which(random)));
            break;
        case 2:
            controls.lookAlong({number(), number(), number()});
            break;
        case 3:
            controls.pan(number(), number());
            break;
        case 4:
            controls.zoom(exponent(random) * 10, number(), number());
            break;
        case 5:
            controls.zoom(exponent(random) * 10);
            break;
        default:
            controls.setFieldOfView(number());
            break;
        }
        View const view = controls.load({0, 0, which(random) == 0 ? 2 : 200, which(random) == 0 ? 1 : 150});
        for (double const e : view.toClip().e) {
            ASSERT_TRUE(std::isfinite(e)) << "after " << i << " moves";
        }
        ASSERT_NEAR(length(view.axes().right), 1, 1e-3) << "after " << i << " moves";
    }
}
