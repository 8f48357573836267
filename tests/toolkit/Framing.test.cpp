#include "toolkit/Framing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

using Point = Vector3<double>;

constexpr double pi = 3.14159265358979323846;

Point corner(Box3<double> const& box, unsigned int const& i) {
    return cornersOf(box)[i];
}

void expectNear(Point const& actual, Point const& expected) {
    EXPECT_NEAR(actual.x, expected.x, 1e-12);
    EXPECT_NEAR(actual.y, expected.y, 1e-12);
    EXPECT_NEAR(actual.z, expected.z, 1e-12);
}

/// A point in the frame of a perspective camera, from -1 to 1 across the picture.
struct Seen {
    double x;
    double y;
    double depth;
};

Seen see(PerspectiveFraming const& camera, Point const& p, double const& fieldOfView, double const& aspect) {
    Point const offset = p - camera.eye;
    double const depth = dot(offset, camera.direction);
    double const tangent = std::tan(fieldOfView * pi / 360);
    Point const right = cross(camera.direction, camera.up);
    return {dot(offset, right) / (depth * tangent * aspect), dot(offset, camera.up) / (depth * tangent),
            depth};
}

/// The point turned as the orthographic kinds turn the world, by rotation matrices written out.
Point turned(Point const& p, ViewKind const& view) {
    switch (view) {
    case ViewKind::BACK:
        return {-p.x, p.y, -p.z};  // 180 degrees about y
    case ViewKind::TOP:
        return {p.x, -p.z, p.y};  // 90 degrees about x: y turns to z
    case ViewKind::BOTTOM:
        return {p.x, p.z, -p.y};  // -90 degrees about x
    case ViewKind::LEFT:
        return {p.z, p.y, -p.x};  // 90 degrees about y: z turns to x
    case ViewKind::RIGHT:
        return {-p.z, p.y, p.x};  // -90 degrees about y
    case ViewKind::FRONT:
    case ViewKind::PERSPECTIVE:
        break;
    }
    return p;
}

Box3<double> const box{{-1, 0, 2}, {3, 5, 4}};

}  // namespace

TEST(Framing, cornersAreInTheOrderOfTheirBits) {
    expectNear(cornersOf(box)[0], box.min);
    expectNear(cornersOf(box)[1], {3, 0, 2});
    expectNear(cornersOf(box)[6], {-1, 5, 4});
    expectNear(cornersOf(box)[7], box.max);
}

TEST(Framing, screenAxesAreThoseThatTheRotationsShow) {
    Point const p{0.3, -1.7, 2.9};
    for (unsigned int kind = 1; kind <= 6; ++kind) {
        ViewKind const view = static_cast<ViewKind>(kind);
        ScreenAxes const axes = screenAxes(view);
        expectNear({dot(p, axes.right), dot(p, axes.up), dot(p, axes.towardViewer)}, turned(p, view));
        expectNear(cross(axes.right, axes.up), axes.towardViewer);
    }
}

TEST(Framing, aPerspectiveViewShowsTheWholeBoxAsLargeAsItFits) {
    for (double const& aspect : {0.4, 1.0, 16.0 / 9}) {
        for (double const& fieldOfView : {10.0, 35.0, 100.0}) {
            for (Point const& direction : {Point{-1, -0.6, -1.3}, Point{0, 0, -1}, Point{5, 0, 0},
                                           Point{0.3, 2, 0.1}, Point{0, -3, 0}}) {
                PerspectiveFraming const camera =
                    framePerspective(cornersOf(box), box, direction, fieldOfView, aspect);
                double smallestX = 2, largestX = -2, smallestY = 2, largestY = -2;
                for (unsigned int i = 0; i < 8; ++i) {
                    Seen const seen = see(camera, corner(box, i), fieldOfView, aspect);
                    EXPECT_GT(seen.depth, camera.nearDistance);
                    EXPECT_LT(seen.depth, camera.farDistance);
                    std::tie(smallestX, largestX) =
                        std::pair(std::min(smallestX, seen.x), std::max(largestX, seen.x));
                    std::tie(smallestY, largestY) =
                        std::pair(std::min(smallestY, seen.y), std::max(largestY, seen.y));
                }
                // One of the two directions is filled, on both sides; nothing reaches beyond.
                bool const fillsWidth = largestX - smallestX > 2 * FILLED_PART - 1e-9;
                EXPECT_NEAR(fillsWidth ? smallestX : smallestY, -FILLED_PART, 1e-9);
                EXPECT_NEAR(fillsWidth ? largestX : largestY, FILLED_PART, 1e-9);
                EXPECT_LE(std::max({-smallestX, largestX, -smallestY, largestY}), FILLED_PART + 1e-9);
                EXPECT_GT(camera.nearDistance, 0);
                EXPECT_NEAR(dot(camera.direction, camera.up), 0, 1e-12);
                EXPECT_NEAR(length(camera.direction), 1, 1e-12);
                EXPECT_NEAR(length(camera.up), 1, 1e-12);
                EXPECT_GE(camera.up.y, -1e-12);
            }
        }
    }
}

TEST(Framing, surroundingsWidenTheClippingDistances) {
    Box3<double> const around{{-100, 0, -100}, {100, 0, 100}};
    PerspectiveFraming const alone = framePerspective(cornersOf(box), box, {-1, -1, -1}, 40, 1);
    PerspectiveFraming const placed = framePerspective(cornersOf(box), around, {-1, -1, -1}, 40, 1);
    expectNear(placed.eye, alone.eye);
    EXPECT_GT(placed.farDistance, alone.farDistance);
    EXPECT_GT(placed.nearDistance, 0);
    EXPECT_LE(placed.farDistance / placed.nearDistance, 2000.001) << "depth would lose its precision";
}

TEST(Framing, anOrthographicViewShowsTheWholeBoxAsLargeAsItFits) {
    for (double const& aspect : {0.4, 1.0, 2.5}) {
        for (unsigned int kind = 1; kind <= 6; ++kind) {
            ViewKind const view = static_cast<ViewKind>(kind);
            OrthographicFraming const framing = frameOrthographic(box, view, aspect);
            // The box of glOrtho, as the camera forms it from these parameters.
            double const h = std::exp(framing.zoom);
            double const left = -(h + framing.panX);
            double const right = h - framing.panX;
            double const bottom = -(h + framing.panY) / aspect;
            double const top = (h - framing.panY) / aspect;
            double smallestX = 2, largestX = -2, smallestY = 2, largestY = -2;
            for (unsigned int i = 0; i < 8; ++i) {
                Point const p = turned(corner(box, i), view);
                double const x = (2 * p.x - left - right) / (right - left);
                double const y = (2 * p.y - bottom - top) / (top - bottom);
                std::tie(smallestX, largestX) = std::pair(std::min(smallestX, x), std::max(largestX, x));
                std::tie(smallestY, largestY) = std::pair(std::min(smallestY, y), std::max(largestY, y));
            }
            EXPECT_NEAR(smallestX, -largestX, 1e-12) << "not centered, kind " << kind;
            EXPECT_NEAR(smallestY, -largestY, 1e-12) << "not centered, kind " << kind;
            EXPECT_NEAR(std::max(largestX, largestY), FILLED_PART, 1e-12);
            // Pixels are square.
            EXPECT_NEAR((right - left) / (top - bottom), aspect, 1e-12);
        }
    }
}

TEST(Framing, aBoxWithoutSizeIsFramedAll_theSame) {
    Box3<double> const point{{7, 8, 9}, {7, 8, 9}};
    PerspectiveFraming const camera = framePerspective(cornersOf(point), point, {0, 0, -1}, 40, 1);
    EXPECT_GT(camera.eye.z, 9.5);
    EXPECT_LT(camera.nearDistance, camera.farDistance);
    EXPECT_GT(framePerspective({}, {{0, 0, 0}, {0, 0, 0}}, {0, 0, -1}, 40, 1).eye.z, 0.5);
    OrthographicFraming const framing = frameOrthographic(point, ViewKind::FRONT, 1);
    EXPECT_NEAR(std::exp(framing.zoom), 0.5 / FILLED_PART, 1e-12);
    EXPECT_EQ(framing.panX, -7);
}
