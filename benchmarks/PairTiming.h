#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <vector>

namespace vellum::benchmarks {

/// The processor time of the calling thread in seconds. Unlike the wall clock it does not count what other
/// programs take of a shared machine.
inline double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

inline double median(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Times two ways to the same result side by side in one run.
///
/// The work is cut into parts. The two take turns at each part, and which of them goes first changes from part
/// to part, so that whatever else the machine does meets both alike. A ratio compares neighbors in time, and
/// the medians leave out what was disturbed all the same.
class PairTiming {
public:
    explicit PairTiming(unsigned int const& partsPerRound) : parts(partsPerRound) {}

    /// Runs the benchmark; each iteration calls `library(part)` and `other(part)` for each part, 0 and up, after
    /// part 0 was run once to warm up. The benchmark's time is the library's.
    template <class Library, class Other>
    void run(benchmark::State& state, Library const& library, Other const& other) {
        library(0);
        other(0);
        for ([[maybe_unused]] auto const& iteration : state) {
            state.SetIterationTime(_runRound(library, other));
        }
    }

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
    static double _time(Run const& run, unsigned int const& part) {
        double const start = threadSeconds();
        run(part);
        return threadSeconds() - start;
    }

    /// \return the library's time.
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

    unsigned int parts;                  // of a round, at least 1
    bool libraryFirst = true;            // at the next part
    std::vector<double> librarySeconds;  // one entry for each part of each round
    std::vector<double> otherSeconds;    // alike
};

}  // namespace vellum::benchmarks
