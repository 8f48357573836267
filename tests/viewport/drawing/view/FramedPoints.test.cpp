#include "viewport/drawing/view/FramedPoints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace vellum;
using namespace vellum::viewport;

namespace {

using Point = Vector3<double>;

FramedPoints::Range oneByOne(std::vector<Point> const& points, Point const& from, Point const& direction) {
    FramedPoints::Range range{std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest()};
    for (Point const& p : points) {
        range.least = std::min(range.least, dot(p - from, direction));
        range.most = std::max(range.most, dot(p - from, direction));
    }
    return range;
}

void expectSame(std::vector<Point> const& points, std::mt19937& random) {
    std::uniform_real_distribution<double> place(-3, 3);
    FramedPoints const framed(points);
    for (int i = 0; i < 200; ++i) {
        Point const from{place(random), place(random), i % 5 == 0 ? 1e6 : place(random)};
        Point const direction = i < 3 ? Point{i == 0 ? 1.0 : 0, i == 1 ? -1.0 : 0, i == 2 ? 1.0 : 0}
                                      : normalized(Point{place(random), place(random), place(random)});
        FramedPoints::Range const range = framed.along(from, direction);
        FramedPoints::Range const expected = oneByOne(points, from, direction);
        ASSERT_EQ(range.least, expected.least) << points.size();
        ASSERT_EQ(range.most, expected.most) << points.size();
    }
}

}  // namespace

TEST(FramedPoints, reachAsFarAsTheirFirstAndLastOneToTheBit) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(-1, 1);
    for (int const count : {1, 2, 63, 64, 65, 1000, 5000}) {
        std::vector<Point> scattered;
        std::vector<Point> inRows;
        for (int i = 0; i < count; ++i) {
            scattered.push_back({place(random), place(random), place(random)});
            double const x = i % 70 / 70.0;
            double const z = i / 70 / 70.0;
            inRows.push_back({x, 0.1 * std::sin(9 * x + 7 * z), z});
        }
        expectSame(scattered, random);
        expectSame(inRows, random);
    }
}

TEST(FramedPoints, equalPlacesAndPlanesAreNoSpecialCase) {
    std::mt19937 random(8);
    expectSame(std::vector<Point>(300, Point{0.1, 0.2, 0.3}), random);
    std::vector<Point> plane;
    for (int i = 0; i < 900; ++i) {
        plane.push_back({i % 30 * 0.1, 1.0 / 3, i / 30 * 0.1});
    }
    expectSame(plane, random);
}

TEST(FramedPoints, noPointsReachNowhere) {
    FramedPoints::Range const range = FramedPoints().along({1, 2, 3}, {0, 0, 1});
    EXPECT_EQ(range.least, std::numeric_limits<double>::max());
    EXPECT_EQ(range.most, std::numeric_limits<double>::lowest());
}
