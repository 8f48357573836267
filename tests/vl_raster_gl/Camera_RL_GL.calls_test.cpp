#include "Camera_RL_GL.h"

#include "tests/gl_spy/gl_spy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <string>
#include <vector>

namespace vellum {
namespace {

using Texts = std::vector<std::string>;

class Camera_RL_GL_calls_test : public testing::Test {
protected:
    gl_spy::Script driver = gl_spy::drivers::gl21();
    Camera_RL_GL camera;
    gl_spy::Recording recording;
};

TEST_F(Camera_RL_GL_calls_test, constructionAndDestructionMakeNoGlCall) {
    {
        Camera_RL_GL other;
        Camera_RL_GL copy(other);
        copy = camera;
    }
    auto* const allocated = new Camera_RL_GL;
    delete static_cast<Camera_RL*>(allocated);
    EXPECT_TRUE(recording.calls().empty());
}

// == Model-view matrix ==

TEST_F(Camera_RL_GL_calls_test, perspectiveViewLooksFromEyeAlongDirection) {
    *camera.transform.matrix() = {
        {0.5F, 0.25F, -1, 100, 0, 2, 0.125F, 101, 102, 103, 104, 105, 8, -3, 7, 106}};
    camera.updateModelMatrix();
    EXPECT_EQ(recording.texts(), (Texts{"glMatrixMode(GL_MODELVIEW)", "glLoadIdentity()",
                                        "gluLookAt(8, -3, 7, 8.5, -2.75, 6, 0, 2, 0.125)"}));
}

TEST_F(Camera_RL_GL_calls_test, floatsAreWidenedForLookAt) {
    *camera.transform.matrix() = {{0, 0, 0, 0, 0.1F, 0.2F, 0.3F, 0, 0, 0, 0, 0, 0.4F, 0.6F, 0.7F, 0}};
    camera.updateModelMatrix();
    ASSERT_EQ(recording.count("gluLookAt"), 1U);
    std::vector<double> const numbers = recording.named("gluLookAt")[0].numbers;
    float const expected[] = {0.4F, 0.6F, 0.7F, 0.4F, 0.6F, 0.7F, 0.1F, 0.2F, 0.3F};
    ASSERT_EQ(numbers.size(), std::size(expected));
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        EXPECT_EQ(numbers[i], static_cast<double>(expected[i])) << "argument " << i;
    }
}

/// A view kind, and the rotation that follows the orthographic box; empty for none.
struct ViewKind {
    unsigned int kind;
    std::string rotation;
};

void PrintTo(ViewKind const& view, std::ostream* out) {
    *out << "view kind " << view.kind;
}

class Camera_RL_GL_orthographic_calls_test : public Camera_RL_GL_calls_test,
                                             public testing::WithParamInterface<ViewKind> {
protected:
    Camera_RL_GL_orthographic_calls_test() { camera.viewKind = GetParam().kind; }
};

INSTANTIATE_TEST_SUITE_P(
    , Camera_RL_GL_orthographic_calls_test,
    testing::Values(ViewKind{1, ""}, ViewKind{2, "glRotated(180, 0, 1, 0)"},
                    ViewKind{3, "glRotated(90, 1, 0, 0)"}, ViewKind{4, "glRotated(-90, 1, 0, 0)"},
                    ViewKind{5, "glRotated(90, 0, 1, 0)"}, ViewKind{6, "glRotated(-90, 0, 1, 0)"},
                    ViewKind{7, ""}, ViewKind{8, ""}, ViewKind{0xFFFFFFFFU, ""}),
    [](testing::TestParamInfo<ViewKind> const& row) { return "kind" + std::to_string(row.param.kind); });

TEST_P(Camera_RL_GL_orthographic_calls_test, modelViewMatrixStaysIdentity) {
    camera.updateModelMatrix();
    EXPECT_EQ(recording.texts(), (Texts{"glMatrixMode(GL_MODELVIEW)", "glLoadIdentity()"}));
}

TEST_P(Camera_RL_GL_orthographic_calls_test, projectionIsBoxTurnedToView) {
    camera.aspect = 2;
    camera.updateProjectionMatrix();
    Texts expected{"glMatrixMode(GL_PROJECTION)", "glLoadIdentity()",
                   "glOrtho(-1, 1, -0.5, 0.5, -1000, 1000)"};
    if (!GetParam().rotation.empty()) {
        expected.push_back(GetParam().rotation);
    }
    expected.emplace_back("glMatrixMode(GL_MODELVIEW)");
    EXPECT_EQ(recording.texts(), expected);
}

TEST_P(Camera_RL_GL_orthographic_calls_test, deliberatelyWithZBiasProjectionIsIdentity) {
    camera.updateProjectionMatrixZBias();
    EXPECT_EQ(recording.texts(),
              (Texts{"glMatrixMode(GL_PROJECTION)", "glLoadIdentity()", "glMatrixMode(GL_MODELVIEW)"}));
}

// == Projection ==

TEST_F(Camera_RL_GL_calls_test, perspectiveProjectionTakesItsFourParameters) {
    camera.aspect = 1.5F;
    camera.fieldOfView = 60;
    camera.nearDistance = 0.25F;
    camera.farDistance = 512;
    camera.zoom = 3;
    camera.panX = 4;
    camera.panY = 5;
    camera.updateProjectionMatrix();
    EXPECT_EQ(recording.texts(), (Texts{"glMatrixMode(GL_PROJECTION)", "glLoadIdentity()",
                                        "gluPerspective(60, 1.5, 0.25, 512)", "glMatrixMode(GL_MODELVIEW)"}));
}

TEST_F(Camera_RL_GL_calls_test, withZBiasNearPlaneMovesOutByOneThousandth) {
    camera.aspect = 1.5F;
    camera.fieldOfView = 60;
    camera.nearDistance = 0.1F;
    camera.farDistance = 512;
    camera.updateProjectionMatrixZBias();
    ASSERT_EQ(recording.calls().size(), 4U);
    EXPECT_EQ(recording.calls()[0].text(), "glMatrixMode(GL_PROJECTION)");
    EXPECT_EQ(recording.calls()[1].text(), "glLoadIdentity()");
    EXPECT_EQ(recording.calls()[3].text(), "glMatrixMode(GL_MODELVIEW)");
    EXPECT_EQ(recording.calls()[2].name, "gluPerspective");
    // The product is taken in double: in float it would be another number.
    EXPECT_EQ(recording.calls()[2].numbers,
              (std::vector<double>{60, 1.5, static_cast<double>(0.1F) * 1.001, 512}));
}

TEST_F(Camera_RL_GL_calls_test, zoomZeroGivesBoxOfHalfWidthOne) {
    camera.viewKind = 1;
    camera.zoom = 0;
    camera.aspect = 2;
    camera.updateProjectionMatrix();
    ASSERT_EQ(recording.count("glOrtho"), 1U);
    EXPECT_EQ(recording.named("glOrtho")[0].text(), "glOrtho(-1, 1, -0.5, 0.5, -1000, 1000)");
}

TEST_F(Camera_RL_GL_calls_test, viewKindSevenGivesBoxWithoutRotation) {
    camera.viewKind = 7;
    camera.updateProjectionMatrix();
    EXPECT_EQ(recording.count("glOrtho"), 1U);
    EXPECT_EQ(recording.count("glRotated"), 0U);
    EXPECT_EQ(recording.count("glRotatef"), 0U);
}

struct OrthographicBox {
    std::string name;
    float aspect;
    float panX;
    float panY;
    float zoom;
};

void PrintTo(OrthographicBox const& box, std::ostream* out) {
    *out << box.name;
}

class Camera_RL_GL_box_calls_test : public Camera_RL_GL_calls_test,
                                    public testing::WithParamInterface<OrthographicBox> {};

INSTANTIATE_TEST_SUITE_P(, Camera_RL_GL_box_calls_test,
                         testing::Values(OrthographicBox{"zoomedOut", 1, 0, 0, 1.5F},
                                         OrthographicBox{"zoomedIn", 1, 0, 0, -2.25F},
                                         OrthographicBox{"pannedRight", 1, 0.25F, 0, 0},
                                         OrthographicBox{"pannedUp", 1, 0, 0.75F, 0},
                                         OrthographicBox{"pannedLeftAndDown", 1, -3.1F, -0.7F, 0.3F},
                                         OrthographicBox{"wide", 2.4F, 1.5F, 2.5F, 0.6F},
                                         OrthographicBox{"tall", 0.4F, 1.5F, 2.5F, 0.6F}),
                         [](testing::TestParamInfo<OrthographicBox> const& row) { return row.param.name; });

TEST_P(Camera_RL_GL_box_calls_test, boxFollowsZoomPanAndAspect) {
    OrthographicBox const& row = GetParam();
    camera.viewKind = 1;
    camera.aspect = row.aspect;
    camera.panX = row.panX;
    camera.panY = row.panY;
    camera.zoom = row.zoom;
    camera.updateProjectionMatrix();

    ASSERT_EQ(recording.count("glOrtho"), 1U);
    std::vector<double> const numbers = recording.named("glOrtho")[0].numbers;
    ASSERT_EQ(numbers.size(), 6U);
    // The bounds are sums of a few numbers near 1; taken in float they would be off by some 1e-7. The pan is
    // an offset of both bounds, divided by the aspect for the vertical ones along with the half height.
    constexpr double ROUNDING = 1e-6;
    double const h = std::exp(static_cast<double>(row.zoom));
    double const x = static_cast<double>(row.panX);
    double const y = static_cast<double>(row.panY);
    double const aspect = static_cast<double>(row.aspect);
    EXPECT_NEAR(numbers[0], -h - x, ROUNDING) << "left";
    EXPECT_NEAR(numbers[1], h - x, ROUNDING) << "right";
    EXPECT_NEAR(numbers[2], (-h - y) / aspect, ROUNDING) << "bottom";
    EXPECT_NEAR(numbers[3], (h - y) / aspect, ROUNDING) << "top";
    EXPECT_EQ(numbers[4], -1000) << "near";
    EXPECT_EQ(numbers[5], 1000) << "far";
}

TEST_F(Camera_RL_GL_calls_test, zoomIsRaisedInDouble) {
    camera.viewKind = 1;
    camera.zoom = 1;
    camera.updateProjectionMatrix();
    ASSERT_EQ(recording.count("glOrtho"), 1U);
    EXPECT_DOUBLE_EQ(recording.named("glOrtho")[0].numbers[1], 2.718281828459045);
}

}  // namespace
}  // namespace vellum
