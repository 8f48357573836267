#include "viewport/files/particles/ParticleFrame.h"

#include "foundation/basic/large_pages.h"
#include "foundation/basic/threads.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>

namespace vellum::viewport {

namespace {

constexpr std::size_t PLACES_PER_RANGE = std::size_t(1) << 15;

/// order[i] is the present place of the particle of rank i.
template <class Place>
using Order = std::vector<Place>;

template <class Place>
Order<Place> orderByComparing(ValueList<double> const& ids) {
    Order<Place> order(ids.size());
    std::iota(order.begin(), order.end(), Place{0});
    std::stable_sort(order.begin(), order.end(),
                     [&ids](Place const& a, Place const& b) { return ids[a] < ids[b]; });
    return order;
}

/// For ids that are consecutive numbers, each of them once; empty where they are not.
template <class Place>
Order<Place> orderOfNumbers(ValueList<double> const& ids, double least) {
    constexpr Place NONE = std::numeric_limits<Place>::max();
    Order<Place> order(ids.size(), NONE);
    for (std::size_t i = 0; i < ids.size(); ++i) {
        Place& place = order[static_cast<std::size_t>(ids[i] - least)];
        if (place != NONE) {
            return {};
        }
        place = static_cast<Place>(i);
    }
    return order;
}

template <class Place>
Order<Place> orderByCounting(ValueList<double> const& ids, double least, std::size_t span) {
    Order<Place> order(ids.size());
    std::vector<Place> firstPlace(span + 1, 0);
    for (double id : ids) {
        ++firstPlace[static_cast<std::size_t>(id - least) + 1];
    }
    std::partial_sum(firstPlace.begin(), firstPlace.end(), firstPlace.begin());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        order[firstPlace[static_cast<std::size_t>(ids[i] - least)]++] = static_cast<Place>(i);
    }
    return order;
}

/// Simulations number their particles almost without gaps, so counting sorts them in linear time.
template <class Place>
Order<Place> orderOf(ValueList<double> const& ids) {
    auto const [least, most] = std::minmax_element(ids.begin(), ids.end());
    double const span = *most - *least + 1;
    if (span > 4.0 * static_cast<double>(ids.size())) {
        return orderByComparing<Place>(ids);
    }
    auto const numbers = static_cast<std::size_t>(span);
    Order<Place> order;
    if (numbers == ids.size()) {
        order = orderOfNumbers<Place>(ids, *least);
    }
    return order.empty() ? orderByCounting<Place>(ids, *least, numbers) : order;
}

/// \param spare memory, which one list leaves to the next: new memory takes longer than the arranging.
template <class T, class Place>
void arrange(ValueList<T>& values, Order<Place> const& order, ValueList<T>& spare) {
    if (values.empty()) {
        return;
    }
    spare.reserve(values.size());
    preferLargePages(spare.data(), spare.capacity() * sizeof(T));
    spare.resize(values.size());
    forRanges(order.size(), PLACES_PER_RANGE, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            spare[i] = values[order[i]];
        }
    });
    values.swap(spare);
}

/// Puts the words into the order of their first particles again.
void orderWords(ParticleLabels& labels) {
    constexpr std::uint32_t NONE = std::numeric_limits<std::uint32_t>::max();
    std::vector<std::uint32_t> places(labels.words.size(), NONE);
    std::vector<std::string> words;
    words.reserve(labels.words.size());
    for (std::uint32_t& index : labels.indices) {
        std::uint32_t& place = places[index];
        if (place == NONE) {
            place = static_cast<std::uint32_t>(words.size());
            words.push_back(std::move(labels.words[index]));
        }
        index = place;
    }
    labels.words.swap(words);
}

/// The element of that name, or null.
template <class Named>
Named const* named(std::vector<Named> const& all, std::string const& name) {
    auto const found =
        std::find_if(all.begin(), all.end(), [&name](Named const& each) { return each.name == name; });
    return found == all.end() ? nullptr : &*found;
}

template <class Place>
void arrangeAll(ParticleFrame& frame, ValueList<double> const& ids) {
    Order<Place> const order = orderOf<Place>(ids);
    ValueList<Vector3<double>> sparePositions;
    arrange(frame.positions, order, sparePositions);
    ValueList<double> spareValues;
    for (ParticleChannel& each : frame.channels) {
        arrange(each.values, order, spareValues);
    }
    for (ParticleVector& each : frame.vectors) {
        arrange(each.lengths, order, spareValues);
    }
    ValueList<std::uint32_t> spareIndices;
    for (ParticleLabels& each : frame.labels) {
        arrange(each.indices, order, spareIndices);
        orderWords(each);
    }
}

}  // namespace

ParticleChannel const* ParticleFrame::channel(std::string const& name) const {
    return named(channels, name);
}

ParticleVector const* ParticleFrame::vector(std::string const& name) const {
    return named(vectors, name);
}

ParticleLabels const* ParticleFrame::label(std::string const& name) const {
    return named(labels, name);
}

ParticleLabels const* ParticleFrame::elements() const {
    auto const found = std::find_if(labels.begin(), labels.end(),
                                    [](ParticleLabels const& each) { return each.areElements; });
    return found == labels.end() ? nullptr : &*found;
}

void ParticleFrame::sortBy(ValueList<double> const& ids) {
    if (std::is_sorted(ids.begin(), ids.end())) {
        return;
    }
    // The order is read at random places: with 32-bit indices twice as much of it is in the caches.
    if (ids.size() < std::numeric_limits<std::uint32_t>::max()) {
        arrangeAll<std::uint32_t>(*this, ids);
    } else {
        arrangeAll<std::uint64_t>(*this, ids);
    }
}

}  // namespace vellum::viewport
