#include "viewport/drawing/overlays/ColorLegend.h"

#include "viewport/drawing/overlays/Background.h"

#include "tests/viewport/drawing/overlays/key_pictures.h"
#include "viewport/drawing/overlays/ColorBar.h"

#include <gtest/gtest.h>

using namespace vellum;
using namespace vellum::viewport;
using namespace vellum::viewport::key_pictures;

namespace {

ParticleLegend legend(std::size_t count, std::string const& name = "kind") {
    ParticleLegend result;
    result.title = "type";
    for (std::size_t i = 0; i < count; ++i) {
        result.entries.push_back({name + std::to_string(i), kindColor(i), 10 * i});
    }
    return result;
}

}  // namespace

TEST(ColorLegend, everyKindHasASwatchOfItsColor) {
    ColorLegend const shown(legend(5), {640, 480});
    ASSERT_TRUE(shown.isShown());
    ASSERT_EQ(shown.listedCount(), 5U);
    Picture picture = blank({640, 480});
    shown.draw(picture, Background{}.ink());
    for (std::size_t i = 0; i < 5; ++i) {
        PixelArea const area = shown.swatch(i);
        expectColor(picture, area.left, area.top, kindColor(i));
        expectColor(picture, area.left + area.width - 1, area.top + area.height - 1, kindColor(i));
        EXPECT_TRUE(i == 0 || area.top > shown.swatch(i - 1).top + area.height);
    }
    EXPECT_GT(touchedColumns(picture).first, 640 - shown.reservedWidth());
    EXPECT_LT(touchedColumns(picture).second, 639);
}

TEST(ColorLegend, itStandsWhereABarWouldStand) {
    ColorLegend const shown(legend(3, "k"), {1280, 720});
    ColorBar const bar(ValueScale{}, ValueColors{}, {1280, 720});
    EXPECT_EQ(shown.reservedWidth(), bar.reservedWidth());
    EXPECT_EQ(shown.swatch(0).left, bar.area().left);
}

TEST(ColorLegend, moreKindsThanCanBeListedAreCounted) {
    EXPECT_EQ(ColorLegend(legend(24), {1280, 1080}).listedCount(), 24U);
    EXPECT_EQ(ColorLegend(legend(25), {1280, 1080}).listedCount(), 24U);
    EXPECT_EQ(ColorLegend(legend(10'000), {1280, 1080}).listedCount(), 24U);
    ColorLegend const low(legend(24), {640, 240});
    EXPECT_LT(low.listedCount(), 15U);
    // The line that says how many more there are stands below the last swatch.
    Picture picture = blank({640, 240});
    low.draw(picture, Background{}.ink());
    PixelArea const last = low.swatch(low.listedCount() - 1);
    int touched = 0;
    for (int y = last.top + last.height + 4; y < 240; ++y) {
        for (int x = last.left; x < 639; ++x) {
            touched += isBlank(picture, x, y) ? 0 : 1;
        }
    }
    EXPECT_GT(touched, 20);
}

TEST(ColorLegend, longNamesTakeNoMoreRoom) {
    ColorLegend const one(legend(2, std::string(60, 'w')), {640, 480});
    ColorLegend const other(legend(2, std::string(600, 'w')), {640, 480});
    EXPECT_TRUE(one.isShown());
    EXPECT_EQ(one.reservedWidth(), other.reservedWidth());
}

TEST(ColorLegend, itIsLeftOutOfSmallPicturesAndWithoutKinds) {
    EXPECT_TRUE(ColorLegend(legend(3), {320, 180}).isShown());
    for (PictureSize const size : {PictureSize{64, 48}, PictureSize{1, 1}}) {
        ColorLegend const small(legend(3), size);
        EXPECT_EQ(small.reservedWidth(), 0);
        Picture picture = blank(size);
        small.draw(picture, Background{}.ink());
        EXPECT_TRUE(isBlank(picture, 0, 0));
    }
    EXPECT_FALSE(ColorLegend(legend(0), {640, 480}).isShown());
}

// == Letters ==

namespace {

Color4<float> const LEGEND_INK = Background{}.ink();
constexpr unsigned int PALE = 165;

/// The area of the picture to the right of an entry's swatch, or to its left border.
PixelArea rowOf(ColorLegend const& legend, std::size_t entry, PictureSize const& size) {
    PixelArea const swatch = legend.swatch(entry);
    int const left = swatch.left + swatch.width + 1;
    return {left, swatch.top - 4, size.width - left, swatch.height + 8};
}

}  // namespace

TEST(ColorLegend, besideEachSwatchStandItsNameAndItsCount) {
    PictureSize const size{1280, 720};
    ColorLegend const shown(legend(3), size);
    Picture picture = blank(size);
    shown.draw(picture, LEGEND_INK);
    int const height = KeySizes(size).text;
    for (std::size_t i = 0; i < 3; ++i) {
        PixelArea const row = rowOf(shown, i, size);
        TextWriter const writer;
        std::optional<PixelArea> const name =
            findText(picture, LEGEND_INK, writer.write("kind" + std::to_string(i), height), row);
        std::optional<PixelArea> const count =
            findText(picture, LEGEND_INK, writer.write(std::to_string(10 * i), height), row, PALE);
        ASSERT_TRUE(name && count) << i;
        EXPECT_GE(count->left, name->left + name->width);
        EXPECT_LT(count->left + count->width, size.width) << "not cut off at the border";
    }
    PixelArea const above{shown.swatch(0).left - 4, 0, size.width, shown.swatch(0).top};
    EXPECT_TRUE(findText(picture, LEGEND_INK, TextWriter().write("type", height), above)) << "the title";
}

TEST(ColorLegend, longNamesKeepBothEnds) {
    PictureSize const size{1280, 720};
    ParticleLegend kinds{"type", {{"molybdenum disulfide layer 12", kindColor(0), 5}}};
    ColorLegend const shown(kinds, size);
    Picture picture = blank(size);
    shown.draw(picture, LEGEND_INK);
    int const height = KeySizes(size).text;
    PixelArea const row = rowOf(shown, 0, size);
    // Whatever is kept of the middle, the drawn name is one of the shortened ones.
    bool isFound = false;
    for (int widest = 4 * height; widest < 10 * height && !isFound; ++widest) {
        std::string const name = TextWriter().shortened(kinds.entries[0].text, height, widest);
        ASSERT_EQ(name.substr(0, 2), "mo");
        ASSERT_EQ(name.substr(name.size() - 2), "12");
        isFound = findText(picture, LEGEND_INK, TextWriter().write(name, height), row).has_value();
    }
    EXPECT_TRUE(isFound);
}

TEST(ColorLegend, theLineBelowTheListSaysHowManyMoreThereAre) {
    PictureSize const size{1280, 720};
    ColorLegend const shown(legend(40), size);
    Picture picture = blank(size);
    shown.draw(picture, LEGEND_INK);
    std::string const text = "and " + std::to_string(40 - shown.listedCount()) + " more";
    PixelArea const last = shown.swatch(shown.listedCount() - 1);
    PixelArea const below{last.left - 4, last.top + last.height, size.width, size.height};
    EXPECT_TRUE(findText(picture, LEGEND_INK, TextWriter().write(text, KeySizes(size).text), below, PALE));
}

TEST(ColorLegend, nothingIsCutOffAtTheBorders) {
    for (PictureSize const size : {PictureSize{400, 225}, PictureSize{640, 480}, PictureSize{1280, 720},
                                   PictureSize{480, 854}, PictureSize{1920, 400}}) {
        for (std::size_t const count : {1U, 7U, 24U, 1000U}) {
            ColorLegend const shown(legend(count, "a long name of a kind "), size);
            ASSERT_TRUE(shown.isShown()) << size.width;
            Picture picture = blank(size);
            shown.draw(picture, LEGEND_INK);
            EXPECT_TRUE(isBorderBlank(picture)) << size.width << " x " << size.height << ", " << count;
            EXPECT_GE(touchedColumns(picture).first, size.width - shown.reservedWidth());
        }
    }
}
