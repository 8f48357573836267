#include "tests/vl_raster_gl/drawing_probe.h"

// The circle gizmos: camera-facing, culled, with the far half, and the tape rings.

namespace vellum {

using namespace drawing_probe;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr float DEGREE = 0.017453292F;
constexpr Tuple3<Color4<float>> COLORS{{1, 0, 0, 1}, {0, 1, 0, 0.5F}, {0, 0, 1, 1}};
Texts const COLOR_TEXTS{"glColor4f(1, 0, 0, 1)", "glColor4f(0, 1, 0, 0.5)", "glColor4f(0, 0, 1, 1)"};
Matrix4<float> const IDENTITY = Matrix4<float>::identity();

/// A turn, a stretch and a move.
constexpr Matrix4<float> FRAME{{0, 2, 0, 0, -3, 0, 0, 0, 0, 0.6F, 0.8F, 0, 10, -20, 30, 1}};

Texts named(unsigned int name) {
    return {"glLoadName(" + std::to_string(name) + ")"};
}

using Segment = std::pair<Point, Point>;

Point onCircle(int i, double radius) {
    auto const t = double(float(i) * DEGREE);
    return {radius * std::cos(t), radius * std::sin(t), 0};
}

Point transformed(Matrix4<float> const& m, Point const& p) {
    Point result{};
    for (std::size_t row = 0; row < 3; ++row) {
        result[row] = double(m.e[row]) * p[0] + double(m.e[4 + row]) * p[1] + double(m.e[8 + row]) * p[2] +
                      double(m.e[12 + row]);
    }
    return result;
}

/// The segments of a circle of which both ends satisfy a condition on their dot product with the direction.
template <class Condition>
std::vector<Point> segmentsWhere(Vector3<float> const& direction, Matrix4<float> const& frame, double radius,
                                 Condition const& holds) {
    std::vector<Point> points;
    Point previous{};
    bool previousHolds = false;
    for (int i = 0; i < 360; ++i) {
        Point const p = transformed(frame, onCircle(i, radius));
        double const dot = (p[0] - double(frame.e[12])) * double(direction.x) +
                           (p[1] - double(frame.e[13])) * double(direction.y) +
                           (p[2] - double(frame.e[14])) * double(direction.z);
        if (i > 0 && previousHolds && holds(dot)) {
            points.push_back(previous);
            points.push_back(p);
        }
        previous = p;
        previousHolds = holds(dot);
    }
    return points;
}

std::vector<Point> wholeCircle(Matrix4<float> const& frame, double radius) {
    return segmentsWhere({0, 0, 0}, frame, radius, [](double) { return true; });
}

bool isFront(double dot) {
    return dot < -0.01;
}

/// 90 degrees about Y and -90 about X, with the cosine of the float pi / 2.
Matrix4<float> orientation(unsigned int axis, float scale) {
    constexpr float C = -4.371139e-08F;
    Matrix4<float> m = IDENTITY;
    if (axis == 0) {
        m = {{C, 0, -1, 0, 0, 1, 0, 0, 1, 0, C, 0, 0, 0, 0, 1}};
    }
    if (axis == 1) {
        m = {{1, 0, 0, 0, 0, C, -1, 0, 0, 1, C, 0, 0, 0, 0, 1}};
    }
    for (int i = 0; i < 12; ++i) {
        m.e[i] *= scale;
    }
    return m;
}

std::vector<double> multiplied(Matrix4<float> const& a, Matrix4<float> const& b) {
    std::vector<double> product(16);
    for (std::size_t column = 0; column < 4; ++column) {
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t k = 0; k < 4; ++k) {
                product[4 * column + row] += double(a.e[4 * k + row]) * double(b.e[4 * column + k]);
            }
        }
    }
    return product;
}

class Circles_calls_test : public Drawing_calls_test {};

}  // namespace

// == Camera-facing circle ==

TEST_F(Circles_calls_test, cameraFacingCircleReplacesUpperLeftBlockByIdentity) {
    // Every element that is kept has a value of its own.
    Matrix4<float> const view{{1, 0, 0, 0.5F, 0, 1, 0, 0.25F, 0, 0, 1, 0.125F, 100, 200, 300, 2}};
    core.setTransform(view);
    gl_spy::Recording recording;
    core.renderCircleCameraFacing3(FRAME, Matrix3<float>{}, 1.5F, {1, 0.5F, 0, 1}, 2.0F);

    EXPECT_EQ(
        outline(recording),
        joined({{"glColor4f(1, 0.5, 0, 1)", "glPushMatrix()", recording.named("glMultMatrixf").at(0).text(),
                 "glGetFloatv(GL_MODELVIEW_MATRIX, pointer)", recording.named("glLoadMatrixf").at(0).text(),
                 "glScalef(1.5, 1.5, 1.5)", "glBegin(GL_LINE_LOOP)", "glEnd()", "glBegin(GL_LINE_LOOP)",
                 "glEnd()", "glPopMatrix()"},
                START_COLOR_AGAIN}));
    std::vector<double> const frame(FRAME.e, FRAME.e + 16);
    EXPECT_EQ(recording.named("glMultMatrixf").at(0).numbers, frame);

    std::vector<double> expected = multiplied(view, FRAME);
    for (std::size_t column = 0; column < 3; ++column) {
        for (std::size_t row = 0; row < 3; ++row) {
            expected[4 * column + row] = row == column ? 1 : 0;
        }
    }
    ASSERT_NE(expected[3], 0);
    std::vector<double> const loaded = recording.named("glLoadMatrixf").at(0).numbers;
    ASSERT_EQ(loaded.size(), 16U);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(loaded[i], expected[i], 1e-4) << "element " << i;
    }
    EXPECT_EQ(core.currentColor(), START_COLOR);
}

TEST_F(Circles_calls_test, deliberatelyCameraFacingCircleIsDrawnTwice) {
    gl_spy::Recording recording;
    core.renderCircleCameraFacing3(IDENTITY, Matrix3<float>{}, 1, {1, 0.5F, 0, 1}, 2.0F);
    std::vector<gl_spy::Primitive> const circles = recording.primitives();
    ASSERT_EQ(circles.size(), 2U);
    std::vector<Point> expected;
    for (int i = 0; i < 360; ++i) {
        expected.push_back(onCircle(i, 2));
    }
    for (gl_spy::Primitive const& circle : circles) {
        EXPECT_EQ(circle.mode, unsigned(Primitive::LINE_LOOP));
        expectPoints(sent(circle), expected, 1.3e-7);
    }
}

TEST_F(Circles_calls_test, cameraFacingCircleAsksVirtualCircleBeforeItsOwn) {
    Witness_core witness({"renderCircle3"});
    prepare(witness);
    gl_spy::Recording recording;
    witness.recording = &recording;
    witness.renderCircleCameraFacing3(IDENTITY, Matrix3<float>{}, 1.5F, {1, 0.5F, 0, 1}, 2.0F);
    Texts const trace = witness.trace();
    ASSERT_EQ(trace.size(), 11U);
    EXPECT_EQ(Texts(trace.begin() + 5, trace.end()),
              joined({{"glScalef(1.5, 1.5, 1.5)", "-> renderCircle3", "glBegin(GL_LINE_LOOP)", "glEnd()",
                       "glPopMatrix()"},
                      START_COLOR_AGAIN}));
    EXPECT_THAT(witness.requests[0].numbers, ElementsAre(2));
}

TEST_F(Circles_calls_test, deliberatelyCameraFacingCircleIgnoresMatrix3) {
    auto const drawn = [this](Matrix3<float> const& unused) {
        return calls([&unused](Core_RL& layer) {
            layer.renderCircleCameraFacing3(FRAME, unused, 1.5F, {1, 0.5F, 0, 1}, 2.0F);
        });
    };
    EXPECT_EQ(drawn(Matrix3<float>{}), drawn(Matrix3<float>{{9, 8, 7, 6, 5, 4, 3, 2, 1}}));
}

TEST_F(Circles_calls_test, cameraFacingCirclePushesItsColorOnGlobalLayer) {
    Witness_core asked({"setColor"});
    Witness_core global({"setColor"});
    ASSERT_EQ(VL_Raster, &global) << "the layer constructed last";
    asked.renderCircleCameraFacing3(IDENTITY, Matrix3<float>{}, 1, {1, 0.5F, 0, 1}, 2.0F);
    EXPECT_THAT(asked.requests, IsEmpty());
    ASSERT_EQ(global.requests.size(), 2U);
    EXPECT_THAT(global.requests[0].numbers, ElementsAre(1, 0.5, 0, 1));
    EXPECT_THAT(global.requests[1].numbers, ElementsAre(1, 1, 1, 1));
}

// == Culled circle ==

TEST_F(Circles_calls_test, culledCircleShowsHalfNearerToViewer) {
    struct {
        Vector3<float> direction;
        Matrix4<float> frame;
        float radius;
    } const rows[] = {{{0, -1, 0}, IDENTITY, 1},
                      {{1, 0, 0}, IDENTITY, 2},
                      {{0.3F, 0.4F, -0.8F}, FRAME, 1.5F},
                      {{-0.6F, 0.1F, 0.7F}, FRAME, 4}};
    for (auto const& row : rows) {
        gl_spy::Recording recording;
        core.renderCircleCulled3(row.direction, row.frame, row.radius);
        EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_LINES)", "glEnd()"}));
        std::vector<Point> const expected =
            segmentsWhere(row.direction, row.frame, double(row.radius), isFront);
        EXPECT_GT(expected.size(), 300U);
        EXPECT_LT(expected.size(), 360U);
        expectPoints(sent(onlyPrimitive(recording)), expected, 2e-5);
    }
}

TEST_F(Circles_calls_test, culledCircleLeavesOutPointsWithinHundredthOfRim) {
    // Near 0 degrees the sines are below 0.01 up to i = 0 only; near 180 degrees from i = 180 on.
    gl_spy::Recording recording;
    core.renderCircleCulled3({0, -1, 0}, IDENTITY, 1);
    std::vector<Point> const points = sent(onlyPrimitive(recording));
    ASSERT_EQ(points.size(), 2 * 178U);
    expectNear(points.front(), onCircle(1, 1), 1e-6, "first point");
    expectNear(points.back(), onCircle(179, 1), 1e-6, "last point");

    // At half the radius sin 1 degree is within the limit too.
    gl_spy::Recording smaller;
    core.renderCircleCulled3({0, -1, 0}, IDENTITY, 0.5F);
    std::vector<Point> const inner = sent(onlyPrimitive(smaller));
    ASSERT_EQ(inner.size(), 2 * 176U);
    expectNear(inner.front(), onCircle(2, 0.5), 1e-6, "first point");
}

TEST_F(Circles_calls_test, culledCircleIsDrawnWholeWhenAllDotProductsAreWithinHundredthOfZero) {
    gl_spy::Recording recording;
    core.renderCircleCulled3({0, 0, 1}, IDENTITY, 3);
    std::vector<Point> const points = sent(onlyPrimitive(recording));
    EXPECT_EQ(points.size(), 2 * 359U);
    expectPoints(points, wholeCircle(IDENTITY, 3), 1e-6);

    // A circle smaller than the limit has no other points.
    gl_spy::Recording tiny;
    core.renderCircleCulled3({0, -1, 0}, IDENTITY, 0.0099F);
    EXPECT_EQ(onlyPrimitive(tiny).vertices.size(), 2 * 359U);
}

TEST_F(Circles_calls_test, deliberatelyWholeCircleLeavesGapOfOneDegree) {
    gl_spy::Recording recording;
    core.renderCircleCulled3({0, 0, 1}, IDENTITY, 1);
    std::vector<Point> const points = sent(onlyPrimitive(recording));
    ASSERT_EQ(points.size(), 2 * 359U);
    expectNear(points.front(), {1, 0, 0}, 1e-6, "first point");
    expectNear(points.back(), onCircle(359, 1), 1e-6, "last point");
    EXPECT_GT(std::hypot(points.back()[0] - 1, points.back()[1]), 0.017);
}

TEST_F(Circles_calls_test, deliberatelyCulledHalfAcrossSeamHasNoSegmentThere) {
    // The half around 0 degrees: the segment from 359 to 0 would belong to it.
    gl_spy::Recording recording;
    core.renderCircleCulled3({-1, 0, 0}, IDENTITY, 1);
    std::vector<Point> const points = sent(onlyPrimitive(recording));
    EXPECT_EQ(points.size(), 2 * (89U + 88U));
    for (std::size_t i = 0; i + 1 < points.size(); i += 2) {
        EXPECT_EQ(points[i][1] < -1e-6, points[i + 1][1] < -1e-6)
            << "segment " << i / 2 << " crosses the seam";
    }
}

// == Culled circle with its far half ==

TEST_F(Circles_calls_test, farHalfIsSecondPassInLinesOfWidthOne) {
    Vector3<float> const direction{0.3F, 0.4F, -0.8F};
    gl_spy::Recording recording;
    core.renderCircleCulledStipple3(direction, FRAME, 1.5F);
    EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_LINES)", "glEnd()", "glLineWidth(1)",
                                         "glBegin(GL_LINES)", "glEnd()", "glLineWidth(3)"}));
    std::vector<gl_spy::Primitive> const passes = recording.primitives();
    ASSERT_EQ(passes.size(), 2U);
    std::vector<Point> const front = segmentsWhere(direction, FRAME, 1.5, [](double dot) { return dot < 0; });
    std::vector<Point> const back = segmentsWhere(direction, FRAME, 1.5, [](double dot) { return dot > 0; });
    EXPECT_GT(front.size() + back.size(), 700U);
    expectPoints(sent(passes[0]), front, 2e-5);
    expectPoints(sent(passes[1]), back, 2e-5);
}

TEST_F(Circles_calls_test, deliberatelyFarHalfUsesNoStipple) {
    gl_spy::Recording recording;
    core.renderCircleCulledStipple3({0.3F, 0.4F, -0.8F}, FRAME, 1.5F);
    EXPECT_EQ(recording.count("glEnable"), 0U);
    EXPECT_EQ(recording.count("glLineStipple"), 0U);
}

TEST_F(Circles_calls_test, farHalfHasNoFallbackAndDrawsNothingForDotProductsOfZero) {
    gl_spy::Recording recording;
    core.renderCircleCulledStipple3({0, 0, 1}, IDENTITY, 3);
    EXPECT_THAT(recording.texts(), ElementsAre("glBegin(GL_LINES)", "glEnd()", "glLineWidth(1)",
                                               "glBegin(GL_LINES)", "glEnd()", "glLineWidth(3)"));
}

TEST_F(Circles_calls_test, segmentsWithEndAtZeroAreInNeitherPass) {
    // Point 0 has the dot product 0 exactly, so its segment is in neither half.
    gl_spy::Recording recording;
    core.renderCircleCulledStipple3({0, -1, 0}, IDENTITY, 1);
    std::vector<gl_spy::Primitive> const passes = recording.primitives();
    ASSERT_EQ(passes.size(), 2U);
    ASSERT_FALSE(passes[0].vertices.empty());
    ASSERT_FALSE(passes[1].vertices.empty());
    expectNear(passes[0].vertices.front().position, onCircle(1, 1), 1e-6, "first near point");
    for (gl_spy::Primitive const& pass : passes) {
        for (Point const& p : sent(pass)) {
            EXPECT_NE(p[1], 0) << "a point on the rim";
        }
    }
}

// == Tape ==

TEST_F(Circles_calls_test, tapeIsCapBandAndCap) {
    gl_spy::Recording recording;
    core.renderCircleTape3(2.0F, 0.5F);
    EXPECT_EQ(outline(recording), (Texts{"glBegin(GL_TRIANGLES)", "glEnd()", "glBegin(GL_QUAD_STRIP)",
                                         "glEnd()", "glBegin(GL_TRIANGLES)", "glEnd()"}));
    std::vector<gl_spy::Primitive> const parts = recording.primitives();
    ASSERT_EQ(parts.size(), 3U);
    std::vector<Point> band;
    for (int i = 5; i <= 85; ++i) {
        Point const p = onCircle(i, 2);
        band.push_back({p[0], p[1], -0.25});
        band.push_back({p[0], p[1], 0.25});
    }
    EXPECT_EQ(band.size(), 162U);
    expectPoints(sent(parts[1]), band, 1.3e-7);
}

TEST_F(Circles_calls_test, deliberatelyCapsOfTapeHaveTheirOwnFactors) {
    for (float const radius : {1.0F, 2.0F}) {
        gl_spy::Recording recording;
        core.renderCircleTape3(radius, 0.5F);
        std::vector<gl_spy::Primitive> const parts = recording.primitives();
        ASSERT_EQ(parts.size(), 3U);
        auto const r = double(radius);
        auto const cosFive = double(float(r * 0.9961946983130029));
        auto const sinFive = double(float(r * 0.0871557402186753));
        auto const cosEightyFive = double(float(r * 0.08715580058482462));
        auto const sinEightyFive = double(float(r * 0.9961946930316474));
        ASSERT_NE(sinFive, cosEightyFive);
        expectPoints(sent(parts[0]), {{r, 0, 0}, {cosFive, sinFive, 0.25}, {cosFive, sinFive, -0.25}}, 0);
        expectPoints(sent(parts[2]),
                     {{0, r, 0}, {cosEightyFive, sinEightyFive, -0.25}, {cosEightyFive, sinEightyFive, 0.25}},
                     0);
    }
}

TEST_F(Circles_calls_test, deliberatelyCapsOfTapeListTheirSidesInOppositeOrder) {
    gl_spy::Recording recording;
    core.renderCircleTape3(1.0F, 0.5F);
    std::vector<gl_spy::Primitive> const parts = recording.primitives();
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_EQ(parts[0].vertices.at(1).position[2], 0.25);
    EXPECT_EQ(parts[0].vertices.at(2).position[2], -0.25);
    EXPECT_EQ(parts[2].vertices.at(1).position[2], -0.25);
    EXPECT_EQ(parts[2].vertices.at(2).position[2], 0.25);
}

TEST_F(Circles_calls_test, tapeOfWidthZeroDegeneratesToArc) {
    gl_spy::Recording recording;
    core.renderCircleTape3(1.0F, 0.0F);
    std::vector<gl_spy::Primitive> const parts = recording.primitives();
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_EQ(parts[1].vertices.size(), 162U);
    for (gl_spy::Primitive const& part : parts) {
        for (Point const& p : sent(part)) {
            EXPECT_EQ(p[2], 0);
        }
    }
    for (std::size_t i = 0; i + 1 < parts[1].vertices.size(); i += 2) {
        EXPECT_EQ(parts[1].vertices[i].position, parts[1].vertices[i + 1].position);
    }
}

// == Culled circles of the axes ==

namespace {

using CulledAxis = void (Core_RL::*)(VL_AXIS const&, unsigned int const&, Vector3<float> const&,
                                     Matrix4<float> const&, float, float const&);

struct CulledKind {
    char const* circle;
    CulledAxis draw;
};

std::array<CulledKind, 2> const CULLED_KINDS{
    {{"renderCircleCulled3", &Core_RL::renderAxisCircleCulled3},
     {"renderCircleCulledStipple3", &Core_RL::renderAxisCircleCulledStipple3}}};

}  // namespace

TEST_F(Circles_calls_test, culledAxisCircleLoadsItsNameAndAsksVirtualCircleInTurnedFrame) {
    for (CulledKind const& kind : CULLED_KINDS) {
        for (unsigned int axis = 0; axis < 3; ++axis) {
            SCOPED_TRACE(testing::Message() << kind.circle << " of axis " << axis);
            Witness_core witness({kind.circle});
            gl_spy::Recording recording;
            witness.recording = &recording;
            (witness.*kind.draw)(VL_AXIS(axis), 90U + axis, {0.3F, 0.4F, -0.8F}, FRAME, 1.5F, 2.0F);
            ASSERT_EQ(witness.trace(), joined({named(90 + axis), {std::string("-> ") + kind.circle}}));
            ASSERT_EQ(witness.requests.size(), 1U);
            std::vector<double> const numbers = witness.requests[0].numbers;
            ASSERT_EQ(numbers.size(), 20U);
            EXPECT_THAT(std::vector<double>(numbers.begin(), numbers.begin() + 4),
                        ElementsAre(0.3F, 0.4F, -0.8F, 2));
            std::vector<double> const expected = multiplied(FRAME, orientation(axis, 1.5F));
            for (std::size_t i = 0; i < 16; ++i) {
                EXPECT_NEAR(numbers[4 + i], expected[i], 1e-6) << "element " << i;
            }
        }
    }
}

TEST_F(Circles_calls_test, culledAxisCircleTurnsByFloatRightAngle) {
    // The cosine of the float pi / 2 is not zero. A frame of ones and zeros shows it unrounded.
    for (unsigned int axis = 0; axis < 2; ++axis) {
        Witness_core witness({"renderCircleCulled3"});
        witness.renderAxisCircleCulled3(VL_AXIS(axis), 0U, {0, 0, 1}, IDENTITY, 1.0F, 2.0F);
        ASSERT_EQ(witness.requests.size(), 1U);
        Matrix4<float> const expected = orientation(axis, 1.0F);
        for (std::size_t i = 0; i < 16; ++i) {
            EXPECT_FLOAT_EQ(float(witness.requests[0].numbers[4 + i]), expected.e[i]) << "element " << i;
        }
    }
}

TEST_F(Circles_calls_test, culledAxisCircleLiesAcrossItsAxis) {
    for (unsigned int axis = 0; axis < 3; ++axis) {
        gl_spy::Recording recording;
        core.renderAxisCircleCulled3(VL_AXIS(axis), 0U, {0.5F, 0.6F, 0.7F}, IDENTITY, 2.0F, 1.5F);
        std::vector<Point> const points = sent(onlyPrimitive(recording));
        EXPECT_GT(points.size(), 300U);
        for (Point const& p : points) {
            EXPECT_NEAR(p[axis], 0, 1e-6);
            EXPECT_NEAR(std::hypot(p[0], p[1], p[2]), 3, 1e-6);
        }
        EXPECT_EQ(recording.count("glColor4f"), 0U);
        EXPECT_EQ(recording.count("glPushMatrix"), 0U);
    }
}

TEST_F(Circles_calls_test, axisOfThreeOrMoreLoadsNameAndDrawsNothing) {
    for (CulledKind const& kind : CULLED_KINDS) {
        for (unsigned int const axis : {3U, 4U, 100U}) {
            EXPECT_EQ(calls([&](Core_RL& layer) {
                          (layer.*kind.draw)(VL_AXIS(axis), 91U, {0, 0, -1}, IDENTITY, 1.0F, 2.0F);
                      }),
                      named(91));
        }
    }
    EXPECT_EQ(calls([](Core_RL& layer) { layer.renderAxisCircleTape3(VL_AXIS(3), 1.0F, 0.5F); }), named(3));
    EXPECT_EQ(calls([](Core_RL& layer) { layer.renderAxisCircleTape3(VL_AXIS(50), 1.0F, 0.5F); }), named(50));
}

TEST_F(Circles_calls_test, culledSetsPushColorForEachRing) {
    Vector3<float> const direction{0.5F, 0.6F, 0.7F};
    for (bool const showsFarHalf : {false, true}) {
        Texts expected;
        for (unsigned int axis = 0; axis < 3; ++axis) {
            Texts const ring = calls([&](Core_RL& layer) {
                (layer.*CULLED_KINDS[showsFarHalf ? 1 : 0].draw)(VL_AXIS(axis), 60 + axis, direction, FRAME,
                                                                 0.5F, 2.0F);
            });
            expected = joined({expected, {COLOR_TEXTS[axis]}, ring});
        }
        Texts const set = calls([&](Core_RL& layer) {
            if (showsFarHalf) {
                layer.renderAxesCircleCulledStipple3(60, 61, 62, direction, FRAME, 0.5F, COLORS, 2.0F);
            } else {
                layer.renderAxesCircleCulled3(60, 61, 62, direction, FRAME, 0.5F, COLORS, 2.0F);
            }
        });
        EXPECT_EQ(set, joined({expected, START_COLOR_AGAIN}));
        EXPECT_EQ(core.currentColor(), START_COLOR);
    }
}

// == Tape rings of the axes ==

namespace {

Texts const QUARTER{"glBegin(GL_TRIANGLES)", "glEnd()", "glBegin(GL_QUAD_STRIP)", "glEnd()",
                    "glBegin(GL_TRIANGLES)", "glEnd()"};

/// The calls of a tape ring: three quarter turns between its four quarters.
Texts tapeRing(unsigned int axis) {
    Texts const next = joined({{"glRotatef(90, 0, 0, 1)"}, QUARTER});
    Texts const others = joined({next, next, next, {"glPopMatrix()"}});
    if (axis == 2) {
        return joined({named(axis), QUARTER, {"glPushMatrix()"}, others});
    }
    return joined({named(axis),
                   {"glPushMatrix()", axis == 0 ? "glRotatef(90, 0, 1, 0)" : "glRotatef(-90, 1, 0, 0)"},
                   QUARTER,
                   others});
}

}  // namespace

TEST_F(Circles_calls_test, tapeRingIsFourQuartersUnderAxisAsName) {
    for (unsigned int axis = 0; axis < 3; ++axis) {
        SCOPED_TRACE(axis);
        gl_spy::Recording recording;
        core.renderAxisCircleTape3(VL_AXIS(axis), 2.0F, 0.5F);
        EXPECT_EQ(outline(recording), tapeRing(axis));
        std::vector<gl_spy::Primitive> const parts = recording.primitives();
        ASSERT_EQ(parts.size(), 12U);
        for (gl_spy::Primitive const& part : parts) {
            for (Point const& p : placed(part)) {
                EXPECT_LE(std::abs(p[axis]), 0.25 + 1e-6);
                double const square = p[0] * p[0] + p[1] * p[1] + p[2] * p[2] - p[axis] * p[axis];
                EXPECT_NEAR(std::sqrt(square), 2, 1e-5);
            }
        }
    }
}

TEST_F(Circles_calls_test, quartersOfTapeRingMeetInTheirPointedCaps) {
    gl_spy::Recording recording;
    core.renderAxisCircleTape3(VL_AXIS_Z, 2.0F, 0.5F);
    std::vector<gl_spy::Primitive> const parts = recording.primitives();
    ASSERT_EQ(parts.size(), 12U);
    for (std::size_t quarter = 0; quarter < 4; ++quarter) {
        Point const end = parts[3 * quarter + 2].vertices.at(0).transformed;
        Point const start = parts[3 * ((quarter + 1) % 4)].vertices.at(0).transformed;
        expectNear(end, start, 1e-5, "tip after quarter " + std::to_string(quarter));
    }
}

TEST_F(Circles_calls_test, deliberatelyTapeSetUsesNamesAsAxes) {
    EXPECT_EQ(
        [this] {
            gl_spy::Recording recording;
            core.renderAxesCircleTape3(1, 2, 0, COLORS, 2.0F, 0.5F);
            return outline(recording);
        }(),
        joined({{COLOR_TEXTS[0]},
                tapeRing(1),
                {COLOR_TEXTS[1]},
                tapeRing(2),
                {COLOR_TEXTS[2]},
                tapeRing(0),
                START_COLOR_AGAIN}));
    EXPECT_EQ(core.currentColor(), START_COLOR);
}

TEST_F(Circles_calls_test, deliberatelyTapeSetWithOtherNamesLoadsThemAndDrawsNoRing) {
    EXPECT_EQ(calls([](Core_RL& layer) { layer.renderAxesCircleTape3(10, 11, 12, COLORS, 2.0F, 0.5F); }),
              joined({{COLOR_TEXTS[0]},
                      named(10),
                      {COLOR_TEXTS[1]},
                      named(11),
                      {COLOR_TEXTS[2]},
                      named(12),
                      START_COLOR_AGAIN}));
}

}  // namespace vellum
