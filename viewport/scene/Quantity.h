#pragma once

#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/files/particles/vector_length.h"
#include "viewport/scene/ParticlePlaces.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The vector of a particle. The values of its channels are kept.
inline Vector3<double> vectorOf(ParticleFrame const& frame, ParticleVector const& vector,
                                std::size_t particle) {
    return {frame.channels[vector.columns[0]].values[particle],
            frame.channels[vector.columns[1]].values[particle],
            frame.channels[vector.columns[2]].values[particle]};
}

/// One number for each particle of a frame: a channel of the file, the length of a vector, or a coordinate of
/// the places. Frame and places must outlive it.
class Quantity {
public:
    static constexpr char SPEED_NAME[] = "speed";

    /// The quantity of that name. A channel of the file comes first, then the length of the vector of that
    /// name; `speed` is that of the velocity, `vx`, `vy` and `vz` are its components, and `x`, `y` and `z`
    /// are the coordinates. Nothing where the frame has none.
    static std::optional<Quantity> find(ParticleFrame const& frame, ParticlePlaces const& places,
                                        std::string const& name);

    /// The lengths of a vector of the frame.
    static Quantity lengthOf(ParticleFrame const& frame, ParticleVector const& vector);

    /// The names of all quantities that a frame offers and of its labels, for messages.
    static std::vector<std::string> names(ParticleFrame const& frame);

    /// The names of the quantities that colors may show where nothing is asked for, the likeliest to be of
    /// interest first: the speed, columns, other vectors. Neither ids, types and image flags nor what is
    /// shown otherwise: coordinates, sizes, colors, components of vectors.
    static std::vector<std::string> suitableNames(ParticleFrame const& frame);

    /// As the file has it; empty where it has none.
    std::string const& unit() const { return unitText; }

    double operator[](std::size_t particle) const {
        switch (kind) {
        case Kind::CHANNEL:
            return columns[0][particle];
        case Kind::LENGTH:
            return vectorLength(columns[0][particle], columns[1][particle], columns[2][particle]);
        case Kind::X:
            return (*places)[particle].x;
        case Kind::Y:
            return (*places)[particle].y;
        case Kind::Z:
            break;
        }
        return (*places)[particle].z;
    }

private:
    enum class Kind { CHANNEL, LENGTH, X, Y, Z };

    Kind kind = Kind::CHANNEL;
    double const* columns[3] = {};           // of the channel, or of the vector's components
    ParticlePlaces const* places = nullptr;  // of coordinates
    std::string unitText;
};

}  // namespace vellum::viewport
