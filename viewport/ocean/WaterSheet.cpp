#include "viewport/ocean/WaterSheet.h"

#include "foundation/geometry/constants.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;

constexpr Point UP{0, 1, 0};

constexpr double USUAL_HALF_HEIGHT = 0.34;
constexpr unsigned int MOST_COLUMNS = 1000;
constexpr unsigned int MOST_ROWS = 1200;

// Slack at the sides of a trapezoid, and the widest one.
constexpr double WIDENING = 1.05;
constexpr double WIDEST = 3;
constexpr double LEAST_AHEAD = 0.1;

constexpr double LEAST_HEIGHT = 0.3;  // of the eye; cells would become too small

/// The plane as the viewer sees it: axes along the water.
struct Ground {
    Point foot;  // below the eye
    Point ahead;
    Point right;
    double height;  // of the eye
};

/// Directions of what is seen at the border of a perspective picture, and in its middle. Unit length.
std::vector<Point> borderRays(SeaView const& view) {
    constexpr int PARTS = 24;
    std::vector<Point> rays{view.forward};
    for (int i = 0; i <= PARTS; ++i) {
        double const part = 2.0 * i / PARTS - 1;
        for (double const end : {-1.0, 1.0}) {
            rays.push_back(normalized(view.forward + view.right * (part * view.halfWidth) +
                                      view.up * (end * view.halfHeight)));
            rays.push_back(normalized(view.forward + view.right * (end * view.halfWidth) +
                                      view.up * (part * view.halfHeight)));
        }
    }
    return rays;
}

bool seesStraightDown(SeaView const& view) {
    double const depth = -view.forward.y;
    return depth > 0 && std::abs(view.right.y) <= view.halfWidth * depth &&
           std::abs(view.up.y) <= view.halfHeight * depth;
}

/// How far a view reaches over the plane: where its farthest ray meets the lowest water.
double reachOf(std::vector<Point> const& rays, double height, WaterSheet::Range const& range) {
    double reach = 0;
    for (Point const& ray : rays) {
        double const level = std::hypot(ray.x, ray.z);
        double const deep = height + range.crest;
        reach =
            std::max(reach, -ray.y * range.horizon > deep * level ? deep * level / -ray.y : range.horizon);
    }
    return std::min(reach + range.sideways, range.horizon);
}

/// Values from one to another whose steps grow with their distance from the eye; not more than MOST_ROWS.
std::vector<double> rowsBetween(double from, double to, double height, double growth) {
    for (;; growth *= 1.5) {
        std::vector<double> rows;
        for (double at = from; at < to && rows.size() < MOST_ROWS; at += growth * std::hypot(height, at)) {
            rows.push_back(at);
        }
        if (rows.size() < MOST_ROWS) {
            rows.push_back(to);
            return rows;
        }
    }
}

/// A fan before the viewer, cut off straight; nothing where the view is too wide or too steep for it.
std::optional<WaterSheet> trapezoid(SeaView const& view, Ground const& ground, WaterSheet::Range const& range,
                                    double growth) {
    std::vector<Point> const rays = borderRays(view);
    double widening = 0;
    double start = std::numeric_limits<double>::max();
    for (Point const& ray : rays) {
        double const ahead = dot(ray, ground.ahead);
        if (ahead < LEAST_AHEAD) {
            return std::nullopt;
        }
        widening = std::max(widening, std::abs(dot(ray, ground.right)) / ahead);
        if (ray.y < 0) {
            start = std::min(start, std::max(ground.height - range.crest, 0.0) * ahead / -ray.y);
        }
    }
    if (widening > WIDEST) {
        return std::nullopt;
    }
    double const end = reachOf(rays, ground.height, range);
    // Waves move sideways, also from behind the first row.
    double const margin = 1.5 * range.sideways + 0.1 * range.crest;
    std::vector<double> const rows =
        rowsBetween(std::min(start * 0.97, 0.5 * end) - margin, end, ground.height, growth);
    WaterSheet sheet{WaterSheet::COLUMNS + 1, {}, 0, 0};
    sheet.points.reserve(rows.size() * sheet.columns);
    for (double const row : rows) {
        double const halfWidth = WIDENING * widening * std::max(row, 0.0) + margin;
        for (unsigned int column = 0; column <= WaterSheet::COLUMNS; ++column) {
            sheet.points.push_back(ground.foot + ground.ahead * row +
                                   ground.right * (halfWidth * (2.0 * column / WaterSheet::COLUMNS - 1)));
        }
    }
    return sheet;
}

/// All around the place below the viewer.
WaterSheet disc(SeaView const& view, Ground const& ground, WaterSheet::Range const& range, double growth) {
    double const reach = reachOf(borderRays(view), ground.height, range);
    double const angle = growth * std::hypot(ground.height, reach) / reach;
    unsigned int const columns = static_cast<unsigned int>(std::clamp(
        2 * PI / angle, static_cast<double>(WaterSheet::COLUMNS), static_cast<double>(MOST_COLUMNS)));
    WaterSheet sheet{columns + 1, {}, 0, 0};
    for (double const radius : rowsBetween(0, reach, ground.height, growth)) {
        for (unsigned int column = 0; column <= columns; ++column) {
            double const turn = 2 * PI * (column % columns) / columns;
            sheet.points.push_back(ground.foot +
                                   (ground.ahead * std::cos(turn) + ground.right * std::sin(turn)) * radius);
        }
    }
    return sheet;
}

/// What a parallel view sees of the plane. A view along the water sees it from its side: there the sheet
/// slopes down before its near end, so that nothing is seen below it. It does not hang straight down, as all
/// of its water would be that of one line then.
WaterSheet rectangle(SeaView const& view, Ground const& ground, WaterSheet::Range const& range) {
    constexpr unsigned int ROWS = 600;
    constexpr unsigned int SLOPE_ROWS = 200;
    constexpr double NEAR_PART = 0.35;  // of the depth, before the origin
    Point const upright = cross(ground.right, view.forward);
    // The picture may be rolled.
    double const halfWidth = std::abs(dot(view.right, ground.right)) * view.halfWidth +
                             std::abs(dot(view.up, ground.right)) * view.halfHeight;
    double const halfHeight = std::abs(dot(view.right, upright)) * view.halfWidth +
                              std::abs(dot(view.up, upright)) * view.halfHeight;
    double const sine = std::max(-view.forward.y, 1e-9);
    double const middle = dot(view.eye, upright);
    double const lift = range.crest * std::abs(upright.y);
    double const from = (middle - halfHeight - lift) / sine - range.sideways;
    double const to = (middle + halfHeight + lift) / sine + range.sideways;
    bool const isCut = from < -NEAR_PART * range.depth;
    double const first = isCut ? -NEAR_PART * range.depth : from;
    double const last = std::min(to, range.depth);
    double const side = dot(view.eye, ground.right);
    WaterSheet sheet{WaterSheet::COLUMNS + 1, {}, 0, 0};
    auto const addRow = [&](double row, double y) {
        for (unsigned int column = 0; column <= WaterSheet::COLUMNS; ++column) {
            double const along =
                side + (halfWidth * 1.02 + range.sideways) * (2.0 * column / WaterSheet::COLUMNS - 1);
            sheet.points.push_back(ground.ahead * row + ground.right * along + Point{0, y, 0});
        }
    };
    if (isCut) {
        double const deep = std::max(halfHeight + std::abs(middle) + range.crest, 0.0);
        double const slope = std::min(1.0, (1 - NEAR_PART) * range.depth / deep);
        for (unsigned int row = 0; row < SLOPE_ROWS; ++row) {
            double const down = deep * (SLOPE_ROWS - row) / SLOPE_ROWS;
            addRow(first - slope * down, -down);
        }
    }
    for (unsigned int row = 0; row <= ROWS; ++row) {
        addRow(first + (last - first) * row / ROWS, 0);
    }
    return sheet;
}

bool areEqual(Point const& a, Point const& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

}  // namespace

bool operator==(SeaView const& a, SeaView const& b) {
    return areEqual(a.eye, b.eye) && areEqual(a.forward, b.forward) && areEqual(a.right, b.right) &&
           areEqual(a.up, b.up) && a.isParallel == b.isParallel && a.halfWidth == b.halfWidth &&
           a.halfHeight == b.halfHeight && a.isAlongAxis == b.isAlongAxis;
}

Point aheadOf(SeaView const& view) {
    Point const level{view.forward.x, 0, view.forward.z};
    if (length(level) > 1e-6) {
        return normalized(level);
    }
    return normalized(Point{view.up.x, 0, view.up.z});
}

WaterSheet WaterSheet::of(SeaView const& view, Range const& range) {
    Point const ahead = aheadOf(view);
    Ground const ground{
        {view.eye.x, 0, view.eye.z}, ahead, cross(ahead, UP), std::max(view.eye.y, LEAST_HEIGHT)};
    WaterSheet sheet{0, {}, 0, 0};
    if (view.isParallel) {
        sheet = rectangle(view, ground, range);
    } else {
        double const growth = WaterSheet::GROWTH * std::clamp(view.halfHeight / USUAL_HALF_HEIGHT, 0.01, 1.0);
        std::optional<WaterSheet> fan =
            seesStraightDown(view) ? std::nullopt : trapezoid(view, ground, range, growth);
        sheet = fan ? std::move(*fan) : disc(view, ground, range, growth);
    }
    sheet.nearest = std::numeric_limits<double>::max();
    sheet.farthest = std::numeric_limits<double>::lowest();
    for (Point const& point : sheet.points) {
        double const depth = dot(point - view.eye, view.forward);
        sheet.nearest = std::min(sheet.nearest, depth);
        sheet.farthest = std::max(sheet.farthest, depth);
    }
    return sheet;
}

}  // namespace vellum::viewport
