// Question: what does drawWith() cost for a mesh of 20,000 triangles that is unchanged in buffers?
//  - ByHand: compared with the effect's calls, with the same state saved and restored. Bound: at most 1.02.
//  - OwnPass: compared with the pass of the renderer (MeshShadingFlags_ns::GPU_SHADER), which restores less and sends
//    only values that changed. No bound.
//
// Each answer is the median ratio of the CPU times of two frames that alternate in one run. Constant: the
// mesh, the effect and its values, the driver and its context. The viewport is small, so that the cost of a
// frame is the work on the triangles. The same with GALLIUM_NOOP=1 in the environment, where Mesa draws
// nothing, shows the calls alone.

#include "benchmarks/GridScene.h"
#include "benchmarks/PairTiming.h"

#include "Core_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "glsl_shader/Custom_shader.h"
#include "glsl_shader/Glass_shader.h"
#include "glsl_shader/SSScattering_shader.h"
#include "offscreen/OffscreenContext.h"
#include "toolkit/Layer.h"
#include "toolkit/draw_with.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <type_traits>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::benchmarks {
namespace {

constexpr unsigned int SQUARES = 100;  // along a side of the grid: 20,000 triangles
constexpr unsigned int FRAMES_PER_ROUND = 100;
constexpr int ROUNDS = 5;

GridScene<toolkit::Layer>& scene() {
    static GridScene<toolkit::Layer> all(SQUARES, 0.7F);
    return all;
}

/// What a careful application writes without drawWith().
template <class Effect, class Draw>
void drawByHand(Effect& effect, Draw const& draw) {
    constexpr int UNITS = 8;
    constexpr int LIGHTS = 8;
    GLint program = 0;
    GLint active = 0;
    GLint textures[UNITS];
    GLint environment = 0;
    GLboolean lights[LIGHTS];
    GLfloat color[4];
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    for (int i = UNITS - 1; i >= 0; --i) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(i));
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &textures[i]);
    }
    glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, &environment);
    for (int i = 0; i < LIGHTS; ++i) {
        lights[i] = glIsEnabled(GL_LIGHT0 + static_cast<GLenum>(i));
    }
    glGetFloatv(GL_CURRENT_COLOR, color);
    if (!effect.created) {
        effect.create();
    }
    effect.markDirty();
    if constexpr (std::is_same_v<Effect, SSScattering_shader>) {
        effect.enable(true);
    }
    effect.init();
    effect.preprocess();
    draw();
    effect.postprocess();
    effect.cleanup();
    for (int i = UNITS - 1; i >= 0; --i) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(i));
        glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(textures[i]));
    }
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, environment);
    glActiveTexture(static_cast<GLenum>(active));
    glUseProgram(static_cast<GLuint>(program));
    for (int i = 0; i < LIGHTS; ++i) {
        if (lights[i] == GL_FALSE) {
            glDisable(GL_LIGHT0 + static_cast<GLenum>(i));
        }
    }
    glColor4fv(color);
}

/// \param other draws the scene's mesh with an effect
template <class Effect, class Other>
void compare(benchmark::State& state, char const* ratioName, Other const& other) {
    char const* const error = scene().error();
    if (error != nullptr) {
        state.SkipWithError(error);
        return;
    }
    Mesh_RL_GL& renderer = *scene().renderer;
    Effect effect;
    effect.enable(true);
    effect.enable(false);
    MeshShading const shading;
    auto const frame = [](auto const& draw) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw();
        glFinish();
    };
    PairTiming timing(FRAMES_PER_ROUND);
    timing.run(
        state,
        [&](unsigned int const&) {
            frame([&] { toolkit::drawWith(effect, [&] { renderer.render(shading); }); });
        },
        [&](unsigned int const&) { frame([&] { other(effect, renderer); }); });
    state.counters["library_us"] = timing.librarySecondsPerRound() * 1e6 / FRAMES_PER_ROUND;
    state.counters["other_us"] = timing.otherSecondsPerRound() * 1e6 / FRAMES_PER_ROUND;
    state.counters[ratioName] = timing.ratio();
}

template <class Effect>
void ByHand(benchmark::State& state) {
    MeshShading const shading;
    compare<Effect>(state, "library/by_hand", [&](Effect& effect, Mesh_RL_GL& renderer) {
        drawByHand(effect, [&] { renderer.render(shading); });
    });
}

template <class Effect>
void OwnPass(benchmark::State& state) {
    MeshShading shading;
    shading.flags |= MeshShadingFlags_ns::GPU_SHADER;
    compare<Effect>(state, "library/own_pass", [&](Effect& effect, Mesh_RL_GL& renderer) {
        renderer.shader = &effect;
        renderer.render(shading);
        renderer.shader = nullptr;
    });
}

BENCHMARK_TEMPLATE(ByHand, Glass_shader)->Iterations(ROUNDS)->UseManualTime();
BENCHMARK_TEMPLATE(ByHand, SSScattering_shader)->Iterations(ROUNDS)->UseManualTime();
BENCHMARK_TEMPLATE(ByHand, Custom_shader)->Iterations(ROUNDS)->UseManualTime();
BENCHMARK_TEMPLATE(OwnPass, Glass_shader)->Iterations(ROUNDS)->UseManualTime();
BENCHMARK_TEMPLATE(OwnPass, SSScattering_shader)->Iterations(ROUNDS)->UseManualTime();
BENCHMARK_TEMPLATE(OwnPass, Custom_shader)->Iterations(ROUNDS)->UseManualTime();

}  // namespace
}  // namespace vellum::benchmarks
