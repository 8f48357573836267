#pragma once

#include "foundation/geometry/Vector3.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The region that a simulation fills: a corner and the three edges that leave it. Tilted boxes have edges that are
/// not at right angles.
struct ParticleBox {
    Vector3<double> origin{0, 0, 0};
    Vector3<double> edges[3] = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
};

/// One number for each particle.
struct ParticleChannel {
    std::string name;  ///< as the file has it
    std::vector<float> values;
};

/// The particles at one time.
///
/// A plain value. All lists that are not empty are of the same length. Numbers stand as the file has them: some may
/// be infinite or not a number, and particles may lie outside the box.
struct ParticleFrame {
    std::int64_t timestep = 0;   ///< as the file says, else the frame's number from 0
    std::optional<double> time;  ///< in the file's units
    std::optional<ParticleBox> box;
    std::vector<Vector3<float>> positions;
    std::vector<Vector3<float>> velocities;  ///< empty where the file has none
    std::vector<ParticleChannel> channels;   ///< in the order of the file's columns

    /// The channel of that name, or null.
    ParticleChannel const* channel(std::string const& name) const;

    /// Puts the particles into ascending order of their ids, one id for each particle; equal ids keep their order.
    /// The ids are whole numbers.
    void sortBy(std::vector<double> const& ids);
};

/// What a particle file holds, in the order of the file.
struct ParticleFrames {
    std::vector<ParticleFrame> frames;  ///< at least one
    std::string warning;                ///< what was lost of a damaged file, one clause; else empty
};

/// Told now and then how far reading is: the bytes done and the bytes in all.
using ParticleProgress = std::function<void(std::uint64_t done, std::uint64_t all)>;

}  // namespace vellum::viewport
