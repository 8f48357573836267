#include "internal/arrow_arrays.h"
#include "internal/arrow_geometry.h"
#include "internal/box_faces.h"
#include "internal/circle_points.h"
#include "internal/particles/color_ramp.h"
#include "internal/plane_grid.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

// The arithmetic behind the drawing operations: no context, no call, only numbers.

namespace vellum {
namespace {

using Vector = Vector3<float>;

void expectNear(Vector const& actual, Vector const& expected, float tolerance) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

// == Arrows ==

TEST(ArrowHead_test, cornersGoAroundBase) {
    ArrowHead const head(Vector{0, 0, 2}, {0, 0, 1}, 0.5F);
    // a = (-1, 0, 0), b = a x d = (0, 1, 0).
    expectNear(head.corners[0], {0.5F, -0.5F, 1}, 0);
    expectNear(head.corners[1], {0.5F, 0.5F, 1}, 0);
    expectNear(head.corners[2], {-0.5F, 0.5F, 1}, 0);
    expectNear(head.corners[3], {-0.5F, -0.5F, 1}, 0);
}

TEST(ArrowHead_test, sideOfUprightArrowIsX) {
    for (float const y : {1.0F, -1.0F, 1e-20F}) {
        HeadSide const side(Vector{0, y, 0});
        EXPECT_EQ(side.x, 1.0F);
        EXPECT_EQ(side.z, 0.0F);
        EXPECT_EQ(side.length, 1.0F);
    }
    expectNear(ArrowHead(Vector{0, 3, 0}, {0, 2, 0}, 0.25F).corners[0], {-0.25F, 2, -0.25F}, 0);
}

TEST(ArrowHead_test, sidesUpToShortestDirectionAreNone) {
    EXPECT_FALSE(hasDirection(1e-14F));
    EXPECT_TRUE(hasDirection(std::nextafter(1e-14F, 1.0F)));
    EXPECT_EQ(HeadSide(Vector{1e-15F, 1, 0}).x, 1.0F);
    EXPECT_EQ(HeadSide(Vector{1e-13F, 1, 0}).z, 1e-13F);
}

TEST(ArrowHead_test, baseIsDarkerAndOpaque) {
    Color4<float> const base = headBaseColor({0.4F, 0.8F, 1, 0.25F}, HEAD_BASE_SHADE);
    EXPECT_EQ(base.r, 0.4F * 0.75F);
    EXPECT_EQ(base.g, 0.8F * 0.75F);
    EXPECT_EQ(base.b, 0.75F);
    EXPECT_EQ(base.a, 1.0F);
}

TEST(ArrowPoints_test, manyArrowsAreThoseOfOneByOne) {
    std::vector<Vector> tails;
    std::vector<Vector> directions;
    for (unsigned int i = 0; i < ArrowPoints::ARROWS; ++i) {
        float const t = 0.7F * static_cast<float>(i);
        tails.push_back({t, -t * 0.5F, std::sin(t)});
        directions.push_back(i % 5 == 0 ? Vector{0, 1 + t, 0} : Vector{std::cos(t), t - 3, std::sin(t)});
    }
    float const scale = 1.75F;
    ArrowPoints points;
    points.compute(tails.data(), directions.data(), scale, ArrowPoints::ARROWS);
    for (unsigned int i = 0; i < ArrowPoints::ARROWS; ++i) {
        Vector const tip = tails[i] + directions[i] * scale;
        Vector const v = tip - tails[i];
        float const headLength = length(v) * 0.333F;
        ArrowHead const head(v, tip - (v / length(v)) * headLength, headLength * 0.2F);
        expectNear(points.at(0, i), tip, 0);
        for (unsigned int k = 0; k < 4; ++k) {
            expectNear(points.at(k + 1, i), head.corners[k], 0);
        }
    }
}

TEST(ArrowPoints_test, fewerArrowsLeaveOtherArrowsAlone) {
    ArrowPoints points;
    points.x[0][1] = 42;
    Vector const tail{1, 2, 3};
    Vector const direction{1, 0, 0};
    points.compute(&tail, &direction, 1, 1);
    EXPECT_EQ(points.x[0][0], 2.0F);
    EXPECT_EQ(points.x[0][1], 42.0F);
}

TEST(ArrowPoints_test, deliberatelyArrowWithoutLengthHasNaNHead) {
    Vector const tail{1, 2, 3};
    Vector const direction{0, 0, 0};
    ArrowPoints points;
    points.compute(&tail, &direction, 1, 1);
    expectNear(points.at(0, 0), tail, 0);
    for (unsigned int k = 1; k < ArrowPoints::POINTS; ++k) {
        EXPECT_TRUE(std::isnan(points.at(k, 0).x));
    }
}

TEST(ArrowArrays_test, cornersComeTwiceAndTailBetween) {
    Vector const tail{0, 0, 0};
    Vector const direction{0, 0, 3};
    ArrowPoints points;
    points.compute(&tail, &direction, 1, 1);
    std::array<Vector, VERTICES_PER_ARROW> vertices;
    writeArrowVertices(points, 0, tail, vertices.data());
    expectNear(vertices[0], {0, 0, 3}, 0);
    expectNear(vertices[5], tail, 0);
    for (unsigned int k = 1; k <= 4; ++k) {
        expectNear(vertices[k], points.at(k, 0), 0);
        expectNear(vertices[5 + k], vertices[k], 0);
    }
    EXPECT_NEAR(vertices[1].z, 3 - 0.999F, 1e-6F);
    EXPECT_NEAR(std::fabs(vertices[1].x), 0.1998F, 1e-6F);
}

TEST(ArrowArrays_test, deliberatelyBaseIsLighterThanThatOfSingleArrow) {
    std::array<Color4<float>, VERTICES_PER_ARROW> colors;
    writeArrowColors({1, 0.5F, 0.25F, 0.5F}, colors.data());
    for (unsigned int i = 0; i < 6; ++i) {
        EXPECT_EQ(colors[i].g, 0.5F);
        EXPECT_EQ(colors[i].a, 0.5F);
    }
    for (unsigned int i = 6; i < VERTICES_PER_ARROW; ++i) {
        EXPECT_EQ(colors[i].r, 0.8F);
        EXPECT_EQ(colors[i].g, 0.5F * 0.8F);
        EXPECT_EQ(colors[i].a, 1.0F);
    }
    EXPECT_NE(HEAD_BASE_SHADE, BUFFERED_HEAD_BASE_SHADE);
}

TEST(ArrowArrays_test, indicesCountFromFirstVertexOfArrow) {
    std::array<unsigned int, TRIANGLE_INDICES_PER_ARROW> triangles{};
    writeArrowIndices(TRIANGLE_INDICES, 20, triangles.data());
    EXPECT_EQ(triangles, (std::array<unsigned int, 12>{20, 21, 22, 20, 22, 23, 20, 23, 24, 20, 24, 21}));
    std::array<unsigned int, LINE_INDICES_PER_ARROW> line{};
    writeArrowIndices(LINE_INDICES, 20, line.data());
    EXPECT_EQ(line, (std::array<unsigned int, 2>{25, 20}));
    std::array<unsigned int, QUAD_INDICES_PER_ARROW> quad{};
    writeArrowIndices(QUAD_INDICES, 20, quad.data());
    EXPECT_EQ(quad, (std::array<unsigned int, 4>{26, 27, 28, 29}));
}

// == Boxes ==

TEST(BoxFaces_test, facesAreCounterClockwiseSeenFromOutside) {
    BoxCorners const corners = boxCorners(Box3<float>{{-1, -2, -3}, {1, 2, 3}});
    for (BoxFace const& face : BOX_FACES) {
        Vector const a = corners[face.corners[0]];
        Vector const outward = normalized(cross(corners[face.corners[1]] - a, corners[face.corners[2]] - a));
        expectNear(outward, face.normal, 0);
        for (unsigned int const corner : face.corners) {
            EXPECT_GT(dot(corners[corner], face.normal), 0.0F);
        }
    }
}

TEST(BoxFaces_test, everyCornerBelongsToThreeFaces) {
    std::array<int, 8> uses{};
    for (BoxFace const& face : BOX_FACES) {
        for (unsigned int const corner : face.corners) {
            ++uses.at(corner);
        }
    }
    EXPECT_EQ(uses, (std::array<int, 8>{3, 3, 3, 3, 3, 3, 3, 3}));
}

TEST(BoxFaces_test, cornersOfInvertedBoxAreTakenAsTheyAre) {
    BoxCorners const corners = boxCorners(Box3<float>{{1, 1, 1}, {-1, -1, -1}});
    expectNear(corners[0], {1, 1, 1}, 0);
    expectNear(corners[7], {-1, -1, -1}, 0);
    Box3<float> const cube = cubeAround({1, 2, 3}, 0.5F);
    expectNear(cube.min, {0.5F, 1.5F, 2.5F}, 0);
    expectNear(cube.max, {1.5F, 2.5F, 3.5F}, 0);
}

// == Circles and ellipses ==

TEST(CirclePoints_test, anglesAreFloatsWithSineAndCosineInDouble) {
    for (unsigned int const degree : {0U, 1U, 45U, 90U, 359U}) {
        float const angle = static_cast<float>(degree) * 0.017453292F;
        Vector const p = circlePoint(2.5F, degree);
        EXPECT_EQ(p.x, static_cast<float>(2.5 * std::cos(static_cast<double>(angle))));
        EXPECT_EQ(p.y, static_cast<float>(2.5 * std::sin(static_cast<double>(angle))));
        EXPECT_EQ(p.z, 0.0F);
    }
}

TEST(CirclePoints_test, frameOfAxisTurnsCircleAboutIt) {
    for (VL_AXIS const axis : {VL_AXIS_X, VL_AXIS_Y, VL_AXIS_Z}) {
        for (Vector const& p : circlePoints(circleAxisFrame(axis, 2), 1.5F)) {
            EXPECT_NEAR(length(p), 3.0F, 1e-5F);
            float const along = axis == VL_AXIS_X ? p.x : axis == VL_AXIS_Y ? p.y : p.z;
            EXPECT_NEAR(along, 0.0F, 1e-6F);
        }
    }
    // A quarter turn about Y takes X to -Z; one about X, backwards, takes Y to -Z.
    expectNear(circlePoints(circleAxisFrame(VL_AXIS_X, 1), 1)[0], {0, 0, -1}, 1e-6F);
    expectNear(circlePoints(circleAxisFrame(VL_AXIS_Y, 1), 1)[90], {0, 0, -1}, 1e-6F);
}

TEST(CirclePoints_test, translationOfFrameMovesCircle) {
    Matrix4<float> frame = circleAxisFrame(VL_AXIS_Z, 1);
    frame.e[12] = 1;
    frame.e[13] = 2;
    frame.e[14] = 3;
    expectNear(circlePoints(frame, 1)[0], {2, 2, 3}, 0);
}

TEST(CirclePoints_test, deliberatelyTapeFactorsHaveTwoPrecisions) {
    // The degree is the float by which all circles count.
    double const degree = static_cast<double>(ONE_DEGREE);
    EXPECT_NEAR(TAPE_COS_FIRST, std::cos(5 * degree), 1e-8);
    EXPECT_NEAR(TAPE_SIN_FIRST, std::sin(5 * degree), 1e-8);
    EXPECT_NEAR(TAPE_COS_LAST, std::cos(85 * degree), 1e-7);
    EXPECT_NEAR(TAPE_SIN_LAST, std::sin(85 * degree), 1e-7);
    EXPECT_NE(TAPE_COS_LAST, TAPE_SIN_FIRST);
    EXPECT_NE(TAPE_SIN_LAST, TAPE_COS_FIRST);
}

TEST(Ellipse_test, deliberatelyLastPointFallsShortOfFirst) {
    constexpr double TWO_PI = 2 * 3.14159265358979323846;
    EXPECT_EQ(ellipseAngle(0), 0.0);
    EXPECT_LT(ellipseAngle(ELLIPSE_POINTS - 1), TWO_PI);
    EXPECT_NEAR(ellipseAngle(ELLIPSE_POINTS - 1), TWO_PI, 1e-7);
}

// == Plane grids ==

TEST(PlaneGrid_test, centerIsPointOfPlaneNearestToOrigin) {
    PlaneGrid const grid({{0, 0.6F, 0.8F}, -5});
    expectNear(grid.center, {0, 3, 4}, 1e-6F);
}

TEST(PlaneGrid_test, axesLieInPlaneAtRightAngles) {
    for (Vector const& n :
         {Vector{1, 0, 0}, Vector{0, 1, 0}, Vector{0, 0.6F, -0.8F}, normalized(Vector{1, -2, 3})}) {
        PlaneGrid const grid({n, 1});
        EXPECT_NEAR(dot(grid.axisX, n), 0.0F, 1e-6F);
        EXPECT_NEAR(dot(grid.axisZ, n), 0.0F, 1e-6F);
        EXPECT_NEAR(dot(grid.axisX, grid.axisZ), 0.0F, 1e-6F);
        EXPECT_NEAR(length(grid.axisX), 1.0F, 1e-6F);
        EXPECT_NEAR(length(grid.axisZ), 1.0F, 1e-6F);
    }
}

// == The color ramp ==

TEST(ColorRamp_test, colorsLieBetweenTwoAndTakeThirdAbove) {
    ColorRamp const ramp{{0, 0, 1}, {1, 0, 0}, {1, 1, 1}, 2, 4};
    expectNear(ramp.colorOf(2), {0, 0, 1}, 0);
    expectNear(ramp.colorOf(3), {0.5F, 0, 0.5F}, 0);
    expectNear(ramp.colorOf(4), {1, 0, 0}, 0);
    expectNear(ramp.colorOf(std::nextafter(4.0F, 5.0F)), {1, 1, 1}, 0);
}

TEST(ColorRamp_test, deliberatelyLineGoesOnBelowRange) {
    ColorRamp const ramp{{0, 0, 1}, {1, 0, 0}, {1, 1, 1}, 2, 4};
    expectNear(ramp.colorOf(0), {-1, 0, 2}, 0);
    expectNear(limitedToColor(ramp.colorOf(0)), {0, 0, 1}, 0);
}

TEST(ColorRamp_test, rangesWithoutExtentAreKnown) {
    ColorRamp ramp{{}, {}, {}, 3, 3};
    EXPECT_TRUE(ramp.isDegenerate());
    ramp.maxMagnitude = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(ramp.isDegenerate());
    ramp.maxMagnitude = 1;
    EXPECT_FALSE(ramp.isDegenerate());
}

TEST(ColorRamp_test, nanIsBlack) {
    EXPECT_EQ(limitedToColor(std::numeric_limits<float>::quiet_NaN()), 0.0F);
    EXPECT_EQ(limitedToColor(std::numeric_limits<float>::infinity()), 1.0F);
    EXPECT_EQ(limitedToColor(-std::numeric_limits<float>::infinity()), 0.0F);
}

TEST(ColorRamp_test, magnitudesAreCutToIntegers) {
    EXPECT_EQ(truncatedMagnitude(-3.9F), 3.0F);
    EXPECT_EQ(truncatedMagnitude(0.9F), 0.0F);
    EXPECT_EQ(truncatedMagnitude(3e9F), 2147483648.0F);
    EXPECT_EQ(truncatedMagnitude(std::numeric_limits<float>::quiet_NaN()), 2147483648.0F);
}

}  // namespace
}  // namespace vellum
