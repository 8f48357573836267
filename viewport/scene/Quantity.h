#pragma once

#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/scene/ParticlePlaces.h"

#include <cmath>
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
            return _length(particle);
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

    double _length(std::size_t particle) const {
        double const x = columns[0][particle];
        double const y = columns[1][particle];
        double const z = columns[2][particle];
        double const square = x * x + y * y + z * z;
        // Most squares are neither infinite nor so small that digits are lost; the others take longer.
        return square > 1e-290 && square < 1e300 ? std::sqrt(square) : _unusualLength(x, y, z);
    }
    static double _unusualLength(double x, double y, double z);

    Kind kind = Kind::CHANNEL;
    double const* columns[3] = {};           // of the channel, or of the vector's components
    ParticlePlaces const* places = nullptr;  // of coordinates
    std::string unitText;
};

}  // namespace vellum::viewport
