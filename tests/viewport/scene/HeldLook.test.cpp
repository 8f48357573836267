#include "viewport/scene/HeldLook.h"

#include "tests/viewport/scene/particle_frames.h"

#include <gmock/gmock.h>

#include <utility>

using namespace vellum;
using namespace vellum::viewport;
using namespace vellum::viewport::particle_frames;

namespace {

/// Shows frames one after the other.
struct Pictured {
    ParticleLook look;
    Scene scene;
};

Pictured show(HeldLook& held, ParticleFrame const& frame, ParticleOptions const& asked = {},
              std::vector<MeshData> const& meshes = {}) {
    std::vector<ParticleFrame> const frames{frame};
    ParticleLook shown = look(frames, held.options(asked, meshes));
    held.hold(shown);
    Scene scene({}, nullptr, frames, shown, Scene::Imports::DROPPED, std::nullopt, Scene::Frames::DROPPED,
                held.extent());
    held.hold(scene, shown);
    return {std::move(shown), std::move(scene)};
}

ParticleFrame ofTypes(std::vector<double> const& types) {
    return withChannel("type", types);
}

Parts colorOf(ParticleLook const& look, std::string const& kind) {
    for (ParticleLegend::Entry const& entry : look.legend->entries) {
        if (entry.text == kind) {
            return parts(entry.color);
        }
    }
    ADD_FAILURE() << "no " << kind;
    return {};
}

}  // namespace

TEST(HeldLook, theRangeIsThatOfTheFirstFrameWhoseValuesDiffer) {
    HeldLook held;
    EXPECT_EQ(show(held, withChannel("q", {3, 3, 3})).look.scale->range.high, 3);
    EXPECT_EQ(show(held, withChannel("q", {1, 2, 5})).look.scale->range.high, 5);
    ParticleScale const third = *show(held, withChannel("q", {1, 2, 50})).look.scale;
    EXPECT_EQ(third.range.low, 1);
    EXPECT_EQ(third.range.high, 5);
    EXPECT_TRUE(third.isExceeded);
    ParticleOptions asked;
    asked.range = ValueRange{0, 100};
    EXPECT_EQ(held.options(asked, {}).range->high, 100) << "what is asked for comes first";
}

TEST(HeldLook, eachFrameMayHaveItsOwnRange) {
    HeldLook held(HeldLook::Ranges::EACH);
    show(held, withChannel("q", {1, 2}));
    EXPECT_EQ(show(held, withChannel("q", {1, 20})).look.scale->range.high, 20);
}

TEST(HeldLook, theQuantityStaysWhenOthersComeBeforeIt) {
    HeldLook held;
    show(held, withChannel("q", {1, 2, 3}));
    ParticleFrame more = withChannel("a", {7, 8, 9});
    more.channels.push_back({"q", {1, 2, 3}, {}});
    EXPECT_EQ(show(held, more).look.scale->name, "q");
    MeshData mesh;
    mesh.scalars.push_back({"q", "", {}});
    EXPECT_EQ(held.options({}, {mesh}).channel, "") << "a mesh would be colored that was not";
}

TEST(HeldLook, kindsKeepTheirColors) {
    HeldLook held;
    ParticleLook const first = show(held, ofTypes({1, 3})).look;
    ParticleLook const second = show(held, ofTypes({1, 2, 3})).look;
    EXPECT_EQ(colorOf(second, "1"), colorOf(first, "1"));
    EXPECT_EQ(colorOf(second, "3"), colorOf(first, "3"));
    EXPECT_NE(colorOf(second, "2"), colorOf(first, "1"));
    EXPECT_NE(colorOf(second, "2"), colorOf(first, "3"));
    EXPECT_EQ(colorOf(show(held, ofTypes({3, 3})).look, "3"), colorOf(first, "3"));
}

TEST(HeldLook, theSpaceAndTheSizesAreThoseOfTheFirstScene) {
    HeldLook held;
    EXPECT_FALSE(held.extent());
    Pictured const first = show(held, row(3));
    ParticleFrame wide = row(3);
    wide.positions[2].x = 40;
    wide.positions[1].y = 40;
    Pictured const second = show(held, wide);
    EXPECT_EQ(second.scene.unitsPerFileUnit(), first.scene.unitsPerFileUnit());
    EXPECT_EQ(second.scene.box().max.x, first.scene.box().max.x);
    EXPECT_EQ(length(second.scene.fileOrigin() - first.scene.fileOrigin()), 0);
    EXPECT_NEAR(second.scene.clouds()[0].diameter, first.scene.clouds()[0].diameter, 1e-9);
    EXPECT_GT(second.scene.clouds()[0].box.max.x, second.scene.box().max.x) << "it may reach out of it";
    Scene const alone({}, nullptr, {wide}, look({wide}));
    EXPECT_LT(alone.unitsPerFileUnit(), first.scene.unitsPerFileUnit());
}

TEST(HeldLook, aSpaceWithoutSizeIsNone) {
    ParticleFrame const frame = row(3);
    Scene const alone({}, nullptr, {frame}, look({frame}));
    Scene const held({}, nullptr, {frame}, look({frame}), Scene::Imports::DROPPED, std::nullopt,
                     Scene::Frames::DROPPED, Box3<double>{{5, 5, 5}, {5, 5, 5}});
    EXPECT_EQ(held.unitsPerFileUnit(), alone.unitsPerFileUnit());
}

TEST(HeldLook, pointsAndSpheresDoNotTakeTurns) {
    HeldLook held;
    EXPECT_EQ(show(held, row(3)).look.mode, ParticleMode::SPHERES);
    EXPECT_EQ(held.options({}, {}).mode, ParticleMode::SPHERES);
    EXPECT_EQ(held.options(mode(ParticleMode::POINTS), {}).mode, ParticleMode::POINTS);
}
