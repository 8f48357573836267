#include "viewport/drawing/view/CameraPlacement.h"

#include "foundation/geometry/constants.h"
#include "viewport/text/shortest_number.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;
constexpr Point STANDARD_DIRECTION{-0.62, -0.46, -0.80};

// The ground that is to be seen around the models, in radii of the scene.
constexpr double SURROUNDINGS = 1.8;

// How far from the focus the eye of a parallel projection stands, where only its direction matters.
constexpr double PARALLEL_DISTANCE = 3 * Scene::RADIUS;

constexpr double SMALLEST_SINE = 1e-9;

/// How a camera looks, in the frame of the scene.
struct Look {
    Point direction;  // unit length
    Point right;      // unit length
    Point up;         // unit length, perpendicular to both
};

Point lookingDirection(CameraSpec const& spec) {
    if (!spec.azimuth && !spec.elevation) {
        return normalized(STANDARD_DIRECTION);
    }
    double const azimuth = std::atan2(-STANDARD_DIRECTION.x, -STANDARD_DIRECTION.z) * 180 / PI;
    double const level = std::hypot(STANDARD_DIRECTION.x, STANDARD_DIRECTION.z);
    double const elevation = std::atan2(-STANDARD_DIRECTION.y, level) * 180 / PI;
    return -directionByAngles(spec.azimuth.value_or(azimuth), spec.elevation.value_or(elevation));
}

bool isVertical(Point const& direction) {
    return std::abs(direction.y) > 0.9999;
}

/// What is vertical where nothing else is asked for.
Point standardVertical(CameraSpec const& spec, Point const& direction) {
    if (!isVertical(direction)) {
        return {0, 1, 0};
    }
    // Straight from above or below, the azimuth says which side is up.
    return directionByAngles(spec.azimuth.value_or(0), 0) * (direction.y < 0 ? -1.0 : 1.0);
}

Result<Look> lookOf(CameraSpec const& spec, Scene const& scene, Point const& direction) {
    double const distance = length(direction);
    if (!(distance > 0) || !std::isfinite(distance)) {
        return Fault{"", "--camera-position: is the point that is looked at"};
    }
    Look look{direction * (1 / distance), {}, {}};
    Point const vertical =
        spec.up ? scene.directionToScene(normalized(*spec.up)) : standardVertical(spec, look.direction);
    Point const side = cross(look.direction, vertical);
    if (!(length(side) > SMALLEST_SINE)) {
        return Fault{"", "--camera-up: is the direction of view"};
    }
    look.right = normalized(side);
    look.up = cross(look.right, look.direction);
    return look;
}

/// How far from the focus an eye must stand to see all points.
double distanceToSee(std::vector<Point> const& points, Point const& focus, Look const& look,
                     double fieldOfView, double aspect) {
    double const tangent = std::tan(fieldOfView * PI / 360) * toolkit::FILLED_PART;
    double distance = 0;
    for (Point const& p : points) {
        Point const offset = p - focus;
        double const aside =
            std::max(std::abs(dot(offset, look.right)) / aspect, std::abs(dot(offset, look.up)));
        distance = std::max(distance, aside / tangent - dot(offset, look.direction));
    }
    return distance > 0 ? distance : 1 / tangent;
}

/// The middle of what a parallel projection sees of the points.
Point middleOf(std::vector<Point> const& points, Look const& look) {
    if (points.empty()) {
        return {0, 0, 0};
    }
    auto const middle = [&points](Point const& axis) {
        double low = std::numeric_limits<double>::max();
        double high = std::numeric_limits<double>::lowest();
        for (Point const& p : points) {
            low = std::min(low, dot(p, axis));
            high = std::max(high, dot(p, axis));
        }
        return axis * ((low + high) / 2);
    };
    return middle(look.right) + middle(look.up);
}

std::string words(Point const& p) {
    return exactNumber(p.x) + "," + exactNumber(p.y) + "," + exactNumber(p.z);
}

std::string zoomWords(double zoom) {
    return zoom != 1 ? " --zoom " + exactNumber(zoom) : "";
}

}  // namespace

Point directionByAngles(double azimuth, double elevation) {
    double const a = azimuth * PI / 180;
    double const e = elevation * PI / 180;
    return {std::sin(a) * std::cos(e), std::sin(e), std::cos(a) * std::cos(e)};
}

Box3<double> surroundingsOf(Scene const& scene) {
    double const around = SURROUNDINGS * Scene::RADIUS;
    return {{-around, scene.box().min.y, -around}, {around, scene.box().max.y, around}};
}

Result<CameraPlacement> CameraPlacement::of(CameraSpec const& spec, Scene const& scene,
                                            std::vector<Point> const& points, double aspect) {
    CameraPlacement placement{
        spec.projection, {},         {}, {}, spec.fieldOfView.value_or(CameraSpec::FIELD_OF_VIEW),
        spec.zoom,       spec.height};
    Point const middle = scene.box().min * 0.5 + scene.box().max * 0.5;
    std::optional<Point> eye;
    std::optional<Point> focus;
    if (spec.position) {
        eye = scene.placeToScene(*spec.position);
    }
    if (spec.focus || spec.position) {
        focus = spec.focus ? scene.placeToScene(*spec.focus) : middle;
    }
    Result<Look> const found = lookOf(spec, scene, eye ? *focus - *eye : lookingDirection(spec));
    if (!found.isOk()) {
        return found.fault();
    }
    Look const& look = found.value();
    // Framing as tightly as possible knows one vertical only.
    bool const isUpright = !spec.up && !isVertical(look.direction);
    if (!focus && !isUpright && spec.projection == Projection::PERSPECTIVE) {
        focus = middle;
    }
    if (spec.projection == Projection::PARALLEL) {
        focus = focus ? *focus : middleOf(points, look);
        eye = eye ? *eye : *focus - look.direction * PARALLEL_DISTANCE;
    } else if (!focus) {
        toolkit::PerspectiveFraming const framing = toolkit::framePerspective(
            points, surroundingsOf(scene), look.direction, placement.fieldOfView, aspect);
        eye = framing.eye;
        // The point of the middle that is as far away as the scene.
        double const depth = -dot(framing.eye, framing.direction);
        focus = framing.eye + framing.direction * (depth > 0 ? depth : 1.0);
    } else if (!eye) {
        eye = *focus - look.direction * distanceToSee(points, *focus, look, placement.fieldOfView, aspect);
    }
    placement.position = spec.position ? *spec.position : scene.placeToFile(*eye);
    placement.focus = spec.focus ? *spec.focus : scene.placeToFile(*focus);
    placement.up = spec.up ? *spec.up : scene.directionToFile(look.up);
    return placement;
}

std::string CameraPlacement::toOptions() const {
    bool const isPerspective = projection == Projection::PERSPECTIVE;
    return std::string("--projection ") + (isPerspective ? "perspective" : "parallel") +
           " --camera-position " + words(position) + " --camera-focus " + words(focus) + " --camera-up " +
           words(up) + (isPerspective ? " --fov " + exactNumber(fieldOfView) : "") +
           (!isPerspective && height ? " --camera-height " + exactNumber(*height) : "") + zoomWords(zoom);
}

std::string axisViewToOptions(CameraSpec const& spec) {
    static constexpr char const* NAMES[] = {"perspective", "front", "back", "top", "bottom", "left", "right"};
    return std::string("--view ") + NAMES[static_cast<unsigned int>(spec.view)] +
           (spec.focus ? " --camera-focus " + words(*spec.focus) : "") + zoomWords(spec.zoom);
}

}  // namespace vellum::viewport
