#include "viewport/ViewFraming.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

constexpr double pi = 3.14159265358979323846;

/// The near plane is at least this part of the far one: 24 bits of depth still tell surfaces apart then.
constexpr double smallestNearPart = 1.0 / 2000;

std::array<Point, 8> cornersOf(Box3<double> const& box) {
    std::array<Point, 8> corners{};
    for (unsigned int i = 0; i < 8; ++i) {
        corners[i] = {(i & 1) != 0 ? box.max.x : box.min.x, (i & 2) != 0 ? box.max.y : box.min.y,
                      (i & 4) != 0 ? box.max.z : box.min.z};
    }
    return corners;
}

Point centreOf(Box3<double> const& box) {
    return box.min * 0.5 + box.max * 0.5;
}

/// The box itself, or one of size 1 around it where it has no size to be framed by.
Box3<double> framable(Box3<double> const& box) {
    if (length(box.max - box.min) > 0) {
        return box;
    }
    Point const half{0.5, 0.5, 0.5};
    return {box.min - half, box.max + half};
}

}  // namespace

ScreenAxes screenAxes(View const& view) {
    switch (view) {
    case View::back:
        return {{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}};
    case View::top:
        return {{1, 0, 0}, {0, 0, -1}, {0, 1, 0}};
    case View::bottom:
        return {{1, 0, 0}, {0, 0, 1}, {0, -1, 0}};
    case View::left:
        return {{0, 0, 1}, {0, 1, 0}, {-1, 0, 0}};
    case View::right:
        return {{0, 0, -1}, {0, 1, 0}, {1, 0, 0}};
    case View::front:
    case View::perspective:
        break;
    }
    return {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
}

PerspectiveFraming framePerspective(Box3<double> const& box, Box3<double> const& surroundings,
                                    Vector3<double> const& direction, double const& fieldOfView,
                                    double const& aspect) {
    PerspectiveFraming framing{};
    framing.direction = normalized(direction);
    bool const isVertical = std::abs(framing.direction.y) > 0.9999;
    Point const vertical = isVertical ? Point{0, 0, -1} : Point{0, 1, 0};
    Point const right = normalized(cross(framing.direction, vertical));
    framing.up = cross(right, framing.direction);

    // A corner at (x, y) beside the axis and z behind the centre is inside the frame when the eye is at least
    // |y| / tan(half the field of view) - z in front of the centre, and the same with x.
    Box3<double> const framed = framable(box);
    Point const centre = centreOf(framed);
    double const tangentY = std::tan(fieldOfView * pi / 360) * filledPart;
    double const tangentX = tangentY * aspect;
    double distance = 0;
    for (Point const& corner : cornersOf(framed)) {
        Point const offset = corner - centre;
        double const behind = dot(offset, framing.direction);
        distance = std::max({distance, std::abs(dot(offset, right)) / tangentX - behind,
                             std::abs(dot(offset, framing.up)) / tangentY - behind});
    }
    framing.eye = centre - framing.direction * distance;

    double nearest = std::numeric_limits<double>::max();
    double farthest = 0;
    for (Box3<double> const& seen : {framed, surroundings}) {
        for (Point const& corner : cornersOf(seen)) {
            double const depth = dot(corner - framing.eye, framing.direction);
            nearest = std::min(nearest, depth);
            farthest = std::max(farthest, depth);
        }
    }
    // A little slack keeps what lies on the box's faces from being cut by rounding.
    framing.farDistance = farthest * 1.01;
    framing.nearDistance = std::max(nearest * 0.99, framing.farDistance * smallestNearPart);
    return framing;
}

OrthographicFraming frameOrthographic(Box3<double> const& box, View const& view, double const& aspect) {
    ScreenAxes const axes = screenAxes(view);
    Box3<double> const framed = framable(box);
    Point const centre = centreOf(framed);
    double halfWidth = 0;
    double halfHeight = 0;
    for (Point const& corner : cornersOf(framed)) {
        halfWidth = std::max(halfWidth, std::abs(dot(corner - centre, axes.right)));
        halfHeight = std::max(halfHeight, std::abs(dot(corner - centre, axes.up)));
    }
    // The camera shows x from -(h + panX) to h - panX and y from -(h + panY) / aspect to (h - panY) / aspect, with
    // h = e^zoom: pan y is divided by the aspect, like the height.
    OrthographicFraming framing{};
    framing.panX = -dot(centre, axes.right);
    framing.panY = -dot(centre, axes.up) * aspect;
    framing.zoom = std::log(std::max(halfWidth, halfHeight * aspect) / filledPart);
    return framing;
}

}  // namespace vellum::viewport
