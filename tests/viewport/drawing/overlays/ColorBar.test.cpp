#include "viewport/drawing/overlays/ColorBar.h"

#include "viewport/drawing/overlays/Background.h"

#include "tests/viewport/drawing/overlays/key_pictures.h"

#include <gmock/gmock.h>

#include <array>
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

// == Letters and ticks ==

namespace {

constexpr PictureSize SIZE{1280, 720};
Color4<float> const INK = Background{}.ink();

struct Drawn {
    Picture picture;
    PixelArea area;    // of the range
    PixelArea beside;  // to the right of it
};

Drawn drawn(ValueScale const& scale, std::string const& map = {}) {
    ColorBar const shown(scale, ValueColors(RampColors{}, map), SIZE);
    EXPECT_TRUE(shown.isShown());
    Drawn result{blank(SIZE), shown.area(), {}};
    shown.draw(result.picture, INK);
    int const left = result.area.left + result.area.width + 1;
    result.beside = {left, 0, SIZE.width - left, SIZE.height};
    return result;
}

TextMask written(std::string const& text) {
    return TextWriter().write(text, KeySizes(SIZE).text);
}

}  // namespace

TEST(ColorBar, eachTickAndItsWholeTextStandAtTheValue) {
    Drawn const shown = drawn(scale(-1, 1));
    for (ColorBar::Mark const& mark : ColorBar::marksOf(scale(-1, 1), 0.07)) {
        int const row =
            shown.area.top + static_cast<int>(std::lround((1 - mark.value) / 2 * shown.area.height));
        unsigned char const* const tick = pixelOf(shown.picture, shown.beside.left + 2, row);
        EXPECT_GT(tick[0], 160) << mark.text;
        EXPECT_TRUE(isBlank(shown.picture, shown.beside.left + 2, row - 3)) << "a tick is thin";
        int const height = KeySizes(SIZE).text;
        PixelArea const band{shown.beside.left, row - height / 2 - 1, shown.beside.width, height + 2};
        std::optional<PixelArea> const text = findText(shown.picture, INK, written(mark.text), band);
        ASSERT_TRUE(text) << mark.text;
        EXPECT_GT(text->left, shown.beside.left + 4) << "behind the tick";
    }
}

TEST(ColorBar, itsTitleStandsOverItWithTheUnit) {
    ValueScale values = scale(0, 1);
    values.unit = "m/s";
    Drawn const shown = drawn(values);
    PixelArea const above{shown.area.left - 4, 0, SIZE.width, shown.area.top};
    EXPECT_TRUE(findText(shown.picture, INK, written("speed [m/s]"), above));
}

TEST(ColorBar, aLongTitleKeepsBothEnds) {
    ValueScale values = scale(0, 1);
    values.name = "the potential energy of all neighbors per atom";
    Drawn const shown = drawn(values);
    KeySizes const sizes(SIZE);
    int const widest = bar(values, SIZE).reservedWidth() - 2 * sizes.margin;
    std::string const title = TextWriter().shortened(values.name, sizes.text, widest);
    EXPECT_LT(title.size(), values.name.size());
    EXPECT_EQ(title.substr(0, 3), "the");
    EXPECT_EQ(title.substr(title.size() - 4), "atom");
    PixelArea const above{shown.area.left - 4, 0, SIZE.width, shown.area.top};
    EXPECT_TRUE(findText(shown.picture, INK, written(title), above));
}

TEST(ColorBar, piecesOfTheirOwnSayWhatTheyAreAndHowMany) {
    ValueScale values = scale(0, 1);
    values.isExceeded = true;
    values.undefinedCount = 1234;
    Drawn shown = drawn(values);
    PixelArea const above{shown.beside.left, 0, shown.beside.width, shown.area.top};
    int const bottom = shown.area.top + shown.area.height;
    PixelArea const below{shown.beside.left, bottom, shown.beside.width, SIZE.height - bottom};
    EXPECT_TRUE(findText(shown.picture, INK, written("above"), above));
    std::optional<PixelArea> const word = findText(shown.picture, INK, written("no value"), below);
    std::optional<PixelArea> const count = findText(shown.picture, INK, written("1234"), below);
    ASSERT_TRUE(word && count);
    EXPECT_GE(count->top, word->top + word->height) << "one line under the other";
    values.isLogarithmic = true;
    values.range = {1, 10};
    shown = drawn(values);
    EXPECT_TRUE(findText(shown.picture, INK, written("undefined"), below));
}

TEST(ColorBar, everyMapRunsFromItsFirstColorAtTheBottomToItsLastAtTheTop) {
    for (std::string const& name : toolkit::ColorMap::names()) {
        Drawn const shown = drawn(scale(2, 5), name);
        toolkit::ColorMap const map = toolkit::ColorMap::named(name);
        ASSERT_GE(map.colors.size(), 2U);
        int const x = shown.area.left + shown.area.width / 2;
        auto const partsAt = [&](int y) {
            unsigned char const* const pixel = pixelOf(shown.picture, x, y);
            return std::array<int, 3>{pixel[0], pixel[1], pixel[2]};
        };
        struct Row {
            int y;
            Color4<float> color;
        };
        for (Row const& row : {Row{shown.area.top + shown.area.height - 1, map.colors.front()},
                               Row{shown.area.top + shown.area.height / 2, map.at(0.5)},
                               Row{shown.area.top, map.colors.back()}}) {
            std::array<int, 3> const found = partsAt(row.y);
            EXPECT_NEAR(found[0], 255 * row.color.r, 5) << name << " at " << row.y;
            EXPECT_NEAR(found[1], 255 * row.color.g, 5) << name << " at " << row.y;
            EXPECT_NEAR(found[2], 255 * row.color.b, 5) << name << " at " << row.y;
        }
    }
}

TEST(ColorBar, nothingIsCutOffAtTheBorders) {
    ValueScale values = scale(-1e-7, 1e300);
    values.name = "a name that is rather long";
    values.unit = "kcal/mol";
    values.isExceeded = true;
    values.undefinedCount = 1'000'000'000;
    for (PictureSize const size : {PictureSize{400, 225}, PictureSize{640, 480}, PictureSize{1280, 720},
                                   PictureSize{480, 854}, PictureSize{1920, 400}}) {
        ColorBar const shown = bar(values, size);
        ASSERT_TRUE(shown.isShown()) << size.width;
        Picture picture = blank(size);
        shown.draw(picture, INK);
        EXPECT_TRUE(isBorderBlank(picture)) << size.width << " x " << size.height;
        EXPECT_GE(touchedColumns(picture).first, size.width - shown.reservedWidth());
    }
}
