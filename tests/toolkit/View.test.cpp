#include "toolkit/View.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

using Point = Vector3<double>;

Matrix4<double> frustum(double left, double right, double bottom, double top, double near, double far) {
    return {{2 * near / (right - left), 0, 0, 0, 0, 2 * near / (top - bottom), 0, 0,
             (right + left) / (right - left), (top + bottom) / (top - bottom), -(far + near) / (far - near),
             -1, 0, 0, -2 * far * near / (far - near), 0}};
}

Matrix4<double> orthographic(double left, double right, double bottom, double top, double near, double far) {
    return {{2 / (right - left), 0, 0, 0, 0, 2 / (top - bottom), 0, 0, 0, 0, -2 / (far - near), 0,
             -(right + left) / (right - left), -(top + bottom) / (top - bottom), -(far + near) / (far - near),
             1}};
}

/// Turns by an angle about y, then about x, and moves.
Matrix4<double> turned(double aboutY, double aboutX, Point const& by) {
    double const cy = std::cos(aboutY);
    double const sy = std::sin(aboutY);
    double const cx = std::cos(aboutX);
    double const sx = std::sin(aboutX);
    Matrix4<double> const y{{cy, 0, -sy, 0, 0, 1, 0, 0, sy, 0, cy, 0, 0, 0, 0, 1}};
    Matrix4<double> const x{{1, 0, 0, 0, 0, cx, sx, 0, 0, -sx, cx, 0, 0, 0, 0, 1}};
    Matrix4<double> moved = Matrix4<double>::identity();
    moved.e[12] = by.x;
    moved.e[13] = by.y;
    moved.e[14] = by.z;
    return moved * x * y;
}

struct Row {
    char const* name;
    View view;
    bool isPerspective;
};

std::vector<Row> rows() {
    Matrix4<double> const camera = turned(0.7, -0.4, {0.3, -0.2, -12});
    // What orthographic cameras do: the turn is part of the projection.
    Matrix4<double> const above =
        orthographic(-4, 4, -3, 3, -100, 100) * turned(0, std::acos(0.0), {0, 0, 0});
    return {{"perspective", {frustum(-0.8, 0.8, -0.6, 0.6, 1, 50), camera, {0, 0, 640, 480}}, true},
            {"part of a larger picture",
             {frustum(0.1, 0.5, -0.9, -0.2, 1, 50), camera, {30, 50, 320, 560}},
             true},
            {"orthographic", {orthographic(-4, 4, -3, 3, 1, 50), camera, {10, 20, 640, 480}}, false},
            {"orthographic part", {orthographic(1, 4, -3, -2, 1, 50), camera, {0, 0, 900, 300}}, false},
            {"from above", {above, Matrix4<double>::identity(), {0, 0, 640, 480}}, false}};
}

void expectNear(Point const& actual, Point const& expected, double tolerance = 1e-9) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

Point const points[] = {{0, 0, 0}, {1, 2, 0.5}, {-1.5, 0.25, 1}, {2, -1, -3}};

}  // namespace

TEST(View, viewportKnowsItsAspect) {
    EXPECT_EQ((Viewport{5, 5, 640, 320}.aspect()), 2.0);
}

TEST(View, toClipAppliesModelViewFirst) {
    View const view = rows()[0].view;
    Matrix4<double> const expected = view.projection * view.modelView;
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(view.toClip().e[i], expected.e[i]) << i;
    }
}

TEST(View, knowsPerspectives) {
    for (Row const& row : rows()) {
        EXPECT_EQ(row.view.isPerspective(), row.isPerspective) << row.name;
    }
}

TEST(View, projectCountsPixelsFromTheUpperLeftCorner) {
    View const view{orthographic(-4, 4, -3, 3, 10, 20), Matrix4<double>::identity(), {7, 9, 640, 480}};
    ScreenPoint const middle = view.project({0, 0, -15});
    EXPECT_NEAR(middle.x, 320, 1e-9);
    EXPECT_NEAR(middle.y, 240, 1e-9);
    EXPECT_NEAR(middle.depth, 0.5, 1e-9);
    EXPECT_TRUE(middle.isInFront);
    ScreenPoint const corner = view.project({-4, 3, -10});
    EXPECT_NEAR(corner.x, 0, 1e-9);
    EXPECT_NEAR(corner.y, 0, 1e-9);
    EXPECT_NEAR(corner.depth, 0, 1e-9);
    EXPECT_NEAR(view.project({0, 0, -20}).depth, 1, 1e-9);
}

TEST(View, pointsBehindAPerspectiveCameraAreNotInFront) {
    View const view{frustum(-1, 1, -1, 1, 1, 50), Matrix4<double>::identity(), {0, 0, 100, 100}};
    EXPECT_TRUE(view.project({0.5, 0.5, -2}).isInFront);
    EXPECT_FALSE(view.project({0.5, 0.5, 2}).isInFront);
}

TEST(View, axesAreThoseOfTheScreen) {
    for (Row const& row : rows()) {
        SCOPED_TRACE(row.name);
        View const& view = row.view;
        ScreenAxes const axes = view.axes();
        EXPECT_NEAR(length(axes.right), 1, 1e-9);
        expectNear(cross(axes.right, axes.up), axes.towardViewer);
        for (Point const& p : points) {
            ScreenPoint const at = view.project(p);
            ScreenPoint const right = view.project(p + axes.right * 0.1);
            EXPECT_GT(right.x, at.x + 1);
            EXPECT_NEAR(right.y, at.y, 1e-6);
            ScreenPoint const up = view.project(p + axes.up * 0.1);
            EXPECT_NEAR(up.x, at.x, 1e-6);
            EXPECT_LT(up.y, at.y - 1);
            EXPECT_LT(view.project(p + axes.towardViewer * 0.1).depth, at.depth);
        }
    }
}

TEST(View, axesOfATurnedCameraAreItsRows) {
    for (int const index : {0, 1, 2}) {
        View const view = rows()[static_cast<std::size_t>(index)].view;
        ScreenAxes const axes = view.axes();
        double const* const e = view.modelView.e;
        expectNear(axes.right, {e[0], e[4], e[8]});
        expectNear(axes.up, {e[1], e[5], e[9]});
        expectNear(axes.towardViewer, {e[2], e[6], e[10]});
    }
}

TEST(View, rayGoesThroughWhatIsDrawnAtItsPixel) {
    for (Row const& row : rows()) {
        SCOPED_TRACE(row.name);
        for (Point const& p : points) {
            ScreenPoint const at = row.view.project(p);
            Ray const ray = row.view.rayThrough(at.x, at.y);
            EXPECT_NEAR(length(ray.direction), 1, 1e-9);
            expectNear(cross(p - ray.origin, ray.direction), {0, 0, 0}, 1e-7);
            EXPECT_GT(dot(p - ray.origin, ray.direction), 0);
            EXPECT_NEAR(row.view.project(ray.origin).depth, 0, 1e-9);
        }
    }
}

TEST(View, raysOfOrthographicViewsAreParallel) {
    View const view = rows()[2].view;
    expectNear(view.rayThrough(0, 0).direction, view.rayThrough(600, 70).direction);
    expectNear(view.rayThrough(0, 0).direction, -view.axes().towardViewer);
}

TEST(View, pixelsPerUnitIsTheLengthOnTheScreen) {
    for (Row const& row : rows()) {
        SCOPED_TRACE(row.name);
        for (Point const& p : points) {
            ScreenPoint const from = row.view.project(p);
            ScreenPoint const to = row.view.project(p + row.view.axes().up * 0.5);
            EXPECT_NEAR(row.view.pixelsPerUnit(p), (from.y - to.y) * 2, 1e-6);
        }
    }
}

TEST(View, nothingHasASizeBehindTheViewer) {
    View const view{frustum(-1, 1, -1, 1, 1, 50), Matrix4<double>::identity(), {0, 0, 100, 100}};
    EXPECT_EQ(view.pixelsPerUnit({0, 0, 3}), 0);
    EXPECT_GT(view.pixelsPerUnit({0, 0, -3}), 0);
}
