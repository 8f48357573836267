#include "viewport/drawing/effects/ScatteringDrawer.h"

namespace vellum::viewport {

ScatteringDrawer::ScatteringDrawer(toolkit::Layer& layer, ScatteringEffect const& effect)
    : EffectDrawer(layer), effect(effect) {
    scattering.setBaseColor(effect.color.r, effect.color.g, effect.color.b, effect.color.a);
    scattering.setExtinctionCoefficient(effect.extinction);
    scattering.setMaterialThickness(static_cast<float>(effect.thickness));
    scattering.setRimScalar(static_cast<float>(effect.rim));
    scattering.setNLights(effect.lights.count);
}

EffectMaterial ScatteringDrawer::material() const {
    return {1, static_cast<float>(effect.shininess)};
}

void ScatteringDrawer::placeLights(toolkit::View const& view, toolkit::EffectSubject const& scene) const {
    toolkit::setEffectLights(scattering, effect.lights, view, scene);
}

}  // namespace vellum::viewport
