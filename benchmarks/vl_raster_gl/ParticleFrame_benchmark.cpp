// Questions. Each answer is the ratio of two times that are measured alternately in one run:
//  - StaticFrame: what does a frame of four million unchanged particles cost, drawn as points by the effect
//    from its buffer, compared with the same draw written by hand? Bound: at most 1.03.
//  - SphereFrame: what does a frame of 50000 unchanged spheres of six pixels cost, compared with a program written by hand
//    that makes the same picture with a geometry stage and as little work as it can? Bound: at most 1.2.
//  - Dispatcher: what does render() cost until it has selected a path, compared with the queries that it
//    makes, written by hand? Bound: at most 1.2. Both sides then take the cheapest path, without particles,
//    through a render layer that queries the driver and draws nothing.
//
// Constant: the driver and its context, the program with its uniforms, the buffer and the draw calls. The
// viewport is small, so that the cost of a frame is the work on the points; both sides must draw the same
// image.

#include "benchmarks/PairTiming.h"
#include "benchmarks/sine_particles.h"
#include "frames_by_hand.h"

#include "Core_RL_GL.h"
#include "Particles_RL_GL_v2.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "offscreen/OffscreenContext.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::benchmarks {
namespace {

constexpr unsigned int PARTICLES = 4000000;
constexpr unsigned int SPHERES = 50000;
constexpr float DIAMETER = 0.07F;  // in clip space
constexpr int SPHERE_SIDE = 256;   // pixels
constexpr int SIDE = 64;           // pixels
constexpr int ROUNDS = 6;
constexpr unsigned int FRAMES_PER_ROUND = 6;
constexpr unsigned int PARTS_PER_ROUND = 50;
constexpr unsigned int CALLS_PER_PART = 2000;

constexpr Color4<float> BLUE{0, 0, 1, 1};
constexpr Color4<float> RED{1, 0, 0, 1};
constexpr Color4<float> WHITE{1, 1, 1, 1};

template <class Draw>
void frame(Draw const& draw) {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    draw();
    glFinish();
}

/// Times frames that the library draws and the same drawn by hand.
template <class Library, class ByHand>
void timeFrames(benchmark::State& state, Library const& drawByLibrary, ByHand const& drawByHand) {
    PairTiming timing(FRAMES_PER_ROUND);
    timing.run(
        state, [&](unsigned int const&) { frame(drawByLibrary); },
        [&](unsigned int const&) { frame(drawByHand); });
    state.counters["library_ms"] = timing.librarySecondsPerRound() * 1e3 / FRAMES_PER_ROUND;
    state.counters["other_ms"] = timing.otherSecondsPerRound() * 1e3 / FRAMES_PER_ROUND;
    state.counters["library/by_hand"] = timing.ratio();
}

void StaticFrame(benchmark::State& state) {
    OffscreenContext const context({SIDE, SIDE});
    if (!context.isValid()) {
        state.SkipWithError(context.error().c_str());
        return;
    }
    benchmark::AddCustomContext("GL", reinterpret_cast<char const*>(glGetString(GL_RENDERER)));
    FrameLayer layer;
    ParticleSystem_v2 system;
    makeParticles(system, PARTICLES);
    Particles_RL_GL_v2 particles;
    particles.init();
    glEnable(GL_DEPTH_TEST);
    auto const drawByLibrary = [&] {
        particles.render(system, false, false, 1, 0, 1, BLUE, RED, WHITE, 1, 1, 100, true, true,
                         Particles_RL_GL_v2::RenderMagnitude::LENGTH);
    };
    frame(drawByLibrary);
    std::vector<unsigned char> const expected = readSquare(SIDE);
    ParticlesByHand const byHand(layer, PARTICLES);
    frame([&] { byHand.draw(); });
    if (layer.program == 0 || readSquare(SIDE) != expected) {
        state.SkipWithError("the pictures differ");
        return;
    }
    timeFrames(state, drawByLibrary, [&] { byHand.draw(); });
    particles.clear();
    particles.releaseEffects();
}

/// A program for the same spheres as the effect, with constants where the effect has varyings.
class SpheresByHand {
public:
    explicit SpheresByHand(FrameLayer const& layer) : buffer(layer.buffer), program(glCreateProgram()) {
        _attach(GL_VERTEX_SHADER, R"(#version 150 compatibility
out vec4 vertexColor;
void main()
{
    float rate = length(gl_Color.rgb);
    vec3 color = rate > 1.0 ? vec3(1.0) : mix(vec3(0.0, 0.0, 1.0), vec3(1.0, 0.0, 0.0), rate);
    vertexColor = vec4(color, 1.0);
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
}
)");
        _attach(GL_GEOMETRY_SHADER, R"(#version 150 compatibility
layout(points) in;
layout(triangle_strip, max_vertices = 4) out;
uniform float size;
in vec4 vertexColor[];
flat out vec3 color;
flat out vec4 depths;
noperspective out vec2 place;
void corner(vec4 center, vec2 s)
{
    color = vertexColor[0].rgb;
    depths = vec4(center.zw, gl_ProjectionMatrix[2].zw * size);
    place = s;
    gl_Position = center + vec4(s * (0.5 * size), 0.0, 0.0);
    EmitVertex();
}
void main()
{
    vec4 center = gl_in[0].gl_Position;
    corner(center, vec2(-1.0, -1.0));
    corner(center, vec2(-1.0, 1.0));
    corner(center, vec2(1.0, -1.0));
    corner(center, vec2(1.0, 1.0));
}
)");
        _attach(GL_FRAGMENT_SHADER, R"(#version 150 compatibility
flat in vec3 color;
flat in vec4 depths;
noperspective in vec2 place;
void main()
{
    float zz = 1.0 - dot(place, place);
    if (zz <= 0.0) {
        discard;
    }
    float z = sqrt(zz);
    float diffuse = max(dot(vec3(place, z), vec3(0.816496581, 0.40824829, 0.40824829)), 0.0) * 0.5 + 0.5;
    vec2 depth = depths.xy + z * depths.zw;
    gl_FragDepth = depth.x / depth.y * 0.5 + 0.5;
    gl_FragColor = vec4(color * diffuse, 1.0);
}
)");
        glLinkProgram(program);
        glUseProgram(program);
        glUniform1f(glGetUniformLocation(program, "size"), DIAMETER);
        glUseProgram(0);
    }
    ~SpheresByHand() { glDeleteProgram(program); }
    SpheresByHand(SpheresByHand const&) = delete;
    SpheresByHand& operator=(SpheresByHand const&) = delete;

    void draw() const {
        glUseProgram(program);
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_COLOR_ARRAY);
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
        glVertexPointer(3, GL_FLOAT, RECORD_BYTES, nullptr);
        glColorPointer(3, GL_FLOAT, RECORD_BYTES, reinterpret_cast<void*>(COLOR_OFFSET));
        glDrawArrays(GL_POINTS, 0, SPHERES);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glDisableClientState(GL_VERTEX_ARRAY);
        glDisableClientState(GL_COLOR_ARRAY);
        glUseProgram(0);
    }

private:
    void _attach(GLenum stage, char const* text) const {
        GLuint const shader = glCreateShader(stage);
        glShaderSource(shader, 1, &text, nullptr);
        glCompileShader(shader);
        glAttachShader(program, shader);
        glDeleteShader(shader);
    }

    GLuint buffer;
    GLuint program;
};

/// Whether two pictures differ by more than a step of rounding in at most one pixel of a thousand: where
/// spheres intersect, rounding decides which is in front.
bool areAlike(std::vector<unsigned char> const& a, std::vector<unsigned char> const& b) {
    std::size_t different = 0;
    for (std::size_t k = 0; k < a.size(); ++k) {
        different += std::abs(int{a[k]} - int{b[k]}) > 1 ? 1 : 0;
    }
    return different * 1000 <= a.size();
}

void SphereFrame(benchmark::State& state) {
    // The driver's threads would hide the work on the fragments.
    setenv("LP_NUM_THREADS", "0", 1);
    OffscreenContext const context({SPHERE_SIDE, SPHERE_SIDE});
    if (!context.isValid()) {
        state.SkipWithError(context.error().c_str());
        return;
    }
    FrameLayer layer;
    ParticleSystem_v2 system;
    makeParticles(system, SPHERES);
    Particles_RL_GL_v2 particles;
    particles.init();
    particles.setRenderMode(Particles_RL_GL_v2::RenderMode::SPHERES);
    glEnable(GL_DEPTH_TEST);
    glMatrixMode(GL_PROJECTION);
    glFrustum(-0.5, 0.5, -0.5, 0.5, 1, 10);
    glMatrixMode(GL_MODELVIEW);
    glTranslatef(0, 0, -3);
    auto const drawByLibrary = [&] {
        particles.render(system, false, false, 1, 0, 1, BLUE, RED, WHITE, DIAMETER, 1, 100, true, true,
                         Particles_RL_GL_v2::RenderMagnitude::LENGTH);
    };
    frame(drawByLibrary);
    std::vector<unsigned char> const expected = readSquare(SPHERE_SIDE);
    SpheresByHand const byHand(layer);
    frame([&] { byHand.draw(); });
    if (!areAlike(readSquare(SPHERE_SIDE), expected)) {
        state.SkipWithError("the pictures differ");
        return;
    }
    timeFrames(state, drawByLibrary, [&] { byHand.draw(); });
    particles.clear();
    particles.releaseEffects();
}

/// Forwards queries to the driver and draws nothing.
class QueryLayer : public Core_RL_GL {
public:
    float setPointSize(float const& size) override { return size; }
    void enableClientState(ClientCapability::type /*array*/) override {}
    void disableClientState(ClientCapability::type /*array*/) override {}
    void vertexPointer(int /*size*/, DataType::type /*type*/, unsigned long /*stride*/,
                       void* /*pointer*/) override {}
    void colorPointer(int /*size*/, DataType::type /*type*/, unsigned long /*stride*/,
                      void* /*pointer*/) override {}
    void drawArrays(Primitive::type /*mode*/, unsigned long /*first*/, unsigned long /*count*/) override {}
};

void Dispatcher(benchmark::State& state) {
    OffscreenContext const context({SIDE, SIDE});
    if (!context.isValid()) {
        state.SkipWithError(context.error().c_str());
        return;
    }
    QueryLayer const layer;
    ParticleSystem_v2 const system;
    Particles_RL_GL_v2 particles;
    particles.init();
    unsigned int constexpr NONE = ParticleChannel_v2::NONE;
    auto constexpr LENGTH = Particles_RL_GL_v2::RenderMagnitude::LENGTH;
    bool const useShaders = false;
    PairTiming timing(PARTS_PER_ROUND);
    timing.run(
        state,
        [&](unsigned int const&) {
            for (unsigned int call = 0; call < CALLS_PER_PART; ++call) {
                particles.render(system, false, false, 1, 0, 1, BLUE, RED, WHITE, 1, NONE, 100, false,
                                 useShaders, LENGTH);
            }
        },
        [&](unsigned int const&) {
            for (unsigned int call = 0; call < CALLS_PER_PART; ++call) {
                unsigned int const free = VL_Raster->getFreeGpuMemory();
                bool const hasShaders = VL_Raster->checkShaderSupport();
                benchmark::DoNotOptimize(free);
                benchmark::DoNotOptimize(hasShaders);
                particles.renderFromMemoryNoShaders(system, false, false, 1, 0, 1, BLUE, RED, WHITE, 1, NONE,
                                                    100, LENGTH);
            }
        });
    constexpr double NANOSECONDS = 1e9 / (PARTS_PER_ROUND * CALLS_PER_PART);
    state.counters["library_ns"] = timing.librarySecondsPerRound() * NANOSECONDS;
    state.counters["other_ns"] = timing.otherSecondsPerRound() * NANOSECONDS;
    state.counters["library/by_hand"] = timing.ratio();
}

void settings(benchmark::internal::Benchmark* pair) {
    pair->UseManualTime()->Iterations(ROUNDS)->Unit(benchmark::kMillisecond);
}

BENCHMARK(StaticFrame)->Apply(settings);
BENCHMARK(SphereFrame)->Apply(settings);
BENCHMARK(Dispatcher)->Apply(settings);

}  // namespace
}  // namespace vellum::benchmarks
