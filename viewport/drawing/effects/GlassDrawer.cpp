#include "viewport/drawing/effects/GlassDrawer.h"

namespace vellum::viewport {

GlassDrawer::GlassDrawer(toolkit::Layer& layer, GlassEffect const& effect)
    : EffectDrawer(layer), effect(effect) {
    std::string environment = effect.environment;
    if (environment.empty()) {
        sky = std::make_unique<MemoryFile>(skyPicture());
        environment = sky->path();
    }
    glass.setBaseColor(effect.color.r, effect.color.g, effect.color.b, effect.color.a);
    glass.setDepth(static_cast<float>(effect.depth));
    glass.setMixRatio(static_cast<float>(effect.mix));
    glass.setNLights(effect.lights.count);
    glass.setEnvironmentTexture(VL_String(environment.c_str()));
}

EffectMaterial GlassDrawer::material() const {
    return {0, 0};
}

void GlassDrawer::placeLights(toolkit::View const& view, toolkit::EffectSubject const& scene) const {
    toolkit::setEffectLights(glass, effect.lights, view, scene);
}

}  // namespace vellum::viewport
