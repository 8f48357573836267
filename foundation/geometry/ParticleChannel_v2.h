#pragma once

namespace vellum {

/// What a particle system knows of one of its channels: which it is, and what it holds for each particle.
struct ParticleChannel_v2 {
    static constexpr unsigned int VECTOR = 1;          ///< three floats, a Vector3<float>
    static constexpr unsigned int SCALAR = 9;          ///< one float
    static constexpr unsigned int NONE = 0xFFFFFFFFU;  ///< the id that stands for no channel

    unsigned int id;    ///< Index of the channel's data in each chunk.
    unsigned int type;  ///< VECTOR, SCALAR, or a number without meaning here, for which nothing is held.
};

}  // namespace vellum
