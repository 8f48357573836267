#include "Camera_RL_GL.h"
#include "member_slots.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstddef>
#include <type_traits>

namespace vellum {
namespace {

using member_slots::slotOf;

static_assert(std::is_base_of_v<Camera_RL, Camera_RL_GL> && std::has_virtual_destructor_v<Camera_RL>);
static_assert(sizeof(Camera_RL_GL) == sizeof(Camera_RL), "the GL camera adds no members");

template <class Class>
void expectCameraSlots() {
    EXPECT_EQ((slotOf<Class, void()>(&Class::updateModelMatrix)), 2U);
    EXPECT_EQ((slotOf<Class, void()>(&Class::updateProjectionMatrix)), 3U);
    EXPECT_EQ((slotOf<Class, void()>(&Class::updateProjectionMatrixZBias)), 4U);
}

TEST(Camera_RL_GL_slots_test, everyOperationStandsInItsSlot) {
    expectCameraSlots<Camera_RL>();
    expectCameraSlots<Camera_RL_GL>();
}

TEST(Camera_RL_GL_slots_test, firstTwoSlotsAreDestructors) {
    // By address: the complete destructor also goes by the name of the one for base classes.
    Camera_RL_GL const camera;
    void* const complete = dlsym(RTLD_DEFAULT, "_ZN6vellum12Camera_RL_GLD1Ev");
    void* const deleting = dlsym(RTLD_DEFAULT, "_ZN6vellum12Camera_RL_GLD0Ev");
    ASSERT_NE(complete, nullptr);
    ASSERT_NE(deleting, nullptr);
    EXPECT_EQ(member_slots::tableOf(&camera)[0], complete);
    EXPECT_EQ(member_slots::tableOf(&camera)[1], deleting);
}

TEST(Camera_RL_GL_slots_test, thirdOperationOfTransformGivesMatrix) {
    EXPECT_EQ((slotOf<Camera_Transform, Matrix4<float>*()>(&Camera_Transform::matrix)), 2U);
    Camera_RL_GL camera;
    EXPECT_NE(camera.transform.matrix(), nullptr);
}

TEST(Camera_RL_GL_slots_test, parametersFollowEachOtherInTheirOrder) {
    Camera_RL_GL const camera;
    float const* const perspective = &camera.aspect;
    EXPECT_EQ(&camera.fieldOfView, perspective + 1);
    EXPECT_EQ(&camera.nearDistance, perspective + 2);
    EXPECT_EQ(&camera.farDistance, perspective + 3);

    auto const* const kind = reinterpret_cast<std::byte const*>(&camera.viewKind);
    EXPECT_EQ(reinterpret_cast<std::byte const*>(&camera.panX), kind + 4);
    EXPECT_EQ(reinterpret_cast<std::byte const*>(&camera.panY), kind + 8);
    EXPECT_EQ(reinterpret_cast<std::byte const*>(&camera.zoom), kind + 12);
}

template <class Class, class = void>
constexpr bool hasAllocationOperators = false;
template <class Class>
constexpr bool hasAllocationOperators<Class, std::void_t<decltype(Class::operator delete(nullptr))>> = true;

static_assert(!hasAllocationOperators<Camera_RL> && !hasAllocationOperators<Camera_RL_GL>,
              "cameras are allocated with the global operators");

}  // namespace
}  // namespace vellum
