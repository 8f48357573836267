#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <vector>

namespace vellum::benchmarks {

/// The CPU time of the calling thread in seconds. Unlike wall-clock time it does not count the time of other
/// programs on a shared machine.
inline double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// The time on the wall in seconds, for work that several threads share: their CPU times add up.
inline double wallSeconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

inline double median(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Times two implementations of the same work alternately in one run.
///
/// The work is split into parts. For each part both run once, and the one that runs first alternates, so that
/// other load on the machine affects both equally. A ratio compares measurements that are adjacent in time,
/// and the median discards the disturbed ones.
class PairTiming {
public:
    explicit PairTiming(unsigned int const& partsPerRound, double (*clock)() = threadSeconds)
        : parts(partsPerRound), clock(clock) {}

    /// Runs the benchmark: after a warm-up with part 0, each iteration calls `library(part)` and
    /// `other(part)` for every part from 0 on. The reported time is the time of the library.
    template <class Library, class Other>
    void run(benchmark::State& state, Library const& library, Other const& other) {
        library(0);
        other(0);
        for ([[maybe_unused]] auto const& iteration : state) {
            state.SetIterationTime(_runRound(library, other));
        }
    }

    /// The fastest part of each side, in seconds: what a busy machine disturbs least.
    double libraryFastest() const { return *std::min_element(librarySeconds.begin(), librarySeconds.end()); }
    double otherFastest() const { return *std::min_element(otherSeconds.begin(), otherSeconds.end()); }

    double librarySecondsPerRound() const { return median(librarySeconds) * parts; }
    double otherSecondsPerRound() const { return median(otherSeconds) * parts; }

    /// The median over all parts of library time / other time.
    double ratio() const {
        std::vector<double> ratios;
        ratios.reserve(librarySeconds.size());
        for (std::size_t i = 0; i < librarySeconds.size(); ++i) {
            ratios.push_back(librarySeconds[i] / otherSeconds[i]);
        }
        return median(ratios);
    }

private:
    template <class Run>
    double _time(Run const& run, unsigned int const& part) const {
        double const start = clock();
        run(part);
        return clock() - start;
    }

    /// \return the time of the library in seconds.
    template <class Library, class Other>
    double _runRound(Library const& library, Other const& other) {
        double librarySum = 0.0;
        for (unsigned int part = 0; part < parts; ++part) {
            if (libraryFirst) {
                librarySeconds.push_back(_time(library, part));
                otherSeconds.push_back(_time(other, part));
            } else {
                otherSeconds.push_back(_time(other, part));
                librarySeconds.push_back(_time(library, part));
            }
            libraryFirst = !libraryFirst;
            librarySum += librarySeconds.back();
        }
        return librarySum;
    }

    unsigned int parts;  // of a round, at least 1
    double (*clock)();
    bool libraryFirst = true;            // at the next part
    std::vector<double> librarySeconds;  // one entry per part and round
    std::vector<double> otherSeconds;    // one entry per part and round
};

}  // namespace vellum::benchmarks
