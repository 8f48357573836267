// Questions about four million particles whose colors are ramps of the length of their velocities. Each
// answer is the ratio of two times that are measured alternately in one run:
//  - Fill/memcpy: which part of the speed of memcpy does the fill of a mapped buffer reach, where memcpy
//    copies as many bytes of finished records? Bound: at least 0.85.
//  - Fill/iterator: how many times faster is it than a plain loop over the iterator? Bound: at least 4.
//  - Thinned/P: what does the fill with P percent of the particles cost, compared with the fill with all of
//    them? Both visit all particles, so this is also the ratio per visited particle. Bound: at most 1.5.
//  - TwoThreads: how many times faster is the fill with two threads than with one, on the wall? Bound: at least 1.5.
//    TwoThreads/fresh fills memory that the system has still to give, as the first frame does.
//  - TwoThreadsOfMemcpy: the same of memcpy, for comparison.
//
// Constant: the particles, 24 bytes read and 24 written per particle, and memory that was written before. The
// render layer maps plain memory and draws nothing, so that only the fill is measured; the library is called
// through its interface.

#include "benchmarks/PairTiming.h"

#include "Core_RL_GL.h"
#include "Particles_RL_GL_v2.h"
#include "foundation/basic/threads.h"
#include "foundation/geometry/ParticleSystemConstIterator_v2.h"
#include "foundation/geometry/ParticleSystem_v2.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include <sys/mman.h>

namespace vellum::benchmarks {
namespace {

constexpr unsigned int PARTICLES = 4000000;
constexpr std::size_t RECORD_FLOATS = 6;
constexpr std::size_t BYTES = PARTICLES * RECORD_FLOATS * sizeof(float);
constexpr std::size_t PAGE = 4096;
constexpr std::size_t ROUNDED_BYTES = (BYTES + PAGE - 1) / PAGE * PAGE;
constexpr int ROUNDS = 25;

constexpr float SCALE = 2;
constexpr float MIN_MAGNITUDE = 0.1F;
constexpr float MAX_MAGNITUDE = 0.6F;
constexpr Color4<float> MIN_COLOR{0, 0, 1, 1};
constexpr Color4<float> MAX_COLOR{1, 0.5F, 0, 1};
constexpr Color4<float> ABOVE{1, 1, 1, 1};

/// Maps plain memory instead of a buffer object, with the alignment of drivers.
class MemoryLayer : public Core_RL_GL {
public:
    bool isExtensionSupported(char const* /*name*/) override { return true; }
    unsigned int getFreeGpuMemory() override { return 1U << 20; }
    void genBuffers(unsigned long count, unsigned int* ids) override { std::fill(ids, ids + count, 1U); }
    void deleteBuffers(unsigned long /*count*/, unsigned int* /*ids*/) override {}
    void bindBuffer(BufferTarget::type /*target*/, unsigned int /*id*/) override {}
    void bufferData(BufferTarget::type /*target*/, unsigned long /*size*/, void* /*data*/,
                    BufferUsage::type /*usage*/) override {}
    void* mapBuffer(BufferTarget::type /*target*/, BufferAccess::type /*access*/) override {
        if (isFresh) {
            madvise(records.get(), ROUNDED_BYTES, MADV_DONTNEED);
        }
        return records.get();
    }
    void unmapBuffer(BufferTarget::type /*target*/) override {}
    using Core_RL_GL::getError;
    bool getError(char const* /*where*/, int /*line*/) override { return false; }
    void enableClientState(ClientCapability::type /*array*/) override {}
    void disableClientState(ClientCapability::type /*array*/) override {}
    float setPointSize(float const& size) override { return size; }
    void vertexPointer(int /*size*/, DataType::type /*type*/, unsigned long /*stride*/,
                       void* /*pointer*/) override {}
    void colorPointer(int /*size*/, DataType::type /*type*/, unsigned long /*stride*/,
                      void* /*pointer*/) override {}
    void drawArrays(Primitive::type /*mode*/, unsigned long /*first*/, unsigned long /*count*/) override {}

    static std::unique_ptr<float, void (*)(void*)> makeRecords() {
        auto* const memory = static_cast<float*>(std::aligned_alloc(PAGE, ROUNDED_BYTES));
        std::memset(memory, 1, BYTES);
        return {memory, std::free};
    }

    std::unique_ptr<float, void (*)(void*)> records = makeRecords();
    bool isFresh = false;  // whether the pages are given back before each fill
};

/// The particles and their renderer.
class Scene {
public:
    Scene() {
        system.addChannel("position", ParticleChannel_v2::VECTOR);
        velocity = system.addChannel("velocity", ParticleChannel_v2::VECTOR);
        system.addParticles(PARTICLES);
        float k = 0;
        for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
            Vector3<float>* const positions = chunk->channelData(0)->asVectors();
            Vector3<float>* const velocities = chunk->channelData(velocity)->asVectors();
            for (unsigned int slot = 0; slot < chunk->count(); ++slot, ++k) {
                positions[slot] = {k, -k, 0.5F * k};
                velocities[slot] = {std::sin(0.37F * k), std::sin(0.11F * k), std::cos(0.23F * k)};
            }
        }
        particles.init();
        setThreadLimit(1);  // of the comparisons with work on one core
    }
    ~Scene() { particles.clear(); }
    Scene(Scene const&) = delete;
    Scene& operator=(Scene const&) = delete;

    void fill(float const& percent) {
        particles.renderFromVboNoShaders(system, false, true, SCALE, MIN_MAGNITUDE, MAX_MAGNITUDE, MIN_COLOR,
                                         MAX_COLOR, ABOVE, 1, velocity, percent,
                                         Particles_RL_GL_v2::RenderMagnitude::LENGTH);
        benchmark::ClobberMemory();
    }

    MemoryLayer layer;
    ParticleSystem_v2 system;
    unsigned int velocity = 0;
    Particles_RL_GL_v2 particles;
};

float limited(float const& value) {
    return value > 0 ? (value < 1 ? value : 1) : 0;
}

/// The loop of a program that reads particles through the iterator.
void fillByIterator(ParticleSystem_v2 const& system, unsigned int const& channel, float* out) {
    ParticleSystemConstIterator_v2 particle;
    ParticleSystemConstIterator_v2 end;
    end.setEnd(&system);
    for (particle.setBegin(&system); particle != end; ++particle, out += RECORD_FLOATS) {
        auto const [channels, index] = *particle;
        Vector3<float> const& position = channels[0]->asVectors()[index];
        Vector3<float> const& v = channels[channel]->asVectors()[index];
        float const magnitude = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z) / SCALE;
        float const t = (magnitude - MIN_MAGNITUDE) / (MAX_MAGNITUDE - MIN_MAGNITUDE);
        bool const isAbove = t > 1;
        out[0] = position.x;
        out[1] = position.y;
        out[2] = position.z;
        out[3] = limited(isAbove ? ABOVE.r : MIN_COLOR.r + (MAX_COLOR.r - MIN_COLOR.r) * t);
        out[4] = limited(isAbove ? ABOVE.g : MIN_COLOR.g + (MAX_COLOR.g - MIN_COLOR.g) * t);
        out[5] = limited(isAbove ? ABOVE.b : MIN_COLOR.b + (MAX_COLOR.b - MIN_COLOR.b) * t);
    }
}

void report(benchmark::State& state, PairTiming const& timing, char const* ratioName, double const& ratio) {
    constexpr double NANOSECONDS = 1e9 / PARTICLES;
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(PARTICLES));
    state.counters["library_ns"] = timing.librarySecondsPerRound() * NANOSECONDS;
    state.counters["other_ns"] = timing.otherSecondsPerRound() * NANOSECONDS;
    state.counters[ratioName] = ratio;
}

void FillOfMemcpy(benchmark::State& state) {
    Scene scene;
    auto const ready = MemoryLayer::makeRecords();
    auto const target = MemoryLayer::makeRecords();
    PairTiming timing(1);
    timing.run(
        state, [&](unsigned int const&) { scene.fill(100); },
        [&](unsigned int const&) {
            std::memcpy(target.get(), ready.get(), BYTES);
            benchmark::ClobberMemory();
        });
    report(state, timing, "library/memcpy", 1 / timing.ratio());
}

void FillOfIterator(benchmark::State& state) {
    Scene scene;
    auto const target = MemoryLayer::makeRecords();
    PairTiming timing(1);
    timing.run(
        state, [&](unsigned int const&) { scene.fill(100); },
        [&](unsigned int const&) {
            fillByIterator(scene.system, scene.velocity, target.get());
            benchmark::ClobberMemory();
        });
    // Both must write the same bits.
    if (std::memcmp(scene.layer.records.get(), target.get(), BYTES) != 0) {
        state.SkipWithError("the library and the loop differ");
        return;
    }
    report(state, timing, "library/iterator", 1 / timing.ratio());
}

void Thinned(benchmark::State& state, float const& percent) {
    Scene scene;
    PairTiming timing(1);
    timing.run(
        state, [&](unsigned int const&) { scene.fill(percent); },
        [&](unsigned int const&) { scene.fill(100); });
    report(state, timing, "library/unthinned", timing.ratio());
}

/// Runs a part with a limit of threads.
template <class Run>
void within(int threads, Run const& run) {
    setThreadLimit(threads);
    run();
    setThreadLimit(1);
}

void reportThreads(benchmark::State& state, PairTiming const& timing) {
    state.counters["two_ms"] = timing.libraryFastest() * 1e3;
    state.counters["one_ms"] = timing.otherFastest() * 1e3;
    state.counters["one/two"] = 1 / timing.ratio();
    state.counters["fastest_one/two"] = timing.otherFastest() / timing.libraryFastest();
}

void TwoThreads(benchmark::State& state, float const& percent, bool const& isFresh) {
    Scene scene;
    scene.layer.isFresh = isFresh;
    PairTiming timing(1, wallSeconds);
    timing.run(
        state, [&](unsigned int const&) { within(2, [&] { scene.fill(percent); }); },
        [&](unsigned int const&) { within(1, [&] { scene.fill(percent); }); });
    reportThreads(state, timing);
}

void TwoThreadsOfMemcpy(benchmark::State& state) {
    auto const ready = MemoryLayer::makeRecords();
    auto const target = MemoryLayer::makeRecords();
    auto const copy = [&] {
        constexpr std::size_t RANGE = std::size_t{1} << 21;
        forRanges(BYTES, RANGE, [&](std::size_t begin, std::size_t end) {
            std::memcpy(reinterpret_cast<char*>(target.get()) + begin,
                        reinterpret_cast<char const*>(ready.get()) + begin, end - begin);
        });
        benchmark::ClobberMemory();
    };
    PairTiming timing(1, wallSeconds);
    timing.run(
        state, [&](unsigned int const&) { within(2, copy); }, [&](unsigned int const&) { within(1, copy); });
    reportThreads(state, timing);
}

void settings(benchmark::internal::Benchmark* pair) {
    pair->UseManualTime()->Iterations(ROUNDS)->Unit(benchmark::kMillisecond);
}

BENCHMARK(FillOfMemcpy)->Apply(settings);
BENCHMARK(FillOfIterator)->Apply(settings);
BENCHMARK_CAPTURE(TwoThreads, all, 100.0F, false)->Apply(settings);
BENCHMARK_CAPTURE(TwoThreads, 61_percent, 61.8F, false)->Apply(settings);
BENCHMARK_CAPTURE(TwoThreads, fresh, 100.0F, true)->Apply(settings);
BENCHMARK(TwoThreadsOfMemcpy)->Apply(settings);
BENCHMARK_CAPTURE(Thinned, 10_percent, 10.0F)->Apply(settings);
BENCHMARK_CAPTURE(Thinned, 33_percent, 33.3F)->Apply(settings);
BENCHMARK_CAPTURE(Thinned, 50_percent, 50.0F)->Apply(settings);
BENCHMARK_CAPTURE(Thinned, 61_percent, 61.8F)->Apply(settings);
BENCHMARK_CAPTURE(Thinned, 75_percent, 75.0F)->Apply(settings);
BENCHMARK_CAPTURE(Thinned, 90_percent, 90.0F)->Apply(settings);
BENCHMARK_CAPTURE(Thinned, 99_percent, 99.9F)->Apply(settings);

}  // namespace
}  // namespace vellum::benchmarks
