// Question: how fast is the text of a LAMMPS dump read into frames, on all cores? Bound: at least 300 MB/s
// for each core up to two, of dumps in the order of the ids. VL_THREADS limits the cores.
//
// Constant: a million particles with the columns id type x y z vx vy vz, numbers of six digits as LAMMPS
// writes them, in the page cache. One dump is in the order of the ids, one is not. Both sides read the text
// from memory: the library parses it, the other side only finds the line feeds with memchr.

#include "benchmarks/PairTiming.h"

#include "viewport/files/particles/LammpsDump.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

namespace vellum::benchmarks {
namespace {

constexpr unsigned int PARTICLES = 1000000;
constexpr unsigned int STRIDE = 611953;  // prime to the count, so that the ids are a permutation
constexpr int ROUNDS = 5;

std::string dumpText(bool const& isSorted) {
    std::string text =
        "ITEM: TIMESTEP\n0\nITEM: NUMBER OF ATOMS\n" + std::to_string(PARTICLES) +
        "\nITEM: BOX BOUNDS pp pp pp\n0 100\n0 100\n0 100\nITEM: ATOMS id type x y z vx vy vz\n";
    for (unsigned int i = 0; i < PARTICLES; ++i) {
        unsigned long const mixed = static_cast<unsigned long>(i) * STRIDE % PARTICLES;
        unsigned long const id = (isSorted ? i : mixed) + 1;
        double const t = 0.37 * i;
        char line[160];
        int const size =
            std::snprintf(line, sizeof line, "%lu 1 %g %g %g %g %g %g\n", id, 50 + 50 * std::sin(t),
                          50 + 50 * std::cos(1.7 * t), 50 + 50 * std::sin(2.3 * t), 3 * std::cos(3.1 * t),
                          2 * std::sin(4.3 * t), std::cos(5.9 * t));
        text.append(line, static_cast<std::size_t>(size));
    }
    return text;
}

void lammpsDump(benchmark::State& state, bool const& isSorted) {
    std::string const text = dumpText(isSorted);
    bool isWhole = true;
    PairTiming timing(1);
    timing.run(
        state,
        [&](unsigned int const&) {
            viewport::Result<viewport::LoadedFrame> const result =
                viewport::readLammpsDump(text, std::nullopt, {});
            isWhole = isWhole && result.isOk() && result.value().frame.positions.size() == PARTICLES;
        },
        [&](unsigned int const&) {
            std::size_t lines = 0;
            char const* here = text.data();
            char const* const end = here + text.size();
            while (void const* const feed = std::memchr(here, '\n', static_cast<std::size_t>(end - here))) {
                here = static_cast<char const*>(feed) + 1;
                ++lines;
            }
            benchmark::DoNotOptimize(lines);
        });
    if (!isWhole) {
        state.SkipWithError("the dump was not read");
        return;
    }
    double const megabytes = 1e-6 * static_cast<double>(text.size());
    state.counters["MB"] = megabytes;
    state.counters["MB/s"] = megabytes / timing.librarySecondsPerRound();
    state.counters["lines_MB/s"] = megabytes / timing.otherSecondsPerRound();
    state.counters["ratio"] = timing.ratio();
}

BENCHMARK_CAPTURE(lammpsDump, in_order, true)
    ->UseManualTime()
    ->Iterations(ROUNDS)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(lammpsDump, mixed, false)
    ->UseManualTime()
    ->Iterations(ROUNDS)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vellum::benchmarks
