// Questions about the CPU part of drawing particles, compared with a program that does as little as it can: it has the records
// ready in memory and copies them (memcpy) into the mapped buffer. Each answer is the ratio of two times that are measured
// alternately in one run:
//  - Moving/effect, Moving/plain: a frame of a million particles that have moved. Bound: at most 1.0.
//  - First/effect, First/plain: the first frame of a renderer whose effect is compiled and of four million particles, in
//    memory that the system has still to give. Bound: at most 1.1.
//  - Unchanged/N: a frame of N unchanged particles, in microseconds. Bound: 1.5 microseconds for every N.
//
// Mesa draws nothing (GALLIUM_NOOP). Constant: the driver and its context, the order of GL calls with all
// sizes, and the particles. The program by hand makes the same calls.

#include "benchmarks/PairTiming.h"
#include "benchmarks/sine_particles.h"

#include "Core_RL_GL.h"
#include "Particles_RL_GL_v2.h"
#include "foundation/basic/threads.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "offscreen/OffscreenContext.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::benchmarks {
namespace {

constexpr unsigned int MANY = 1000000;
constexpr unsigned int MOST = 4000000;
constexpr int RECORD_BYTES = 24;
constexpr int COLOR_OFFSET = 12;
constexpr int SIDE = 64;  // pixels
constexpr int ROUNDS = 40;
constexpr unsigned int CALLS = 1000;

constexpr Color4<float> BLUE{0, 0, 1, 1};
constexpr Color4<float> RED{1, 0, 0, 1};
constexpr Color4<float> WHITE{1, 1, 1, 1};

/// Reports free memory, which the driver does not, and keeps what it is asked to draw with.
class StreamLayer : public Core_RL_GL {
public:
    unsigned int getFreeGpuMemory() override { return 1U << 20; }
    void unmapBuffer(BufferTarget::type target) override {
        if (records != nullptr) {
            // The first frame of a test keeps its records for the program by hand.
            GLint bytes = 0;
            glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &bytes);
            void* store = nullptr;
            glGetBufferPointerv(GL_ARRAY_BUFFER, GL_BUFFER_MAP_POINTER, &store);
            records->assign(static_cast<char const*>(store), static_cast<char const*>(store) + bytes);
            records = nullptr;
        }
        Core_RL_GL::unmapBuffer(target);
    }
    void drawArrays(Primitive::type mode, unsigned long first, unsigned long count) override {
        if (program == 0) {
            glGetIntegerv(GL_CURRENT_PROGRAM, &program);
        }
        Core_RL_GL::drawArrays(mode, first, count);
    }

    std::vector<char>* records = nullptr;
    GLint program = 0;
};

/// Both sides of a comparison.
class Sides {
public:
    Sides(unsigned int count, bool hasEffect) : hasEffect(hasEffect), count(count) {
        makeParticles(system, count);
        layer.records = &records;
        particles = makeRenderer();
        drawByLibrary(*particles, true);
        program = static_cast<GLuint>(layer.program);
        glFinish();
    }
    ~Sides() { release(*particles); }
    Sides(Sides const&) = delete;
    Sides& operator=(Sides const&) = delete;

    static std::unique_ptr<Particles_RL_GL_v2> makeRenderer() {
        auto renderer = std::make_unique<Particles_RL_GL_v2>();
        renderer->init();
        return renderer;
    }
    static void release(Particles_RL_GL_v2& renderer) {
        renderer.clear();
        renderer.releaseEffects();
    }

    void drawByLibrary(Particles_RL_GL_v2& renderer, bool hasMoved) const {
        renderer.render(system, false, hasMoved, 1, 0, 1, BLUE, RED, WHITE, 1, 1, 100, true, hasEffect,
                        Particles_RL_GL_v2::RenderMagnitude::LENGTH);
    }

    /// The same calls; a first frame sizes the buffer, as the library does.
    void drawByHand(GLuint& buffer, bool isFirst) const {
        if (isFirst) {
            glGenBuffers(1, &buffer);
            glBindBuffer(GL_ARRAY_BUFFER, 0);
            glBindBuffer(GL_ARRAY_BUFFER, buffer);
            glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(records.size()), nullptr, GL_STREAM_DRAW);
        }
        glUseProgram(program);
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
        glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(records.size()), nullptr, GL_STREAM_DRAW);
        std::memcpy(glMapBuffer(GL_ARRAY_BUFFER, GL_READ_WRITE), records.data(), records.size());
        glUnmapBuffer(GL_ARRAY_BUFFER);
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_COLOR_ARRAY);
        glPointSize(1);
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
        glVertexPointer(3, GL_FLOAT, RECORD_BYTES, nullptr);
        glColorPointer(3, GL_FLOAT, RECORD_BYTES, reinterpret_cast<void*>(COLOR_OFFSET));
        glDrawArrays(GL_POINTS, 0, static_cast<GLsizei>(count));
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glDisableClientState(GL_VERTEX_ARRAY);
        glDisableClientState(GL_COLOR_ARRAY);
        glUseProgram(0);
    }

    std::unique_ptr<Particles_RL_GL_v2> particles;

private:
    StreamLayer layer;
    ParticleSystem_v2 system;
    std::vector<char> records;
    bool hasEffect;
    unsigned int count;
    GLuint program = 0;
};

bool prepare(benchmark::State& state, OffscreenContext const& context) {
    if (!context.isValid()) {
        state.SkipWithError(context.error().c_str());
    }
    setThreadLimit(1);
    return context.isValid();
}

/// Before the library of the driver looks.
struct Noop {
    Noop() { setenv("GALLIUM_NOOP", "1", 1); }
} const NOOP;

void report(benchmark::State& state, PairTiming const& timing) {
    state.counters["library_ms"] = timing.libraryFastest() * 1e3;
    state.counters["other_ms"] = timing.otherFastest() * 1e3;
    state.counters["library/by_hand"] = timing.ratio();
    state.counters["fastest"] = timing.libraryFastest() / timing.otherFastest();
}

void Moving(benchmark::State& state, bool hasEffect) {
    OffscreenContext const context({SIDE, SIDE});
    if (!prepare(state, context)) {
        return;
    }
    Sides sides(MANY, hasEffect);
    GLuint buffer = 0;
    sides.drawByHand(buffer, true);
    PairTiming timing(1);
    timing.run(
        state,
        [&](unsigned int const&) {
            sides.drawByLibrary(*sides.particles, true);
            glFinish();
        },
        [&](unsigned int const&) {
            sides.drawByHand(buffer, false);
            glFinish();
        });
    report(state, timing);
    glDeleteBuffers(1, &buffer);
}

void First(benchmark::State& state, bool hasEffect) {
    OffscreenContext const context({SIDE, SIDE});
    if (!prepare(state, context)) {
        return;
    }
    Sides sides(MOST, hasEffect);
    PairTiming timing(1);
    timing.run(
        state,
        [&](unsigned int const&) {
            // Its buffer is gone, its effect compiled.
            sides.particles->clear();
            sides.drawByLibrary(*sides.particles, false);
            glFinish();
        },
        [&](unsigned int const&) {
            GLuint buffer = 0;
            sides.drawByHand(buffer, true);
            glDeleteBuffers(1, &buffer);
            glFinish();
        });
    report(state, timing);
}

void Unchanged(benchmark::State& state) {
    OffscreenContext const context({SIDE, SIDE});
    if (!prepare(state, context)) {
        return;
    }
    Sides sides(static_cast<unsigned int>(state.range(0)), true);
    std::vector<double> times;
    for ([[maybe_unused]] auto const& iteration : state) {
        double const start = threadSeconds();
        for (unsigned int call = 0; call < CALLS; ++call) {
            sides.drawByLibrary(*sides.particles, false);
        }
        times.push_back(threadSeconds() - start);
        state.SetIterationTime(times.back());
        glFinish();
    }
    state.counters["microseconds"] = *std::min_element(times.begin(), times.end()) * 1e6 / CALLS;
}

void settings(benchmark::internal::Benchmark* pair) {
    pair->UseManualTime()->Iterations(ROUNDS)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(Moving, effect, true)->Apply(settings);
BENCHMARK_CAPTURE(Moving, plain, false)->Apply(settings);
BENCHMARK_CAPTURE(First, effect, true)->Apply(settings);
BENCHMARK_CAPTURE(First, plain, false)->Apply(settings);
BENCHMARK(Unchanged)->Arg(1000)->Arg(MANY)->Arg(16000000)->Apply(settings);

}  // namespace
}  // namespace vellum::benchmarks
