#include "toolkit/CameraController.h"

#include "tests/toolkit/camera_view.h"
#include "toolkit/Framing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

using Point = Vector3<double>;

constexpr double PI = 3.14159265358979323846;
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

std::vector<ViewKind> const ALL_KINDS{ViewKind::PERSPECTIVE, ViewKind::FRONT, ViewKind::BACK, ViewKind::TOP,
                                      ViewKind::BOTTOM,      ViewKind::LEFT,  ViewKind::RIGHT};

std::string nameOf(ViewKind kind) {
    return "view kind " + std::to_string(static_cast<int>(kind));
}

double aspectOf(Viewport const& viewport) {
    return static_cast<double>(viewport.width) / viewport.height;
}

/// How large a unit across the screen at the target appears, pixels.
double pixelsPerUnitAtTarget(CameraController& controls, View const& view) {
    Point const target = controls.target();
    Point const up = view.axes().up;
    double const step = controls.unitsPerPixel();
    return std::abs(view.project(target + up * step).y - view.project(target).y) / step;
}

void expectNear(Point const& actual, Point const& expected, double tolerance) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

class CameraController_test : public testing::Test {
protected:
    View update() {
        controls.update(viewport);
        return viewOf(camera, viewport);
    }

    /// The largest distance of a corner from the middle of the screen, as a part of the way to the edge;
    /// behind the camera or clipped: infinite.
    double filledPart(Box3<double> const& box) {
        View const view = update();
        double part = 0;
        for (Point const& corner : cornersOf(box)) {
            ScreenPoint const p = view.project(corner);
            bool const isSeen = p.isInFront && p.depth >= 0 && p.depth <= 1;
            part = std::max({part, isSeen ? 0 : INFINITE, std::abs(2 * p.x / viewport.width - 1),
                             std::abs(2 * p.y / viewport.height - 1)});
        }
        return part;
    }

    void expectValid() {
        View const view = update();
        for (double const e : view.toClip().e) {
            ASSERT_TRUE(std::isfinite(e));
        }
        ASSERT_GT(camera.nearDistance, 0.0F);
        ASSERT_GT(camera.farDistance, camera.nearDistance);
        ASSERT_NEAR(length(controls.direction()), 1, 1e-12);
    }

    ParameterCamera camera;
    CameraController controls{camera};
    Viewport viewport{0, 0, 640, 480};
};

}  // namespace

// == Start ==

TEST_F(CameraController_test, startsFromTheUpperRightFrontAtABoxOfSizeOne) {
    EXPECT_EQ(controls.viewKind(), ViewKind::PERSPECTIVE);
    expectNear(controls.target(), {0, 0, 0}, 0);
    EXPECT_LT(controls.direction().x, 0);
    EXPECT_LT(controls.direction().y, 0);
    EXPECT_LT(controls.direction().z, 0);
    double const part = filledPart({{-0.5, -0.5, -0.5}, {0.5, 0.5, 0.5}});
    EXPECT_NEAR(part, FILLED_PART, 1e-5);
}

TEST_F(CameraController_test, constructionLeavesTheCameraAlone) {
    ParameterCamera other;
    CameraController const more(other);
    EXPECT_EQ(other.fieldOfView, 45.0F);
    EXPECT_EQ(other.transform.matrix()->e[0], 1.0F);
}

// == Fit ==

TEST_F(CameraController_test, fitShowsABoxWholeFromEveryDirectionInEveryShapeOfTheViewport) {
    for (Viewport const& shape :
         {Viewport{0, 0, 640, 480}, Viewport{0, 0, 100, 900}, Viewport{0, 0, 2000, 100}}) {
        viewport = shape;
        for (Box3<double> const& box :
             {Box3<double>{{1, 2, 3}, {2, 4, 6}}, Box3<double>{{-20, -1, -1}, {20, 1, 1}},
              Box3<double>{{5, 5, 5}, {5, 5, 9}}, Box3<double>{{0, -0.001, 0}, {0.001, 0, 0.001}}}) {
            for (ViewKind const kind : ALL_KINDS) {
                controls.setViewKind(kind);
                controls.fit(box);
                double const part = filledPart(box);
                EXPECT_LE(part, FILLED_PART + 1e-4) << nameOf(kind);
                bool const isALine = box.min.x == box.max.x && box.min.y == box.max.y;
                EXPECT_GE(part, isALine ? 0 : FILLED_PART - 1e-4) << nameOf(kind);
            }
            for (Point const& direction :
                 {Point{0, -1, 0}, Point{1, 0.2, 3}, Point{-1, 1, 0}, Point{0, 0, 1}}) {
                controls.lookAlong(direction);
                controls.fit(box);
                EXPECT_LE(filledPart(box), FILLED_PART + 1e-4);
            }
        }
    }
}

TEST_F(CameraController_test, fitMakesTheCenterTheTarget) {
    controls.pan(100, 50);
    controls.fit({{1, 2, 3}, {2, 4, 6}});
    expectNear(controls.target(), {1.5, 3, 4.5}, 0);
    ScreenPoint const middle = update().project({1.5, 3, 4.5});
    EXPECT_NEAR(middle.x, 320, 1e-3);
    EXPECT_NEAR(middle.y, 240, 1e-3);
}

TEST_F(CameraController_test, fitBeforeTheFirstFrameShowsTheBoxWholeInItsViewport) {
    Box3<double> const box{{-4, -1, -1}, {4, 1, 1}};
    controls.fit(box);
    viewport = {0, 0, 100, 400};
    EXPECT_NEAR(filledPart(box), FILLED_PART, 1e-5);
}

TEST_F(CameraController_test, fittedBoxStaysWholeUntilTheCameraIsMoved) {
    Box3<double> const box{{-4, -1, -1}, {4, 1, 1}};
    controls.fit(box);
    update();
    viewport = {0, 0, 100, 400};
    EXPECT_NEAR(filledPart(box), FILLED_PART, 1e-5);
    controls.zoom(0.5);
    update();
    double const unit = controls.unitsPerPixel() * viewport.height;
    viewport = {0, 0, 900, 400};
    update();
    EXPECT_DOUBLE_EQ(controls.unitsPerPixel() * viewport.height, unit);
}

TEST_F(CameraController_test, boxWithoutExtentIsOneOfSizeOne) {
    controls.fit({{3, 4, 5}, {3, 4, 5}});
    EXPECT_NEAR(filledPart({{2.5, 3.5, 4.5}, {3.5, 4.5, 5.5}}), FILLED_PART, 1e-5);
    expectNear(controls.target(), {3, 4, 5}, 0);
}

TEST_F(CameraController_test, cornersOfABoxMayBeExchanged) {
    controls.fit({{2, 4, 6}, {1, 2, 3}});
    EXPECT_NEAR(filledPart({{1, 2, 3}, {2, 4, 6}}), FILLED_PART, 1e-5);
}

TEST_F(CameraController_test, boxThatIsNotFiniteIsIgnored) {
    controls.fit({{1, 2, 3}, {2, 4, 6}});
    double const distance = controls.distance();
    double const largest = std::numeric_limits<double>::max();
    for (Box3<double> const& box :
         {Box3<double>{{NOT_A_NUMBER, 0, 0}, {1, 1, 1}}, Box3<double>{{0, 0, 0}, {1, INFINITE, 1}},
          Box3<double>{{INFINITE, INFINITE, INFINITE}, {-INFINITE, -INFINITE, -INFINITE}},
          Box3<double>{{-largest, -largest, -largest}, {largest, largest, largest}}}) {
        controls.fit(box);
        expectNear(controls.target(), {1.5, 3, 4.5}, 0);
        EXPECT_EQ(controls.distance(), distance);
    }
}

// == Clipping distances ==

TEST_F(CameraController_test, clippingDistancesHoldTheContentsHoweverTheCameraMoves) {
    Box3<double> const box{{-3, -1, -2}, {3, 1, 2}};
    controls.fit(box);
    update();
    std::mt19937 random(7);
    std::uniform_real_distribution<double> number(-1, 1);
    for (int i = 0; i < 500; ++i) {
        controls.orbit(200 * number(random), 200 * number(random));
        controls.pan(100 * number(random), 100 * number(random));
        controls.zoom(3 * number(random));
        View const view = update();
        double const nearest = static_cast<double>(camera.nearDistance);
        double const farthest = static_cast<double>(camera.farDistance);
        EXPECT_GE(nearest, std::min(farthest / 2000, controls.distance() / 2) * 0.999999);
        for (Point const& corner : cornersOf(box)) {
            ScreenPoint const p = view.project(corner);
            EXPECT_TRUE(!p.isInFront || p.depth <= 1);
            Matrix4<double> const clip = view.toClip();
            double const depth =
                clip.e[3] * corner.x + clip.e[7] * corner.y + clip.e[11] * corner.z + clip.e[15];
            EXPECT_TRUE(depth < std::max(farthest / 1999, controls.distance() / 2) || p.depth >= 0)
                << "cut by the near plane at " << nearest << ", at " << depth;
        }
        ScreenPoint const target = view.project(controls.target());
        EXPECT_GT(target.depth, 0);
        EXPECT_LT(target.depth, 1);
    }
}

TEST_F(CameraController_test, contentsBehindTheCameraLeaveTheTargetVisible) {
    controls.fit({{-1, -1, -1}, {1, 1, 1}});
    update();
    // The target moves far along -z, and the camera looks on from there.
    controls.lookAlong({1, 0, 0});
    update();
    controls.pan(-1e5, 0);
    controls.lookAlong({0, 0, controls.target().z > 0 ? 1.0 : -1.0});
    ScreenPoint const target = update().project(controls.target());
    EXPECT_TRUE(target.isInFront);
    EXPECT_GT(target.depth, 0);
    EXPECT_LT(target.depth, 1);
    expectValid();
}

TEST_F(CameraController_test, contentsThatAreLargerThanWhatIsFittedAreNotClipped) {
    Box3<double> const ball{{-1, -1, -1}, {1, 1, 1}};
    Box3<double> const ground{{-50, -2, -50}, {3, 2, 3}};
    controls.fit(ball);
    double const distance = controls.distance();
    controls.setContents(ground);
    View const view = update();
    EXPECT_EQ(controls.distance(), distance) << "the fitted box alone decides about the distance";
    for (Point const& corner : cornersOf(ground)) {
        ScreenPoint const p = view.project(corner);
        EXPECT_TRUE(p.isInFront);
        EXPECT_GE(p.depth, 0);
        EXPECT_LE(p.depth, 1);
    }
    float const farDistance = camera.farDistance;
    controls.setContents({{0, 0, 0}, {1, std::nan(""), 1}});
    update();
    EXPECT_EQ(camera.farDistance, farDistance) << "a box that is not finite is ignored";
    controls.fit(ball);
    update();
    EXPECT_LT(camera.farDistance, farDistance) << "fit() replaces the contents";
}

TEST_F(CameraController_test, cameraWithinTheContentsSeesWhatIsNear) {
    controls.fit({{-100, -100, -100}, {100, 100, 100}});
    update();
    controls.zoom(60);
    View const view = update();
    EXPECT_LT(controls.distance(), 3);
    ScreenPoint const target = view.project(controls.target());
    EXPECT_GT(target.depth, 0);
    EXPECT_LT(target.depth, 1);
    EXPECT_NEAR(static_cast<double>(camera.farDistance / camera.nearDistance), 2000, 0.01);
}

TEST_F(CameraController_test, veryNearTargetIsNotCutByTheNearPlane) {
    controls.fit({{-100, -100, -100}, {100, 100, 100}});
    update();
    controls.zoom(100);
    ScreenPoint const target = update().project(controls.target());
    EXPECT_LT(controls.distance(), static_cast<double>(camera.farDistance) / 2000);
    EXPECT_GT(target.depth, 0);
    EXPECT_LT(target.depth, 1);
}

// == View kinds ==

TEST_F(CameraController_test, everyViewKindKeepsTheTargetInTheMiddleAndEquallyLarge) {
    controls.fit({{1, 2, 3}, {2, 4, 6}});
    update();
    controls.zoom(2, 100, 100);
    double const size = pixelsPerUnitAtTarget(controls, update());
    for (ViewKind const kind : ALL_KINDS) {
        controls.setViewKind(kind);
        View const view = update();
        EXPECT_EQ(camera.viewKind, static_cast<unsigned int>(kind));
        ScreenPoint const p = view.project(controls.target());
        EXPECT_NEAR(p.x, 320, 1e-3) << nameOf(kind);
        EXPECT_NEAR(p.y, 240, 1e-3) << nameOf(kind);
        EXPECT_NEAR(pixelsPerUnitAtTarget(controls, view) / size, 1, 1e-5) << nameOf(kind);
        EXPECT_NEAR(controls.unitsPerPixel() * size, 1, 1e-5) << nameOf(kind);
    }
}

TEST_F(CameraController_test, orthographicViewsShowTheAxesOfTheirKind) {
    for (ViewKind const kind : ALL_KINDS) {
        if (kind == ViewKind::PERSPECTIVE) {
            continue;
        }
        controls.setViewKind(kind);
        ScreenAxes const shown = update().axes();
        expectNear(shown.right, screenAxes(kind).right, 1e-12);
        expectNear(shown.up, screenAxes(kind).up, 1e-12);
        expectNear(controls.direction(), -screenAxes(kind).towardViewer, 0);
    }
}

TEST_F(CameraController_test, valueThatIsNoViewKindIsIgnored) {
    controls.setViewKind(ViewKind::TOP);
    controls.setViewKind(static_cast<ViewKind>(7));
    EXPECT_EQ(controls.viewKind(), ViewKind::TOP);
}

TEST_F(CameraController_test, perspectiveComesBackWithItsDirection) {
    Point const direction = controls.direction();
    controls.setViewKind(ViewKind::BOTTOM);
    controls.setViewKind(ViewKind::PERSPECTIVE);
    expectNear(controls.direction(), direction, 0);
}

TEST_F(CameraController_test, orbitOutOfAnOrthographicViewBeginsFromTheSameSide) {
    for (ViewKind const kind : ALL_KINDS) {
        controls.fit({{1, 2, 3}, {2, 4, 6}});
        controls.setViewKind(kind);
        View const before = update();
        double const size = pixelsPerUnitAtTarget(controls, before);
        controls.orbit(1e-9, 0);
        View const after = update();
        EXPECT_EQ(controls.viewKind(), ViewKind::PERSPECTIVE);
        expectNear(after.axes().right, before.axes().right, 1e-6);
        expectNear(after.axes().up, before.axes().up, 1e-6);
        EXPECT_NEAR(pixelsPerUnitAtTarget(controls, after) / size, 1, 1e-5) << nameOf(kind);
    }
}

TEST_F(CameraController_test, orbitByNothingStaysOrthographic) {
    controls.setViewKind(ViewKind::LEFT);
    controls.orbit(0, 0);
    EXPECT_EQ(controls.viewKind(), ViewKind::LEFT);
}

// == Directions ==

TEST_F(CameraController_test, lookAlongTakesDirectionsOfAnyLength) {
    controls.fit({{1, 2, 3}, {2, 4, 6}});
    double const distance = controls.distance();
    for (double const factor : {5e-324, 1e-300, 1e-8, 1.0, 1e9, 1e300}) {
        for (Point const& direction : {Point{3, -2, 1}, Point{-1, 1, -1}, Point{0, 1, 2}, Point{0, 0, 1}}) {
            controls.setViewKind(ViewKind::TOP);
            controls.lookAlong(direction * factor);
            expectNear(controls.direction(), normalized(direction), 1e-12);
            EXPECT_EQ(controls.viewKind(), ViewKind::PERSPECTIVE);
            EXPECT_DOUBLE_EQ(controls.distance(), distance);
            expectNear(controls.target(), {1.5, 3, 4.5}, 0);
        }
    }
}

TEST_F(CameraController_test, directionWithoutLengthIsIgnored) {
    Point const former = controls.direction();
    for (Point const& direction :
         {Point{0, 0, 0}, Point{NOT_A_NUMBER, 1, 0}, Point{1, NOT_A_NUMBER, 0}, Point{1, 0, NOT_A_NUMBER},
          Point{0, INFINITE, 0}, Point{INFINITE, 1, -INFINITE}}) {
        controls.lookAlong(direction);
        expectNear(controls.direction(), former, 0);
    }
}

TEST_F(CameraController_test, straightUpAndDownHaveAnUpVector) {
    for (double const y : {-1.0, 1.0}) {
        controls.lookAlong({1, 0, 1});
        Point const right = update().axes().right;
        controls.lookAlong({0, y, 0});
        View const view = update();
        expectNear(view.axes().towardViewer, {0, -y, 0}, 1e-6);
        expectNear(view.axes().right, right, 1e-6);
        expectValid();
        controls.lookAlong({1e-17, y, -1e-17});
        expectNear(update().axes().right, right, 1e-6);
    }
}

TEST_F(CameraController_test, orbitOverThePolesStopsThereWithoutAJump) {
    controls.lookAlong({0.3, -1, -0.2});
    Point const right = update().axes().right;
    for (int i = 0; i < 300; ++i) {
        controls.orbit(0, 1);
        ScreenAxes const axes = update().axes();
        expectNear(axes.right, right, 1e-5);
        ASSERT_LE(axes.towardViewer.y, 1.000001);
    }
    expectNear(controls.direction(), {0, -1, 0}, 1e-12);
    // And straight up, over the horizon.
    for (int i = 0; i < 600; ++i) {
        Point const before = controls.direction();
        controls.orbit(0, -1);
        EXPECT_LT(length(controls.direction() - before), 2 * PI / 480);
        expectNear(update().axes().right, right, 1e-5);
    }
    expectNear(controls.direction(), {0, 1, 0}, 1e-12);
}

TEST_F(CameraController_test, orbitTurnsHalfATurnOverTheShorterSide) {
    controls.lookAlong({1, 0, 0});
    update();
    controls.orbit(480, 0);
    expectNear(controls.direction(), {-1, 0, 0}, 1e-12);
    viewport = {0, 0, 100, 300};
    update();
    controls.orbit(0, 50);
    expectNear(controls.direction(), {0, -1, 0}, 1e-12);
}

TEST_F(CameraController_test, whatIsInFrontOfTheTargetFollowsTheCursor) {
    controls.fit({{-1, -1, -1}, {1, 1, 1}});
    controls.lookAlong({0, 0, -1});
    update();
    Point const front{0, 0, 1};
    controls.orbit(10, 0);
    EXPECT_GT(update().project(front).x, 321);
    controls.orbit(-10, 10);
    EXPECT_GT(update().project(front).y, 241);
}

TEST_F(CameraController_test, orbitAndItsReverseGiveTheSameView) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> number(-60, 60);
    update();
    for (int i = 0; i < 100; ++i) {
        double const angle = number(random);
        controls.lookAlong({std::cos(angle), number(random) / 60, std::sin(angle)});
        Point const before = controls.direction();
        double const dx = number(random);
        double const dy = number(random);
        controls.orbit(dx, dy);
        controls.orbit(-dx, -dy);
        expectNear(controls.direction(), before, 1e-12);
    }
}

TEST_F(CameraController_test, orbitKeepsTheTargetAndItsDistance) {
    controls.fit({{1, 2, 3}, {2, 4, 6}});
    update();
    double const distance = controls.distance();
    for (int i = 0; i < 50; ++i) {
        controls.orbit(37, 11 * (i % 7 - 3));
        expectNear(controls.target(), {1.5, 3, 4.5}, 0);
        EXPECT_EQ(controls.distance(), distance);
        Matrix4<float> const& m = (update(), *camera.transform.matrix());
        EXPECT_NEAR(length(Point{m.e[12] - 1.5, m.e[13] - 3.0, m.e[14] - 4.5}) / distance, 1, 1e-6);
    }
}

// == Field of view ==

TEST_F(CameraController_test, fieldOfViewKeepsTheTargetEquallyLarge) {
    update();
    double const size = pixelsPerUnitAtTarget(controls, update());
    for (double const degrees : {1.0, 20.0, 90.0, 170.0}) {
        controls.setFieldOfView(degrees);
        View const view = update();
        EXPECT_EQ(camera.fieldOfView, static_cast<float>(degrees));
        EXPECT_NEAR(pixelsPerUnitAtTarget(controls, view) / size, 1, 1e-5) << degrees;
        EXPECT_NEAR(controls.distance() * std::tan(degrees * PI / 360), controls.unitsPerPixel() * 240,
                    1e-12);
    }
}

TEST_F(CameraController_test, fieldOfViewIsBroughtIntoItsRange) {
    controls.setFieldOfView(0);
    update();
    EXPECT_EQ(camera.fieldOfView, 1.0F);
    controls.setFieldOfView(1000);
    update();
    EXPECT_EQ(camera.fieldOfView, 170.0F);
    controls.setFieldOfView(60);
    controls.setFieldOfView(NOT_A_NUMBER);
    controls.setFieldOfView(INFINITE);
    update();
    EXPECT_EQ(camera.fieldOfView, 60.0F);
}

// == Pan and zoom ==

/// A point at the distance of the target, under a place of the screen.
Point underCursor(CameraController const& controls, View const& view, double x, double y) {
    Ray const ray = view.rayThrough(x, y);
    Point const normal = controls.direction();
    return ray.origin +
           ray.direction * (dot(controls.target() - ray.origin, normal) / dot(ray.direction, normal));
}

TEST_F(CameraController_test, panAndZoomKeepWhatIsUnderTheCursor) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> number(-1, 1);
    for (ViewKind const kind : ALL_KINDS) {
        controls.fit({{-1, -2, -1}, {2, 1, 3}});
        controls.setViewKind(kind);
        for (int i = 0; i < 60; ++i) {
            if (kind == ViewKind::PERSPECTIVE) {
                controls.orbit(60 * number(random), 60 * number(random));
            }
            double const x = 320 + 300 * number(random);
            double const y = 240 + 200 * number(random);
            Point const grabbed = underCursor(controls, update(), x, y);
            double const dx = 60 * number(random);
            double const dy = 60 * number(random);
            controls.pan(dx, dy);
            ScreenPoint const panned = update().project(grabbed);
            EXPECT_NEAR(panned.x, x + dx, 640e-6) << nameOf(kind);
            EXPECT_NEAR(panned.y, y + dy, 640e-6) << nameOf(kind);

            double const unit = controls.unitsPerPixel();
            double const steps = 2 * number(random);
            controls.zoom(steps, x + dx, y + dy);
            ScreenPoint const zoomed = update().project(grabbed);
            EXPECT_NEAR(zoomed.x, x + dx, 640e-6) << nameOf(kind);
            EXPECT_NEAR(zoomed.y, y + dy, 640e-6) << nameOf(kind);
            EXPECT_NEAR(controls.unitsPerPixel() / unit, std::pow(1.1, -steps), 1e-12);

            ScreenPoint const middle = update().project(controls.target());
            EXPECT_NEAR(middle.x, 320, 640e-6);
            EXPECT_NEAR(middle.y, 240, 640e-6);
            controls.pan(-dx, -dy);
            controls.zoom(-steps);
        }
    }
}

TEST_F(CameraController_test, zoomWithoutAPlaceKeepsTheTarget) {
    update();
    Point const target = controls.target();
    double const distance = controls.distance();
    controls.zoom(1);
    expectNear(controls.target(), target, 0);
    EXPECT_NEAR(controls.distance(), distance / 1.1, 1e-12);
}

TEST_F(CameraController_test, viewportOfNoSizeIsTakenAsOnePixel) {
    viewport = {3, 4, 0, -5};
    controls.update(viewport);
    EXPECT_EQ(camera.aspect, 1.0F);
    viewport = {0, 0, 1, 1};
    expectValid();
}

// == Precision ==

TEST_F(CameraController_test, directionIsPreciseFarFromTheOrigin) {
    controls.fit({{1e6 - 1e5, -1e5, -1e5}, {1e6 + 1e5, 1e5, 1e5}});
    for (int i = 0; i < 40; ++i) {
        controls.orbit(0.01, 0.004);
        ScreenAxes const axes = update().axes();
        EXPECT_LT(length(-axes.towardViewer - controls.direction()), 1e-6);
        ScreenPoint const target = update().project(controls.target());
        EXPECT_NEAR(target.x, 320, 0.1);
        EXPECT_NEAR(target.y, 240, 0.1);
    }
}

// == Numbers that come in ==

TEST_F(CameraController_test, numbersThatAreNotFiniteChangeNothing) {
    controls.fit({{1, 2, 3}, {2, 4, 6}});
    update();
    Point const target = controls.target();
    Point const direction = controls.direction();
    double const distance = controls.distance();
    for (double const bad : {NOT_A_NUMBER, INFINITE, -INFINITE, 1e308}) {
        controls.pan(bad, 0);
        controls.pan(0, bad);
        controls.zoom(bad);
        controls.zoom(bad, 10, 10);
        controls.zoom(1, bad, 10);
        controls.zoom(1, 10, bad);
        if (bad != 1e308) {
            controls.orbit(bad, 0);
            controls.orbit(0, bad);
        }
        expectNear(controls.target(), target, 0);
        expectNear(controls.direction(), direction, 0);
        EXPECT_EQ(controls.distance(), distance);
    }
}

TEST_F(CameraController_test, stateStaysValidWhateverComesIn) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> exponent(-30, 30);
    std::uniform_int_distribution<int> which(0, 12);
    std::vector<double> const special{NOT_A_NUMBER, INFINITE, -INFINITE, 0,     -0.0,
                                      1e308,        -1e308,   1e-308,    5e-324};
    auto const number = [&] {
        int const i = which(random);
        if (i < static_cast<int>(special.size())) {
            return special[static_cast<std::size_t>(i)];
        }
        double const size = std::pow(10, exponent(random));
        return i % 2 == 0 ? size : -size;
    };
    std::vector<std::function<void()>> const moves{
        [&] { controls.orbit(number(), number()); },
        [&] { controls.pan(number(), number()); },
        [&] { controls.zoom(number(), number(), number()); },
        [&] { controls.zoom(number()); },
        [&] { controls.zoom(100 * exponent(random)); },
        [&] {
            controls.lookAlong({number(), number(), number()});
        },
        [&] { controls.setFieldOfView(number()); },
        [&] {
            controls.fit({{number(), number(), number()}, {number(), number(), number()}});
        },
        [&] { controls.setViewKind(ALL_KINDS[static_cast<std::size_t>(which(random) % 7)]); },
        [&] {
            viewport = {0, 0, 1 + which(random) * 100, 1 + which(random) * which(random)};
        },
    };
    for (int i = 0; i < 20000; ++i) {
        moves[static_cast<std::size_t>(which(random)) % moves.size()]();
        expectValid();
        if (HasFatalFailure()) {
            FAIL() << "after " << i << " moves";
        }
        EXPECT_GT(controls.distance(), 0);
        EXPECT_TRUE(std::isfinite(controls.unitsPerPixel()));
    }
    EXPECT_GT(aspectOf(viewport), 0);
}
