// What drawMesh() costs, compared with Mesh_RL_GL::render(MeshShading) of the same mesh of a million triangles. Each
// answer is the ratio of two times that are measured alternately in one run:
//  - StaticMesh: a frame of an unchanged mesh. Bound: at most 1.02.
//  - MovingMesh: a frame whose positions have moved, so that their buffer is filled again. Bound: at most 1.02.
//
// Constant: the mesh (a wavy grid with vertex normals in buffers), the driver and its context, the shading. The
// viewport is small, so that the cost of a frame is the work on the triangles.

#include "benchmarks/PairTiming.h"

#include "Core_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "offscreen/OffscreenContext.h"
#include "toolkit/draw_mesh.h"
#include "toolkit/mesh_arrays.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include <GL/gl.h>

namespace vellum::benchmarks {
namespace {

constexpr unsigned int SQUARES = 708;  // along a side of the grid
constexpr unsigned int TRIANGLES = SQUARES * SQUARES * 2;
constexpr unsigned int FRAMES_PER_ROUND = 30;
constexpr int ROUNDS = 2;

void makeGrid(Mesh& mesh) {
    std::vector<Vector3<double>> positions;
    std::vector<std::uint32_t> corners;
    for (unsigned int y = 0; y <= SQUARES; ++y) {
        for (unsigned int x = 0; x <= SQUARES; ++x) {
            double const u = 2.0 * x / SQUARES - 1;
            double const v = 2.0 * y / SQUARES - 1;
            positions.push_back({u, v, 0.3 * std::sin(7 * u) * std::cos(5 * v)});
        }
    }
    for (unsigned int y = 0; y < SQUARES; ++y) {
        for (unsigned int x = 0; x < SQUARES; ++x) {
            unsigned int const corner = y * (SQUARES + 1) + x;
            corners.insert(corners.end(), {corner, corner + 1, corner + SQUARES + 2, corner,
                                           corner + SQUARES + 2, corner + SQUARES + 1});
        }
    }
    toolkit::setPositions(mesh, positions);
    toolkit::setTriangles(mesh, corners);
    toolkit::prepareMesh(mesh);
}

/// One context and one mesh for both benchmarks, created by the first one that runs.
class Scene {
public:
    static Scene& instance() {
        static Scene scene;
        return scene;
    }

    char const* error() const { return context.isValid() ? nullptr : context.error().c_str(); }

private:
    Scene() : context({64, 64}) {
        makeGrid(mesh);
        if (context.isValid()) {
            benchmark::AddCustomContext("GL", reinterpret_cast<char const*>(glGetString(GL_RENDERER)));
            renderer = std::make_unique<Mesh_RL_GL>(&mesh, false);
            renderer->useBufferObjects = true;
            glEnable(GL_LIGHTING);
            glEnable(GL_LIGHT0);
            glEnable(GL_DEPTH_TEST);
        }
    }

    OffscreenContext context;
    Core_RL_GL layer;

public:
    Mesh mesh;
    std::unique_ptr<Mesh_RL_GL> renderer;  // deleted before the context, which its buffers need
};

void measure(benchmark::State& state, bool isMoving) {
    char const* const error = Scene::instance().error();
    if (error != nullptr) {
        state.SkipWithError(error);
        return;
    }
    Mesh& mesh = Scene::instance().mesh;
    Mesh_RL_GL& renderer = *Scene::instance().renderer;
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
