#include "viewport/scene/Quantity.h"

#include <cmath>

namespace vellum::viewport {

namespace {

constexpr char const* COMPONENT_NAMES[] = {"vx", "vy", "vz"};

}  // namespace

std::optional<Quantity> Quantity::find(ParticleFrame const& frame, std::string const& name) {
    // A channel comes first: readers have taken vx, vy and vz out of the channels where they are velocities.
    if (ParticleChannel const* const channel = frame.channel(name)) {
        return Quantity(frame, channel, 0);
    }
    if (name == SPEED_NAME) {
        return speed(frame);
    }
    for (unsigned int axis = 0; axis < ALL_AXES; ++axis) {
        if (name == COMPONENT_NAMES[axis] && !frame.velocities.empty()) {
            return Quantity(frame, nullptr, axis);
        }
    }
    return std::nullopt;
}

std::optional<Quantity> Quantity::speed(ParticleFrame const& frame) {
    return frame.velocities.empty() ? std::nullopt
                                    : std::optional<Quantity>(Quantity(frame, nullptr, ALL_AXES));
}

std::vector<std::string> Quantity::names(ParticleFrame const& frame) {
    std::vector<std::string> names;
    if (!frame.velocities.empty()) {
        names.emplace_back(SPEED_NAME);
    }
    for (ParticleChannel const& channel : frame.channels) {
        if (channel.name != "id" && channel.name != "type") {
            names.push_back(channel.name);
        }
    }
    for (char const* const last : {"type", "id"}) {
        if (frame.channel(last) != nullptr) {
            names.emplace_back(last);
        }
    }
    return names;
}

double Quantity::operator[](std::size_t particle) const {
    if (channel != nullptr) {
        return channel->values[particle];
    }
    Vector3<float> const& v = frame->velocities[particle];
    switch (axis) {
    case 0:
        return v.x;
    case 1:
        return v.y;
    case 2:
        return v.z;
    default:
        // In double precision, which holds the squares of all floats.
        return std::hypot(static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z));
    }
}

}  // namespace vellum::viewport
