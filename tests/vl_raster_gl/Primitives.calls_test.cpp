#include "tests/vl_raster_gl/drawing_probe.h"

#include <algorithm>
#include <limits>

// The basic primitives: segments, points, boxes, lattices, quads, triangles, plane grids, circles and
// ellipses.

namespace vellum {

using namespace drawing_probe;
using testing::ElementsAre;

namespace {

constexpr double PI = 3.14159265358979323846;
constexpr double EXACT = 0.0;

struct Face {
    Point normal;
    std::array<int, 4> corners;
};

/// The faces of a box in the order of drawing.
std::array<Face, 6> const FACES{{{{-1, 0, 0}, {0, 4, 6, 2}},
                                 {{1, 0, 0}, {1, 3, 7, 5}},
                                 {{0, -1, 0}, {0, 1, 5, 4}},
                                 {{0, 1, 0}, {2, 6, 7, 3}},
                                 {{0, 0, -1}, {0, 2, 3, 1}},
                                 {{0, 0, 1}, {4, 5, 7, 6}}}};

Point cornerOf(Point const& min, Point const& max, int index) {
    return {(index & 1) != 0 ? max[0] : min[0], (index & 2) != 0 ? max[1] : min[1],
            (index & 4) != 0 ? max[2] : min[2]};
}

std::array<Point, 8> cornersOf(Point const& min, Point const& max) {
    std::array<Point, 8> corners;
    for (int i = 0; i < 8; ++i) {
        corners[std::size_t(i)] = cornerOf(min, max, i);
    }
    return corners;
}

/// The whole call sequence of a box, with or without colors for its corners.
Texts boxCalls(std::array<Point, 8> const& corners, bool wire, std::array<Point, 8> const* colors = nullptr) {
    Texts texts{wire ? "glBegin(GL_LINES)" : "glBegin(GL_QUADS)"};
    for (Face const& face : FACES) {
        for (std::size_t i = 0; i < (wire ? 5U : 4U); ++i) {
            auto const corner = std::size_t(face.corners[i % 4]);
            if (colors != nullptr) {
                texts.push_back(threeNumbers("glColor3fv", (*colors)[corner]));
            }
            texts.push_back(threeNumbers("glNormal3fv", face.normal));
            texts.push_back(threeNumbers("glVertex3fv", corners[corner]));
        }
    }
    texts.emplace_back("glEnd()");
    return texts;
}

Tuple8<Vector3<float>> const CORNER_COLORS{{0, 0, 0},    {1, 0, 0},     {0, 1, 0},     {1, 1, 0},
                                           {0, 0, 0.5F}, {0.25F, 0, 1}, {0, 0.75F, 1}, {1, 1, 1}};
std::array<Point, 8> const CORNER_COLOR_POINTS{
    {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {0, 0, 0.5}, {0.25, 0, 1}, {0, 0.75, 1}, {1, 1, 1}}};

class Primitives_calls_test : public Drawing_calls_test {};

}  // namespace

// == Segments and strokes ==

TEST_F(Primitives_calls_test, segment2IsOnePairOfVertices) {
    EXPECT_THAT(calls([](Core_RL& layer) {
                    layer.renderSegment2({1, 2}, {3, -4});
                }),
                ElementsAre("glBegin(GL_LINES)", "glVertex2fv({1, 2})", "glVertex2fv({3, -4})", "glEnd()"));
}

TEST_F(Primitives_calls_test, segment3IsOnePairOfVertices) {
    EXPECT_THAT(
        calls([](Core_RL& layer) {
            layer.renderSegment3({1, 2, 3}, {4, 5, -6});
        }),
        ElementsAre("glBegin(GL_LINES)", "glVertex3fv({1, 2, 3})", "glVertex3fv({4, 5, -6})", "glEnd()"));
}

TEST_F(Primitives_calls_test, stippledSegmentIsVirtualSegmentBetweenStippleOnAndOff) {
    EXPECT_EQ(calls([](Core_RL& layer) {
                  layer.renderSegmentStipple3({1, 2, 3}, {4, 5, 6});
              }),
              joined({STIPPLE_ON,
                      {"glBegin(GL_LINES)", "glVertex3fv({1, 2, 3})", "glVertex3fv({4, 5, 6})", "glEnd()"},
                      STIPPLE_OFF}));

    Witness_core witness({"renderSegment3", "setLineStipple"});
    gl_spy::Recording recording;
    witness.recording = &recording;
    witness.renderSegmentStipple3({1, 2, 3}, {4, 5, 6});
    ASSERT_THAT(witness.trace(), ElementsAre("-> setLineStipple", "-> renderSegment3", "-> setLineStipple"));
    EXPECT_THAT(witness.requests[0].numbers, ElementsAre(1));
    EXPECT_THAT(witness.requests[1].numbers, ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_THAT(witness.requests[2].numbers, ElementsAre(0));
}

TEST_F(Primitives_calls_test, deliberatelyStrokeSendsThreeVerticesOfWhichOnlyFirstHalfShows) {
    gl_spy::Recording recording;
    core.renderStroke3({1, 2, 3}, {0, 1, 0.5F}, 2.0F);
    EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_LINES)", "glEnd()"}));
    expectPoints(sent(onlyPrimitive(recording)), {{1, 0, 2}, {1, 2, 3}, {1, 4, 4}}, EXACT);
}

// == Points ==

TEST_F(Primitives_calls_test, pointsAreBlocksOfOneVertex) {
    EXPECT_THAT(calls([](Core_RL& layer) {
                    layer.renderPoint2({1, 2});
                }),
                ElementsAre("glBegin(GL_POINTS)", "glVertex2fv({1, 2})", "glEnd()"));
    EXPECT_THAT(calls([](Core_RL& layer) {
                    layer.renderPoint3({1, 2, 3});
                }),
                ElementsAre("glBegin(GL_POINTS)", "glVertex3fv({1, 2, 3})", "glEnd()"));
}

TEST_F(Primitives_calls_test, scopedPointsShareOneBlock) {
    EXPECT_THAT(
        calls([](Core_RL& layer) {
            layer.renderPoint3_Begin();
            layer.renderPoint3_scoped({1, 2, 3});
            layer.renderPoint3_scoped({4, 5, 6});
            layer.renderPoint3_End();
        }),
        ElementsAre("glBegin(GL_POINTS)", "glVertex3fv({1, 2, 3})", "glVertex3fv({4, 5, 6})", "glEnd()"));
}

TEST_F(Primitives_calls_test, eachHalfOfScopeIsOneCall) {
    EXPECT_THAT(calls([](Core_RL& layer) { layer.renderPoint3_Begin(); }), ElementsAre("glBegin(GL_POINTS)"));
    EXPECT_THAT(calls([](Core_RL& layer) {
                    layer.renderPoint3_scoped({1, 2, 3});
                }),
                ElementsAre("glVertex3fv({1, 2, 3})"));
    EXPECT_THAT(calls([](Core_RL& layer) { layer.renderPoint3_End(); }), ElementsAre("glEnd()"));
}

TEST_F(Primitives_calls_test, crossIsThreeSegmentsFromPlusToMinus) {
    gl_spy::Recording recording;
    core.renderCross3();
    EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_LINES)", "glEnd()"}));
    expectPoints(sent(onlyPrimitive(recording)),
                 {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}}, EXACT);
}

TEST_F(Primitives_calls_test, loadNamePassesName) {
    EXPECT_THAT(calls([](Core_RL& layer) { layer.loadName(4294967295U); }),
                ElementsAre("glLoadName(4294967295)"));
}

// == Flat boxes ==

TEST_F(Primitives_calls_test, filledBox2IsOneQuad) {
    EXPECT_THAT(calls([](Core_RL& layer) {
                    layer.render(Box2<float>{{1, 2}, {3, 5}}, false);
                }),
                ElementsAre("glBegin(GL_QUADS)", "glVertex2fv({1, 2})", "glVertex2fv({3, 2})",
                            "glVertex2fv({3, 5})", "glVertex2fv({1, 5})", "glEnd()"));
}

TEST_F(Primitives_calls_test, deliberatelyWireBox2SendsFiveVerticesAsLinesSoThatTwoEdgesShow) {
    EXPECT_THAT(calls([](Core_RL& layer) {
                    layer.render(Box2<float>{{1, 2}, {3, 5}}, true);
                }),
                ElementsAre("glBegin(GL_LINES)", "glVertex2fv({1, 2})", "glVertex2fv({3, 2})",
                            "glVertex2fv({3, 5})", "glVertex2fv({1, 5})", "glVertex2fv({1, 2})", "glEnd()"));
}

TEST_F(Primitives_calls_test, box2OfDoublesAsksVirtualOverloadForFloats) {
    for (bool const wire : {false, true}) {
        Witness_core witness({"render(Box2)"});
        gl_spy::Recording recording;
        witness.recording = &recording;
        witness.render(Box2<double>{{0.1, 2}, {3, 1e-3}}, wire);
        ASSERT_THAT(witness.trace(), ElementsAre("-> render(Box2)"));
        EXPECT_THAT(witness.requests[0].numbers, ElementsAre(0.1F, 2, 3, 1e-3F, wire ? 1 : 0));
    }
}

TEST_F(Primitives_calls_test, box2AboutCenterAsksForFilledVirtualBox2) {
    Witness_core witness({"render(Box2)"});
    gl_spy::Recording recording;
    witness.recording = &recording;
    witness.renderBox2({3, 4}, 0.5F);
    ASSERT_THAT(witness.trace(), ElementsAre("-> render(Box2)"));
    EXPECT_THAT(witness.requests[0].numbers, ElementsAre(2.5, 3.5, 3.5, 4.5, 0));
}

// == Boxes ==

TEST_F(Primitives_calls_test, filledBox3IsSixQuadsWithTheirNormals) {
    EXPECT_EQ(calls([](Core_RL const& layer) {
                  layer.render(Box3<float>{{1, 2, 3}, {4, 6, 8}}, false);
              }),
              boxCalls(cornersOf({1, 2, 3}, {4, 6, 8}), false));
}

TEST_F(Primitives_calls_test, wireBox3SendsFirstCornerOfEachFaceAgain) {
    EXPECT_EQ(calls([](Core_RL const& layer) {
                  layer.render(Box3<float>{{1, 2, 3}, {4, 6, 8}}, true);
              }),
              boxCalls(cornersOf({1, 2, 3}, {4, 6, 8}), true));
}

TEST_F(Primitives_calls_test, wireBox3PairsItsThirtyVerticesToAllTwelveEdgesAndNoDiagonal) {
    gl_spy::Recording recording;
    core.render(Box3<float>{{0, 0, 0}, {1, 1, 1}}, true);
    std::vector<Point> const points = sent(onlyPrimitive(recording));
    ASSERT_EQ(points.size(), 30U);
    std::set<std::pair<Point, Point>> edges;
    for (std::size_t i = 0; i < points.size(); i += 2) {
        double difference = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            difference += std::abs(points[i][k] - points[i + 1][k]);
        }
        EXPECT_EQ(difference, 1) << "pair " << i / 2 << " is not an edge";
        edges.insert(std::minmax(points[i], points[i + 1]));
    }
    EXPECT_EQ(edges.size(), 12U);
}

TEST_F(Primitives_calls_test, coloredBox3SendsColorNormalAndCorner) {
    for (bool const wire : {false, true}) {
        EXPECT_EQ(calls([wire](Core_RL const& layer) {
                      layer.render(Box3<float>{{1, 2, 3}, {4, 6, 8}}, CORNER_COLORS, wire);
                  }),
                  boxCalls(cornersOf({1, 2, 3}, {4, 6, 8}), wire, &CORNER_COLOR_POINTS));
    }
}

TEST_F(Primitives_calls_test, box3OfDoublesAsksVirtualOverloadsForFloats) {
    Box3<double> const box{{0.1, 2, 3}, {4, 1e-3, 8}};
    for (bool const wire : {false, true}) {
        Witness_core witness({"render(Box3)", "render(Box3, colors)"});
        gl_spy::Recording recording;
        witness.recording = &recording;
        Core_RL const& layer = witness;
        layer.render(box, wire);
        layer.render(box, CORNER_COLORS, wire);
        ASSERT_THAT(witness.trace(), ElementsAre("-> render(Box3)", "-> render(Box3, colors)"));
        EXPECT_THAT(witness.requests[0].numbers, ElementsAre(0.1F, 2, 3, 4, 1e-3F, 8, wire ? 1 : 0));
        EXPECT_THAT(witness.requests[1].numbers,
                    ElementsAre(0.1F, 2, 3, 4, 1e-3F, 8, wire ? 1 : 0, 0, 0, 0, 1, 1, 1));
    }
}

TEST_F(Primitives_calls_test, orientedBoxGoesThroughItsOwnCorners) {
    // A quarter turn about z, so that every corner is exact.
    Obb3<float> const box{{0, 1, 0}, 1, {-1, 0, 0}, 2, {0, 0, 1}, 3, {10, 20, 30}};
    std::array<Point, 8> corners;
    for (int i = 0; i < 8; ++i) {
        corners[std::size_t(i)] = {(i & 2) != 0 ? 8.0 : 12.0, (i & 1) != 0 ? 21.0 : 19.0,
                                   (i & 4) != 0 ? 33.0 : 27.0};
    }
    EXPECT_EQ(calls([&box](Core_RL& layer) { layer.render(box, false); }), boxCalls(corners, false));
    EXPECT_EQ(calls([&box](Core_RL& layer) { layer.render(box, true); }), boxCalls(corners, true));
}

TEST_F(Primitives_calls_test, deliberatelyOrientedBoxSendsUnrotatedNormals) {
    float const s = std::sqrt(0.5F);
    gl_spy::Recording recording;
    core.render(Obb3<float>{{s, s, 0}, 1, {-s, s, 0}, 1, {0, 0, 1}, 1, {0, 0, 0}}, false);
    std::vector<gl_spy::Vertex> const vertices = onlyPrimitive(recording).vertices;
    ASSERT_EQ(vertices.size(), 24U);
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        expectNear(vertices[i].normal, FACES[i / 4].normal, EXACT, "normal " + std::to_string(i));
    }
}

TEST_F(Primitives_calls_test, orientedBoxOfDoublesAsksVirtualOverloadForFloats) {
    Witness_core witness({"render(Obb3)"});
    gl_spy::Recording recording;
    witness.recording = &recording;
    witness.render(Obb3<double>{{0.1, 0, 0}, 4, {0, 0.2, 0}, 0.5, {0, 0, 0.3}, 0.6, {7, 8, 0.9}}, true);
    ASSERT_THAT(witness.trace(), ElementsAre("-> render(Obb3)"));
    EXPECT_THAT(witness.requests[0].numbers,
                ElementsAre(0.1F, 0, 0, 0, 0.2F, 0, 0, 0, 0.3F, 7, 8, 0.9F, 4, 0.5, 0.6F, 1));
}

TEST_F(Primitives_calls_test, cubeAboutCenterAsksForFilledVirtualBox3) {
    Witness_core witness({"render(Box3)"});
    gl_spy::Recording recording;
    witness.recording = &recording;
    witness.renderBox3(Vector3<float>{1, 2, 3}, 0.5F);
    ASSERT_THAT(witness.trace(), ElementsAre("-> render(Box3)"));
    EXPECT_THAT(witness.requests[0].numbers, ElementsAre(0.5, 1.5, 2.5, 1.5, 2.5, 3.5, 0));
}

TEST_F(Primitives_calls_test, namedCubePushesFillingsNameAndColorAndPopsColorFirst) {
    Witness_core witness({"render(Box3)"});
    prepare(witness);
    gl_spy::Recording recording;
    witness.recording = &recording;
    witness.renderBox3(42U, Color4<float>{1, 0.5F, 0, 1}, 0.25F);
    ASSERT_EQ(witness.trace(), joined({PUSHED_FILLINGS,
                                       {"glLoadName(42)", "glColor4f(1, 0.5, 0, 1)", "-> render(Box3)"},
                                       START_COLOR_AGAIN,
                                       FILLINGS_FRONT_FIRST}));
    EXPECT_THAT(witness.requests[0].numbers, ElementsAre(-0.25, -0.25, -0.25, 0.25, 0.25, 0.25, 0));
    EXPECT_EQ(witness.currentColor(), START_COLOR);
}

// == Lattices ==

namespace {

template <class Lattice>
void expectLattice(Core_RL& layer, Lattice const& lattice) {
    gl_spy::Recording recording;
    layer.renderBox3Points_asPoints(lattice);
    std::vector<Point> expected;
    for (unsigned int i = 0; i < lattice.count.e0; ++i) {
        for (unsigned int j = 0; j < lattice.count.e1; ++j) {
            for (unsigned int k = 0; k < lattice.count.e2; ++k) {
                expected.push_back({double(lattice.origin.x) + i * double(lattice.step.x),
                                    double(lattice.origin.y) + j * double(lattice.step.y),
                                    double(lattice.origin.z) + k * double(lattice.step.z)});
            }
        }
    }
    EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_POINTS)", "glEnd()"}));
    EXPECT_EQ(recording.count("glVertex3fv"), expected.size());
    expectPoints(sent(onlyPrimitive(recording)), expected, 1e-6);
}

}  // namespace

TEST_F(Primitives_calls_test, latticesRunFastestOverThirdCount) {
    expectLattice(core, Box3Points<float>{{2, 3, 4}, {1, 2, 3}, {0.1F, 0.2F, 0.3F}});
    expectLattice(core, Box3Points<double>{{3, 1, 2}, {-1, 2, 3}, {0.1, 0.2, 0.3}});
    expectLattice(core, Box3Points_ex<float>{{2, 2, 3}, {1, 2, 3}, {0.7F, -0.2F, 0.3F}});
    expectLattice(core, Box3Points_ex<double>{{1, 4, 2}, {1, -2, 3}, {0.1, 0.2, 0.3}});
}

TEST_F(Primitives_calls_test, latticePointsAreComputedInFloat) {
    gl_spy::Recording recording;
    core.renderBox3Points_asPoints(Box3Points<float>{{40, 1, 1}, {0.3F, 0, 0}, {0.1F, 0, 0}});
    std::vector<Point> const points = sent(onlyPrimitive(recording));
    ASSERT_EQ(points.size(), 40U);
    for (unsigned int i = 0; i < 40; ++i) {
        float const product = float(i) * 0.1F;
        EXPECT_EQ(points[i][0], double(0.3F + product)) << i;
    }
}

TEST_F(Primitives_calls_test, latticeWithAnyZeroCountIsEmptyBlock) {
    for (Tuple3<unsigned int> const count :
         {Tuple3<unsigned int>{0, 2, 2}, {2, 0, 2}, {2, 2, 0}, {0, 0, 0}}) {
        auto const empty = ElementsAre("glBegin(GL_POINTS)", "glEnd()");
        EXPECT_THAT(calls([&](Core_RL& layer) {
                        layer.renderBox3Points_asPoints(Box3Points<float>{count, {1, 2, 3}, {1, 1, 1}});
                    }),
                    empty);
        EXPECT_THAT(calls([&](Core_RL& layer) {
                        layer.renderBox3Points_asPoints(Box3Points<double>{count, {1, 2, 3}, {1, 1, 1}});
                    }),
                    empty);
        EXPECT_THAT(calls([&](Core_RL& layer) {
                        layer.renderBox3Points_asPoints(Box3Points_ex<float>{count, {1, 2, 3}, {1, 1, 1}});
                    }),
                    empty);
        EXPECT_THAT(calls([&](Core_RL& layer) {
                        layer.renderBox3Points_asPoints(Box3Points_ex<double>{count, {1, 2, 3}, {1, 1, 1}});
                    }),
                    empty);
    }
}

// == Quads and rhombi ==

TEST_F(Primitives_calls_test, quadOfFourCorners) {
    gl_spy::Recording recording;
    core.renderQuad3({1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {-1, -2, -3});
    EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_QUADS)", "glEnd()"}));
    expectPoints(sent(onlyPrimitive(recording)), {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {-1, -2, -3}}, EXACT);
}

namespace {

void expectTextured(gl_spy::Recording const& recording, std::vector<Point> const& positions,
                    std::vector<std::array<double, 2>> const& coordinates) {
    EXPECT_EQ(outline(recording), (Texts{"glEnable(GL_TEXTURE_2D)", "glBindTexture(GL_TEXTURE_2D, 17)",
                                         "glBegin(GL_POLYGON)", "glEnd()", "glDisable(GL_TEXTURE_2D)"}));
    gl_spy::Primitive const polygon = onlyPrimitive(recording);
    expectPoints(sent(polygon), positions, EXACT);
    ASSERT_EQ(polygon.vertices.size(), coordinates.size());
    for (std::size_t i = 0; i < coordinates.size(); ++i) {
        EXPECT_EQ(polygon.vertices[i].textureCoordinate[0], coordinates[i][0]) << i;
        EXPECT_EQ(polygon.vertices[i].textureCoordinate[1], coordinates[i][1]) << i;
    }
}

}  // namespace

TEST_F(Primitives_calls_test, texturedQuadIsPolygonWithWholeTextureCoordinates) {
    gl_spy::Recording recording;
    core.renderQuad3(17U);
    expectTextured(recording, {{1, 1, 0}, {1, -1, 0}, {-1, -1, 0}, {-1, 1, 0}},
                   {{1, 0}, {1, 1}, {0, 1}, {0, 0}});
    EXPECT_EQ(recording.count("glTexCoord2i") + recording.count("glTexCoord2iv"), 4U);
}

TEST_F(Primitives_calls_test, texturedRhombusIsPolygonOnItsCorner) {
    gl_spy::Recording recording;
    core.renderRhombus3(17U);
    expectTextured(recording, {{0, 1, 0}, {-1, 0, 0}, {0, -1, 0}, {1, 0, 0}},
                   {{0.5, 1}, {0, 0.5}, {0.5, 0}, {1, 0.5}});
}

TEST_F(Primitives_calls_test, texturedDrawingsUseVirtualTextureOperations) {
    Witness_core witness({"activateTextureColor", "disableTextureColor"});
    gl_spy::Recording recording;
    witness.recording = &recording;
    witness.renderQuad3(17U);
    witness.renderRhombus3(18U);
    ASSERT_THAT(witness.trace(), ElementsAre("-> activateTextureColor", "glBegin(GL_POLYGON)", "glEnd()",
                                             "-> disableTextureColor", "-> activateTextureColor",
                                             "glBegin(GL_POLYGON)", "glEnd()", "-> disableTextureColor"));
    EXPECT_THAT(witness.requests[0].numbers, ElementsAre(17));
    EXPECT_THAT(witness.requests[2].numbers, ElementsAre(18));
}

TEST_F(Primitives_calls_test, plainRhombusHasNoTextureCoordinates) {
    gl_spy::Recording recording;
    core.renderRhombus3();
    EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_POLYGON)", "glEnd()"}));
    EXPECT_EQ(recording.calls().size(), 6U);
    expectPoints(sent(onlyPrimitive(recording)), {{0, 1, 0}, {-1, 0, 0}, {0, -1, 0}, {1, 0, 0}}, EXACT);
}

// == Triangles ==

namespace {

/// The names of a recording's calls, the suffix of the argument types left out.
Texts kinds(gl_spy::Recording const& recording) {
    Texts kinds;
    for (gl_spy::Call const& call : recording.calls()) {
        kinds.push_back(call.name.substr(0, call.name.find_first_of("23")));
    }
    return kinds;
}

void expectFlatTriangle(gl_spy::Recording const& recording, std::vector<Point> const& corners,
                        Point const& normal) {
    std::vector<gl_spy::Call> normals;
    std::vector<gl_spy::Call> vertices;
    for (gl_spy::Call const& call : recording.calls()) {
        if (call.name.compare(0, 9, "glNormal3") == 0) {
            normals.push_back(call);
        }
        if (call.name.compare(0, 9, "glVertex3") == 0) {
            vertices.push_back(call);
        }
    }
    ASSERT_EQ(normals.size(), 3U);
    ASSERT_EQ(vertices.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_NEAR(normals[i].numbers[k], normal[k], 2e-7) << "normal " << i << ", component " << k;
            EXPECT_EQ(vertices[i].numbers[k], corners[i][k]) << "corner " << i << ", component " << k;
        }
    }
}

}  // namespace

TEST_F(Primitives_calls_test, triangleSendsItsUnitFaceNormalBeforeEachCorner) {
    gl_spy::Recording recording;
    core.renderTriangle({1, 0, 0}, {0, 2, 0}, {0, 0, 3});
    EXPECT_EQ(kinds(recording), (Texts{"glBegin", "glNormal", "glVertex", "glNormal", "glVertex", "glNormal",
                                       "glVertex", "glEnd"}));
    EXPECT_EQ(recording.texts().front(), "glBegin(GL_TRIANGLES)");
    // (b - a) x (c - a) = (6, 3, 2), of length 7.
    expectFlatTriangle(recording, {{1, 0, 0}, {0, 2, 0}, {0, 0, 3}}, {6.0 / 7, 3.0 / 7, 2.0 / 7});
}

TEST_F(Primitives_calls_test, triangleNormalFollowsWinding) {
    gl_spy::Recording recording;
    core.renderTriangle({0, 0, 0}, {0, 5, 0}, {5, 0, 0});
    expectFlatTriangle(recording, {{0, 0, 0}, {0, 5, 0}, {5, 0, 0}}, {0, 0, -1});
}

TEST_F(Primitives_calls_test, degenerateTriangleSendsNormalThatIsNotFinite) {
    gl_spy::Recording recording;
    core.renderTriangle({0, 0, 0}, {1, 1, 1}, {2, 2, 2});
    std::vector<gl_spy::Vertex> const vertices = onlyPrimitive(recording).vertices;
    ASSERT_EQ(vertices.size(), 3U);
    for (gl_spy::Vertex const& vertex : vertices) {
        for (double const component : vertex.normal) {
            EXPECT_FALSE(std::isfinite(component));
        }
    }
}

TEST_F(Primitives_calls_test, triangleWithNormalsSendsThemUnchanged) {
    gl_spy::Recording recording;
    core.renderTriangle({1, 0, 0}, {0, 2, 0}, {0, 0, 3}, {0, 0, 7}, {0, 8, 0}, {9, 0, 0});
    EXPECT_EQ(kinds(recording), (Texts{"glBegin", "glNormal", "glVertex", "glNormal", "glVertex", "glNormal",
                                       "glVertex", "glEnd"}));
    gl_spy::Primitive const triangle = onlyPrimitive(recording);
    EXPECT_EQ(triangle.mode, unsigned(Primitive::TRIANGLES));
    expectPoints(sent(triangle), {{1, 0, 0}, {0, 2, 0}, {0, 0, 3}}, EXACT);
    ASSERT_EQ(triangle.vertices.size(), 3U);
    expectNear(triangle.vertices[0].normal, {0, 0, 7}, EXACT, "normal 0");
    expectNear(triangle.vertices[1].normal, {0, 8, 0}, EXACT, "normal 1");
    expectNear(triangle.vertices[2].normal, {9, 0, 0}, EXACT, "normal 2");
}

TEST_F(Primitives_calls_test, optimizedTriangleOpensNoBlock) {
    gl_spy::Recording recording;
    core.renderTriangleOptimized({1, 0, 0}, {0, 2, 0}, {0, 0, 3});
    EXPECT_EQ(kinds(recording),
              (Texts{"glNormal", "glVertex", "glNormal", "glVertex", "glNormal", "glVertex"}));
    expectFlatTriangle(recording, {{1, 0, 0}, {0, 2, 0}, {0, 0, 3}}, {6.0 / 7, 3.0 / 7, 2.0 / 7});
}

// == Plane grids ==

namespace {

using Segment = std::pair<Point, Point>;

Point turned(Point const& v, Point const& axis, double angle) {
    double const c = std::cos(angle);
    double const s = std::sin(angle);
    double const along = (v[0] * axis[0] + v[1] * axis[1] + v[2] * axis[2]) * (1 - c);
    return {v[0] * c + (axis[1] * v[2] - axis[2] * v[1]) * s + axis[0] * along,
            v[1] * c + (axis[2] * v[0] - axis[0] * v[2]) * s + axis[1] * along,
            v[2] * c + (axis[0] * v[1] - axis[1] * v[0]) * s + axis[2] * along};
}

double distance(Point const& a, Point const& b) {
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

double distance(Segment const& a, Segment const& b) {
    return std::min(std::max(distance(a.first, b.first), distance(a.second, b.second)),
                    std::max(distance(a.first, b.second), distance(a.second, b.first)));
}

struct Grid {
    Point center;
    Point x;  // in-plane axes of length 1
    Point z;
};

/// Turns +Y onto the plane's normal by the shortest way, in double precision.
Grid gridOf(Plane3<float> const& plane) {
    Point const n = point(plane.n);
    Point axis{n[2], 0, -n[0]};  // (0, 1, 0) x n
    double const sine = std::hypot(axis[0], axis[2]);
    double angle = 0;
    if (sine > 1e-14) {
        for (double& component : axis) {
            component /= sine;
        }
        angle = std::atan2(sine, n[1]);
    } else {
        axis = {0, 0, -1};
        angle = n[1] > 0 ? 0 : PI;
    }
    return {{-plane.d * n[0], -plane.d * n[1], -plane.d * n[2]},
            turned({1, 0, 0}, axis, angle),
            turned({0, 0, 1}, axis, angle)};
}

Point at(Grid const& grid, double x, double z) {
    Point p = grid.center;
    for (std::size_t k = 0; k < 3; ++k) {
        p[k] += grid.x[k] * x + grid.z[k] * z;
    }
    return p;
}

std::vector<Segment> pairsOf(gl_spy::Recording const& recording) {
    gl_spy::Primitive const lines = onlyPrimitive(recording);
    EXPECT_EQ(lines.mode, unsigned(Primitive::LINES));
    EXPECT_EQ(lines.vertices.size() % 4, 0U);
    std::vector<Segment> segments;
    for (std::size_t i = 0; i + 1 < lines.vertices.size(); i += 2) {
        segments.emplace_back(lines.vertices[i].position, lines.vertices[i + 1].position);
    }
    return segments;
}

void expectGrid(Core_RL& layer, Plane3<float> const& plane, float size, unsigned int divisions) {
    SCOPED_TRACE(testing::Message() << "n " << plane.n.x << " " << plane.n.y << " " << plane.n.z);
    gl_spy::Recording recording;
    layer.renderPlane3(plane, size, divisions);
    EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_LINES)", "glEnd()"}));
    std::vector<Segment> left = pairsOf(recording);
    ASSERT_EQ(left.size(), 2 * (std::size_t(divisions) + 1));

    Grid const grid = gridOf(plane);
    double const half = 0.5 * double(size);
    double const tolerance = 1e-5 * (double(size) + std::abs(double(plane.d)));
    for (unsigned int i = 0; i <= divisions; ++i) {
        double const offset = -half + double(size) * i / divisions;
        for (Segment const& line : {Segment{at(grid, -half, offset), at(grid, half, offset)},
                                    Segment{at(grid, offset, -half), at(grid, offset, half)}}) {
            auto const found = std::find_if(left.begin(), left.end(), [&](Segment const& candidate) {
                return distance(candidate, line) < tolerance;
            });
            ASSERT_NE(found, left.end()) << "no line at offset " << offset;
            left.erase(found);
        }
    }
}

}  // namespace

TEST_F(Primitives_calls_test, planeGridLiesInPlaneAroundPointNearestOrigin) {
    expectGrid(core, {{0, 1, 0}, 0}, 2, 4);
    expectGrid(core, {{0, 1, 0}, -2}, 2, 4);
    expectGrid(core, {{0, -1, 0}, 3}, 8, 5);
    expectGrid(core, {{1, 0, 0}, 1.5F}, 4, 1);
    expectGrid(core, {{0, 0, 1}, 0.25F}, 1, 10);
    expectGrid(core, {{0, 0, -1}, 0.25F}, 1, 3);
    expectGrid(core, {normalized(Vector3<float>{1, 2, 3}), -5}, 10, 7);
    expectGrid(core, {normalized(Vector3<float>{-3, -1, 0.5F}), 0.5F}, 10, 100);
}

TEST_F(Primitives_calls_test, eachPassOfPlaneGridSendsOneLineOfEachFamily) {
    gl_spy::Recording recording;
    core.renderPlane3({{0, 1, 0}, 0}, 2, 4);
    std::vector<Segment> const lines = pairsOf(recording);
    ASSERT_EQ(lines.size(), 10U);
    for (std::size_t pass = 0; pass < 5; ++pass) {
        int alongX = 0;
        for (std::size_t family = 0; family < 2; ++family) {
            Segment const& line = lines[2 * pass + family];
            bool const isAlongX = std::abs(line.first[0] - line.second[0]) > 1;
            alongX += isAlongX ? 1 : 0;
            std::size_t const across = isAlongX ? 2 : 0;
            EXPECT_NEAR(std::abs(line.first[across]), std::abs(-1 + 0.5 * double(pass)), 1e-6);
        }
        EXPECT_EQ(alongX, 1) << "pass " << pass;
    }
}

TEST_F(Primitives_calls_test, planeGridWithoutDivisionsIsOneLineOfEachFamilyThroughEdge) {
    Plane3<float> const plane{normalized(Vector3<float>{1, 2, 3}), -5};
    gl_spy::Recording recording;
    core.renderPlane3(plane, 4, 0);
    EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_LINES)", "glEnd()"}));
    std::vector<Segment> const lines = pairsOf(recording);
    ASSERT_EQ(lines.size(), 2U);
    Grid const grid = gridOf(plane);
    auto const isEdge = [&](Segment const& line, bool alongX) {
        for (double const side : {-2.0, 2.0}) {
            Segment const edge = alongX ? Segment{at(grid, -2, side), at(grid, 2, side)}
                                        : Segment{at(grid, side, -2), at(grid, side, 2)};
            if (distance(line, edge) < 1e-5) {
                return true;
            }
        }
        return false;
    };
    EXPECT_TRUE((isEdge(lines[0], true) && isEdge(lines[1], false)) ||
                (isEdge(lines[0], false) && isEdge(lines[1], true)));
}

// == Circles and ellipses ==

TEST_F(Primitives_calls_test, circleIsLoopOfOnePointForEachDegree) {
    gl_spy::Recording recording;
    core.renderCircle3(2.0F);
    EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_LINE_LOOP)", "glEnd()"}));
    std::vector<Point> expected;
    for (int i = 0; i < 360; ++i) {
        float const t = float(i) * 0.017453292F;
        expected.push_back({2 * std::cos(double(t)), 2 * std::sin(double(t)), 0});
    }
    // Half a unit of the last place of a float below 2, so that angle and functions have their precision.
    expectPoints(sent(onlyPrimitive(recording)), expected, 1.3e-7);
}

TEST_F(Primitives_calls_test, circleOfRadiusZeroIsPoint) {
    gl_spy::Recording recording;
    core.renderCircle3(0.0F);
    expectPoints(sent(onlyPrimitive(recording)), std::vector<Point>(360, Point{0, 0, 0}), EXACT);
}

namespace {

double ellipseAngle(int i) {
    return i * 2 * PI * 0.0344827586;
}

}  // namespace

TEST_F(Primitives_calls_test, ellipseIsStripOfThirtyPoints) {
    gl_spy::Recording recording;
    core.renderEllipse3({1, 2, 3}, {4, 0, 1}, {0, 2, -1});
    EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_LINE_STRIP)", "glEnd()"}));
    std::vector<Point> expected;
    for (int i = 0; i < 30; ++i) {
        double const s = std::sin(ellipseAngle(i));
        double const c = std::cos(ellipseAngle(i));
        expected.push_back({1 + 4 * s, 2 + 2 * c, 3 + s - c});
    }
    expectPoints(sent(onlyPrimitive(recording)), expected, 1e-6);
}

TEST_F(Primitives_calls_test, deliberatelyLastPointOfEllipseLandsJustShortOfClosing) {
    gl_spy::Recording recording;
    core.renderEllipse3({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
    std::vector<Point> const points = sent(onlyPrimitive(recording));
    ASSERT_EQ(points.size(), 30U);
    EXPECT_EQ(points.front()[0], 0.0);
    // The angle is 3.77e-9 short of the full turn.
    EXPECT_NEAR(points.back()[0], std::sin(ellipseAngle(29)), 1e-12);
    EXPECT_LT(points.back()[0], -3.7e-9);
}

namespace {

struct AxisEllipse {
    char const* name;
    void (Core_RL::*draw)(Vector3<float> const&, float const&, float const&);
    std::size_t cosineAxis;
    std::size_t sineAxis;
};

std::array<AxisEllipse, 3> const AXIS_ELLIPSES{{{"XY", &Core_RL::renderEllipse3_XY, 0, 1},
                                                {"XZ", &Core_RL::renderEllipse3_XZ, 0, 2},
                                                {"YZ", &Core_RL::renderEllipse3_YZ, 1, 2}}};

}  // namespace

TEST_F(Primitives_calls_test, axisEllipsesAreMovedByPushedMatrix) {
    for (AxisEllipse const& ellipse : AXIS_ELLIPSES) {
        SCOPED_TRACE(ellipse.name);
        gl_spy::Recording recording;
        (core.*ellipse.draw)({1, 2.5F, -3}, 4.0F, 0.5F);
        EXPECT_EQ(outline(recording), (Texts{"glPushMatrix()", "glTranslated(1, 2.5, -3)",
                                             "glBegin(GL_LINE_STRIP)", "glEnd()", "glPopMatrix()"}));
        std::vector<Point> expected;
        for (int i = 0; i < 30; ++i) {
            double const t = double(float(ellipseAngle(i)));
            Point p{0, 0, 0};
            p[ellipse.cosineAxis] = 4 * std::cos(t);
            p[ellipse.sineAxis] = 0.5 * std::sin(t);
            expected.push_back(p);
        }
        expectPoints(sent(onlyPrimitive(recording)), expected, 1e-6);
    }
}

TEST_F(Primitives_calls_test, axisEllipsesTakeAngleAsFloat) {
    // The last angle rounds to a float beyond the full turn, so that the sine is above zero here and below it
    // where the angle stays double.
    double const expected = std::sin(double(float(ellipseAngle(29))));
    ASSERT_GT(expected, 1e-7);
    for (AxisEllipse const& ellipse : AXIS_ELLIPSES) {
        SCOPED_TRACE(ellipse.name);
        gl_spy::Recording recording;
        (core.*ellipse.draw)({0, 0, 0}, 1.0F, 1.0F);
        std::vector<Point> const points = sent(onlyPrimitive(recording));
        ASSERT_EQ(points.size(), 30U);
        EXPECT_NEAR(points.back()[ellipse.sineAxis], expected, 1e-12);
    }
}

// == Drawings under a picking name ==

TEST_F(Primitives_calls_test, namedDrawingsLoadNameAndAskVirtualDrawing) {
    Witness_core witness(
        {"renderArrow3", "renderArrow2", "renderPoint3", "renderPoint3_scoped", "renderPoint2"});
    gl_spy::Recording recording;
    witness.recording = &recording;
    Core_RL& layer = witness;
    layer.renderArrow3({1, 2, 3}, {4, 5, 6}, 7.0F, 11U, true);
    layer.renderArrow2({1, 2}, {3, 4}, 5.0F, 12U);
    layer.renderPoint3({1, 2, 3}, 13U);
    layer.renderPoint3_scoped({4, 5, 6}, 14U);
    layer.renderPoint2({7, 8}, 15U);
    ASSERT_THAT(witness.trace(),
                ElementsAre("glLoadName(11)", "-> renderArrow3", "glLoadName(12)", "-> renderArrow2",
                            "glLoadName(13)", "-> renderPoint3", "glLoadName(14)", "-> renderPoint3_scoped",
                            "glLoadName(15)", "-> renderPoint2"));
    EXPECT_THAT(witness.requests[0].numbers, ElementsAre(1, 2, 3, 4, 5, 6, 7, 1));
    EXPECT_THAT(witness.requests[1].numbers, ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(witness.requests[2].numbers, ElementsAre(1, 2, 3));
    EXPECT_THAT(witness.requests[3].numbers, ElementsAre(4, 5, 6));
    EXPECT_THAT(witness.requests[4].numbers, ElementsAre(7, 8));
}

TEST_F(Primitives_calls_test, tetrahedronOfDoublesAsksVirtualOverloadForFloats) {
    Witness_core witness({"renderTetrahedron"});
    gl_spy::Recording recording;
    witness.recording = &recording;
    witness.renderTetrahedron(Vector3<double>{0.1, 2, 3}, 0.7);
    ASSERT_THAT(witness.trace(), ElementsAre("-> renderTetrahedron"));
    EXPECT_THAT(witness.requests[0].numbers, ElementsAre(0.1F, 2, 3, 0.7F));
}

TEST_F(Primitives_calls_test, planeSystemAsksVirtualPlaneForEachPlane) {
    Witness_core witness({"renderPlane3"});
    gl_spy::Recording recording;
    witness.recording = &recording;
    Core_RL& layer = witness;
    Plane3System<float> single;
    single.planes = {{{0, 1, 0}, 2}, {{1, 0, 0}, -3}};
    Plane3System<double> precise;
    precise.planes = {{{0, 0.1, 0}, 0.2}};
    layer.renderPlane3System(single, 5.0F, 6U);
    layer.renderPlane3System(precise, 0.7, 8U);
    ASSERT_THAT(witness.trace(), ElementsAre("-> renderPlane3", "-> renderPlane3", "-> renderPlane3"));
    EXPECT_THAT(witness.requests[0].numbers, ElementsAre(0, 1, 0, 2, 5, 6));
    EXPECT_THAT(witness.requests[1].numbers, ElementsAre(1, 0, 0, -3, 5, 6));
    EXPECT_THAT(witness.requests[2].numbers, ElementsAre(0, 0.1F, 0, 0.2F, 0.7F, 8));
}

TEST_F(Primitives_calls_test, cameraIsStoredAndReturnedWithoutAnyCall) {
    gl_spy::Recording recording;
    EXPECT_EQ(core.getCamera(), nullptr);
    auto* const camera = reinterpret_cast<Camera_RL*>(this);  // never looked at
    core.setCamera(camera);
    EXPECT_EQ(core.getCamera(), camera);
    core.setCamera(nullptr);
    EXPECT_EQ(core.getCamera(), nullptr);
    EXPECT_TRUE(recording.calls().empty());
}

}  // namespace vellum
