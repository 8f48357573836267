#include "viewport/drawing/overlays/ColorBar.h"

#include "viewport/drawing/overlays/Background.h"

#include "tests/viewport/drawing/overlays/key_pictures.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace vellum;
using namespace vellum::viewport;
using namespace vellum::viewport::key_pictures;
using testing::ElementsAre;

namespace {

ValueScale scale(double low, double high) {
    ValueScale result;
    result.name = "speed";
    result.range = {low, high};
    return result;
}

ValueScale whole(double low, double high) {
    ValueScale result = scale(low, high);
    result.isWhole = true;
    return result;
}

ValueScale logarithmic(double low, double high) {
    ValueScale result = scale(low, high);
    result.isLogarithmic = true;
    return result;
}

std::vector<std::string> textsOf(ValueScale const& scale) {
    std::vector<std::string> texts;
    for (ColorBar::Mark const& mark : ColorBar::marksOf(scale, 0.07)) {
        texts.push_back(mark.text);
    }
    return texts;
}

ColorBar bar(ValueScale const& scale, PictureSize const& size = {640, 480}) {
    return {scale, ValueColors(), size};
}

}  // namespace

// == Marks ==

TEST(ColorBar, marksAreTheEndsAndRoundNumbers) {
    EXPECT_THAT(textsOf(scale(0, 10)), ElementsAre("0", "2", "4", "6", "8", "10"));
    EXPECT_THAT(textsOf(scale(0.0557, 7.007)), ElementsAre("0.0557", "2", "4", "6", "7.01"));
    EXPECT_THAT(textsOf(scale(-1, 1)), ElementsAre("-1", "-0.5", "0", "0.5", "1"));
    EXPECT_THAT(textsOf(scale(1000000, 1000001)),
                ElementsAre("1000000", "1000000.2", "1000000.4", "1000000.6", "1000000.8", "1000001"));
    EXPECT_THAT(textsOf(scale(2e-9, 3e-9)),
                ElementsAre("2e-09", "2.2e-09", "2.4e-09", "2.6e-09", "2.8e-09", "3e-09"));
}

TEST(ColorBar, marksBelowAMillionHaveNoExponent) {
    EXPECT_THAT(textsOf(scale(1.234, 9962.4)), ElementsAre("1.23", "2000", "4000", "6000", "8000", "9962"));
    EXPECT_THAT(textsOf(scale(0, 4e6)), ElementsAre("0", "1e+06", "2e+06", "3e+06", "4e+06"));
}

TEST(ColorBar, marksTooNearToAnEndAreLeftOut) {
    EXPECT_THAT(textsOf(scale(0.01, 10.05)), ElementsAre("0.01", "2", "4", "6", "8", "10.1"));
    EXPECT_THAT(textsOf(scale(1.9, 10)), ElementsAre("1.9", "4", "6", "8", "10"));
}

TEST(ColorBar, rangesWithoutExtentOrBeyondMeasureHaveMarks) {
    EXPECT_THAT(textsOf(scale(7, 7)), ElementsAre("7"));
    EXPECT_THAT(textsOf(scale(-1.7e308, 1.7e308)).size(), testing::Ge(2U));
    double const next = std::nextafter(1e300, 2e300);
    EXPECT_THAT(textsOf(scale(1e300, next)).size(), testing::AllOf(testing::Ge(2U), testing::Le(12U)));
    EXPECT_THAT(textsOf(whole(1e300, next)).size(), testing::AllOf(testing::Ge(2U), testing::Le(12U)));
}

TEST(ColorBar, wholeValuesHaveWholeMarks) {
    EXPECT_THAT(textsOf(whole(1, 3)), ElementsAre("1", "2", "3"));
    EXPECT_THAT(textsOf(whole(0, 1)), ElementsAre("0", "1"));
    EXPECT_THAT(textsOf(whole(1, 1234567)), ElementsAre("1", "500000", "1000000", "1234567"));
    EXPECT_THAT(textsOf(whole(0.5, 3)), ElementsAre("0.5", "1", "2", "3")) << "a range that was asked for";
}

TEST(ColorBar, logarithmsHaveMarksAtPowersOfTen) {
    EXPECT_THAT(textsOf(logarithmic(1, 10000)), ElementsAre("1", "10", "100", "1000", "10000"));
    EXPECT_THAT(textsOf(logarithmic(0.003, 40)), ElementsAre("0.003", "0.01", "0.1", "1", "10", "40"));
    EXPECT_THAT(textsOf(logarithmic(1, 30)), ElementsAre("1", "2", "5", "10", "20", "30"));
    EXPECT_THAT(textsOf(logarithmic(1e-200, 1e200)).size(),
                testing::AllOf(testing::Ge(6U), testing::Le(12U)));
    EXPECT_THAT(textsOf(logarithmic(3, 3)), ElementsAre("3"));
    EXPECT_THAT(textsOf(logarithmic(3, 3.5)), ElementsAre("3", "3.5"));
}

// == Colors ==

TEST(ColorBar, itShowsTheColorsOfItsRange) {
    for (char const* const map : {"", "viridis"}) {
        ValueColors const colors(RampColors{}, map);
        ValueScale const values = scale(-4, 12);
        ColorBar const shown(values, colors, {640, 480});
        ASSERT_TRUE(shown.isShown());
        Picture picture = blank({640, 480});
        shown.draw(picture, Background{}.ink());
        PixelArea const area = shown.area();
        EXPECT_EQ(area.height, 240);
        for (int row = 0; row < area.height; ++row) {
            double const place = (area.height - row - 0.5) / area.height;
            for (int const x : {area.left, area.left + area.width - 1}) {
                expectColor(picture, x, area.top + row, colors.at(place));
            }
        }
    }
}

TEST(ColorBar, whatIsAboveTheRangeAndWhatIsUndefinedHavePiecesOfTheirOwn) {
    ValueScale values = scale(0, 1);
    values.isExceeded = true;
    values.undefinedCount = 12;
    ColorBar const shown = bar(values);
    Picture picture = blank({640, 480});
    shown.draw(picture, Background{}.ink());
    PixelArea const area = shown.area();
    int const x = area.left + area.width / 2;
    expectColor(picture, x, area.top - 16, RampColors().above);
    expectColor(picture, x, area.top + area.height + 16, ValueColors().undefined());
    Picture plain = blank({640, 480});
    ValueScale nameless = scale(0, 1);
    nameless.name.clear();
    bar(nameless).draw(plain, Background{}.ink());
    EXPECT_TRUE(isBlank(plain, x, area.top - 16));
    EXPECT_TRUE(isBlank(plain, x, area.top + area.height + 16));
}

// == Place ==

TEST(ColorBar, itKeepsItsPlaceWhateverItsName) {
    ValueScale named = scale(0, 1);
    int const left = bar(named).area().left;
    int const reserved = bar(named).reservedWidth();
    for (std::string const& name :
         {std::string(), std::string(200, 'x'), std::string("the potential energy")}) {
        named.name = name;
        named.unit = name;
        EXPECT_EQ(bar(named).area().left, left) << name;
        EXPECT_EQ(bar(named).reservedWidth(), reserved) << name;
    }
}

TEST(ColorBar, itGrowsWithThePictureAndIsLeftOutOfSmallOnes) {
    EXPECT_GT(bar(scale(0, 1), {3840, 2160}).reservedWidth(),
              2 * bar(scale(0, 1), {1280, 720}).reservedWidth());
    for (PictureSize const size : {PictureSize{64, 48}, PictureSize{1, 1}}) {
        ColorBar const small = bar(scale(0, 1), size);
        EXPECT_FALSE(small.isShown());
        EXPECT_EQ(small.reservedWidth(), 0);
        Picture picture = blank(size);
        small.draw(picture, Background{}.ink());
        EXPECT_TRUE(isBlank(picture, 0, 0));
    }
    EXPECT_TRUE(bar(scale(0, 1), {320, 180}).isShown());
}

TEST(ColorBar, itStaysAtTheRight) {
    for (std::string const& unit : {std::string(), std::string("m/s"), std::string(90, 'u')}) {
        for (bool const hasPieces : {false, true}) {
            ValueScale values = scale(0, 1);
            values.name = "a name that is rather long";
            values.unit = unit;
            values.isExceeded = hasPieces;
            values.undefinedCount = hasPieces ? 123456789 : 0;
            ColorBar const shown = bar(values);
            Picture picture = blank({640, 480});
            shown.draw(picture, Background{}.ink());
            EXPECT_GT(touchedColumns(picture).first, 640 - shown.reservedWidth());
            EXPECT_LT(touchedColumns(picture).second, 639);
        }
    }
}
