#pragma once

#include <cstdint>

/// \file
/// Which particles of a system are drawn where only a part of them is (ParticleLook::percent): for code that
/// has to find them again, as picking does.

namespace vellum::toolkit {

/// The number of particles in a percentage of `count`, as renderers have it: computed in single precision and
/// truncated. Negative percentages and NaN give 0, percentages above 100 all.
inline unsigned int drawnOf(unsigned int count, float percent) {
    float const part = static_cast<float>(count) * percent / 100.0F;
    if (!(part > 0.0F)) {
        return 0;
    }
    return part < static_cast<float>(count) ? static_cast<unsigned int>(part) : count;
}

/// Chooses `wanted` of `count` particles, evenly spread over the order of the system: the choice of this
/// toolkit where it copies particles. Systems that are drawn as they are, are thinned by the library's own
/// rule.
///
///     EvenChoice choice(system.size(), drawnOf(system.size(), percent));
///     for each particle, in the order of the system: if (choice.takesNext()) ...
class EvenChoice {
public:
    EvenChoice(unsigned int particleCount, unsigned int wantedCount)
        : count(particleCount), wanted(wantedCount) {}

    /// Whether the next particle is one of them; asked at most `count` times.
    bool takesNext() {
        sum += wanted;
        if (sum < count) {
            return false;
        }
        sum -= count;
        return true;
    }

private:
    std::uint64_t count;
    std::uint64_t wanted;
    std::uint64_t sum = 0;
};

}  // namespace vellum::toolkit
