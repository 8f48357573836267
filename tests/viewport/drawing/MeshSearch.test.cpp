#include "viewport/drawing/MeshSearch.h"
#include "viewport/drawing/ParticleSearch.h"
#include "viewport/drawing/ScreenPlace.h"

#include "tests/viewport/scene/particle_frames.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vellum;
using namespace vellum::viewport;

namespace {

using Point = Vector3<double>;

/// Five pixels side by side that see from -2.5 to 2.5 in x and y, and along -z from 10 to -10.
toolkit::View fivePixels() {
    toolkit::View view{Matrix4<double>::identity(), Matrix4<double>::identity(), {0, 0, 5, 5}};
    view.projection.e[0] = 1 / 2.5;
    view.projection.e[5] = 1 / 2.5;
    view.projection.e[10] = -1 / 10.0;
    return view;
}

constexpr double NOTHING_ELSE = 2;

std::optional<PickedElement> elementOf(MeshData const& mesh, double most = NOTHING_ELSE,
                                       std::optional<Box3<double>> const& clip = std::nullopt) {
    Model model;
    model.vertices.reserve(static_cast<unsigned int>(mesh.positions.size()), false);
    model.vertices.clear();
    for (Point const& p : mesh.positions) {
        model.vertices.pushBack(p);
    }
    return findElement(model, mesh, fivePixels(), clip, most);
}

}  // namespace

TEST(MeshSearch, raysCrossTrianglesFromBothSides) {
    Point const a{0, 0, 0};
    Point const b{4, 0, 0};
    Point const c{0, 4, 0};
    std::optional<Crossing> crossing = Crossing::of({1, 2, 5}, {0, 0, -1}, a, b, c);
    ASSERT_TRUE(crossing);
    EXPECT_NEAR(crossing->distance, 5, 1e-12);
    EXPECT_NEAR(crossing->u, 0.25, 1e-12);
    EXPECT_NEAR(crossing->v, 0.5, 1e-12);
    EXPECT_TRUE(Crossing::of({1, 2, 5}, {0, 0, -1}, a, c, b)) << "from behind";
    EXPECT_TRUE(Crossing::of({2, 2, 5}, {0, 0, -1}, a, b, c)) << "on its edge";
    EXPECT_FALSE(Crossing::of({2, 2.001, 5}, {0, 0, -1}, a, b, c)) << "beside it";
    EXPECT_FALSE(Crossing::of({1, 2, 5}, {1, 0, 0}, a, b, c)) << "along it";
    EXPECT_FALSE(Crossing::of({0, 0, 5}, {0, 0, -1}, a, a, a)) << "without area";
}

TEST(MeshSearch, theNearestOfWhatNothingHidesIsFound) {
    MeshData mesh;
    // One behind the other in the middle, and one in front of them two pixels to the right.
    for (double const z : {0.0, 4.0}) {
        mesh.positions.insert(mesh.positions.end(), {{-1, -1, z}, {3, -1, z}, {-1, 3, z}});
    }
    mesh.positions.insert(mesh.positions.end(), {{1.5, -9, 8}, {9, -9, 8}, {1.5, 20, 8}});
    mesh.triangles = {{0, 1, 2}, {3, 4, 5}, {6, 7, 8}};
    ASSERT_TRUE(elementOf(mesh));
    EXPECT_EQ(elementOf(mesh)->index, 1U);
    EXPECT_EQ(elementOf(mesh)->vertex, 3U);
    EXPECT_NEAR(elementOf(mesh)->position.x, 0, 1e-9);
    // The depths of z are 0.5 at 0, 0.3 at 4 and 0.1 at 8.
    EXPECT_EQ(elementOf(mesh, 0.2)->index, 2U) << "another thing hides the middle";
    EXPECT_EQ(elementOf(mesh, NOTHING_ELSE, Box3<double>{{-5, -5, -1}, {5, 5, 1}})->index, 0U) << "clipped";
    EXPECT_FALSE(elementOf(mesh, NOTHING_ELSE, Box3<double>{{-5, -5, -2}, {5, 5, -1}}));
    mesh.triangles = {};
    EXPECT_FALSE(elementOf(mesh));
}

TEST(MeshSearch, linesAndPointsAreFoundWithinReach) {
    MeshData mesh;
    mesh.positions = {{-4, 2, 0}, {4, 2, 0}, {0.5, 1, 5}, {-1, -2.4, 0}};
    mesh.lines = {{0, 1}};
    std::optional<PickedElement> found = elementOf(mesh);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->kind, MeshElement::LINE);
    EXPECT_NEAR(found->position.x, 0, 1e-12);
    EXPECT_EQ(found->position.y, 2);
    mesh.points = {3, 2};
    found = elementOf(mesh);
    EXPECT_EQ(found->kind, MeshElement::POINT);
    EXPECT_EQ(found->index, 1U);
    EXPECT_EQ(found->vertex, 2U);
    found = elementOf(mesh, NOTHING_ELSE, Box3<double>{{1, -9, -9}, {9, 9, 9}});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->kind, MeshElement::LINE) << "the point is cut away";
    EXPECT_EQ(found->position.x, 1) << "the part of the line that is left";
    mesh.positions[0].y = mesh.positions[1].y = 3;
    mesh.points = {};
    EXPECT_FALSE(elementOf(mesh)) << "three pixels away";
}

TEST(MeshSearch, linesInPerspectiveHaveTheirPlaces) {
    // From one pixel to the left, near the eye, to one to the right, three times as far.
    ScreenPlace::Point const from{-1, 0, 0.5, 1};
    ScreenPlace::Point const to{3, 0, 2.5, 3};
    NearestOnLine const nearest = NearestOnLine::of(from, to);
    EXPECT_NEAR(nearest.distance, 0, 1e-12);
    EXPECT_NEAR(nearest.part, 0.25, 1e-12);
    ScreenPlace::Point const place = from + (to - from) * nearest.part;
    EXPECT_NEAR(place.x, 0, 1e-12);
    EXPECT_NEAR(nearest.depth, place.depth(), 1e-12);
}

// == Particles ==

namespace {

std::optional<std::size_t> particleAt(ParticleCloud const& cloud, toolkit::ParticleMode mode, float size,
                                      double x, double depth, float percent = 100) {
    DrawnCloud drawn;
    drawn.look.mode = mode;
    drawn.look.size = size;
    drawn.look.channel = ParticleCloud::SHOWN;
    drawn.look.percent = percent;
    drawn.mode = mode;
    return findParticle(cloud, drawn, fivePixels(), x, 2.5, depth);
}

}  // namespace

TEST(ParticleSearch, theShapeAndTheDepthThatWasReadDecide) {
    ParticleFrame frame = particle_frames::row(3);
    frame.positions = {{0, 0, 0}, {0, 0, 4}, {1.5, 0, 0}};
    ParticleCloud const cloud = particle_frames::shown(frame).cloud;
    using toolkit::ParticleMode;
    EXPECT_EQ(particleAt(cloud, ParticleMode::POINTS, 1, 2.5, 0.5), 0U);
    EXPECT_EQ(particleAt(cloud, ParticleMode::POINTS, 1, 2.5, 0.3), 1U);
    EXPECT_EQ(particleAt(cloud, ParticleMode::POINTS, 5, 3.5, 0.5), 2U) << "the nearer middle";
    EXPECT_EQ(particleAt(cloud, ParticleMode::POINTS, 1, 0.5, 0.5), std::nullopt);
    // The ball of size 2 around z = 4 comes up to 5 in its middle.
    EXPECT_EQ(particleAt(cloud, ParticleMode::SPHERES, 2, 2.5, 0.25), 1U);
    EXPECT_EQ(particleAt(cloud, ParticleMode::SPHERES, 2, 2.5, 0.45), 0U);
    EXPECT_EQ(particleAt(cloud, ParticleMode::SPHERES, 2, 4.0, 0.45), 2U);
}

TEST(ParticleSearch, ofEqualDepthsTheFirstAndOfThinnedOnesTheDrawnIsFound) {
    ParticleFrame frame = particle_frames::row(10);
    frame.positions.assign(10, {0, 0, 0});
    ParticleCloud const cloud = particle_frames::shown(frame).cloud;
    EXPECT_EQ(particleAt(cloud, toolkit::ParticleMode::SPHERES, 2, 2.5, 0.45), 0U);
    // Solid arrows are chosen in even steps, and these have no length: lines of one pixel, every fifth.
    EXPECT_EQ(particleAt(cloud, toolkit::ParticleMode::SOLID_ARROWS, 2, 2.5, 0.5, 20), 4U);
}
