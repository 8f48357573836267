#pragma once

namespace vellum {

/// One channel of a particle system: its id and the type of its values.
struct ParticleChannel_v2 {
    static constexpr unsigned int VECTOR = 1;          ///< three floats, a Vector3<float>
    static constexpr unsigned int SCALAR = 9;          ///< one float
    static constexpr unsigned int NONE = 0xFFFFFFFFU;  ///< the id that stands for no channel

    unsigned int id;    ///< Index of the channel's data in each chunk.
    unsigned int type;  ///< VECTOR or SCALAR; a channel of any other type stores no values.
};

}  // namespace vellum
