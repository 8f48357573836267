#include "viewport/drawing/view/ViewCamera.h"

#include "foundation/geometry/constants.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;

// 24 bits of depth still tell surfaces apart then.
constexpr double SMALLEST_NEAR_PART = 1.0 / 2000;

constexpr double AXIS_VIEW_DEPTH = 1000;  // of Camera_RL_GL on both sides of the origin
constexpr double AXIS_VIEW_DISTANCE = 3 * Scene::RADIUS;

/// Distances from the eye along the direction.
struct DepthRange {
    double nearest;
    double farthest;
};

DepthRange depthsOf(FramedPoints const& points, std::vector<Point> const& more, Point const& eye,
                    Point const& direction) {
    FramedPoints::Range const reached = points.along(eye, direction);
    DepthRange range{reached.least, reached.most};
    for (Point const& p : more) {
        double const depth = dot(p - eye, direction);
        range.nearest = std::min(range.nearest, depth);
        range.farthest = std::max(range.farthest, depth);
    }
    return range;
}

}  // namespace

// == The camera itself ==

void ViewCamera::FreeCamera::updateProjectionMatrix() {
    if (!halfHeight) {
        Camera_RL_GL::updateProjectionMatrix();
        return;
    }
    double const halfWidth = *halfHeight * static_cast<double>(aspect);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-halfWidth, halfWidth, -*halfHeight, *halfHeight, static_cast<double>(nearDistance),
            static_cast<double>(farDistance));
    glMatrixMode(GL_MODELVIEW);
}

void ViewCamera::FreeCamera::updateProjectionMatrixZBias() {
    if (halfHeight) {
        updateProjectionMatrix();
    } else {
        Camera_RL_GL::updateProjectionMatrixZBias();
    }
}

// == Framing ==

std::optional<Fault> ViewCamera::frame(Scene const& scene, FramedPoints const& points,
                                       PictureSize const& size, Box3<double> const* bounds) {
    area = size;
    viewCamera.aspect = static_cast<float>(size.aspect());
    viewCamera.viewKind = static_cast<unsigned int>(asked.view);
    if (isAlongAxis()) {
        _frameAxisView(scene, bounds != nullptr ? *bounds : scene.box());
        chosen.reset();
        optionWords = axisViewToOptions(asked);
    } else {
        Result<CameraPlacement> const placement =
            CameraPlacement::of(asked, scene, points.all(), size.aspect());
        if (!placement.isOk()) {
            return placement.fault();
        }
        chosen = placement.value();
        _frameFreely(*chosen, scene, points);
        optionWords = chosen->toOptions();
    }
    _updateScreen();
    return std::nullopt;
}

void ViewCamera::_frameAxisView(Scene const& scene, Box3<double> const& bounds) {
    toolkit::OrthographicFraming framing = toolkit::frameOrthographic(bounds, asked.view, area.aspect());
    if (asked.focus) {
        Point const focus = scene.placeToScene(*asked.focus);
        toolkit::ScreenAxes const screen = toolkit::screenAxes(asked.view);
        framing.panX = -dot(focus, screen.right);
        framing.panY = -dot(focus, screen.up) * area.aspect();
    }
    viewCamera.panX = static_cast<float>(framing.panX);
    viewCamera.panY = static_cast<float>(framing.panY);
    viewCamera.zoom = static_cast<float>(framing.zoom - std::log(asked.zoom));
}

/// Everything follows from the placement alone, so that a placement that was printed gives the same picture.
void ViewCamera::_frameFreely(CameraPlacement const& placement, Scene const& scene,
                              FramedPoints const& points) {
    Point const from = scene.placeToScene(placement.position);
    Point const focus = scene.placeToScene(placement.focus);
    Point const up = scene.directionToScene(normalized(placement.up));
    Point const direction = normalized(focus - from);
    focusDistance = length(focus - from);
    viewCamera.lookAt(convert<float>(from), convert<float>(from + direction), convert<float>(up));

    DepthRange const seen = depthsOf(points, toolkit::cornersOf(surroundingsOf(scene)), from, direction);
    viewCamera.halfHeight.reset();
    if (placement.projection == Projection::PERSPECTIVE) {
        double const tangent = std::tan(placement.fieldOfView * PI / 360) / placement.zoom;
        viewCamera.fieldOfView = static_cast<float>(std::atan(tangent) * 360 / PI);
        // A little slack keeps the first and the last point from being cut by rounding. A scene behind the
        // eye is not seen, but the distances must make sense.
        double const farthest = std::max(seen.farthest * 1.01, 1e-3 * Scene::RADIUS);
        viewCamera.farDistance = static_cast<float>(farthest);
        viewCamera.nearDistance =
            static_cast<float>(std::max(seen.nearest * 0.99, farthest * SMALLEST_NEAR_PART));
        return;
    }
    Point const right = normalized(cross(direction, up));
    Point const upright = cross(right, direction);
    double half = placement.height ? *placement.height / 2 * scene.unitsPerFileUnit() : 0;
    if (!placement.height) {
        if (!points.all().empty()) {
            FramedPoints::Range const high = points.along(focus, upright);
            FramedPoints::Range const wide = points.along(focus, right);
            half = std::max({half, std::abs(high.least), std::abs(high.most),
                             std::abs(wide.least) / area.aspect(), std::abs(wide.most) / area.aspect()});
        }
        half = (half > 0 ? half : 0.5) / toolkit::FILLED_PART;
    }
    viewCamera.halfHeight = half / placement.zoom;
    double const slack = 0.01 * (seen.farthest - seen.nearest) + 1e-3 * Scene::RADIUS;
    viewCamera.nearDistance = static_cast<float>(seen.nearest - slack);
    viewCamera.farDistance = static_cast<float>(seen.farthest + slack);
}

void ViewCamera::frame(OceanScene const& ocean, PictureSize const& size) {
    area = size;
    asked = {};
    chosen.reset();
    viewCamera.halfHeight.reset();
    ocean.placeCamera(viewCamera);
    optionWords.clear();
    _updateScreen();
}

SeaView ViewCamera::seaView(PictureSize const& size) const {
    SeaView view{eye, -axes.towardViewer, axes.right, axes.up, !isPerspective(), 1, 1, isAlongAxis()};
    if (isPerspective()) {
        view.halfHeight = std::tan(static_cast<double>(viewCamera.fieldOfView) * PI / 360);
        view.halfWidth = view.halfHeight * area.aspect();
    } else {
        view.halfWidth = halfWidth();
        view.halfHeight = view.halfWidth / area.aspect();
    }
    if (isAlongAxis()) {
        view.eye = axes.towardViewer * AXIS_VIEW_DISTANCE -
                   axes.right * static_cast<double>(viewCamera.panX) -
                   axes.up * (static_cast<double>(viewCamera.panY) / area.aspect());
    }
    // The area is at the left of the picture; what is beside it is seen on both sides here.
    view.halfWidth *= 2.0 * size.width / area.width - 1;
    return view;
}

void ViewCamera::include(double nearest, double farthest) {
    viewCamera.nearDistance = std::min(viewCamera.nearDistance, static_cast<float>(nearest));
    viewCamera.farDistance = std::max(viewCamera.farDistance, static_cast<float>(farthest));
}

void ViewCamera::load(Region const& region) {
    viewCamera.updateProjectionMatrix();
    cropProjection(region, area);
    viewCamera.updateModelMatrix();
}

// == Measures ==

double ViewCamera::unitsPerPixel(Point const& at) const {
    if (!isPerspective()) {
        return 2 * halfWidth() / area.width;
    }
    // Behind the viewer nothing is seen, and any size will do.
    double const depth = std::max(dot(at - eye, -axes.towardViewer), 1e-3 * Scene::RADIUS);
    double const fieldOfView = static_cast<double>(viewCamera.fieldOfView);
    return 2 * depth * std::tan(fieldOfView * PI / 360) / area.height;
}

Point ViewCamera::sightTo(Point const& point) const {
    Point const way = point - eye;
    return isPerspective() && dot(way, way) > 0 ? normalized(way) : -axes.towardViewer;
}

double ViewCamera::halfWidth() const {
    return viewCamera.halfHeight ? *viewCamera.halfHeight * area.aspect()
                                 : std::exp(static_cast<double>(viewCamera.zoom));
}

double ViewCamera::halfHeightAtFocus() const {
    return isPerspective() ? focusDistance * std::tan(chosen->fieldOfView * PI / 360) / chosen->zoom
                           : halfWidth() / area.aspect();
}

Point ViewCamera::focusInScene(Scene const& scene) const {
    if (chosen) {
        return scene.placeToScene(chosen->focus);
    }
    return asked.focus ? scene.placeToScene(*asked.focus) : scene.box().min * 0.5 + scene.box().max * 0.5;
}

double ViewCamera::distanceOf(double depth) const {
    if (isAlongAxis()) {
        return AXIS_VIEW_DISTANCE + AXIS_VIEW_DEPTH * (2 * depth - 1);
    }
    double const nearest = static_cast<double>(viewCamera.nearDistance);
    double const farthest = static_cast<double>(viewCamera.farDistance);
    return isPerspective() ? nearest * farthest / (farthest - depth * (farthest - nearest))
                           : nearest + depth * (farthest - nearest);
}

/// Reads the screen's axes back from the camera, whose single precision has rounded what it was given.
void ViewCamera::_updateScreen() {
    if (isAlongAxis()) {
        axes = toolkit::screenAxes(asked.view);
        return;
    }
    Matrix4<float> const& m = *viewCamera.transform.matrix();
    Point const direction = normalized(Point{m.e[0], m.e[1], m.e[2]});
    Point const right = normalized(cross(direction, Point{m.e[4], m.e[5], m.e[6]}));
    axes = {right, cross(right, direction), -direction};
    eye = {m.e[12], m.e[13], m.e[14]};
}

}  // namespace vellum::viewport
