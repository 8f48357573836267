#include "foundation/raster/Camera_RL.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace vellum {
namespace {

class Camera : public Camera_RL {
public:
    void updateModelMatrix() override {}
    void updateProjectionMatrix() override {}
    void updateProjectionMatrixZBias() override {}
};

std::ptrdiff_t distance(void const* const from, void const* const to) {
    return static_cast<unsigned char const*>(to) - static_cast<unsigned char const*>(from);
}

// The slot number of a virtual operation. The Itanium C++ ABI stores it in a pointer to member as the offset
// of the slot plus 1.
template <class Operation>
std::ptrdiff_t slotOf(Operation const operation) {
    std::ptrdiff_t word = 0;
    std::memcpy(&word, &operation, sizeof(word));
    return (word - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

void expectVector(Matrix4<float> const& matrix, int const& first, Vector3<float> const& expected) {
    EXPECT_NEAR(matrix.e[first], expected.x, 1e-6F);
    EXPECT_NEAR(matrix.e[first + 1], expected.y, 1e-6F);
    EXPECT_NEAR(matrix.e[first + 2], expected.z, 1e-6F);
}

// == Members ==

TEST(Camera_RL_test, perspectiveParametersStandTogetherInOrder) {
    Camera const camera;
    EXPECT_EQ(distance(&camera.aspect, &camera.fieldOfView), 4);
    EXPECT_EQ(distance(&camera.aspect, &camera.nearDistance), 8);
    EXPECT_EQ(distance(&camera.aspect, &camera.farDistance), 12);
}

TEST(Camera_RL_test, orthographicParametersFollowTheViewKind) {
    Camera const camera;
    EXPECT_EQ(distance(&camera.viewKind, &camera.panX), 4);
    EXPECT_EQ(distance(&camera.viewKind, &camera.panY), 8);
    EXPECT_EQ(distance(&camera.viewKind, &camera.zoom), 12);
    static_assert(sizeof(camera.viewKind) == 4 && std::is_unsigned_v<decltype(camera.viewKind)>);
}

TEST(Camera_RL_test, aNewCameraLooksAlongXWithYUp) {
    Camera camera;
    Matrix4<float> const& matrix = *camera.transform.matrix();
    expectVector(matrix, 0, {1, 0, 0});
    expectVector(matrix, 4, {0, 1, 0});
    expectVector(matrix, 12, {0, 0, 0});
    EXPECT_EQ(camera.viewKind, 0U);
    EXPECT_EQ(camera.aspect, 1.0F);
    EXPECT_EQ(camera.fieldOfView, 45.0F);
    EXPECT_GT(camera.nearDistance, 0.0F);
    EXPECT_GT(camera.farDistance, camera.nearDistance);
    EXPECT_EQ(camera.panX, 0.0F);
    EXPECT_EQ(camera.panY, 0.0F);
    EXPECT_EQ(camera.zoom, 0.0F);
}

// == Transform ==

TEST(Camera_RL_test, theMatrixIsTheThirdVirtualOperationOfTheTransform) {
    static_assert(std::is_polymorphic_v<Camera_Transform>);
    EXPECT_EQ(slotOf(&Camera_Transform::matrix), 2);  // after the two destructors
}

TEST(Camera_RL_test, theMatrixCanBeWrittenThroughItsPointer) {
    Camera camera;
    camera.transform.matrix()->e[13] = 5;
    EXPECT_EQ(camera.transform.matrix()->e[13], 5.0F);
    Camera const copy(camera);
    camera.transform.matrix()->e[13] = 6;
    EXPECT_EQ(Camera(copy).transform.matrix()->e[13], 5.0F);
}

// == Virtual operations ==

TEST(Camera_RL_test, updatesFollowTheDestructorsInOrder) {
    EXPECT_EQ(slotOf(&Camera_RL::updateModelMatrix), 2);
    EXPECT_EQ(slotOf(&Camera_RL::updateProjectionMatrix), 3);
    EXPECT_EQ(slotOf(&Camera_RL::updateProjectionMatrixZBias), 4);
}

// == lookAt ==

TEST(Camera_RL_test, lookAtGivesDirectionUpAndEye) {
    Camera camera;
    camera.lookAt({1, 2, 10}, {1, 2, 4}, {0, 3, 0});
    Matrix4<float> const& matrix = *camera.transform.matrix();
    expectVector(matrix, 0, {0, 0, -1});
    expectVector(matrix, 4, {0, 1, 0});
    expectVector(matrix, 12, {1, 2, 10});
    EXPECT_EQ(matrix.e[3], 0.0F);
    EXPECT_EQ(matrix.e[7], 0.0F);
    EXPECT_EQ(matrix.e[11], 0.0F);
    EXPECT_EQ(matrix.e[15], 1.0F);
}

TEST(Camera_RL_test, lookAtMakesTheUpVectorPerpendicular) {
    Camera camera;
    camera.lookAt({3, 2, 4}, {0, 0, 0}, {0, 1, 0});
    Matrix4<float> const& m = *camera.transform.matrix();
    Vector3<float> const direction{m.e[0], m.e[1], m.e[2]};
    Vector3<float> const up{m.e[4], m.e[5], m.e[6]};
    Vector3<float> const side{m.e[8], m.e[9], m.e[10]};
    EXPECT_NEAR(length(direction), 1.0F, 1e-6F);
    EXPECT_NEAR(length(up), 1.0F, 1e-6F);
    EXPECT_NEAR(dot(direction, up), 0.0F, 1e-6F);
    EXPECT_GT(up.y, 0.0F);
    // Direction, up and side are a right-handed system.
    Vector3<float> const third = cross(direction, up);
    EXPECT_NEAR(third.x, side.x, 1e-6F);
    EXPECT_NEAR(third.y, side.y, 1e-6F);
    EXPECT_NEAR(third.z, side.z, 1e-6F);
}

}  // namespace
}  // namespace vellum
