#include "Core_RL_GL.h"
#include "tests/support/counted_memory.h"

#include <gtest/gtest.h>

#include "foundation/basic/threads.h"
#include "tests/support/thread_limits.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

// The arrays of prebuilt arrows. Nothing here needs GL: neither the constructor nor the filling makes a call.

namespace vellum {

namespace {

struct Buffers {
    Array<Vector3<float>> vertices;
    Array<unsigned int> triangles;
    Array<unsigned int> lines;
    Array<unsigned int> quads;
    Array<Color4<float>> colors;
};

class ConstArrowBuffers_test : public testing::Test {
protected:
    void create(Array<Vector3<float>> const& positions, Array<Vector3<float>> const& directions,
                Array<Color4<float>> const& colors, float scale = 1.0F) {
        core.createBuffers_forRenderArrow3(positions, directions, colors, scale, out.vertices, out.triangles,
                                           out.lines, out.quads, out.colors);
    }

    void expectSizes(unsigned int arrows) const {
        EXPECT_EQ(out.vertices.size(), 10 * arrows);
        EXPECT_EQ(out.triangles.size(), 12 * arrows);
        EXPECT_EQ(out.lines.size(), 2 * arrows);
        EXPECT_EQ(out.quads.size(), 4 * arrows);
        EXPECT_EQ(out.colors.size(), 10 * arrows);
    }

    void expectVertex(unsigned int index, double x, double y, double z) const {
        ASSERT_LT(index, out.vertices.size());
        EXPECT_NEAR(double(out.vertices[index].x), x, 2e-6) << "vertex " << index;
        EXPECT_NEAR(double(out.vertices[index].y), y, 2e-6) << "vertex " << index;
        EXPECT_NEAR(double(out.vertices[index].z), z, 2e-6) << "vertex " << index;
    }

    void expectArrowColor(unsigned int arrow, Color4<float> const& color) const {
        ASSERT_LE(10 * arrow + 10, out.colors.size());
        for (unsigned int i = 0; i < 6; ++i) {
            EXPECT_EQ(out.colors[10 * arrow + i], color) << "vertex " << i << " of arrow " << arrow;
        }
        Color4<float> const base{color.r * 0.8F, color.g * 0.8F, color.b * 0.8F, 1.0F};
        for (unsigned int i = 6; i < 10; ++i) {
            Color4<float> const& actual = out.colors[10 * arrow + i];
            EXPECT_FLOAT_EQ(actual.r, base.r) << "vertex " << i << " of arrow " << arrow;
            EXPECT_FLOAT_EQ(actual.g, base.g) << "vertex " << i << " of arrow " << arrow;
            EXPECT_FLOAT_EQ(actual.b, base.b) << "vertex " << i << " of arrow " << arrow;
            EXPECT_EQ(actual.a, 1.0F) << "vertex " << i << " of arrow " << arrow;
        }
    }

    Core_RL_GL core;
    Buffers out;
};

constexpr Color4<float> LIGHT_BLUE{0.9411765F, 0.972549F, 1.0F, 1.0F};

}  // namespace

// == Contents ==

TEST_F(ConstArrowBuffers_test, arrowHasTipHeadTailAndBase) {
    create({{1, 2, 3}}, {{3, 0, 0}}, {{1, 0.5F, 0.25F, 0.125F}}, 2);
    expectSizes(1);
    // From (1, 2, 3) to (7, 2, 3): the head is 0.333 of 6 long, a fifth of that wide on each side; a = +z, b
    // = +y.
    double const base = 7 - 6 * 0.333;
    double const w = 6 * 0.333 * 0.2;
    expectVertex(0, 7, 2, 3);
    for (unsigned int const first : {1U, 6U}) {
        expectVertex(first, base, 2 - w, 3 - w);
        expectVertex(first + 1, base, 2 + w, 3 - w);
        expectVertex(first + 2, base, 2 + w, 3 + w);
        expectVertex(first + 3, base, 2 - w, 3 + w);
    }
    expectVertex(5, 1, 2, 3);
}

TEST_F(ConstArrowBuffers_test, headOfSlantedArrowIsPyramidAcrossIt) {
    create({{1, 1, 1}}, {{2, 3, 6}}, {}, 1);
    double const root = std::sqrt(40.0);
    double const d[3] = {2.0 / 7, 3.0 / 7, 6.0 / 7};
    double const a[3] = {-6 / root, 0, 2 / root};
    double const b[3] = {-a[2] * d[1], a[2] * d[0] - a[0] * d[2], a[0] * d[1]};
    double const tip[3] = {3, 4, 7};
    double const h = 7 * 0.333;
    double const signs[4][2] = {{-1, -1}, {-1, 1}, {1, 1}, {1, -1}};
    for (unsigned int i = 0; i < 4; ++i) {
        double corner[3];
        for (int k = 0; k < 3; ++k) {
            corner[k] = tip[k] - d[k] * h + (signs[i][0] * a[k] + signs[i][1] * b[k]) * h * 0.2;
        }
        expectVertex(1 + i, corner[0], corner[1], corner[2]);
        expectVertex(6 + i, corner[0], corner[1], corner[2]);
    }
}

TEST_F(ConstArrowBuffers_test, verticalArrowTakesXForItsHeadFrame) {
    create({{0, 0, 0}, {0, 0, 0}}, {{0, 1, 0}, {0, -1, 0}}, {});
    double const w = 0.333 * 0.2;
    expectVertex(1, -w, 1 - 0.333, -w);
    expectVertex(2, -w, 1 - 0.333, w);
    expectVertex(11, -w, -1 + 0.333, w);
    expectVertex(12, -w, -1 + 0.333, -w);
}

TEST_F(ConstArrowBuffers_test, indicesCountUpByTenForEachArrow) {
    create({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {});
    expectSizes(3);
    for (unsigned int i = 0; i < 3; ++i) {
        unsigned int const k = 10 * i;
        unsigned int const triangles[12] = {k, k + 1, k + 2, k, k + 2, k + 3,
                                            k, k + 3, k + 4, k, k + 4, k + 1};
        for (unsigned int j = 0; j < 12; ++j) {
            EXPECT_EQ(out.triangles[12 * i + j], triangles[j]) << "triangle index " << 12 * i + j;
        }
        for (unsigned int j = 0; j < 4; ++j) {
            EXPECT_EQ(out.quads[4 * i + j], k + 6 + j) << "quad index " << 4 * i + j;
        }
        EXPECT_EQ(out.lines[2 * i], k + 5) << "tail";
        EXPECT_EQ(out.lines[2 * i + 1], k) << "tip";
    }
}

TEST_F(ConstArrowBuffers_test, everyArrowOfManyIsSameAsAlone) {
    Array<Vector3<float>> positions;
    Array<Vector3<float>> directions;
    Array<Color4<float>> colors;
    for (unsigned int i = 0; i < 1003; ++i) {
        auto const t = float(i);
        positions.pushBack({std::sin(t), t * 0.01F, std::cos(3 * t)});
        directions.pushBack({std::cos(t), std::sin(2 * t), i % 7 == 0 ? 0.0F : 0.001F * t});
        colors.pushBack({float(i % 3) * 0.5F, float(i % 5) * 0.25F, float(i % 9) * 0.125F, 0.5F});
    }
    create(positions, directions, colors, 0.75F);
    expectSizes(1003);
    Buffers const all = out;
    for (unsigned int i = 0; i < 1003; ++i) {
        create({positions[i]}, {directions[i]}, {colors[i]}, 0.75F);
        for (unsigned int j = 0; j < 10; ++j) {
            Vector3<float> const& one = out.vertices[j];
            Vector3<float> const& same = all.vertices[10 * i + j];
            ASSERT_TRUE(one.x == same.x && one.y == same.y && one.z == same.z)
                << "vertex " << j << " of arrow " << i;
            ASSERT_EQ(out.colors[j], all.colors[10 * i + j]) << "color " << j << " of arrow " << i;
        }
    }
}

TEST_F(ConstArrowBuffers_test, negativeScaleTurnsArrowsRound) {
    create({{1, 0, 0}}, {{3, 0, 0}}, {}, -1);
    expectVertex(0, -2, 0, 0);
    expectVertex(1, -2 + 0.999, -0.1998, 0.1998);
    expectVertex(5, 1, 0, 0);
}

TEST_F(ConstArrowBuffers_test, directionOfNoLengthGivesNaNCorners) {
    create({{1, 2, 3}, {0, 0, 0}}, {{0, 0, 0}, {3, 0, 0}}, {});
    expectVertex(0, 1, 2, 3);
    expectVertex(5, 1, 2, 3);
    for (unsigned int i = 1; i < 5; ++i) {
        EXPECT_TRUE(std::isnan(out.vertices[i].x)) << "corner " << i;
    }
    expectVertex(10, 3, 0, 0);
    expectVertex(11, 3 - 0.999, -0.1998, -0.1998);
}

// == Colors ==

TEST_F(ConstArrowBuffers_test, everyArrowTakesItsColor) {
    Array<Color4<float>> const colors{{1, 0, 0, 1}, {0, 1, 0.5F, 0.25F}};
    create({{0, 0, 0}, {1, 0, 0}}, {{1, 0, 0}, {1, 0, 0}}, colors);
    expectArrowColor(0, colors[0]);
    expectArrowColor(1, colors[1]);
}

TEST_F(ConstArrowBuffers_test, oneColorServesAllArrows) {
    create({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {{1, 0, 0}, {1, 0, 0}, {1, 0, 0}}, {{1, 0.5F, 0.25F, 0.5F}});
    for (unsigned int i = 0; i < 3; ++i) {
        expectArrowColor(i, {1, 0.5F, 0.25F, 0.5F});
    }
}

TEST_F(ConstArrowBuffers_test, noColorsGiveLightBlue) {
    create({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {{1, 0, 0}, {1, 0, 0}, {1, 0, 0}}, {});
    for (unsigned int i = 0; i < 3; ++i) {
        expectArrowColor(i, LIGHT_BLUE);
    }
}

TEST_F(ConstArrowBuffers_test, arrowsBeyondLastColorTakeLast) {
    create({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}}, {{1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 0, 0}},
           {{1, 0, 0, 1}, {0, 0, 1, 1}});
    expectArrowColor(0, {1, 0, 0, 1});
    for (unsigned int i = 1; i < 4; ++i) {
        expectArrowColor(i, {0, 0, 1, 1});
    }
}

TEST_F(ConstArrowBuffers_test, surplusColorsAreNotUsed) {
    create({{0, 0, 0}}, {{1, 0, 0}}, {{1, 0, 0, 1}, {0, 0, 1, 1}});
    expectSizes(1);
    expectArrowColor(0, {1, 0, 0, 1});
}

TEST_F(ConstArrowBuffers_test, deliberatelyBaseTakesFourFifthsOfColorAndIsOpaque) {
    create({{0, 0, 0}}, {{1, 0, 0}}, {{1, 0.5F, 0.25F, 0.125F}});
    for (unsigned int i = 6; i < 10; ++i) {
        EXPECT_FLOAT_EQ(out.colors[i].r, 0.8F);
        EXPECT_FLOAT_EQ(out.colors[i].g, 0.4F);
        EXPECT_FLOAT_EQ(out.colors[i].b, 0.2F);
        EXPECT_EQ(out.colors[i].a, 1.0F);
    }
    EXPECT_EQ(out.colors[5].a, 0.125F);
}

// == Sizes and storage ==

TEST_F(ConstArrowBuffers_test, noPositionsLeaveEveryOutputEmpty) {
    create({}, {}, {{1, 0, 0, 1}});
    expectSizes(0);

    // Outputs of an earlier call are emptied too, and keep their storage.
    create({{0, 0, 0}}, {{1, 0, 0}}, {});
    create({}, {{1, 0, 0}}, {});
    expectSizes(0);
    EXPECT_EQ(out.vertices.capacity(), 10U);
}

TEST_F(ConstArrowBuffers_test, onlyAsManyArrowsAsThereAreDirections) {
    create({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {{1, 0, 0}}, {});
    expectSizes(1);
    expectVertex(0, 1, 0, 0);
    create({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {}, {});
    expectSizes(0);
}

TEST_F(ConstArrowBuffers_test, surplusDirectionsAreNotUsed) {
    create({{0, 0, 0}}, {{1, 0, 0}, {2, 0, 0}}, {});
    expectSizes(1);
}

TEST_F(ConstArrowBuffers_test, storageGrowsToNeededCapacityExactly) {
    create({{0, 0, 0}, {1, 0, 0}}, {{1, 0, 0}, {1, 0, 0}}, {});
    EXPECT_EQ(out.vertices.capacity(), 20U);
    EXPECT_EQ(out.triangles.capacity(), 24U);
    EXPECT_EQ(out.lines.capacity(), 4U);
    EXPECT_EQ(out.quads.capacity(), 8U);
    EXPECT_EQ(out.colors.capacity(), 20U);
}

TEST_F(ConstArrowBuffers_test, fewerArrowsKeepStorage) {
    create({{0, 0, 0}, {1, 0, 0}}, {{1, 0, 0}, {1, 0, 0}}, {});
    void const* const storage = out.vertices.data();
    create({{5, 0, 0}}, {{1, 0, 0}}, {});
    expectSizes(1);
    EXPECT_EQ(out.vertices.capacity(), 20U);
    EXPECT_EQ(out.triangles.capacity(), 24U);
    EXPECT_EQ(out.vertices.data(), storage);
    expectVertex(0, 6, 0, 0);
}

TEST_F(ConstArrowBuffers_test, allocatesOnlyWhereCapacityIsTooSmall) {
    Array<Vector3<float>> const positions{{0, 0, 0}, {1, 0, 0}};
    Array<Vector3<float>> const directions{{1, 0, 0}, {0, 1, 0}};
    Array<Color4<float>> const colors{{1, 0, 0, 1}};

    std::size_t before = counted_memory::allocations();
    create(positions, directions, colors);
    EXPECT_EQ(counted_memory::allocations() - before, 5U) << "one for each output";

    before = counted_memory::allocations();
    create(positions, directions, colors);
    EXPECT_EQ(counted_memory::allocations() - before, 0U) << "the same again";

    // One output that is too small is the only one to grow.
    out.quads.reserve(7, true);
    void const* const vertices = out.vertices.data();
    before = counted_memory::allocations();
    create(positions, directions, colors);
    EXPECT_EQ(counted_memory::allocations() - before, 1U);
    EXPECT_EQ(out.quads.capacity(), 8U);
    EXPECT_EQ(out.vertices.data(), vertices);

    // A larger capacity is left as it is.
    out.lines.reserve(100, true);
    before = counted_memory::allocations();
    create(positions, directions, colors);
    EXPECT_EQ(counted_memory::allocations() - before, 0U);
    EXPECT_EQ(out.lines.capacity(), 100U);
    expectSizes(2);
}

// == Drawing without a context ==

TEST_F(ConstArrowBuffers_test, basicPrimitivesAllocateNothing) {
    // Without a current context GL's entry points do nothing. The state stacks grow once, before the
    // counting.
    core.pushFillingFront(FILLING_SOLID);
    core.pushFillingBack(FILLING_SOLID);
    core.pushColor({1, 1, 1, 1});
    core.popColor(1);
    core.popFillingBack();
    core.popFillingFront();

    Vector3<float> const a{1, 2, 3};
    Vector3<float> const b{4, 5, 6};
    Vector3<float> const c{7, 8, 10};
    Box3<float> const box{{0, 0, 0}, {1, 1, 1}};
    std::size_t const before = counted_memory::allocations();
    core.renderSegment2({0, 0}, {1, 1});
    core.renderSegment3(a, b);
    core.renderSegmentStipple3(a, b);
    core.renderStroke3(a, b, 1);
    core.renderPoint2({0, 0});
    core.renderPoint3(a);
    core.renderCross3();
    core.render(Box2<float>{{0, 0}, {1, 1}}, true);
    core.render(box, true);
    core.render(box, Tuple8<Vector3<float>>{a, a, a, a, b, b, b, b}, false);
    core.render(Obb3<float>{{1, 0, 0}, 1, {0, 1, 0}, 1, {0, 0, 1}, 1, a}, false);
    core.renderBox3(7U, Color4<float>{1, 0, 0, 1}, 1);
    core.renderBox3Points_asPoints(Box3Points<double>{{3, 3, 3}, {0, 0, 0}, {1, 1, 1}});
    core.renderQuad3(a, b, c, a);
    core.renderQuad3(0U);
    core.renderRhombus3(0U);
    core.renderRhombus3();
    core.renderTriangle(a, b, c);
    core.renderPlane3({{0, 1, 0}, 1}, 10, 50);
    core.renderCircle3(1);
    core.renderEllipse3(a, b, c);
    core.renderEllipse3_XY(a, 1, 2);
    core.renderArrow3(a, b, 1, true);
    EXPECT_EQ(counted_memory::allocations() - before, 0U);
}

// == Many arrows ==

TEST_F(ConstArrowBuffers_test, manyArrowsAreThoseMadeOneByOneWhateverTheThreads) {
    constexpr unsigned int COUNT = 1000003;
    Array<Vector3<float>> positions;
    Array<Vector3<float>> directions;
    Array<Color4<float>> colors;
    positions.reserve(COUNT, false);
    directions.reserve(COUNT, false);
    float const infinity = std::numeric_limits<float>::infinity();
    float const none = std::numeric_limits<float>::quiet_NaN();
    for (unsigned int i = 0; i < COUNT; ++i) {
        float const t = 0.001F * static_cast<float>(i);
        positions.pushBack(i % 1009 == 0 ? Vector3<float>{infinity, 1, t}
                                         : Vector3<float>{std::sin(t), std::cos(t), t});
        directions.pushBack(i % 997 == 0   ? Vector3<float>{none, t, 1}
                            : i % 991 == 0 ? Vector3<float>{0, 0, 0}
                                           : Vector3<float>{std::cos(3 * t), std::sin(5 * t), -t});
        if (i < COUNT / 2) {
            colors.pushBack({0.5F + 0.5F * std::sin(t), 0.5F, 0.25F, 1.0F});
        }
    }
    Buffers one;
    for (int const threads : threadLimits()) {
        setThreadLimit(threads);
        create(positions, directions, colors, 1.5F);
        setThreadLimit(0);
        expectSizes(COUNT);
        unsigned int wrong = 0;
        // Every arrow about the ends of blocks of 2^12, and some between.
        for (unsigned int i = 0; i < COUNT;
             i += i % 4096 < 3 || i % 4096 > 4092 || COUNT - i < 200 ? 1 : 997) {
            unsigned int const colored = std::min(i, colors.size() - 1);
            core.createBuffers_forRenderArrow3({positions[i]}, {directions[i]}, {colors[colored]}, 1.5F,
                                               one.vertices, one.triangles, one.lines, one.quads, one.colors);
            auto const differ = [](auto const& all, auto const& single, unsigned int number) {
                return std::memcmp(&all[number * single.size()], single.data(),
                                   single.size() * sizeof(single[0])) != 0;
            };
            auto const differByFirst = [&](Array<unsigned int> const& all,
                                           Array<unsigned int> const& single) {
                for (unsigned int k = 0; k < single.size(); ++k) {
                    if (all[i * single.size() + k] != single[k] + 10 * i) {
                        return true;
                    }
                }
                return false;
            };
            wrong += differ(out.vertices, one.vertices, i) || differ(out.colors, one.colors, i) ||
                             differByFirst(out.triangles, one.triangles) ||
                             differByFirst(out.lines, one.lines) || differByFirst(out.quads, one.quads)
                         ? 1
                         : 0;
        }
        EXPECT_EQ(wrong, 0U) << threads << " threads";
    }
}

}  // namespace vellum
