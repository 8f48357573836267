#include "viewport/drawing/overlays/SizeBox.h"
#include "viewport/drawing/overlays/checkers.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace vellum;
using namespace vellum::viewport;

namespace {

constexpr int TEXT = 10;

int widthOf(std::string const& text) {
    return 6 * static_cast<int>(text.size());
}

/// A square of 200 pixels that shows -1 to 1 along two axes of the world, seen from +z.
toolkit::View frontView() {
    toolkit::View view;
    view.projection = Matrix4<double>{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -0.1, 0, 0, 0, 0, 1}};
    view.modelView = Matrix4<double>{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
    view.viewport = {0, 0, 200, 200};
    return view;
}

std::vector<std::string> textsOf(std::vector<SizeBox::Label> const& labels) {
    std::vector<std::string> texts;
    for (SizeBox::Label const& label : labels) {
        texts.push_back(label.text);
    }
    return texts;
}

}  // namespace

TEST(SizeBox, lengthsStandBesideTheEdgesThatAreSeen) {
    SizeBox const box({{-0.5, -0.5, -0.5}, {0.5, 0.5, 0.5}}, {12, 7.25, 3});
    std::vector<SizeBox::Label> const labels = box.labels(frontView(), TEXT, widthOf);
    // The edges along z point at the viewer.
    ASSERT_THAT(textsOf(labels), testing::ElementsAre("12", "7.25"));
    EXPECT_NEAR(labels[0].x, 100, 1e-9);
    EXPECT_GT(labels[0].y, 150 + TEXT / 2.0) << "below the lower edge, and not over it";
    EXPECT_LT(labels[0].y, 150 + 2 * TEXT);
    EXPECT_NEAR(labels[1].y, 100, 1e-9);
    double const away = std::abs(labels[1].x - 100);
    EXPECT_GT(away, 50 + widthOf("7.25") / 2.0) << "beside the left or the right edge";
    EXPECT_LT(away, 50 + widthOf("7.25") + TEXT);
}

TEST(SizeBox, edgesThatCannotBeLabeledHaveNoNumber) {
    SizeBox const flat({{-0.5, -0.5, 0}, {0.5, -0.5, 0}}, {12, 0, 0});
    EXPECT_THAT(textsOf(flat.labels(frontView(), TEXT, widthOf)), testing::ElementsAre("12"));
    SizeBox const tiny({{-0.05, -0.5, 0}, {0.05, 0.5, 0}}, {1, 10, 0});
    EXPECT_THAT(textsOf(tiny.labels(frontView(), TEXT, widthOf)), testing::ElementsAre("10"))
        << "10 pixels are too few for a number";
    toolkit::View behind = frontView();
    behind.projection = Matrix4<double>{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, -1, 0, 0, -1, 0}};
    SizeBox const near({{-0.5, -0.5, 1}, {0.5, 0.5, 2}}, {1, 1, 1});
    EXPECT_THAT(near.labels(behind, TEXT, widthOf), testing::IsEmpty());
}

TEST(layOverCheckers, showsSquaresWhereNothingIsDrawn) {
    Picture picture;
    picture.width = 64;
    picture.height = 64;
    picture.pixels.assign(std::size_t(4) * 64 * 64, 0);
    // One opaque pixel and a half transparent one at the top.
    picture.pixels[3] = 255;
    picture.pixels[7] = 128;
    layOverCheckers(picture);
    int const side = Checkers::side({64, 64});
    auto const redAt = [&](int x, int fromBottom) {
        return static_cast<int>(picture.pixels[static_cast<std::size_t>(4 * ((63 - fromBottom) * 64 + x))]);
    };
    int const light = static_cast<int>(std::lround(Checkers::LIGHT.r * 255));
    int const dark = static_cast<int>(std::lround(Checkers::DARK.r * 255));
    EXPECT_EQ(redAt(0, 0), light);
    EXPECT_EQ(redAt(side - 1, side - 1), light);
    EXPECT_EQ(redAt(side, 0), dark);
    EXPECT_EQ(redAt(0, side), dark);
    EXPECT_EQ(redAt(side, side), light);
    EXPECT_EQ(redAt(0, 63), 0) << "what is opaque stays";
    EXPECT_NEAR(redAt(1, 63), (Checkers::isDark(0, 63 / side) ? dark : light) / 2, 1);
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4) {
        ASSERT_EQ(picture.pixels[i], 255);
    }
}
