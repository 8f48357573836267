#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace vellum {

/// The number of particles in a percentage of `count`, computed in single precision and truncated. Negative
/// percentages and NaN give 0, percentages above 100 all.
inline unsigned int partOf(unsigned int count, float percent) {
    float const part = static_cast<float>(count) * percent / 100.0F;
    if (!(part > 0.0F)) {
        return 0;
    }
    return part < static_cast<float>(count) ? static_cast<unsigned int>(part) : count;
}

/// Selects a percentage of the particles of a system, evenly spread over the order of visits.
///
/// Rule: after `visited` particles, of which `taken` are selected, the next one is selected if taken /
/// visited * 100 (in single precision; 0 for the first one) does not exceed the percentage, until target()
/// particles are selected.
///
///     EvenThinning thinning(system.size(), percent);
///     EvenThinning::Marks marks;
///     while (particles are left && !thinning.isComplete()) {
///         if (thinning.takesAll()) {
///             ... of the next particles, thinning.takeAll(left) are taken ...
///         } else {
///             unsigned int const decided = thinning.decide(left, marks);
///             ... of the next `decided` particles, marks.offsets are the taken ones ...
///         }
///     }
///
/// Decision without a division per particle: let q be the largest quotient whose hundredfold does not exceed
/// the percentage. taken / visited rounds to q or less if it is below the number half-way between q and the
/// next float, or equal to it and q is even. Below 2^24 particles the product of that number, the bound, and
/// `visited` is exact. The particles taken before one are then the integer part of the bound times the
/// particles between the first one and it, and one more for the first; where the bound itself is not taken,
/// products that are integers count one less.
class EvenThinning {
public:
    /// The selected particles among those that were decided.
    struct Marks {
        static constexpr unsigned int MOST = 512;

        unsigned int count = 0;
        unsigned int offsets[MOST + 1];  // ascending, relative to the first particle; the last one is scratch
    };

    /// Negative percentages and NaN select no particle, percentages above 100 all.
    EvenThinning(unsigned int count, float percent) : percent(percent), wanted(partOf(count, percent)) {
        if (wanted != 0 && percent < 100.0F) {
            _findBound();
        }
    }

    unsigned int target() const { return wanted; }           ///< particles to draw
    unsigned int missing() const { return wanted - taken; }  ///< of them, those that were not taken yet
    bool isComplete() const { return taken == wanted; }      ///< whether all of them were taken

    /// Selects the next `count` particles, or as many as are missing. For 100 percent and more.
    /// \return on how many.
    unsigned int takeAll(unsigned int count) {
        unsigned int const all = std::min(count, missing());
        visited += all;
        taken += all;
        return all;
    }

    bool takesAll() const { return percent >= 100.0F; }  ///< Whether takeAll() decides.

    /// Whether skip() may pass over all particles of a system of this size.
    bool canSkip(unsigned int count) const { return takesAll() || count < EXACT; }

    /// Passes over the next `count` particles: the state is then that after their decisions. Takes the same
    /// time for every count, so that parts of a system can be decided independently. \pre canSkip() of the
    /// size of the system.
    void skip(unsigned int count) {
        visited += count;
        taken = std::min(wanted, takesAll() ? visited : _takenBefore(visited));
    }

    /// Decides on the next particles, at most `count` of them, at least one. `count` is above 0, and the
    /// thinning is not complete.
    /// \return on how many.
    unsigned int decide(unsigned int count, Marks& marks) {
        marks.count = 0;
        bool const isExact = visited + std::uint64_t{count} < EXACT;
        unsigned int const decided = !isExact                 ? _decideOneByOne(count, marks)
                                     : percent <= FEW_PERCENT ? _decideTaken(count, marks)
                                                              : _decideAll(count, marks);
        visited += decided;
        taken += marks.count;
        return decided;
    }

private:
    static constexpr unsigned int EXACT = 1U << 24;  // counts below it are exact in single precision
    static constexpr unsigned int GROUP = 8;
    // Up to this percentage it is faster to find only the selected particles.
    static constexpr float FEW_PERCENT = 12.0F;
    // The bound has 25 binary digits, and above FEW_PERCENT no more than three zeros before them: all of them
    // and a digit behind them are among the first 32 behind the point.
    static constexpr unsigned int DIGITS = 32;

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
        step = static_cast<std::int64_t>(std::ldexp(bound, DIGITS));
    }

    // The selected ones of the first particles, without regard to the target; see the decision without a
    // division.
    unsigned int _takenBefore(unsigned int index) const {
        if (index < 2 || wanted == 0) {
            return wanted != 0 ? index : 0;
        }
        double const product = (index - 1) * bound;
        return boundIsTaken ? static_cast<unsigned int>(product) + 1
                            : static_cast<unsigned int>(std::ceil(product));
    }

    bool _isTaken(unsigned int alreadyTaken, unsigned int alreadyVisited) const {
        double const limit = static_cast<double>(static_cast<float>(alreadyVisited)) * bound;
        double const quotient = static_cast<double>(static_cast<float>(alreadyTaken));
        return alreadyVisited == 0 || quotient < limit || (boundIsTaken && quotient == limit);
    }

    // The position of a selected particle depends only on the number before it, so that several are found at
    // once. The estimate is the particle or the one before it.
    unsigned int _decideTaken(unsigned int count, Marks& marks) const {
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

    // Every particle is written, and the next one overwrites it if it is not selected: cheaper than an
    // unpredictable branch. Groups without a gap are written at once.
    unsigned int _decideAll(unsigned int count, Marks& marks) const {
        // The first particle of all is taken although 0 is not below 0 times the bound: the bound counts as
        // taken there, and the rule for the others begins with the third.
        bool const isStart = visited < 2;
        unsigned int const decided = std::min(count, isStart ? 2 - visited : Marks::MOST);
        std::int64_t const onBound = boundIsTaken || isStart ? 0 : 1;
        std::int64_t const one = std::int64_t{1} << DIGITS;
        // The particles taken before one, less those taken already.
        std::int64_t place = (std::int64_t{visited} - 1) * step - onBound + (1 - std::int64_t{taken}) * one;
        unsigned int k = 0;
        for (; k + GROUP <= decided; k += GROUP) {
            std::int64_t const first = place >> DIGITS;
            std::int64_t const behind = place + GROUP * step;
            if ((behind >> DIGITS) - first == GROUP) {
                for (unsigned int j = 0; j < GROUP; ++j) {
                    marks.offsets[first + j] = k + j;
                }
            } else {
                for (unsigned int j = 0; j < GROUP; ++j) {
                    marks.offsets[(place + j * step) >> DIGITS] = k + j;
                }
            }
            place = behind;
        }
        for (; k < decided; ++k, place += step) {
            marks.offsets[place >> DIGITS] = k;
        }
        marks.count = std::min(static_cast<unsigned int>(place >> DIGITS), missing());
        return decided;
    }

    unsigned int _decideOneByOne(unsigned int count, Marks& marks) const {
        unsigned int const most = std::min(missing(), Marks::MOST);
        unsigned int decided = 0;
        while (decided < count && marks.count < most) {
            if (_isTaken(taken + marks.count, visited + decided)) {
                marks.offsets[marks.count++] = decided;
            }
            ++decided;
        }
        return decided;
    }

    float percent;
    unsigned int wanted;        // particles to take in all
    bool boundIsTaken = false;  // of taken / visited
    double bound = 0;           // smaller quotients are selected; equal ones if boundIsTaken
    double visitsPerTaken = 0;  // 1 / bound
    std::int64_t step = 0;      // the bound, with DIGITS digits behind the point
    unsigned int taken = 0;     // at most wanted
    unsigned int visited = 0;   // particles decided on
};

}  // namespace vellum
