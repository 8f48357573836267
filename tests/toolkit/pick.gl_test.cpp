#include "toolkit/pick.h"

#include "Camera_RL_GL.h"
#include "Core_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "tests/gl_spy/GlTest.h"
#include "toolkit/AxisDrag.h"
#include "toolkit/CameraController.h"
#include "toolkit/View.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include <GL/gl.h>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

using Point = Vector3<double>;

constexpr unsigned int X_NAME = 11;
constexpr unsigned int Y_NAME = 12;
constexpr unsigned int Z_NAME = 13;
constexpr unsigned int CENTER_NAME = 14;
Tuple3<Color4<float>> const COLORS{{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}};

class pick_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        layer.reset(new Core_RL_GL);
        layer->setCamera(&camera);
        controls.fit({{-1, -1, -1}, {1, 1, 1}});
        view = load();
    }

    View load() { return controls.load({0, 0, width, height}); }

    std::vector<unsigned int> namesAt(Point const& point, std::function<void()> const& draw) {
        ScreenPoint const p = view.project(point);
        std::vector<unsigned int> names;
        for (PickHit const& hit : pick(p.x, p.y, 2, draw)) {
            names.push_back(hit.name);
        }
        return names;
    }

    void ball(unsigned int name, Vector3<float> const& center, float radius) {
        layer->loadName(name);
        layer->renderSphere(center, radius);
    }

    std::unique_ptr<Core_RL> layer;
    Camera_RL_GL camera;
    CameraController controls{camera};
    View view{};
};

using Names = std::vector<unsigned int>;

Vector3<double> const ORIGIN{0, 0, 0};

}  // namespace

TEST_F(pick_gl_test, whatIsAtThePointIsFoundAndNothingBeside) {
    auto const draw = [this] {
        ball(5, {0.5F, 0, 0}, 0.2F);
        ball(6, {-0.5F, 0, 0}, 0.2F);
    };
    EXPECT_EQ(namesAt({0.5, 0, 0}, draw), (Names{5}));
    EXPECT_EQ(namesAt({-0.5, 0, 0}, draw), (Names{6}));
    EXPECT_EQ(namesAt({0, 0.6, 0}, draw), Names{});
}

TEST_F(pick_gl_test, reachIsThatOfTheScreen) {
    controls.setViewKind(ViewKind::FRONT);
    view = load();
    auto const draw = [this] {
        layer->loadName(1);
        layer->renderPoint3({0, 0, 0});
    };
    ScreenPoint const p = view.project(ORIGIN);
    EXPECT_EQ(pick(p.x + 2.9, p.y - 2.9, 3, draw).size(), 1U);
    EXPECT_EQ(pick(p.x + 3.1, p.y, 3, draw).size(), 0U);
    EXPECT_EQ(pick(p.x, p.y + 3.1, 3, draw).size(), 0U);
}

TEST_F(pick_gl_test, pointIsCountedFromTheUpperLeftCornerOfTheViewport) {
    controls.setViewKind(ViewKind::FRONT);
    view = controls.load({40, 30, 100, 60});
    auto const draw = [this] {
        layer->loadName(1);
        layer->renderPoint3({0, 0, 0});
    };
    EXPECT_EQ(pick(50, 30, 1, draw).size(), 1U);
    ball(1, {0, 0, 0}, 0.3F);
    // The same place of the framebuffer, read back: 40 + 50 from the left, 30 + 30 from below.
    EXPECT_GT(readPixel(90, height - 60)[0], 200) << savePicture("pick_viewport");
    EXPECT_EQ(pick(90, 60, 1, draw).size(), 0U);
}

TEST_F(pick_gl_test, nearestComesFirstWithItsDepths) {
    controls.setViewKind(ViewKind::FRONT);
    view = load();
    std::vector<PickHit> const hits = pick(128, 128, 2, [this] {
        ball(1, {0, 0, -0.5F}, 0.1F);
        ball(2, {0, 0, 0.5F}, 0.1F);
        ball(3, {0, 0, 0}, 0.1F);
    });
    ASSERT_EQ(hits.size(), 3U);
    EXPECT_EQ(hits[0].name, 2U);
    EXPECT_EQ(hits[1].name, 3U);
    EXPECT_EQ(hits[2].name, 1U);
    for (std::size_t i = 0; i < 3; ++i) {
        double const middle = view.project({0, 0, 0.5 - 0.5 * static_cast<double>(i)}).depth;
        EXPECT_LT(hits[i].depth, middle);
        EXPECT_GT(hits[i].farthestDepth, middle);
        EXPECT_NEAR(hits[i].depth, view.project({0, 0, 0.6 - 0.5 * static_cast<double>(i)}).depth, 2e-6);
    }
}

TEST_F(pick_gl_test, nameThatIsDrawnTwiceIsReportedOnceWithBothDepths) {
    controls.setViewKind(ViewKind::FRONT);
    view = load();
    std::vector<PickHit> const hits = pick(128, 128, 2, [this] {
        ball(7, {0, 0, 0}, 0.1F);
        ball(8, {0, 0, -0.2F}, 0.1F);
        ball(7, {0, 0, 0.5F}, 0.1F);
        ball(7, {0, 0, -0.5F}, 0.1F);
    });
    ASSERT_EQ(hits.size(), 2U);
    EXPECT_EQ(hits[0].name, 7U);
    EXPECT_NEAR(hits[0].depth, view.project({0, 0, 0.6}).depth, 2e-6);
    EXPECT_NEAR(hits[0].farthestDepth, view.project({0, 0, -0.6}).depth, 2e-6);
}

TEST_F(pick_gl_test, thingsAtTheSameDepthAreInTheOrderOfDrawing) {
    controls.setViewKind(ViewKind::FRONT);
    view = load();
    Names order;
    for (unsigned int i = 0; i < 100; ++i) {
        order.push_back(37 * i % 101);
    }
    EXPECT_EQ(namesAt(ORIGIN,
                      [&] {
                          for (unsigned int const name : order) {
                              layer->loadName(name);
                              layer->renderPoint3({0, 0, 0});
                          }
                      }),
              order);
}

TEST_F(pick_gl_test, whatIsDrawnBeforeTheFirstNameIsNotReported) {
    EXPECT_EQ(namesAt(ORIGIN, [this] { layer->renderSphere({0, 0, 0}, 1); }), Names{});
    EXPECT_EQ(namesAt(ORIGIN,
                      [this] {
                          layer->renderSphere({0, 0, 0}, 1);
                          ball(0, {0, 0, 0}, 0.5F);
                      }),
              (Names{0}));
}

TEST_F(pick_gl_test, moreHitsThanExpectedAreAllFound) {
    // A record has four words: more than the first buffer and the second hold.
    constexpr unsigned int COUNT = 9000;
    int runs = 0;
    std::vector<PickHit> const hits = pick(128, 128, 200, [this, &runs] {
        ++runs;
        for (unsigned int i = 0; i < COUNT; ++i) {
            layer->loadName(i);
            layer->renderPoint3({0, 0, static_cast<float>(i % 100) * 0.001F});
        }
    });
    EXPECT_EQ(hits.size(), COUNT);
    EXPECT_GT(runs, 1);
    for (std::size_t i = 1; i < hits.size(); ++i) {
        ASSERT_GE(hits[i].depth, hits[i - 1].depth);
    }
}

TEST_F(pick_gl_test, nothingGetsOnTheScreen) {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    std::vector<unsigned char> const before = readPixels();
    pick(128, 128, 2, [this] { ball(1, {0, 0, 0}, 1); });
    EXPECT_EQ(readPixels(), before);
    ball(1, {0, 0, 0}, 1);
    EXPECT_NE(readPixels(), before);
}

TEST_F(pick_gl_test, pickWithinAPickFindsNothingAndLeavesTheOuterOneAlone) {
    EXPECT_EQ(namesAt(ORIGIN,
                      [this] {
                          ball(1, {0, 0, 0}, 0.2F);
                          EXPECT_TRUE(pick(128, 128, 2, [this] { ball(2, {0, 0, 0}, 0.5F); }).empty());
                          ball(3, {0, 0, 0}, 0.1F);
                      }),
              (Names{1, 3}));
}

TEST_F(pick_gl_test, pickAfterAnExceptionWorks) {
    EXPECT_THROW(pick(128, 128, 2, [] { throw 1; }), int);
    EXPECT_EQ(namesAt(ORIGIN, [this] { ball(4, {0, 0, 0}, 0.1F); }), (Names{4}));
}

TEST_F(pick_gl_test, zBiasKeepsTheSurroundings) {
    auto const draw = [this] {
        layer->setZBias(true);
        ball(1, {0.6F, 0, 0}, 0.1F);
        layer->setZBias(false);
        ball(2, {-0.6F, 0, 0}, 0.1F);
    };
    EXPECT_EQ(namesAt({0.6, 0, 0}, draw), (Names{1}));
    EXPECT_EQ(namesAt({-0.6, 0, 0}, draw), (Names{2}));
    EXPECT_EQ(namesAt({0, 0.6, 0}, draw), Names{});
}

TEST_F(pick_gl_test, meshesAreFoundByTheirSurface) {
    Mesh mesh;
    mesh.setPositions({{-1, -1, 0}, {1, -1, 0}, {-1, 1, 0}});
    mesh.setTriangles({{0, 1, 2}});
    mesh.workNormals();
    controls.setViewKind(ViewKind::FRONT);
    view = load();
    Mesh_RL_GL renderer(&mesh, false);
    auto const draw = [&] {
        layer->loadName(21);
        MeshShading shading;
        shading.mode = MeshShadingMode_ns::FACETED;
        renderer.render(shading);
    };
    EXPECT_EQ(namesAt({-0.5, -0.5, 0}, draw), (Names{21}));
    EXPECT_EQ(namesAt({0.5, 0.5, 0}, draw), Names{});
}

// == Gizmos ==

TEST_F(pick_gl_test, handlesOfMoveGizmosAreFoundWhereTheyAreSeen) {
    auto const draw = [this] { layer->renderAxesArrow3(X_NAME, Y_NAME, Z_NAME, COLORS, 0.2F); };
    for (ViewKind const kind : {ViewKind::PERSPECTIVE, ViewKind::FRONT, ViewKind::TOP, ViewKind::LEFT}) {
        controls.setViewKind(kind);
        view = load();
        Point const sight = controls.direction();
        for (int axis = 0; axis < 3; ++axis) {
            Point const tip{axis == 0 ? 0.9 : 0, axis == 1 ? 0.9 : 0, axis == 2 ? 0.9 : 0};
            if (std::abs(dot(normalized(tip), sight)) > 0.99) {
                continue;  // seen end on
            }
            EXPECT_EQ(namesAt(tip, draw), (Names{X_NAME + static_cast<unsigned int>(axis)}))
                << "axis " << axis;
            EXPECT_EQ(namesAt(-tip, draw), Names{}) << "axis " << axis;
        }
    }
}

TEST_F(pick_gl_test, handlesOfScaleGizmosAreFoundWhereTheyAreSeen) {
    Tuple4<Color4<float>> const colors{COLORS.e0, COLORS.e1, COLORS.e2, {1, 1, 1, 1}};
    auto const draw = [&] { layer->renderAxesBox3(X_NAME, Y_NAME, Z_NAME, CENTER_NAME, colors, 0.1F); };
    EXPECT_EQ(namesAt({1, 0, 0}, draw).front(), X_NAME);
    EXPECT_EQ(namesAt({0, 1, 0}, draw).front(), Y_NAME);
    EXPECT_EQ(namesAt({0, 0, 1}, draw).front(), Z_NAME);
    EXPECT_EQ(namesAt({0.08, 0.08, 0.08}, draw).front(), CENTER_NAME);
}

TEST_F(pick_gl_test, handlesOfTurnGizmosAreFoundWhereTheyAreSeen) {
    auto const draw = [this] { layer->renderAxesCircle3(X_NAME, Y_NAME, Z_NAME, COLORS, 1.0F); };
    double const half = std::sqrt(0.5);
    EXPECT_EQ(namesAt({0, half, half}, draw), (Names{X_NAME}));
    EXPECT_EQ(namesAt({half, 0, half}, draw), (Names{Y_NAME}));
    EXPECT_EQ(namesAt({half, half, 0}, draw), (Names{Z_NAME}));
}

TEST_F(pick_gl_test, draggedHandleMovesItsObjectWithTheCursor) {
    // An object at a place of its own, whose gizmo is drawn there.
    Point position{0.2, -0.1, 0.3};
    auto const transform = [&position] {
        return Matrix4<double>{
            {0.5, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 0.5, 0, position.x, position.y, position.z, 1}};
    };
    auto const drawGizmo = [&] {
        layer->pushTransform(transform());
        layer->renderAxesArrow3(X_NAME, Y_NAME, Z_NAME, COLORS, 0.2F);
        layer->popTransform();
    };
    for (ViewKind const kind : {ViewKind::PERSPECTIVE, ViewKind::FRONT}) {
        controls.setViewKind(kind);
        view = load();
        Point const grabbed = position + Point{0, 0.45, 0};
        ScreenPoint const pressed = view.project(grabbed);
        ASSERT_EQ(namesAt(grabbed, drawGizmo), (Names{Y_NAME}));

        Ray const axis{position, {0, 1, 0}};
        double const start = alongAxis(view, axis, pressed.x, pressed.y);
        EXPECT_NEAR(start, 0.45, 1e-4);
        ScreenPoint const goal = view.project(grabbed + Point{0, -0.35, 0});
        double const now = alongAxis(view, axis, goal.x, goal.y);
        EXPECT_NEAR(now - start, -0.35, 1e-4);
        Point const former = position;
        position.y += now - start;

        EXPECT_EQ(namesAt(position + Point{0, 0.45, 0}, drawGizmo), (Names{Y_NAME}));
        EXPECT_EQ(namesAt(former + Point{0, 0.45, 0}, drawGizmo), Names{}) << "the gizmo has moved away";
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        drawGizmo();
        EXPECT_GT(readPixel(static_cast<int>(goal.x), static_cast<int>(goal.y))[1], 100)
            << savePicture("pick_dragged");
        position = {0.2, -0.1, 0.3};
    }
    savePicture("pick_dragged");
}
