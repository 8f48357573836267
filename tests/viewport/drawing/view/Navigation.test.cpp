#include "viewport/drawing/view/Navigation.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

using namespace vellum;
using namespace vellum::viewport;

namespace {

using Point = Vector3<double>;

constexpr PictureSize VIEW_SIZE{600, 400};
constexpr double SINGLE = 1e-4;  // the camera itself is of single precision

/// Two units wide, far away from the origin, with z as up.
MeshData tetrahedron() {
    MeshData mesh;
    mesh.name = "t.stl";
    mesh.up = UpAxis::Z;
    mesh.positions = {{1000, 5, 0}, {1002, 5, 0}, {1000, 7, 0}, {1000, 5, 2}};
    mesh.triangles = {{0, 1, 2}, {0, 1, 3}, {0, 2, 3}, {1, 2, 3}};
    mesh.colors.assign(4, {1, 1, 1, 1});
    return mesh;
}

class Navigation_test : public testing::Test {
protected:
    ViewCamera cameraOf(CameraSpec const& spec) {
        ViewCamera camera(spec);
        std::optional<Fault> const fault = camera.frame(scene, points, VIEW_SIZE);
        EXPECT_FALSE(fault.has_value()) << fault->message;
        return camera;
    }

    Navigation from(ViewCamera const& camera) { return {scene, camera}; }

    /// Where a place of the scene is in the picture, pixels from the upper left corner.
    std::pair<double, double> seenAt(ViewCamera const& camera, Point const& place) {
        toolkit::ScreenAxes const& screen = camera.screen();
        Point const focus = camera.focusInScene(scene);
        double scale = camera.halfHeightAtFocus();
        if (camera.isPerspective()) {
            Point const eye = scene.placeToScene(camera.placement()->position);
            double const depth = dot(eye - place, screen.towardViewer);
            scale *= depth / length(eye - focus);
        }
        double const unit = 2 * scale / VIEW_SIZE.height;
        // The line of sight goes through the middle of the picture.
        return {VIEW_SIZE.width / 2.0 + dot(place - focus, screen.right) / unit,
                VIEW_SIZE.height / 2.0 - dot(place - focus, screen.up) / unit};
    }

    /// The point at the distance of the focus that is seen at a pixel.
    Point pointAt(ViewCamera const& camera, double x, double y) {
        double const unit = 2 * camera.halfHeightAtFocus() / VIEW_SIZE.height;
        toolkit::ScreenAxes const& screen = camera.screen();
        return camera.focusInScene(scene) + screen.right * ((x - VIEW_SIZE.width / 2.0) * unit) +
               screen.up * ((VIEW_SIZE.height / 2.0 - y) * unit);
    }

    static CameraSpec parallel() {
        CameraSpec spec;
        spec.projection = Projection::PARALLEL;
        return spec;
    }

    static CameraSpec top() {
        CameraSpec spec;
        spec.view = toolkit::ViewKind::TOP;
        return spec;
    }

    Scene scene{{tetrahedron()}};
    std::vector<Point> points{scene.models()[0].vertices.begin(), scene.models()[0].vertices.end()};
};

}  // namespace

TEST_F(Navigation_test, panKeepsThePointUnderTheCursor) {
    for (CameraSpec const& spec : {CameraSpec{}, parallel(), top()}) {
        ViewCamera const before = cameraOf(spec);
        Point const grabbed = pointAt(before, 200, 150);
        ViewCamera const after = cameraOf(from(before).pan(37, -21));
        auto const [x, y] = seenAt(after, grabbed);
        EXPECT_NEAR(x, 237, 0.01);
        EXPECT_NEAR(y, 129, 0.01);
        EXPECT_NEAR(after.halfHeightAtFocus(), before.halfHeightAtFocus(),
                    SINGLE * before.halfHeightAtFocus());
    }
}

TEST_F(Navigation_test, zoomKeepsThePointUnderTheCursorAndScalesByATenth) {
    for (CameraSpec const& spec : {CameraSpec{}, parallel(), top()}) {
        ViewCamera const before = cameraOf(spec);
        Point const seen = pointAt(before, 80, 310);
        ViewCamera const after = cameraOf(from(before).zoom(2, 80, 310));
        auto const [x, y] = seenAt(after, seen);
        EXPECT_NEAR(x, 80, 0.01);
        EXPECT_NEAR(y, 310, 0.01);
        EXPECT_NEAR(after.halfHeightAtFocus(), before.halfHeightAtFocus() / 1.21,
                    SINGLE * before.halfHeightAtFocus());
    }
}

TEST_F(Navigation_test, orbitKeepsTheFocusItsDistanceAndTheHorizon) {
    ViewCamera const before = cameraOf({});
    ViewCamera const after = cameraOf(from(before).orbit(70, 12));
    EXPECT_NEAR(length(after.focusInScene(scene) - before.focusInScene(scene)), 0, 1e-9);
    EXPECT_NEAR(after.halfHeightAtFocus(), before.halfHeightAtFocus(), 1e-9);
    EXPECT_NEAR(after.screen().right.y, 0, SINGLE);
    EXPECT_GT(after.screen().up.y, 0);
}

TEST_F(Navigation_test, whatIsInFrontOfTheFocusFollowsTheCursor) {
    ViewCamera const before = cameraOf({});
    Point const near = before.focusInScene(scene) + before.screen().towardViewer * 0.2;
    auto const [x0, y0] = seenAt(before, near);
    auto const [x1, y1] = seenAt(cameraOf(from(before).orbit(10, 0)), near);
    EXPECT_GT(x1, x0);
    auto const [x2, y2] = seenAt(cameraOf(from(before).orbit(0, 10)), near);
    EXPECT_GT(y2, y0);
}

TEST_F(Navigation_test, halfATurnOverTheShorterSide) {
    ViewCamera const before = cameraOf({});
    ViewCamera const after = cameraOf(from(before).orbit(VIEW_SIZE.height, 0));
    EXPECT_NEAR(after.screen().towardViewer.x, -before.screen().towardViewer.x, SINGLE);
    EXPECT_NEAR(after.screen().towardViewer.y, before.screen().towardViewer.y, SINGLE);
    EXPECT_NEAR(after.screen().towardViewer.z, -before.screen().towardViewer.z, SINGLE);
}

TEST_F(Navigation_test, orbitEndsStraightAboveAndGoesOnFromThere) {
    ViewCamera camera = cameraOf({});
    for (int i = 0; i < 10; ++i) {
        camera = cameraOf(from(camera).orbit(0, 150));
        EXPECT_TRUE(std::isfinite(camera.screen().up.x));
    }
    EXPECT_NEAR(camera.screen().towardViewer.y, 1, SINGLE);
    camera = cameraOf(from(camera).orbit(40, -60));
    EXPECT_LT(camera.screen().towardViewer.y, 0.95);
    EXPECT_GT(camera.screen().up.y, 0);
    EXPECT_NEAR(camera.screen().right.y, 0, SINGLE);
}

TEST_F(Navigation_test, orbitFromAViewAlongAnAxisLeadsToPerspectiveFromTheSameSide) {
    ViewCamera const before = cameraOf(top());
    ViewCamera const after = cameraOf(from(before).orbit(1, 0));
    EXPECT_TRUE(after.isPerspective());
    EXPECT_NEAR(after.halfHeightAtFocus(), before.halfHeightAtFocus(), SINGLE * before.halfHeightAtFocus());
    EXPECT_GT(dot(after.screen().towardViewer, before.screen().towardViewer), 0.999);
}

TEST_F(Navigation_test, theOtherProjectionShowsTheFocusEquallyLargeAndBackAgain) {
    ViewCamera const before = cameraOf(from(cameraOf({})).zoom(3, 10, 10));
    ViewCamera const flat = cameraOf(from(before).otherProjection());
    EXPECT_FALSE(flat.isPerspective());
    EXPECT_NEAR(flat.halfHeightAtFocus(), before.halfHeightAtFocus(), SINGLE * before.halfHeightAtFocus());
    ViewCamera const back = cameraOf(from(flat).otherProjection());
    EXPECT_TRUE(back.isPerspective());
    EXPECT_NEAR(back.halfHeightAtFocus(), before.halfHeightAtFocus(), SINGLE * before.halfHeightAtFocus());
    EXPECT_NEAR(length(back.screen().towardViewer - before.screen().towardViewer), 0, SINGLE);
}

TEST_F(Navigation_test, fitSeesEverythingFromTheSameSide) {
    ViewCamera const lost = cameraOf(from(cameraOf(from(cameraOf({})).orbit(50, 30))).zoom(40, 0, 0));
    ViewCamera const fitted = cameraOf(from(lost).fit());
    EXPECT_NEAR(length(fitted.screen().towardViewer - lost.screen().towardViewer), 0, SINGLE);
    for (Point const& p : points) {
        auto const [x, y] = seenAt(fitted, p);
        EXPECT_GT(x, 0);
        EXPECT_LT(x, VIEW_SIZE.width);
        EXPECT_GT(y, 0);
        EXPECT_LT(y, VIEW_SIZE.height);
    }
}

TEST_F(Navigation_test, whatIsNotFiniteMovesNothing) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const infinity = std::numeric_limits<double>::infinity();
    ViewCamera const camera = cameraOf({});
    for (CameraSpec const& spec :
         {from(camera).orbit(nan, 0), from(camera).pan(0, infinity), from(camera).zoom(nan, 0, 0),
          from(camera).zoom(1, infinity, 0), from(camera).orbit(0, 0)}) {
        EXPECT_FALSE(spec.position.has_value());
    }
}

TEST_F(Navigation_test, zoomEndsWherePrecisionDoes) {
    ViewCamera camera = cameraOf({});
    for (int i = 0; i < 40; ++i) {
        camera = cameraOf(from(camera).zoom(20, 300, 200));
    }
    EXPECT_GT(camera.halfHeightAtFocus(), 0.9e-5 * Scene::RADIUS);
    for (int i = 0; i < 80; ++i) {
        camera = cameraOf(from(camera).zoom(-20, 300, 200));
    }
    EXPECT_LT(camera.halfHeightAtFocus(), 1.1e4 * Scene::RADIUS);
}

TEST_F(Navigation_test, theOptionsOfAMovedCameraGiveTheSameCamera) {
    ViewCamera const moved = cameraOf(from(cameraOf(parallel())).zoom(5, 100, 100));
    EXPECT_THAT(moved.options(), testing::HasSubstr("--camera-height "));
}
