#pragma once

#include <cstddef>

namespace vellum {

/// One particle of a chunk: whether it lives, and the slot of its values in the chunk's channels.
struct ParticleEntry_v2 {
    static constexpr unsigned char LIVING = 0;    ///< sorts first
    static constexpr unsigned char RELEASED = 1;  ///< sorts after the living ones

    unsigned char key;    ///< LIVING or RELEASED
    unsigned short slot;  ///< index into the chunk's channel arrays
};

static_assert(sizeof(ParticleEntry_v2) == 4 && offsetof(ParticleEntry_v2, key) == 0,
              "four bytes for each particle, the key first");

}  // namespace vellum
