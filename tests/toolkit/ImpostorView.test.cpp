#include "toolkit/internal/ImpostorView.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

using Vector4 = std::array<double, 4>;

Vector4 transform(Matrix4<double> const& m, Vector4 const& v) {
    Vector4 result{};
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            result[row] += m.e[4 * column + row] * v[column];
        }
    }
    return result;
}

/// A perspective along -z from z = 10, moved aside as the cameras of tiles are.
Matrix4<double> perspective() {
    double const near = 2;
    double const far = 40;
    Matrix4<double> const frustum{{3, 0, 0, 0, 0, 4, 0, 0, 0.4, -0.3, -(far + near) / (far - near), -1, 0, 0,
                                   -2 * far * near / (far - near), 0}};
    Matrix4<double> back = Matrix4<double>::identity();
    back.e[14] = -10;
    return frustum * back;
}

Matrix4<double> orthographic() {
    return {{0.02, 0, 0, 0, 0, 0.03, 0, 0, 0, 0, -0.001, 0, 0.1, -0.2, 0, 1}};
}

View viewOf(Matrix4<double> const& projection, int width = 640, int height = 480) {
    return {projection, Matrix4<double>::identity(), {0, 0, width, height}};
}

/// What the effect does to the depth of the fragment in the middle of a ball.
double liftedDepth(ImpostorView const& view, Vector4 const& center) {
    Vector4 const clip = transform(view.projection, transform(view.modelView, center));
    Vector4 lifted = clip;
    // The projection's inverse, a step along the third axis, the projection again.
    for (std::size_t row = 0; row < 4; ++row) {
        lifted[row] += view.size * view.projection.e[8 + row];
    }
    return lifted[2] / lifted[3];
}

}  // namespace

TEST(ImpostorView, everythingStaysWhereItIs) {
    for (Matrix4<double> const& view : {perspective(), orthographic()}) {
        for (auto const& [width, height] : {std::pair{640, 480}, {300, 900}, {512, 512}}) {
            ImpostorView const result = ImpostorView::of(viewOf(view, width, height), 1.5);
            double const side = std::max(width, height);
            for (Vector4 const& p : {Vector4{0, 0, 0, 1}, {3, -2, 5, 1}, {-4, 1, -20, 1}}) {
                Vector4 const wanted = transform(view, p);
                Vector4 const got = transform(result.projection, transform(result.modelView, p));
                // Pixels from the corner that both viewports share.
                EXPECT_NEAR((got[0] / got[3] + 1) / 2 * side, (wanted[0] / wanted[3] + 1) / 2 * width, 1e-9);
                EXPECT_NEAR((got[1] / got[3] + 1) / 2 * side, (wanted[1] / wanted[3] + 1) / 2 * height, 1e-9);
                EXPECT_NEAR(got[2] / got[3], wanted[2] / wanted[3], 1e-12);
            }
        }
    }
}

TEST(ImpostorView, aBallIsAsWideAsItsDiameter) {
    for (Matrix4<double> const& view : {perspective(), orthographic()}) {
        ImpostorView const result = ImpostorView::of(viewOf(view), 1.5);
        Vector4 const center{0.5, 0.25, -3, 1};
        Vector4 const middle = transform(result.projection, transform(result.modelView, center));
        Vector4 const rim =
            transform(result.projection, transform(result.modelView, {0.5 + 0.75, 0.25, -3, 1}));
        EXPECT_NEAR(rim[0] - middle[0], result.size / 2, 1e-12);
    }
}

TEST(ImpostorView, theMiddleOfABallIsHalfItsDiameterNearer) {
    for (Matrix4<double> const& view : {perspective(), orthographic()}) {
        for (double const& diameter : {0.01, 1.5, 4.0}) {
            ImpostorView const result = ImpostorView::of(viewOf(view), diameter);
            Vector4 const front = transform(view, {0.5, 0.25, -3 + diameter / 2, 1});
            EXPECT_NEAR(liftedDepth(result, {0.5, 0.25, -3, 1}), front[2] / front[3], 1e-12);
        }
    }
}

TEST(ImpostorView, otherViewsHaveTheSameDepth) {
    // Seen from above: what the orthographic cameras do with the projection.
    Matrix4<double> const turned{{1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1}};
    ImpostorView const result = ImpostorView::of({orthographic(), turned, {0, 0, 640, 480}}, 1.5);
    Vector4 const front = transform(orthographic() * turned, {1, 2.75, 3, 1});
    EXPECT_NEAR(liftedDepth(result, {1, 2, 3, 1}), front[2] / front[3], 1e-12);
}
