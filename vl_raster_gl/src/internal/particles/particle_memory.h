#pragma once

#include "internal/particles/particle_record.h"

#include <cstdint>

namespace vellum {

/// Whether a percentage of the particles fits into video memory: 24 bytes each, compared with the free memory
/// plus the renderer's buffer (both in kilobytes), less a reserve of 25 megabytes.
///
/// Deliberate (unknown-memory-fits): below 25 megabytes the subtraction wraps to a very large amount.
inline bool fitsIntoVideoMemory(float percent, unsigned int particles, unsigned int freeKilobytes,
                                unsigned int heldKilobytes) {
    constexpr unsigned int RESERVE = 25;
    unsigned int const available = (freeKilobytes >> 10) + (heldKilobytes >> 10) - RESERVE;
    std::uint64_t const bytes = std::uint64_t{particles} * sizeof(ParticleRecord);
    float const needed = percent / 1.048576e8F * static_cast<float>(bytes);
    return static_cast<float>(available) > needed;
}

/// The size of a buffer of so many particles in kilobytes, rounded.
inline std::uint64_t bufferKilobytes(unsigned int particles) {
    double const bytes = static_cast<double>(particles * sizeof(ParticleRecord));
    return static_cast<std::uint64_t>(bytes / 1024.0 + 0.5);
}

}  // namespace vellum
