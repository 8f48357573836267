#include "toolkit/ColorMap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

constexpr Color4<float> blue{0, 0, 1, 1};
constexpr Color4<float> red{1, 0, 0, 1};
constexpr Color4<float> green{0, 1, 0, 1};
constexpr Color4<float> white{1, 1, 1, 1};

void expectNear(Color4<float> const& actual, Color4<float> const& expected, double const& tolerance = 1e-6) {
    EXPECT_NEAR(actual.r, expected.r, tolerance);
    EXPECT_NEAR(actual.g, expected.g, tolerance);
    EXPECT_NEAR(actual.b, expected.b, tolerance);
    EXPECT_EQ(actual.a, 1);
}

Color4<float> hexadecimal(unsigned int rgb) {
    return {static_cast<float>(rgb >> 16 & 255U) / 255, static_cast<float>(rgb >> 8 & 255U) / 255,
            static_cast<float>(rgb & 255U) / 255, 1};
}

double brightness(Color4<float> const& c) {
    return 0.2126 * std::pow(static_cast<double>(c.r), 2.2) +
           0.7152 * std::pow(static_cast<double>(c.g), 2.2) +
           0.0722 * std::pow(static_cast<double>(c.b), 2.2);
}

}  // namespace

TEST(ColorMap, colorsAreEvenlySpacedAndBlended) {
    ColorMap const map{{blue, red, green}, white};
    expectNear(map.at(0), blue);
    expectNear(map.at(0.25), {0.5F, 0, 0.5F, 1});
    expectNear(map.at(0.5), red);
    expectNear(map.at(0.9), {0.2F, 0.8F, 0, 1});
    expectNear(map.at(1), green);
}

TEST(ColorMap, valuesOutsideTheRangeHaveTheColorsOfItsEnds) {
    ColorMap const map{{blue, red, green}, white};
    double const infinity = std::numeric_limits<double>::infinity();
    expectNear(map.at(-0.001), blue);
    expectNear(map.at(-infinity), blue);
    expectNear(map.at(1.001), white);
    expectNear(map.at(infinity), white);
    expectNear(map.at(std::nan("")), white);
}

TEST(ColorMap, oneColorAndNoneAreMapsToo) {
    ColorMap const one{{red}, white};
    expectNear(one.at(0), red);
    expectNear(one.at(0.7), red);
    expectNear(one.at(1), red);
    expectNear(one.at(1.5), white);
    expectNear(ColorMap{{}, green}.at(0.5), green);
}

TEST(ColorMap, opacityIsIgnored) {
    EXPECT_EQ((ColorMap{{{1, 0, 0, 0.25F}}, white}.at(0).a), 1);
}

TEST(ColorMap, mapsWithEqualColorsAreEqual) {
    ColorMap const map{{blue, red}, white};
    EXPECT_TRUE(map == (ColorMap{{blue, red}, white}));
    EXPECT_TRUE(map != (ColorMap{{blue, green}, white}));
    EXPECT_TRUE(map != (ColorMap{{blue, red}, green}));
    EXPECT_TRUE(map != (ColorMap{{blue}, white}));
}

TEST(ColorMap, namedMapsHaveTheirPublishedColors) {
    struct Row {
        char const* name;
        double t;
        unsigned int rgb;
    };
    // Of the tables of 256 colors that the authors of the maps have published.
    for (Row const& row : {Row{"viridis", 0, 0x440154},
                           {"viridis", 64 / 255.0, 0x3B528B},
                           {"viridis", 128 / 255.0, 0x21918C},
                           {"viridis", 191 / 255.0, 0x5CC863},
                           {"viridis", 1, 0xFDE725},
                           {"plasma", 0, 0x0D0887},
                           {"plasma", 64 / 255.0, 0x7E03A8},
                           {"plasma", 128 / 255.0, 0xCC4778},
                           {"plasma", 192 / 255.0, 0xF89540},
                           {"plasma", 1, 0xF0F921},
                           {"magma", 0, 0x000004},
                           {"magma", 64 / 255.0, 0x51127C},
                           {"magma", 128 / 255.0, 0xB73779},
                           {"magma", 191 / 255.0, 0xFC8961},
                           {"magma", 1, 0xFCFDBF},
                           {"turbo", 0, 0x30123B},
                           {"turbo", 32 / 255.0, 0x466BE3},
                           {"turbo", 64 / 255.0, 0x28BCEB},
                           {"turbo", 128 / 255.0, 0xA4FC3C},
                           {"turbo", 192 / 255.0, 0xFB7E21},
                           {"turbo", 1, 0x7A0403},
                           {"coolwarm", 0, 0x3B4CC0},
                           {"coolwarm", 0.5, 0xDDDDDD},
                           {"coolwarm", 1, 0xB40426},
                           {"gray", 0, 0x000000},
                           {"gray", 1, 0xFFFFFF}}) {
        SCOPED_TRACE(std::string(row.name) + " at " + std::to_string(row.t));
        expectNear(ColorMap::named(row.name).at(row.t), hexadecimal(row.rgb), 4.5 / 255);
    }
}

TEST(ColorMap, sequentialMapsGrowBrighter) {
    for (char const* const name : {"viridis", "plasma", "magma", "gray"}) {
        ColorMap const map = ColorMap::named(name);
        for (int i = 1; i <= 100; ++i) {
            EXPECT_GT(brightness(map.at(i / 100.0)), brightness(map.at((i - 1) / 100.0))) << name << " " << i;
        }
    }
}

TEST(ColorMap, neighboringColorsOfNamedMapsAreClose) {
    for (std::string const& name : ColorMap::names()) {
        ColorMap const map = ColorMap::named(name);
        for (int i = 1; i <= 255; ++i) {
            Color4<float> const a = map.at((i - 1) / 255.0);
            Color4<float> const b = map.at(i / 255.0);
            EXPECT_LT(std::abs(a.r - b.r) + std::abs(a.g - b.g) + std::abs(a.b - b.b), 12.0F / 255)
                << name << " " << i;
        }
    }
}

TEST(ColorMap, namesListsAllMapsInTheirOrder) {
    EXPECT_EQ(ColorMap::names(),
              (std::vector<std::string>{"viridis", "plasma", "magma", "turbo", "coolwarm", "gray"}));
    for (std::string const& name : ColorMap::names()) {
        EXPECT_GE(ColorMap::named(name).colors.size(), 2U) << name;
    }
}

TEST(ColorMap, unknownNameGivesViridis) {
    EXPECT_TRUE(ColorMap::named("Jet!") == ColorMap::named("viridis"));
    EXPECT_TRUE(ColorMap::named("") == ColorMap::named("viridis"));
    EXPECT_TRUE(ColorMap::named("plasma") != ColorMap::named("viridis"));
}

TEST(ColorMap, aboveNamedMapsIsWhiteAndAboveGrayRed) {
    for (std::string const& name : ColorMap::names()) {
        expectNear(ColorMap::named(name).above, name == "gray" ? red : white);
    }
}
