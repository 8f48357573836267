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
