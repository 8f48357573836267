#include "viewport/scene/GroundGrid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace vellum;
using namespace vellum::viewport;

namespace {

GroundGrid ground(Vector3<double> const& fileOrigin, bool const& fades) {
    return {{0, -3, 0}, {1, 0, 0}, {0, 0, 1}, 25, fades, fileOrigin, 2};
}

/// The segments whose color is that of an axis, whatever their opacity.
std::vector<ShadedSegment> axisSegments(std::vector<ShadedSegment> const& segments,
                                        unsigned int const& axis) {
    Color4<float> const color = axisColor(axis);
    std::vector<ShadedSegment> found;
    std::copy_if(segments.begin(), segments.end(), std::back_inserter(found), [&](ShadedSegment const& s) {
        return s.fromColor.r == color.r && s.fromColor.g == color.g && s.fromColor.b == color.b;
    });
    return found;
}

}  // namespace

TEST(GroundGrid, linesAreAtMultiplesOfTheSpacingFromTheFilesOrigin) {
    for (ShadedSegment const& s : ground({0.5, 9, -0.7}, false).segments()) {
        bool const alongX = s.from.z == s.to.z;
        double const lines = alongX ? (s.from.z + 0.7) / 2 : (s.from.x - 0.5) / 2;
        EXPECT_NEAR(lines, std::round(lines), 1e-5);
        EXPECT_EQ(s.from.y, -3);
        EXPECT_EQ(s.to.y, -3);
        EXPECT_LE(std::abs(alongX ? s.to.x : s.to.z), 25.001F);
    }
}

TEST(GroundGrid, theAxesOfTheFileHaveTheirColors) {
    std::vector<ShadedSegment> const segments = ground({0.5, 9, -0.7}, false).segments();
    std::vector<ShadedSegment> const x = axisSegments(segments, 0);
    std::vector<ShadedSegment> const z = axisSegments(segments, 2);
    ASSERT_FALSE(x.empty());
    ASSERT_FALSE(z.empty());
    EXPECT_TRUE(axisSegments(segments, 1).empty());
    for (ShadedSegment const& s : x) {
        EXPECT_NEAR(s.from.z, -0.7, 1e-5);
    }
    for (ShadedSegment const& s : z) {
        EXPECT_NEAR(s.from.x, 0.5, 1e-5);
    }
}

TEST(GroundGrid, axesOfTurnedFilesHaveTheirColorsToo) {
    GroundGrid grid = ground({0.5, 9, -0.7}, false);
    grid.up = UpAxis::Z;
    std::vector<ShadedSegment> const segments = grid.segments();
    EXPECT_FALSE(axisSegments(segments, 0).empty());
    std::vector<ShadedSegment> const y = axisSegments(segments, 1);
    ASSERT_FALSE(y.empty());
    EXPECT_TRUE(axisSegments(segments, 2).empty());
    for (ShadedSegment const& s : y) {
        EXPECT_NEAR(s.from.x, 0.5, 1e-5) << "y of the files runs along z of the scene";
    }
}

TEST(GroundGrid, axesThatDoNotComeByAreNotShown) {
    for (double const& away : {26.5, 1e6, 1e30, -1e300}) {
        std::vector<ShadedSegment> const segments = ground({away, 0, away}, true).segments();
        EXPECT_GT(segments.size(), 100U) << away;
        EXPECT_LT(segments.size(), 5000U) << away;
        for (unsigned int axis = 0; axis < 3; ++axis) {
            EXPECT_TRUE(axisSegments(segments, axis).empty()) << away;
        }
        for (ShadedSegment const& s : segments) {
            ASSERT_LE(std::hypot(s.from.x, s.from.z), 25.1) << away;
        }
    }
}

TEST(GroundGrid, everyTenthLineIsStronger) {
    std::vector<float> strengths[2];
    for (ShadedSegment const& s : ground({0, 0, 0}, false).segments()) {
        bool const alongX = s.from.z == s.to.z;
        int const index = static_cast<int>(std::lround((alongX ? s.from.z : s.from.x) / 2));
        if (index != 0) {
            strengths[index % 10 == 0 ? 1 : 0].push_back(s.fromColor.a);
        }
    }
    ASSERT_FALSE(strengths[0].empty());
    ASSERT_FALSE(strengths[1].empty());
    EXPECT_LT(*std::max_element(strengths[0].begin(), strengths[0].end()),
              *std::min_element(strengths[1].begin(), strengths[1].end()));
}

TEST(GroundGrid, aFadingGridEndsInvisible) {
    for (ShadedSegment const& s : ground({0, 0, 0}, true).segments()) {
        double const distance = std::hypot(s.from.x, s.from.z);
        EXPECT_LE(distance, 25.001);
        if (distance > 24.9) {
            EXPECT_LT(s.fromColor.a, 0.001F);
        }
    }
}

TEST(GroundGrid, theSpacingSuitsTheModelWhateverItsUnits) {
    for (double const& unit : {1e-30, 0.003, 1.0, 7.0, 1e20}) {
        for (double const& size : {1.0, 3.99, 500.0}) {
            double const spacing = GroundGrid::spacingFor(size, unit);
            EXPECT_GE(size / spacing, 3.999);
            EXPECT_LE(size / spacing, 40.001);
            double const power = std::log10(spacing / unit);
            EXPECT_NEAR(power, std::round(power), 1e-9) << "not a power of ten of the file's units";
        }
    }
}
