#include "viewport/scene/ParticlePlaces.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

/// A direction that is at right angles to those that there are.
Point across(Point const& a, Point const& b) {
    Point const both = cross(a, b);
    if (length(both) > 0) {
        return both / length(both);
    }
    Point const one = length(a) > 0 ? a : b;
    if (!(length(one) > 0)) {
        return {1, 0, 0};
    }
    Point const aside = std::abs(one.x) > 0.5 * length(one) ? Point{0, 1, 0} : Point{1, 0, 0};
    Point const found = cross(one, aside);
    return found / length(found);
}

}  // namespace

bool isFinite(ParticleBox const& box) {
    return isFinite(box.origin) && std::all_of(std::begin(box.edges), std::end(box.edges),
                                               [](Point const& edge) { return std::isfinite(length(edge)); });
}

ParticlePlaces::ParticlePlaces(ParticleFrame const& frame, bool isWrapped) : positions(&frame.positions) {
    if (isWrapped) {
        periodic = _periodicBoxOf(frame);
    }
}

bool ParticlePlaces::canWrap(ParticleFrame const& frame) {
    return _periodicBoxOf(frame).has_value();
}

std::optional<ParticlePlaces::PeriodicBox> ParticlePlaces::_periodicBoxOf(ParticleFrame const& frame) {
    if (!frame.box || !isFinite(*frame.box)) {
        return std::nullopt;
    }
    ParticleBox const& box = *frame.box;
    PeriodicBox found{box.origin, {box.edges[0], box.edges[1], box.edges[2]}, {}, box.isPeriodic};
    bool hasExtent = false;
    for (std::size_t k = 0; k < 3; ++k) {
        if (length(found.edges[k]) > 0) {
            hasExtent = true;
        } else {
            found.edges[k] = across(found.edges[(k + 1) % 3], found.edges[(k + 2) % 3]);
            found.isPeriodic[k] = false;
        }
    }
    double const volume = dot(found.edges[0], cross(found.edges[1], found.edges[2]));
    double const largest = length(found.edges[0]) * length(found.edges[1]) * length(found.edges[2]);
    if (!hasExtent || !std::isfinite(largest) || !(std::abs(volume) > 1e-12 * largest)) {
        return std::nullopt;
    }
    for (std::size_t k = 0; k < 3; ++k) {
        found.inverse[k] = cross(found.edges[(k + 1) % 3], found.edges[(k + 2) % 3]) / volume;
    }
    return found;
}

Vector3<double> ParticlePlaces::PeriodicBox::wrapped(Vector3<double> place) const {
    Point const inside = place - origin;
    for (std::size_t k = 0; k < 3; ++k) {
        double const whole = isPeriodic[k] ? std::floor(dot(inside, inverse[k])) : 0;
        if (whole != 0 && std::isfinite(whole)) {
            place = place - edges[k] * whole;
        }
    }
    return place;
}

}  // namespace vellum::viewport
