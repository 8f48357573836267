// Particles that a small simulation moves: they circle a center. Their color is their speed.
#include "toolkit/toolkit.h"
#include <GLFW/glfw3.h>
#include <random>
using namespace vellum;
using namespace vellum::toolkit;

// Calls visit(position, velocity) for every particle: channels 0 and 1, chunk by chunk.
template <class Visit>
void forEachParticle(ParticleSystem_v2& system, Visit const& visit) {
    for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        for (unsigned int i = 0; i < chunk->count(); ++i) {
            visit(chunk->channelData(0)->asVectors()[i], chunk->channelData(1)->asVectors()[i]);
        }
    }
}

int main() {
    glfwInit();
    GLFWwindow* const window = glfwCreateWindow(640, 480, "Particles", nullptr, nullptr);
    if (window == nullptr) {
        return 1;
    }
    glfwMakeContextCurrent(window);

    ParticleSystem_v2 system;
    system.addChannel("position", ParticleChannel_v2::VECTOR);  // the first channel, under this name
    unsigned int const velocity = system.addChannel("velocity", ParticleChannel_v2::VECTOR);
    system.addParticles(5000);
    std::mt19937 random(1);
    std::normal_distribution<float> spread(0, 0.4F);
    forEachParticle(system, [&](Vector3<float>& p, Vector3<float>& v) {
        p = {spread(random), 0.3F * spread(random), spread(random)};
        v = {-1.5F * p.z, 0, 1.5F * p.x};
    });

    RenderSession session;
    auto& particles = session.add<ParticleRenderer>();
    CameraController controls(session.camera());
    controls.fit({{-0.8, -0.4, -0.8}, {0.8, 0.4, 0.8}});
    ParticleLook look;
    look.mode = ParticleMode::SPHERES;
    look.size = 0.04F;
    look.channel = velocity;
    look.high = 2;
    look.colors = ColorMap::named("plasma");
    while (!glfwWindowShouldClose(window)) {
        forEachParticle(system, [](Vector3<float>& p, Vector3<float>& v) {
            v = v - p * 0.04F;  // pulled to the center
            p = p + v * 0.01F;
        });
        particles.markChanged();
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        drawParticles(particles, system, look, controls.load({0, 0, 640, 480}));
        glfwSwapBuffers(window);
        glfwPollEvents();
    }
}
