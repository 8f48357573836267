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
///     EvenThinning::Marks marks;
///     while (particles are left && !thinning.isComplete()) {
///         unsigned int const decided = thinning.decide(left, marks);
///         ... of the next `decided` particles, marks.offsets are the taken ones, or the skipped ones ...
///     }
///
/// How it decides without a division for each particle: with q the largest quotient whose hundredfold is no
/// more than the percentage, taken / visited rounds to q or less when it is below the number half-way between q
/// and the next one up, or on it and q is even. Below 2^24 particles the product of that number and `visited`
/// is exact in double precision, and where the next particle is taken, or skipped, follows by one product.
class EvenThinning {
public:
    /// Which of the particles that were decided on are taken, or skipped where most are taken.
    struct Marks {
        static constexpr unsigned int MOST = 256;

        unsigned int count = 0;
        unsigned int offsets[MOST];  // ascending, counted from the first particle that was decided on
    };

    /// Percentages that are negative or not a number choose no particle, those above 100 choose all.
    EvenThinning(unsigned int const& count, float const& percent)
        : percent(percent), wanted(_target(count, percent)), mostlyTaken(percent > 50.0F) {
        if (wanted != 0 && percent < 100.0F) {
            _findBound();
        }
    }

    unsigned int target() const { return wanted; }           ///< particles to draw
    unsigned int missing() const { return wanted - taken; }  ///< of them, those that were not taken yet
    bool isComplete() const { return taken == wanted; }      ///< whether all of them were taken

    /// Whether marks are the skipped particles, not the taken ones.
    bool marksSkipped() const { return mostlyTaken; }

    /// Decides on the next particles, at most `count` of them, at least one. `count` is above 0, and the
    /// thinning is not complete.
    /// \return on how many.
    unsigned int decide(unsigned int const& count, Marks& marks) {
        marks.count = 0;
        if (percent >= 100.0F) {
            unsigned int const all = std::min(count, missing());
            visited += all;
            taken += all;
            return all;
        }
        isBeyondExact = isBeyondExact || visited + std::uint64_t{count} >= EXACT;
        unsigned int const decided = isBeyondExact ? _decideOneByOne(count, marks)
                                     : mostlyTaken ? _decideSkipped(count, marks)
                                                   : _decideTaken(count, marks);
        visited += decided;
        taken += mostlyTaken ? decided - marks.count : marks.count;
        return decided;
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

    // No more than half of the particles are taken. Where each one stands follows from how many were taken before
    // it, and from nothing else, so that many are found at once. The estimate is the particle or the one before it.
    unsigned int _decideTaken(unsigned int const& count, Marks& marks) const {
        int const end = static_cast<int>(visited + count);
        unsigned int const most = std::min(missing(), Marks::MOST);
        auto before = static_cast<double>(taken);
        for (unsigned int k = 0; k < most; ++k, before += 1.0) {
            auto index = static_cast<int>(std::min(before * visitsPerTaken, double{EXACT}));
            double const limit = index * bound;
            bool const isBehind = boundIsTaken ? limit < before : limit <= before;
            index += isBehind && before != 0.0 ? 1 : 0;  // the first particle of all is always taken
            if (index >= end) {
                return count;
            }
            marks.offsets[k] = static_cast<unsigned int>(index) - visited;
            marks.count = k + 1;
        }
        return marks.offsets[most - 1] + 1;
    }

    // More than half of them: the same with the skipped ones, which are those for which visited - before is too
    // many. The estimate is the particle or one of the two before it.
    unsigned int _decideSkipped(unsigned int const& count, Marks& marks) const {
        int const end = static_cast<int>(visited + count);
        int const onBound = boundIsTaken ? 0 : 1;
        double const part = 1.0 - bound;
        auto before = static_cast<double>(visited - taken);
        unsigned int decided = count;
        for (unsigned int k = 0; k < Marks::MOST; ++k, before += 1.0) {
            auto index = static_cast<int>(std::min(before * visitsPerSkipped, double{EXACT}));
            for (int tries = 0; tries < 2; ++tries) {
                double const room = index * part;
                // Without a branch: no processor could foresee it.
                int const isSkipped =
                    static_cast<int>(room > before) | (static_cast<int>(room == before) & onBound);
                index += 1 - (isSkipped & static_cast<int>(index != 0));  // the first of all is never skipped
            }
            if (index >= end) {
                decided = count;
                break;
            }
            marks.offsets[k] = static_cast<unsigned int>(index) - visited;
            marks.count = k + 1;
            decided = marks.offsets[k] + 1;
        }
        return _untilComplete(decided, marks);
    }

    unsigned int _decideOneByOne(unsigned int const& count, Marks& marks) const {
        unsigned int decided = 0;
        unsigned int takenHere = 0;
        while (decided < count && marks.count < Marks::MOST && takenHere < missing()) {
            bool const takes = _isTaken(taken + takenHere, visited + decided);
            if (takes != mostlyTaken) {
                marks.offsets[marks.count++] = decided;
            }
            takenHere += takes ? 1 : 0;
            ++decided;
        }
        return decided;
    }

    // Where more are taken than are missing, the last ones are left undecided.
    unsigned int _untilComplete(unsigned int decided, Marks& marks) const {
        while (decided - marks.count > missing()) {
            unsigned int const tooMany = decided - marks.count - missing();
            unsigned int const behindLast =
                marks.count != 0 ? decided - marks.offsets[marks.count - 1] - 1 : decided;
            if (tooMany <= behindLast) {
                return decided - tooMany;
            }
            --marks.count;
            decided = marks.offsets[marks.count];
        }
        return decided;
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
};

}  // namespace vellum
