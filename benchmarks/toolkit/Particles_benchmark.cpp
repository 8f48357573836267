// Question: what does a frame of a million particles cost, drawn by drawParticles() and colored by the length of a vector,
// compared with a direct call of Particles_RL_GL_v2::render()? Bound: at most 1.02, for each of
//  - unchanged particles, whose buffer is drawn again,
//  - moving particles, whose buffer is filled in every frame,
//  - spheres of both kinds, fewer of them, compared with the direct call between the calls that make them round, written by hand.
//
// And what do colors and sizes of the particles' own cost, of six kinds as with elements, compared with
// drawParticles() of the look above? Bound: at most 1.3 for moving particles.
//
// Constant: the driver and its context, the particles, the look and the path. Both sides must draw the same
// image. The viewport is small, so that the cost of a frame is the work on the particles. Calls shows in
// nanoseconds what a frame of one particle costs, that is what drawParticles() adds to each frame; it has no
// bound.

#include "benchmarks/PairTiming.h"
#include "benchmarks/sine_particles.h"

#include "Particles_RL_GL_v2.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "offscreen/OffscreenContext.h"
#include "toolkit/Layer.h"
#include "toolkit/ParticleRenderer.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::benchmarks {
namespace {

using namespace toolkit;

constexpr unsigned int PARTICLES = 1000000;
constexpr unsigned int SPHERES = 50000;  // software takes many times as long for each
constexpr unsigned int FEW_PARTICLES = 1;
constexpr int SIDE = 64;  // pixels
constexpr int ROUNDS = 10;
constexpr unsigned int FRAMES_PER_ROUND = 10;
constexpr unsigned int FRAMES_OF_FEW = 2000;
constexpr unsigned int VELOCITY = 1;
constexpr float DIAMETER = 0.01F;

constexpr Color4<float> BLUE{0, 0, 1, 1};
constexpr Color4<float> RED{1, 0, 0, 1};
constexpr Color4<float> WHITE{1, 1, 1, 1};

/// A frame by either side. The orthographic view shows a cube of side 2 in a square, where the effect's
/// spheres need a projection whose depth suits their width, and else nothing.
class Sides {
public:
    Sides(unsigned int count, ParticleMode mode, bool isMoving) : isMoving(isMoving) {
        layer.assumeFreeGpuMemory(1024);
        makeParticles(system, count);
        look.mode = mode;
        look.channel = VELOCITY;
        look.colors = {{BLUE, RED}, WHITE};
        look.size = mode == ParticleMode::SPHERES ? DIAMETER : 1;
        direct.init();
        direct.setRenderMode(mode == ParticleMode::SPHERES ? Particles_RL_GL_v2::RenderMode::SPHERES
                                                           : Particles_RL_GL_v2::RenderMode::POINTS);
        glEnable(GL_DEPTH_TEST);
        view = View::current();
    }
    ~Sides() {
        direct.clear();
        direct.releaseEffects();
    }
    Sides(Sides const&) = delete;
    Sides& operator=(Sides const&) = delete;

    void drawByToolkit() {
        if (isMoving) {
            renderer.markChanged();
        }
        drawParticles(renderer, system, look, view);
    }

    void drawDirectly() {
        if (look.mode != ParticleMode::SPHERES) {
            _render(look.size);
            return;
        }
        // Depth moves by half a unit for each unit of width: the matrices split the view so.
        Matrix4<double> projection = Matrix4<double>::identity();
        Matrix4<double> modelView = Matrix4<double>::identity();
        projection.e[10] = -0.5;
        modelView.e[10] = -2;
        glViewport(0, 0, SIDE, SIDE);
        glMatrixMode(GL_PROJECTION);
        glLoadMatrixd(projection.e);
        glMatrixMode(GL_MODELVIEW);
        glLoadMatrixd(modelView.e);
        _render(DIAMETER);
        glViewport(0, 0, SIDE, SIDE);
        glMatrixMode(GL_PROJECTION);
        glLoadMatrixd(view.projection.e);
        glMatrixMode(GL_MODELVIEW);
        glLoadMatrixd(view.modelView.e);
    }

private:
    void _render(float size) {
        direct.render(system, false, isMoving, 1, 0, 1 + 1e-5F, BLUE, RED, WHITE, size, VELOCITY, 100, true,
                      true, Particles_RL_GL_v2::RenderMagnitude::LENGTH);
    }

    Layer layer;
    ParticleSystem_v2 system;
    ParticleRenderer renderer;
    Particles_RL_GL_v2 direct;
    ParticleLook look;
    View view;
    bool isMoving;
};

template <class Draw>
void frame(Draw const& draw) {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    draw();
    glFinish();
}

void compare(benchmark::State& state, ParticleMode mode, bool isMoving) {
    OffscreenContext const context({SIDE, SIDE});
    if (!context.isValid()) {
        state.SkipWithError(context.error().c_str());
        return;
    }
    benchmark::AddCustomContext("GL", reinterpret_cast<char const*>(glGetString(GL_RENDERER)));
    Sides sides(mode == ParticleMode::SPHERES ? SPHERES : PARTICLES, mode, isMoving);
    auto const byToolkit = [&] { frame([&] { sides.drawByToolkit(); }); };
    auto const directly = [&] { frame([&] { sides.drawDirectly(); }); };
    byToolkit();
    std::vector<unsigned char> const expected = readSquare(SIDE);
    directly();
    if (readSquare(SIDE) != expected) {
        state.SkipWithError("the pictures differ");
        return;
    }
    PairTiming timing(FRAMES_PER_ROUND);
    timing.run(
        state, [&](unsigned int const&) { byToolkit(); }, [&](unsigned int const&) { directly(); });
    state.counters["library_ms"] = timing.librarySecondsPerRound() * 1e3 / FRAMES_PER_ROUND;
    state.counters["other_ms"] = timing.otherSecondsPerRound() * 1e3 / FRAMES_PER_ROUND;
    state.counters["library/direct"] = timing.ratio();
}

void Unchanged(benchmark::State& state) {
    compare(state, ParticleMode::POINTS, false);
}
void Moving(benchmark::State& state) {
    compare(state, ParticleMode::POINTS, true);
}
void UnchangedSpheres(benchmark::State& state) {
    compare(state, ParticleMode::SPHERES, false);
}
void MovingSpheres(benchmark::State& state) {
    compare(state, ParticleMode::SPHERES, true);
}

/// Particles of six kinds, each with a color and a size.
void addKinds(ParticleSystem_v2& system) {
    constexpr unsigned int KINDS = 6;
    unsigned int const colors = system.addChannel("color", ParticleChannel_v2::VECTOR);
    unsigned int const sizes = system.addChannel("size", ParticleChannel_v2::SCALAR);
    std::mt19937 random(1);
    for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        for (unsigned int slot = 0; slot < chunk->count(); ++slot) {
            auto const kind = static_cast<float>(random() % KINDS);
            chunk->channelData(colors)->asVectors()[slot] = {kind / KINDS, 1 - kind / KINDS, 0.5F};
            chunk->channelData(sizes)->asFloats()[slot] = 1 + kind / 100;
        }
    }
}

void compareKinds(benchmark::State& state, ParticleMode mode, unsigned int count, bool isMoving) {
    OffscreenContext const context({SIDE, SIDE});
    if (!context.isValid()) {
        state.SkipWithError(context.error().c_str());
        return;
    }
    Layer layer;
    layer.assumeFreeGpuMemory(1024);
    ParticleSystem_v2 system;
    makeParticles(system, count);
    addKinds(system);
    ParticleLook plain;
    plain.mode = mode;
    plain.channel = VELOCITY;
    plain.colors = {{BLUE, RED}, WHITE};
    plain.size = mode == ParticleMode::SPHERES ? DIAMETER : 1;
    ParticleLook ofKinds = plain;
    ofKinds.colorChannel = system.channelId("color");
    ofKinds.sizeChannel = system.channelId("size");
    glEnable(GL_DEPTH_TEST);
    View const view = View::current();
    ParticleRenderer kinds;
    ParticleRenderer others;
    auto const draw = [&](ParticleRenderer& renderer, ParticleLook const& look) {
        frame([&] {
            if (isMoving) {
                renderer.markChanged();
            }
            drawParticles(renderer, system, look, view);
        });
    };
    PairTiming timing(FRAMES_PER_ROUND);
    timing.run(
        state, [&](unsigned int const&) { draw(kinds, ofKinds); },
        [&](unsigned int const&) { draw(others, plain); });
    state.counters["library_ms"] = timing.librarySecondsPerRound() * 1e3 / FRAMES_PER_ROUND;
    state.counters["other_ms"] = timing.otherSecondsPerRound() * 1e3 / FRAMES_PER_ROUND;
    state.counters["kinds/plain"] = timing.ratio();
}

void UnchangedKinds(benchmark::State& state) {
    compareKinds(state, ParticleMode::POINTS, PARTICLES, false);
}
void MovingKinds(benchmark::State& state) {
    compareKinds(state, ParticleMode::POINTS, PARTICLES, true);
}
void MovingKindsOfSpheres(benchmark::State& state) {
    compareKinds(state, ParticleMode::SPHERES, SPHERES, true);
}

void Calls(benchmark::State& state) {
    OffscreenContext const context({SIDE, SIDE});
    if (!context.isValid()) {
        state.SkipWithError(context.error().c_str());
        return;
    }
    Sides sides(FEW_PARTICLES, ParticleMode::POINTS, false);
    PairTiming timing(FRAMES_PER_ROUND);
    auto const several = [](auto const& draw) {
        for (unsigned int k = 0; k < FRAMES_OF_FEW; ++k) {
            draw();
        }
        glFinish();
    };
    timing.run(
        state, [&](unsigned int const&) { several([&] { sides.drawByToolkit(); }); },
        [&](unsigned int const&) { several([&] { sides.drawDirectly(); }); });
    constexpr double NANOSECONDS = 1e9 / (FRAMES_PER_ROUND * FRAMES_OF_FEW);
    state.counters["library_ns"] = timing.librarySecondsPerRound() * NANOSECONDS;
    state.counters["other_ns"] = timing.otherSecondsPerRound() * NANOSECONDS;
}

void settings(benchmark::internal::Benchmark* pair) {
    pair->UseManualTime()->Iterations(ROUNDS)->Unit(benchmark::kMillisecond);
}

BENCHMARK(Unchanged)->Apply(settings);
BENCHMARK(Moving)->Apply(settings);
BENCHMARK(UnchangedSpheres)->Apply(settings);
BENCHMARK(MovingSpheres)->Apply(settings);
BENCHMARK(UnchangedKinds)->Apply(settings);
BENCHMARK(MovingKinds)->Apply(settings);
BENCHMARK(MovingKindsOfSpheres)->Apply(settings);
BENCHMARK(Calls)->Apply(settings);

}  // namespace
}  // namespace vellum::benchmarks
