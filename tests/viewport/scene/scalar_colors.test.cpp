#include "viewport/scene/scalar_colors.h"

#include <gtest/gtest.h>

#include <limits>

using namespace vellum;
using namespace vellum::viewport;

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr Color4<float> GRAY{0.5F, 0.5F, 0.5F, 1};

MeshData meshWith(std::vector<double> const& values) {
    MeshData mesh;
    mesh.positions.resize(values.size());
    mesh.colors.assign(values.size(), {1, 1, 1, 0.5F});
    mesh.scalars = {{"heat", "K", values}};
    mesh.materials.resize(1);
    mesh.materials[0].texture = "skin.png";
    mesh.materials[0].opacity = 0.25F;
    return mesh;
}

toolkit::ColorMap blackToRed() {
    toolkit::ColorMap map;
    map.colors = {{0, 0, 0, 1}, {1, 0, 0, 1}};
    map.above = {0, 1, 0, 1};
    return map;
}

}  // namespace

TEST(ScalarColors, scalarsAreFoundByName) {
    MeshData const mesh = meshWith({1});
    EXPECT_EQ(findScalar(mesh, "heat"), mesh.scalars.data());
    EXPECT_EQ(findScalar(mesh, "cold"), nullptr);
}

TEST(ScalarColors, theRangeIsThatOfFiniteValues) {
    MeshScalar const scalar{"s", "", {3, NOT_A_NUMBER, -2, std::numeric_limits<double>::infinity(), 7}};
    EXPECT_EQ(rangeOf(scalar)->low, -2);
    EXPECT_EQ(rangeOf(scalar)->high, 7);
    EXPECT_EQ(rangeOf(scalar, true)->low, 3);
    EXPECT_FALSE(rangeOf({"s", "", {NOT_A_NUMBER}}).has_value());
    EXPECT_FALSE(rangeOf({"s", "", {-1, 0}}, true).has_value());
}

TEST(ScalarColors, valuesHaveTheColorsOfTheMap) {
    MeshData mesh = meshWith({0, 5, 10, 11, NOT_A_NUMBER});
    colorByScalar(mesh, mesh.scalars[0], {0, 10}, blackToRed(), GRAY);
    EXPECT_NEAR(mesh.colors[0].r, 0, 1e-6);
    EXPECT_NEAR(mesh.colors[1].r, 0.5F, 1e-6);
    EXPECT_NEAR(mesh.colors[2].r, 1, 1e-6);
    EXPECT_EQ(mesh.colors[3].g, 1) << "above the range";
    EXPECT_EQ(mesh.colors[4].b, 0.5F) << "not a number";
    EXPECT_EQ(mesh.colors[1].a, 1);
    EXPECT_TRUE(mesh.hasVertexColors);
    EXPECT_EQ(mesh.materials[0].texture, "") << "colors show values, not a texture";
    EXPECT_EQ(mesh.materials[0].opacity, 0.25F);
}

TEST(ScalarColors, logarithmsAreSpreadEvenly) {
    MeshData mesh = meshWith({1, 10, 100, 0, -5});
    colorByScalar(mesh, mesh.scalars[0], {1, 100}, blackToRed(), GRAY, true);
    EXPECT_NEAR(mesh.colors[1].r, 0.5F, 1e-6);
    EXPECT_NEAR(mesh.colors[2].r, 1, 1e-6);
    EXPECT_EQ(mesh.colors[3].b, 0.5F) << "0 has no logarithm";
    EXPECT_EQ(mesh.colors[4].b, 0.5F);
}

TEST(ScalarColors, rangesOfAnySizeAreMet) {
    MeshData mesh = meshWith({-1.7e308, 0, 1.7e308});
    colorByScalar(mesh, mesh.scalars[0], {-1.7e308, 1.7e308}, blackToRed(), GRAY);
    EXPECT_NEAR(mesh.colors[1].r, 0.5F, 1e-6);
    mesh = meshWith({4, 4});
    colorByScalar(mesh, mesh.scalars[0], {4, 4}, blackToRed(), GRAY);
    EXPECT_EQ(mesh.colors[0].r, 0);
    EXPECT_EQ(mesh.colors[0].g, 0);
}
