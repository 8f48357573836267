#include "viewport/editing/GizmoDrag.h"

#include "tests/viewport/editing/edited_scene.h"

#include <limits>
#include <random>

using namespace vellum;
using namespace vellum::viewport;
using toolkit::ScreenPoint;
using toolkit::View;

namespace {

using Point = Vector3<double>;

constexpr double PI = 3.14159265358979323846;

/// A view from a place toward the origin.
View viewFrom(Point const& eye, bool isPerspective) {
    Point const toward = normalized(eye);
    Point const upward = std::abs(toward.y) > 0.9 ? Point{0, 0, -1} : Point{0, 1, 0};
    Point const right = normalized(cross(upward, toward));
    Point const up = cross(toward, right);
    View view{};
    view.viewport = {0, 0, 800, 600};
    view.modelView = {{right.x, up.x, toward.x, 0, right.y, up.y, toward.y, 0, right.z, up.z, toward.z, 0,
                       -dot(right, eye), -dot(up, eye), -dot(toward, eye), 1}};
    double const n = 10;
    double const f = 5000;
    if (isPerspective) {
        double const scale = 2;
        view.projection = {{scale * 0.75, 0, 0, 0, 0, scale, 0, 0, 0, 0, (n + f) / (n - f), -1, 0, 0,
                            2 * n * f / (n - f), 0}};
    } else {
        view.projection = {
            {0.75 / 400, 0, 0, 0, 0, 1.0 / 400, 0, 0, 0, 0, 2 / (n - f), 0, 0, 0, (n + f) / (n - f), 1}};
    }
    return view;
}

struct Camera {
    char const* name;
    View view;
};

std::vector<Camera> obliqueCameras() {
    return {{"perspective", viewFrom({700, 500, 900}, true)},
            {"parallel", viewFrom({700, 500, 900}, false)},
            {"from behind", viewFrom({-600, -400, -1000}, true)}};
}

std::vector<Camera> axisCameras() {
    return {{"front", viewFrom({0, 0, 1000}, false)}, {"back", viewFrom({0, 0, -1000}, false)},
            {"top", viewFrom({0, 1000, 0}, false)},   {"bottom", viewFrom({0, -1000, 0}, false)},
            {"right", viewFrom({1000, 0, 0}, false)}, {"left", viewFrom({-1000, 0, 0}, false)}};
}

std::vector<Camera> allCameras() {
    std::vector<Camera> all = obliqueCameras();
    std::vector<Camera> const more = axisCameras();
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

constexpr GizmoHandle HANDLES[] = {GizmoHandle::X,  GizmoHandle::Y,  GizmoHandle::Z, GizmoHandle::CENTER,
                                   GizmoHandle::YZ, GizmoHandle::XZ, GizmoHandle::XY};

double component(Point const& v, int axis) {
    return axis == 0 ? v.x : axis == 1 ? v.y : v.z;
}

Point unit(int axis) {
    return {axis == 0 ? 1.0 : 0.0, axis == 1 ? 1.0 : 0.0, axis == 2 ? 1.0 : 0.0};
}

void expectNear(Point const& a, Point const& b, double slack) {
    EXPECT_NEAR(a.x, b.x, slack);
    EXPECT_NEAR(a.y, b.y, slack);
    EXPECT_NEAR(a.z, b.z, slack);
}

/// A drag of the box, whose files have z up, with a transform of its own already.
class GizmoDrag_test : public testing::Test {
protected:
    GizmoDrag_test() {
        before.translation = {1, -2, 0.5};
        before.rotation = Rotation::ofDegrees({20, -35, 50});
        before.scale = {1.5, 0.8, 1};
    }

    /// Where a direction of a handle of a gizmo points to, in the frame of the scene.
    Point handle(Gizmo gizmo, int axis) const {
        return scene.directionToScene(handlesOf(gizmo, before)(unit(axis)));
    }

    Point pivot() const {
        return pivotOf(scene, 0) + scene.directionToScene(before.translation * scene.unitsPerFileUnit());
    }

    GizmoDrag drag(Gizmo gizmo, GizmoHandle handle, View const& view, Point const& pressed) const {
        ScreenPoint const at = view.project(pressed);
        return GizmoDrag(scene, 0, gizmo, handle, before, view, at.x, at.y);
    }

    static ObjectTransform moveTo(GizmoDrag& drag, View const& view, Point const& place, bool snaps = false) {
        ScreenPoint const at = view.project(place);
        return drag.update(at.x, at.y, snaps);
    }

    Scene scene = sceneOfBox({10, 20, 30}, {8, 12, 10}, UpAxis::Z);
    ObjectTransform before;
};

bool isAside(View const& view, Point const& axis) {
    return std::abs(dot(view.axes().towardViewer, axis)) < 0.9;
}

bool isFacing(View const& view, Point const& normal) {
    return std::abs(dot(view.axes().towardViewer, normal)) > 0.3;
}

}  // namespace

TEST_F(GizmoDrag_test, movingAlongAnAxisOfTheFilesKeepsWhatIsGrabbedUnderTheCursor) {
    int tried = 0;
    for (Camera const& camera : allCameras()) {
        SCOPED_TRACE(camera.name);
        for (int axis = 0; axis < 3; ++axis) {
            Point const direction = scene.directionToScene(unit(axis));
            if (!isAside(camera.view, direction)) {
                continue;
            }
            GizmoDrag moved = drag(Gizmo::MOVE, HANDLES[axis], camera.view, pivot() + direction * 60.0);
            ObjectTransform const after = moveTo(moved, camera.view, pivot() + direction * 95.0);
            Point const way = (after.translation - before.translation) * scene.unitsPerFileUnit();
            expectNear(way, unit(axis) * 35.0, 1e-6);
            EXPECT_EQ(after.rotation, before.rotation);
            EXPECT_EQ(after, moved.after());
            ++tried;
        }
    }
    EXPECT_EQ(tried, 3 * 3 + 6 * 2);
}

TEST_F(GizmoDrag_test, movingInAPlaneKeepsWhatIsGrabbedUnderTheCursor) {
    int tried = 0;
    for (Camera const& camera : allCameras()) {
        SCOPED_TRACE(camera.name);
        for (int across = 0; across < 3; ++across) {
            Point const u = scene.directionToScene(unit((across + 1) % 3));
            Point const v = scene.directionToScene(unit((across + 2) % 3));
            if (!isFacing(camera.view, cross(u, v))) {
                continue;
            }
            GizmoDrag moved =
                drag(Gizmo::MOVE, HANDLES[4 + across], camera.view, pivot() + u * 20.0 + v * 20.0);
            ObjectTransform const after = moveTo(moved, camera.view, pivot() + u * 50.0 + v * 5.0);
            Point const way = (after.translation - before.translation) * scene.unitsPerFileUnit();
            expectNear(way, unit((across + 1) % 3) * 30.0 + unit((across + 2) % 3) * -15.0, 1e-6);
            EXPECT_EQ(component(after.translation, across), component(before.translation, across));
            ++tried;
        }
    }
    EXPECT_EQ(tried, 3 * 3 + 6);
}

TEST_F(GizmoDrag_test, theMiddleMovesInThePlaneOfTheScreen) {
    for (Camera const& camera : allCameras()) {
        SCOPED_TRACE(camera.name);
        toolkit::ScreenAxes const screen = camera.view.axes();
        GizmoDrag moved = drag(Gizmo::MOVE, GizmoHandle::CENTER, camera.view, pivot());
        ObjectTransform const after =
            moveTo(moved, camera.view, pivot() + screen.right * 40.0 + screen.up * -25.0);
        Point const way =
            scene.directionToScene(after.translation - before.translation) * scene.unitsPerFileUnit();
        expectNear(way, screen.right * 40.0 + screen.up * -25.0, 1e-6);
    }
}

TEST_F(GizmoDrag_test, movesThatSnapGoInRoundSteps) {
    // The diagonal of the box with its mean scale is 18.6; a twentieth of it is 0.93.
    View const view = viewFrom({0, 0, 1000}, false);
    GizmoDrag along = drag(Gizmo::MOVE, GizmoHandle::X, view, pivot());
    EXPECT_DOUBLE_EQ(along.moveStep(), 0.5);
    double const unitLength = scene.unitsPerFileUnit();
    Point const x = scene.directionToScene({1, 0, 0});
    EXPECT_NEAR(moveTo(along, view, pivot() + x * (1.3 * unitLength), true).translation.x, 1 + 1.5, 1e-9);
    EXPECT_NEAR(moveTo(along, view, pivot() + x * (0.2 * unitLength), true).translation.x, 1, 1e-9);
    struct Row {
        double side;
        double step;
    };
    for (Row const& row : {Row{1, 0.05}, Row{2.4, 0.2}, Row{7, 0.5}, Row{1e-6, 5e-8}, Row{4e7, 2e6}}) {
        Scene const other = sceneOfBox({0, 0, 0}, {row.side, row.side, row.side});
        GizmoDrag const sized(other, 0, Gizmo::MOVE, GizmoHandle::X, {}, view, 400, 300);
        EXPECT_NEAR(sized.moveStep(), row.step, row.step * 1e-9);
    }
}

TEST_F(GizmoDrag_test, turningAboutAnAxisOfTheObjectKeepsWhatIsGrabbedUnderTheCursor) {
    int tried = 0;
    for (Camera const& camera : allCameras()) {
        SCOPED_TRACE(camera.name);
        for (int axis = 0; axis < 3; ++axis) {
            Point const about = handle(Gizmo::ROTATE, axis);
            if (!isFacing(camera.view, about)) {
                continue;
            }
            Point const u = handle(Gizmo::ROTATE, (axis + 1) % 3);
            Point const v = handle(Gizmo::ROTATE, (axis + 2) % 3);
            GizmoDrag turned = drag(Gizmo::ROTATE, HANDLES[axis], camera.view, pivot() + u * 60.0);
            double const angle = 0.7;
            ObjectTransform const after = moveTo(
                turned, camera.view, pivot() + u * (60 * std::cos(angle)) + v * (60 * std::sin(angle)));
            // The grabbed direction of the object is where the cursor is.
            Point const grabbed =
                scene.directionToScene(after.rotation(before.rotation.inverse()(scene.directionToFile(u))));
            expectNear(grabbed, u * std::cos(angle) + v * std::sin(angle), 1e-6);
            EXPECT_EQ(after.translation.x, before.translation.x);
            EXPECT_EQ(after.scale.x, before.scale.x);
            ++tried;
        }
    }
    EXPECT_GE(tried, 12);
}

TEST_F(GizmoDrag_test, aCircleThatIsSeenEdgeOnTurnsAsItsNearHalfIsDragged) {
    before.rotation = {};
    for (Camera const& camera : axisCameras()) {
        SCOPED_TRACE(camera.name);
        toolkit::ScreenAxes const screen = camera.view.axes();
        for (int axis = 0; axis < 3; ++axis) {
            Point const about = handle(Gizmo::ROTATE, axis);
            if (std::abs(dot(about, screen.towardViewer)) > 0.5) {
                continue;
            }
            double const reach = GIZMO_LENGTH * 600 / camera.view.pixelsPerUnit(pivot());
            Point const along = cross(about, screen.towardViewer);
            GizmoDrag turned = drag(Gizmo::ROTATE, HANDLES[axis], camera.view, pivot());
            ObjectTransform const after =
                moveTo(turned, camera.view, pivot() + along * (reach * std::sin(PI / 6)));
            Point const near =
                scene.directionToScene(after.rotation(scene.directionToFile(screen.towardViewer)));
            expectNear(near, screen.towardViewer * std::cos(PI / 6) + along * std::sin(PI / 6), 1e-6);
        }
    }
}

TEST_F(GizmoDrag_test, theMiddleTurnsAboutTheDirectionOfView) {
    for (Camera const& camera : allCameras()) {
        SCOPED_TRACE(camera.name);
        ScreenPoint const middle = camera.view.project(pivot());
        GizmoDrag turned(scene, 0, Gizmo::ROTATE, GizmoHandle::CENTER, before, camera.view, middle.x + 100,
                         middle.y);
        ObjectTransform const after = turned.update(middle.x, middle.y - 100, false);
        Point const sight = -camera.view.rayThrough(middle.x, middle.y).direction;
        Rotation const turn = after.rotation * before.rotation.inverse();
        Point const axis = scene.directionToScene({turn.x, turn.y, turn.z});
        expectNear(normalized(axis) * (turn.w < 0 ? -1.0 : 1.0), sight, 1e-9);
        // In perspective the plane across the direction leans a little.
        EXPECT_NEAR(2 * std::acos(std::min(1.0, std::abs(turn.w))), PI / 2, 0.05);
    }
}

TEST_F(GizmoDrag_test, turnsThatSnapGoInStepsOf15Degrees) {
    before.rotation = {};
    View const view = viewFrom({0, 0, 1000}, false);
    // y of the files points to the back of the scene, -z.
    ScreenPoint const middle = view.project(pivot());
    GizmoDrag turned(scene, 0, Gizmo::ROTATE, GizmoHandle::Y, before, view, middle.x + 90, middle.y);
    ObjectTransform const after =
        turned.update(middle.x + 90 * std::cos(0.6), middle.y - 90 * std::sin(0.6), true);
    expectNear(after.rotation.toDegrees(), {0, -30, 0}, 1e-9);
    expectNear(turned.update(middle.x + 90, middle.y - 5, true).rotation.toDegrees(), {0, 0, 0}, 1e-9);
}

TEST_F(GizmoDrag_test, scalingAlongAnOwnAxisKeepsWhatIsGrabbedUnderTheCursor) {
    for (Camera const& camera : allCameras()) {
        SCOPED_TRACE(camera.name);
        for (int axis = 0; axis < 3; ++axis) {
            Point const direction = handle(Gizmo::SCALE, axis);
            if (!isAside(camera.view, direction)) {
                continue;
            }
            GizmoDrag scaled = drag(Gizmo::SCALE, HANDLES[axis], camera.view, pivot() + direction * 60.0);
            ObjectTransform const after = moveTo(scaled, camera.view, pivot() + direction * 90.0);
            for (int other = 0; other < 3; ++other) {
                EXPECT_NEAR(component(after.scale, other),
                            component(before.scale, other) * (other == axis ? 1.5 : 1), 1e-6);
            }
        }
    }
}

TEST_F(GizmoDrag_test, scalingInAPlaneScalesBothAxesAlike) {
    for (Camera const& camera : obliqueCameras()) {
        SCOPED_TRACE(camera.name);
        for (int across = 0; across < 3; ++across) {
            Point const diagonal =
                handle(Gizmo::SCALE, (across + 1) % 3) + handle(Gizmo::SCALE, (across + 2) % 3);
            if (!isFacing(camera.view, handle(Gizmo::SCALE, across))) {
                continue;
            }
            GizmoDrag scaled =
                drag(Gizmo::SCALE, HANDLES[4 + across], camera.view, pivot() + diagonal * 40.0);
            ObjectTransform const after = moveTo(scaled, camera.view, pivot() + diagonal * 30.0);
            for (int axis = 0; axis < 3; ++axis) {
                EXPECT_NEAR(component(after.scale, axis),
                            component(before.scale, axis) * (axis == across ? 1 : 0.75), 1e-6);
            }
        }
    }
}

TEST_F(GizmoDrag_test, theMiddleScalesAllAxesAlikeUpAndToTheRight) {
    for (Camera const& camera : allCameras()) {
        ScreenPoint const at = camera.view.project(pivot());
        GizmoDrag scaled = drag(Gizmo::SCALE, GizmoHandle::CENTER, camera.view, pivot());
        Point const larger = scaled.update(at.x + 30, at.y - 30, false).scale;
        EXPECT_GT(larger.x, 1.2 * before.scale.x);
        EXPECT_NEAR(larger.y / larger.x, before.scale.y / before.scale.x, 1e-12);
        EXPECT_NEAR(larger.z / larger.x, before.scale.z / before.scale.x, 1e-12);
        EXPECT_LT(scaled.update(at.x - 30, at.y + 30, false).scale.x, 0.8 * before.scale.x);
    }
}

TEST_F(GizmoDrag_test, scalesThatSnapGoByTenthsAndNeverReachZero) {
    View const view = viewFrom({700, 500, 900}, true);
    Point const direction = handle(Gizmo::SCALE, 0);
    GizmoDrag scaled = drag(Gizmo::SCALE, GizmoHandle::X, view, pivot() + direction * 60.0);
    EXPECT_NEAR(moveTo(scaled, view, pivot() + direction * 76.0, true).scale.x, 1.5 * 1.3, 1e-9);
    EXPECT_NEAR(moveTo(scaled, view, pivot() + direction * -80.0, true).scale.x, 1.5 * 0.1, 1e-9);
    EXPECT_GT(moveTo(scaled, view, pivot() + direction * -80.0).scale.x, 0);
    EXPECT_GT(moveTo(scaled, view, pivot()).scale.x, 0);
    before.scale.x = -2;
    GizmoDrag mirrored = drag(Gizmo::SCALE, GizmoHandle::X, view, pivot() + direction * 60.0);
    EXPECT_NEAR(moveTo(mirrored, view, pivot() + direction * 120.0).scale.x, -4, 1e-6);
    EXPECT_LT(moveTo(mirrored, view, pivot() + direction * -10.0).scale.x, 0);
}

TEST_F(GizmoDrag_test, handlesThatAreSeenEndOnOrEdgeOnLeaveTheObjectAsItIs) {
    before.rotation = {};
    for (Camera const& camera : axisCameras()) {
        SCOPED_TRACE(camera.name);
        for (int axis = 0; axis < 3; ++axis) {
            bool const isEndOn = !isAside(camera.view, handle(Gizmo::MOVE, axis));
            for (Gizmo const gizmo : {Gizmo::MOVE, Gizmo::SCALE}) {
                GizmoDrag along = drag(gizmo, HANDLES[axis], camera.view, pivot());
                EXPECT_EQ(along.update(700, 100, false) == before, isEndOn);
                GizmoDrag plane = drag(gizmo, HANDLES[4 + axis], camera.view, pivot());
                EXPECT_EQ(plane.update(700, 150, false) == before, !isEndOn);
            }
        }
    }
}

TEST_F(GizmoDrag_test, aCursorBeyondTheHorizonLeavesTheLastPlace) {
    View const view = viewFrom({0, 100, 900}, true);
    // The plane of x and y of the files is the ground of the scene.
    GizmoDrag moved = drag(Gizmo::MOVE, GizmoHandle::XY, view, pivot());
    ObjectTransform const last = moved.update(500, 400, false);
    EXPECT_NE(last, before);
    EXPECT_EQ(moved.update(500, -200, false), last);
}

TEST_F(GizmoDrag_test, whateverIsDraggedAndWhereverTheResultCanBeDrawn) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(-3000, 4000);
    std::vector<Camera> cameras = allCameras();
    cameras.push_back({"inside", viewFrom({0, 0, 5}, true)});
    cameras.push_back({"beside", viewFrom({1e-3, 900, 0}, true)});
    constexpr double BAD[] = {std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity(), 1e300, -1e300};
    for (Camera const& camera : cameras) {
        for (Gizmo const gizmo : {Gizmo::NONE, Gizmo::MOVE, Gizmo::ROTATE, Gizmo::SCALE}) {
            for (GizmoHandle const handle : HANDLES) {
                GizmoDrag drag(scene, 0, gizmo, handle, before, camera.view, place(random), place(random));
                for (int i = 0; i < 30; ++i) {
                    ObjectTransform const after = drag.update(place(random), place(random), i % 2 == 0);
                    ASSERT_TRUE(after.isValid());
                    ASSERT_GT(std::min({after.scale.x, after.scale.y, after.scale.z}), 0);
                }
                for (double const bad : BAD) {
                    ASSERT_TRUE(drag.update(bad, 100, false).isValid());
                    ASSERT_TRUE(drag.update(100, bad, true).isValid());
                }
                GizmoDrag pressed(scene, 0, gizmo, handle, before, camera.view, BAD[0], 100);
                ASSERT_EQ(pressed.update(100, 100, false), before);
            }
        }
    }
}

TEST_F(GizmoDrag_test, aGizmoThatTurnsHasNoPlanes) {
    for (GizmoHandle const handle : {GizmoHandle::NONE, GizmoHandle::YZ, GizmoHandle::XZ, GizmoHandle::XY}) {
        GizmoDrag turned(scene, 0, Gizmo::ROTATE, handle, before, viewFrom({700, 500, 900}, true), 300, 300);
        EXPECT_EQ(turned.update(500, 200, false), before);
    }
}
