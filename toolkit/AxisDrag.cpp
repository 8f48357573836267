#include "toolkit/AxisDrag.h"

#include <cmath>

namespace vellum::toolkit {

namespace {

using Point = Vector3<double>;

// Sine of the angle below which a line is parallel to another, or a plane is seen edge on.
constexpr double PARALLEL = 1e-6;

bool isFinite(Point const& p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// Whether the axis is a point of the screen, seen where its origin is.
bool isSeenEndOn(View const& view, Ray const& axis) {
    ScreenPoint const origin = view.project(axis.origin);
    Ray const sight = view.rayThrough(origin.x, origin.y);
    return length(cross(axis.direction, sight.direction)) <= PARALLEL * length(axis.direction);
}

}  // namespace

double alongAxis(View const& view, Ray const& axis, double x, double y) {
    Ray const ray = view.rayThrough(x, y);
    Point const between = axis.origin - ray.origin;
    double const square = dot(axis.direction, axis.direction);
    double const cosine = dot(axis.direction, ray.direction);
    double const alongDirection = dot(axis.direction, between);
    double const alongRay = dot(ray.direction, between);
    // A cross product, as square - cosine * cosine loses the digits of small angles.
    Point const across = cross(axis.direction, ray.direction);
    double const sineSquare = dot(across, across);
    if (!(sineSquare > PARALLEL * PARALLEL * square) || isSeenEndOn(view, axis)) {
        return 0;
    }
    double const depth = (square * alongRay - cosine * alongDirection) / sineSquare;
    // The ray begins before the viewer: where the lines meet behind it, its first point is the nearest.
    double const place =
        depth >= 0 ? (cosine * alongRay - alongDirection) / sineSquare : -alongDirection / square;
    return std::isfinite(place) ? place : 0;
}

Vector3<double> onPlane(View const& view, Vector3<double> const& at, Vector3<double> const& normal, double x,
                        double y) {
    Ray const ray = view.rayThrough(x, y);
    double const slope = dot(ray.direction, normal);
    double const depth = dot(at - ray.origin, normal) / slope;
    if (!(std::abs(slope) > PARALLEL * length(normal)) || !(depth >= 0)) {
        return at;
    }
    Point const met = ray.origin + ray.direction * depth;
    return isFinite(met) ? met : at;
}

double turnAboutAxis(View const& view, Ray const& axis, double fromX, double fromY, double toX, double toY) {
    Point const from = onPlane(view, axis.origin, axis.direction, fromX, fromY) - axis.origin;
    Point const to = onPlane(view, axis.origin, axis.direction, toX, toY) - axis.origin;
    // The axis itself has no angle; a negative zero would make it half a turn.
    if (!(dot(from, from) > 0) || !(dot(to, to) > 0)) {
        return 0;
    }
    double const angle =
        std::atan2(dot(cross(from, to), axis.direction), dot(from, to) * length(axis.direction));
    return std::isfinite(angle) ? angle : 0;
}

}  // namespace vellum::toolkit
