#include "toolkit/Framing.h"

#include "foundation/geometry/constants.h"
#include "toolkit/internal/framing_rules.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vellum::toolkit {

namespace {

using constants::d::PI;

using Point = Vector3<double>;

/// The box itself, or one of size 1 around it where it has no size to be framed by.
Box3<double> framable(Box3<double> const& box) {
    if (length(box.max - box.min) > 0) {
        return box;
    }
    Point const half{0.5, 0.5, 0.5};
    return {box.min - half, box.max + half};
}

/// The points themselves, or a box of size 1 around them where they have no extent to be framed by.
std::vector<Point> framable(std::vector<Point> const& points) {
    Point const first = points.empty() ? Point{0, 0, 0} : points.front();
    bool const hasExtent =
        std::any_of(points.begin(), points.end(), [&first](Point const& p) { return length(p - first) > 0; });
    return hasExtent ? points : cornersOf(framable(Box3<double>{first, first}));
}

/// Where an eye that sees the points between two planes of the frame stands: how deep along the direction of
/// view, and how far along the direction from one plane to the other.
struct Reach {
    double depth;
    double aside;
};

/// The frame's planes open from the eye e with the tangent t on both sides of the direction d. A point p is
/// between them when (p - e) s <= t (p - e) d and -(p - e) s <= t (p - e) d, with s the direction aside. So,
/// with
///
///     a = max p (s - t d)        b = max p (-s - t d)
///
/// over all points, e (s - t d) >= a and e (-s - t d) >= b; the nearest eye is where both are equalities.
Reach reachOf(std::vector<Point> const& points, Point const& direction, Point const& aside, double tangent) {
    double a = std::numeric_limits<double>::lowest();
    double b = a;
    for (Point const& p : points) {
        a = std::max(a, dot(p, aside - direction * tangent));
        b = std::max(b, dot(p, -aside - direction * tangent));
    }
    return {-(a + b) / (2 * tangent), (a - b) / 2};
}

}  // namespace

std::vector<Vector3<double>> cornersOf(Box3<double> const& box) {
    std::vector<Point> corners;
    for (unsigned int i = 0; i < 8; ++i) {
        corners.push_back({(i & 1) != 0 ? box.max.x : box.min.x, (i & 2) != 0 ? box.max.y : box.min.y,
                           (i & 4) != 0 ? box.max.z : box.min.z});
    }
    return corners;
}

PerspectiveFraming framePerspective(std::vector<Vector3<double>> const& points,
                                    Box3<double> const& surroundings, Vector3<double> const& direction,
                                    double fieldOfView, double aspect) {
    PerspectiveFraming framing{};
    framing.direction = normalized(direction);
    bool const isVertical = std::abs(framing.direction.y) > 0.9999;
    Point const vertical = isVertical ? Point{0, 0, -1} : Point{0, 1, 0};
    Point const right = normalized(cross(framing.direction, vertical));
    framing.up = cross(right, framing.direction);

    std::vector<Point> const framed = framable(points);
    double const tangentY = std::tan(fieldOfView * PI / 360) * FILLED_PART;
    Reach const sideways = reachOf(framed, framing.direction, right, tangentY * aspect);
    Reach const upright = reachOf(framed, framing.direction, framing.up, tangentY);
    framing.eye = framing.direction * std::min(sideways.depth, upright.depth) + right * sideways.aside +
                  framing.up * upright.aside;

    double nearest = std::numeric_limits<double>::max();
    double farthest = 0;
    for (std::vector<Point> const& seen : {framed, cornersOf(surroundings)}) {
        for (Point const& point : seen) {
            double const depth = dot(point - framing.eye, framing.direction);
            nearest = std::min(nearest, depth);
            farthest = std::max(farthest, depth);
        }
    }
    // A little slack keeps the first and the last point from being cut by rounding.
    framing.farDistance = farthest * 1.01;
    framing.nearDistance = std::max(nearest * 0.99, framing.farDistance * SMALLEST_NEAR_PART);
    return framing;
}

OrthographicFraming frameOrthographic(Box3<double> const& box, ViewKind kind, double aspect) {
    ScreenAxes const axes = screenAxes(kind);
    Box3<double> const framed = framable(box);
    Point const center = centerOf(framed);
    double halfWidth = 0;
    double halfHeight = 0;
    for (Point const& corner : cornersOf(framed)) {
        halfWidth = std::max(halfWidth, std::abs(dot(corner - center, axes.right)));
        halfHeight = std::max(halfHeight, std::abs(dot(corner - center, axes.up)));
    }
    // The camera shows x from -(h + panX) to h - panX and y from -(h + panY) / aspect to (h - panY) / aspect,
    // with h = e^zoom: pan y is divided by the aspect, like the height.
    OrthographicFraming framing{};
    framing.panX = -dot(center, axes.right);
    framing.panY = -dot(center, axes.up) * aspect;
    framing.zoom = std::log(std::max(halfWidth, halfHeight * aspect) / FILLED_PART);
    return framing;
}

}  // namespace vellum::toolkit
