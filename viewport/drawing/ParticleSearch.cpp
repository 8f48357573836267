#include "viewport/drawing/ParticleSearch.h"

#include "toolkit/EvenChoice.h"
#include "viewport/drawing/ScreenPlace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;
using OnScreen = ScreenPlace::Point;

/// Depths that the graphics card cannot tell apart: it computes in single precision, and keeps 24 bits.
constexpr double SAME_DEPTH = 1e-6;

/// Shapes cover a pixel by the rules of OpenGL, which round: as many pixels more are looked at.
constexpr double MORE_PIXELS = 0.75;

/// Where a shape covers the point.
struct Cover {
    double depth;
    double distance;  // of the shape's middle from the point, pixels
};

// == The particles that are drawn ==

struct All {
    bool takesNext() { return true; }
};

/// The choice of the library, which draws a system as it is: the next one is taken if those taken so far are
/// no larger part than the percentage.
class EvenParts {
public:
    EvenParts(unsigned int count, float percent)
        : percent(percent), missing(toolkit::drawnOf(count, percent)) {}

    bool takesNext() {
        bool const takes = missing != 0 && (visited == 0 || taken / visited * 100.0F <= percent);
        // Counts beyond 2^24 are rounded as those of the library are.
        visited = static_cast<float>(++visitedCount);
        if (takes) {
            --missing;
            taken = static_cast<float>(++takenCount);
        }
        return takes;
    }

private:
    float percent;
    unsigned int missing;
    unsigned int visitedCount = 0;
    unsigned int takenCount = 0;
    float visited = 0;
    float taken = 0;
};

/// Whether the library draws the system as it is. Where it draws chunk by chunk, for want of memory, it
/// chooses others; depths tell then.
bool isDrawnDirectly(toolkit::ParticleLook const& look) {
    constexpr unsigned int NONE = ParticleChannel_v2::NONE;
    return look.colorChannel == NONE && look.sizeChannel == NONE &&
           (look.channel == NONE || (look.colors.colors.size() == 2 && look.low <= 0));
}

// == Shapes ==

class Points {
public:
    Points(ParticleSystemChunk_v2 const& /*chunk*/, DrawnCloud const& drawn, ScreenPlace const& screen)
        : screen(screen), reach(_size(drawn) / 2 + MORE_PIXELS) {}

    std::optional<Cover> at(unsigned int /*slot*/, Point const& p) const {
        double const most = reach * screen.w(p);
        if (!(std::abs(screen.x(p)) <= most) || !(std::abs(screen.y(p)) <= most)) {
            return std::nullopt;
        }
        OnScreen const middle = screen.of(p);
        return middle.isBetweenPlanes()
                   ? std::optional<Cover>({middle.depth(), std::hypot(middle.x, middle.y) / middle.w})
                   : std::nullopt;
    }

private:
    static double _size(DrawnCloud const& drawn) {
        constexpr double IN_PLACE_OF_ARROWS = 2;
        return drawn.look.mode == toolkit::ParticleMode::POINTS ? static_cast<double>(drawn.look.size)
                                                                : IN_PLACE_OF_ARROWS;
    }

    ScreenPlace const& screen;
    double reach;
};

/// As the effect draws them: discs in the middle's depth, whose pixels come nearer by the height of the ball
/// above them.
class Spheres {
public:
    Spheres(ParticleSystemChunk_v2 const& chunk, DrawnCloud const& drawn, ScreenPlace const& screen,
            toolkit::ScreenAxes const& axes)
        : screen(screen)
        , sizes(drawn.look.sizeChannel != ParticleChannel_v2::NONE
                    ? chunk.channelData(drawn.look.sizeChannel)->asFloats()
                    : nullptr)
        , radius(static_cast<double>(drawn.look.size) / 2)
        , pixels(screen.along(axes.right).x)
        , toward(screen.along(axes.towardViewer))
        , arePoints(drawn.mode == toolkit::ParticleMode::POINTS) {}

    std::optional<Cover> at(unsigned int slot, Point const& p) const {
        double const r = sizes != nullptr ? radius * static_cast<double>(sizes[slot]) : radius;
        double const side = r * pixels;
        double const w = screen.w(p);
        double const reach = side + MORE_PIXELS * w;
        double const x = screen.x(p);
        if (!(std::abs(x) <= reach)) {
            return std::nullopt;
        }
        double const y = screen.y(p);
        if (!(x * x + y * y <= reach * reach)) {
            return std::nullopt;
        }
        OnScreen const middle = screen.of(p);
        if (!middle.isBetweenPlanes()) {
            return std::nullopt;
        }
        double const distance = std::hypot(x, y) / w;
        double const square = side > 0 ? 1 - (x * x + y * y) / (side * side) : 0;
        double const height = arePoints ? 0 : r * std::sqrt(std::max(0.0, square));
        return Cover{(middle + toward * height).depth(), distance};
    }

private:
    ScreenPlace const& screen;
    float const* sizes;  // null: all have one
    double radius;
    double pixels;  // of a unit, times w
    OnScreen toward;
    bool arePoints;
};

/// As the effect draws them: flat, in the depth of their tails.
class LineArrows {
public:
    LineArrows(ParticleSystemChunk_v2 const& chunk, DrawnCloud const& drawn, ScreenPlace const& screen)
        : screen(screen)
        , vectors(chunk.channelData(drawn.look.channel)->asVectors())
        , size(static_cast<double>(drawn.look.size))
        , pixels(size * screen.pixels())
        , width(drawn.lineWidth / 2 + MORE_PIXELS) {}

    std::optional<Cover> at(unsigned int slot, Point const& p) const {
        // Nothing of it is farther from the tail than its tip, and that no farther than the sum of its parts.
        Point const v = convert<double>(vectors[slot]);
        double const reach = (std::abs(v.x) + std::abs(v.y) + std::abs(v.z)) * pixels + width * screen.w(p);
        if (!(std::abs(screen.x(p)) <= reach && std::abs(screen.y(p)) <= reach)) {
            return std::nullopt;
        }
        OnScreen const tail = screen.of(p);
        OnScreen const along = screen.along(v * size);
        if (!tail.isBetweenPlanes()) {
            return std::nullopt;
        }
        double const x = along.x / tail.w;
        double const y = along.y / tail.w;
        double const c = std::cos(0.8) / 3;
        double const s = std::sin(0.8) / 3;
        std::array<std::array<double, 2>, 6> const strip{{{0, 0},
                                                          {x / 2, y / 2},
                                                          {c * x - s * y, s * x + c * y},
                                                          {x, y},
                                                          {c * x + s * y, c * y - s * x},
                                                          {x / 2, y / 2}}};
        OnScreen const start{tail.x / tail.w, tail.y / tail.w, 0, 1};
        double nearest = std::numeric_limits<double>::infinity();
        for (std::size_t k = 0; k + 1 < strip.size(); ++k) {
            OnScreen const from = start + OnScreen{strip[k][0], strip[k][1], 0, 0};
            OnScreen const to = start + OnScreen{strip[k + 1][0], strip[k + 1][1], 0, 0};
            nearest = std::min(nearest, NearestOnLine::of(from, to).distance);
        }
        return nearest <= width ? std::optional<Cover>({tail.depth(), nearest}) : std::nullopt;
    }

private:
    ScreenPlace const& screen;
    Vector3<float> const* vectors;
    double size;
    double pixels;  // of a vector of length 1, times w
    double width;
};

/// A line with a pyramid at its end.
class SolidArrows {
public:
    SolidArrows(ParticleSystemChunk_v2 const& chunk, DrawnCloud const& drawn, ScreenPlace const& screen)
        : screen(screen)
        , vectors(chunk.channelData(drawn.look.channel)->asVectors())
        , size(static_cast<double>(drawn.look.size))
        , width(drawn.lineWidth / 2 + MORE_PIXELS) {}

    std::optional<Cover> at(unsigned int slot, Point const& p) const {
        Point const along = convert<double>(vectors[slot]) * size;
        OnScreen const tail = screen.of(p);
        OnScreen const step = screen.along(along);
        OnScreen const tip = tail + step;
        // Nothing of it is farther from the tail, but for its head's width.
        double const reach = 1.1 * length(along) * screen.pixels() + width * std::max(tail.w, tip.w);
        if (!(std::abs(tail.x) <= reach && std::abs(tail.y) <= reach && tail.w > 0 && tip.w > 0)) {
            return std::nullopt;
        }
        std::optional<Cover> found;
        NearestOnLine const shaft = NearestOnLine::of(tail, tip);
        if (shaft.distance <= width) {
            found = Cover{shaft.depth, shaft.distance};
        }
        _coverByHead(p, along, found);
        return found;
    }

private:
    void _coverByHead(Point const& tail, Point const& along, std::optional<Cover>& found) const {
        constexpr double HEAD = 0.333;  // of the length
        constexpr double HALF_WIDTH = 0.2 * HEAD;
        double const sideways = std::hypot(along.x, along.z);
        Point const across =
            sideways > 0 ? Point{-along.z / sideways, 0, along.x / sideways} : Point{1, 0, 0};
        Point const upright = cross(across, along);
        double const reach = HALF_WIDTH * length(along);
        Point const a = across * reach;
        Point const b = upright * (length(upright) > 0 ? reach / length(upright) : 0);
        Point const base = tail + along * (1 - HEAD);
        OnScreen const tip = screen.of(tail + along);
        std::array<OnScreen, 4> const corners{screen.of(base - a - b), screen.of(base - a + b),
                                              screen.of(base + a + b), screen.of(base + a - b)};
        for (std::size_t k = 0; k < 4; ++k) {
            _coverByTriangle(tip, corners[k], corners[(k + 1) % 4], found);
            _coverByTriangle(corners[0], corners[k], corners[(k + 1) % 4], found);
        }
    }

    static void _coverByTriangle(OnScreen const& a, OnScreen const& b, OnScreen const& c,
                                 std::optional<Cover>& found) {
        if (!(a.w > 0 && b.w > 0 && c.w > 0)) {
            return;
        }
        auto const area = [](OnScreen const& p, OnScreen const& q) {
            return (p.x / p.w) * (q.y / q.w) - (p.y / p.w) * (q.x / q.w);
        };
        double const parts[3] = {area(b, c), area(c, a), area(a, b)};
        double const sum = parts[0] + parts[1] + parts[2];
        bool const isInside = (parts[0] >= 0 && parts[1] >= 0 && parts[2] >= 0) ||
                              (parts[0] <= 0 && parts[1] <= 0 && parts[2] <= 0);
        if (!isInside || sum == 0) {
            return;
        }
        double const depth = (parts[0] * a.depth() + parts[1] * b.depth() + parts[2] * c.depth()) / sum;
        if (!found || depth < found->depth) {
            found = Cover{depth, 0};
        }
    }

    ScreenPlace const& screen;
    Vector3<float> const* vectors;
    double size;
    double width;
};

// == The search ==

/// The best one so far. Of equal ones the first stays, as in a depth buffer.
class Best {
public:
    Best(double depth, bool isFlat) : depth(depth), isFlat(isFlat) {}

    void consider(std::size_t record, Cover const& cover) {
        double const error = std::abs(cover.depth - depth);
        double const rank = isFlat && error <= SAME_DEPTH ? 0 : error;
        if (!found || rank < leastRank || (rank == leastRank && cover.distance < leastDistance)) {
            found = record;
            leastRank = rank;
            leastDistance = cover.distance;
        }
    }

    std::optional<std::size_t> record() const { return found; }

private:
    double depth;
    bool isFlat;  // what is drawn of a particle has one depth, as that of others may be
    std::optional<std::size_t> found;
    double leastRank = 0;
    double leastDistance = 0;
};

/// \param shapeOf (chunk) what its particles look like
template <class Choice, class ShapeOf>
void search(ParticleSystem_v2 const& system, Choice choice, ShapeOf const& shapeOf, Best& best) {
    std::size_t first = 0;
    for (ParticleSystemChunk_v2 const* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        Vector3<float> const* const positions = chunk->channelData(ParticleCloud::POSITIONS)->asVectors();
        auto const shape = shapeOf(*chunk);
        unsigned int const count = chunk->count();
        for (unsigned int slot = 0; slot < count; ++slot) {
            if (!choice.takesNext()) {
                continue;
            }
            if (std::optional<Cover> const cover = shape.at(slot, convert<double>(positions[slot]))) {
                best.consider(first + slot, *cover);
            }
        }
        first += count;
    }
}

template <class ShapeOf>
std::optional<std::size_t> search(ParticleCloud const& cloud, DrawnCloud const& drawn, double depth,
                                  ShapeOf const& shapeOf) {
    using toolkit::ParticleMode;
    ParticleSystem_v2 const& system = *cloud.system;
    bool const isFlat = drawn.mode == ParticleMode::POINTS || drawn.mode == ParticleMode::ARROWS;
    Best best(depth, isFlat);
    unsigned int wanted = toolkit::drawnOf(system.size(), drawn.look.percent);
    if (drawn.mode == ParticleMode::SOLID_ARROWS) {
        wanted = std::min(wanted, toolkit::MOST_SOLID_ARROWS);
    }
    if (wanted == system.size()) {
        search(system, All(), shapeOf, best);
    } else if (drawn.mode != ParticleMode::SOLID_ARROWS && isDrawnDirectly(drawn.look)) {
        search(system, EvenParts(system.size(), drawn.look.percent), shapeOf, best);
    } else {
        search(system, toolkit::EvenChoice(system.size(), wanted), shapeOf, best);
    }
    return best.record();
}

}  // namespace

std::optional<std::size_t> findParticle(ParticleCloud const& cloud, DrawnCloud const& drawn,
                                        toolkit::View const& view, double x, double y, double depth) {
    using toolkit::ParticleMode;
    ScreenPlace const screen(view, x, y);
    // Spheres that are drawn as points have the size of spheres.
    if (drawn.look.mode == ParticleMode::SPHERES) {
        return search(cloud, drawn, depth, [&, axes = view.axes()](ParticleSystemChunk_v2 const& chunk) {
            return Spheres(chunk, drawn, screen, axes);
        });
    }
    switch (drawn.mode) {
    case ParticleMode::ARROWS:
        return search(cloud, drawn, depth,
                      [&](ParticleSystemChunk_v2 const& chunk) { return LineArrows(chunk, drawn, screen); });
    case ParticleMode::SOLID_ARROWS:
        return search(cloud, drawn, depth,
                      [&](ParticleSystemChunk_v2 const& chunk) { return SolidArrows(chunk, drawn, screen); });
    case ParticleMode::SPHERES:
    case ParticleMode::POINTS:
        break;
    }
    return search(cloud, drawn, depth,
                  [&](ParticleSystemChunk_v2 const& chunk) { return Points(chunk, drawn, screen); });
}

}  // namespace vellum::viewport
