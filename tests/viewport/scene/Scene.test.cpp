#include "viewport/scene/Scene.h"

#include "tests/viewport/scene/particle_frames.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vellum;
using namespace vellum::viewport;

namespace {

/// A triangle whose box reaches from `low` to `high` in every direction.
MeshData triangle(double const& low, double const& high) {
    MeshData mesh;
    mesh.name = "some.obj";
    mesh.positions = {{low, low, low}, {high, low, high}, {low, high, low}};
    mesh.triangles = {{0, 1, 2}};
    mesh.normals.assign(3, {0, 0, 1});
    mesh.colors.assign(3, {1, 0.5F, 0, 1});
    return mesh;
}

}  // namespace

TEST(Scene, modelsOfEverySizeAndPlaceComeToFillTheSameSpace) {
    struct Row {
        double low;
        double high;
    };
    for (Row const& row :
         {Row{-1, 1}, Row{1e6, 1e6 + 3}, Row{-1e-20, 2e-20}, Row{0, 1e30}, Row{-3e38, 3e38}}) {
        Scene const scene({triangle(row.low, row.high)});
        double const half = Scene::RADIUS / std::sqrt(3.0);
        EXPECT_NEAR(scene.box().min.x, -half, 1e-6) << row.high;
        EXPECT_NEAR(scene.box().max.z, half, 1e-6) << row.high;
        EXPECT_NEAR(scene.models()[0].vertices[1].x, half, 1e-6);
        EXPECT_NEAR(scene.unitsPerFileUnit() * (row.high - row.low), 2 * half, 1e-6);
        // The file's own origin, seen from the middle of the box.
        EXPECT_NEAR(scene.fileOrigin().x / half, -(row.low + row.high) / (row.high - row.low), 1e-6);
    }
}

TEST(Scene, modelsKeepTheirPlacesRelativeToEachOther) {
    Scene const scene({triangle(0, 1), triangle(3, 4)});
    ASSERT_EQ(scene.models().size(), 2U);
    double const unit = scene.unitsPerFileUnit();
    EXPECT_NEAR(scene.models()[1].box.min.x - scene.models()[0].box.min.x, 3 * unit, 1e-9);
    EXPECT_NEAR(scene.box().max.x, 2 * unit, 1e-9);
}

TEST(Scene, theRestOfAModelIsTakenOver) {
    Scene const scene({triangle(0, 1)});
    Model const& model = scene.models()[0];
    EXPECT_EQ(model.name, "some.obj");
    EXPECT_EQ(model.vertices.size(), 3U);
    ASSERT_EQ(model.parts.size(), 1U);
    EXPECT_EQ(model.parts[0].mesh->triangleCount(), 1U);
    EXPECT_EQ(model.parts[0].mesh->fault(), MeshFault_ns::NONE);
    EXPECT_EQ(model.parts[0].color.g, 0.5F);
    EXPECT_EQ(model.parts[0].colors.size(), 0U) << "one color is enough";
}

TEST(Scene, importsAreKeptOnlyWhereTheyAreAskedFor) {
    EXPECT_EQ(Scene({triangle(0, 1)}).models()[0].parts[0].import, nullptr);
    Scene const scene({triangle(0, 1)}, nullptr, {}, {}, Scene::Imports::KEPT);
    EXPECT_NE(scene.models()[0].parts[0].import, nullptr);
}

TEST(Scene, aModelWithoutSizeStaysFinite) {
    Scene const scene({triangle(5, 5)});
    EXPECT_EQ(scene.unitsPerFileUnit(), 1);
    EXPECT_EQ(scene.box().max.x, 0);
}

TEST(Scene, whatIsUpInTheFirstFileIsYOfTheScene) {
    MeshData upright = triangle(0, 1);
    upright.positions = {{0, 0, 0}, {1, 0, 0}, {0, 0, 4}};
    upright.up = UpAxis::Z;
    Scene const scene({upright, triangle(0, 1)});
    EXPECT_EQ(scene.up(), UpAxis::Z);
    double const unit = scene.unitsPerFileUnit();
    EXPECT_NEAR(scene.box().max.y - scene.box().min.y, 4 * unit, 1e-9);
    EXPECT_NEAR(scene.models()[0].vertices[2].y - scene.models()[0].vertices[0].y, 4 * unit, 1e-9);
    EXPECT_NEAR(scene.models()[0].box.max.y - scene.models()[0].box.min.y, 4 * unit, 1e-9);

    Scene const asked({upright}, nullptr, {}, {}, Scene::Imports::DROPPED, UpAxis::X);
    EXPECT_EQ(asked.up(), UpAxis::X);
    EXPECT_NEAR(asked.box().max.y - asked.box().min.y, asked.unitsPerFileUnit(), 1e-9);
}

TEST(Scene, placesAndDirectionsOfTheFilesAreFound) {
    MeshData mesh = triangle(1, 3);
    mesh.up = UpAxis::MINUS_X;
    Scene const scene({mesh});
    for (unsigned int i = 0; i < 3; ++i) {
        Vector3<double> const place = scene.placeToScene(mesh.positions[i]);
        EXPECT_NEAR(length(place - scene.models()[0].vertices[i]), 0, 1e-9);
        EXPECT_NEAR(length(scene.placeToFile(place) - mesh.positions[i]), 0, 1e-9);
    }
    EXPECT_EQ(scene.directionToScene({-2, 0, 0}).y, 2);
    EXPECT_EQ(scene.directionToFile({0, 2, 0}).x, -2);
}

TEST(Scene, linesAndPointsComeWithTheirColors) {
    MeshData mesh = triangle(0, 1);
    mesh.triangles.clear();
    mesh.lines = {{0, 2}};
    mesh.points = {1};
    mesh.colors[1] = {0, 0, 1, 0.5F};
    Scene const scene({mesh});
    Model const& model = scene.models()[0];
    EXPECT_TRUE(model.parts.empty());
    ASSERT_EQ(model.lines.size(), 2U);
    ASSERT_EQ(model.points.size(), 1U);
    EXPECT_EQ(model.points[0].color.a, 0.5F);
    EXPECT_NEAR(static_cast<double>(model.points[0].place.x), model.vertices[1].x, 1e-4);
    EXPECT_NEAR(static_cast<double>(model.lines[1].place.y), model.vertices[2].y, 1e-4);
}

// == Particles ==

namespace {

ParticleFrame fourParticles() {
    ParticleFrame frame;
    frame.file = "folder/melt.lammpstrj";
    frame.positions = {{-1, 0, 0}, {1, 0, 0}, {0, 2, 0}, {0, 0, 3}};
    particle_frames::addVelocities(frame, {{1, 0, 0}, {0, 2, 0}, {0, 0, 3}, {4, 0, 0}});
    return frame;
}

/// As points only the places have an extent.
Scene sceneOf(std::vector<MeshData> const& meshes, ParticleFrame const& frame,
              ParticleMode mode = ParticleMode::POINTS) {
    ParticleOptions options;
    options.mode = mode;
    options.size = 2;
    options.range = ValueRange{0, 1};
    return Scene(meshes, nullptr, {frame}, particle_frames::look({frame}, options));
}

}  // namespace

TEST(Scene, particlesAreMovedAndScaledWithTheirValuesKept) {
    Scene const scene = sceneOf({}, fourParticles());
    ASSERT_EQ(scene.clouds().size(), 1U);
    ParticleCloud const& cloud = scene.clouds()[0];
    EXPECT_EQ(cloud.name, "melt.lammpstrj");
    ASSERT_EQ(cloud.system->size(), 4U);
    double const unit = scene.unitsPerFileUnit();
    EXPECT_NEAR(unit, Scene::RADIUS / std::sqrt(1 + 1 + 1.5 * 1.5), 1e-9);
    ParticleSystemChunk_v2 const& chunk = *cloud.system->firstChunk();
    Vector3<float> const* const places = chunk.channelData(ParticleCloud::POSITIONS)->asVectors();
    EXPECT_NEAR(places[1].x, unit, 1e-4);
    EXPECT_NEAR(places[1].z, unit, 1e-4) << "in files of particles z is up";
    EXPECT_NEAR(places[3].y, 1.5 * unit, 1e-4);
    EXPECT_EQ(chunk.channelData(ParticleCloud::SHOWN)->asVectors()[2].x, 3);
    // Of a grid of four points in a box of 2 x 2 x 3.
    EXPECT_NEAR(cloud.spacing, std::cbrt(12.0) * unit, 1e-9);
    EXPECT_NEAR(cloud.diameter, 2 * unit, 1e-9);
    EXPECT_TRUE(cloud.boxLines.empty());
    EXPECT_EQ(cloud.system->channelId("position"), ParticleCloud::POSITIONS);
}

TEST(Scene, particlesWithoutADecidedLookAreDrawnAllAlike) {
    Scene const scene({}, nullptr, {fourParticles()});
    ASSERT_EQ(scene.clouds().size(), 1U);
    EXPECT_EQ(scene.clouds()[0].system->size(), 4U);
    EXPECT_FALSE(scene.clouds()[0].colors);
}

TEST(Scene, whatIsFarFromTheOriginKeepsItsShape) {
    for (double const far : {0.0, 1e12}) {
        MeshData mesh = triangle(0, 1);
        ParticleFrame frame = fourParticles();
        frame.box = ParticleBox{{-1, 0, 0}, {{2, 0, 0}, {0, 2, 0}, {0, 0, 3}}};
        for (Vector3<double>& p : mesh.positions) {
            p.x += far;
        }
        for (Vector3<double>& p : frame.positions) {
            p.x += far;
        }
        frame.box->origin.x += far;
        Scene const scene = sceneOf({mesh}, frame);
        double const unit = scene.unitsPerFileUnit();
        EXPECT_NEAR(unit, Scene::RADIUS / std::sqrt(1 + 1 + 1.5 * 1.5), 1e-9);
        EXPECT_NEAR(scene.models()[0].box.max.x - scene.models()[0].box.min.x, unit, 1e-9);
        EXPECT_NEAR(length(scene.models()[0].vertices[1] - scene.models()[0].vertices[0]),
                    length(mesh.positions[1] - mesh.positions[0]) * unit, 1e-9);
        ParticleSystemChunk_v2 const& chunk = *scene.clouds()[0].system->firstChunk();
        Vector3<float> const* const places = chunk.channelData(ParticleCloud::POSITIONS)->asVectors();
        EXPECT_NEAR(places[1].x - places[0].x, 2 * unit, 1e-4);
        EXPECT_NEAR(scene.clouds()[0].spacing, std::cbrt(12.0) * unit, 1e-9);
        for (Vector3<float> const& end : scene.clouds()[0].boxLines) {
            EXPECT_NEAR(std::abs(end.x), unit, 1e-4);
        }
    }
}

TEST(Scene, aTiltedBoxHasTwelveLinesAndIsFramed) {
    ParticleFrame frame = fourParticles();
    frame.box = ParticleBox{{-4, 0, 0}, {{8, 0, 0}, {2, 6, 0}, {1, 1, 4}}};
    Scene const scene = sceneOf({}, frame);
    ParticleCloud const& cloud = scene.clouds()[0];
    ASSERT_EQ(cloud.boxLines.size(), 24U);
    double const unit = scene.unitsPerFileUnit();
    EXPECT_NEAR(scene.box().max.x - scene.box().min.x, 11 * unit, 1e-6);
    EXPECT_NEAR(scene.box().max.z - scene.box().min.z, 7 * unit, 1e-6) << "along y of the file";
    double sum = 0;
    for (std::size_t i = 0; i < 24; i += 2) {
        sum += static_cast<double>(length(cloud.boxLines[i + 1] - cloud.boxLines[i]));
    }
    EXPECT_NEAR(sum / unit, 4 * (8 + std::sqrt(40.0) + std::sqrt(18.0)), 1e-3);
}

TEST(Scene, spheresAreFramedWithTheirWidth) {
    Scene const scene = sceneOf({}, fourParticles(), ParticleMode::SPHERES);
    EXPECT_NEAR(scene.box().max.x / scene.unitsPerFileUnit(), 2, 1e-9);
}

TEST(Scene, modelsAndParticlesShareAScale) {
    Scene const scene = sceneOf({triangle(-4, 4)}, fourParticles());
    double const unit = scene.unitsPerFileUnit();
    EXPECT_NEAR(scene.models()[0].box.max.x, 4 * unit, 1e-9);
    EXPECT_NEAR(scene.clouds()[0].box.max.x, 1 * unit, 1e-9);
}

TEST(Scene, particlesOfMoreThanOneChunkAreAllTaken) {
    ParticleFrame frame;
    for (int i = 0; i < 40'000; ++i) {
        frame.positions.push_back({static_cast<double>(i), 0, 0});
    }
    particle_frames::addVelocities(frame, {frame.positions.begin(), frame.positions.end()});
    Scene const scene = sceneOf({}, frame);
    ParticleSystem_v2 const& system = *scene.clouds()[0].system;
    EXPECT_EQ(system.size(), 40'000U);
    ParticleSystemChunk_v2 const& last = *system.lastChunk();
    EXPECT_EQ(last.channelData(ParticleCloud::SHOWN)->asVectors()[last.count() - 1].x, 39'999);
    EXPECT_EQ(sceneOf({}, ParticleFrame()).clouds()[0].system->size(), 0U);
}

TEST(Scene, framesAndMeshesAreKeptWhereTheyAreAskedFor) {
    Scene dropped({triangle(0, 1)}, nullptr, {fourParticles()});
    EXPECT_TRUE(dropped.frames().empty());
    EXPECT_TRUE(dropped.meshes().empty());
    EXPECT_EQ(dropped.clouds()[0].records.count, 0U);
    std::vector<ParticleFrame> frames{fourParticles()};
    Vector3<double> const* const positions = frames[0].positions.data();
    Scene kept({triangle(0, 1)}, nullptr, std::move(frames), {}, Scene::Imports::DROPPED, std::nullopt,
               Scene::Frames::KEPT);
    ASSERT_EQ(kept.frames().size(), 1U);
    EXPECT_EQ(kept.frames()[0].positions.data(), positions) << "without a copy";
    EXPECT_EQ(kept.clouds()[0].records.count, 4U);
    kept.keep({triangle(0, 1)});
    ASSERT_EQ(kept.meshes().size(), 1U);
    EXPECT_EQ(kept.meshes()[0].triangles.size(), triangle(0, 1).triangles.size());
}
