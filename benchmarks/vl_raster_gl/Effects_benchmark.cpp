// Question: what does a pass of an effect cost (preprocess, postprocess and cleanup, with nothing drawn between),
// compared with the same list of GL calls written by hand? The effect may add 15 parts in a hundred.
//
// Held constant: the GLSL program, the calls and their values in the same order (a test compares the two lists), the
// driver and its context, the compiler flags on both sides, and the road of a call from a shared library into libGL.
// Mesa is told to draw nothing (GALLIUM_NOOP). What differs: the effect keeps its uniforms by name and sends them from
// there.
//
// An effect that is not dirty sends few calls, one that is dirty sends every uniform twice: what it keeps, and what the
// pass sets. An effect is added by a ByHand of its own and one BENCHMARK line.

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
constexpr int ROUNDS = 5;            // over all the passes
constexpr unsigned int PARTS = 100;  // of the passes, made in turn by both
constexpr unsigned int PASSES_PER_PART = PASSES / PARTS;

/// One context for all, made with the first benchmark that runs.
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
        // Mesa reads it when it makes the context.
        setenv("GALLIUM_NOOP", "1", 1);
        return {};
    }

    OffscreenContext context;
    Core_RL_GL core;
};

/// The program that is in use.
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

/// Times passes of an effect against `openByHand()` and `closeByHand()`. `before` is called ahead of every pass of the
/// effect.
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

// It is its setters that take the scattering effect into use: one of them stands for the changes.
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
    // No such pictures: a path alone has a texture bound.
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
