#pragma once

#include "foundation/geometry/Vector3.h"
#include "toolkit/View.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

/// How far from the middle of its pixel a click looks for something, pixels to each side.
constexpr double PICK_REACH = 2.5;

/// Where things are on the screen as seen from one of its points, in pixels. What is linear in a place comes
/// before the division by `w`, which only the few things need that are near.
///
///     ScreenPlace const screen(view, 2.5, 2.5);
///     ScreenPlace::Point const p = screen.of(place);
///     if (p.w > 0 && std::abs(p.x) < 3 * p.w) ...                 // less than three pixels to the side
///
/// Plain arithmetic.
class ScreenPlace {
public:
    /// A place, or the difference of two, in clip space: x and y times the pixels from the point, to the
    /// right and up.
    struct Point {
        double x;
        double y;
        double z;
        double w;

        double depth() const { return (z / w + 1) / 2; }  ///< as the depth buffer has it
        bool isBetweenPlanes() const { return w > 0 && z >= -w && z <= w; }

        Point operator+(Point const& o) const { return {x + o.x, y + o.y, z + o.z, w + o.w}; }
        Point operator-(Point const& o) const { return {x - o.x, y - o.y, z - o.z, w - o.w}; }
        Point operator*(double factor) const { return {x * factor, y * factor, z * factor, w * factor}; }
    };

    /// \param x, y pixels from the left and the top edge of the view's viewport
    ScreenPlace(toolkit::View const& view, double x, double y) {
        Matrix4<double> const clip = view.toClip();
        double const halfWidth = view.viewport.width / 2.0;
        double const halfHeight = view.viewport.height / 2.0;
        for (int column = 0; column < 4; ++column) {
            double const* const e = clip.e + 4 * column;
            rows[0][column] = halfWidth * e[0] - (x - halfWidth) * e[3];
            rows[1][column] = halfHeight * e[1] - (halfHeight - y) * e[3];
            rows[2][column] = e[2];
            rows[3][column] = e[3];
        }
    }

    Point of(Vector3<double> const& place) const {
        Point const p = along(place);
        return {p.x + rows[0][3], p.y + rows[1][3], p.z + rows[2][3], p.w + rows[3][3]};
    }

    /// Of a difference of two places.
    Point along(Vector3<double> const& v) const { return {_dot(0, v), _dot(1, v), _dot(2, v), _dot(3, v)}; }

    /// The most pixels that a unit can measure, times `w`.
    double pixels() const {
        auto const norm = [this](int row) { return std::hypot(rows[row][0], rows[row][1], rows[row][2]); };
        return std::max(norm(0), norm(1));
    }

    // Parts of of(), for those who look at millions of places.
    double x(Vector3<double> const& p) const { return _dot(0, p) + rows[0][3]; }
    double y(Vector3<double> const& p) const { return _dot(1, p) + rows[1][3]; }
    double w(Vector3<double> const& p) const { return _dot(3, p) + rows[3][3]; }

private:
    double _dot(int row, Vector3<double> const& v) const {
        return rows[row][0] * v.x + rows[row][1] * v.y + rows[row][2] * v.z;
    }

    double rows[4][4];
};

/// The part of a line from its first end, 0, to its second one, 1, that is between the near and the far
/// plane.
struct LinePart {
    double from = 0;
    double to = 1;

    bool isEmpty() const { return !(from <= to); }

    /// Keeps where a number, which changes evenly along the line, is not below 0.
    void keep(double first, double second) {
        if (first < 0 && second < 0) {
            to = -1;
        } else if (first < 0) {
            from = std::max(from, first / (first - second));
        } else if (second < 0) {
            to = std::min(to, first / (first - second));
        }
    }
};

/// The place on a line that is nearest to the point of the screen.
struct NearestOnLine {
    double part = 0;      ///< 0 at the first end, 1 at the second one
    double distance = 0;  ///< pixels
    double depth = 0;

    /// \param from, to ends in front of the eye
    static NearestOnLine of(ScreenPlace::Point const& from, ScreenPlace::Point const& to) {
        double const x = from.x / from.w;
        double const y = from.y / from.w;
        double const stepX = to.x / to.w - x;
        double const stepY = to.y / to.w - y;
        double const square = stepX * stepX + stepY * stepY;
        double const onScreen = square > 0 ? std::clamp(-(x * stepX + y * stepY) / square, 0.0, 1.0) : 0;
        // Even steps along the line are uneven ones on the screen, but depth is even there.
        double const part = onScreen * from.w / (to.w * (1 - onScreen) + from.w * onScreen);
        return {part, std::hypot(x + onScreen * stepX, y + onScreen * stepY),
                from.depth() + onScreen * (to.depth() - from.depth())};
    }
};

}  // namespace vellum::viewport
