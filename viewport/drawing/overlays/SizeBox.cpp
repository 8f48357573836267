#include "viewport/drawing/overlays/SizeBox.h"

#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/overlays/TextMask.h"
#include "viewport/drawing/overlays/key_sizes.h"
#include "viewport/drawing/overlays/painting.h"
#include "viewport/text/shortest_number.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

constexpr float OPACITY = 0.75F;
// Edges that are lower on the screen are preferred to those that are as far out.
constexpr double LOWER = 0.3;
// Between an edge and its number, lines of text.
constexpr double GAP = 0.35;

constexpr int AXES = 3;
constexpr int EDGES_PER_AXIS = 4;

struct Edge {
    Point from;
    Point to;
};

/// An edge of a box along an axis.
/// \param which of them, 0 to 3
Edge edgeOf(Box3<double> const& box, int axis, int which) {
    std::array<double, AXES> const low{box.min.x, box.min.y, box.min.z};
    std::array<double, AXES> const high{box.max.x, box.max.y, box.max.z};
    std::array<double, AXES> from{};
    auto const along = static_cast<std::size_t>(axis);
    std::size_t const second = (along + 1) % AXES;
    std::size_t const third = (along + 2) % AXES;
    from[along] = low[along];
    from[second] = which % 2 == 0 ? low[second] : high[second];
    from[third] = which / 2 == 0 ? low[third] : high[third];
    std::array<double, AXES> to = from;
    to[along] = high[along];
    return {{from[0], from[1], from[2]}, {to[0], to[1], to[2]}};
}

/// An edge on the screen, and which way leads away from the box.
struct SeenEdge {
    double x;  // its middle
    double y;
    double outX;  // of unit length, at a right angle to the edge
    double outY;
    double length;
    double rank;  // the larger, the better a number stands beside it
};

SeenEdge seenEdge(toolkit::ScreenPoint const& from, toolkit::ScreenPoint const& to,
                  toolkit::ScreenPoint const& center) {
    SeenEdge seen{(from.x + to.x) / 2, (from.y + to.y) / 2, 0, 0, 0, 0};
    double const alongX = to.x - from.x;
    double const alongY = to.y - from.y;
    seen.length = std::hypot(alongX, alongY);
    double const awayX = seen.x - center.x;
    double const awayY = seen.y - center.y;
    double const side = seen.length > 0 ? (alongX * awayY - alongY * awayX) / seen.length : 0;
    double const sign = side < 0 ? -1 : 1;
    if (seen.length > 0) {
        seen.outX = -sign * alongY / seen.length;
        seen.outY = sign * alongX / seen.length;
    }
    seen.rank = std::abs(side) + LOWER * awayY;
    return seen;
}

}  // namespace

void SizeBox::drawLines(Core_RL& layer, Sampling const& sampling, Color4<float> const& ink) const {
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushLineWidth(sampling.lineWidth(1.0));
    layer.pushColor({ink.r, ink.g, ink.b, OPACITY});
    layer.begin(Primitive::LINES);
    auto const toFloat = [](Point const& p) {
        return Vector3<float>{static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)};
    };
    for (int i = 0; i < AXES * EDGES_PER_AXIS; ++i) {
        Edge const edge = edgeOf(box, i / EDGES_PER_AXIS, i % EDGES_PER_AXIS);
        layer.renderPoint3_scoped(toFloat(edge.from));
        layer.renderPoint3_scoped(toFloat(edge.to));
    }
    layer.end();
    layer.popColor(1);
    layer.popLineWidth();
    layer.popBlending();
    layer.popDepthTest();
}

std::vector<SizeBox::Label> SizeBox::labels(toolkit::View const& view, int textHeight,
                                            std::function<int(std::string const&)> const& widthOf) const {
    std::vector<Label> labels;
    std::array<double, AXES> const all{lengths.x, lengths.y, lengths.z};
    toolkit::ScreenPoint const center = view.project((box.min + box.max) * 0.5);
    for (int axis = 0; axis < AXES; ++axis) {
        double const length = all[static_cast<std::size_t>(axis)];
        std::optional<SeenEdge> best;
        for (int which = 0; which < EDGES_PER_AXIS; ++which) {
            Edge const edge = edgeOf(box, axis, which);
            toolkit::ScreenPoint const from = view.project(edge.from);
            toolkit::ScreenPoint const to = view.project(edge.to);
            if (!from.isInFront || !to.isInFront) {
                continue;
            }
            SeenEdge const seen = seenEdge(from, to, center);
            if (!best || seen.rank > best->rank) {
                best = seen;
            }
        }
        if (!best || !(length > 0) || best->length < 2.0 * textHeight) {
            continue;
        }
        std::string const text = shortNumber(length);
        double const reach =
            std::abs(best->outX) * widthOf(text) / 2 + (std::abs(best->outY) / 2 + GAP) * textHeight;
        labels.push_back({text, best->x + best->outX * reach, best->y + best->outY * reach});
    }
    return labels;
}

void SizeBox::drawLabels(Picture& picture, toolkit::View const& view, Color4<float> const& ink) const {
    TextWriter const writer;
    int const height = KeySizes({picture.width, picture.height}).text;
    auto const widthOf = [&](std::string const& text) { return writer.write(text, height).width; };
    for (Label const& label : labels(view, height, widthOf)) {
        TextMask const mask = writer.write(label.text, height);
        auto const inside = [](double middle, int extent, int room) {
            double const most = std::max(0, room - extent);
            return static_cast<int>(std::lround(std::clamp(middle - extent / 2.0, 0.0, most)));
        };
        drawText(picture, ink, mask, inside(label.x, mask.width, picture.width),
                 inside(label.y, mask.height, picture.height));
    }
}

}  // namespace vellum::viewport
