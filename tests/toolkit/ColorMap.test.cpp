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

/// The lightness of CIELAB, 0 to 100.
double lightness(Color4<float> const& c) {
    auto const linear = [](float v) {
        auto const x = static_cast<double>(v);
        return x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
    };
    double const y = 0.2126729 * linear(c.r) + 0.7151522 * linear(c.g) + 0.0721750 * linear(c.b);
    return y > 216.0 / 24389 ? 116 * std::cbrt(y) - 16 : y * 24389 / 27;
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
    expectNear(map.at(std::nan("")), {0.5F, 0.5F, 0.5F, 1});
}

TEST(ColorMap, undefinedValuesHaveAColorOfTheirOwn) {
    ColorMap map{{blue, red}, white, green};
    expectNear(map.at(std::nan("")), green);
    map.colors.clear();
    expectNear(map.at(std::nan("")), green);
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
    EXPECT_TRUE(map != (ColorMap{{blue, red}, white, green}));
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
                           {"inferno", 0, 0x000004},
                           {"inferno", 64 / 255.0, 0x57106E},
                           {"inferno", 128 / 255.0, 0xBC3754},
                           {"inferno", 191 / 255.0, 0xF98C0A},
                           {"inferno", 1, 0xFCFFA4},
                           {"cividis", 0, 0x00224E},
                           {"cividis", 64 / 255.0, 0x434E6C},
                           {"cividis", 128 / 255.0, 0x7D7C78},
                           {"cividis", 191 / 255.0, 0xBBAD6D},
                           {"cividis", 1, 0xFEE838},
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

TEST(ColorMap, sequentialMapsGrowLighterEverywhere) {
    for (char const* const name :
         {"viridis", "plasma", "magma", "inferno", "cividis", "glacier", "ember", "moss", "gray"}) {
        ColorMap const map = ColorMap::named(name);
        for (int i = 1; i <= 100; ++i) {
            EXPECT_GT(lightness(map.at(i / 100.0)), lightness(map.at((i - 1) / 100.0))) << name << " " << i;
        }
        EXPECT_GT(lightness(map.at(1)) - lightness(map.at(0)), 70) << name;
    }
}

TEST(ColorMap, sequentialMapsGrowLighterInEvenSteps) {
    for (char const* const name : {"glacier", "ember", "moss"}) {
        ColorMap const map = ColorMap::named(name);
        double const first = lightness(map.at(0));
        double const last = lightness(map.at(1));
        for (int i = 0; i <= 100; ++i) {
            EXPECT_NEAR(lightness(map.at(i / 100.0)), first + (last - first) * i / 100, 1.5)
                << name << " " << i;
        }
    }
}

TEST(ColorMap, divergingMapsAreAsLightOnBothSides) {
    for (char const* const name : {"coolwarm", "tealrust"}) {
        ColorMap const map = ColorMap::named(name);
        for (int i = 1; i <= 50; ++i) {
            double const below = lightness(map.at(0.5 - i / 100.0));
            double const above = lightness(map.at(0.5 + i / 100.0));
            EXPECT_NEAR(below, above, 4) << name << " " << i;
            EXPECT_LT(below, lightness(map.at(0.5 - (i - 1) / 100.0))) << name << " " << i;
            EXPECT_LT(above, lightness(map.at(0.5 + (i - 1) / 100.0))) << name << " " << i;
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
              (std::vector<std::string>{"viridis", "plasma", "magma", "inferno", "cividis", "glacier",
                                        "ember", "moss", "turbo", "coolwarm", "tealrust", "gray"}));
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
