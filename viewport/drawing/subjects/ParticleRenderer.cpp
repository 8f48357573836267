#include "viewport/drawing/subjects/ParticleRenderer.h"

#include "toolkit/Layer.h"

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
                                   ParticleStyle const& style)
    : layer(&layer), system(system), style(style), renderer(new Particles_RL_GL_v2) {
    renderer->init();
    renderer->setRenderMode(renderMode(style.mode));
}

ParticleRenderer::~ParticleRenderer() {
    if (renderer) {
        renderer->releaseEffects();
    }
}

void ParticleRenderer::draw(float size) {
    RampColors const& colors = style.colors;
    // The effect of arrows sets a line width of its own.
    layer->pushLineWidth(layer->currentLineWidth());
    if (style.scale) {
        renderer->render(*system, false, !isFilled, 1, style.scale->lowMagnitude(),
                         style.scale->highMagnitude(), colors.low, colors.high, colors.above, size, 1,
                         style.percent, true, true, Magnitude::LENGTH);
    } else {
        renderer->render(*system, false, !isFilled, 1, 0, 1, colors.high, colors.high, colors.high, size,
                         ParticleChannel_v2::NONE, style.percent, true, true, Magnitude::MIN_COLOR);
    }
    layer->popLineWidth();
    isFilled = true;
}

bool ParticleRenderer::isModeSupported(Core_RL& layer, ParticleMode mode) {
    return mode == ParticleMode::POINTS || toolkit::hasGeometryStages(layer);
}

}  // namespace vellum::viewport
