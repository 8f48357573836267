// What drawMesh() costs, compared with Mesh_RL_GL::render(MeshShading) of the same mesh of a million triangles. Each
// answer is the ratio of two times that are measured alternately in one run:
//  - StaticMesh: a frame of an unchanged mesh. Bound: at most 1.02.
//  - MovingMesh: a frame whose positions have moved, so that their buffer is filled again. Bound: at most 1.02.
//
// Constant: the mesh (a wavy grid with vertex normals in buffers), the driver and its context, the shading.
// The viewport is small, so that the cost of a frame is the work on the triangles.

#include "benchmarks/GridScene.h"
#include "benchmarks/PairTiming.h"

#include "Core_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "offscreen/OffscreenContext.h"
#include "toolkit/draw_mesh.h"

#include <benchmark/benchmark.h>

#include <GL/gl.h>

namespace vellum::benchmarks {
namespace {

constexpr unsigned int SQUARES = 708;  // along a side of the grid
constexpr unsigned int TRIANGLES = SQUARES * SQUARES * 2;
constexpr unsigned int FRAMES_PER_ROUND = 30;
constexpr int ROUNDS = 2;

GridScene<Core_RL_GL>& scene() {
    static GridScene<Core_RL_GL> all(SQUARES, Mesh::NO_CREASE);
    return all;
}

void measure(benchmark::State& state, bool isMoving) {
    char const* const error = scene().error();
    if (error != nullptr) {
        state.SkipWithError(error);
        return;
    }
    Mesh& mesh = scene().mesh;
    Mesh_RL_GL& renderer = *scene().renderer;
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_DEPTH_TEST);
    toolkit::MeshStyle const style;
    MeshShading const shading;
    auto const frame = [&](auto const& draw) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        if (isMoving) {
            mesh.markModified(mesh.positions());
        }
        draw();
        glFinish();
    };
    PairTiming timing(FRAMES_PER_ROUND);
    timing.run(
        state, [&](unsigned int const&) { frame([&] { drawMesh(renderer, style); }); },
        [&](unsigned int const&) { frame([&] { renderer.render(shading); }); });
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(FRAMES_PER_ROUND) * TRIANGLES);
    state.counters["library_ms"] = timing.librarySecondsPerRound() * 1e3 / FRAMES_PER_ROUND;
    state.counters["other_ms"] = timing.otherSecondsPerRound() * 1e3 / FRAMES_PER_ROUND;
    state.counters["library/renderer"] = timing.ratio();
}

void StaticMesh(benchmark::State& state) {
    measure(state, false);
}

void MovingMesh(benchmark::State& state) {
    measure(state, true);
}

BENCHMARK(StaticMesh)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(ROUNDS);
BENCHMARK(MovingMesh)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(ROUNDS);

}  // namespace
}  // namespace vellum::benchmarks
