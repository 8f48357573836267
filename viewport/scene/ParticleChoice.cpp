#include "viewport/scene/ParticleChoice.h"

#include "viewport/files/mesh/points.h"
#include "viewport/scene/Quantity.h"
#include "viewport/scene/joined_ranges.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

bool isInside(Box3<double> const& box, Point const& p) {
    return p.x >= box.min.x && p.x <= box.max.x && p.y >= box.min.y && p.y <= box.max.y && p.z >= box.min.z &&
           p.z <= box.max.z;
}

/// The spacing of a regular grid of as many points in the same box, in as many dimensions as the particles
/// fill. The true mean distance of neighbors would need a search; for the size of spheres the estimate is
/// enough.
double spacingIn(Box3<double> const& box, std::size_t count) {
    // Halved, an extent does not overflow.
    Point const half = box.max * 0.5 - box.min * 0.5;
    double const largest = std::max({half.x, half.y, half.z});
    if (!(largest > 0)) {
        return 1;
    }
    double logarithm = 0;
    int dimensions = 0;
    for (double const side : {half.x, half.y, half.z}) {
        if (side > 1e-3 * largest) {
            logarithm += std::log(side) + std::log(2.0);
            ++dimensions;
        }
    }
    double const pointsPerSide = std::pow(static_cast<double>(count), 1.0 / dimensions);
    return std::exp(logarithm / dimensions) / std::max(pointsPerSide - 1, 1.0);
}

void measure(ParticleChoice& choice, ParticlePlaces const& places) {
    if (choice.count > 0) {
        Point const first = places[choice[0]];
        choice.box = {first, first};
    }
    choice.box = joinedRanges<Box3<double>>(
        choice.count, choice.box, [&](Box3<double>& box, std::size_t i) { include(box, places[choice[i]]); },
        [](Box3<double>& box, Box3<double> const& next) {
            include(box, next.min);
            include(box, next.max);
        });
    choice.spacing = spacingIn(choice.box, choice.count);
}

}  // namespace

Result<ParticleChoice> choose(ParticleFrame const& frame, ParticlePlaces const& places,
                              ParticleVector const* arrow, ParticleSelection const* selection,
                              std::optional<Box3<double>> const& clip) {
    auto const hasPlace = [&](std::size_t i) {
        return isFinite(frame.positions[i]) && (arrow == nullptr || isFinite(vectorOf(frame, *arrow, i)));
    };
    ParticleChoice choice;
    std::size_t const all = frame.positions.size();
    choice.count = joinedRanges<std::size_t>(
        all, 0, [&](std::size_t& count, std::size_t i) { count += hasPlace(i) ? 1 : 0; },
        [](std::size_t& count, std::size_t next) { count += next; });
    choice.isAll = choice.count == all && selection == nullptr && !clip;
    if (!choice.isAll) {
        choice.particles.reserve(all);
        for (std::size_t i = 0; i < all; ++i) {
            if (!hasPlace(i)) {
                ++choice.unplacedCount;
            } else if (!clip || isInside(*clip, places[i])) {
                choice.particles.push_back(static_cast<unsigned int>(i));
            }
        }
        if (selection != nullptr) {
            if (std::optional<Fault> const fault = selection->apply(frame, places, choice.particles)) {
                return *fault;
            }
        }
        choice.count = choice.particles.size();
    }
    measure(choice, places);
    return choice;
}

}  // namespace vellum::viewport
