#include "toolkit/AxisDrag.h"

#include "tests/toolkit/camera_view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

using Point = Vector3<double>;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

View perspective(Point const& eye = {4, 3, 5}, Point const& center = {0, 0, 0}) {
    return {
        perspectiveMatrix(40, 640.0 / 480, 0.1, 100), lookAtMatrix(eye, center, {0, 1, 0}), {7, 9, 640, 480}};
}

View orthographic(unsigned int kind) {
    return {orthographicMatrix(-4, 4, -3, 3, -1000, 1000) * turnOf(kind),
            Matrix4<double>::identity(),
            {0, 0, 640, 480}};
}

/// A perspective view, one that shows a part of a larger picture, and all orthographic ones.
std::vector<View> views() {
    std::vector<View> all{perspective(), perspective({-3, 2, 1}, {0, 1, 0})};
    View part = perspective();
    part.projection =
        Matrix4<double>{{3, 0, 0, 0, 0, 3, 0, 0, 0, 0, 1, 0, 0.4, -0.2, 0, 1}} * part.projection;
    all.push_back(part);
    for (unsigned int kind = 1; kind < 7; ++kind) {
        all.push_back(orthographic(kind));
    }
    return all;
}

bool isEndOn(View const& view, Point const& direction) {
    return !view.isPerspective() && length(cross(direction, view.axes().towardViewer)) < 1e-9;
}

void expectNear(Point const& actual, Point const& expected, double tolerance) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

}  // namespace

// == Along an axis ==

TEST(AxisDrag, pointOfAnAxisComesBackFromTheScreen) {
    Point const origin{0.3, -0.2, 0.1};
    for (View const& view : views()) {
        for (Point const& direction : {Point{1, 0, 0}, Point{0, 1, 0}, Point{0, 0, 1}, Point{0.5, 2, -1}}) {
            if (isEndOn(view, direction)) {
                continue;
            }
            for (double const place : {-0.7, 0.0, 0.4, 1.3}) {
                ScreenPoint const p = view.project(origin + direction * place);
                EXPECT_NEAR(alongAxis(view, {origin, direction}, p.x, p.y), place, 1e-8);
            }
        }
    }
}

TEST(AxisDrag, pointBesideAnAxisGivesTheNearestPlace) {
    // From the front, a point of the screen above or below the x axis is as far along it.
    View const view = orthographic(1);
    Ray const axis{{0, 0, 0}, {1, 0, 0}};
    for (double const y : {100.0, 240.0, 400.0}) {
        EXPECT_NEAR(alongAxis(view, axis, 480, y), 2, 1e-12);
    }
    EXPECT_NEAR(alongAxis(view, {{0, 0, 0}, {2, 0, 0}}, 480, 100), 1, 1e-12) << "lengths of the direction";
}

TEST(AxisDrag, axisSeenEndOnGivesZero) {
    EXPECT_EQ(alongAxis(orthographic(1), {{0, 0, 0}, {0, 0, 1}}, 500, 100), 0);
    EXPECT_EQ(alongAxis(orthographic(3), {{1, 2, 3}, {0, -2, 0}}, 20, 30), 0);
    // In perspective an axis through the eye is a point, wherever the cursor is.
    View const view = perspective({4, 3, 5});
    EXPECT_EQ(alongAxis(view, {{0, 0, 0}, normalized(Point{4, 3, 5})}, 320, 240), 0);
    EXPECT_EQ(alongAxis(view, {{0, 0, 0}, normalized(Point{4, 3, 5})}, 400, 240), 0);
    EXPECT_EQ(alongAxis(view, {{0, 0, 0}, normalized(Point{-4, -3, -5})}, 100, 30), 0);
}

TEST(AxisDrag, axisBeyondItsVanishingPointGivesAPlaceInFrontOfTheViewer) {
    // The eye looks along -z from above an axis that recedes: a cursor above the horizon meets it behind the
    // viewer.
    View const view = perspective({0, 1, 5}, {0, 1, 0});
    double const place = alongAxis(view, {{0, 0, 0}, {0, 0, -1}}, 320, 100);
    EXPECT_TRUE(std::isfinite(place));
    EXPECT_GE(place, -5) << "not behind the eye at z = 5";
    EXPECT_LE(place, -4);
    double const below = alongAxis(view, {{0, 0, 0}, {0, 0, -1}}, 320, 250);
    EXPECT_GT(below, 0);
}

TEST(AxisDrag, axisThatBeginsBehindTheViewerIsFollowedInFront) {
    View const view = perspective({0, 0, 5}, {0, 0, 0});
    Ray const axis{{1, 0, 20}, {0, 0, -1}};
    ScreenPoint const p = view.project({1, 0, 2});
    EXPECT_NEAR(alongAxis(view, axis, p.x, p.y), 18, 1e-8);
}

TEST(AxisDrag, axisWithoutLengthGivesZero) {
    EXPECT_EQ(alongAxis(perspective(), {{0, 0, 0}, {0, 0, 0}}, 100, 100), 0);
}

// == On a plane ==

TEST(AxisDrag, pointOfAPlaneComesBackFromTheScreen) {
    Point const at{0.3, -0.2, 0.1};
    for (View const& view : views()) {
        for (Point const& normal : {Point{1, 0, 0}, Point{0, 5, 0}, Point{0, 0, -1}, Point{0.5, 2, -1}}) {
            Point const aside = normalized(cross(normal, {0.3, 0.5, 0.7}));
            Point const point = at + aside * 0.8 + cross(normal, aside) * 0.1;
            ScreenPoint const p = view.project(point);
            bool const isEdgeOn =
                std::abs(dot(view.axes().towardViewer, normal)) < 1e-9 && !view.isPerspective();
            expectNear(onPlane(view, at, normal, p.x, p.y), isEdgeOn ? at : point, 1e-7);
        }
    }
}

TEST(AxisDrag, planeBehindTheViewerGivesItsPoint) {
    View const view = perspective({0, 0, 5}, {0, 0, 0});
    Point const at{1, 2, 9};
    expectNear(onPlane(view, at, {0, 0, 1}, 100, 100), at, 0);
    // The ground, for a cursor above the horizon.
    View const above = perspective({0, 1, 5}, {0, 1, 0});
    expectNear(onPlane(above, {3, 0, 0}, {0, 1, 0}, 320, 100), {3, 0, 0}, 0);
    EXPECT_LT(onPlane(above, {3, 0, 0}, {0, 1, 0}, 320, 250).z, 5);
}

TEST(AxisDrag, planeSeenEdgeOnGivesItsPoint) {
    Point const at{1, 2, 3};
    expectNear(onPlane(orthographic(1), at, {0, 1, 0}, 100, 100), at, 0);
    View const view = perspective({0, 0, 5}, {0, 0, 0});
    expectNear(onPlane(view, {1, 0, 0}, {0, 1, 0}, 400, 240), {1, 0, 0}, 0);
}

TEST(AxisDrag, planeWithoutNormalGivesItsPoint) {
    expectNear(onPlane(perspective(), {1, 2, 3}, {0, 0, 0}, 100, 100), {1, 2, 3}, 0);
}

// == About an axis ==

TEST(AxisDrag, turnOfACircleComesBackFromTheScreen) {
    Point const origin{0.3, -0.2, 0.1};
    for (View const& view : views()) {
        for (Point const& direction : {Point{1, 0, 0}, Point{0, 3, 0}, Point{0, 0, -1}, Point{0.5, 2, -1}}) {
            Point const axis = normalized(direction);
            if (std::abs(dot(view.axes().towardViewer, axis)) < 1e-9) {
                continue;
            }
            Point const u = normalized(cross(axis, {0.3, 0.5, 0.7}));
            Point const v = cross(axis, u);
            auto const onCircle = [&](double angle) {
                return view.project(origin + u * std::cos(angle) + v * std::sin(angle));
            };
            for (double const turn : {-3.0, -1.0, 0.0, 0.5, 2.5}) {
                ScreenPoint const from = onCircle(0.8);
                ScreenPoint const to = onCircle(0.8 + turn);
                EXPECT_NEAR(turnAboutAxis(view, {origin, direction}, from.x, from.y, to.x, to.y), turn, 1e-7);
            }
        }
    }
}

TEST(AxisDrag, turnIsCounterClockwiseAsSeenAgainstTheAxis) {
    // z points at the viewer; from the right to the top is a quarter of a turn.
    EXPECT_NEAR(turnAboutAxis(orthographic(1), {{0, 0, 0}, {0, 0, 1}}, 400, 240, 320, 160), std::acos(0),
                1e-12);
    EXPECT_NEAR(turnAboutAxis(orthographic(1), {{0, 0, 0}, {0, 0, -1}}, 400, 240, 320, 160), -std::acos(0),
                1e-12);
}

TEST(AxisDrag, axisInTheScreenGivesNoTurn) {
    EXPECT_EQ(turnAboutAxis(orthographic(1), {{0, 0, 0}, {1, 0, 0}}, 400, 240, 320, 160), 0);
    View const view = perspective({0, 0, 5}, {0, 0, 0});
    EXPECT_EQ(turnAboutAxis(view, {{0, 0, 0}, {0, 1, 0}}, 400, 240, 320, 160), 0);
    EXPECT_EQ(turnAboutAxis(view, {{0, 0, 0}, {0, 0, 0}}, 400, 240, 320, 160), 0) << "an axis without length";
}

TEST(AxisDrag, pointThatMissesThePlaneOfTheTurnGivesNoTurn) {
    View const view = perspective({0, 1, 5}, {0, 1, 0});
    Ray const axis{{0, 0, 0}, {0, 1, 0}};
    EXPECT_NE(turnAboutAxis(view, axis, 300, 300, 400, 300), 0);
    EXPECT_EQ(turnAboutAxis(view, axis, 300, 300, 400, 100), 0) << "above the horizon";
    EXPECT_EQ(turnAboutAxis(view, axis, 300, 100, 400, 300), 0);
}

// == Numbers that come in ==

TEST(AxisDrag, numbersThatAreNotFiniteGiveTheOrigin) {
    View const view = perspective();
    Point const at{1, 2, 3};
    for (double const bad : {NOT_A_NUMBER, INFINITE, -INFINITE}) {
        EXPECT_EQ(alongAxis(view, {at, {1, 0, 0}}, bad, 100), 0);
        EXPECT_EQ(alongAxis(view, {at, {1, 0, 0}}, 100, bad), 0);
        EXPECT_EQ(alongAxis(view, {at, {bad, 0, 0}}, 100, 100), 0);
        expectNear(onPlane(view, at, {0, 1, 0}, bad, 100), at, 0);
        expectNear(onPlane(view, at, {0, 1, bad}, 100, 100), at, 0);
        EXPECT_EQ(turnAboutAxis(view, {at, {0, 1, 0}}, bad, 100, 200, 200), 0);
        EXPECT_EQ(turnAboutAxis(view, {at, {0, bad, 0}}, 100, 100, 200, 200), 0);
    }
}
