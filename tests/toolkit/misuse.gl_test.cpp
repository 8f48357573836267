// In a build that checks lifetimes, each misuse ends the process with a line that names it.
#include "internal/misuse.h"
#include "offscreen/OffscreenContext.h"
#include "toolkit/toolkit.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace vellum {
namespace {

MeshShading withEffect() {
    MeshShading shading;
    shading.flags = MeshShadingFlags_ns::GPU_SHADER;
    return shading;
}

/// A context, and a mesh of one triangle. Everything is made within the process that is to end.
struct Setting {
    Setting() : context(OffscreenContext::Settings{}) {
        misuse::setContextProbe(nullptr);
        if (!context.makeCurrent()) {
            std::abort();
        }
        mesh->setPositions({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
        mesh->setTriangles({{0, 1, 2}});
        mesh->workNormals();
    }

    OffscreenContext context;
    std::unique_ptr<Mesh> mesh = std::make_unique<Mesh>();
};

struct Misuse {
    char const* name;
    char const* message;
    void (*run)();
};

void drawWithoutLayer() {
    Setting setting;
    Mesh_RL_GL renderer(setting.mesh.get(), false);
    renderer.render(MeshShading{});
}

void particlesWithoutLayer() {
    Setting const setting;
    Particles_RL_GL_v2 particles;
    particles.init();
}

void drawAfterLayer() {
    Setting setting;
    Mesh_RL_GL renderer(setting.mesh.get(), false);
    { Core_RL_GL const layer; }
    renderer.render(MeshShading{});
}

void drawSurfaceAfterLayer() {
    Setting setting;
    Mesh_RL_GL renderer(setting.mesh.get(), false);
    { Core_RL_GL const layer; }
    renderer.render();
}

template <class Effect>
void effectAfterLayer() {
    Setting setting;
    auto layer = std::make_unique<Core_RL_GL>();
    auto effect = std::make_unique<Effect>();
    effect->create();
    layer.reset();
    effect.reset();
}

void particlesAfterLayer() {
    Setting const setting;
    auto layer = std::make_unique<toolkit::Layer>();
    ParticleSystem_v2 system;
    system.addChannel("position", ParticleChannel_v2::VECTOR);
    system.addParticles(10);
    Particles_RL_GL_v2 particles;
    particles.init();
    particles.render(system, false, true, 1, 0, 1, {}, {}, {}, 1, ParticleChannel_v2::NONE, 100, true, false,
                     Particles_RL_GL_v2::RenderMagnitude::LENGTH);
    layer.reset();
}

void effectBeforeRenderer() {
    Setting setting;
    Core_RL_GL const layer;
    Mesh_RL_GL renderer(setting.mesh.get(), false);
    {
        Glass_shader glass;
        renderer.shader = &glass;
    }
    renderer.render(withEffect());
}

void meshBeforeRenderer() {
    Setting setting;
    Core_RL_GL const layer;
    Mesh_RL_GL renderer(setting.mesh.get(), false);
    renderer.useBufferObjects = true;
    setting.mesh.reset();
    renderer.render();
}

void contextBeforeRenderer() {
    std::optional<Setting> setting(std::in_place);
    Core_RL_GL const layer;
    std::unique_ptr<Mesh> const mesh = std::move(setting->mesh);
    Mesh_RL_GL renderer(mesh.get(), false);
    renderer.useBufferObjects = true;
    renderer.render();
    setting.reset();
}

void contextBeforeEffect() {
    std::optional<Setting> setting(std::in_place);
    Core_RL_GL const layer;
    Glass_shader glass;
    glass.create();
    setting.reset();
}

void drawOnThreadWithoutContext() {
    Setting setting;
    Core_RL_GL const layer;
    Mesh_RL_GL renderer(setting.mesh.get(), false);
    std::thread([&] { renderer.render(); }).join();
}

void sessionWithoutContext() {
    misuse::setContextProbe(nullptr);
    toolkit::RenderSession const session;
}

void contextBeforeSession() {
    std::optional<Setting> setting(std::in_place);
    toolkit::RenderSession const session;
    setting.reset();
}

void toolkitMeshWithoutLayer() {
    Setting setting;
    Mesh_RL_GL renderer(setting.mesh.get(), false);
    toolkit::drawMesh(renderer, {});
}

void toolkitMeshAfterMesh() {
    Setting setting;
    toolkit::RenderSession session;
    Mesh_RL_GL& renderer = session.addMeshRenderer(*setting.mesh);
    setting.mesh.reset();
    toolkit::drawMesh(renderer, {});
}

constexpr char NO_LAYER[] = "there is no render layer";
constexpr char LAYER_GONE[] = "the render layer is gone";
constexpr char NO_CONTEXT[] = "no OpenGL context is current";

Misuse const MISUSES[] = {
    {"drawWithoutLayer", NO_LAYER, drawWithoutLayer},
    {"particlesWithoutLayer", NO_LAYER, particlesWithoutLayer},
    {"drawAfterLayer", LAYER_GONE, drawAfterLayer},
    {"drawSurfaceAfterLayer", LAYER_GONE, drawSurfaceAfterLayer},
    {"glassAfterLayer", "Glass_shader.*the render layer is gone", effectAfterLayer<Glass_shader>},
    {"userEffectAfterLayer", "Custom_shader.*the render layer is gone", effectAfterLayer<Custom_shader>},
    {"scatteringAfterLayer", LAYER_GONE, effectAfterLayer<SSScattering_shader>},
    {"displacementAfterLayer", "Displacement_shader.*the render layer is gone",
     effectAfterLayer<Displacement_shader>},
    {"particlesAfterLayer", LAYER_GONE, particlesAfterLayer},
    {"effectBeforeRenderer", "the effect of the renderer is gone", effectBeforeRenderer},
    {"meshBeforeRenderer", "the mesh of the renderer is gone", meshBeforeRenderer},
    {"contextBeforeRenderer", "Mesh_RL_GL::~Mesh_RL_GL.*no OpenGL context is current", contextBeforeRenderer},
    {"contextBeforeEffect", NO_CONTEXT, contextBeforeEffect},
    {"drawOnThreadWithoutContext", NO_CONTEXT, drawOnThreadWithoutContext},
    {"sessionWithoutContext", "RenderSession::RenderSession.*no OpenGL context", sessionWithoutContext},
    {"toolkitMeshWithoutLayer", "drawMesh: there is no render layer", toolkitMeshWithoutLayer},
    {"toolkitMeshAfterMesh", "drawMesh: the mesh of the renderer is gone", toolkitMeshAfterMesh},
    {"contextBeforeSession", "RenderSession::~RenderSession.*no OpenGL context", contextBeforeSession},
};

class misuse_test : public testing::TestWithParam<Misuse> {};

TEST_P(misuse_test, endsInMessage) {
    // Mesa has threads, which a plain fork would not take along.
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(GetParam().run(), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(each, misuse_test, testing::ValuesIn(MISUSES),
                         [](auto const& tested) { return std::string(tested.param.name); });

}  // namespace
}  // namespace vellum
