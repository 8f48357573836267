#include "MeshImporter_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "member_slots.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstddef>
#include <type_traits>

namespace vellum {
namespace {

using member_slots::slotOf;

static_assert(std::is_base_of_v<Mesh_RL, Mesh_RL_GL> && std::has_virtual_destructor_v<Mesh_RL>);
static_assert(std::is_base_of_v<MeshImporter_RL, MeshImporter_RL_GL> &&
              std::is_base_of_v<Service_RL<MeshImporter>, MeshImporter_RL>);
static_assert(sizeof(Service_RL<MeshImporter>) == sizeof(void*) &&
                  sizeof(MeshImporter_RL_GL) == 2 * sizeof(void*),
              "the table of virtual functions, and the importer");

template <class Class>
void expectMeshSlots() {
    using Name = VL_String const&;
    EXPECT_EQ((slotOf<Class, void()>(&Class::render)), 2U);
    EXPECT_EQ((slotOf<Class, void(Name)>(&Class::renderFacetedTextured)), 3U);
    EXPECT_EQ((slotOf<Class, void(Name)>(&Class::renderTextured)), 4U);
    EXPECT_EQ((slotOf<Class, void(MeshShading const&)>(&Class::render)), 5U);
    EXPECT_EQ((slotOf<Class, void() const>(&Class::renderFaceted)), 6U);
    EXPECT_EQ((slotOf<Class, void(float const&) const>(&Class::renderVertexNormals)), 7U);
    EXPECT_EQ((slotOf<Class, void(float const&) const>(&Class::renderFaceNormals)), 8U);
    EXPECT_EQ((slotOf<Class, void(Name, Name, float const&)>(&Class::renderFaceNormals)), 9U);
    EXPECT_EQ((slotOf<Class, void(Name, Name, float const&)>(&Class::renderVertexNormals)), 10U);
    EXPECT_EQ((slotOf<Class, void(unsigned int const&, float const&)>(&Class::renderNormals)), 11U);
    EXPECT_EQ((slotOf<Class, void()>(&Class::renderEdgesConnection)), 12U);
    EXPECT_EQ((slotOf<Class, void()>(&Class::renderEdgesUnconnected)), 13U);
    EXPECT_EQ((slotOf<Class, void(float const&)>(&Class::renderPoints)), 14U);
    EXPECT_EQ((slotOf<Class, void()>(&Class::renderEdges)), 15U);
    EXPECT_EQ((slotOf<Class, void(Color4<float> const&)>(&Class::renderWithEdges)), 16U);
    EXPECT_EQ((slotOf<Class, void(Color4<float> const&, bool const&)>(&Class::renderWithEdgesBlending)), 17U);
}

TEST(Mesh_RL_GL_slots_test, everyOperationStandsInItsSlot) {
    expectMeshSlots<Mesh_RL>();
    expectMeshSlots<Mesh_RL_GL>();
}

template <class Class>
void expectImporterSlots() {
    EXPECT_EQ((slotOf<Class, void()>(&Class::render)), 2U);
    EXPECT_EQ((slotOf<Class, void(unsigned int const&)>(&Class::renderNormals)), 3U);
}

TEST(MeshImporter_RL_GL_slots_test, everyOperationStandsInItsSlot) {
    expectImporterSlots<MeshImporter_RL>();
    expectImporterSlots<MeshImporter_RL_GL>();
}

void expectDestructorsFirst(void const* object, char const* completeName, char const* deletingName) {
    // By address: the complete destructor also goes by the name of the one for base classes.
    void* const complete = dlsym(RTLD_DEFAULT, completeName);
    void* const deleting = dlsym(RTLD_DEFAULT, deletingName);
    ASSERT_NE(complete, nullptr);
    ASSERT_NE(deleting, nullptr);
    EXPECT_EQ(member_slots::tableOf(object)[0], complete);
    EXPECT_EQ(member_slots::tableOf(object)[1], deleting);
}

TEST(Mesh_RL_GL_slots_test, firstTwoSlotsAreDestructors) {
    Mesh_RL_GL const renderer(nullptr, false);
    expectDestructorsFirst(&renderer, "_ZN6vellum10Mesh_RL_GLD1Ev", "_ZN6vellum10Mesh_RL_GLD0Ev");
    MeshImporter_RL_GL const preview(nullptr);
    expectDestructorsFirst(&preview, "_ZN6vellum18MeshImporter_RL_GLD1Ev",
                           "_ZN6vellum18MeshImporter_RL_GLD0Ev");
}

TEST(Mesh_RL_GL_slots_test, meshEffectAndBufferFlagComeFirst) {
    Mesh_RL_GL const renderer(nullptr, false);
    auto const* const start = reinterpret_cast<std::byte const*>(&renderer);
    EXPECT_EQ(reinterpret_cast<std::byte const*>(&renderer.mesh), start + sizeof(void*));
    EXPECT_EQ(reinterpret_cast<std::byte const*>(&renderer.shader), start + 2 * sizeof(void*));
    EXPECT_EQ(reinterpret_cast<std::byte const*>(&renderer.useBufferObjects), start + 3 * sizeof(void*));
}

}  // namespace
}  // namespace vellum
