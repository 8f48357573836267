#include "viewport/scene/Placement.h"

#include <gtest/gtest.h>

using namespace vellum;
using namespace vellum::viewport;

namespace {

constexpr UpAxis ALL[] = {UpAxis::X, UpAxis::Y, UpAxis::Z, UpAxis::MINUS_X, UpAxis::MINUS_Y, UpAxis::MINUS_Z};

void expectSame(Vector3<double> const& a, Vector3<double> const& b) {
    EXPECT_EQ(a.x, b.x);
    EXPECT_EQ(a.y, b.y);
    EXPECT_EQ(a.z, b.z);
}

}  // namespace

TEST(Turn, whatIsUpBecomesY) {
    for (UpAxis const up : ALL) {
        SCOPED_TRACE(static_cast<int>(up));
        expectSame(Turn(up)(directionOf(up)), {0, 1, 0});
    }
}

TEST(Turn, nothingIsMirroredAndTheWayBackIsExact) {
    for (UpAxis const up : ALL) {
        SCOPED_TRACE(static_cast<int>(up));
        Turn const turn(up);
        Vector3<double> const x = turn(Vector3<double>{1, 0, 0});
        Vector3<double> const y = turn(Vector3<double>{0, 1, 0});
        expectSame(cross(x, y), turn(Vector3<double>{0, 0, 1}));
        expectSame(turn.back(turn(Vector3<double>{0.1, -2e30, 3})), {0.1, -2e30, 3});
        Matrix4<double> const m = turn.matrix();
        expectSame({m.e[0], m.e[1], m.e[2]}, x);
        expectSame({m.e[4], m.e[5], m.e[6]}, y);
    }
}

TEST(Turn, xStaysToTheRightWhereItIsNotUp) {
    for (UpAxis const up : {UpAxis::Y, UpAxis::Z, UpAxis::MINUS_Y, UpAxis::MINUS_Z}) {
        EXPECT_EQ(Turn(up)(Vector3<double>{1, 0, 0}).x, 1);
    }
}

TEST(Turn, boxesStayBoxes) {
    Box3<double> const box = Turn(UpAxis::Z)(Box3<double>{{1, 2, 3}, {4, 5, 6}});
    expectSame(box.min, {1, 3, -5});
    expectSame(box.max, {4, 6, -2});
}

TEST(Placement, pointsAreMovedScaledAndTurned) {
    Placement const place{{1, 2, 3}, 10, Turn(UpAxis::Z)};
    expectSame(place({2, 4, 6}), {10, 30, -20});
}
