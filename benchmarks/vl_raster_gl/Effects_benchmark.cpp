// Question: what does a pass of an effect cost (preprocess, postprocess and cleanup, without a drawing),
// compared with the same GL calls written by hand? Bound: at most 15 percent more.
//
// Constant: the GLSL program, the calls and their values in the same order (a test compares the two lists),
// the driver and its context, the compiler flags, and the path of a call from a shared library into libGL.
// Mesa draws nothing (GALLIUM_NOOP). Different: the effect caches its uniforms by name and sends them from
// the cache.
//
// A clean effect sends few calls; a dirty one sends every uniform twice, once from the cache and once from
// the pass. To add an effect, write its ByHand class and one BENCHMARK line.

#include "benchmarks/PairTiming.h"
#include "passes_by_hand.h"

#include "Core_RL_GL.h"
#include "glsl_shader/Custom_shader.h"
#include "glsl_shader/Displacement_XZ_shader.h"
#include "glsl_shader/Displacement_shader.h"
#include "glsl_shader/Glass_shader.h"
#include "glsl_shader/SSScattering_shader.h"
#include "offscreen/OffscreenContext.h"

#include <benchmark/benchmark.h>

#include <cstdlib>

#include <GL/gl.h>

namespace vellum::benchmarks {
namespace {

constexpr unsigned int PASSES = 20000;
constexpr int ROUNDS = 5;            // repetitions of all passes
constexpr unsigned int PARTS = 100;  // into which the passes are split; both sides alternate
constexpr unsigned int PASSES_PER_PART = PASSES / PARTS;

/// One context for all benchmarks, created by the first one that runs.
class Layer {
public:
    static Layer& instance() {
        static Layer layer;
        return layer;
    }

    char const* error() const { return context.isValid() ? nullptr : context.error().c_str(); }

private:
    Layer() : context(_settings()) {
        if (context.isValid()) {
            benchmark::AddCustomContext("GL", reinterpret_cast<char const*>(glGetString(GL_RENDERER)));
        }
    }

    static OffscreenContext::Settings _settings() {
        // Mesa reads the variable when it creates the context.
        setenv("GALLIUM_NOOP", "1", 1);
        return {};
    }

    OffscreenContext context;
    Core_RL_GL core;
};

/// The current program.
unsigned int currentProgram() {
    GLint program = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    return static_cast<unsigned int>(program);
}

unsigned int makeTexture() {
    GLuint texture = 0;
    glGenTextures(1, &texture);
    return texture;
}

/// Times passes of an effect against `openByHand()` and `closeByHand()`. `before` is called ahead of every
/// pass of the effect.
template <class Effect, class Before, class OpenByHand, class CloseByHand>
void compare(benchmark::State& state, Effect& effect, Before const& before, OpenByHand const& openByHand,
             CloseByHand const& closeByHand) {
    PairTiming timing(PARTS);
    timing.run(
        state,
        [&](unsigned int const&) {
            for (unsigned int i = 0; i < PASSES_PER_PART; ++i) {
                before();
                effect.preprocess();
                effect.postprocess();
                effect.cleanup();
            }
            glFinish();
        },
        [&](unsigned int const&) {
            for (unsigned int i = 0; i < PASSES_PER_PART; ++i) {
                openByHand();
                closeByHand();
            }
            glFinish();
        });
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(PASSES));
    state.counters["library_ns"] = timing.librarySecondsPerRound() * 1e9 / PASSES;
    state.counters["by_hand_ns"] = timing.otherSecondsPerRound() * 1e9 / PASSES;
    state.counters["library/by_hand"] = timing.ratio();
}

template <class Effect, class Before, class OpenByHand>
void compare(benchmark::State& state, Effect& effect, Before const& before, OpenByHand const& openByHand) {
    compare(state, effect, before, openByHand, [] { closeByHand(); });
}

void Displacement(benchmark::State& state, bool const& isDirty, bool const& isTesselated) {
    if (char const* const error = Layer::instance().error(); error != nullptr) {
        state.SkipWithError(error);
        return;
    }
    Displacement_shader effect;
    effect.tesselate(isTesselated);
    effect.enable(true);
    DisplacementByHand const byHand{
        currentProgram(), makeTexture(), makeTexture(), {1, 1, 1, 1}, {1, 1, 1}, {1, 1}, 2, 1};
    compare(
        state, effect,
        [&] {
            if (isDirty) {
                effect.markDirty();
            }
        },
        [&] { openByHand(byHand, isDirty); });
}

void Displacement_XZ(benchmark::State& state) {
    if (char const* const error = Layer::instance().error(); error != nullptr) {
        state.SkipWithError(error);
        return;
    }
    Displacement_XZ_shader effect;
    effect.enable(true);
    OceanByHand const byHand{
        currentProgram(), makeTexture(), {1, 1, 0, 0}, {0.1F, 0.3F, 0.35F, 1}, 1, 1, 1, 100, 100, 0, 512};
    compare(
        state, effect, [] {}, [&] { openByHand(byHand); });
}

void Glass(benchmark::State& state, bool const& isDirty) {
    if (char const* const error = Layer::instance().error(); error != nullptr) {
        state.SkipWithError(error);
        return;
    }
    Glass_shader effect;
    effect.enable(true);
    GlassByHand const byHand{
        currentProgram(), makeTexture(), makeTexture(), {0, 1, 0}, {1, 1, 0}, 0.1F, 1, 1};
    compare(
        state, effect,
        [&] {
            if (isDirty) {
                effect.markDirty();
            }
        },
        [&] { openByHand(byHand, isDirty); },
        [&] {
            closeByHand();
            deleteByHand(byHand.refractionTexture);
        });
}

// The setters of the scattering effect take it into use, so one of them represents a change.
void SSScattering(benchmark::State& state, bool const& isDirty) {
    if (char const* const error = Layer::instance().error(); error != nullptr) {
        state.SkipWithError(error);
        return;
    }
    SSScattering_shader effect;
    effect.enable(true);
    ScatteringByHand const byHand{currentProgram(), 0.1F, 0.2F, {0.5F, 0.5F, 0.5F}, {0.8F, 0.8F, 0.8F, 1}, 1};
    compare(
        state, effect,
        [&] {
            if (isDirty) {
                effect.markDirty();
                effect.setMaterialThickness(0.1F);
            }
        },
        [&] { openByHand(byHand, isDirty); });
}

void Custom(benchmark::State& state, bool const& isDirty) {
    if (char const* const error = Layer::instance().error(); error != nullptr) {
        state.SkipWithError(error);
        return;
    }
    // The files do not exist: a path is enough for the texture to be bound.
    Custom_shader effect;
    effect.setTexture("/no/first.png", 0);
    effect.setTexture("/no/second.png", 1);
    effect.enable(true);
    CustomByHand const byHand{
        currentProgram(), {makeTexture(), makeTexture()}, makeTexture(), {}, {}, {}, {0, 0, 0, 1}, 1};
    compare(
        state, effect,
        [&] {
            if (isDirty) {
                effect.markDirty();
            }
        },
        [&] { openByHand(byHand, isDirty); });
}

void settings(benchmark::internal::Benchmark* pair) {
    pair->UseManualTime()->Iterations(ROUNDS)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(Displacement, unchanged, false, false)->Apply(settings);
BENCHMARK_CAPTURE(Displacement, changed, true, false)->Apply(settings);
BENCHMARK_CAPTURE(Displacement, tessellated_changed, true, true)->Apply(settings);
BENCHMARK(Displacement_XZ)->Apply(settings);
BENCHMARK_CAPTURE(Glass, unchanged, false)->Apply(settings);
BENCHMARK_CAPTURE(Glass, changed, true)->Apply(settings);
BENCHMARK_CAPTURE(SSScattering, unchanged, false)->Apply(settings);
BENCHMARK_CAPTURE(SSScattering, changed, true)->Apply(settings);
BENCHMARK_CAPTURE(Custom, unchanged, false)->Apply(settings);
BENCHMARK_CAPTURE(Custom, changed, true)->Apply(settings);

}  // namespace
}  // namespace vellum::benchmarks
