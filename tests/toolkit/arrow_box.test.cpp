#include "toolkit/arrow_box.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

Box3<double> boxOf(ParticleMode mode, Vector3<double> const& position, Vector3<double> const& along) {
    Box3<double> box{position, position};
    includeArrow(box, mode, position, along);
    return box;
}

void expectNear(Box3<double> const& box, Vector3<double> const& least, Vector3<double> const& most) {
    constexpr double TOLERANCE = 1e-3;
    EXPECT_NEAR(box.min.x, least.x, TOLERANCE);
    EXPECT_NEAR(box.min.y, least.y, TOLERANCE);
    EXPECT_NEAR(box.min.z, least.z, TOLERANCE);
    EXPECT_NEAR(box.max.x, most.x, TOLERANCE);
    EXPECT_NEAR(box.max.y, most.y, TOLERANCE);
    EXPECT_NEAR(box.max.z, most.z, TOLERANCE);
}

}  // namespace

TEST(arrow_box, arrowsReachFromTheirTailToTheirTipAndAreAsWideAsTheirHead) {
    expectNear(boxOf(ParticleMode::SOLID_ARROWS, {1, 2, 3}, {3, 0, 0}), {1, 2 - 0.283, 3 - 0.283},
               {4, 2 + 0.283, 3 + 0.283});
    expectNear(boxOf(ParticleMode::ARROWS, {1, 2, 3}, {0, -3, 0}), {1 - 0.7175, -1, 3 - 0.7175},
               {1 + 0.7175, 2, 3 + 0.7175});
}

TEST(arrow_box, slantedArrowsReachBeyondTheirTailByTheirHead) {
    Box3<double> const box = boxOf(ParticleMode::ARROWS, {0, 0, 0}, {1, 1, 0});
    double const around = 0.2392 * std::sqrt(2.0) * std::sqrt(0.5);
    expectNear(box, {-around, -around, -0.2392 * std::sqrt(2.0)}, {1, 1, 0.2392 * std::sqrt(2.0)});
}

TEST(arrow_box, whatIsInsideAndWhatIsNotFiniteWidensNothing) {
    Box3<double> const large{{-9, -9, -9}, {9, 9, 9}};
    double const infinity = std::numeric_limits<double>::infinity();
    for (Vector3<double> const& along :
         {Vector3<double>{1, 2, 3}, {0, 0, 0}, {std::nan(""), 0, 0}, {0, infinity, 0}}) {
        Box3<double> box = large;
        includeArrow(box, ParticleMode::ARROWS, {1, 1, 1}, along);
        expectNear(box, large.min, large.max);
        includeArrow(box, ParticleMode::SOLID_ARROWS, {infinity, 1, 1}, along);
        expectNear(box, large.min, large.max);
    }
}
