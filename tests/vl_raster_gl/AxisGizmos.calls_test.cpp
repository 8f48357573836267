#include "tests/vl_raster_gl/drawing_probe.h"

#include <algorithm>

// The handles of the editing tools: one arrow, box or circle for each axis, and their sets.

namespace vellum {

using namespace drawing_probe;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr Tuple3<Color4<float>> COLORS{{1, 0, 0, 1}, {0, 1, 0, 0.5F}, {0, 0, 1, 1}};
constexpr Tuple4<Color4<float>> FOUR_COLORS{{1, 0, 0, 1}, {0, 1, 0, 0.5F}, {0, 0, 1, 1}, {1, 1, 0, 1}};
Texts const COLOR_TEXTS{"glColor4f(1, 0, 0, 1)", "glColor4f(0, 1, 0, 0.5)", "glColor4f(0, 0, 1, 1)",
                        "glColor4f(1, 1, 0, 1)"};

std::array<Point, 3> const UNIT{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

/// The rotation that turns +Z onto each axis.
std::array<Texts, 3> const ROTATIONS{{{"glRotatef(90, 0, 1, 0)"}, {"glRotatef(-90, 1, 0, 0)"}, {}}};

std::string translation(std::size_t axis, std::string const& amount) {
    std::string text = "glTranslatef(";
    for (std::size_t k = 0; k < 3; ++k) {
        text += (k == 0 ? "" : ", ") + (k == axis ? amount : std::string("0"));
    }
    return text + ")";
}

/// The outline with the arguments of GLU's calls left out; they are compared as numbers.
Texts withoutGluArguments(Texts texts) {
    for (std::string& text : texts) {
        if (text.compare(0, 3, "glu") == 0) {
            text.erase(text.find('('));
        }
    }
    return texts;
}

Texts named(unsigned int name) {
    return {"glLoadName(" + std::to_string(name) + ")"};
}

/// The calls of an arrow handle. `loadName` is empty for the variant without picking.
Texts arrowCalls(std::size_t axis, Texts const& loadName) {
    return joined({PUSHED_FILLINGS,
                   {"gluNewQuadric"},
                   loadName,
                   {"glPushMatrix()", translation(axis, "0.9")},
                   ROTATIONS[axis],
                   {"gluCylinder", "glPopMatrix()", "glBegin(GL_LINES)", "glEnd()", "gluDeleteQuadric"},
                   FILLINGS_BACK_FIRST});
}

Texts boxCalls(std::size_t axis, unsigned int name, std::string const& amount) {
    return joined({PUSHED_FILLINGS,
                   named(name),
                   {"glPushMatrix()", translation(axis, amount)},
                   ROTATIONS[axis],
                   {"glBegin(GL_QUADS)", "glEnd()", "glPopMatrix()", "glBegin(GL_LINES)", "glEnd()"},
                   FILLINGS_BACK_FIRST});
}

Texts circleCalls(std::size_t axis, Texts const& loadName) {
    Texts const circle{"glBegin(GL_LINE_LOOP)", "glEnd()"};
    if (axis == 2) {
        return joined({loadName, circle});
    }
    return joined({loadName, {"glPushMatrix()"}, ROTATIONS[axis], circle, {"glPopMatrix()"}});
}

/// Corners of the box around all placed vertices of a primitive.
std::pair<Point, Point> extent(gl_spy::Primitive const& primitive) {
    Point low{1e9, 1e9, 1e9};
    Point high{-1e9, -1e9, -1e9};
    for (Point const& p : placed(primitive)) {
        for (std::size_t k = 0; k < 3; ++k) {
            low[k] = std::min(low[k], p[k]);
            high[k] = std::max(high[k], p[k]);
        }
    }
    return {low, high};
}

class AxisGizmos_calls_test : public Drawing_calls_test {
protected:
    static void expectSegmentToOne(gl_spy::Primitive const& line, std::size_t axis) {
        EXPECT_EQ(line.mode, unsigned(Primitive::LINES));
        expectPoints(sent(line), {{0, 0, 0}, UNIT[axis]}, 0);
        expectPoints(placed(line), {{0, 0, 0}, UNIT[axis]}, 1e-7);
    }
};

}  // namespace

// == Arrow handles ==

TEST_F(AxisGizmos_calls_test, arrowHandleIsConeAndSegment) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        SCOPED_TRACE(axis);
        gl_spy::Recording recording;
        core.renderAxisArrow3(VL_AXIS(axis), 70U + unsigned(axis), 0.3F);
        EXPECT_EQ(withoutGluArguments(outline(recording)), arrowCalls(axis, named(70U + unsigned(axis))));
        expectSegmentToOne(onlyPrimitive(recording), axis);

        std::vector<gl_spy::Call> const cones = recording.named("gluCylinder");
        ASSERT_EQ(cones.size(), 1U);
        ASSERT_EQ(cones[0].numbers.size(), 5U);
        EXPECT_NEAR(cones[0].numbers[0], 0.1, 2e-9) << "base radius";
        EXPECT_EQ(cones[0].numbers[1], 0) << "top radius";
        EXPECT_EQ(cones[0].numbers[2], double(0.3F)) << "height";
        EXPECT_EQ(cones[0].numbers[3], 10) << "slices";
        EXPECT_EQ(cones[0].numbers[4], 1) << "stacks";
        EXPECT_EQ(recording.named("gluDeleteQuadric").at(0).addresses, cones[0].addresses);
    }
}

TEST_F(AxisGizmos_calls_test, arrowHandleWithoutPickingLoadsNoName) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        gl_spy::Recording recording;
        core.renderAxisArrow3NoPicking(VL_AXIS(axis), 0.3F);
        EXPECT_EQ(withoutGluArguments(outline(recording)), arrowCalls(axis, {})) << axis;
        expectSegmentToOne(onlyPrimitive(recording), axis);
    }
}

TEST_F(AxisGizmos_calls_test, axisThreeGivesNoArrowButStillLoadsName) {
    for (unsigned int const axis : {3U, 4U, 0xFFFFFFFFU}) {
        gl_spy::Recording recording;
        core.renderAxisArrow3(VL_AXIS(axis), 9U, 0.3F);
        Texts calls = withoutGluArguments(outline(recording));
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "gluNewQuadric"),
                  std::count(calls.begin(), calls.end(), "gluDeleteQuadric"));
        // Whether a quadric is made when none is needed is no one's concern.
        calls.erase(std::remove_if(calls.begin(), calls.end(),
                                   [](std::string const& call) {
                                       return call == "gluNewQuadric" || call == "gluDeleteQuadric";
                                   }),
                    calls.end());
        EXPECT_EQ(calls, joined({PUSHED_FILLINGS, named(9), FILLINGS_BACK_FIRST}));
    }
    gl_spy::Recording recording;
    core.renderAxisArrow3NoPicking(VL_AXIS(3), 0.3F);
    EXPECT_THAT(recording.primitives(), IsEmpty());
    EXPECT_EQ(recording.count("gluCylinder"), 0U);
    EXPECT_EQ(recording.count("glLoadName"), 0U);
    EXPECT_EQ(recording.count("glPushMatrix"), 0U);
}

TEST_F(AxisGizmos_calls_test, stippledArrowIsVirtualArrowBetweenStippleOnAndOff) {
    Witness_core witness({"renderAxisArrow3"});
    prepare(witness);
    gl_spy::Recording recording;
    witness.recording = &recording;
    Core_RL& layer = witness;
    layer.renderAxisArrowStipple3(VL_AXIS_Y, 8U, 0.25F);
    ASSERT_EQ(witness.trace(), joined({STIPPLE_ON, {"-> renderAxisArrow3"}, STIPPLE_OFF}));
    EXPECT_THAT(witness.requests[0].numbers, ElementsAre(1, 8, 0.25));
}

TEST_F(AxisGizmos_calls_test, stippledArrowWithoutPickingLoadsNoName) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        gl_spy::Recording recording;
        Core_RL& layer = core;
        layer.renderAxisArrowStipple3(VL_AXIS(axis), 0.25F);
        EXPECT_EQ(withoutGluArguments(outline(recording)),
                  joined({STIPPLE_ON, arrowCalls(axis, {}), STIPPLE_OFF}));
    }
}

// == Box handles ==

TEST_F(AxisGizmos_calls_test, boxHandleIsSegmentAndCubeThatEndsAtOne) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        SCOPED_TRACE(axis);
        gl_spy::Recording recording;
        core.renderAxisBox3(VL_AXIS(axis), 30U, 0.25F);
        EXPECT_EQ(outline(recording), boxCalls(axis, 30, "0.75"));
        std::vector<gl_spy::Primitive> const primitives = recording.primitives();
        ASSERT_EQ(primitives.size(), 2U);
        auto const [low, high] = extent(primitives[0]);
        Point expectedLow{-0.25, -0.25, -0.25};
        Point expectedHigh{0.25, 0.25, 0.25};
        expectedLow[axis] = 0.5;
        expectedHigh[axis] = 1;
        expectNear(low, expectedLow, 1e-6, "lower corner");
        expectNear(high, expectedHigh, 1e-6, "upper corner");
        expectSegmentToOne(primitives[1], axis);
        EXPECT_EQ(primitives[0].vertices.front().name, 30U);
        EXPECT_EQ(primitives[1].vertices.front().name, 30U);
    }
}

TEST_F(AxisGizmos_calls_test, boxHandleOfSizeOneHalfIsCubeOfEdgeOneAroundOneHalf) {
    gl_spy::Recording recording;
    core.renderAxisBox3(VL_AXIS_X, 0U, 0.5F);
    auto const [low, high] = extent(recording.primitives().at(0));
    expectNear(low, {0, -0.5, -0.5}, 1e-6, "lower corner");
    expectNear(high, {1, 0.5, 0.5}, 1e-6, "upper corner");
}

TEST_F(AxisGizmos_calls_test, axisThreeIsCenterBoxWithoutSegment) {
    gl_spy::Recording recording;
    core.renderAxisBox3(VL_AXIS(3), 31U, 0.25F);
    gl_spy::Primitive const cube = onlyPrimitive(recording);
    EXPECT_EQ(cube.mode, unsigned(Primitive::QUADS));
    auto const [low, high] = extent(cube);
    expectNear(low, {-0.25, -0.25, -0.25}, 0, "lower corner");
    expectNear(high, {0.25, 0.25, 0.25}, 0, "upper corner");
    EXPECT_EQ(recording.count("glRotatef"), 0U);
    EXPECT_EQ(recording.count("glPushMatrix"), recording.count("glPopMatrix"));
    Texts const calls = outline(recording);
    EXPECT_EQ(Texts(calls.begin(), calls.begin() + 3), joined({PUSHED_FILLINGS, named(31)}));
    EXPECT_EQ(Texts(calls.end() - 2, calls.end()), FILLINGS_BACK_FIRST);
}

TEST_F(AxisGizmos_calls_test, axisBeyondCenterGivesNoBox) {
    gl_spy::Recording recording;
    core.renderAxisBox3(VL_AXIS(4), 32U, 0.25F);
    EXPECT_EQ(outline(recording), joined({PUSHED_FILLINGS, named(32), FILLINGS_BACK_FIRST}));
}

TEST_F(AxisGizmos_calls_test, boxHandleAsksForFilledVirtualBox) {
    for (unsigned int axis = 0; axis < 4; ++axis) {
        Witness_core witness({"render(Box3)"});
        gl_spy::Recording recording;
        witness.recording = &recording;
        witness.renderAxisBox3(VL_AXIS(axis), 30U, 0.25F);
        ASSERT_EQ(witness.requests.size(), 1U);
        EXPECT_THAT(witness.requests[0].numbers, ElementsAre(-0.25, -0.25, -0.25, 0.25, 0.25, 0.25, 0));
        EXPECT_EQ(recording.count("glNormal3fv"), 0U);
    }
}

TEST_F(AxisGizmos_calls_test, boxHandleWithoutNameTakesAxisAsName) {
    for (unsigned int axis = 0; axis < 5; ++axis) {
        Texts const byAxis = calls([axis](Core_RL& layer) { layer.renderAxisBox3(VL_AXIS(axis), 0.25F); });
        EXPECT_EQ(byAxis,
                  calls([axis](Core_RL& layer) { layer.renderAxisBox3(VL_AXIS(axis), axis, 0.25F); }));
        EXPECT_EQ(byAxis.at(2), named(axis)[0]);
    }
}

// == Circle handles ==

TEST_F(AxisGizmos_calls_test, circleHandleIsTurnedOntoItsAxis) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        SCOPED_TRACE(axis);
        gl_spy::Recording recording;
        core.renderAxisCircle3(VL_AXIS(axis), 50U, 2.0F);
        EXPECT_EQ(outline(recording), circleCalls(axis, named(50)));
        gl_spy::Primitive const circle = onlyPrimitive(recording);
        EXPECT_EQ(circle.vertices.size(), 360U);
        for (Point const& p : placed(circle)) {
            EXPECT_NEAR(p[axis], 0, 1e-6);
            EXPECT_NEAR(std::hypot(p[0], p[1], p[2]), 2, 1e-6);
        }
    }
}

TEST_F(AxisGizmos_calls_test, circleHandleWithoutPickingLoadsNoName) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        gl_spy::Recording recording;
        core.renderAxisCircle3NoPicking(VL_AXIS(axis), 2.0F);
        EXPECT_EQ(outline(recording), circleCalls(axis, {})) << axis;
    }
}

TEST_F(AxisGizmos_calls_test, circleHandleWithoutNameTakesAxisAsName) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        gl_spy::Recording recording;
        core.renderAxisCircle3(VL_AXIS(axis), 2.0F);
        EXPECT_EQ(outline(recording), circleCalls(axis, named(unsigned(axis)))) << axis;
    }
}

TEST_F(AxisGizmos_calls_test, axisThreeGivesNoCircle) {
    for (unsigned int const axis : {3U, 77U}) {
        EXPECT_EQ(calls([axis](Core_RL& layer) { layer.renderAxisCircle3(VL_AXIS(axis), 50U, 2.0F); }),
                  named(50));
        EXPECT_EQ(calls([axis](Core_RL& layer) { layer.renderAxisCircle3(VL_AXIS(axis), 2.0F); }),
                  named(axis));
        EXPECT_THAT(calls([axis](Core_RL& layer) { layer.renderAxisCircle3NoPicking(VL_AXIS(axis), 2.0F); }),
                    IsEmpty());
        EXPECT_EQ(calls([axis](Core_RL& layer) { layer.renderAxisCircleStipple3(VL_AXIS(axis), 2.0F); }),
                  joined({STIPPLE_ON, named(axis), STIPPLE_OFF}));
    }
}

TEST_F(AxisGizmos_calls_test, circleHandlesAskVirtualCircle) {
    for (unsigned int axis = 0; axis < 3; ++axis) {
        Witness_core witness({"renderCircle3"});
        gl_spy::Recording recording;
        witness.recording = &recording;
        witness.renderAxisCircle3(VL_AXIS(axis), 50U, 2.0F);
        witness.renderAxisCircle3NoPicking(VL_AXIS(axis), 3.0F);
        ASSERT_EQ(witness.requests.size(), 2U);
        EXPECT_THAT(witness.requests[0].numbers, ElementsAre(2));
        EXPECT_THAT(witness.requests[1].numbers, ElementsAre(3));
        EXPECT_EQ(recording.count("glBegin"), 0U);
    }
}

TEST_F(AxisGizmos_calls_test, stippledCircleHasAxisAsName) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        gl_spy::Recording recording;
        core.renderAxisCircleStipple3(VL_AXIS(axis), 2.0F);
        EXPECT_EQ(outline(recording),
                  joined({STIPPLE_ON, circleCalls(axis, named(unsigned(axis))), STIPPLE_OFF}));
    }
}

// == Sets ==

TEST_F(AxisGizmos_calls_test, arrowSetPushesColorForEachHandleAndPopsAllAtOnce) {
    gl_spy::Recording recording;
    core.renderAxesArrow3(70, 71, 72, COLORS, 0.3F);
    Texts expected;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        expected = joined({expected, {COLOR_TEXTS[axis]}, arrowCalls(axis, named(70 + unsigned(axis)))});
    }
    EXPECT_EQ(withoutGluArguments(outline(recording)), joined({expected, START_COLOR_AGAIN}));
    EXPECT_EQ(core.currentColor(), START_COLOR);
}

TEST_F(AxisGizmos_calls_test, stippledArrowSetsWithAndWithoutPicking) {
    for (bool const picks : {true, false}) {
        gl_spy::Recording recording;
        if (picks) {
            core.renderAxesArrowStipple3(70, 71, 72, COLORS, 0.3F);
        } else {
            core.renderAxesArrowStipple3(COLORS, 0.3F);
        }
        Texts expected;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            Texts const name = picks ? named(70 + unsigned(axis)) : Texts{};
            expected =
                joined({expected, {COLOR_TEXTS[axis]}, STIPPLE_ON, arrowCalls(axis, name), STIPPLE_OFF});
        }
        EXPECT_EQ(withoutGluArguments(outline(recording)), joined({expected, START_COLOR_AGAIN}));
        EXPECT_EQ(core.currentColor(), START_COLOR);
    }
}

TEST_F(AxisGizmos_calls_test, boxSetOfThree) {
    gl_spy::Recording recording;
    core.renderAxesBox3(70, 71, 72, COLORS, 0.25F);
    Texts expected;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        expected = joined({expected, {COLOR_TEXTS[axis]}, boxCalls(axis, 70 + unsigned(axis), "0.75")});
    }
    EXPECT_EQ(outline(recording), joined({expected, START_COLOR_AGAIN}));
    EXPECT_EQ(core.currentColor(), START_COLOR);
}

TEST_F(AxisGizmos_calls_test, boxSetOfFourEndsWithCenter) {
    Texts expected;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        expected = joined({expected, {COLOR_TEXTS[axis]}, boxCalls(axis, 70 + unsigned(axis), "0.75")});
    }
    gl_spy::Recording center;
    core.renderAxisBox3(VL_AXIS(3), 73U, 0.25F);
    expected = joined({expected, {COLOR_TEXTS[3]}, outline(center), START_COLOR_AGAIN});

    gl_spy::Recording recording;
    core.renderAxesBox3(70, 71, 72, 73, FOUR_COLORS, 0.25F);
    EXPECT_EQ(outline(recording), expected);
    EXPECT_EQ(core.currentColor(), START_COLOR);
}

TEST_F(AxisGizmos_calls_test, circleSet) {
    gl_spy::Recording recording;
    core.renderAxesCircle3(70, 71, 72, COLORS, 2.0F);
    Texts expected;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        expected = joined({expected, {COLOR_TEXTS[axis]}, circleCalls(axis, named(70 + unsigned(axis)))});
    }
    EXPECT_EQ(outline(recording), joined({expected, START_COLOR_AGAIN}));
    EXPECT_EQ(core.currentColor(), START_COLOR);
}

TEST_F(AxisGizmos_calls_test, deliberatelyStippledCircleSetUsesNamesAsAxes) {
    gl_spy::Recording recording;
    core.renderAxesCircleStipple3(2, 0, 1, COLORS, 2.0F);
    Texts expected;
    std::size_t color = 0;
    for (std::size_t const axis : {2U, 0U, 1U}) {
        expected = joined({expected,
                           {COLOR_TEXTS[color++]},
                           STIPPLE_ON,
                           circleCalls(axis, named(unsigned(axis))),
                           STIPPLE_OFF});
    }
    EXPECT_EQ(outline(recording), joined({expected, START_COLOR_AGAIN}));
    EXPECT_EQ(core.currentColor(), START_COLOR);
}

TEST_F(AxisGizmos_calls_test, deliberatelyStippledCircleSetWithOtherNamesDrawsNoCircle) {
    gl_spy::Recording recording;
    core.renderAxesCircleStipple3(10, 11, 12, COLORS, 2.0F);
    EXPECT_THAT(recording.primitives(), IsEmpty());
    Texts expected;
    for (unsigned int i = 0; i < 3; ++i) {
        expected = joined({expected, {COLOR_TEXTS[i]}, STIPPLE_ON, named(10 + i), STIPPLE_OFF});
    }
    EXPECT_EQ(outline(recording), joined({expected, START_COLOR_AGAIN}));
}

TEST_F(AxisGizmos_calls_test, planeSetIsThreeSquaresAtOrigin) {
    gl_spy::Recording recording;
    core.renderAxesPlane3(80, 81, 82, COLORS, 0.5F);
    Texts expected;
    for (unsigned int i = 0; i < 3; ++i) {
        expected = joined({expected, {COLOR_TEXTS[i]}, named(80 + i), {"glBegin(GL_QUADS)", "glEnd()"}});
    }
    Texts calls = outline(recording);
    EXPECT_EQ(calls, joined({expected, START_COLOR_AGAIN}));
    std::vector<gl_spy::Primitive> const squares = recording.primitives();
    ASSERT_EQ(squares.size(), 3U);
    double const s = 0.5;
    expectPoints(sent(squares[0]), {{0, 0, 0}, {s, 0, 0}, {s, s, 0}, {0, s, 0}}, 0);
    expectPoints(sent(squares[1]), {{0, 0, 0}, {0, s, 0}, {0, s, s}, {0, 0, s}}, 0);
    expectPoints(sent(squares[2]), {{0, 0, 0}, {s, 0, 0}, {s, 0, s}, {0, 0, s}}, 0);
    EXPECT_EQ(core.currentColor(), START_COLOR);
}

TEST_F(AxisGizmos_calls_test, setsAddOneEntryForEachHandleToColorStackAndTakeThemBack) {
    // A second layer of colors below shows a pop of too many or too few.
    core.pushColor({0.125F, 0.125F, 0.125F, 1});
    core.pushColor(START_COLOR);
    core.renderAxesArrow3(0, 1, 2, COLORS, 0.3F);
    core.renderAxesArrowStipple3(0, 1, 2, COLORS, 0.3F);
    core.renderAxesArrowStipple3(COLORS, 0.3F);
    core.renderAxesBox3(0, 1, 2, COLORS, 0.3F);
    core.renderAxesBox3(0, 1, 2, 3, FOUR_COLORS, 0.3F);
    core.renderAxesCircle3(0, 1, 2, COLORS, 0.3F);
    core.renderAxesCircleStipple3(0, 1, 2, COLORS, 0.3F);
    core.renderAxesPlane3(0, 1, 2, COLORS, 0.3F);
    EXPECT_EQ(core.currentColor(), START_COLOR);
    core.popColor(1);
    EXPECT_EQ(core.currentColor(), (Color4<float>{0.125F, 0.125F, 0.125F, 1}));
}

}  // namespace vellum
