#include "viewport/drawing/ParticleRenderer.h"

#include <cstdlib>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

using Mode = Particles_RL_GL_v2::RenderMode;
using Magnitude = Particles_RL_GL_v2::RenderMagnitude;

Mode::type renderMode(ParticleMode mode) {
    switch (mode) {
    case ParticleMode::SPHERES:
        return Mode::SPHERES;
    case ParticleMode::ARROWS:
        return Mode::ARROWS;
    case ParticleMode::POINTS:
        break;
    }
    return Mode::POINTS;
}

}  // namespace

ParticleRenderer::ParticleRenderer(Core_RL& layer, std::shared_ptr<ParticleSystem_v2 const> const& system,
                                   Look const& look)
    : layer(&layer), system(system), look(look), renderer(new Particles_RL_GL_v2) {
    renderer->init();
    renderer->setRenderMode(renderMode(look.mode));
}

ParticleRenderer::~ParticleRenderer() {
    if (renderer) {
        renderer->releaseEffects();
    }
}

void ParticleRenderer::draw(float size) {
    RampColors const& colors = look.colors;
    // The effect of arrows sets a line width of its own.
    layer->pushLineWidth(layer->currentLineWidth());
    if (look.scale) {
        renderer->render(*system, false, !_isFilled, 1, look.scale->lowMagnitude(),
                         look.scale->highMagnitude(), colors.low, colors.high, colors.above, size, 1,
                         look.percent, true, true, Magnitude::LENGTH);
    } else {
        renderer->render(*system, false, !_isFilled, 1, 0, 1, colors.high, colors.high, colors.high, size,
                         ParticleChannel_v2::NONE, look.percent, true, true, Magnitude::MIN_COLOR);
    }
    layer->popLineWidth();
    _isFilled = true;
}

bool ParticleRenderer::isModeSupported(Core_RL& layer, ParticleMode mode) {
    if (mode == ParticleMode::POINTS) {
        return true;
    }
    auto const* const version = reinterpret_cast<char const*>(glGetString(GL_VERSION));
    constexpr double firstWithGeometryStages = 3.2;
    return layer.checkShaderSupport() &&
           (layer.isExtensionSupported("GL_EXT_geometry_shader4") ||
            (version != nullptr && std::strtod(version, nullptr) >= firstWithGeometryStages));
}

}  // namespace vellum::viewport
