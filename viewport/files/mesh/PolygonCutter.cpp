#include "viewport/files/mesh/PolygonCutter.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace vellum::viewport {

namespace {

using Triangle = MeshData::Triangle;

Vector2<double> difference(Vector2<double> const& a, Vector2<double> const& b) {
    return {a.x - b.x, a.y - b.y};
}

/// Twice the area, above 0 where the corners are counter-clockwise.
double area(Vector2<double> const& a, Vector2<double> const& b, Vector2<double> const& c) {
    Vector2<double> const ab = difference(b, a);
    Vector2<double> const ac = difference(c, a);
    return ab.x * ac.y - ab.y * ac.x;
}

bool isSame(Vector2<double> const& a, Vector2<double> const& b) {
    return a.x == b.x && a.y == b.y;
}

bool isInside(Vector2<double> const& p, Vector2<double> const& a, Vector2<double> const& b,
              Vector2<double> const& c) {
    return area(a, b, p) >= 0 && area(b, c, p) >= 0 && area(c, a, p) >= 0;
}

void cutQuad(std::vector<Vector3<double>> const& positions, Triangle* const& triangles) {
    unsigned int const v[4] = {triangles[0].e0, triangles[0].e1, triangles[0].e2, triangles[1].e2};
    Vector3<double> const ab = positions[v[1]] - positions[v[0]];
    Vector3<double> const ac = positions[v[2]] - positions[v[0]];
    Vector3<double> const ad = positions[v[3]] - positions[v[0]];
    Vector3<double> const bd = ad - ab;
    // The mean normal of a quad is the product of its diagonals.
    Vector3<double> const normal = cross(ac, bd);
    auto const isFront = [&](Vector3<double> const& p, Vector3<double> const& q) {
        return dot(cross(p, q), normal) > 0;
    };
    bool const isFirstInside = isFront(ab, ac) && isFront(ac, ad);
    bool const isSecondInside = isFront(ab, ad) && isFront(ac - ab, bd);
    // Diagonals of nearly the same length, as rectangles have them, do not change places by rounding.
    constexpr double CLEARLY_SHORTER = 0.9999;
    bool const isSecondShorter = dot(bd, bd) < CLEARLY_SHORTER * dot(ac, ac);
    if (isSecondInside && (isSecondShorter || !isFirstInside)) {
        triangles[0] = {v[0], v[1], v[3]};
        triangles[1] = {v[1], v[2], v[3]};
    }
}

}  // namespace

void PolygonCutter::addFan(unsigned int const* const& corners, std::size_t count,
                           std::vector<Triangle>& triangles) {
    if (count > 3) {
        fans.push_back({static_cast<std::uint32_t>(triangles.size()), static_cast<std::uint32_t>(count - 2)});
    }
    for (std::size_t i = 2; i < count; ++i) {
        triangles.push_back({corners[0], corners[i - 1], corners[i]});
    }
}

void PolygonCutter::cutFans(MeshData& mesh) {
    // All polygons share them: a file of many that wind about themselves takes no longer than a large one.
    constexpr std::uint64_t STEPS_PER_CORNER = 512;
    constexpr std::uint64_t LEAST_STEPS = 20'000'000;
    stepsLeft = LEAST_STEPS;
    for (Fan const& fan : fans) {
        stepsLeft += fan.count > 2 ? STEPS_PER_CORNER * fan.count : 0;
    }
    std::size_t roughCount = 0;
    for (Fan const& fan : fans) {
        Triangle* const first = mesh.triangles.data() + fan.first;
        if (fan.count == 2) {
            cutQuad(mesh.positions, first);
        } else if (!_cut(fan, mesh.positions, first)) {
            ++roughCount;
        }
    }
    if (roughCount > 0) {
        mesh.notes.push_back(std::to_string(roughCount) +
                             " polygons are too intricate to be cut into triangles with care");
    }
}

bool PolygonCutter::_cut(Fan const& fan, std::vector<Vector3<double>> const& positions,
                         Triangle* const& triangles) {
    vertices.assign({triangles[0].e0, triangles[0].e1});
    for (std::uint32_t i = 0; i < fan.count; ++i) {
        vertices.push_back(triangles[i].e2);
    }
    _project(positions);
    return _isConvex() || _clip(triangles);
}

void PolygonCutter::_project(std::vector<Vector3<double>> const& positions) {
    // Relative to a corner, since products of large coordinates lose what sets the corners apart.
    Vector3<double> const origin = positions[vertices[0]];
    Vector3<double> normal{0, 0, 0};
    for (std::size_t i = 2; i < vertices.size(); ++i) {
        normal = normal + cross(positions[vertices[i - 1]] - origin, positions[vertices[i]] - origin);
    }
    // Along the axis that the normal is nearest to: exact, and no corner changes its side by it.
    Vector3<double> const size{std::abs(normal.x), std::abs(normal.y), std::abs(normal.z)};
    int const axis = size.x > size.y && size.x > size.z ? 0 : size.y > size.z ? 1 : 2;
    bool const isBack = (axis == 0 ? normal.x : axis == 1 ? normal.y : normal.z) < 0;
    auto const count = static_cast<std::uint32_t>(vertices.size());
    corners.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        Vector3<double> const p = positions[vertices[i]] - origin;
        Vector2<double> place = axis == 0   ? Vector2<double>{p.y, p.z}
                                : axis == 1 ? Vector2<double>{p.z, p.x}
                                            : Vector2<double>{p.x, p.y};
        if (isBack) {
            place.x = -place.x;
        }
        corners[i] = {place, i == 0 ? count - 1 : i - 1, i + 1 == count ? 0 : i + 1, 0, false, false};
    }
}

bool PolygonCutter::_isConvex() const {
    // A star turns to the same side at every corner, too, but goes to and fro more than once.
    unsigned int turns = 0;
    for (Corner const& corner : corners) {
        Corner const& previous = corners[corner.previous];
        Corner const& next = corners[corner.next];
        if (area(previous.place, corner.place, next.place) <= 0) {
            return false;
        }
        bool const wasForward = isSame(previous.place, corner.place) || previous.place.x < corner.place.x;
        bool const isForward = corner.place.x < next.place.x;
        turns += wasForward != isForward ? 1 : 0;
    }
    return turns <= 2;
}

bool PolygonCutter::_clip(Triangle* const& triangles) {
    auto const count = static_cast<std::uint32_t>(corners.size());
    _gatherReflexCorners();
    someLeft = 0;
    out = triangles;
    left = count;

    // Cutting a corner off may make ears of its neighbors. They wait for the next round, since cutting them
    // at once would give fans, whose triangles are long and thin. Ears elsewhere are found in a round of all.
    _waitForAll();
    bool isRoundOfAll = true;
    for (round = 1; left > 3; ++round) {
        candidates.swap(waiting);
        waiting.clear();
        std::uint32_t const before = left;
        if (!_spend(candidates.size())) {
            break;
        }
        for (std::uint32_t const corner : candidates) {
            bool const isOpen = !corners[corner].isGone && corners[corner].touched != round;
            if (isOpen && left > 3 && _isFront(corner) && _isEar(corner)) {
                _cutOff(corner);
            }
        }
        if (stepsLeft == 0) {
            break;
        }
        bool const isStuck = left == before;
        if (isStuck && isRoundOfAll) {
            // Without an ear the polygon crosses itself, or what is left of it has no area.
            auto const front = std::find_if(candidates.begin(), candidates.end(),
                                            [this](std::uint32_t corner) { return _isFront(corner); });
            _cutOff(front != candidates.end() ? *front : candidates.front());
        }
        isRoundOfAll = isStuck;
        if (isRoundOfAll) {
            _waitForAll();
        }
    }
    bool const isDone = left == 3;
    while (left >= 3) {
        _cutOff(someLeft);
    }
    return isDone;
}

bool PolygonCutter::_isFront(std::uint32_t corner) const {
    Corner const& at = corners[corner];
    return area(corners[at.previous].place, at.place, corners[at.next].place) > 0;
}

void PolygonCutter::_cutOff(std::uint32_t corner) {
    Corner& at = corners[corner];
    *out++ = {vertices[at.previous], vertices[corner], vertices[at.next]};
    --left;
    at.isGone = true;
    at.isReflex = false;
    someLeft = at.next;
    corners[at.previous].next = at.next;
    corners[at.next].previous = at.previous;
    for (std::uint32_t const neighbor : {at.previous, at.next}) {
        Corner& other = corners[neighbor];
        other.isReflex = other.isReflex && !_isFront(neighbor);
        if (other.touched != round) {
            other.touched = round;
            waiting.push_back(neighbor);
        }
    }
}

void PolygonCutter::_waitForAll() {
    waiting.clear();
    std::uint32_t corner = someLeft;
    do {
        waiting.push_back(corner);
        corner = corners[corner].next;
    } while (corner != someLeft);
}

void PolygonCutter::_gatherReflexCorners() {
    Vector2<double> low = corners[0].place;
    Vector2<double> high = low;
    std::uint32_t reflexCount = 0;
    for (Corner& corner : corners) {
        low = {std::min(low.x, corner.place.x), std::min(low.y, corner.place.y)};
        high = {std::max(high.x, corner.place.x), std::max(high.y, corner.place.y)};
        corner.isReflex = area(corners[corner.previous].place, corner.place, corners[corner.next].place) <= 0;
        reflexCount += corner.isReflex ? 1 : 0;
    }
    // About one reflex corner in each cell.
    auto const side = std::max<std::uint32_t>(1, static_cast<std::uint32_t>(std::sqrt(reflexCount)));
    auto const perUnit = [side](double extent) {
        double const ratio = extent > 0 ? side / extent : 0;
        return std::isfinite(ratio) ? ratio : 0;
    };
    cells.columns = side;
    cells.rows = side;
    cells.low = low;
    cells.perUnit = {perUnit(high.x - low.x), perUnit(high.y - low.y)};
    cells.reflex.assign(std::size_t(side) * side, {});
    for (std::uint32_t i = 0; i < corners.size(); ++i) {
        if (corners[i].isReflex) {
            auto const [column, row] = _cellOf(corners[i].place);
            cells.reflex[std::size_t(row) * cells.columns + column].push_back(i);
        }
    }
}

PolygonCutter::Cell PolygonCutter::_cellOf(Vector2<double> const& place) const {
    auto const index = [](double offset, double perUnit, std::uint32_t count) {
        double const cell = offset * perUnit;
        return cell > 0 ? std::min(static_cast<std::uint32_t>(std::min(cell, 1e9)), count - 1) : 0U;
    };
    return {index(place.x - cells.low.x, cells.perUnit.x, cells.columns),
            index(place.y - cells.low.y, cells.perUnit.y, cells.rows)};
}

bool PolygonCutter::_spend(std::uint64_t steps) {
    stepsLeft = steps <= stepsLeft ? stepsLeft - steps : 0;
    return stepsLeft > 0;
}

bool PolygonCutter::_isEar(std::uint32_t corner) {
    Vector2<double> const& a = corners[corners[corner].previous].place;
    Vector2<double> const& b = corners[corner].place;
    Vector2<double> const& c = corners[corners[corner].next].place;
    Cell const low = _cellOf({std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y})});
    Cell const high = _cellOf({std::max({a.x, b.x, c.x}), std::max({a.y, b.y, c.y})});
    for (std::uint32_t row = low.row; row <= high.row; ++row) {
        for (std::uint32_t column = low.column; column <= high.column; ++column) {
            std::vector<std::uint32_t>& reflex = cells.reflex[std::size_t(row) * cells.columns + column];
            // What is no longer reflex is forgotten on the way.
            reflex.erase(std::remove_if(reflex.begin(), reflex.end(),
                                        [this](std::uint32_t i) { return !corners[i].isReflex; }),
                         reflex.end());
            if (!_spend(1 + reflex.size())) {
                return false;
            }
            for (std::uint32_t const i : reflex) {
                Vector2<double> const& p = corners[i].place;
                // A polygon may touch itself, as around a hole that is joined to its rim by two equal edges.
                if (!isSame(p, a) && !isSame(p, b) && !isSame(p, c) && isInside(p, a, b, c)) {
                    return false;
                }
            }
        }
    }
    return true;
}

}  // namespace vellum::viewport
