// Questions about a mesh of a million triangles. Each answer is the ratio of two times that are measured
// alternately in one run:
//  - Refill: which part of the memcpy bandwidth does a refill of the buffers of positions and vertex normals
//    reach, counting the bytes read from arrays and written to buffers? Bound: at least half.
//  - StaticFrame: what does a frame of an unchanged mesh cost, compared with the same draw written by hand?
//    Bound: at most 1.02.
//  - Adjacency: what does workAdjacency cost, compared with one std::sort of the keys of all edges? Measured
//    for triangles in the order of the grid and for shuffled ones. Bound: at most 4.
//  - Normals: what do normals with hard edges cost, which need three passes over the triangles, compared with
//    normals without, which need one? Measured with an existing adjacency (bound: at most 3) and with one
//    that is derived meanwhile (no bound).
//
// Constant: the mesh (a wavy grid), the driver and its context, usage and contents of the buffers. The
// viewport is small, so that the cost of a frame is the work on the triangles. All work is on one core but
// that of TwoThreads: how many times faster is a refill with two threads than with one, on the wall?

#include "benchmarks/GridScene.h"
#include "benchmarks/PairTiming.h"
#include "frames_by_hand.h"

#include "Core_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "foundation/basic/threads.h"
#include "foundation/geometry/Mesh.h"
#include "offscreen/OffscreenContext.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::benchmarks {
namespace {

constexpr unsigned int SQUARES = 708;  // along a side of the grid
constexpr unsigned int TRIANGLES = SQUARES * SQUARES * 2;
constexpr std::size_t SOUP_FLOATS = std::size_t{TRIANGLES} * 9;
constexpr int ROUNDS = 2;
constexpr unsigned int FRAMES_PER_ROUND = 50;
constexpr unsigned int REFILLS_PER_ROUND = 20;
constexpr unsigned int SORTS_PER_ROUND = 3;
constexpr float CREASE = 0.7F;

GridScene<Core_RL_GL>& scene() {
    static GridScene<Core_RL_GL> all(SQUARES, CREASE);
    return all;
}

bool isReady(benchmark::State& state) {
    setThreadLimit(1);
    char const* const error = scene().error();
    if (error != nullptr) {
        state.SkipWithError(error);
    }
    return error == nullptr;
}

void report(benchmark::State& state, PairTiming const& timing, unsigned int parts, char const* ratioName,
            double const& ratio) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(parts) * TRIANGLES);
    state.counters["library_ms"] = timing.librarySecondsPerRound() * 1e3 / parts;
    state.counters["other_ms"] = timing.otherSecondsPerRound() * 1e3 / parts;
    state.counters[ratioName] = ratio;
}

void Refill(benchmark::State& state) {
    if (!isReady(state)) {
        return;
    }
    Mesh& mesh = scene().mesh;
    Mesh_RL_GL& renderer = *scene().renderer;
    std::size_t bytes = 2 * SOUP_FLOATS * sizeof(float);
    for (ArrayId const& id :
         {mesh.positions(), mesh.triangles(), mesh.vertexNormals(), mesh.normalTriangles()}) {
        ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
        bytes += std::size_t{array->size} * array->elementSize;
    }
    std::vector<char> const from(bytes / 2, 1);
    std::vector<char> to(bytes / 2, 2);

    PairTiming timing(REFILLS_PER_ROUND);
    timing.run(
        state,
        [&](unsigned int const&) {
            mesh.markModified(mesh.positions());
            mesh.markModified(mesh.vertexNormals());
            renderer.createBufferObjects(nullptr, false);
        },
        [&](unsigned int const&) {
            std::memcpy(to.data(), from.data(), from.size());
            benchmark::ClobberMemory();
        });
    state.counters["MB"] = static_cast<double>(bytes) * 1e-6;
    report(state, timing, REFILLS_PER_ROUND, "of_memcpy", 1 / timing.ratio());
}

void StaticFrame(benchmark::State& state) {
    if (!isReady(state)) {
        return;
    }
    Mesh_RL_GL& renderer = *scene().renderer;
    MeshByHand const byHand(scene().mesh);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_DEPTH_TEST);
    auto const frame = [](auto const& draw) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw();
        glFinish();
    };
    PairTiming timing(FRAMES_PER_ROUND);
    timing.run(
        state, [&](unsigned int const&) { frame([&] { renderer.render(); }); },
        [&](unsigned int const&) { frame([&] { byHand.draw(); }); });
    report(state, timing, FRAMES_PER_ROUND, "library/by_hand", timing.ratio());
}

void Adjacency(benchmark::State& state, bool const& isShuffled) {
    Mesh mesh;
    makeGrid(mesh, SQUARES, CREASE);
    if (isShuffled) {
        auto* const triangles = VL_ArrayServer.resolve(mesh.triangles())->as<Tuple3<unsigned int>>();
        std::shuffle(triangles, triangles + TRIANGLES, std::mt19937(1));
        mesh.markModified(mesh.triangles());
    }
    auto const* const corners =
        static_cast<unsigned int const*>(VL_ArrayServer.resolve(mesh.triangles())->data);
    std::vector<std::uint64_t> keys;
    keys.reserve(std::size_t{TRIANGLES} * 3);
    for (std::size_t edge = 0; edge < std::size_t{TRIANGLES} * 3; ++edge) {
        std::uint64_t const a = corners[edge];
        std::uint64_t const b = corners[edge % 3 == 2 ? edge - 2 : edge + 1];
        keys.push_back(std::min(a, b) << 32 | std::max(a, b));
    }
    // Each sort needs an unsorted copy of the keys.
    std::vector<std::vector<std::uint64_t>> copies(1 + SORTS_PER_ROUND * ROUNDS, keys);
    std::size_t next = 0;

    PairTiming timing(SORTS_PER_ROUND);
    timing.run(
        state, [&](unsigned int const&) { mesh.workAdjacency(); },
        [&](unsigned int const&) {
            std::sort(copies[next].begin(), copies[next].end());
            ++next;
        });
    report(state, timing, SORTS_PER_ROUND, "library/sort", timing.ratio());
}

void Normals(benchmark::State& state, bool const& hasAdjacency) {
    Mesh mesh;
    makeGrid(mesh, SQUARES, CREASE);
    if (!hasAdjacency) {
        // Marks the adjacency as older than the triangles, so that it is derived again.
        mesh.markModified(mesh.triangles());
    }
    PairTiming timing(SORTS_PER_ROUND);
    timing.run(
        state, [&](unsigned int const&) { mesh.workNormals(CREASE); },
        [&](unsigned int const&) { mesh.workNormals(Mesh::NO_CREASE); });
    report(state, timing, SORTS_PER_ROUND, "library/one_pass", timing.ratio());
}

void TwoThreads(benchmark::State& state) {
    if (!isReady(state)) {
        return;
    }
    Mesh& mesh = scene().mesh;
    Mesh_RL_GL& renderer = *scene().renderer;
    auto const refill = [&](int threads) {
        setThreadLimit(threads);
        mesh.markModified(mesh.positions());
        mesh.markModified(mesh.vertexNormals());
        renderer.createBufferObjects(nullptr, false);
        setThreadLimit(1);
    };
    PairTiming timing(REFILLS_PER_ROUND, wallSeconds);
    timing.run(
        state, [&](unsigned int const&) { refill(2); }, [&](unsigned int const&) { refill(1); });
    state.counters["two_ms"] = timing.libraryFastest() * 1e3;
    state.counters["one_ms"] = timing.otherFastest() * 1e3;
    state.counters["one/two"] = 1 / timing.ratio();
    state.counters["fastest_one/two"] = timing.otherFastest() / timing.libraryFastest();
}

void settings(benchmark::internal::Benchmark* pair) {
    pair->UseManualTime()->Iterations(ROUNDS)->Unit(benchmark::kMillisecond);
}

BENCHMARK(Refill)->Apply(settings);
BENCHMARK(TwoThreads)->Apply(settings);
BENCHMARK(StaticFrame)->Apply(settings);
BENCHMARK_CAPTURE(Adjacency, ordered, false)->Apply(settings);
BENCHMARK_CAPTURE(Adjacency, shuffled, true)->Apply(settings);
BENCHMARK_CAPTURE(Normals, with_adjacency, true)->Apply(settings);
BENCHMARK_CAPTURE(Normals, without_adjacency, false)->Apply(settings);

}  // namespace
}  // namespace vellum::benchmarks
