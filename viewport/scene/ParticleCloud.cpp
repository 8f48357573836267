#include "viewport/scene/ParticleCloud.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

namespace vellum::viewport {

namespace {

constexpr double BALL_DIAMETER = 0.98;  // of the mean distance of neighbors: spheres almost touch

/// Renderers take floats.
bool isFinite(Vector3<double> const& v) {
    constexpr double MOST = std::numeric_limits<float>::max();
    return std::abs(v.x) <= MOST && std::abs(v.y) <= MOST && std::abs(v.z) <= MOST;
}

bool isFinite(ParticleBox const& box) {
    auto const isAllFinite = [](Vector3<double> const& v) {
        return std::isfinite(length(v)) && std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)}) <
                                               static_cast<double>(std::numeric_limits<float>::max());
    };
    return isAllFinite(box.origin) && std::all_of(std::begin(box.edges), std::end(box.edges), isAllFinite);
}

/// Two ends for each of the twelve edges.
std::vector<Vector3<double>> linesOf(ParticleBox const& box) {
    std::vector<Vector3<double>> ends;
    for (unsigned int corner = 0; corner < 8; ++corner) {
        Vector3<double> place = box.origin;
        for (unsigned int axis = 0; axis < 3; ++axis) {
            place = place + box.edges[axis] * ((corner >> axis & 1U) != 0 ? 1.0 : 0.0);
        }
        for (unsigned int axis = 0; axis < 3; ++axis) {
            if ((corner >> axis & 1U) == 0) {
                ends.push_back(place);
                ends.push_back(place + box.edges[axis]);
            }
        }
    }
    return ends;
}

void include(Box3<double>& box, Vector3<double> const& p) {
    box = {{std::min(box.min.x, p.x), std::min(box.min.y, p.y), std::min(box.min.z, p.z)},
           {std::max(box.max.x, p.x), std::max(box.max.y, p.y), std::max(box.max.z, p.z)}};
}

/// The spacing of a regular grid of as many points in the same box, in as many dimensions as the particles
/// fill. The true mean distance of neighbors would need a search; for the size of spheres the estimate is
/// enough.
double spacingIn(Box3<double> const& box, std::size_t count) {
    Vector3<double> const extent = box.max - box.min;
    double const largest = std::max({extent.x, extent.y, extent.z});
    if (!(largest > 0)) {
        return 1;
    }
    double logarithm = 0;
    int dimensions = 0;
    for (double const side : {extent.x, extent.y, extent.z}) {
        if (side > 1e-3 * largest) {
            logarithm += std::log(side);
            ++dimensions;
        }
    }
    double const pointsPerSide = std::pow(static_cast<double>(count), 1.0 / dimensions);
    return std::exp(logarithm / dimensions) / std::max(pointsPerSide - 1, 1.0);
}

}  // namespace

CloudMaker::CloudMaker(ParticleFrame const& frame, ParticleLook const& look) : frame(frame), look(look) {
    if (look.scale) {
        quantity = isOfArrows(look.mode) ? Quantity::speed(frame) : Quantity::find(frame, look.scale->name);
    }
    if (frame.box && isFinite(*frame.box)) {
        edges = frame.box;
    }
    _choose();
    _measure();
    if (look.isThinned) {
        _shuffle();
    }
}

void CloudMaker::_choose() {
    std::size_t const all = frame.positions.size();
    while (count < all && isDrawable(frame, count, look.mode)) {
        ++count;
    }
    isSelection = count < all || look.isThinned;
    if (!isSelection) {
        return;
    }
    order.reserve(all);
    for (std::size_t i = 0; i < all; ++i) {
        if (isDrawable(frame, i, look.mode)) {
            order.push_back(static_cast<unsigned int>(i));
        }
    }
    count = order.size();
}

void CloudMaker::_measure() {
    for (std::size_t i = 0; i < count; ++i) {
        Vector3<double> const& p = frame.positions[_index(i)];
        if (i == 0) {
            bounds = {p, p};
        }
        include(bounds, p);
    }
    spacing = spacingIn(bounds, count);
    diameter = look.size.value_or(BALL_DIAMETER * spacing);
    // The size of points is in pixels and that of arrows depends on their values: only spheres have one here.
    double const reach = look.mode == ParticleMode::SPHERES ? diameter / 2 : 0;
    bounds = {bounds.min - Vector3<double>{reach, reach, reach},
              bounds.max + Vector3<double>{reach, reach, reach}};
    if (edges) {
        std::vector<Vector3<double>> const ends = linesOf(*edges);
        if (count == 0) {
            bounds = {ends.front(), ends.front()};
        }
        for (Vector3<double> const& end : ends) {
            include(bounds, end);
        }
    }
}

/// Renderers draw every so many of the particles. Those of a lattice, in the order of the lattice, would show
/// stripes; in this order, which is always the same for the same count, they show none.
void CloudMaker::_shuffle() {
    std::mt19937 random(20'011);
    for (std::size_t left = count; left > 1; --left) {
        std::swap(order[left - 1], order[random() % left]);
    }
}

Vector3<float> CloudMaker::_shown(std::size_t particle) const {
    if (!quantity) {
        return {0, 0, 0};
    }
    if (quantity->isSpeed()) {
        Vector3<double> const v = vectorOf(frame, *frame.velocity(), particle);
        if (isFinite(v)) {
            return convert<float>(v / look.scale->unit);
        }
    }
    // A number is stored in a vector too. Drawn without a buffer, particles with a scalar channel would take
    // their colors from the numbers of other particles.
    return {look.scale->toMagnitude((*quantity)[particle]), 0, 0};
}

ParticleCloud CloudMaker::make(Vector3<double> const& center, double scale) const {
    auto const place = [&](Vector3<double> const& p) { return (p - center) * scale; };
    auto const system = std::make_shared<ParticleSystem_v2>();
    system->addChannel("position", ParticleChannel_v2::VECTOR);
    system->addChannel("shown", ParticleChannel_v2::VECTOR);
    system->addParticles(static_cast<unsigned int>(count));
    std::size_t next = 0;
    for (ParticleSystemChunk_v2* chunk = system->firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        Vector3<float>* const positions = chunk->channelData(ParticleCloud::POSITIONS)->asVectors();
        Vector3<float>* const shown = chunk->channelData(ParticleCloud::SHOWN)->asVectors();
        for (unsigned int i = 0; i < chunk->count(); ++i, ++next) {
            std::size_t const particle = _index(next);
            positions[i] = convert<float>(place(frame.positions[particle]));
            shown[i] = _shown(particle);
        }
    }

    ParticleCloud cloud;
    cloud.name = frame.file.substr(frame.file.find_last_of('/') + 1);
    cloud.system = system;
    cloud.box = {place(bounds.min), place(bounds.max)};
    cloud.spacing = spacing * scale;
    cloud.diameter = diameter * scale;
    if (edges) {
        for (Vector3<double> const& end : linesOf(*edges)) {
            cloud.boxLines.push_back(convert<float>(place(end)));
        }
    }
    return cloud;
}

}  // namespace vellum::viewport
