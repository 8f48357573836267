// Question: how does the cost of a frame grow with what it holds, from a thousand to 16 million particles and to 8 million
// triangles? Each frame is paired with the same frame of a program written by hand that has everything ready:
//  - unchanged: the same draw call from the same memory. No limit but that call.
//  - moving: memcpy of finished records into the buffers, and the draw. The library also computes the records.
//  - first: as moving, after the buffers were deleted: the memory is new to the process. Effects are there already.
// Particles take three paths: `buffer`; `chunks` and `memory`, with an effect and without, are taken where the driver does
// not tell its free memory. These two send all particles with every frame, and so does the program by hand.
//
// Where a buffer of particles is refilled, both sides ask for a new store first, so that the frame before can
// still be drawn; the driver's memory for it is part of the time. Buffers of meshes keep their stores on both
// sides.
//
// Constant: the particles and triangles, the driver and its context, usage and sizes of buffers. Mesa draws
// nothing (GALLIUM_NOOP), so the time is that of the processor in the caller, the library and the driver's
// front end. Times are those of the fastest part on the wall, since the library may use several threads; CPU
// times of all threads stand beside them. Mesa keeps what was sent until the process ends: run one benchmark
// per process, as scripts/bench does.

#include "benchmarks/GridScene.h"
#include "benchmarks/PairTiming.h"
#include "benchmarks/sine_particles.h"
#include "frames_by_hand.h"

#include "Core_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "Particles_RL_GL_v2.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "offscreen/OffscreenContext.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <vector>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::benchmarks {
namespace {

enum class Frame { UNCHANGED, MOVING, FIRST };
enum class Path { BUFFER, CHUNKS, MEMORY };

constexpr int SIDE = 64;  // pixels
constexpr int ROUNDS = 1;
constexpr float CREASE = 0.7F;
constexpr Color4<float> BLUE{0, 0, 1, 1};
constexpr Color4<float> RED{1, 0, 0, 1};
constexpr Color4<float> WHITE{1, 1, 1, 1};

/// The CPU time of all threads in seconds.
double processSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Mesa reads the variable when it creates the first context.
void drawNothing() {
    setenv("GALLIUM_NOOP", "1", 1);
}

/// Times frames of both sides, small ones many at once.
template <class Library, class ByHand>
void timeFrames(benchmark::State& state, std::size_t sent, Library const& library, ByHand const& byHand) {
    // Mesa keeps all that is sent, so the large ones are few.
    constexpr std::size_t SENT_IN_ALL = 40000000;
    auto const parts = static_cast<unsigned int>(std::clamp<std::size_t>(SENT_IN_ALL / (sent + 1), 6, 100));
    unsigned int const frames = sent < 10000 ? 20 : 1;
    double cpu[2] = {0, 0};
    auto const times = [frames, &cpu](int side, auto const& draw) {
        double const start = processSeconds();
        for (unsigned int frame = 0; frame < frames; ++frame) {
            glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
            draw();
            glFinish();
        }
        cpu[side] += processSeconds() - start;
    };
    PairTiming timing(parts, wallSeconds);
    timing.run(
        state, [&](unsigned int const&) { times(0, library); },
        [&](unsigned int const&) { times(1, byHand); });
    double const milliseconds = 1e3 / frames;
    state.counters["library_ms"] = timing.libraryFastest() * milliseconds;
    state.counters["other_ms"] = timing.otherFastest() * milliseconds;
    state.counters["library_cpu_ms"] = cpu[0] * milliseconds / (parts + 1);
    state.counters["other_cpu_ms"] = cpu[1] * milliseconds / (parts + 1);
    state.counters["library/by_hand"] = timing.libraryFastest() / timing.otherFastest();
}

/// A program that has the records of all particles ready, in a buffer of its own.
class ReadyRecords {
public:
    explicit ReadyRecords(ParticleSystem_v2& system) {
        for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
            for (unsigned int slot = 0; slot < chunk->count(); ++slot) {
                Vector3<float> const& p = chunk->channelData(0)->asVectors()[slot];
                Vector3<float> const& v = chunk->channelData(1)->asVectors()[slot];
                records.insert(records.end(), {p.x, p.y, p.z, v.x, v.y, v.z});
            }
        }
        glGenBuffers(1, &buffer);
    }
    ~ReadyRecords() { glDeleteBuffers(1, &buffer); }
    ReadyRecords(ReadyRecords const&) = delete;
    ReadyRecords& operator=(ReadyRecords const&) = delete;

    /// The store is new each time, as that of the library.
    void refill() const {
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
        renewBoundBuffer(_bytes());
        copyToBoundBuffer(records.data(), _bytes());
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    }
    void renewBuffer() {
        glDeleteBuffers(1, &buffer);
        glGenBuffers(1, &buffer);
        refill();
    }
    void copy() {
        if (sent == nullptr) {
            sent.reset(static_cast<float*>(std::malloc(_bytes())));
        }
        std::memcpy(sent.get(), records.data(), _bytes());
    }
    void renewCopy() {
        sent.reset();
        copy();
    }

    GLuint buffer = 0;
    std::vector<float> records;
    std::unique_ptr<float, void (*)(void*)> sent{nullptr, std::free};

private:
    std::size_t _bytes() const { return records.size() * sizeof(float); }
};

/// One frame of the program by hand.
void drawByHand(ParticlesByHand const& byHand, ReadyRecords& ready, ParticleSystem_v2& system, Path path,
                Frame frame) {
    switch (path) {
    case Path::BUFFER:
        if (frame == Frame::MOVING) {
            ready.refill();
        } else if (frame == Frame::FIRST) {
            ready.renewBuffer();
        }
        byHand.draw(ready.buffer);
        break;
    case Path::CHUNKS:
        byHand.drawChunks(system);
        break;
    case Path::MEMORY:
        if (frame == Frame::MOVING) {
            ready.copy();
        } else if (frame == Frame::FIRST) {
            ready.renewCopy();
        }
        byHand.drawRecords(ready.sent.get());
        break;
    }
}

void Particles(benchmark::State& state, Path path, Frame frame) {
    drawNothing();
    OffscreenContext const context({SIDE, SIDE});
    if (!context.isValid()) {
        state.SkipWithError(context.error().c_str());
        return;
    }
    auto const count = static_cast<unsigned int>(state.range(0));
    FrameLayer layer;
    layer.freeKilobytes = path == Path::BUFFER ? 1U << 20U : 0;
    ParticleSystem_v2 system;
    makeParticles(system, count);
    Particles_RL_GL_v2 particles;
    particles.init();
    auto const drawByLibrary = [&](bool isChanged) {
        particles.render(system, false, isChanged, 1, 0, 1, BLUE, RED, WHITE, 1, 1, 100, true,
                         path != Path::MEMORY, Particles_RL_GL_v2::RenderMagnitude::LENGTH);
    };
    drawByLibrary(true);
    ParticlesByHand const byHand(layer, count);
    ReadyRecords ready(system);
    ready.refill();
    ready.copy();
    bool const isSent = path != Path::BUFFER || frame != Frame::UNCHANGED;
    timeFrames(
        state, isSent ? count : 0,
        [&] {
            if (frame == Frame::FIRST) {
                particles.clear();
            }
            drawByLibrary(frame == Frame::MOVING);
        },
        [&] { drawByHand(byHand, ready, system, path, frame); });
    particles.clear();
    particles.releaseEffects();
}

void Triangles(benchmark::State& state, Frame frame) {
    drawNothing();
    auto const squares =
        static_cast<unsigned int>(std::lround(std::sqrt(static_cast<double>(state.range(0)) / 2)));
    GridScene<Core_RL_GL> scene(squares, CREASE);
    if (scene.error() != nullptr) {
        state.SkipWithError(scene.error());
        return;
    }
    MeshByHand byHand(scene.mesh);
    timeFrames(
        state, frame == Frame::UNCHANGED ? 0 : std::size_t{squares} * squares * 6,
        [&] {
            if (frame == Frame::FIRST) {
                scene.renderer->dropBufferObjects();
            }
            if (frame != Frame::UNCHANGED) {
                scene.mesh.markModified(scene.mesh.positions());
                scene.mesh.markModified(scene.mesh.vertexNormals());
            }
            scene.renderer->render();
        },
        [&] {
            if (frame == Frame::MOVING) {
                byHand.refill();
            } else if (frame == Frame::FIRST) {
                byHand.drop();
                byHand.create();
            }
            byHand.draw();
        });
}

void sizesOf(benchmark::internal::Benchmark* pair, long largest) {
    for (long const size : {1000L, 4000L, 16000L, 64000L, 250000L, 1000000L, 4000000L}) {
        pair->Arg(size);
    }
    pair->Arg(largest)->UseManualTime()->Iterations(ROUNDS)->Unit(benchmark::kMillisecond);
}
void particleSizes(benchmark::internal::Benchmark* pair) {
    sizesOf(pair, 16000000);
}
void triangleSizes(benchmark::internal::Benchmark* pair) {
    sizesOf(pair, 8000000);
}

BENCHMARK_CAPTURE(Particles, buffer_unchanged, Path::BUFFER, Frame::UNCHANGED)->Apply(particleSizes);
BENCHMARK_CAPTURE(Particles, buffer_moving, Path::BUFFER, Frame::MOVING)->Apply(particleSizes);
BENCHMARK_CAPTURE(Particles, buffer_first, Path::BUFFER, Frame::FIRST)->Apply(particleSizes);
BENCHMARK_CAPTURE(Particles, chunks_unchanged, Path::CHUNKS, Frame::UNCHANGED)->Apply(particleSizes);
BENCHMARK_CAPTURE(Particles, chunks_moving, Path::CHUNKS, Frame::MOVING)->Apply(particleSizes);
BENCHMARK_CAPTURE(Particles, chunks_first, Path::CHUNKS, Frame::FIRST)->Apply(particleSizes);
BENCHMARK_CAPTURE(Particles, memory_unchanged, Path::MEMORY, Frame::UNCHANGED)->Apply(particleSizes);
BENCHMARK_CAPTURE(Particles, memory_moving, Path::MEMORY, Frame::MOVING)->Apply(particleSizes);
BENCHMARK_CAPTURE(Particles, memory_first, Path::MEMORY, Frame::FIRST)->Apply(particleSizes);
BENCHMARK_CAPTURE(Triangles, buffer_unchanged, Frame::UNCHANGED)->Apply(triangleSizes);
BENCHMARK_CAPTURE(Triangles, buffer_moving, Frame::MOVING)->Apply(triangleSizes);
BENCHMARK_CAPTURE(Triangles, buffer_first, Frame::FIRST)->Apply(triangleSizes);

}  // namespace
}  // namespace vellum::benchmarks
