#include "viewport/ocean/SurroundingSea.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

using namespace vellum;
using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

using Point = Vector3<double>;

/// Water without waves, at a height.
SeaSurface levelWater(float height) {
    SeaSurface surface;
    surface.size = 16;
    surface.height.assign(256, height);
    surface.alongX.assign(256, 0.0F);
    surface.alongZ.assign(256, 0.0F);
    surface.jacobian.assign(256, 1.0F);
    return surface;
}

SurroundingSea::Setting setting(double level) {
    return {{{-10, -20, -10}, {10, 20, 10}}, 2, level, 100, 7, 14};
}

/// Looks along -z, as far down as is asked for.
SeaView viewFrom(Point const& eye, double depression) {
    double const angle = depression * 3.14159265358979323846 / 180;
    return {eye,       {0, -std::sin(angle), -std::cos(angle)},
            {1, 0, 0}, {0, std::cos(angle), -std::sin(angle)},
            false,     0.4,
            0.3};
}

SeaView parallel(SeaView view) {
    view.isParallel = true;
    view.halfWidth = 40;
    view.halfHeight = 30;
    return view;
}

constexpr WaterSheet::Range RANGE{1, 0.5, 9000, 1000};

/// Whether a place of still water is inside of the sheet's outline, seen from above.
bool covers(WaterSheet const& sheet, double x, double z) {
    auto const rows = static_cast<unsigned int>(sheet.points.size()) / sheet.columns;
    for (unsigned int row = 0; row + 1 < rows; ++row) {
        for (unsigned int column = 0; column + 1 < sheet.columns; ++column) {
            Point const& a = sheet.points[row * sheet.columns + column];
            Point const& b = sheet.points[(row + 1) * sheet.columns + column + 1];
            Point const& c = sheet.points[row * sheet.columns + column + 1];
            Point const& d = sheet.points[(row + 1) * sheet.columns + column];
            if (x >= std::min({a.x, b.x, c.x, d.x}) && x <= std::max({a.x, b.x, c.x, d.x}) &&
                z >= std::min({a.z, b.z, c.z, d.z}) && z <= std::max({a.z, b.z, c.z, d.z})) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace

// == Where the water is ==

TEST(SurroundingSea, theLevelIsThePartOfTheHeightThatIsUnderWater) {
    EXPECT_DOUBLE_EQ(SurroundingSea(setting(0), levelWater(0)).stillLevel(), -20);
    EXPECT_DOUBLE_EQ(SurroundingSea(setting(0.25), levelWater(0)).stillLevel(), -10);
    EXPECT_DOUBLE_EQ(SurroundingSea(setting(1), levelWater(0)).stillLevel(), 20);
}

TEST(SurroundingSea, theWaterCarriesTheThings) {
    // Waves of 3 meters, which are 6 units: the still water is so much below what the things float on.
    EXPECT_NEAR(SurroundingSea(setting(0.25), levelWater(3)).stillLevel(), -16, 1e-6);
}

TEST(SeaSurface, theMeanIsThatOfTheWaterInTheRectangle) {
    SeaSurface surface = levelWater(0);
    surface.height[0] = 4;  // at the origin; samples are 6.25 meters apart
    EXPECT_NEAR(meanWater(surface, 100, {-6.3, -6.3}, {6.3, 6.3}), 4.0 / 9, 1e-6);
    EXPECT_NEAR(meanWater(surface, 100, {-0.1, -0.1}, {0.1, 0.1}), 4.0 / 9, 1e-6) << "a place without sample";
    EXPECT_NEAR(meanWater(surface, 100, {93.7, 93.7}, {106.3, 106.3}), 4.0 / 9, 1e-6) << "a patch further";
    EXPECT_NEAR(meanWater(surface, 100, {20, 20}, {40, 40}), 0, 1e-6);
    EXPECT_NEAR(meanWater(surface, 100, {-1000, -1000}, {1000, 1000}), 4.0 / 256, 1e-6) << "the whole patch";
}

TEST(SurroundingSea, theMeshIsThatOfTheScene) {
    SurroundingSea const sea(setting(0.25), levelWater(0));
    Matrix4<double> const toScene = sea.toScene(3);
    EXPECT_DOUBLE_EQ(toScene.e[0], 6) << "units of the scene";
    EXPECT_DOUBLE_EQ(toScene.e[13], -10);
    std::unique_ptr<Mesh> const water = sea.water(viewFrom({0, 10, 60}, 10), 3);
    EXPECT_EQ(water->box().min.y, 0);
    EXPECT_EQ(water->box().max.y, 0);
}

// == Cameras ==

TEST(SurroundingSea, anEyeInTheWaterIsAFault) {
    SurroundingSea const sea(setting(0.5), levelWater(0));
    EXPECT_FALSE(sea.fault(viewFrom({0, 1, 60}, 5)));
    EXPECT_TRUE(sea.fault(viewFrom({0, 0, 60}, 5))) << "at the surface";
    std::optional<Fault> const deep = sea.fault(viewFrom({0, -5, 60}, 5));
    ASSERT_TRUE(deep);
    EXPECT_THAT(deep->message, HasSubstr("2.5 meters below the surface"));
}

TEST(SurroundingSea, aParallelCameraLooksDownOrAlongTheWater) {
    SurroundingSea const sea(setting(0.5), levelWater(0));
    EXPECT_FALSE(sea.fault(parallel(viewFrom({0, -5, 60}, 30))));
    EXPECT_FALSE(sea.fault(parallel(viewFrom({0, -5, 60}, 0))));
    EXPECT_TRUE(sea.fault(parallel(viewFrom({0, 500, 60}, -1)))) << "from below";
}

TEST(SurroundingSea, theDepthsBeginBeforeTheWaterAndEndBehindTheHorizon) {
    SurroundingSea const sea(setting(0.5), levelWater(0));
    SurroundingSea::Depths const low = sea.depths(viewFrom({0, 1, 60}, 5));
    EXPECT_LT(low.nearest, 0.5 * 2) << "less than the eye is above the water";
    EXPECT_GT(low.nearest, 0.1);
    EXPECT_GT(low.farthest, 9000 * 2);
    EXPECT_GT(sea.depths(viewFrom({0, 400, 60}, 5)).nearest, 250) << "high up, for the sake of precision";
}

TEST(SurroundingSea, theSunStandsBesideTheMiddleOfThePicture) {
    SurroundingSea const sea(setting(0.5), levelWater(0));
    Point const sun = sea.sunDirection(viewFrom({0, 1, 60}, 20));
    EXPECT_NEAR(sun.y, std::sin(7 * 3.14159265 / 180), 1e-6);
    EXPECT_NEAR(std::atan2(sun.x, -sun.z) * 180 / 3.14159265, 14, 1e-6) << "to the right";
    EXPECT_NEAR(length(sun), 1, 1e-12);
}

// == What is seen of it ==

TEST(WaterSheet, aViewToTheHorizonIsCovered) {
    WaterSheet const sheet = WaterSheet::of(viewFrom({5, 4, 0}, 4), RANGE);
    EXPECT_GT(sheet.farthest, 8900);
    // The lowest ray of the picture meets the water some ten meters ahead, and crests before that.
    for (double const ahead : {9.0, 50.0, 1000.0, 8000.0}) {
        EXPECT_TRUE(covers(sheet, 5, -ahead)) << ahead;
        EXPECT_TRUE(covers(sheet, 5 + 0.4 * ahead, -ahead)) << ahead;
        EXPECT_TRUE(covers(sheet, 5 - 0.4 * ahead, -ahead)) << ahead;
    }
    EXPECT_FALSE(covers(sheet, 5, 300)) << "behind the viewer";
}

TEST(WaterSheet, aViewStraightDownIsCoveredAllAround) {
    WaterSheet const sheet = WaterSheet::of(viewFrom({5, 100, 0}, 90), RANGE);
    for (double const aside : {-39.0, 0.0, 39.0}) {
        for (double const ahead : {-29.0, 0.0, 29.0}) {
            EXPECT_TRUE(covers(sheet, 5 + aside, ahead));
        }
    }
    EXPECT_FALSE(covers(sheet, 5, 1000)) << "not seen";
}

TEST(WaterSheet, aParallelViewIsCovered) {
    WaterSheet const down = WaterSheet::of(parallel(viewFrom({0, 50, 0}, 90)), RANGE);
    EXPECT_TRUE(covers(down, 39, 29));
    EXPECT_TRUE(covers(down, -39, -29));
    EXPECT_FALSE(covers(down, 0, 60));
    WaterSheet const along = WaterSheet::of(parallel(viewFrom({0, 0, 0}, 0)), RANGE);
    auto const lower = [](Point const& a, Point const& b) { return a.y < b.y; };
    EXPECT_LE(std::min_element(along.points.begin(), along.points.end(), lower)->y, -30)
        << "down to the lower edge of the picture";
    EXPECT_GE(along.nearest, -1000);
    EXPECT_LE(along.farthest, 1000);
}

TEST(WaterSheet, noViewNeedsMoreThanItsShareOfPoints) {
    for (double const depression : {-80.0, 10.0, 89.0}) {
        for (double const height : {0.01, 1e5}) {
            for (double const size : {0.001, 10.0}) {
                SeaView view = viewFrom({0, height, 0}, depression);
                view.halfWidth = size;
                view.halfHeight = size;
                WaterSheet const sheet = WaterSheet::of(view, {1, 0.5, std::max(9000.0, 200 * height), 1000});
                EXPECT_LE(sheet.points.size(), 1'250'000U);
                EXPECT_GE(sheet.points.size(), 2 * sheet.columns);
                EXPECT_TRUE(
                    std::all_of(sheet.points.begin(), sheet.points.end(),
                                [](Point const& p) { return std::isfinite(p.x) && std::isfinite(p.z); }))
                    << depression << ' ' << height << ' ' << size;
            }
        }
    }
}
