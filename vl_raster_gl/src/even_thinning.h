#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace vellum {

/// Chooses a percentage of the particles of a system, spread evenly over the order in which they are visited.
///
/// Rule: the particle that is visited while `taken` particles are taken, and `visited` were visited, is taken
/// when taken / visited * 100 (in single precision; 0 for the first one) is no more than the percentage, until
/// target() particles are taken.
///
///     EvenThinning thinning(system.size(), percent);
///     while (particles are left) {
///         EvenThinning::Step const step = thinning.step(left);
///         ... step.skip particles are left out, then step.take are drawn ...
///     }
///
/// How it decides without a division for each particle: with q the largest quotient whose hundredfold is no
/// more than the percentage, taken / visited rounds to q or less when it is below the number half-way between q
/// and the next one up, or on it and q is even. Below 2^24 particles the product of that number and `visited`
/// is exact in double precision, and where the next particle is taken, or skipped, follows by one product.
class EvenThinning {
public:
    struct Step {
        unsigned int skip;
        unsigned int take;
    };

    /// Percentages that are negative or not a number choose no particle, those above 100 choose all.
    EvenThinning(unsigned int const& count, float const& percent)
        : percent(percent), wanted(_target(count, percent)), mostlyTaken(percent > 50.0F) {
        if (wanted != 0 && percent < 100.0F) {
            _findBound();
            next = _following();
        }
    }

    unsigned int target() const { return wanted; }           ///< particles to draw
    unsigned int missing() const { return wanted - taken; }  ///< of them, those that were not taken yet
    bool isComplete() const { return taken == wanted; }      ///< whether all of them were taken

    /// Decides on the next particles, at most `count` of them, at least one. `count` is above 0, and the
    /// thinning is not complete.
    Step step(unsigned int const& count) {
        Step result{0, std::min(count, missing())};
        if (percent < 100.0F) {
            isBeyondExact = isBeyondExact || visited + std::uint64_t{count} >= EXACT;
            result = isBeyondExact ? _one() : mostlyTaken ? _run(count) : _single(count);
        }
        visited += result.skip + result.take;
        taken += result.take;
        return result;
    }

private:
    static constexpr unsigned int EXACT = 1U << 24;  // counts below it are exact in single precision

    static unsigned int _target(unsigned int const& count, float const& percent) {
        float const exact = static_cast<float>(count) * percent / 100.0F;
        if (!(exact > 0.0F)) {
            return 0;
        }
        return exact >= static_cast<float>(count) ? count : static_cast<unsigned int>(exact);
    }

    void _findBound() {
        float q = percent / 100.0F;
        while (q * 100.0F > percent) {
            q = std::nextafter(q, 0.0F);
        }
        while (std::nextafter(q, 2.0F) * 100.0F <= percent) {
            q = std::nextafter(q, 2.0F);
        }
        bound = (static_cast<double>(q) + static_cast<double>(std::nextafter(q, 2.0F))) / 2.0;
        std::uint32_t bits = 0;
        std::memcpy(&bits, &q, sizeof(bits));
        boundIsTaken = (bits & 1U) == 0;
        visitsPerTaken = 1.0 / bound;
        visitsPerSkipped = 1.0 / (1.0 - bound);
    }

    bool _isTaken(unsigned int const& alreadyTaken, unsigned int const& alreadyVisited) const {
        double const limit = static_cast<double>(static_cast<float>(alreadyVisited)) * bound;
        double const quotient = static_cast<double>(static_cast<float>(alreadyTaken));
        return alreadyVisited == 0 || quotient < limit || (boundIsTaken && quotient == limit);
    }

    // Looks up where the next particle is that is taken, or skipped where most are taken. They are found many at
    // once, as each follows from how many there were before it and from nothing else.
    unsigned int _following() {
        if (ahead == AHEAD) {
            if (mostlyTaken) {
                _findSkipped();
            } else {
                _findTaken();
            }
            found += AHEAD;
            ahead = 0;
        }
        return indices[ahead++];
    }

    // The estimate is the particle itself or the one before it.
    void _findTaken() {
        int const onBound = boundIsTaken ? 0 : 1;
        for (unsigned int k = 0; k < AHEAD; ++k) {
            double const before = found + k;
            auto const estimate = static_cast<int>(std::min(before * visitsPerTaken, double{EXACT}));
            double const limit = estimate * bound;
            int const isBehind =
                static_cast<int>(limit < before) | (static_cast<int>(limit == before) & onBound);
            indices[k] = static_cast<unsigned int>(estimate + isBehind);
        }
        indices[0] = found == 0 ? 0 : indices[0];  // the first particle of all is always taken
    }

    // The first particle for which visited - before is too many. The estimate is that one or one of the two
    // before it.
    void _findSkipped() {
        int const onBound = boundIsTaken ? 0 : 1;
        double const part = 1.0 - bound;
        for (unsigned int k = 0; k < AHEAD; ++k) {
            double const before = found + k;
            auto index = static_cast<int>(std::min(before * visitsPerSkipped, double{EXACT}));
            for (int tries = 0; tries < 2; ++tries) {
                double const room = index * part;
                index += 1 - (static_cast<int>(room > before) | (static_cast<int>(room == before) & onBound));
            }
            indices[k] = static_cast<unsigned int>(index);
        }
        indices[0] = found == 0 ? 1 : indices[0];  // the first particle of all is never skipped
    }

    Step _one() { return _isTaken(taken, visited) ? Step{0, 1} : Step{1, 0}; }

    // No more than half of the particles are taken: none has a neighbour that is.
    Step _single(unsigned int const& count) {
        unsigned int const skip = next > visited ? next - visited : 0;
        if (skip >= count) {
            return {count, 0};
        }
        next = _following();
        return {skip, 1};
    }

    // More than half of them: none that is skipped has a neighbour that is.
    Step _run(unsigned int const& count) {
        unsigned int skip = 0;
        if (next == visited) {
            skip = 1;
            next = _following();
        }
        return {skip, std::min({next - visited - skip, count - skip, missing()})};
    }

    float percent;
    unsigned int wanted;  // particles to take in all
    bool mostlyTaken;     // more than half
    bool boundIsTaken = false;
    double bound = 0;             // taken / visited up to here is taken; at here, too, where boundIsTaken
    double visitsPerTaken = 0;    // 1 / bound
    double visitsPerSkipped = 0;  // 1 / (1 - bound)
    unsigned int taken = 0;       // at most wanted
    unsigned int visited = 0;     // particles decided on
    bool isBeyondExact = false;   // the rule is asked for every particle from here on
    static constexpr unsigned int AHEAD = 64;
    unsigned int found = 0;       // particles that were found and put into `indices`
    unsigned int ahead = AHEAD;   // the first of `indices` that was not given out
    unsigned int indices[AHEAD];  // of particles that are taken, or skipped where most are taken
    unsigned int next = 0;        // the next particle that is taken, or skipped where most are taken
};

}  // namespace vellum
