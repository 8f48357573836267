#include "viewport/drawing/overlays/ColorBar.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace vellum;
using namespace vellum::viewport;
using testing::ElementsAre;

namespace {

std::vector<std::string> textsOf(ValueRange const& range) {
    std::vector<std::string> texts;
    for (ColorBar::Mark const& mark : ColorBar::marksOf(range, 0.07)) {
        texts.push_back(mark.text);
    }
    return texts;
}

ParticleScale scale(double const& low, double const& high, bool const& isExceeded = false) {
    ParticleScale result;
    result.name = "speed";
    result.range = {low, high};
    result.isExceeded = isExceeded;
    return result;
}

struct Cell {
    float x;
    float y;
    float magnitude;
};

std::vector<Cell> cellsOf(ColorBar const& bar) {
    std::vector<Cell> cells;
    auto const system = bar.cells();
    for (ParticleSystemChunk_v2 const* chunk = system->firstChunk(); chunk != nullptr;
         chunk = chunk->next()) {
        for (unsigned int i = 0; i < chunk->count(); ++i) {
            Vector3<float> const& p = chunk->channelData(0)->asVectors()[i];
            cells.push_back({p.x, p.y, chunk->channelData(1)->asVectors()[i].x});
        }
    }
    return cells;
}

}  // namespace

TEST(ColorBar, marksAreTheEndsAndRoundNumbers) {
    EXPECT_THAT(textsOf({0, 10}), ElementsAre("0", "2", "4", "6", "8", "10"));
    EXPECT_THAT(textsOf({0.0557, 7.007}), ElementsAre("0.0557", "2", "4", "6", "7.01"));
    EXPECT_THAT(textsOf({-1, 1}), ElementsAre("-1", "-0.5", "0", "0.5", "1"));
    EXPECT_THAT(textsOf({1000000, 1000001}),
                ElementsAre("1000000", "1000000.2", "1000000.4", "1000000.6", "1000000.8", "1000001"));
    EXPECT_THAT(textsOf({2e-9, 3e-9}),
                ElementsAre("2e-09", "2.2e-09", "2.4e-09", "2.6e-09", "2.8e-09", "3e-09"));
}

TEST(ColorBar, marksTooNearToAnEndAreLeftOut) {
    EXPECT_THAT(textsOf({0.01, 10.05}), ElementsAre("0.01", "2", "4", "6", "8", "10.1"));
    EXPECT_THAT(textsOf({1.9, 10}), ElementsAre("1.9", "4", "6", "8", "10"));
}

TEST(ColorBar, rangesWithoutExtentOrBeyondMeasureHaveMarks) {
    EXPECT_THAT(textsOf({7, 7}), ElementsAre("7"));
    EXPECT_THAT(textsOf({-1.7e308, 1.7e308}).size(), testing::Ge(2U));
    double const next = std::nextafter(1e300, 2e300);
    EXPECT_THAT(textsOf({1e300, next}).size(), testing::AllOf(testing::Ge(2U), testing::Le(12U)));
}

TEST(ColorBar, cellsFillARectangleWithTheValuesOfTheRange) {
    ColorBar const bar(scale(-4, 12), {1280, 720});
    ASSERT_TRUE(bar.isShown());
    EXPECT_EQ(bar.cellSize(), 1);
    std::vector<Cell> const cells = cellsOf(bar);
    ASSERT_EQ(cells.size(), 18U * 360U);
    float const span = bar.scale().highMagnitude() - bar.scale().lowMagnitude();
    for (Cell const& cell : cells) {
        EXPECT_GT(cell.x, 1280 - bar.reservedWidth());
        EXPECT_LT(cell.x, 1280);
        EXPECT_EQ(cell.x - std::floor(cell.x), 0.5F) << "in the middle of a pixel";
        EXPECT_NEAR((cell.magnitude - bar.scale().lowMagnitude()) / span, (cell.y - 180) / 360, 1e-4);
        EXPECT_GE(cell.magnitude, 0) << "renderers see lengths only";
    }
}

TEST(ColorBar, whatIsAboveTheRangeHasAPieceOfItsOwn) {
    ColorBar const bar(scale(0, 1, true), {1280, 720});
    std::size_t above = 0;
    for (Cell const& cell : cellsOf(bar)) {
        if (cell.y > 540) {
            ++above;
            EXPECT_GT(cell.magnitude, 1.1F);
        }
    }
    EXPECT_EQ(above, 18U * 18U);
}

TEST(ColorBar, itGrowsWithThePictureAndIsLeftOutOfSmallOnes) {
    EXPECT_EQ(ColorBar(scale(0, 1), {3840, 2160}).cellSize(), 3);
    EXPECT_GT(ColorBar(scale(0, 1), {3840, 2160}).reservedWidth(),
              2 * ColorBar(scale(0, 1), {1280, 720}).reservedWidth());
    ColorBar const small(scale(0, 1), {64, 48});
    EXPECT_FALSE(small.isShown());
    EXPECT_EQ(small.reservedWidth(), 0);
    EXPECT_FALSE(ColorBar(scale(0, 1), {1, 1}).isShown());
    ParticleScale named = scale(0, 1);
    named.name = std::string(200, 'x');
    EXPECT_FALSE(ColorBar(named, {1280, 720}).isShown());
}

TEST(ColorBar, labelsAreWrittenBesideTheBarAndNowhereElse) {
    for (bool const isExceeded : {false, true}) {
        ColorBar const bar(scale(0, 1, isExceeded), {640, 480});
        Picture picture;
        picture.width = 640;
        picture.height = 480;
        picture.pixels.assign(std::size_t{4} * 640 * 480, 10);
        bar.drawLabels(picture);
        int touched = 0;
        for (int y = 0; y < 480; ++y) {
            for (int x = 0; x < 640; ++x) {
                bool const isTouched = picture.pixels[std::size_t(4 * (y * 640 + x))] != 10;
                touched += isTouched ? 1 : 0;
                EXPECT_TRUE(!isTouched || x > 640 - bar.reservedWidth()) << x << ", " << y;
            }
        }
        EXPECT_GT(touched, 500);
        for (Cell const& cell : cellsOf(bar)) {
            auto const pixel = static_cast<std::size_t>(
                4 * ((479 - static_cast<int>(cell.y)) * 640 + static_cast<int>(cell.x)));
            EXPECT_EQ(picture.pixels[pixel], 10) << "a label covers the bar";
        }
    }
}
