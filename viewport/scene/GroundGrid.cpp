#include "viewport/scene/GroundGrid.h"

#include "viewport/scene/Placement.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

constexpr int MAJOR_STEP = 10;  // every so many lines one is stronger
constexpr float MINOR_ALPHA = 0.10F;
constexpr float MAJOR_ALPHA = 0.24F;
constexpr float AXIS_ALPHA = 0.80F;

/// The coordinate axis along which a direction lies.
unsigned int axisOf(Point const& direction) {
    if (std::abs(direction.x) > 0.5) {
        return 0;
    }
    return std::abs(direction.y) > 0.5 ? 1 : 2;
}

Color4<float> lineColor(std::int64_t index, Point const& along) {
    if (index == 0) {
        Color4<float> color = axisColor(axisOf(along));
        color.a = AXIS_ALPHA;
        return color;
    }
    return {1, 1, 1, index % MAJOR_STEP == 0 ? MAJOR_ALPHA : MINOR_ALPHA};
}

}  // namespace

Color4<float> axisColor(unsigned int axis) {
    constexpr Color4<float> COLORS[3] = {
        {0.93F, 0.27F, 0.29F, 1}, {0.45F, 0.80F, 0.27F, 1}, {0.27F, 0.54F, 0.97F, 1}};
    return COLORS[axis];
}

double GroundGrid::spacingFor(double modelSize, double unitsPerFileUnit) {
    return std::pow(10.0, std::floor(std::log10(modelSize / unitsPerFileUnit / 4))) * unitsPerFileUnit;
}

std::vector<ShadedSegment> GroundGrid::segments() const {
    std::vector<ShadedSegment> found;
    // A line is cut into pieces so that it can fade along its way.
    constexpr int PIECES = 24;
    auto const faded = [&](Color4<float> color, double distance) {
        double const nearness = std::clamp(1 - distance / radius, 0.0, 1.0);
        color.a *= fades ? static_cast<float>(nearness * nearness * (3 - 2 * nearness)) : 1.0F;
        return color;
    };
    auto const addLines = [&](Point const& along, Point const& across) {
        // Of the line with index 0. Where that is so far away that the indices lose their last digits, lines
        // anywhere will do, and none of them is an axis.
        double const trueOffset = dot(fileOrigin - center, across);
        bool const isTold = std::abs(trueOffset) < 1e12 * spacing;
        double const offset = isTold ? trueOffset : -(2.0 * MAJOR_STEP + 0.5) * spacing - radius;
        auto const first = static_cast<std::int64_t>(std::ceil((-radius - offset) / spacing));
        auto const last = static_cast<std::int64_t>(std::floor((radius - offset) / spacing));
        for (std::int64_t index = first; index <= last; ++index) {
            double const aside = offset + static_cast<double>(index) * spacing;
            double const half = fades ? std::sqrt(std::max(0.0, radius * radius - aside * aside)) : radius;
            Color4<float> const color = lineColor(index, Turn(up).back(along));
            for (int i = 0; i < PIECES; ++i) {
                double const a = half * (2.0 * i / PIECES - 1);
                double const b = half * (2.0 * (i + 1) / PIECES - 1);
                found.push_back({convert<float>(center + across * aside + along * a),
                                 convert<float>(center + across * aside + along * b),
                                 faded(color, std::hypot(aside, a)), faded(color, std::hypot(aside, b))});
            }
        }
    };
    addLines(u, v);
    addLines(v, u);
    return found;
}

}  // namespace vellum::viewport
