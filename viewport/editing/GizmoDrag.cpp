#include "viewport/editing/GizmoDrag.h"

#include "foundation/geometry/constants.h"
#include "toolkit/AxisDrag.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;

// Sine of the angle below which an axis is a point of the screen and a plane a line: a pixel would be a long
// way there.
constexpr double END_ON = 0.05;

// Cosine of the angle between an axis and the view below which its circle is a line of the screen.
constexpr double CIRCLE_EDGE_ON = 0.1;

// Beyond this place on a circle that is seen as a line, the cursor turns as fast as there.
constexpr double LAST_ON_CIRCLE = 0.85;

// In lengths of a handle: what is pressed nearer to the pivot is no measure for a scale.
constexpr double NEAR_PIVOT = 0.2;

constexpr double ANGLE_STEP = PI / 12;
constexpr double FACTOR_STEP = 0.1;
constexpr double SMALLEST_FACTOR = 0.01;  // of one drag
constexpr double LARGEST_EXPONENT = 20;

// Farther from the viewer than this, a plane ends at its horizon. In radii of the scene.
constexpr double HORIZON = 1e4;

double component(Point const& v, int axis) {
    return axis == 0 ? v.x : axis == 1 ? v.y : v.z;
}

double& component(Point& v, int axis) {
    return axis == 0 ? v.x : axis == 1 ? v.y : v.z;
}

Point unitVector(int axis) {
    Point v{0, 0, 0};
    component(v, axis) = 1;
    return v;
}

double inSteps(double value, double step) {
    return std::round(value / step) * step;
}

/// The largest of 1, 2 and 5 times a power of ten that is not above the number.
double roundStep(double number) {
    if (!(number > 0) || !std::isfinite(number)) {
        return 1;
    }
    double const power = std::pow(10, std::floor(std::log10(number)));
    double const slack = 1 + 1e-9;
    double const step = number * slack >= 5 * power   ? 5 * power
                        : number * slack >= 2 * power ? 2 * power
                                                      : power;
    return step > 0 ? step : 1;
}

/// The angle of a place on a circle of radius 1 that is seen as a line.
double angleOnLine(double place) {
    double const size = std::abs(place);
    double const slope = 1 / std::sqrt(1 - LAST_ON_CIRCLE * LAST_ON_CIRCLE);
    double const angle = size <= LAST_ON_CIRCLE ? std::asin(size)
                                                : std::asin(LAST_ON_CIRCLE) + (size - LAST_ON_CIRCLE) * slope;
    return std::copysign(angle, place);
}

}  // namespace

Rotation handlesOf(Gizmo gizmo, ObjectTransform const& transform) {
    return gizmo == Gizmo::MOVE ? Rotation() : transform.rotation;
}

GizmoDrag::GizmoDrag(Scene const& scene, std::size_t object, Gizmo gizmo, GizmoHandle handle,
                     ObjectTransform const& before, toolkit::View const& view, double x, double y)
    : scene(&scene)
    , gizmo(gizmo)
    , handle(handle)
    , start(before)
    , now(before)
    , view(view)
    , pressedX(x)
    , pressedY(y)
    , pivot(pivotOf(scene, object) + scene.directionToScene(before.translation * scene.unitsPerFileUnit())) {
    toolkit::ScreenPoint const place = view.project(pivot);
    double const pixelsPerUnit = view.pixelsPerUnit(pivot);
    if (place.isInFront && pixelsPerUnit > 0 && std::isfinite(x) && std::isfinite(y) && before.isValid()) {
        sight = view.rayThrough(place.x, place.y).direction;
        reach = GIZMO_LENGTH * std::min(view.viewport.width, view.viewport.height) / pixelsPerUnit;
    }
    Box3<double> const& box = objectBox(scene, object);
    double const size = length(box.max - box.min) * before.meanScale();
    step = roundStep((size > 0 ? size : 2 * Scene::RADIUS) / scene.unitsPerFileUnit() / 20);
}

ObjectTransform GizmoDrag::update(double x, double y, bool snaps) {
    bool const isUsable = reach > 0 && std::isfinite(reach) && std::isfinite(x) && std::isfinite(y);
    if (!isUsable || handle == GizmoHandle::NONE) {
        return now;
    }
    ObjectTransform const next = gizmo == Gizmo::MOVE     ? _moved(x, y, snaps)
                                 : gizmo == Gizmo::ROTATE ? _turned(x, y, snaps)
                                 : gizmo == Gizmo::SCALE  ? _scaled(x, y, snaps)
                                                          : now;
    if (next.isValid()) {
        now = next;
    }
    return now;
}

// == Moving ==

ObjectTransform GizmoDrag::_moved(double x, double y, bool snaps) const {
    double const perUnit = 1 / scene->unitsPerFileUnit();
    auto const steps = [&](double distance) { return snaps ? inSteps(distance, step) : distance; };
    ObjectTransform result = start;
    if (int const axis = axisOf(handle); axis >= 0) {
        Point const direction = _direction(axis);
        if (_isEndOn(direction)) {
            return now;
        }
        toolkit::Ray const ray{pivot, direction};
        double const way =
            toolkit::alongAxis(view, ray, x, y) - toolkit::alongAxis(view, ray, pressedX, pressedY);
        component(result.translation, axis) += steps(way * perUnit);
        return result;
    }
    int const across = normalAxisOf(handle);
    toolkit::ScreenAxes const screen = view.axes();
    Point const normal = across >= 0 ? _direction(across) : screen.towardViewer;
    if (_isEdgeOn(normal) || _isMissed(normal, x, y) || _isMissed(normal, pressedX, pressedY)) {
        return now;
    }
    Point const way = (toolkit::onPlane(view, pivot, normal, x, y) -
                       toolkit::onPlane(view, pivot, normal, pressedX, pressedY)) *
                      perUnit;
    if (across < 0) {
        result.translation =
            result.translation + scene->directionToFile(screen.right * steps(dot(way, screen.right)) +
                                                        screen.up * steps(dot(way, screen.up)));
        return result;
    }
    Point const own = scene->directionToFile(way);
    for (int axis = 0; axis < 3; ++axis) {
        if (axis != across) {
            component(result.translation, axis) += steps(component(own, axis));
        }
    }
    return result;
}

// == Turning ==

ObjectTransform GizmoDrag::_turned(double x, double y, bool snaps) const {
    int const axis = axisOf(handle);
    if (axis < 0 && handle != GizmoHandle::CENTER) {
        return now;
    }
    Point const direction = axis >= 0 ? _direction(axis) : -sight;
    bool const isLine = std::abs(dot(direction, sight)) < CIRCLE_EDGE_ON;
    if (!isLine && (_isMissed(direction, x, y) || _isMissed(direction, pressedX, pressedY))) {
        return now;
    }
    double const angle = isLine ? _angleOfLine(direction, x, y)
                                : toolkit::turnAboutAxis(view, {pivot, direction}, pressedX, pressedY, x, y);
    ObjectTransform result = start;
    result.rotation =
        Rotation::about(scene->directionToFile(direction), snaps ? inSteps(angle, ANGLE_STEP) : angle) *
        start.rotation;
    return result;
}

/// Of a circle that is seen edge on: the nearer half is grabbed, which moves across the axis.
double GizmoDrag::_angleOfLine(Point const& axis, double x, double y) const {
    Point const along = normalized(cross(sight, axis));
    toolkit::ScreenPoint const from = view.project(pivot);
    toolkit::ScreenPoint const to = view.project(pivot + along * reach);
    double const dx = to.x - from.x;
    double const dy = to.y - from.y;
    double const square = dx * dx + dy * dy;
    if (!(square > 0)) {
        return 0;
    }
    auto const placeOf = [&](double atX, double atY) {
        return ((atX - from.x) * dx + (atY - from.y) * dy) / square;
    };
    return angleOnLine(placeOf(x, y)) - angleOnLine(placeOf(pressedX, pressedY));
}

// == Scaling ==

ObjectTransform GizmoDrag::_scaled(double x, double y, bool snaps) const {
    std::optional<double> const dragged = _factor(x, y);
    if (!dragged) {
        return now;
    }
    double factor = std::max(*dragged, SMALLEST_FACTOR);
    if (snaps) {
        factor = std::max(inSteps(factor, FACTOR_STEP), FACTOR_STEP);
    }
    int const only = axisOf(handle);
    int const without = normalAxisOf(handle);
    auto const isScaled = [&](int axis) { return only >= 0 ? axis == only : axis != without; };
    // All axes stay in the range, with the same factor.
    for (int axis = 0; axis < 3; ++axis) {
        double const size = std::abs(component(start.scale, axis));
        if (isScaled(axis)) {
            factor = std::clamp(factor, std::min(1.0, ObjectTransform::SMALLEST_SCALE / size),
                                std::max(1.0, ObjectTransform::LARGEST_SCALE / size));
        }
    }
    ObjectTransform result = start;
    for (int axis = 0; axis < 3; ++axis) {
        component(result.scale, axis) *= isScaled(axis) ? factor : 1;
    }
    return result;
}

/// Nothing where the handle cannot be moved.
std::optional<double> GizmoDrag::_factor(double x, double y) const {
    if (int const axis = axisOf(handle); axis >= 0) {
        Point const direction = _direction(axis);
        if (_isEndOn(direction)) {
            return std::nullopt;
        }
        toolkit::Ray const ray{pivot, direction};
        double const from = toolkit::alongAxis(view, ray, pressedX, pressedY);
        double const to = toolkit::alongAxis(view, ray, x, y);
        return std::abs(from) > NEAR_PIVOT * reach ? to / from : 1 + (to - from) / reach;
    }
    if (int const across = normalAxisOf(handle); across >= 0) {
        Point const normal = _direction(across);
        if (_isEdgeOn(normal) || _isMissed(normal, x, y) || _isMissed(normal, pressedX, pressedY)) {
            return std::nullopt;
        }
        Point const from = toolkit::onPlane(view, pivot, normal, pressedX, pressedY) - pivot;
        Point const to = toolkit::onPlane(view, pivot, normal, x, y) - pivot;
        if (length(from) > NEAR_PIVOT * reach) {
            return dot(to, from) / dot(from, from);
        }
        Point const diagonal = normalized(_direction((across + 1) % 3) + _direction((across + 2) % 3));
        return 1 + dot(to - from, diagonal) / reach;
    }
    double const pixels = GIZMO_LENGTH * std::min(view.viewport.width, view.viewport.height);
    double const exponent = ((x - pressedX) - (y - pressedY)) / pixels;
    return std::exp(std::clamp(exponent, -LARGEST_EXPONENT, LARGEST_EXPONENT));
}

// == Directions ==

/// Of a handle when it was pressed, in the frame of the scene.
Point GizmoDrag::_direction(int axis) const {
    return scene->directionToScene(handlesOf(gizmo, start)(unitVector(axis)));
}

bool GizmoDrag::_isEndOn(Point const& axis) const {
    return !(length(cross(axis, sight)) > END_ON);
}

bool GizmoDrag::_isEdgeOn(Point const& normal) const {
    return !(std::abs(dot(normal, sight)) > END_ON);
}

bool GizmoDrag::_isMissed(Point const& normal, double x, double y) const {
    toolkit::Ray const ray = view.rayThrough(x, y);
    double const depth = dot(pivot - ray.origin, normal) / dot(ray.direction, normal);
    return !(depth >= 0) || !(depth < HORIZON * Scene::RADIUS);
}

}  // namespace vellum::viewport
