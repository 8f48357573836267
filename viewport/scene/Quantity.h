#pragma once

#include "viewport/files/particles/ParticleFrame.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The vector of a particle.
inline Vector3<double> vectorOf(ParticleFrame const& frame, ParticleVector const& vector,
                                std::size_t particle) {
    return {frame.channels[vector.columns[0]].values[particle],
            frame.channels[vector.columns[1]].values[particle],
            frame.channels[vector.columns[2]].values[particle]};
}

/// One number for each particle of a frame: a channel of the file, or the speed or a component of the
/// velocities. The frame must outlive it.
class Quantity {
public:
    static constexpr char SPEED_NAME[] = "speed";

    /// The quantity of that name: a channel, or else `speed`, `vx`, `vy` or `vz` of the velocities. Nothing
    /// where the frame has none.
    static std::optional<Quantity> find(ParticleFrame const& frame, std::string const& name);

    /// The lengths of the velocities, also where a channel has that name. Nothing where there are no
    /// velocities.
    static std::optional<Quantity> speed(ParticleFrame const& frame);

    /// The names of all quantities that a frame offers, those likeliest to be of interest first: ids and
    /// types last.
    static std::vector<std::string> names(ParticleFrame const& frame);

    bool isSpeed() const { return channel == nullptr && axis == ALL_AXES; }

    double operator[](std::size_t particle) const;

private:
    static constexpr unsigned int ALL_AXES = 3;

    Quantity(ParticleFrame const& frame, ParticleChannel const* channel, unsigned int axis)
        : frame(&frame), channel(channel), axis(axis) {}

    ParticleFrame const* frame;
    ParticleChannel const* channel;  // null: of the velocities
    unsigned int axis;               // of the velocities: 0 to 2, or ALL_AXES
};

}  // namespace vellum::viewport
