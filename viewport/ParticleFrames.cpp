#include "viewport/ParticleFrames.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace vellum::viewport {

namespace {

/// order[i] is the place that the particle of rank i has now.
std::vector<std::size_t> orderOf(std::vector<double> const& ids) {
    std::vector<std::size_t> order(ids.size());
    auto const [least, most] = std::minmax_element(ids.begin(), ids.end());
    double const span = *most - *least + 1;
    if (span > 4.0 * static_cast<double>(ids.size())) {
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::stable_sort(order.begin(), order.end(),
                         [&ids](std::size_t const& a, std::size_t const& b) { return ids[a] < ids[b]; });
        return order;
    }
    // Simulations number their particles almost without gaps: counting takes one walk where comparing takes many.
    std::vector<std::size_t> firstPlace(static_cast<std::size_t>(span) + 1, 0);
    for (double const& id : ids) {
        ++firstPlace[static_cast<std::size_t>(id - *least) + 1];
    }
    std::partial_sum(firstPlace.begin(), firstPlace.end(), firstPlace.begin());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        order[firstPlace[static_cast<std::size_t>(ids[i] - *least)]++] = i;
    }
    return order;
}

template <class T>
void arrange(std::vector<T>& values, std::vector<std::size_t> const& order) {
    if (values.empty()) {
        return;
    }
    std::vector<T> arranged;
    arranged.reserve(values.size());
    for (std::size_t const& place : order) {
        arranged.push_back(values[place]);
    }
    values.swap(arranged);
}

}  // namespace

ParticleChannel const* ParticleFrame::channel(std::string const& name) const {
    for (ParticleChannel const& candidate : channels) {
        if (candidate.name == name) {
            return &candidate;
        }
    }
    return nullptr;
}

void ParticleFrame::sortBy(std::vector<double> const& ids) {
    if (std::is_sorted(ids.begin(), ids.end())) {
        return;
    }
    std::vector<std::size_t> const order = orderOf(ids);
    arrange(positions, order);
    arrange(velocities, order);
    for (ParticleChannel& each : channels) {
        arrange(each.values, order);
    }
}

}  // namespace vellum::viewport
