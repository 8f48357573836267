#include "toolkit/CameraController.h"

#include "foundation/geometry/constants.h"
#include "toolkit/Framing.h"
#include "toolkit/internal/framing_rules.h"

#include <algorithm>
#include <cmath>

#include "toolkit/internal/gl.h"

namespace vellum::toolkit {

namespace {

using constants::d::PI;

using Point = Vector3<double>;

constexpr Point FIRST_DIRECTION{-0.62, -0.46, -0.80};
constexpr double WHEEL_STEP = 1.1;

constexpr double SMALLEST_ANGLE = 1;  // of the field of view, degrees
constexpr double LARGEST_ANGLE = 170;

// GLU squares lengths in single precision, whose range ends at 1e38.
constexpr double LARGEST = 1e15;
constexpr double SMALLEST = 1e-15;
// Of the position: drivers take the sides of a box in single precision, and a box of no width is an error of
// GL.
constexpr double SMALLEST_PART = 1e-6;

constexpr double SLACK = 0.01;  // keeps the outermost points from being cut by rounding

// Below this part of a length, what is across it is rounding.
constexpr double ROUNDING = 1e-9;

// An eye that fits a box with little extent across the screen keeps this part of its diagonal in front of it.
constexpr double CLEARANCE = 0.1;

double largest(Point const& p) {
    return std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z)});
}

/// Whether single precision is not exceeded; false for NaN.
bool isUsable(Point const& p) {
    return std::abs(p.x) <= LARGEST && std::abs(p.y) <= LARGEST && std::abs(p.z) <= LARGEST;
}

double smallestHalfHeight(Point const& middle) {
    return std::max(SMALLEST, SMALLEST_PART * largest(middle));
}

/// With the corners where they belong.
Box3<double> ordered(Box3<double> const& box) {
    return {{std::min(box.min.x, box.max.x), std::min(box.min.y, box.max.y), std::min(box.min.z, box.max.z)},
            {std::max(box.min.x, box.max.x), std::max(box.min.y, box.max.y), std::max(box.min.z, box.max.z)}};
}

}  // namespace

CameraController::CameraController(Camera_RL& camera) : camera(camera) {
    lookAlong(FIRST_DIRECTION);
    fit(fitted);
}

// == What is seen ==

void CameraController::fit(Box3<double> const& box) {
    if (!isUsable(box.min) || !isUsable(box.max)) {
        return;
    }
    fitted = ordered(box);
    if (!(largest(fitted.max - fitted.min) > 0)) {
        Point const half{0.5, 0.5, 0.5};
        fitted = {fitted.min - half, fitted.max + half};
    }
    contents = fitted;
    isFitted = true;
    middle = centerOf(fitted);
    halfHeight = _heightToFit();
}

void CameraController::setContents(Box3<double> const& box) {
    if (isUsable(box.min) && isUsable(box.max)) {
        contents = ordered(box);
    }
}

void CameraController::setViewKind(ViewKind newKind) {
    if (static_cast<unsigned int>(newKind) > static_cast<unsigned int>(ViewKind::RIGHT) || newKind == kind) {
        return;
    }
    kind = newKind;
    isFitted = false;
}

void CameraController::lookAlong(Vector3<double> const& newDirection) {
    // The largest component first: squares of large or small numbers leave the range of double.
    double const scale = largest(newDirection);
    Point const d = newDirection / scale;
    double const aside = std::hypot(d.x, d.z);
    double const newPitch = std::atan2(d.y, aside);
    if (!std::isfinite(scale) || !std::isfinite(newPitch) || !(length(d) > 0)) {
        return;
    }
    _changeToPerspective();
    if (aside > ROUNDING) {
        yaw = std::atan2(d.x, -d.z);
        pitch = newPitch;
    } else {
        pitch = std::copysign(PI / 2, d.y);
    }
    isFitted = false;
}

void CameraController::setFieldOfView(double degrees) {
    if (std::isfinite(degrees)) {
        fieldOfView = std::clamp(degrees, SMALLEST_ANGLE, LARGEST_ANGLE);
        isFitted = false;
    }
}

// == What the mouse does ==

void CameraController::orbit(double dx, double dy) {
    double const radiansPerPixel = PI / std::min(viewport.width, viewport.height);
    double const aside = dx * radiansPerPixel;
    double const down = dy * radiansPerPixel;
    if (!std::isfinite(aside) || !std::isfinite(down) || (dx == 0 && dy == 0)) {
        return;
    }
    _changeToPerspective();
    yaw = std::remainder(yaw + aside, 2 * PI);
    pitch = std::clamp(pitch - down, -PI / 2, PI / 2);
    isFitted = false;
}

void CameraController::pan(double dx, double dy) {
    ScreenAxes const axes = _axes();
    double const unit = unitsPerPixel();
    _moveTo(middle - axes.right * (dx * unit) + axes.up * (dy * unit), halfHeight);
}

void CameraController::zoom(double steps, double x, double y) {
    double const factor = std::pow(WHEEL_STEP, -steps);
    ScreenAxes const axes = _axes();
    double const unit = unitsPerPixel();
    double const aside = (x - viewport.width / 2.0) * unit;
    double const above = (viewport.height / 2.0 - y) * unit;
    // What is under the cursor is the center of the scaling.
    _moveTo(middle + (axes.right * aside + axes.up * above) * (1 - factor), halfHeight * factor);
}

void CameraController::zoom(double steps) {
    zoom(steps, viewport.width / 2.0, viewport.height / 2.0);
}

// == Every frame ==

View CameraController::load(Viewport const& newViewport) {
    update(newViewport);
    glViewport(viewport.x, viewport.y, viewport.width, viewport.height);
    camera.updateProjectionMatrix();
    camera.updateModelMatrix();
    return View::current();
}

void CameraController::update(Viewport const& newViewport) {
    double const formerAspect = viewport.aspect();
    viewport = newViewport;
    viewport.width = std::max(viewport.width, 1);
    viewport.height = std::max(viewport.height, 1);
    double const aspect = viewport.aspect();
    if (isFitted && aspect != formerAspect) {
        halfHeight = _heightToFit();
    }

    ScreenAxes const axes = _axes();
    camera.viewKind = static_cast<unsigned int>(kind);
    camera.aspect = static_cast<float>(aspect);
    camera.fieldOfView = static_cast<float>(fieldOfView);

    // Distances from the target, so that a small one is not lost beside a far origin.
    Point const forward = -axes.towardViewer;
    double const targetDepth = distance();
    double nearest = targetDepth;
    double farthest = targetDepth;
    for (unsigned int i = 0; i < 8; ++i) {
        Point const corner{(i & 1U) != 0 ? contents.max.x : contents.min.x,
                           (i & 2U) != 0 ? contents.max.y : contents.min.y,
                           (i & 4U) != 0 ? contents.max.z : contents.min.z};
        double const depth = targetDepth + dot(corner - middle, forward);
        nearest = std::min(nearest, depth);
        farthest = std::max(farthest, depth);
    }
    double const farDistance = farthest * (1 + SLACK);
    camera.farDistance = static_cast<float>(farDistance);
    camera.nearDistance = static_cast<float>(
        std::max(nearest * (1 - SLACK), std::min(farDistance * SMALLEST_NEAR_PART, targetDepth / 2)));

    Point const eye = middle - forward * targetDepth;
    Point const ahead = forward * std::max(1.0, largest(eye));
    auto const number = [](double value) { return static_cast<float>(value); };
    *camera.transform.matrix() = {{number(ahead.x), number(ahead.y), number(ahead.z), 0,                 //
                                   number(axes.up.x), number(axes.up.y), number(axes.up.z), 0,           //
                                   number(axes.right.x), number(axes.right.y), number(axes.right.z), 0,  //
                                   number(eye.x), number(eye.y), number(eye.z), 1}};

    if (kind != ViewKind::PERSPECTIVE) {
        // As frameOrthographic() says: half the width is e^zoom, and pan y is divided by the aspect.
        double const aside = dot(middle, axes.right);
        camera.panX = static_cast<float>(-aside);
        camera.panY = static_cast<float>(-dot(middle, axes.up) * aspect);
        // The width of a narrow viewport is smaller than the height, which alone is kept above the smallest
        // part.
        double const halfWidth = std::max(halfHeight * aspect, SMALLEST_PART * std::abs(aside));
        camera.zoom = static_cast<float>(std::log(halfWidth));
    }
}

// == State, for saving and for overlays ==

Vector3<double> CameraController::direction() const {
    return -_axes().towardViewer;
}

double CameraController::distance() const {
    return halfHeight / _tangent();
}

double CameraController::unitsPerPixel() const {
    return 2 * halfHeight / viewport.height;
}

// == Private ==

ScreenAxes CameraController::_axes() const {
    if (kind != ViewKind::PERSPECTIVE) {
        return screenAxes(kind);
    }
    // Both angles, not the direction, so that there is an up vector straight above and below.
    double const sinYaw = std::sin(yaw);
    double const cosYaw = std::cos(yaw);
    double const sinPitch = std::sin(pitch);
    double const cosPitch = std::cos(pitch);
    return {{cosYaw, 0, sinYaw},
            {-sinYaw * sinPitch, cosPitch, cosYaw * sinPitch},
            {-sinYaw * cosPitch, -sinPitch, cosYaw * cosPitch}};
}

/// Of half the field of view.
double CameraController::_tangent() const {
    return std::tan(fieldOfView * PI / 360);
}

/// The half height with which the fitted box, about the target, are seen whole.
double CameraController::_heightToFit() const {
    ScreenAxes const axes = _axes();
    double const aspect = viewport.aspect();
    double const tangent = _tangent();
    Point const half = fitted.max * 0.5 - fitted.min * 0.5;
    double height = 0;  // of the box across the screen
    double depth = 0;   // of the eye before the middle
    for (unsigned int i = 0; i < 8; ++i) {
        Point const corner{(i & 1U) != 0 ? half.x : -half.x, (i & 2U) != 0 ? half.y : -half.y,
                           (i & 4U) != 0 ? half.z : -half.z};
        double const across =
            std::max(std::abs(dot(corner, axes.right)) / aspect, std::abs(dot(corner, axes.up)));
        double const toward = dot(corner, axes.towardViewer);
        height = std::max(height, across / FILLED_PART);
        depth =
            std::max({depth, across / (tangent * FILLED_PART) + toward, toward + CLEARANCE * length(half)});
    }
    // A line that is seen end on has no height either.
    double const flatHeight = height > ROUNDING * length(half) ? height : length(half);
    double const fitting = kind == ViewKind::PERSPECTIVE ? depth * tangent : flatHeight;
    return std::clamp(fitting, smallestHalfHeight(middle), LARGEST);
}

/// Nothing happens where the result could not be shown, as with NaN.
void CameraController::_moveTo(Vector3<double> const& newMiddle, double newHalfHeight) {
    if (!isUsable(newMiddle) || !(newHalfHeight <= LARGEST) ||
        !(newHalfHeight >= smallestHalfHeight(newMiddle))) {
        return;
    }
    middle = newMiddle;
    halfHeight = newHalfHeight;
    isFitted = false;
}

/// From the same side, with the same axes on the screen.
void CameraController::_changeToPerspective() {
    ScreenAxes const axes = _axes();
    if (kind != ViewKind::PERSPECTIVE) {
        kind = ViewKind::PERSPECTIVE;
        yaw = std::atan2(axes.right.z, axes.right.x);
        pitch = std::asin(-axes.towardViewer.y);
    }
}

}  // namespace vellum::toolkit
