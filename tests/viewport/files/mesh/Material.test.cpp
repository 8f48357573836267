#include "viewport/files/mesh/Material.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace vellum;
using namespace vellum::viewport;

namespace {

void expectPoint(Vector2<float> const& found, float x, float y) {
    EXPECT_NEAR(found.x, x, 1e-6);
    EXPECT_NEAR(found.y, y, 1e-6);
}

}  // namespace

TEST(TextureTransform, theDefaultChangesNothing) {
    EXPECT_TRUE(TextureTransform().isIdentity());
    expectPoint(TextureTransform().apply({0.25F, 0.5F}), 0.25F, 0.5F);
    EXPECT_FALSE(TextureTransform::ofMtl({1, 1}, {0.5F, 0}).isIdentity());
}

TEST(TextureTransform, mtlScalesAndThenMoves) {
    expectPoint(TextureTransform::ofMtl({2, 4}, {0.5F, 0.25F}).apply({0.25F, 0.5F}), 1, 2.25F);
}

TEST(TextureTransform, gltfCountsFromTheUpperLeftCorner) {
    // The upper left corner of the texture stays where it is, and moves to the right and down.
    expectPoint(TextureTransform::ofGltf({2, 2}, 0, {0, 0}).apply({0, 1}), 0, 1);
    expectPoint(TextureTransform::ofGltf({2, 2}, 0, {0, 0}).apply({1, 0}), 2, -1);
    expectPoint(TextureTransform::ofGltf({1, 1}, 0, {0.5F, 0.25F}).apply({0, 1}), 0.5F, 0.75F);
}

TEST(TextureTransform, gltfTurnsCounterClockwise) {
    float const quarter = std::acos(0.0F);
    // Right of the corner becomes above it; scaling comes before.
    expectPoint(TextureTransform::ofGltf({2, 1}, quarter, {0, 0}).apply({0.5F, 1}), 0, 2);
    // Below the corner becomes right of it.
    expectPoint(TextureTransform::ofGltf({1, 1}, quarter, {0, 0}).apply({0, 0.75F}), 0.25F, 1);
}
