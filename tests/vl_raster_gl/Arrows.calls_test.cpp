#include "tests/vl_raster_gl/drawing_probe.h"

// Arrows between points, the unit arrow, the flat arrow, and the drawing of prebuilt arrows.

namespace vellum {

using namespace drawing_probe;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr double NEAR = 1e-6;

/// The base corners of a head along x, its frame being a = +z, b = +y.
std::vector<Point> baseAlongX(double base, double halfWidth) {
    return {{base, -halfWidth, -halfWidth},
            {base, halfWidth, -halfWidth},
            {base, halfWidth, halfWidth},
            {base, -halfWidth, halfWidth}};
}

/// The six triangles of a head in the order of drawing: four sides, then two for the base.
std::vector<std::vector<Point>> headTriangles(Point const& tip, std::vector<Point> const& k) {
    return {{tip, k[0], k[1]}, {tip, k[1], k[2]},  {tip, k[2], k[3]},
            {tip, k[3], k[0]}, {k[0], k[2], k[1]}, {k[0], k[3], k[2]}};
}

Texts const SHAFT{"glBegin(GL_LINES)", "glEnd()"};
Texts const TRIANGLE{"glBegin(GL_TRIANGLES)", "glEnd()"};
Texts const BASE_COLOR{"glColor4f(0.375, 0.1875, 0.5625, 1)"};  // 0.75 of the color before, opaque

class Arrows_calls_test : public Drawing_calls_test {
protected:
    void expectHead(Vector3<float> const& from, Vector3<float> const& to, float headSize,
                    std::vector<Point> const& base) {
        gl_spy::Recording recording;
        core.renderArrow3(from, to, headSize, false);
        std::vector<gl_spy::Primitive> const primitives = recording.primitives();
        ASSERT_EQ(primitives.size(), 7U);
        expectPoints(sent(primitives[0]), {point(from), point(to)}, 0);
        std::vector<std::vector<Point>> const triangles = headTriangles(point(to), base);
        for (std::size_t i = 0; i < 6; ++i) {
            SCOPED_TRACE("triangle " + std::to_string(i));
            expectPoints(sent(primitives[1 + i]), triangles[i], NEAR);
        }
    }
};

}  // namespace

// == The shaded arrow ==

TEST_F(Arrows_calls_test, arrowIsShaftHeadAndDarkerBase) {
    gl_spy::Recording recording;
    core.renderArrow3({0, 0, 0}, {3, 0, 0}, 0.5F, false);
    EXPECT_EQ(outline(recording),
              joined({SHAFT, PUSHED_FILLINGS, TRIANGLE, TRIANGLE, TRIANGLE, TRIANGLE, BASE_COLOR, TRIANGLE,
                      TRIANGLE, START_COLOR_AGAIN, FILLINGS_FRONT_FIRST}));
    EXPECT_EQ(core.currentColor(), START_COLOR);
}

TEST_F(Arrows_calls_test, tailBoxFollowsBaseInColorOfArrow) {
    gl_spy::Recording recording;
    core.renderArrow3({1, 2, 3}, {4, 2, 3}, 0.5F, true);
    EXPECT_EQ(outline(recording), joined({SHAFT,
                                          PUSHED_FILLINGS,
                                          TRIANGLE,
                                          TRIANGLE,
                                          TRIANGLE,
                                          TRIANGLE,
                                          BASE_COLOR,
                                          TRIANGLE,
                                          TRIANGLE,
                                          START_COLOR_AGAIN,
                                          {"glBegin(GL_QUADS)", "glEnd()"},
                                          FILLINGS_FRONT_FIRST}));
}

TEST_F(Arrows_calls_test, arrowAsksVirtualSegmentTriangleAndBox) {
    Witness_core witness({"renderSegment3", "renderTriangle", "render(Box3)"});
    prepare(witness);
    gl_spy::Recording recording;
    witness.recording = &recording;
    Core_RL& layer = witness;
    layer.renderArrow3({1, 2, 3}, {4, 2, 3}, 0.5F, true);
    Texts const triangle{"-> renderTriangle"};
    ASSERT_EQ(witness.trace(), joined({{"-> renderSegment3"},
                                       PUSHED_FILLINGS,
                                       triangle,
                                       triangle,
                                       triangle,
                                       triangle,
                                       BASE_COLOR,
                                       triangle,
                                       triangle,
                                       START_COLOR_AGAIN,
                                       {"-> render(Box3)"},
                                       FILLINGS_FRONT_FIRST}));
    EXPECT_THAT(witness.requests.front().numbers, ElementsAre(1, 2, 3, 4, 2, 3));
    EXPECT_THAT(witness.requests.back().numbers, ElementsAre(0.5, 1.5, 2.5, 1.5, 2.5, 3.5, 0));
}

TEST_F(Arrows_calls_test, headHasGivenLengthAndFifthOfItOnEachSide) {
    expectHead({0, 0, 0}, {3, 0, 0}, 0.5F, baseAlongX(2.5, 0.1));
}

TEST_F(Arrows_calls_test, headIsAtMostThirdOfArrow) {
    // 0.333 of the length 3.
    expectHead({0, 0, 0}, {3, 0, 0}, 10.0F, baseAlongX(3 - 0.999, 0.1998));
    expectHead({0, 0, 0}, {3, 0, 0}, 1.0F, baseAlongX(3 - 0.999, 0.1998));
    expectHead({0, 0, 0}, {3, 0, 0}, 0.99F, baseAlongX(3 - 0.99, 0.198));
}

TEST_F(Arrows_calls_test, headOfSlantedArrowIsPyramidAcrossIt) {
    // d = (2, 3, 6) / 7, a = normalized (-6, 0, 2), b = a x d.
    double const root = std::sqrt(40.0);
    Point const d{2.0 / 7, 3.0 / 7, 6.0 / 7};
    Point const a{-6 / root, 0, 2 / root};
    Point const b{a[1] * d[2] - a[2] * d[1], a[2] * d[0] - a[0] * d[2], a[0] * d[1] - a[1] * d[0]};
    std::vector<Point> base(4);
    double const signs[4][2] = {{-1, -1}, {-1, 1}, {1, 1}, {1, -1}};
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            double const tip = k == 0 ? 3 : k == 1 ? 4 : 7;
            base[i][k] = tip - d[k] * 2 + (signs[i][0] * a[k] + signs[i][1] * b[k]) * 0.4;
        }
    }
    expectHead({1, 1, 1}, {3, 4, 7}, 2.0F, base);
}

TEST_F(Arrows_calls_test, verticalArrowTakesXForItsHeadFrame) {
    // a = (1, 0, 0); b = a x d is +z upwards and -z downwards.
    double const w = 0.1;
    expectHead({0, 0, 0}, {0, 3, 0}, 0.5F, {{-w, 2.5, -w}, {-w, 2.5, w}, {w, 2.5, w}, {w, 2.5, -w}});
    expectHead({0, 0, 0}, {0, -3, 0}, 0.5F, {{-w, -2.5, w}, {-w, -2.5, -w}, {w, -2.5, -w}, {w, -2.5, w}});
}

TEST_F(Arrows_calls_test, arrowOfNoLengthWithHeadDrawsNothing) {
    EXPECT_THAT(calls([](Core_RL& layer) {
                    layer.renderArrow3({1, 2, 3}, {1, 2, 3}, 1.0F, true);
                }),
                IsEmpty());
}

TEST_F(Arrows_calls_test, arrowMuchShorterThanItsHeadDrawsNothing) {
    EXPECT_THAT(calls([](Core_RL& layer) {
                    layer.renderArrow3({0, 0, 0}, {0.5F, 0, 0}, 5001.0F, true);
                }),
                IsEmpty());
    EXPECT_FALSE(calls([](Core_RL& layer) {
                     layer.renderArrow3({0, 0, 0}, {0.5F, 0, 0}, 4999.0F, true);
                 }).empty());
}

TEST_F(Arrows_calls_test, arrowOfNoLengthAndHeadSizeZeroIsShaftOfNoLengthAndDegenerateHead) {
    gl_spy::Recording recording;
    core.renderArrow3({1, 2, 3}, {1, 2, 3}, 0.0F, false);
    EXPECT_EQ(outline(recording),
              joined({SHAFT, PUSHED_FILLINGS, TRIANGLE, TRIANGLE, TRIANGLE, TRIANGLE, BASE_COLOR, TRIANGLE,
                      TRIANGLE, START_COLOR_AGAIN, FILLINGS_FRONT_FIRST}));
    std::vector<gl_spy::Primitive> const primitives = recording.primitives();
    expectPoints(sent(primitives.at(0)), {{1, 2, 3}, {1, 2, 3}}, 0);
    expectNear(primitives.at(1).vertices.at(0).position, {1, 2, 3}, 0, "tip");
}

TEST_F(Arrows_calls_test, baseHasThreeQuartersOfTopColor) {
    // The color that GL has is not asked for: another drawing may have changed it.
    core.pushColor({1, 0.5F, 0.25F, 0.25F});
    gl_spy::Recording recording;
    core.renderArrow3({0, 0, 0}, {3, 0, 0}, 0.5F, false);
    std::vector<gl_spy::Call> const colors = recording.named("glColor4f");
    ASSERT_EQ(colors.size(), 2U);
    EXPECT_THAT(colors[0].numbers, ElementsAre(0.75, 0.375, 0.1875, 1));
    EXPECT_THAT(colors[1].numbers, ElementsAre(1, 0.5, 0.25, 0.25));
    EXPECT_EQ(recording.count("glGetFloatv"), 0U);
}

TEST_F(Arrows_calls_test, deliberatelyBaseOfSingleArrowIsDarkerThanThatOfArrowFromBuffers) {
    core.pushColor({1, 1, 1, 1});
    gl_spy::Recording recording;
    core.renderArrow3({0, 0, 0}, {3, 0, 0}, 0.5F, false);
    EXPECT_EQ(recording.named("glColor4f").at(0).numbers[0], 0.75);

    Array<Vector3<float>> vertices;
    Array<unsigned int> triangles;
    Array<unsigned int> lines;
    Array<unsigned int> quads;
    Array<Color4<float>> colors;
    core.createBuffers_forRenderArrow3({{0, 0, 0}}, {{3, 0, 0}}, {{1, 1, 1, 1}}, 1, vertices, triangles,
                                       lines, quads, colors);
    ASSERT_EQ(colors.size(), 10U);
    EXPECT_EQ(colors[6].r, 0.8F);
}

// == Arrows from buffers ==

TEST_F(Arrows_calls_test, creatingBuffersMakesNoCall) {
    Array<Vector3<float>> vertices;
    Array<unsigned int> triangles;
    Array<unsigned int> lines;
    Array<unsigned int> quads;
    Array<Color4<float>> colors;
    EXPECT_THAT(calls([&](Core_RL& layer) {
                    layer.createBuffers_forRenderArrow3({{0, 0, 0}}, {{3, 0, 0}}, {}, 1, vertices, triangles,
                                                        lines, quads, colors);
                }),
                IsEmpty());
}

TEST_F(Arrows_calls_test, buffersAreDrawnAsTrianglesQuadsAndLinesFromClientArrays) {
    Array<Vector3<float>> const vertices{{1, 2, 3}, {4, 5, 6}};
    Array<unsigned int> const triangles{0, 1, 0, 1, 0, 1};
    Array<unsigned int> const lines{0, 1};
    Array<unsigned int> const quads{0, 1, 0, 1};
    Array<Color4<float>> const colors{{1, 1, 1, 1}, {1, 1, 1, 1}};
    gl_spy::Recording recording;
    core.renderArrow3_usingBuffers(vertices, triangles, lines, quads, colors);
    EXPECT_EQ(recording.texts(),
              joined({PUSHED_FILLINGS,
                      {"glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_COLOR_ARRAY)",
                       "glVertexPointer(3, GL_FLOAT, 0, pointer)", "glColorPointer(3, GL_FLOAT, 16, pointer)",
                       "glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_INT, pointer)",
                       "glDrawElements(GL_QUADS, 4, GL_UNSIGNED_INT, pointer)",
                       "glDrawElements(GL_LINES, 2, GL_UNSIGNED_INT, pointer)",
                       "glDisableClientState(GL_VERTEX_ARRAY)", "glDisableClientState(GL_COLOR_ARRAY)"},
                      FILLINGS_BACK_FIRST}));
    auto const address = [](void const* data) { return reinterpret_cast<std::uintptr_t>(data); };
    EXPECT_THAT(recording.named("glVertexPointer").at(0).addresses, ElementsAre(address(vertices.data())));
    EXPECT_THAT(recording.named("glColorPointer").at(0).addresses, ElementsAre(address(colors.data())));
    std::vector<gl_spy::Call> const draws = recording.named("glDrawElements");
    ASSERT_EQ(draws.size(), 3U);
    EXPECT_THAT(draws[0].addresses, ElementsAre(address(triangles.data())));
    EXPECT_THAT(draws[1].addresses, ElementsAre(address(quads.data())));
    EXPECT_THAT(draws[2].addresses, ElementsAre(address(lines.data())));
}

TEST_F(Arrows_calls_test, emptyBuffersDrawNothing) {
    gl_spy::Recording recording;
    core.renderArrow3_usingBuffers({}, {}, {}, {}, {});
    for (gl_spy::Call const& draw : recording.named("glDrawElements")) {
        EXPECT_EQ(draw.numbers.at(0), 0);
    }
    EXPECT_EQ(recording.count("glEnableClientState"), recording.count("glDisableClientState"));
}

TEST_F(Arrows_calls_test, buffersAreDrawnByGlobalLayerWhileAskedOneSetsFilling) {
    std::set<std::string> const replaced{"setFillingFront", "setFillingBack",     "enableClientState",
                                         "vertexPointer",   "disableClientState", "colorPointer",
                                         "drawElements"};
    Witness_core asked(replaced);
    Witness_core global(replaced);
    ASSERT_EQ(VL_Raster, &global) << "the layer constructed last";
    asked.renderArrow3_usingBuffers({{1, 2, 3}}, {0, 0, 0}, {0, 0}, {0, 0, 0, 0}, {{1, 1, 1, 1}});
    Texts ofAsked;
    for (Witness_core::Request const& request : asked.requests) {
        ofAsked.push_back(request.operation);
    }
    ASSERT_THAT(ofAsked,
                ElementsAre("setFillingFront", "setFillingBack", "setFillingBack", "setFillingFront"));
    Texts ofGlobal;
    for (Witness_core::Request const& request : global.requests) {
        ofGlobal.push_back(request.operation);
    }
    EXPECT_THAT(ofGlobal, ElementsAre("enableClientState", "enableClientState", "vertexPointer",
                                      "colorPointer", "drawElements", "drawElements", "drawElements",
                                      "disableClientState", "disableClientState"));
}

// == The unit arrow ==

TEST_F(Arrows_calls_test, unitArrowIsSquareAndFiveLinesAlongMinusY) {
    gl_spy::Recording recording;
    core.renderUnitArrow3();
    EXPECT_EQ(outline(recording),
              (Texts{"glBegin(GL_LINE_STRIP)", "glEnd()", "glBegin(GL_LINES)", "glEnd()"}));
    std::vector<gl_spy::Primitive> const primitives = recording.primitives();
    ASSERT_EQ(primitives.size(), 2U);
    auto const s = double(0.05F);
    Point const tip{0, double(-1.2F), 0};
    std::vector<Point> const corners{{s, -1, s}, {-s, -1, s}, {-s, -1, -s}, {s, -1, -s}};
    // Whether the constants are sent as floats or as doubles is free.
    expectPoints(sent(primitives[0]), {corners[0], corners[1], corners[2], corners[3], corners[0]}, 1e-7);
    expectPoints(sent(primitives[1]),
                 {corners[0], tip, corners[1], tip, corners[2], tip, corners[3], tip, {0, 0, 0}, tip}, 1e-7);
}

// == The flat arrow ==

TEST_F(Arrows_calls_test, flatArrowIsShaftAndTwoBarbs) {
    gl_spy::Recording recording;
    core.renderArrow2({1, 2}, {4, 6}, 0.25F);
    EXPECT_EQ(outline(recording), joined({SHAFT, SHAFT, SHAFT}));
    std::vector<gl_spy::Primitive> const lines = recording.primitives();
    ASSERT_EQ(lines.size(), 3U);
    // d = (3, 4), barbs of 0.25 * 5; q1 = (-3, -4) + (-2, 1.5), q2 = (-3, -4) + (2, -1.5), each of length
    // sqrt(31.25).
    double const scale = 1.25 / std::sqrt(31.25);
    Point const p1{4 - 5 * scale, 6 - 2.5 * scale, 0};
    Point const p2{4 - 1 * scale, 6 - 5.5 * scale, 0};
    expectPoints(sent(lines[0]), {{1, 2, 0}, {4, 6, 0}}, 0);
    expectPoints(sent(lines[1]), {p1, {4, 6, 0}}, NEAR);
    expectPoints(sent(lines[2]), {p2, {4, 6, 0}}, NEAR);
}

TEST_F(Arrows_calls_test, barbsOfFlatArrowLeanBackByOneHalf) {
    gl_spy::Recording recording;
    core.renderArrow2({0, 0}, {2, 0}, 0.5F);
    std::vector<gl_spy::Primitive> const lines = recording.primitives();
    ASSERT_EQ(lines.size(), 3U);
    for (std::size_t i = 1; i < 3; ++i) {
        Point const barb = lines[i].vertices.at(0).position;
        EXPECT_NEAR(std::hypot(barb[0] - 2, barb[1]), 1, NEAR) << "half as long as the arrow";
        EXPECT_NEAR(std::abs(barb[1]) / (2 - barb[0]), 0.5, NEAR);
    }
    EXPECT_GT(lines[1].vertices.at(0).position[1], 0) << "the first barb is on the left";
    EXPECT_LT(lines[2].vertices.at(0).position[1], 0);
}

}  // namespace vellum
