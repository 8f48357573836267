#include "viewport/scene/Quantity.h"

#include "viewport/text/lower_case.h"

#include <algorithm>
#include <array>
#include <set>

namespace vellum::viewport {

namespace {

constexpr std::array<char const*, 3> VELOCITY_NAMES{"vx", "vy", "vz"};
constexpr std::array<char const*, 3> PLACE_NAMES{"x", "y", "z"};

/// Columns that say which particle it is, or where, but nothing about it. In lower case.
std::set<std::string> const TELLING_NOTHING{"id", "type", "ix", "iy", "iz", "x",   "y",   "z",  "xs",
                                            "ys", "zs",   "xu", "yu", "zu", "xsu", "ysu", "zsu"};

template <class Names>
std::optional<std::size_t> indexIn(Names const& names, std::string const& name) {
    auto const found = std::find(names.begin(), names.end(), name);
    return found != names.end() ? std::optional<std::size_t>(found - names.begin()) : std::nullopt;
}

/// The columns that are shown otherwise than by color.
std::set<std::size_t> partsOfOthers(ParticleFrame const& frame) {
    std::set<std::size_t> parts;
    for (ParticleVector const& vector : frame.vectors) {
        parts.insert(vector.columns.begin(), vector.columns.end());
    }
    if (frame.colors) {
        parts.insert(frame.colors->columns.begin(), frame.colors->columns.end());
    }
    if (frame.sizes) {
        parts.insert(frame.sizes->column);
    }
    return parts;
}

void addOnce(std::vector<std::string>& names, std::string const& name) {
    if (!indexIn(names, name)) {
        names.push_back(name);
    }
}

}  // namespace

std::optional<Quantity> Quantity::find(ParticleFrame const& frame, ParticlePlaces const& places,
                                       std::string const& name) {
    auto const ofChannel = [](ParticleChannel const& channel) {
        Quantity quantity;
        quantity.columns[0] = channel.values.data();
        quantity.unitText = channel.unit;
        return quantity;
    };
    if (ParticleChannel const* const channel = frame.channel(name)) {
        return ofChannel(*channel);
    }
    if (ParticleVector const* const vector = frame.vector(name)) {
        return lengthOf(frame, *vector);
    }
    if (ParticleVector const* const velocity = frame.velocity()) {
        if (name == SPEED_NAME) {
            return lengthOf(frame, *velocity);
        }
        if (std::optional<std::size_t> const axis = indexIn(VELOCITY_NAMES, name)) {
            return ofChannel(frame.channels[velocity->columns[*axis]]);
        }
    }
    if (std::optional<std::size_t> const axis = indexIn(PLACE_NAMES, name)) {
        constexpr std::array<Kind, 3> KINDS{Kind::X, Kind::Y, Kind::Z};
        Quantity quantity;
        quantity.kind = KINDS[*axis];
        quantity.places = &places;
        return quantity;
    }
    return std::nullopt;
}

Quantity Quantity::lengthOf(ParticleFrame const& frame, ParticleVector const& vector) {
    Quantity quantity;
    quantity.kind = vector.lengths.empty() ? Kind::LENGTH : Kind::CHANNEL;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        quantity.columns[axis] = vector.lengths.empty() ? frame.channels[vector.columns[axis]].values.data()
                                                        : vector.lengths.data();
    }
    std::string const& unit = frame.channels[vector.columns[0]].unit;
    bool const isCommon = std::all_of(vector.columns.begin(), vector.columns.end(), [&](std::size_t column) {
        return frame.channels[column].unit == unit;
    });
    quantity.unitText = isCommon ? unit : std::string();
    return quantity;
}

std::vector<std::string> Quantity::names(ParticleFrame const& frame) {
    std::vector<std::string> names;
    for (ParticleVector const& vector : frame.vectors) {
        addOnce(names, vector.name == ParticleVector::VELOCITY ? SPEED_NAME : vector.name);
    }
    for (ParticleLabels const& labels : frame.labels) {
        addOnce(names, labels.name);
    }
    for (ParticleChannel const& channel : frame.channels) {
        addOnce(names, channel.name);
    }
    for (char const* const name : PLACE_NAMES) {
        addOnce(names, name);
    }
    return names;
}

std::vector<std::string> Quantity::suitableNames(ParticleFrame const& frame) {
    std::vector<std::string> names;
    if (frame.velocity() != nullptr) {
        names.emplace_back(SPEED_NAME);
    }
    std::set<std::size_t> const parts = partsOfOthers(frame);
    for (std::size_t i = 0; i < frame.channels.size(); ++i) {
        std::string const& name = frame.channels[i].name;
        if (parts.count(i) == 0 && TELLING_NOTHING.count(lowerCase(name)) == 0) {
            addOnce(names, name);
        }
    }
    for (ParticleVector const& vector : frame.vectors) {
        addOnce(names, vector.name);
    }
    return names;
}

}  // namespace vellum::viewport
