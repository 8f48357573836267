#include "viewport/scene/ValueScale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace vellum;
using namespace vellum::viewport;

namespace {

constexpr double infiniteBound = std::numeric_limits<double>::infinity();

ValueScale scale(double low, double high, bool isLogarithmic = false) {
    ValueScale result;
    result.range = {low, high};
    result.isLogarithmic = isLogarithmic;
    return result;
}

}  // namespace

TEST(ValueScale, valuesHaveAPlace) {
    EXPECT_EQ(scale(2, 4).place(2), 0);
    EXPECT_EQ(scale(2, 4).place(4), 1);
    EXPECT_EQ(scale(2, 4).place(3.5), 0.75);
    EXPECT_EQ(scale(2, 4).place(0), -1);
    EXPECT_EQ(scale(2, 4).place(infiniteBound), infiniteBound);
    EXPECT_EQ(scale(2, 4).place(-infiniteBound), -infiniteBound);
    EXPECT_TRUE(std::isnan(scale(2, 4).place(std::nan(""))));
    EXPECT_EQ(scale(-1.7e308, 1.7e308).place(0), 0.5);
    EXPECT_EQ(scale(7, 7).place(7), 0);
    EXPECT_LT(scale(7, 7).place(6), 0);
    EXPECT_GT(scale(7, 7).place(8), 1);
}

TEST(ValueScale, logarithmsHaveAPlace) {
    ValueScale const decades = scale(0.01, 100, true);
    EXPECT_DOUBLE_EQ(decades.place(1), 0.5);
    EXPECT_DOUBLE_EQ(decades.place(1e4), 1.5);
    EXPECT_EQ(decades.place(100), 1) << "not above the range";
    for (double const value : {0.0, -1.0, -infiniteBound, std::nan("")}) {
        EXPECT_FALSE(decades.isDefined(value)) << value;
        EXPECT_TRUE(std::isnan(decades.place(value))) << value;
    }
    EXPECT_DOUBLE_EQ(decades.valueAt(0.25), 0.1);
    EXPECT_DOUBLE_EQ(scale(2, 4).valueAt(0.25), 2.5);
}

TEST(ValueScale, theTitleNamesTheUnit) {
    ValueScale result = scale(0, 1);
    result.name = "T";
    EXPECT_EQ(result.title(), "T");
    result.unit = "K";
    EXPECT_EQ(result.title(), "T [K]");
}

TEST(ValueScale, aRampGoesOnBelowItsRangeAndAMapDoesNot) {
    RampColors const ramp{{0.4F, 0.5F, 0.5F, 1}, {0.6F, 1, 0, 1}, {0, 0, 1, 1}};
    ValueColors const colors(ramp, "");
    EXPECT_EQ(colors.at(0), ramp.low);
    EXPECT_EQ(colors.at(1), ramp.high);
    EXPECT_EQ(colors.at(1.001), ramp.above);
    EXPECT_EQ(colors.at(infiniteBound), ramp.above);
    EXPECT_NEAR(colors.at(-1).r, 0.2, 1e-6);
    EXPECT_NEAR(colors.at(-1).b, 1, 1e-6);
    EXPECT_EQ(colors.at(-infiniteBound).r, 0) << "within what colors can be";
    EXPECT_EQ(colors.at(std::nan("")), colors.undefined());

    ValueColors const map(ramp, "viridis");
    EXPECT_EQ(map.at(-1), map.at(0));
    EXPECT_EQ(map.at(0), toolkit::ColorMap::named("viridis").colors.front());
}
