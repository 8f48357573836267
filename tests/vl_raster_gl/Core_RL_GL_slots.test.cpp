#include "Core_RL_GL.h"
#include "member_slots.h"
#include "tests/support/build_facts.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdlib>
#include <limits>
#include <new>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// The order of the virtual operations is part of the interface: applications call the render layer through
// pointers to the abstract class, and may be built apart from this library. The table below names every slot.

namespace vellum {
namespace {

using member_slots::slotOf;

using Uint = unsigned int;
using Ulong = unsigned long;
using Vector2f = Vector2<float>;
using Vector3f = Vector3<float>;
using Vector3d = Vector3<double>;
using Color = Color4<float>;
using Colors3 = Tuple3<Color4<float>>;
using Colors4 = Tuple4<Color4<float>>;
using Corners = Tuple8<Vector3<float>>;
using Matrix4f = Matrix4<float>;
using Matrix4d = Matrix4<double>;
using Triangles = Array<Tuple3<unsigned int, unsigned int, unsigned int>>;
using Tree = GeometryTree<GeometryNode<Box3<float>>>;

enum Origin { OVERRIDDEN, BASE };  // implemented by Core_RL_GL, or left to Core_RL

struct Slot {
    std::size_t number;
    Origin origin;
    char const* operation;
    std::size_t inCore_RL;
    std::size_t inCore_RL_GL;
};

// The operation's type stands after its name: arguments, result and constness exactly; another does not
// compile.
#define VL_SLOT(number, origin, operation, ...)                                                              \
    Slot {                                                                                                   \
        number, origin, #operation " as " #__VA_ARGS__, slotOf<Core_RL, __VA_ARGS__>(&Core_RL::operation),   \
            slotOf<Core_RL_GL, __VA_ARGS__>(&Core_RL_GL::operation)                                          \
    }

// clang-format off
std::vector<Slot> const& slots() {
    static std::vector<Slot> const table{
        VL_SLOT(2, BASE, setCamera, void(Camera_RL*)),
        VL_SLOT(3, BASE, getCamera, Camera_RL*()),
        VL_SLOT(4, BASE, setArrowHeadLength, void(float const&)),
        VL_SLOT(5, OVERRIDDEN, setPointSize, float(float const&)),
        VL_SLOT(6, OVERRIDDEN, setLineWidth, void(float const&)),
        VL_SLOT(7, BASE, setZBias, void(bool)),
        VL_SLOT(8, OVERRIDDEN, isExtensionSupported, bool(char const*)),
        VL_SLOT(9, OVERRIDDEN, begin, void(Primitive::type)),
        VL_SLOT(10, OVERRIDDEN, end, void()),
        VL_SLOT(11, OVERRIDDEN, genBuffers, void(Ulong, Uint*)),
        VL_SLOT(12, OVERRIDDEN, deleteBuffers, void(Ulong, Uint*)),
        VL_SLOT(13, OVERRIDDEN, bindBuffer, void(BufferTarget::type, Uint)),
        VL_SLOT(14, OVERRIDDEN, bufferData, void(BufferTarget::type, Ulong, void*, BufferUsage::type)),
        VL_SLOT(15, OVERRIDDEN, bufferSubData, void(BufferTarget::type, void*, Ulong, void*)),
        VL_SLOT(16, OVERRIDDEN, enableClientState, void(ClientCapability::type)),
        VL_SLOT(17, OVERRIDDEN, enable, void(ClientCapability::type)),
        VL_SLOT(18, OVERRIDDEN, disableClientState, void(ClientCapability::type)),
        VL_SLOT(19, OVERRIDDEN, vertexPointer, void(int, DataType::type, Ulong, void*)),
        VL_SLOT(20, OVERRIDDEN, colorPointer, void(int, DataType::type, Ulong, void*)),
        VL_SLOT(21, OVERRIDDEN, drawElements, void(Primitive::type, Ulong, DataType::type, void*)),
        VL_SLOT(22, OVERRIDDEN, drawArrays, void(Primitive::type, Ulong, Ulong)),
        VL_SLOT(23, OVERRIDDEN, getTotalGpuMemory, Uint()),
        VL_SLOT(24, OVERRIDDEN, getFreeGpuMemory, Uint()),
        VL_SLOT(25, OVERRIDDEN, checkShaderSupport, bool() const),
        VL_SLOT(26, OVERRIDDEN, createShader, Uint(ShaderType::type)),
        VL_SLOT(27, OVERRIDDEN, shaderSource, void(Uint, Ulong, char const**, int*)),
        VL_SLOT(28, OVERRIDDEN, compileShader, void(Uint)),
        VL_SLOT(29, OVERRIDDEN, attachShader, void(Uint, Uint)),
        VL_SLOT(30, OVERRIDDEN, createProgram, Uint()),
        VL_SLOT(31, OVERRIDDEN, getAttribLocation, int(Uint, char*)),
        VL_SLOT(32, OVERRIDDEN, getUniformLocation, int(Uint, char*)),
        VL_SLOT(33, OVERRIDDEN, linkProgram, void(Uint)),
        VL_SLOT(34, OVERRIDDEN, useProgram, void(Uint)),
        VL_SLOT(35, OVERRIDDEN, checkShaderCompilationErrors, void(Uint, char const*)),
        VL_SLOT(36, OVERRIDDEN, checkProgramLinkageErrors, void(Uint, char const*, char const*)),
        VL_SLOT(37, OVERRIDDEN, programParameterI, void(Uint, ShaderParameterName::type, int)),
        VL_SLOT(38, OVERRIDDEN, detachShader, void(Uint, Uint)),
        VL_SLOT(39, OVERRIDDEN, deleteShader, void(Uint)),
        VL_SLOT(40, OVERRIDDEN, deleteProgram, void(Uint)),
        VL_SLOT(41, OVERRIDDEN, getError, bool(VL_String&, int&)),
        VL_SLOT(42, OVERRIDDEN, getError, bool(char const*, int)),
        VL_SLOT(43, OVERRIDDEN, uniform1f, void(int, float)),
        VL_SLOT(44, OVERRIDDEN, uniform3f, void(int, float, float, float)),
        VL_SLOT(45, OVERRIDDEN, hint, void(HintTarget::type, HintMode::type)),
        VL_SLOT(46, OVERRIDDEN, pointParameterfvEXT, void(PointParameterName::type, float*)),
        VL_SLOT(47, OVERRIDDEN, pointParameterfEXT, void(PointParameterName::type, float)),
        VL_SLOT(48, OVERRIDDEN, mapBuffer, void*(BufferTarget::type, BufferAccess::type)),
        VL_SLOT(49, OVERRIDDEN, unmapBuffer, void(BufferTarget::type)),
        VL_SLOT(50, OVERRIDDEN, getModelViewMatrix_asFloat, Matrix4f() const),
        VL_SLOT(51, OVERRIDDEN, getModelViewTransposedMatrix_asFloat, Matrix4f() const),
        VL_SLOT(52, OVERRIDDEN, enableLighting, void()),
        VL_SLOT(53, OVERRIDDEN, disableLighting, void()),
        VL_SLOT(54, OVERRIDDEN, enableLight_0, void()),
        VL_SLOT(55, OVERRIDDEN, disableLight_0, void()),
        VL_SLOT(56, OVERRIDDEN, enableLight_1, void()),
        VL_SLOT(57, OVERRIDDEN, disableLight_1, void()),
        VL_SLOT(58, OVERRIDDEN, enableColorMaterial, void()),
        VL_SLOT(59, OVERRIDDEN, disableColorMaterial, void()),
        VL_SLOT(60, OVERRIDDEN, setColor, void(Color const&)),
        VL_SLOT(61, OVERRIDDEN, setFillingFront, void(FillingMode const&)),
        VL_SLOT(62, OVERRIDDEN, setFillingBack, void(FillingMode const&)),
        VL_SLOT(63, OVERRIDDEN, setLineStipple, void(bool)),
        VL_SLOT(64, OVERRIDDEN, setBlending, void(BlendingMode const&)),
        VL_SLOT(65, OVERRIDDEN, setDepthTest, void(DepthtTestMode const&)),
        VL_SLOT(66, OVERRIDDEN, setCulling, void(CullingMode const&)),
        VL_SLOT(67, OVERRIDDEN, createTexture, Uint()),
        VL_SLOT(68, OVERRIDDEN, destroyTexture, void(Uint const&)),
        VL_SLOT(69, OVERRIDDEN, createTextures, void(Uint const&, Array<Uint>&)),
        VL_SLOT(70, OVERRIDDEN, destroyTextures, void(Array<Uint> const&)),
        VL_SLOT(71, OVERRIDDEN, setTransform, void(Matrix4d const&)),
        VL_SLOT(72, OVERRIDDEN, setTransform, void(Matrix4f const&)),
        VL_SLOT(73, OVERRIDDEN, pushTransform, void(Matrix4d const&)),
        VL_SLOT(74, OVERRIDDEN, pushTransform, void(Matrix4f const&)),
        VL_SLOT(75, OVERRIDDEN, popTransform, void()),
        VL_SLOT(76, OVERRIDDEN, pushTextureLuminance,
                void(Uint const&, Uint const&, Uint const&, bool const&, Array<float> const&)),
        VL_SLOT(77, OVERRIDDEN, popTextureLuminance, void(Uint const&)),
        VL_SLOT(78, OVERRIDDEN, loadTextureColor,
                void(Uint const&, Uint const&, unsigned char const*, Uint&, TextureClampingMode const&)),
        VL_SLOT(79, OVERRIDDEN, loadTextureColor,
                void(Uint const&, Uint const&, int const&, int const&, void const*, Uint&,
                     TextureClampingMode const&)),
        VL_SLOT(80, OVERRIDDEN, unLoadTextureColor, void(Uint const&)),
        VL_SLOT(81, OVERRIDDEN, activateTextureColor, void(Uint const&)),
        VL_SLOT(82, OVERRIDDEN, disableTextureColor, void()),
        VL_SLOT(83, OVERRIDDEN, queueUnloadTextureColor, void(Uint&)),
        VL_SLOT(84, OVERRIDDEN, destroy_RL, void()),
        VL_SLOT(85, OVERRIDDEN, loadName, void(Uint)),
        VL_SLOT(86, OVERRIDDEN, renderStroke3, void(Vector3f const&, Vector3f const&, float const&)),
        VL_SLOT(87, OVERRIDDEN, renderSegment2, void(Vector2f const&, Vector2f const&)),
        VL_SLOT(88, OVERRIDDEN, renderPlane3, void(Plane3<float> const&, float const&, Uint const&)),
        VL_SLOT(89, OVERRIDDEN, renderSegment3, void(Vector3f const&, Vector3f const&)),
        VL_SLOT(90, OVERRIDDEN, renderSegmentStipple3, void(Vector3f const&, Vector3f const&)),
        VL_SLOT(91, OVERRIDDEN, renderBox3, void(Uint const&, Color const&, float const&)),
        VL_SLOT(92, OVERRIDDEN, renderAxesBox3,
                void(Uint const&, Uint const&, Uint const&, Colors3 const&, float const&)),
        VL_SLOT(93, OVERRIDDEN, renderAxesBox3,
                void(Uint const&, Uint const&, Uint const&, Uint const&, Colors4 const&, float const&)),
        VL_SLOT(94, OVERRIDDEN, renderAxisBox3, void(VL_AXIS const&, float const&)),
        VL_SLOT(95, OVERRIDDEN, renderAxisBox3, void(VL_AXIS const&, Uint const&, float const&)),
        VL_SLOT(96, OVERRIDDEN, renderAxesCircleStipple3,
                void(Uint const&, Uint const&, Uint const&, Colors3 const&, float const&)),
        VL_SLOT(97, OVERRIDDEN, renderAxesCircle3,
                void(Uint const&, Uint const&, Uint const&, Colors3 const&, float const&)),
        VL_SLOT(98, OVERRIDDEN, renderAxesCircleCulled3,
                void(Uint const&, Uint const&, Uint const&, Vector3f const&, Matrix4f const&, float,
                     Colors3 const&, float const&)),
        VL_SLOT(99, OVERRIDDEN, renderAxesCircleCulledStipple3,
                void(Uint const&, Uint const&, Uint const&, Vector3f const&, Matrix4f const&, float,
                     Colors3 const&, float const&)),
        VL_SLOT(100, OVERRIDDEN, renderAxisCircle3, void(VL_AXIS const&, float const&)),
        VL_SLOT(101, OVERRIDDEN, renderAxisCircleCulled3,
                void(VL_AXIS const&, Uint const&, Vector3f const&, Matrix4f const&, float, float const&)),
        VL_SLOT(102, OVERRIDDEN, renderAxisCircleCulledStipple3,
                void(VL_AXIS const&, Uint const&, Vector3f const&, Matrix4f const&, float, float const&)),
        VL_SLOT(103, OVERRIDDEN, renderAxisCircle3, void(VL_AXIS const&, Uint const&, float const&)),
        VL_SLOT(104, OVERRIDDEN, renderAxisCircle3NoPicking, void(VL_AXIS const&, float const&)),
        VL_SLOT(105, OVERRIDDEN, renderAxesCircleTape3,
                void(Uint const&, Uint const&, Uint const&, Colors3 const&, float const&, float const&)),
        VL_SLOT(106, OVERRIDDEN, renderAxisCircleStipple3, void(VL_AXIS const&, float const&)),
        VL_SLOT(107, OVERRIDDEN, renderAxisCircleTape3, void(VL_AXIS const&, float const&, float const&)),
        VL_SLOT(108, OVERRIDDEN, renderCircle3, void(float const&)),
        VL_SLOT(109, OVERRIDDEN, renderCircleCameraFacing3,
                void(Matrix4f const&, Matrix3<float> const&, float, Color const&, float const&)),
        VL_SLOT(110, OVERRIDDEN, renderQuad3, void(Uint const&)),
        VL_SLOT(111, OVERRIDDEN, renderRhombus3, void(Uint const&)),
        VL_SLOT(112, OVERRIDDEN, renderRhombus3, void()),
        VL_SLOT(113, OVERRIDDEN, renderCircleCulledStipple3,
                void(Vector3f const&, Matrix4f const&, float const&)),
        VL_SLOT(114, OVERRIDDEN, renderCircleCulled3, void(Vector3f const&, Matrix4f const&, float const&)),
        VL_SLOT(115, OVERRIDDEN, renderCircleTape3, void(float const&, float const&)),
        VL_SLOT(116, OVERRIDDEN, renderAxesArrow3,
                void(Uint const&, Uint const&, Uint const&, Colors3 const&, float const&)),
        VL_SLOT(117, OVERRIDDEN, renderAxesArrowStipple3, void(Colors3 const&, float const&)),
        VL_SLOT(118, OVERRIDDEN, renderAxesArrowStipple3,
                void(Uint const&, Uint const&, Uint const&, Colors3 const&, float const&)),
        VL_SLOT(119, OVERRIDDEN, renderAxesPlane3,
                void(Uint const&, Uint const&, Uint const&, Colors3 const&, float const&)),
        VL_SLOT(120, OVERRIDDEN, renderAxisArrow3, void(VL_AXIS const&, Uint const&, float const&)),
        VL_SLOT(121, OVERRIDDEN, renderAxisArrow3NoPicking, void(VL_AXIS const&, float const&)),
        VL_SLOT(122, OVERRIDDEN, renderAxisArrowStipple3, void(VL_AXIS const&, Uint const&, float const&)),
        VL_SLOT(123, OVERRIDDEN, renderUnitArrow3, void()),
        VL_SLOT(124, OVERRIDDEN, renderEllipse3, void(Vector3f const&, Vector3f const&, Vector3f const&)),
        VL_SLOT(125, OVERRIDDEN, renderEllipse3_XZ, void(Vector3f const&, float const&, float const&)),
        VL_SLOT(126, OVERRIDDEN, renderEllipse3_XY, void(Vector3f const&, float const&, float const&)),
        VL_SLOT(127, OVERRIDDEN, renderEllipse3_YZ, void(Vector3f const&, float const&, float const&)),
        VL_SLOT(128, OVERRIDDEN, renderArrow3,
                void(Vector3f const&, Vector3f const&, float const&, bool const&)),
        VL_SLOT(129, BASE, renderArrow3,
                void(Vector3f const&, Vector3f const&, float const&, Uint const&, bool const&)),
        VL_SLOT(130, OVERRIDDEN, createBuffers_forRenderArrow3,
                void(Array<Vector3f> const&, Array<Vector3f> const&, Array<Color> const&, float,
                     Array<Vector3f>&, Array<Uint>&, Array<Uint>&, Array<Uint>&, Array<Color>&)),
        VL_SLOT(131, OVERRIDDEN, renderArrow3_usingBuffers,
                void(Array<Vector3f> const&, Array<Uint> const&, Array<Uint> const&, Array<Uint> const&,
                     Array<Color> const&)),
        VL_SLOT(132, OVERRIDDEN, renderArrow2, void(Vector2f const&, Vector2f const&, float const&)),
        VL_SLOT(133, BASE, renderArrow2,
                void(Vector2f const&, Vector2f const&, float const&, Uint const&)),
        VL_SLOT(134, OVERRIDDEN, renderTriangle, void(Vector3f const&, Vector3f const&, Vector3f const&)),
        VL_SLOT(135, OVERRIDDEN, renderTriangle,
                void(Vector3f const&, Vector3f const&, Vector3f const&, Vector3f const&, Vector3f const&,
                     Vector3f const&)),
        VL_SLOT(136, OVERRIDDEN, renderTriangleOptimized,
                void(Vector3f const&, Vector3f const&, Vector3f const&)),
        VL_SLOT(137, OVERRIDDEN, renderQuad3,
                void(Vector3f const&, Vector3f const&, Vector3f const&, Vector3f const&)),
        VL_SLOT(138, OVERRIDDEN, renderPoint3, void(Vector3f const&)),
        VL_SLOT(139, BASE, renderPoint3, void(Vector3f const&, Uint const&)),
        VL_SLOT(140, OVERRIDDEN, renderPoint3_Begin, void()),
        VL_SLOT(141, OVERRIDDEN, renderPoint3_End, void()),
        VL_SLOT(142, OVERRIDDEN, renderPoint3_scoped, void(Vector3f const&)),
        VL_SLOT(143, BASE, renderPoint3_scoped, void(Vector3f const&, Uint const&)),
        VL_SLOT(144, OVERRIDDEN, renderPoint2, void(Vector2f const&)),
        VL_SLOT(145, BASE, renderPoint2, void(Vector2f const&, Uint const&)),
        VL_SLOT(146, OVERRIDDEN, renderCross3, void()),
        VL_SLOT(147, BASE, renderBox2, void(Vector2f const&, float const&)),
        VL_SLOT(148, OVERRIDDEN, renderBox3, void(Vector3f const&, float const&)),
        VL_SLOT(149, BASE, renderSphere, void(Vector3f const&, float const&)),
        VL_SLOT(150, OVERRIDDEN, renderBox3Points_asPoints, void(Box3Points<float> const&)),
        VL_SLOT(151, OVERRIDDEN, renderBox3Points_asPoints, void(Box3Points<double> const&)),
        VL_SLOT(152, OVERRIDDEN, renderBox3Points_asPoints, void(Box3Points_ex<float> const&)),
        VL_SLOT(153, OVERRIDDEN, renderBox3Points_asPoints, void(Box3Points_ex<double> const&)),
        VL_SLOT(154, OVERRIDDEN, render, void(Box3<float> const&, bool const&) const),
        VL_SLOT(155, OVERRIDDEN, render, void(Box3<float> const&, Corners const&, bool const&) const),
        VL_SLOT(156, OVERRIDDEN, render, void(Box2<float> const&, bool const&)),
        VL_SLOT(157, OVERRIDDEN, render, void(Obb3<float> const&, bool const&)),
        VL_SLOT(158, BASE, renderTricubicVoxel, void(TricubicVoxel<float> const&)),
        VL_SLOT(159, BASE, renderTricubicVoxel, void(TricubicVoxel<double> const&)),
        VL_SLOT(160, BASE, renderPlane3System,
                void(Plane3System<float> const&, float const&, Uint const&)),
        VL_SLOT(161, BASE, renderPlane3System,
                void(Plane3System<double> const&, double const&, Uint const&)),
        VL_SLOT(162, BASE, renderTetrahedron, void(Vector3f const&, float const&)),
        VL_SLOT(163, BASE, renderTree, void(Tree&)),
        VL_SLOT(164, BASE, renderTetrahedron, void(Vector3d const&, double const&)),
        VL_SLOT(165, OVERRIDDEN, render, void(Box2<double> const&, bool const&)),
        VL_SLOT(166, OVERRIDDEN, render, void(Box3<double> const&, bool const&) const),
        VL_SLOT(167, OVERRIDDEN, render, void(Box3<double> const&, Corners const&, bool const&) const),
        VL_SLOT(168, OVERRIDDEN, render, void(Obb3<double> const&, bool const&)),
        VL_SLOT(169, OVERRIDDEN, render, void(Array<Vector3d> const&, Triangles const&)),
        VL_SLOT(170, BASE, render, void(Array<Vector3f> const&, Triangles const&)),
        VL_SLOT(171, BASE, renderNormals, void(Array<Vector3d> const&, Triangles const&, float const&)),
        VL_SLOT(172, OVERRIDDEN, render,
                void(Array<Vector3f> const&, Triangles const&, Array<Vector3f> const&,
                     Array<Color> const&)),
        VL_SLOT(173, OVERRIDDEN, render,
                void(Array<Vector3d> const&, Triangles const&, Array<Vector3f> const&,
                     Array<Color> const&)),
        VL_SLOT(174, OVERRIDDEN, getCurrentViewportCoords, Tuple4<Uint>() const),
        VL_SLOT(175, OVERRIDDEN, pushViewportOrtho, void(Tuple4<Uint> const&, Tuple4<float> const&)),
        VL_SLOT(176, OVERRIDDEN, popViewportOrtho, void()),
        VL_SLOT(177, OVERRIDDEN, renderAxisArrowStipple3, void(VL_AXIS const&, float const&)),
    };
    return table;
}
// clang-format on

#undef VL_SLOT

constexpr std::size_t SLOT_COUNT = 178;
constexpr std::size_t FIRST_AFTER_DESTRUCTOR = 2;

// Results, as a caller sees them.
template <class Class>
constexpr bool hasResults() {
    using Layer = Class&;
    static_assert(std::is_same_v<decltype(std::declval<Layer>().setPointSize(1.0F)), float>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().getCamera()), Camera_RL*>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().isExtensionSupported("")), bool>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().getTotalGpuMemory()), Uint>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().getFreeGpuMemory()), Uint>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().checkShaderSupport()), bool>);
    static_assert(
        std::is_same_v<decltype(std::declval<Layer>().createShader(ShaderType::VERTEX_SHADER)), Uint>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().createProgram()), Uint>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().getAttribLocation(1, nullptr)), int>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().getUniformLocation(1, nullptr)), int>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().getError(std::declval<VL_String&>(),
                                                                         std::declval<int&>())),
                                 bool>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().getError("", 1)), bool>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().mapBuffer(BufferTarget::ARRAY_BUFFER,
                                                                          BufferAccess::READ_WRITE)),
                                 void*>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().getModelViewMatrix_asFloat()), Matrix4f>);
    static_assert(
        std::is_same_v<decltype(std::declval<Layer>().getModelViewTransposedMatrix_asFloat()), Matrix4f>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().createTexture()), Uint>);
    static_assert(std::is_same_v<decltype(std::declval<Layer>().getCurrentViewportCoords()), Tuple4<Uint>>);
    return true;
}

static_assert(hasResults<Core_RL>() && hasResults<Core_RL_GL>());

// Base classes, copying and construction.
static_assert(std::is_base_of_v<Core_RL, Core_RL_GL> && std::is_convertible_v<Core_RL_GL*, Core_RL*>);
static_assert(std::has_virtual_destructor_v<Core_RL> && std::has_virtual_destructor_v<Core_RL_GL>);
static_assert(sizeof(Core_RL_GL) == sizeof(Core_RL) + sizeof(std::vector<std::string>),
              "the extension list is the only member added");

/// The name of the function that stands in a slot, mangled; empty when no exported function starts there.
std::string functionIn(Core_RL const& layer, std::size_t const& slot) {
    void* const address = member_slots::tableOf(&layer)[slot];
    Dl_info information{};
    bool const found = dladdr(address, &information) != 0 && information.dli_sname != nullptr &&
                       information.dli_saddr == address;
    return found ? information.dli_sname : std::string();
}

TEST(Core_RL_GL_slots_test, everySlotIsNamedOnce) {
    std::set<std::size_t> numbers;
    for (Slot const& slot : slots()) {
        EXPECT_TRUE(numbers.insert(slot.number).second) << slot.number << " stands twice";
    }
    EXPECT_EQ(numbers.size(), SLOT_COUNT - FIRST_AFTER_DESTRUCTOR);
    EXPECT_EQ(*numbers.begin(), FIRST_AFTER_DESTRUCTOR);
    EXPECT_EQ(*numbers.rbegin(), SLOT_COUNT - 1);
}

TEST(Core_RL_GL_slots_test, everyOperationOfAbstractClassStandsInItsSlot) {
    for (Slot const& slot : slots()) {
        EXPECT_EQ(slot.inCore_RL, slot.number) << slot.operation;
    }
}

TEST(Core_RL_GL_slots_test, glClassAgreesWithAbstractClass) {
    for (Slot const& slot : slots()) {
        EXPECT_EQ(slot.inCore_RL_GL, slot.number) << slot.operation;
    }
}

TEST(Core_RL_GL_slots_test, firstTwoSlotsAreDestructors) {
    // By address: the complete destructor also goes by the name of the one for base classes.
    Core_RL_GL const layer;
    void* const complete = dlsym(RTLD_DEFAULT, "_ZN6vellum10Core_RL_GLD1Ev");
    void* const deleting = dlsym(RTLD_DEFAULT, "_ZN6vellum10Core_RL_GLD0Ev");
    ASSERT_NE(complete, nullptr);
    ASSERT_NE(deleting, nullptr);
    EXPECT_EQ(member_slots::tableOf(&layer)[0], complete);
    EXPECT_EQ(member_slots::tableOf(&layer)[1], deleting);
}

TEST(Core_RL_GL_slots_test, slotsMarkedBaseKeepBaseAndNoOthersDo) {
    Core_RL_GL const layer;
    for (Slot const& slot : slots()) {
        std::string const name = functionIn(layer, slot.number);
        // _ZN or _ZNK, the namespace, then the class.
        bool const isBase = name.find("N6vellum7Core_RL") != std::string::npos ||
                            name.find("NK6vellum7Core_RL") != std::string::npos;
        bool const isOverride = name.find("N6vellum10Core_RL_GL") != std::string::npos ||
                                name.find("NK6vellum10Core_RL_GL") != std::string::npos;
        EXPECT_EQ(isBase, slot.origin == BASE) << slot.operation << " is " << name;
        EXPECT_EQ(isOverride, slot.origin == OVERRIDDEN) << slot.operation << " is " << name;
    }
}

TEST(Core_RL_GL_slots_test, readingExtensionsIsNotVirtual) {
    EXPECT_EQ((slotOf<Core_RL_GL, void()>(&Core_RL_GL::fillOpenGLExtensions)), member_slots::NOT_VIRTUAL);
}

// == Life, as far as it needs no OpenGL ==

/// The render layer of the process as it was before, whatever a test constructs.
class Core_RL_GL_life_test : public testing::Test {
protected:
    ~Core_RL_GL_life_test() override { VL_Raster = former; }

private:
    Core_RL* former = VL_Raster;
};

TEST_F(Core_RL_GL_life_test, constructorBecomesRenderLayer) {
    VL_Raster = nullptr;
    Core_RL_GL layer;
    EXPECT_EQ(VL_Raster, &layer);
}

TEST_F(Core_RL_GL_life_test, laterInstanceReplacesEarlierOne) {
    Core_RL_GL first;
    Core_RL_GL second;
    EXPECT_EQ(VL_Raster, &second);
}

TEST_F(Core_RL_GL_life_test, deliberatelyDestructorLeavesRenderLayerAlone) {
    Core_RL_GL first;
    Core_RL* second = new Core_RL_GL;
    delete second;
    EXPECT_EQ(VL_Raster, second) << "the pointer still has the value of the destroyed instance";

    Core_RL* third = new Core_RL_GL;
    VL_Raster = &first;
    delete third;
    EXPECT_EQ(VL_Raster, &first) << "nor does an instance that is not the render layer clear it";
}

// With the address sanitizer a pair that does not match ends the program; without it these show that the
// class has operators of its own.
TEST_F(Core_RL_GL_life_test, classAllocatesWithMalloc) {
    auto* const layer = new Core_RL_GL;
    void* const volatile memory = layer;  // volatile: the compiler warns of pairs that it takes for a mistake
    layer->~Core_RL_GL();
    std::free(memory);

    using Allocate = void* (*)(std::size_t);
    EXPECT_NE(static_cast<Allocate>(&Core_RL_GL::operator new), static_cast<Allocate>(&::operator new));
}

TEST_F(Core_RL_GL_life_test, deletingDestructorReleasesWithFree) {
    void* const memory = std::malloc(sizeof(Core_RL_GL));
    ASSERT_NE(memory, nullptr);
    Core_RL* const layer = new (memory) Core_RL_GL;
    delete layer;

    using Release = void (*)(void*) noexcept;
    EXPECT_NE(static_cast<Release>(&Core_RL_GL::operator delete), static_cast<Release>(&::operator delete));
}

TEST_F(Core_RL_GL_life_test, memoryThatCannotBeHadThrows) {
    if (isAddressSanitized() || isThreadSanitized()) {
        GTEST_SKIP() << "The sanitizers end the program at such a request.";
    }
    // Volatile: the compiler would see that the request is too large.
    std::size_t const volatile tooMuch = std::numeric_limits<std::ptrdiff_t>::max();
    EXPECT_THROW(Core_RL_GL::operator delete(Core_RL_GL::operator new(tooMuch)), std::bad_alloc);
}

}  // namespace
}  // namespace vellum
