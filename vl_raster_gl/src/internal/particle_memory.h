#pragma once

#include "internal/particle_record.h"

#include <cstdint>

namespace vellum {

/// Whether a percentage of the particles fits into video memory: 24 bytes each into what is free and what the
/// renderer's own buffer holds (both in kilobytes), less 25 megabytes that are kept in reserve.
///
/// Deliberate (unknown-memory-fits): the subtraction wraps below 25 megabytes, which then read as a very large amount. A driver that
/// does not tell its free memory (0) is thereby taken to have enough; the size of the buffer is checked again
/// where it is made.
inline bool fitsIntoVideoMemory(float percent, unsigned int particles, unsigned int freeKilobytes,
                                unsigned int heldKilobytes) {
    constexpr unsigned int RESERVE = 25;
    unsigned int const available = (freeKilobytes >> 10) + (heldKilobytes >> 10) - RESERVE;
    std::uint64_t const bytes = std::uint64_t{particles} * sizeof(ParticleRecord);
    float const needed = percent / 1.048576e8F * static_cast<float>(bytes);
    return static_cast<float>(available) > needed;
}

/// The kilobytes that a buffer of so many particles takes, rounded to the nearest number.
inline std::uint64_t bufferKilobytes(unsigned int particles) {
    double const bytes = static_cast<double>(particles * sizeof(ParticleRecord));
    return static_cast<std::uint64_t>(bytes / 1024.0 + 0.5);
}

}  // namespace vellum
