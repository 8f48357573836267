#include "common.h"
#include <random>
int main() {
    Screen const screen(600, 600);
    ParticleSystem_v2 system;
    system.addChannel("position", ParticleChannel_v2::VECTOR);
    unsigned int const velocity = system.addChannel("velocity", ParticleChannel_v2::VECTOR);
    system.addParticles(200000);
    auto const simulateTo = [&](float time) {
        std::mt19937 random(1);
        std::normal_distribution<float> normal(0, 0.35F);
        for (auto* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
            for (unsigned int i = 0; i < chunk->count(); ++i) {
                Vector3<float> const p{normal(random), normal(random) * 0.5F, normal(random)};
                Vector3<float> const v{p.z * -2, 0.3F * normal(random), p.x * 2};
                chunk->channelData(0)->asVectors()[i] = p * std::cos(time) + v * (std::sin(time) / 2);
                chunk->channelData(velocity)->asVectors()[i] = v * std::cos(time) - p * (2 * std::sin(time));
            }
        }
    };
    RenderSession session;
    auto& renderer = session.add<ParticleRenderer>();
    CameraController controls(session.camera());
    controls.fit({{-1, -0.5, -1}, {1, 0.5, 1}});
    auto const frame = [&](char const* file, ParticleMode mode, float size, float percent, float time) {
        simulateTo(time);
        renderer.markChanged();
        screen.clear();
        ParticleLook look{mode, velocity, ParticleQuantity::LENGTH, 0, 2, {}, size, percent};
        auto const drawn = drawParticles(renderer, system, look, controls.load(screen.viewport));
        std::printf("%s path %d mode %d\n", file, static_cast<int>(drawn.path), static_cast<int>(drawn.mode));
        screen.save(file);
    };
    frame("particles_points.png", ParticleMode::POINTS, 2, 100, 0);
    frame("particles_spheres.png", ParticleMode::SPHERES, 0.02F, 100, 0.1F);
    frame("particles_arrows.png", ParticleMode::ARROWS, 0.06F, 5, 0.2F);
    session.layer().assumeFreeGpuMemory(26);  // megabytes: one more than what is left free
    frame("particles_chunks.png", ParticleMode::SPHERES, 0.02F, 100, 0.1F);
}
