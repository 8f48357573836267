#include "viewport/scene/scalar_colors.h"

#include "tests/viewport/scene/particle_frames.h"

#include <gtest/gtest.h>

#include <limits>

using namespace vellum;
using namespace vellum::viewport;
using namespace vellum::viewport::particle_frames;

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

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

ValueColors blackToRed() {
    return {{{0, 0, 0, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}}, ""};
}

ValueScale scaleOf(ValueRange const& range, bool isLogarithmic = false) {
    ValueScale scale;
    scale.name = "heat";
    scale.range = range;
    scale.isLogarithmic = isLogarithmic;
    return scale;
}

ParticleOptions heat() {
    ParticleOptions options;
    options.channel = "heat";
    return options;
}

MeshData named(MeshData mesh, std::string const& name) {
    mesh.name = name;
    return mesh;
}

}  // namespace

TEST(ScalarColors, scalarsAreFoundByName) {
    MeshData const mesh = meshWith({1});
    EXPECT_EQ(findScalar(mesh, "heat"), mesh.scalars.data());
    EXPECT_EQ(findScalar(mesh, "cold"), nullptr);
}

TEST(ScalarColors, theRangeIsThatOfFiniteValues) {
    std::vector<MeshData> const meshes{
        meshWith({3, NOT_A_NUMBER, -2, std::numeric_limits<double>::infinity(), 7})};
    ParticleOptions options = heat();
    ParticleLook look = lookOf({}, options, meshes).value();
    ASSERT_TRUE(look.meshScale);
    EXPECT_EQ(look.meshScale->range.low, -2);
    EXPECT_EQ(look.meshScale->range.high, 7);
    EXPECT_EQ(look.meshScale->undefinedCount, 1U);
    EXPECT_TRUE(look.meshScale->isExceeded);
    EXPECT_EQ(look.meshScale->title(), "heat [K]");
    EXPECT_FALSE(look.scale) << "there are no particles";
    options.isLogarithmic = true;
    look = lookOf({}, options, meshes).value();
    EXPECT_EQ(look.meshScale->range.low, 3);
    EXPECT_EQ(look.meshScale->undefinedCount, 2U);
    ASSERT_EQ(look.notes.size(), 1U);
    EXPECT_EQ(look.notes[0].message, "2 of 5 values of 'heat' have no logarithm");
    EXPECT_FALSE(lookOf({}, options, {meshWith({-1, 0})}).isOk());
    EXPECT_TRUE(lookOf({}, heat(), {meshWith({NOT_A_NUMBER})}).isOk());
    options.range = {1, 5};
    EXPECT_EQ(lookOf({}, options, meshes).value().meshScale->range.high, 5);
}

TEST(ScalarColors, withoutAChannelMeshesKeepTheirColors) {
    std::vector<MeshData> meshes{meshWith({1, 2})};
    ParticleLook const look = lookOf({}, {}, meshes).value();
    EXPECT_FALSE(look.meshScale);
    colorMeshes(meshes, look);
    EXPECT_EQ(meshes[0].colors[0].a, 0.5F);
}

TEST(ScalarColors, meshesShareOneScaleAndThoseWithoutTheScalarStay) {
    std::vector<MeshData> meshes{meshWith({0, 4}), meshWith({6, 10}), meshWith({7})};
    meshes[2].scalars[0].name = "cold";
    ParticleLook const look = lookOf({}, heat(), meshes).value();
    EXPECT_EQ(look.meshScale->range.low, 0);
    EXPECT_EQ(look.meshScale->range.high, 10);
    colorMeshes(meshes, look);
    EXPECT_EQ(meshes[0].colors[0].r, RampColors().low.r);
    EXPECT_EQ(meshes[1].colors[1].r, RampColors().high.r);
    EXPECT_EQ(meshes[2].colors[0].a, 0.5F);
}

TEST(ScalarColors, aChannelThatNoFileHasIsAFaultThatListsWhatTheyHave) {
    MeshData bare = named(meshWith({1}), "b.ply");
    bare.scalars.clear();
    ParticleOptions options;
    options.channel = "charge";
    Result<ParticleLook> const none = lookOf({}, options, {named(meshWith({1}), "a.ply"), bare});
    ASSERT_FALSE(none.isOk());
    EXPECT_EQ(none.fault().line(),
              "a.ply: has no channel 'charge' (it has: heat), nor has b.ply (it has: none)");
    Result<ParticleLook> const both = lookOf({row(2)}, options, {bare});
    ASSERT_FALSE(both.isOk());
    EXPECT_EQ(both.fault().line(),
              "folder/row.xyz: has no channel 'charge' (it has: x, y, z), nor has b.ply (it has: none)");
}

TEST(ScalarColors, particlesAndMeshesShareOneScale) {
    ParticleFrame frame = row(2);
    frame.channels.push_back({"heat", {-5, 5}, "K"});
    ParticleLook look = lookOf({frame}, heat(), {meshWith({0, 20})}).value();
    ASSERT_TRUE(look.scale && look.meshScale);
    EXPECT_EQ(look.scale->range.low, -5);
    EXPECT_EQ(look.scale->range.high, 20);
    EXPECT_EQ(look.meshScale->range.high, 20);
    EXPECT_TRUE(look.notes.empty());

    // Particles that do not have it are not colored by anything else.
    look = lookOf({row(2)}, heat(), {meshWith({0, 20})}).value();
    EXPECT_FALSE(look.scale);
    EXPECT_EQ(look.meshScale->range.high, 20);

    // Meshes that do not have it keep their colors.
    MeshData bare = meshWith({1});
    bare.scalars.clear();
    look = lookOf({frame}, heat(), {bare}).value();
    EXPECT_EQ(look.scale->range.high, 5);
    EXPECT_FALSE(look.meshScale);
}

TEST(ScalarColors, meshesThatAreCoveredKeepTheirColorsAndHaveANote) {
    std::vector<MeshData> meshes{named(meshWith({0, 4}), "a.ply"), named(meshWith({6, 10}), "b.ply")};
    std::vector<std::string> const covers{"the effect"};
    ParticleLook look = lookOf({}, heat(), meshes, covers).value();
    EXPECT_EQ(look.meshScale->range.low, 6) << "what is covered has no part in the scale";
    ASSERT_EQ(look.notes.size(), 1U);
    EXPECT_EQ(look.notes[0].line(), "a.ply: its channel 'heat' is hidden by the effect");
    colorMeshes(meshes, look, covers);
    EXPECT_EQ(meshes[0].colors[0].a, 0.5F);
    EXPECT_EQ(meshes[0].materials[0].texture, "skin.png");
    EXPECT_EQ(meshes[1].colors[0].r, RampColors().low.r);

    std::vector<std::string> const both{"the texture", "the texture"};
    look = lookOf({}, heat(), meshes, both).value();
    EXPECT_FALSE(look.meshScale);
    EXPECT_TRUE(look.areMeshValuesHidden);
    EXPECT_EQ(look.notes.size(), 2U);
    Result<ParticleLook> const particles = lookOf({withChannel("mass", {1, 2})}, heat(), meshes, both);
    ASSERT_TRUE(particles.isOk()) << particles.fault().line();
    EXPECT_FALSE(particles.value().scale);
    EXPECT_EQ(particles.value().notes.size(), 3U) << "neither meshes nor particles show it";

    ParticleOptions unknown;
    unknown.channel = "cold";
    EXPECT_TRUE(lookOf({}, unknown, meshes, both).isOk()) << "no mesh could show any channel";
    EXPECT_FALSE(lookOf({}, unknown, meshes, covers).isOk());
}

TEST(ScalarColors, valuesHaveTheColorsOfTheMap) {
    MeshData mesh = meshWith({0, 5, 10, 11, NOT_A_NUMBER});
    colorByScalar(mesh, mesh.scalars[0], scaleOf({0, 10}), blackToRed());
    EXPECT_NEAR(mesh.colors[0].r, 0, 1e-6);
    EXPECT_NEAR(mesh.colors[1].r, 0.5F, 1e-6);
    EXPECT_NEAR(mesh.colors[2].r, 1, 1e-6);
    EXPECT_EQ(mesh.colors[3].g, 1) << "above the range";
    EXPECT_EQ(mesh.colors[4].b, blackToRed().undefined().b) << "not a number";
    EXPECT_EQ(mesh.colors[1].a, 1);
    EXPECT_TRUE(mesh.hasVertexColors);
    EXPECT_EQ(mesh.materials[0].texture, "") << "colors show values, not a texture";
    EXPECT_EQ(mesh.materials[0].opacity, 0.25F);
}

TEST(ScalarColors, logarithmsAreSpreadEvenly) {
    MeshData mesh = meshWith({1, 10, 100, 0, -5});
    colorByScalar(mesh, mesh.scalars[0], scaleOf({1, 100}, true), blackToRed());
    EXPECT_NEAR(mesh.colors[1].r, 0.5F, 1e-6);
    EXPECT_NEAR(mesh.colors[2].r, 1, 1e-6);
    EXPECT_EQ(mesh.colors[3].b, blackToRed().undefined().b) << "0 has no logarithm";
    EXPECT_EQ(mesh.colors[4].b, blackToRed().undefined().b);
}

TEST(ScalarColors, rangesOfAnySizeAreMet) {
    MeshData mesh = meshWith({-1.7e308, 0, 1.7e308});
    colorByScalar(mesh, mesh.scalars[0], scaleOf({-1.7e308, 1.7e308}), blackToRed());
    EXPECT_NEAR(mesh.colors[1].r, 0.5F, 1e-6);
    mesh = meshWith({4, 4});
    colorByScalar(mesh, mesh.scalars[0], scaleOf({4, 4}), blackToRed());
    EXPECT_EQ(mesh.colors[0].r, 0);
    EXPECT_EQ(mesh.colors[0].g, 0);
}
