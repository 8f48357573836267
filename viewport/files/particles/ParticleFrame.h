#pragma once

#include "foundation/geometry/Vector3.h"
#include "viewport/files/particles/ValueList.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The region that a simulation fills: a corner and the three edges that leave it. Tilted boxes have edges
/// that are not at right angles.
struct ParticleBox {
    Vector3<double> origin{0, 0, 0};
    Vector3<double> edges[3] = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
    std::array<bool, 3> isPeriodic{true, true, true};  ///< along each edge; true where the file does not say
};

/// One number for each particle.
struct ParticleChannel {
    std::string name;          ///< as the file has it, without its unit
    ValueList<double> values;  ///< NaN where the file has none; empty: not kept, see NeededValues
    std::string unit;          ///< as the file has it, "m/s"; empty: it has none
};

/// Three channels that are the components of a vector.
struct ParticleVector {
    std::string name;                    ///< VELOCITY, or what the names of the three columns have in common
    std::array<std::size_t, 3> columns;  ///< indices of channels
    ValueList<double> lengths = {};      ///< of each; empty: those of the channels' values, which are kept

    static constexpr char VELOCITY[] = "velocity";
};

/// One word for each particle, such as its element.
struct ParticleLabels {
    std::string name;                  ///< the column's
    std::vector<std::string> words;    ///< each once, in the order of their first particles
    ValueList<std::uint32_t> indices;  ///< one for each particle, into the words
    bool areElements = false;          ///< the words are meant as symbols of chemical elements
};

/// The channels that hold the particles' own colors.
struct ParticleColors {
    std::array<std::size_t, 3> columns;  ///< indices of channels: red, green, blue
    double full = 1;                     ///< the value of the brightest: 1, 255 or 65535
};

/// The channel that holds the particles' own sizes.
struct ParticleSizes {
    std::size_t column;  ///< index of a channel
    double diameters;    ///< in units of the file, of a value of 1: 2 for radii, 1 for diameters
};

/// The particles at one time, as the file has them.
///
/// A plain value. All lists that are not empty have the same length. Numbers are those of the file, in double
/// precision: some may be infinite or NaN, and particles may lie outside the box. What is drawn of a frame is
/// a ParticleCloud.
struct ParticleFrame {
    std::string file;            ///< as the user named it
    std::int64_t timestep = 0;   ///< as the file says, else the frame's number from 0
    std::optional<double> time;  ///< in the file's units
    std::optional<ParticleBox> box;
    ValueList<Vector3<double>> positions;
    std::vector<ParticleChannel> channels;  ///< in the order of the file's columns, also those of vectors
    std::vector<ParticleVector> vectors;    ///< the velocity first, where there is one
    std::vector<ParticleLabels> labels;     ///< columns of words
    /// Of the numbers in the channel "type", where the file names them.
    std::map<std::int64_t, std::string> typeNames;
    std::optional<ParticleColors> colors;  ///< nothing: the file has none
    std::optional<ParticleSizes> sizes;    ///< nothing: the file has none
    std::vector<std::string> notes;        ///< what of the file is not taken as it says, one clause each

    /// The channel, vector or labels of that name, or null.
    ParticleChannel const* channel(std::string const& name) const;
    ParticleVector const* vector(std::string const& name) const;
    ParticleLabels const* label(std::string const& name) const;

    /// The velocities, or null.
    ParticleVector const* velocity() const { return vector(ParticleVector::VELOCITY); }

    /// The labels that are elements, or null.
    ParticleLabels const* elements() const;

    /// Puts the particles into ascending order of their ids, one id for each particle; equal ids keep their
    /// order. The ids are whole numbers.
    void sortBy(ValueList<double> const& ids);
};

/// One frame of a particle file, and what is known about the others.
struct LoadedFrame {
    ParticleFrame frame;
    std::size_t number = 0;               ///< of the frame, from 0
    std::size_t count = 1;                ///< of the complete frames in the file
    std::vector<std::int64_t> timesteps;  ///< of the complete frames; empty: not known
    /// Of the complete frames, nothing where the file does not say; empty: not known.
    std::vector<std::optional<double>> times;
    std::string warning;  ///< what was lost of a damaged file, one clause; else empty
};

}  // namespace vellum::viewport
