#include "viewport/drawing/ViewLayout.h"

#include "tests/viewport/drawing/overlays/key_pictures.h"
#include "viewport/drawing/overlays/ColorBar.h"
#include "viewport/drawing/overlays/ColorLegend.h"

#include <gtest/gtest.h>

using namespace vellum;
using namespace vellum::viewport;
using namespace vellum::viewport::key_pictures;

namespace {

constexpr PictureSize LAYOUT_SIZE{640, 480};

Scene sceneOfOneParticle() {
    ParticleFrame frame;
    frame.positions = {{0, 0, 0}, {1, 0, 0}};
    return Scene({}, nullptr, {frame});
}

/// A mesh shows heat, and the particles beside it their kinds.
ViewStyle mixedStyle() {
    ViewStyle style;
    style.particles.meshScale = ValueScale{};
    style.particles.meshScale->name = "heat";
    style.particles.meshScale->range = {0, 1};
    style.particles.legend = ParticleLegend{"type", {{"a", kindColor(0), 1}, {"b", kindColor(1), 1}}};
    return style;
}

ViewLayout layoutOf(ViewStyle const& style, PictureSize const& size) {
    return ViewLayout::of(sceneOfOneParticle(), style, nullptr, size);
}

Picture drawn(ViewLayout const& layout) {
    Picture picture = blank(LAYOUT_SIZE);
    layout.key->draw(picture, {1, 1, 1, 1});
    return picture;
}

}  // namespace

TEST(ViewLayout, aBarOfMeshesAndAListOfKindsStandSideBySide) {
    ViewStyle const style = mixedStyle();
    ViewLayout const layout = layoutOf(style, LAYOUT_SIZE);
    ASSERT_NE(layout.key, nullptr);
    EXPECT_TRUE(layout.notes.empty());
    ColorBar const bar(*style.particles.meshScale, ValueColors(), LAYOUT_SIZE);
    ColorLegend const legend(*style.particles.legend, LAYOUT_SIZE, bar.reservedWidth());
    EXPECT_EQ(layout.key->reservedWidth(), bar.reservedWidth() + legend.reservedWidth());
    Picture const picture = drawn(layout);
    for (std::size_t kind = 0; kind < 2; ++kind) {
        PixelArea const swatch = legend.swatch(kind);
        EXPECT_LT(swatch.left + swatch.width, LAYOUT_SIZE.width - bar.reservedWidth());
        expectColor(picture, swatch.left, swatch.top, kindColor(kind));
    }
    expectColor(picture, bar.area().left, bar.area().top, ValueColors().at(1));
    EXPECT_GT(touchedColumns(picture).first, LAYOUT_SIZE.width - layout.key->reservedWidth());
}

TEST(ViewLayout, twoScalesHaveTwoBars) {
    ViewStyle style = mixedStyle();
    style.particles.legend.reset();
    style.particles.scale = style.particles.meshScale;
    ColorBar const bar(*style.particles.meshScale, ValueColors(), LAYOUT_SIZE);
    EXPECT_EQ(layoutOf(style, LAYOUT_SIZE).key->reservedWidth(), bar.reservedWidth()) << "they share it";
    style.particles.scale->name = "speed";
    EXPECT_EQ(layoutOf(style, LAYOUT_SIZE).key->reservedWidth(), 2 * bar.reservedWidth());
}

TEST(ViewLayout, withoutRoomForBothTheBarOfTheMeshesStaysAndANoteTells) {
    PictureSize const narrow{200, 400};
    ViewLayout const layout = layoutOf(mixedStyle(), narrow);
    ASSERT_NE(layout.key, nullptr);
    ColorBar const bar(*mixedStyle().particles.meshScale, ValueColors(), narrow);
    ASSERT_TRUE(bar.isShown());
    EXPECT_EQ(layout.key->reservedWidth(), bar.reservedWidth());
    ASSERT_EQ(layout.notes.size(), 1U);
    ViewStyle without = mixedStyle();
    without.explanations.hasBar = false;
    EXPECT_TRUE(layoutOf(without, narrow).notes.empty()) << "neither is wanted";
}

TEST(ViewLayout, verticesThatALargeFileRepeatsAreFramedOnce) {
    constexpr unsigned int FACETS = 30000;
    MeshData mesh;
    for (unsigned int i = 0; i < FACETS; ++i) {
        // A strip in which neighbors repeat two vertices each.
        for (unsigned int const k : {i, i + 1, i + 2}) {
            mesh.positions.push_back({static_cast<double>(k), static_cast<double>(k % 2), 0});
        }
        mesh.triangles.push_back({3 * i, 3 * i + 1, 3 * i + 2});
    }
    mesh.colors.assign(mesh.positions.size(), {1, 1, 1, 1});
    Scene const scene({mesh});
    EXPECT_EQ(scene.models()[0].vertices.size(), 3U * FACETS);
    std::size_t const framed =
        ViewLayout::of(scene, ViewStyle(), nullptr, LAYOUT_SIZE).framedPoints.all().size();
    EXPECT_GE(framed, FACETS + 2U);
    EXPECT_LT(framed, FACETS + FACETS / 100) << "few are taken for new ones";
}
