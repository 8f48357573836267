#include "viewport/drawing/ParticleRenderer.h"

#include <cstdlib>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

using Mode = Particles_RL_GL_v2::RenderMode;
using Magnitude = Particles_RL_GL_v2::RenderMagnitude;

Mode::type renderMode(ParticleMode const& mode) {
    switch (mode) {
    case ParticleMode::spheres:
        return Mode::SPHERES;
    case ParticleMode::arrows:
        return Mode::ARROWS;
    case ParticleMode::points:
        break;
    }
    return Mode::POINTS;
}

}  // namespace

ParticleRenderer::ParticleRenderer(Core_RL& layer, std::shared_ptr<ParticleSystem_v2 const> const& system,
                                   Look const& look)
    : _layer(&layer), _system(system), _look(look), _renderer(new Particles_RL_GL_v2) {
    _renderer->init();
    _renderer->setRenderMode(renderMode(look.mode));
}

ParticleRenderer::~ParticleRenderer() {
    if (_renderer) {
        _renderer->releaseEffects();
    }
}

void ParticleRenderer::draw(float const& size) {
    RampColours const& colours = _look.colours;
    // The effect of arrows sets a line width of its own.
    _layer->pushLineWidth(_layer->currentLineWidth());
    if (_look.scale) {
        _renderer->render(*_system, false, !_isFilled, 1, _look.scale->lowMagnitude(),
                          _look.scale->highMagnitude(), colours.low, colours.high, colours.above, size, 1,
                          _look.percent, true, true, Magnitude::LENGTH);
    } else {
        _renderer->render(*_system, false, !_isFilled, 1, 0, 1, colours.high, colours.high, colours.high,
                          size, ParticleChannel_v2::NONE, _look.percent, true, true, Magnitude::MIN_COLOR);
    }
    _layer->popLineWidth();
    _isFilled = true;
}

bool ParticleRenderer::isModeSupported(Core_RL& layer, ParticleMode const& mode) {
    if (mode == ParticleMode::points) {
        return true;
    }
    auto const* const version = reinterpret_cast<char const*>(glGetString(GL_VERSION));
    constexpr double firstWithGeometryStages = 3.2;
    return layer.checkShaderSupport() &&
           (layer.isExtensionSupported("GL_EXT_geometry_shader4") ||
            (version != nullptr && std::strtod(version, nullptr) >= firstWithGeometryStages));
}

}  // namespace vellum::viewport
