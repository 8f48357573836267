// Question: which part of the memcpy bandwidth does createBuffers_forRenderArrow3 reach, counting the bytes
// that it writes? Bound: at least half.
//
// Constant: a million arrows with different directions, the number of bytes written (352 per arrow), and
// output memory that was written before, so that no page is allocated or touched first while the clock runs.
// Different: the library reads position and direction (and the color, if every arrow has one) and computes;
// memcpy reads as many bytes as it writes.
//
// TwoThreads: how many times faster are one and a half million arrows with two threads than with one, on the
// wall?

#include "benchmarks/PairTiming.h"

#include "Core_RL_GL.h"
#include "foundation/basic/threads.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace vellum::benchmarks {
namespace {

constexpr unsigned int ARROWS = 1000000;
constexpr std::size_t BYTES_PER_ARROW =
    10 * (sizeof(Vector3<float>) + sizeof(Color4<float>)) + (12 + 2 + 4) * sizeof(unsigned int);
static_assert(BYTES_PER_ARROW == 352);
constexpr std::size_t BYTES = ARROWS * BYTES_PER_ARROW;
constexpr int ROUNDS = 15;
constexpr float SCALE = 0.5F;

struct Outputs {
    Array<Vector3<float>> vertices;
    Array<unsigned int> triangles;
    Array<unsigned int> lines;
    Array<unsigned int> quads;
    Array<Color4<float>> colors;

    std::size_t bytes() const {
        return vertices.size() * sizeof(Vector3<float>) + colors.size() * sizeof(Color4<float>) +
               (std::size_t{triangles.size()} + lines.size() + quads.size()) * sizeof(unsigned int);
    }
};

void makeArrows(unsigned int count, bool coloredOneByOne, Array<Vector3<float>>& positions,
                Array<Vector3<float>>& directions, Array<Color4<float>>& colors) {
    positions.reserve(count, false);
    directions.reserve(count, false);
    for (unsigned int i = 0; i < count; ++i) {
        float const t = 0.001F * static_cast<float>(i);
        positions.pushBack({std::sin(t), std::cos(t), t});
        directions.pushBack({std::cos(3.0F * t), std::sin(5.0F * t), std::cos(7.0F * t)});
        if (coloredOneByOne) {
            colors.pushBack({0.5F + 0.5F * std::sin(t), 0.5F, 0.25F, 1.0F});
        }
    }
}

void arrowBuffers(benchmark::State& state, bool const& coloredOneByOne) {
    Array<Vector3<float>> positions;
    Array<Vector3<float>> directions;
    Array<Color4<float>> colors;
    makeArrows(ARROWS, coloredOneByOne, positions, directions, colors);
    Core_RL_GL core;
    Core_RL& layer = core;
    Outputs out;

    // Both are written once, so that their pages exist.
    auto const source = std::make_unique<char[]>(BYTES);
    auto const target = std::make_unique<char[]>(BYTES);
    std::memset(source.get(), 1, BYTES);
    std::memset(target.get(), 2, BYTES);

    PairTiming timing(1);
    timing.run(
        state,
        [&](unsigned int const& /*part*/) {
            layer.createBuffers_forRenderArrow3(positions, directions, colors, SCALE, out.vertices,
                                                out.triangles, out.lines, out.quads, out.colors);
            benchmark::ClobberMemory();
        },
        [&](unsigned int const& /*part*/) {
            std::memcpy(target.get(), source.get(), BYTES);
            benchmark::DoNotOptimize(target.get());
            benchmark::ClobberMemory();
        });
    if (out.bytes() != BYTES) {
        state.SkipWithError("the outputs are not of the expected size");
        return;
    }

    constexpr double GIGABYTE = 1e9;
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(ARROWS));
    state.counters["library_GB/s"] = static_cast<double>(BYTES) / timing.librarySecondsPerRound() / GIGABYTE;
    state.counters["memcpy_GB/s"] = static_cast<double>(BYTES) / timing.otherSecondsPerRound() / GIGABYTE;
    state.counters["library/memcpy"] = 1.0 / timing.ratio();
}

void TwoThreads(benchmark::State& state) {
    constexpr unsigned int MORE_ARROWS = 1500000;
    Array<Vector3<float>> positions;
    Array<Vector3<float>> directions;
    Array<Color4<float>> colors;
    makeArrows(MORE_ARROWS, false, positions, directions, colors);
    Core_RL_GL core;
    Outputs out;
    auto const make = [&](int threads) {
        setThreadLimit(threads);
        core.createBuffers_forRenderArrow3(positions, directions, colors, SCALE, out.vertices, out.triangles,
                                           out.lines, out.quads, out.colors);
        benchmark::ClobberMemory();
    };
    PairTiming timing(1, wallSeconds);
    timing.run(
        state, [&](unsigned int const&) { make(2); }, [&](unsigned int const&) { make(1); });
    state.counters["two_ms"] = timing.libraryFastest() * 1e3;
    state.counters["one_ms"] = timing.otherFastest() * 1e3;
    state.counters["one/two"] = 1 / timing.ratio();
    state.counters["fastest_one/two"] = timing.otherFastest() / timing.libraryFastest();
}

void settings(benchmark::internal::Benchmark* pair) {
    pair->UseManualTime()->Iterations(ROUNDS)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(arrowBuffers, colored_alike, false)->Apply(settings);
BENCHMARK_CAPTURE(arrowBuffers, colored_one_by_one, true)->Apply(settings);
BENCHMARK(TwoThreads)->Apply(settings);

}  // namespace
}  // namespace vellum::benchmarks
