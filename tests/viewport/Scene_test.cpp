#include "viewport/Scene.h"

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
    mesh.colours.assign(3, {1, 0.5F, 0, 1});
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
        double const half = Scene::radius / std::sqrt(3.0);
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
    EXPECT_EQ(model.parts[0].colour.g, 0.5F);
    EXPECT_EQ(model.parts[0].colours.size(), 0U) << "one colour is enough";
}

TEST(Scene, aModelWithoutSizeStaysFinite) {
    Scene const scene({triangle(5, 5)});
    EXPECT_EQ(scene.unitsPerFileUnit(), 1);
    EXPECT_EQ(scene.box().max.x, 0);
}
