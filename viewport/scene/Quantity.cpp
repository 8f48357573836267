#include "viewport/scene/Quantity.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

namespace {

constexpr char const* COMPONENT_NAMES[] = {"vx", "vy", "vz"};

}  // namespace

std::optional<Quantity> Quantity::find(ParticleFrame const& frame, std::string const& name) {
    // A channel comes first, whatever its name.
    if (ParticleChannel const* const channel = frame.channel(name)) {
        return Quantity(frame, channel, 0);
    }
    if (name == SPEED_NAME) {
        return speed(frame);
    }
    for (unsigned int axis = 0; axis < ALL_AXES; ++axis) {
        if (name == COMPONENT_NAMES[axis] && frame.velocity() != nullptr) {
            return Quantity(frame, nullptr, axis);
        }
    }
    return std::nullopt;
}

std::optional<Quantity> Quantity::speed(ParticleFrame const& frame) {
    return frame.velocity() == nullptr ? std::nullopt
                                       : std::optional<Quantity>(Quantity(frame, nullptr, ALL_AXES));
}

std::vector<std::string> Quantity::names(ParticleFrame const& frame) {
    std::vector<std::string> names;
    ParticleVector const* const velocity = frame.velocity();
    if (velocity != nullptr) {
        names.emplace_back(SPEED_NAME);
    }
    for (std::size_t i = 0; i < frame.channels.size(); ++i) {
        std::string const& name = frame.channels[i].name;
        bool const isOfVelocity =
            velocity != nullptr &&
            std::find(velocity->columns.begin(), velocity->columns.end(), i) != velocity->columns.end();
        if (name != "id" && name != "type" && !isOfVelocity) {
            names.push_back(name);
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
    Vector3<double> const v = vectorOf(*frame, *frame->velocity(), particle);
    switch (axis) {
    case 0:
        return v.x;
    case 1:
        return v.y;
    case 2:
        return v.z;
    default:
        return std::hypot(v.x, v.y, v.z);
    }
}

}  // namespace vellum::viewport
