#include "viewport/drawing/view/FramedPoints.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

constexpr std::size_t POINTS_OF_BLOCK = 64;

}  // namespace

FramedPoints::FramedPoints(std::vector<Point> framed) : points(std::move(framed)) {
    blocks.reserve(points.size() / POINTS_OF_BLOCK + 1);
    for (std::size_t first = 0; first < points.size(); first += POINTS_OF_BLOCK) {
        std::size_t const end = std::min(first + POINTS_OF_BLOCK, points.size());
        Point low = points[first];
        Point high = low;
        for (std::size_t i = first; i < end; ++i) {
            Point const& p = points[i];
            low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
        }
        blocks.push_back({(low + high) * 0.5, (high - low) * 0.5});
    }
}

FramedPoints::Range FramedPoints::_boundsOf(Block const& block, Point const& from, Point const& direction) {
    // Far more than rounding can do in a dozen operations, and far less than what is seen.
    constexpr double SLACK = 1e-13;
    Point const& m = block.middle;
    double const across = std::abs(direction.x) * block.half.x + std::abs(direction.y) * block.half.y +
                          std::abs(direction.z) * block.half.z;
    double const magnitude = std::abs(direction.x) * (std::abs(m.x) + std::abs(from.x)) +
                             std::abs(direction.y) * (std::abs(m.y) + std::abs(from.y)) +
                             std::abs(direction.z) * (std::abs(m.z) + std::abs(from.z)) + across;
    double const middle = dot(m - from, direction);
    double const reach = across + SLACK * magnitude;
    return {middle - reach, middle + reach};
}

void FramedPoints::_extend(Range& range, std::size_t block, Point const& from, Point const& direction) const {
    std::size_t const first = block * POINTS_OF_BLOCK;
    std::size_t const end = std::min(first + POINTS_OF_BLOCK, points.size());
    for (std::size_t i = first; i < end; ++i) {
        double const reached = dot(points[i] - from, direction);
        range.least = std::min(range.least, reached);
        range.most = std::max(range.most, reached);
    }
}

FramedPoints::Range FramedPoints::along(Point const& from, Point const& direction) const {
    Range range{std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest()};
    if (blocks.empty()) {
        return range;
    }
    // With the outermost blocks first, hardly any other has something to add.
    std::size_t lowest = 0;
    std::size_t highest = 0;
    Range outermost = range;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        Range const bounds = _boundsOf(blocks[i], from, direction);
        if (bounds.least < outermost.least) {
            outermost.least = bounds.least;
            lowest = i;
        }
        if (bounds.most > outermost.most) {
            outermost.most = bounds.most;
            highest = i;
        }
    }
    _extend(range, lowest, from, direction);
    _extend(range, highest, from, direction);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        Range const bounds = _boundsOf(blocks[i], from, direction);
        if (bounds.least < range.least || bounds.most > range.most) {
            _extend(range, i, from, direction);
        }
    }
    return range;
}

}  // namespace vellum::viewport
