#include "foundation/geometry/Box2.h"
#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Box3Points.h"
#include "foundation/geometry/Box3Points_ex.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Matrix3.h"
#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Obb3.h"
#include "foundation/geometry/Plane3.h"
#include "foundation/geometry/Tuple2.h"
#include "foundation/geometry/Tuple3.h"
#include "foundation/geometry/Tuple4.h"
#include "foundation/geometry/Tuple8.h"
#include "foundation/geometry/VL_AXIS.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/raster/RenderModes.h"
#include "foundation/raster/gl_enumerations.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>
#include <vector>

// Values are passed to OpenGL as raw memory and between libraries by value, so their layout is part of the
// interface.

namespace vellum {
namespace {

template <class T>
constexpr bool isPlain() {
    return std::is_aggregate_v<T> && std::is_trivially_copyable_v<T> && std::is_standard_layout_v<T>;
}

template <class Value, class... Members>
std::vector<std::ptrdiff_t> offsets(Value const& value, Members const&... members) {
    auto const* const start = reinterpret_cast<unsigned char const*>(&value);
    return {(reinterpret_cast<unsigned char const*>(&members) - start)...};
}

using Offsets = std::vector<std::ptrdiff_t>;

static_assert(sizeof(float) == 4 && sizeof(double) == 8 && sizeof(unsigned int) == 4 && sizeof(bool) == 1);

// Initialization in order, and no further element.
template <class T>
void expectVectors() {
    constexpr auto SIZE = static_cast<std::ptrdiff_t>(sizeof(T));

    static_assert(isPlain<Vector2<T>>() && sizeof(Vector2<T>) == 2 * sizeof(T));
    Vector2<T> const v2{1, 2};
    EXPECT_EQ(offsets(v2, v2.x, v2.y), (Offsets{0, SIZE}));
    EXPECT_EQ(v2.x, T(1));
    EXPECT_EQ(v2.y, T(2));

    static_assert(isPlain<Vector3<T>>() && sizeof(Vector3<T>) == 3 * sizeof(T));
    Vector3<T> const v3{1, 2, 3};
    EXPECT_EQ(offsets(v3, v3.x, v3.y, v3.z), (Offsets{0, SIZE, 2 * SIZE}));
    EXPECT_EQ(v3.z, T(3));
}

template <class T>
void expectBoxes() {
    constexpr auto SIZE = static_cast<std::ptrdiff_t>(sizeof(T));

    static_assert(isPlain<Box2<T>>() && sizeof(Box2<T>) == 4 * sizeof(T));
    Box2<T> const box2{{1, 2}, {3, 4}};
    EXPECT_EQ(offsets(box2, box2.min, box2.max), (Offsets{0, 2 * SIZE}));

    static_assert(isPlain<Box3<T>>() && sizeof(Box3<T>) == 6 * sizeof(T));
    Box3<T> const box3{{1, 2, 3}, {4, 5, 6}};
    EXPECT_EQ(offsets(box3, box3.min, box3.max), (Offsets{0, 3 * SIZE}));

    static_assert(isPlain<Obb3<T>>() && sizeof(Obb3<T>) == 15 * sizeof(T));
    Obb3<T> const obb{{1, 0, 0}, 1, {0, 1, 0}, 2, {0, 0, 1}, 3, {4, 5, 6}};
    EXPECT_EQ(
        offsets(obb, obb.axis0, obb.extent0, obb.axis1, obb.extent1, obb.axis2, obb.extent2, obb.centre),
        (Offsets{0, 3 * SIZE, 4 * SIZE, 7 * SIZE, 8 * SIZE, 11 * SIZE, 12 * SIZE}));
    EXPECT_EQ(obb.extent2, T(3));
    EXPECT_EQ(obb.centre.x, T(4));

    static_assert(isPlain<Plane3<T>>() && sizeof(Plane3<T>) == 4 * sizeof(T));
    Plane3<T> const plane{{1, 2, 3}, 4};
    EXPECT_EQ(offsets(plane, plane.n, plane.d), (Offsets{0, 3 * SIZE}));
}

template <class Points>
void expectPoints() {
    static_assert(isPlain<Points>());
    Points const points{{2, 3, 4}, {1, 2, 3}, {5, 6, 7}};
    static_assert(std::is_same_v<std::remove_const_t<decltype(points.count)>, Tuple3<unsigned int>>);
    EXPECT_EQ(points.count.e2, 4U);
    EXPECT_EQ(points.origin.y, 2);
    EXPECT_EQ(points.step.z, 7);
}

// == Value types ==

TEST(layout_test, vectorsArePackedInOrder) {
    expectVectors<float>();
    expectVectors<double>();
}

TEST(layout_test, arraysOfVectorsHaveNoGaps) {
    Vector3<float> const floats[2]{};
    EXPECT_EQ(&floats[1].x - &floats[0].x, 3);
    Vector3<double> const doubles[2]{};
    EXPECT_EQ(&doubles[1].x - &doubles[0].x, 3);
}

TEST(layout_test, boxesArePackedInOrder) {
    expectBoxes<float>();
    expectBoxes<double>();
}

TEST(layout_test, latticesHaveCountOriginAndStep) {
    expectPoints<Box3Points<float>>();
    expectPoints<Box3Points<double>>();
    expectPoints<Box3Points_ex<float>>();
    expectPoints<Box3Points_ex<double>>();
}

TEST(layout_test, colorsAreRedGreenBlueAlpha) {
    static_assert(isPlain<Color4<float>>() && sizeof(Color4<float>) == 16);
    Color4<float> const color{0.1F, 0.2F, 0.3F, 0.4F};
    EXPECT_EQ(offsets(color, color.r, color.g, color.b, color.a), (Offsets{0, 4, 8, 12}));
    EXPECT_EQ(color.a, 0.4F);
}

TEST(layout_test, tuplesArePackedInOrder) {
    using Pair = Tuple2<unsigned int>;
    static_assert(isPlain<Pair>() && sizeof(Pair) == 8);
    Pair const pair{1, 2};
    EXPECT_EQ(offsets(pair, pair.e0, pair.e1), (Offsets{0, 4}));

    using Triangle = Tuple3<unsigned int, unsigned int, unsigned int>;
    static_assert(isPlain<Triangle>() && sizeof(Triangle) == 12);
    static_assert(std::is_same_v<Triangle, Tuple3<unsigned int>>);
    Triangle const triangle{1, 2, 3};
    EXPECT_EQ(offsets(triangle, triangle.e0, triangle.e1, triangle.e2), (Offsets{0, 4, 8}));

    using Viewport = Tuple4<unsigned int>;
    static_assert(isPlain<Viewport>() && sizeof(Viewport) == 16);
    Viewport const viewport{1, 2, 3, 4};
    EXPECT_EQ(offsets(viewport, viewport.e0, viewport.e1, viewport.e2, viewport.e3), (Offsets{0, 4, 8, 12}));
    static_assert(isPlain<Tuple4<float>>() && sizeof(Tuple4<float>) == 16);

    using Colors = Tuple3<Color4<float>>;
    static_assert(isPlain<Colors>() && sizeof(Colors) == 48);
    Colors const colors{{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}};
    EXPECT_EQ(offsets(colors, colors.e0, colors.e1, colors.e2), (Offsets{0, 16, 32}));

    using Corners = Tuple8<Vector3<float>>;
    static_assert(isPlain<Corners>() && sizeof(Corners) == 96);
    Corners const c{};
    EXPECT_EQ(offsets(c, c.e0, c.e1, c.e2, c.e3, c.e4, c.e5, c.e6, c.e7),
              (Offsets{0, 12, 24, 36, 48, 60, 72, 84}));
}

TEST(layout_test, elementsOfATupleMayHaveDifferentTypes) {
    Tuple2<unsigned char, double> const pair{1, 2.5};
    EXPECT_EQ(pair.e1, 2.5);
    Tuple3<float, unsigned int, unsigned char> const triple{1.5F, 2, 3};
    EXPECT_EQ(triple.e0, 1.5F);
    EXPECT_EQ(triple.e2, 3);
}

TEST(layout_test, matricesAreTheirElements) {
    static_assert(isPlain<Matrix3<float>>() && sizeof(Matrix3<float>) == 36);
    static_assert(isPlain<Matrix3<double>>() && sizeof(Matrix3<double>) == 72);
    static_assert(isPlain<Matrix4<float>>() && sizeof(Matrix4<float>) == 64);
    static_assert(isPlain<Matrix4<double>>() && sizeof(Matrix4<double>) == 128);
    static_assert(std::extent_v<decltype(Matrix4<float>::e)> == 16);
    Matrix4<float> const matrix{{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}};
    EXPECT_EQ(offsets(matrix, matrix.e[0], matrix.e[15]), (Offsets{0, 60}));
    EXPECT_EQ(matrix.e[12], 12.0F);
}

TEST(layout_test, theTranslationOfAMatrixIsInElementsTwelveToFourteen) {
    Matrix4<double> a = Matrix4<double>::identity();
    Matrix4<double> b = Matrix4<double>::identity();
    a.e[12] = 1;
    a.e[13] = 2;
    a.e[14] = 3;
    b.e[0] = 2;  // twice as wide, first
    b.e[12] = 10;
    Matrix4<double> const product = a * b;
    EXPECT_EQ(product.e[0], 2.0);
    EXPECT_EQ(product.e[12], 11.0);
    EXPECT_EQ(product.e[13], 2.0);
    EXPECT_EQ(product.e[14], 3.0);
    EXPECT_EQ(product.e[15], 1.0);
    // In the other order the translation is scaled as well.
    EXPECT_EQ((b * a).e[12], 12.0);
}

// == Render modes ==

TEST(layout_test, modesAre32BitNumbers) {
    static_assert(sizeof(FillingMode) == 4 && sizeof(BlendingMode) == 4);
    static_assert(sizeof(TextureClampingMode) == 4 && sizeof(VL_AXIS) == 4);
    EXPECT_EQ(FILLING_SOLID, 0U);
    EXPECT_EQ(BLENDING_OFF, 0U);
    EXPECT_EQ(BLENDING_ALPHA, 1U);
    EXPECT_EQ(TEXTURE_REPEAT, 0U);
    EXPECT_EQ(TEXTURE_CLAMP_TO_BORDER, 1U);
    EXPECT_EQ(TEXTURE_CLAMPING_WITHOUT_MEANING, 2U);
    EXPECT_EQ(TEXTURE_CLAMP, 3U);
    EXPECT_EQ(VL_AXIS_X, 0U);
    EXPECT_EQ(VL_AXIS_Y, 1U);
    EXPECT_EQ(VL_AXIS_Z, 2U);
}

TEST(layout_test, anyNumberConvertsToAMode) {
    EXPECT_EQ(FillingMode(7), 7U);
    EXPECT_EQ(BlendingMode(0xFFFFFFFF), 0xFFFFFFFFU);
    EXPECT_EQ(TextureClampingMode(9), 9U);
    EXPECT_EQ(VL_AXIS(1000), 1000U);
}

TEST(layout_test, depthTestIsA32BitModeThenABool) {
    static_assert(isPlain<DepthtTestMode>() && sizeof(DepthtTestMode) == 8);
    static_assert(sizeof(DepthtTestMode::mode) == 4 && std::is_same_v<decltype(DepthtTestMode::write), bool>);
    DepthtTestMode const mode{7, true};
    EXPECT_EQ(offsets(mode, mode.mode, mode.write), (Offsets{0, 4}));
    EXPECT_EQ(mode.mode, 7U);
    EXPECT_TRUE(mode.write);
}

TEST(layout_test, depthModesHaveTheirValues) {
    EXPECT_EQ(DEPTH_ALWAYS, 0U);
    EXPECT_EQ(DEPTH_TEST_OFF, 1U);
    EXPECT_EQ(DEPTH_LESS, 2U);
    EXPECT_EQ(DEPTH_EQUAL, 3U);
    EXPECT_EQ(DEPTH_LESS_OR_EQUAL, 4U);
    EXPECT_EQ(DEPTH_GREATER, 5U);
    EXPECT_EQ(DEPTH_NOT_EQUAL, 6U);
    EXPECT_EQ(DEPTH_GREATER_OR_EQUAL, 7U);
}

TEST(layout_test, cullingIsTwoBools) {
    static_assert(isPlain<CullingMode>() && sizeof(CullingMode) == 2);
    CullingMode const mode{true, false};
    EXPECT_EQ(offsets(mode, mode.enabled, mode.back), (Offsets{0, 1}));
    EXPECT_TRUE(mode.enabled);
    EXPECT_FALSE(mode.back);
}

// == Numbers passed to OpenGL ==

TEST(layout_test, primitiveValuesAreThoseOfOpenGL) {
    static_assert(sizeof(Primitive::type) == 4);
    EXPECT_EQ(Primitive::POINTS, 0x0000U);
    EXPECT_EQ(Primitive::LINES, 0x0001U);
    EXPECT_EQ(Primitive::LINE_LOOP, 0x0002U);
    EXPECT_EQ(Primitive::LINE_STRIP, 0x0003U);
    EXPECT_EQ(Primitive::TRIANGLES, 0x0004U);
    EXPECT_EQ(Primitive::TRIANGLE_STRIP, 0x0005U);
    EXPECT_EQ(Primitive::TRIANGLE_FAN, 0x0006U);
    EXPECT_EQ(Primitive::QUADS, 0x0007U);
    EXPECT_EQ(Primitive::QUAD_STRIP, 0x0008U);
    EXPECT_EQ(Primitive::POLYGON, 0x0009U);
    EXPECT_EQ(Primitive::type(0x9999), 0x9999U) << "any GL value converts";
}

TEST(layout_test, bufferTargetValuesAreThoseOfOpenGL) {
    static_assert(sizeof(BufferTarget::type) == 4);
    EXPECT_EQ(BufferTarget::ARRAY_BUFFER, 0x8892U);
    EXPECT_EQ(BufferTarget::ELEMENT_ARRAY_BUFFER, 0x8893U);
    EXPECT_EQ(BufferTarget::PIXEL_PACK_BUFFER, 0x88EBU);
    EXPECT_EQ(BufferTarget::PIXEL_UNPACK_BUFFER, 0x88ECU);
    EXPECT_EQ(BufferTarget::type(0x9999), 0x9999U) << "any GL value converts";
}

TEST(layout_test, bufferUsageValuesAreThoseOfOpenGL) {
    static_assert(sizeof(BufferUsage::type) == 4);
    EXPECT_EQ(BufferUsage::STREAM_DRAW, 0x88E0U);
    EXPECT_EQ(BufferUsage::STREAM_READ, 0x88E1U);
    EXPECT_EQ(BufferUsage::STREAM_COPY, 0x88E2U);
    EXPECT_EQ(BufferUsage::STATIC_DRAW, 0x88E4U);
    EXPECT_EQ(BufferUsage::STATIC_READ, 0x88E5U);
    EXPECT_EQ(BufferUsage::STATIC_COPY, 0x88E6U);
    EXPECT_EQ(BufferUsage::DYNAMIC_DRAW, 0x88E8U);
    EXPECT_EQ(BufferUsage::DYNAMIC_READ, 0x88E9U);
    EXPECT_EQ(BufferUsage::DYNAMIC_COPY, 0x88EAU);
    EXPECT_EQ(BufferUsage::type(0x9999), 0x9999U) << "any GL value converts";
}

TEST(layout_test, bufferAccessValuesAreThoseOfOpenGL) {
    static_assert(sizeof(BufferAccess::type) == 4);
    EXPECT_EQ(BufferAccess::READ_ONLY, 0x88B8U);
    EXPECT_EQ(BufferAccess::WRITE_ONLY, 0x88B9U);
    EXPECT_EQ(BufferAccess::READ_WRITE, 0x88BAU);
    EXPECT_EQ(BufferAccess::type(0x9999), 0x9999U) << "any GL value converts";
}

TEST(layout_test, clientCapabilityValuesAreThoseOfOpenGL) {
    static_assert(sizeof(ClientCapability::type) == 4);
    EXPECT_EQ(ClientCapability::VERTEX_ARRAY, 0x8074U);
    EXPECT_EQ(ClientCapability::NORMAL_ARRAY, 0x8075U);
    EXPECT_EQ(ClientCapability::COLOR_ARRAY, 0x8076U);
    EXPECT_EQ(ClientCapability::INDEX_ARRAY, 0x8077U);
    EXPECT_EQ(ClientCapability::TEXTURE_COORD_ARRAY, 0x8078U);
    EXPECT_EQ(ClientCapability::EDGE_FLAG_ARRAY, 0x8079U);
    EXPECT_EQ(ClientCapability::POINT_SMOOTH, 0x0B10U);
    EXPECT_EQ(ClientCapability::LINE_SMOOTH, 0x0B20U);
    EXPECT_EQ(ClientCapability::POLYGON_SMOOTH, 0x0B41U);
    EXPECT_EQ(ClientCapability::CULL_FACE, 0x0B44U);
    EXPECT_EQ(ClientCapability::LIGHTING, 0x0B50U);
    EXPECT_EQ(ClientCapability::COLOR_MATERIAL, 0x0B57U);
    EXPECT_EQ(ClientCapability::DEPTH_TEST, 0x0B71U);
    EXPECT_EQ(ClientCapability::NORMALIZE, 0x0BA1U);
    EXPECT_EQ(ClientCapability::BLEND, 0x0BE2U);
    EXPECT_EQ(ClientCapability::TEXTURE_2D, 0x0DE1U);
    EXPECT_EQ(ClientCapability::VERTEX_PROGRAM_POINT_SIZE, 0x8642U);
    EXPECT_EQ(ClientCapability::POINT_SPRITE, 0x8861U);
    EXPECT_EQ(ClientCapability::type(0x9999), 0x9999U) << "any GL value converts";
}

TEST(layout_test, dataTypeValuesAreThoseOfOpenGL) {
    static_assert(sizeof(DataType::type) == 4);
    EXPECT_EQ(DataType::BYTE, 0x1400U);
    EXPECT_EQ(DataType::UNSIGNED_BYTE, 0x1401U);
    EXPECT_EQ(DataType::SHORT, 0x1402U);
    EXPECT_EQ(DataType::UNSIGNED_SHORT, 0x1403U);
    EXPECT_EQ(DataType::INT, 0x1404U);
    EXPECT_EQ(DataType::UNSIGNED_INT, 0x1405U);
    EXPECT_EQ(DataType::FLOAT, 0x1406U);
    EXPECT_EQ(DataType::DOUBLE, 0x140AU);
    EXPECT_EQ(DataType::type(0x9999), 0x9999U) << "any GL value converts";
}

TEST(layout_test, shaderTypeValuesAreThoseOfOpenGL) {
    static_assert(sizeof(ShaderType::type) == 4);
    EXPECT_EQ(ShaderType::FRAGMENT_SHADER, 0x8B30U);
    EXPECT_EQ(ShaderType::VERTEX_SHADER, 0x8B31U);
    EXPECT_EQ(ShaderType::GEOMETRY_SHADER_EXT, 0x8DD9U);
    EXPECT_EQ(ShaderType::type(0x9999), 0x9999U) << "any GL value converts";
}

TEST(layout_test, shaderParameterNameValuesAreThoseOfOpenGL) {
    static_assert(sizeof(ShaderParameterName::type) == 4);
    EXPECT_EQ(ShaderParameterName::GEOMETRY_VERTICES_OUT_EXT, 0x8DDAU);
    EXPECT_EQ(ShaderParameterName::GEOMETRY_INPUT_TYPE_EXT, 0x8DDBU);
    EXPECT_EQ(ShaderParameterName::GEOMETRY_OUTPUT_TYPE_EXT, 0x8DDCU);
    EXPECT_EQ(ShaderParameterName::type(0x9999), 0x9999U) << "any GL value converts";
}

TEST(layout_test, hintTargetValuesAreThoseOfOpenGL) {
    static_assert(sizeof(HintTarget::type) == 4);
    EXPECT_EQ(HintTarget::PERSPECTIVE_CORRECTION_HINT, 0x0C50U);
    EXPECT_EQ(HintTarget::POINT_SMOOTH_HINT, 0x0C51U);
    EXPECT_EQ(HintTarget::LINE_SMOOTH_HINT, 0x0C52U);
    EXPECT_EQ(HintTarget::POLYGON_SMOOTH_HINT, 0x0C53U);
    EXPECT_EQ(HintTarget::FOG_HINT, 0x0C54U);
    EXPECT_EQ(HintTarget::GENERATE_MIPMAP_HINT, 0x8192U);
    EXPECT_EQ(HintTarget::TEXTURE_COMPRESSION_HINT, 0x84EFU);
    EXPECT_EQ(HintTarget::FRAGMENT_SHADER_DERIVATIVE_HINT, 0x8B8BU);
    EXPECT_EQ(HintTarget::type(0x9999), 0x9999U) << "any GL value converts";
}

TEST(layout_test, hintModeValuesAreThoseOfOpenGL) {
    static_assert(sizeof(HintMode::type) == 4);
    EXPECT_EQ(HintMode::DONT_CARE, 0x1100U);
    EXPECT_EQ(HintMode::FASTEST, 0x1101U);
    EXPECT_EQ(HintMode::NICEST, 0x1102U);
    EXPECT_EQ(HintMode::type(0x9999), 0x9999U) << "any GL value converts";
}

TEST(layout_test, pointParameterNameValuesAreThoseOfOpenGL) {
    static_assert(sizeof(PointParameterName::type) == 4);
    EXPECT_EQ(PointParameterName::POINT_SIZE_MIN, 0x8126U);
    EXPECT_EQ(PointParameterName::POINT_SIZE_MAX, 0x8127U);
    EXPECT_EQ(PointParameterName::POINT_FADE_THRESHOLD_SIZE, 0x8128U);
    EXPECT_EQ(PointParameterName::POINT_DISTANCE_ATTENUATION, 0x8129U);
    EXPECT_EQ(PointParameterName::POINT_SPRITE_COORD_ORIGIN, 0x8CA0U);
    EXPECT_EQ(PointParameterName::type(0x9999), 0x9999U) << "any GL value converts";
}

}  // namespace
}  // namespace vellum
