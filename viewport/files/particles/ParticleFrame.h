#pragma once

#include "foundation/geometry/Vector3.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The region that a simulation fills: a corner and the three edges that leave it. Tilted boxes have edges
/// that are not at right angles.
struct ParticleBox {
    Vector3<double> origin{0, 0, 0};
    Vector3<double> edges[3] = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
};

/// One number for each particle.
struct ParticleChannel {
    std::string name;  ///< as the file has it
    std::vector<float> values;
};

/// The particles at one time, as the file has them.
///
/// A plain value. All lists that are not empty have the same length. Numbers are those of the file: some may
/// be infinite or NaN, and particles may lie outside the box. What is drawn of a frame is a ParticleCloud.
struct ParticleFrame {
    std::string file;            ///< as the user named it
    std::int64_t timestep = 0;   ///< as the file says, else the frame's number from 0
    std::optional<double> time;  ///< in the file's units
    std::optional<ParticleBox> box;
    std::vector<Vector3<float>> positions;
    std::vector<Vector3<float>> velocities;  ///< empty where the file has none
    std::vector<ParticleChannel> channels;   ///< in the order of the file's columns

    /// The channel of that name, or null.
    ParticleChannel const* channel(std::string const& name) const;

    /// Puts the particles into ascending order of their ids, one id for each particle; equal ids keep their
    /// order. The ids are whole numbers.
    void sortBy(std::vector<double> const& ids);
};

/// One frame of a particle file, and what is known about the others.
struct LoadedFrame {
    ParticleFrame frame;
    std::size_t number = 0;  ///< of the frame, from 0
    std::size_t count = 1;   ///< of the complete frames in the file
    std::string warning;     ///< what was lost of a damaged file, one clause; else empty
};

}  // namespace vellum::viewport
