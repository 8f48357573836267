#include "viewport/drawing/view/Navigation.h"

#include "foundation/geometry/constants.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;

constexpr double WHEEL_STEP = 1.1;
constexpr Point VERTICAL{0, 1, 0};  // of scenes

// Of half the height that is seen at the focus, in radii of the scene. Beyond, nothing is seen but rounding
// or a dot.
constexpr double SMALLEST = 1e-5 * Scene::RADIUS;
constexpr double LARGEST = 1e4 * Scene::RADIUS;

/// Turns a vector about an axis of unit length, counter-clockwise as seen against it. Radians.
Point turned(Point const& v, Point const& axis, double angle) {
    return v * std::cos(angle) + cross(axis, v) * std::sin(angle) +
           axis * (dot(axis, v) * (1 - std::cos(angle)));
}

double tangentOf(double fieldOfView) {
    return std::tan(fieldOfView * PI / 360);
}

}  // namespace

CameraSpec Navigation::orbit(double dx, double dy) const {
    PictureSize const& size = camera.framedArea();
    double const radiansPerPixel = PI / std::min(size.width, size.height);
    double const aside = -dx * radiansPerPixel;
    double const down = -dy * radiansPerPixel;
    if (!std::isfinite(aside) || !std::isfinite(down) || (dx == 0 && dy == 0) || !_canMove()) {
        return camera.spec();
    }
    Pose pose = camera.isAlongAxis() ? _poseAlongAxis() : _pose();
    double const distance = length(pose.focus - pose.eye);
    Point direction = normalized(pose.focus - pose.eye);
    Point right = normalized(cross(direction, pose.up));
    direction = turned(direction, VERTICAL, aside);
    right = turned(right, VERTICAL, aside);
    // From the vertical, 0 looks straight up.
    double const fromVertical = std::acos(std::clamp(direction.y, -1.0, 1.0));
    double pitch = down;
    bool const isUpright = std::abs(right.y) < 1e-6;
    if (isUpright) {
        // Straight above and below it is neither.
        bool const isHeadUp = cross(right, direction).y >= -1e-6;
        pitch = isHeadUp ? std::clamp(down, fromVertical - PI, fromVertical) : down;
    }
    direction = turned(direction, right, pitch);
    pose.up = cross(right, direction);
    pose.eye = pose.focus - direction * distance;
    return _toSpec(pose);
}

CameraSpec Navigation::pan(double dx, double dy) const {
    if (!_canMove()) {
        return camera.spec();
    }
    double const unit = 2 * camera.halfHeightAtFocus() / camera.framedArea().height;
    toolkit::ScreenAxes const& screen = camera.screen();
    Point const move = screen.up * (dy * unit) - screen.right * (dx * unit);
    if (!isFinite(move)) {
        return camera.spec();
    }
    if (camera.isAlongAxis()) {
        return _axisViewAt(camera.focusInScene(scene) + move, camera.spec().zoom);
    }
    Pose pose = _pose();
    pose.eye = pose.eye + move;
    pose.focus = pose.focus + move;
    return _toSpec(pose);
}

CameraSpec Navigation::zoom(double steps, double x, double y) const {
    if (!_canMove()) {
        return camera.spec();
    }
    PictureSize const& size = camera.framedArea();
    double const half = camera.halfHeightAtFocus();
    double const factor = std::clamp(half * std::pow(WHEEL_STEP, -steps), SMALLEST, LARGEST) / half;
    double const unit = 2 * half / size.height;
    toolkit::ScreenAxes const& screen = camera.screen();
    Point const toCursor =
        screen.right * ((x - size.width / 2.0) * unit) + screen.up * ((size.height / 2.0 - y) * unit);
    Point const move = toCursor * (1 - factor);
    if (!isFinite(move) || !std::isfinite(factor) || !(factor > 0)) {
        return camera.spec();
    }
    if (camera.isAlongAxis()) {
        return _axisViewAt(camera.focusInScene(scene) + move, camera.spec().zoom / factor);
    }
    Pose pose = _pose();
    Point const offset =
        (pose.eye - pose.focus) * (pose.projection == Projection::PERSPECTIVE ? factor : 1.0);
    pose.focus = pose.focus + move;
    pose.eye = pose.focus + offset;
    pose.halfHeight *= factor;
    return _toSpec(pose);
}

CameraSpec Navigation::fit() const {
    if (!_canMove()) {
        return camera.spec();
    }
    CameraSpec const& now = camera.spec();
    if (camera.isAlongAxis()) {
        CameraSpec spec;
        spec.view = now.view;
        return spec;
    }
    CameraSpec spec;
    spec.projection = now.projection;
    spec.fieldOfView = now.fieldOfView;
    // Of the placement, not of the camera, which rounds.
    Pose const pose = _pose();
    Point const back = normalized(pose.eye - pose.focus);
    spec.elevation = std::asin(std::clamp(back.y, -1.0, 1.0)) * 180 / PI;
    Point const level = std::hypot(back.x, back.z) > 1e-9 ? back : pose.up * (back.y < 0 ? 1.0 : -1.0);
    spec.azimuth = std::atan2(level.x, level.z) * 180 / PI;
    return spec;
}

CameraSpec Navigation::lookAlong(toolkit::ViewKind view) const {
    CameraSpec spec;
    spec.view = view;
    spec.fieldOfView = camera.spec().fieldOfView;
    return spec;
}

CameraSpec Navigation::otherProjection() const {
    if (!_canMove()) {
        return camera.spec();
    }
    Pose pose = camera.isAlongAxis() ? _poseAlongAxis() : _pose();
    if (!camera.isAlongAxis()) {
        bool const isPerspective = pose.projection == Projection::PERSPECTIVE;
        pose.projection = isPerspective ? Projection::PARALLEL : Projection::PERSPECTIVE;
        if (!isPerspective) {
            Point const back = normalized(pose.eye - pose.focus);
            pose.eye = pose.focus + back * (pose.halfHeight / tangentOf(pose.fieldOfView));
        }
    }
    return _toSpec(pose);
}

/// The viewer of an open sea stands where the effect says.
bool Navigation::_canMove() const {
    return camera.isAlongAxis() || camera.placement();
}

Navigation::Pose Navigation::_pose() const {
    CameraPlacement const& placement = *camera.placement();
    Point const eye = scene.placeToScene(placement.position);
    Point const direction = normalized(scene.placeToScene(placement.focus) - eye);
    // Not as the camera has it, which rounds.
    Point const right = normalized(cross(direction, scene.directionToScene(placement.up)));
    return {eye,
            scene.placeToScene(placement.focus),
            cross(right, direction),
            camera.halfHeightAtFocus(),
            placement.projection,
            placement.fieldOfView};
}

/// In perspective.
Navigation::Pose Navigation::_poseAlongAxis() const {
    toolkit::ScreenAxes const& screen = camera.screen();
    double const fieldOfView = camera.spec().fieldOfView.value_or(CameraSpec::FIELD_OF_VIEW);
    double const half = camera.halfHeightAtFocus();
    Point const focus = camera.focusInScene(scene);
    return {focus + screen.towardViewer * (half / tangentOf(fieldOfView)),
            focus,
            screen.up,
            half,
            Projection::PERSPECTIVE,
            fieldOfView};
}

CameraSpec Navigation::_toSpec(Pose const& pose) const {
    CameraSpec spec;
    spec.projection = pose.projection;
    spec.position = scene.placeToFile(pose.eye);
    spec.focus = scene.placeToFile(pose.focus);
    spec.up = scene.directionToFile(pose.up);
    spec.fieldOfView = pose.fieldOfView;
    if (pose.projection == Projection::PARALLEL) {
        spec.height = 2 * pose.halfHeight / scene.unitsPerFileUnit();
    } else {
        // A narrower field of view is all that zoom is.
        spec.zoom = camera.spec().isAlongAxis() || camera.spec().projection == Projection::PARALLEL
                        ? 1
                        : camera.spec().zoom;
    }
    bool const isUsable = isFinite(*spec.position) && isFinite(*spec.focus) && isFinite(*spec.up) &&
                          length(pose.focus) < LARGEST && length(pose.eye - pose.focus) > 0;
    return isUsable ? spec : camera.spec();
}

CameraSpec Navigation::_axisViewAt(Point const& focus, double zoom) const {
    CameraSpec spec = camera.spec();
    spec.focus = scene.placeToFile(focus);
    spec.zoom = zoom;
    return isFinite(*spec.focus) && length(focus) < LARGEST && zoom > 0 ? spec : camera.spec();
}

}  // namespace vellum::viewport
