#include "foundation/geometry/Vector3.h"
#include "foundation/geometry/constants.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace vellum {
namespace {

using Vec = Vector3<float>;

constexpr float PI = 3.1415927F;

struct Rotation {
    Vec axis;
    float angle;
};

Rotation rotationBetween(Vec const& from, Vec const& to) {
    Rotation rotation{{9, 9, 9}, 9};
    Vec::calculateRotation(from, to, rotation.axis, rotation.angle);
    return rotation;
}

void expectVector(Vec const& actual, Vec const& expected) {
    EXPECT_EQ(actual.x, expected.x);
    EXPECT_EQ(actual.y, expected.y);
    EXPECT_EQ(actual.z, expected.z);
}

// == Rotation between directions ==

TEST(Vector3_test, aQuarterTurnFromXToYGoesAboutZ) {
    Rotation const rotation = rotationBetween({1, 0, 0}, {0, 1, 0});
    expectVector(rotation.axis, {0, 0, 1});
    EXPECT_EQ(rotation.angle, static_cast<float>(std::acos(0.0)));
}

TEST(Vector3_test, equalDirectionsGiveAngleZeroAboutAPerpendicularAxis) {
    Rotation const rotation = rotationBetween({0, 1, 0}, {0, 1, 0});
    expectVector(rotation.axis, {0, 0, -1});
    EXPECT_EQ(rotation.angle, 0.0F);
}

TEST(Vector3_test, oppositeDirectionsGiveHalfATurnAboutTheSameAxis) {
    Rotation const rotation = rotationBetween({0, 1, 0}, {0, -1, 0});
    expectVector(rotation.axis, {0, 0, -1});
    EXPECT_EQ(rotation.angle, PI);
}

TEST(Vector3_test, equalDirectionsAlongZGiveADiagonalAxis) {
    Rotation const rotation = rotationBetween({0, 0, 1}, {0, 0, 1});
    EXPECT_FLOAT_EQ(rotation.axis.x, -std::sqrt(0.5F));
    EXPECT_FLOAT_EQ(rotation.axis.y, std::sqrt(0.5F));
    EXPECT_EQ(rotation.axis.z, 0.0F);
    EXPECT_EQ(rotation.angle, 0.0F);
}

TEST(Vector3_test, theCosineIsClamped) {
    // Slightly longer than 1: the cosine would be outside the domain of the arc cosine. The cross product
    // must stay above the threshold, so that this branch is used.
    Vec const a{1.1F, 0.001F, 0};
    Vec const b{1.1F, 0, 0};
    Rotation const acute = rotationBetween(a, b);
    EXPECT_EQ(acute.angle, 0.0F);
    Rotation const obtuse = rotationBetween(a, -b);
    EXPECT_EQ(obtuse.angle, static_cast<float>(std::acos(-1.0)));
    EXPECT_NEAR(length(obtuse.axis), 1.0F, 1e-6F);
}

TEST(Vector3_test, inputsAreNotNormalized) {
    Rotation const rotation = rotationBetween({0.5F, 0, 0}, {0, 0.5F, 0});
    expectVector(rotation.axis, {0, 0, 1});
    Rotation const diagonal = rotationBetween({0.5F, 0, 0}, {0.5F, 0.5F, 0});
    EXPECT_EQ(diagonal.angle, static_cast<float>(std::acos(0.25)));
}

TEST(Vector3_test, nearlyParallelDirectionsStillHaveTheirOwnAxis) {
    Rotation const above = rotationBetween({1, 0, 0}, {1, 2e-14F, 0});
    expectVector(above.axis, {0, 0, 1});
    Rotation const below = rotationBetween({1, 0, 0}, {1, 0.5e-14F, 0});
    expectVector(below.axis, {0, 0, 1});  // the perpendicular chosen for (1, 0, 0)
    Rotation const belowBackwards = rotationBetween({1, 0, 0}, {1, -0.5e-14F, 0});
    expectVector(belowBackwards.axis, {0, 0, 1});
    Rotation const aboveBackwards = rotationBetween({1, 0, 0}, {1, -2e-14F, 0});
    expectVector(aboveBackwards.axis, {0, 0, -1});
}

TEST(Vector3_test, aPerpendicularTargetWithoutLengthCountsAsOpposite) {
    // The cosine is 0, which does not exceed 0.
    EXPECT_EQ(rotationBetween({1, 0, 0}, {0, 0, 0}).angle, PI);
}

TEST(Vector3_test, deliberatelyGivesNoNumberForAZeroDirection) {
    Rotation const rotation = rotationBetween({0, 0, 0}, {1, 0, 0});
    EXPECT_TRUE(std::isnan(rotation.axis.x));
    EXPECT_TRUE(std::isnan(rotation.axis.y));
    EXPECT_TRUE(std::isnan(rotation.axis.z));
    EXPECT_EQ(rotation.angle, PI);
}

TEST(Vector3_test, deliberatelyGivesNoNumberForParallelsOfTheDiagonalOfXAndY) {
    float const s = std::sqrt(0.5F);
    Rotation const rotation = rotationBetween({s, s, 0}, {s, s, 0});
    EXPECT_TRUE(std::isnan(rotation.axis.x));
    EXPECT_TRUE(std::isnan(rotation.axis.y));
    EXPECT_TRUE(std::isnan(rotation.axis.z));
    EXPECT_EQ(rotation.angle, 0.0F);
}

TEST(Vector3_test, theOutputsMayBeTheInputs) {
    Rotation const expected = rotationBetween({0.6F, 0.8F, 0}, {0, 0.6F, 0.8F});
    Vec from{0.6F, 0.8F, 0};
    Vec to{0, 0.6F, 0.8F};
    float angle = 0;
    Vec::calculateRotation(from, to, from, angle);
    expectVector(from, expected.axis);
    EXPECT_EQ(angle, expected.angle);

    from = {0.6F, 0.8F, 0};
    Vec::calculateRotation(from, to, to, angle);
    expectVector(to, expected.axis);
    EXPECT_EQ(angle, expected.angle);
}

TEST(Vector3_test, theAnglesComponentsAreRoundedStepByStep) {
    // The expected steps: products and sums in float, the arc cosine in double.
    std::mt19937 random(7);
    std::uniform_real_distribution<float> component(-1, 1);
    for (int i = 0; i < 2000; ++i) {
        Vec const a{component(random), component(random), component(random)};
        Vec const b{component(random), component(random), component(random)};
        float const cx = a.y * b.z - a.z * b.y;
        float const cy = a.z * b.x - a.x * b.z;
        float const cz = a.x * b.y - a.y * b.x;
        float const crossLength = std::sqrt(cx * cx + cy * cy + cz * cz);
        float const scale = 1.0F / crossLength;
        float dot = a.x * b.x + a.y * b.y + a.z * b.z;
        dot = dot < -1.0F ? -1.0F : dot;
        dot = dot > 1.0F ? 1.0F : dot;
        Rotation const rotation = rotationBetween(a, b);
        expectVector(rotation.axis, {cx * scale, cy * scale, cz * scale});
        EXPECT_EQ(rotation.angle, static_cast<float>(std::acos(static_cast<double>(dot))));
    }
}

TEST(Vector3_test, theRotationTurnsOneDirectionIntoTheOther) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> component(-1, 1);
    for (int i = 0; i < 500; ++i) {
        Vec const from = normalized(Vec{component(random), component(random), component(random)});
        Vec const to = normalized(Vec{component(random), component(random), component(random)});
        Rotation const r = rotationBetween(from, to);
        // Rodrigues' rotation of `from`.
        Vec const turned = from * std::cos(r.angle) + cross(r.axis, from) * std::sin(r.angle) +
                           r.axis * (dot(r.axis, from) * (1.0F - std::cos(r.angle)));
        EXPECT_NEAR(turned.x, to.x, 2e-3F);
        EXPECT_NEAR(turned.y, to.y, 2e-3F);
        EXPECT_NEAR(turned.z, to.z, 2e-3F);
    }
}

// == Arithmetic ==

TEST(Vector3_test, arithmeticIsByComponent) {
    expectVector(Vec{1, 2, 3} + Vec{10, 20, 30}, {11, 22, 33});
    expectVector(Vec{1, 2, 3} - Vec{10, 20, 30}, {-9, -18, -27});
    expectVector(-Vec{1, -2, 3}, {-1, 2, -3});
    expectVector(Vec{1, 2, 3} * 2.0F, {2, 4, 6});
    EXPECT_EQ(dot(Vec{1, 2, 3}, Vec{4, 5, 6}), 32.0F);
    expectVector(cross(Vec{1, 0, 0}, Vec{0, 1, 0}), {0, 0, 1});
    EXPECT_EQ(length(Vec{2, 3, 6}), 7.0F);
    expectVector(normalized(Vec{0, 4, 0}), {0, 1, 0});
    expectVector(convert<float>(Vector3<double>{0.1, 0.2, 0.3}), {0.1F, 0.2F, 0.3F});
}

TEST(Vector3_test, constantsAreNamedByTheirComponents) {
    expectVector(constants::f::Z0_Z0_Z0, {0, 0, 0});
    expectVector(constants::f::P1_Z0_Z0_P1, {1, 0, 0});
    expectVector(constants::f::N1_Z0_Z0_P1, {-1, 0, 0});
    expectVector(constants::f::Z0_P1_Z0_P1, {0, 1, 0});
    expectVector(constants::f::Z0_N1_Z0_P1, {0, -1, 0});
    expectVector(constants::f::Z0_Z0_P1_P1, {0, 0, 1});
    expectVector(constants::f::Z0_Z0_N1_P1, {0, 0, -1});
}

}  // namespace
}  // namespace vellum
