#include "viewport/drawing/effects/DisplacementDrawer.h"

namespace vellum::viewport {

DisplacementDrawer::DisplacementDrawer(toolkit::Layer& layer, DisplacementEffect const& effect)
    : EffectDrawer(layer), effect(effect) {
    displacement.setBaseColor(effect.color.r, effect.color.g, effect.color.b, effect.color.a);
    displacement.setScale(effect.scale);
    displacement.setTileScale(static_cast<float>(effect.tile.x), static_cast<float>(effect.tile.y));
    displacement.setDepth(static_cast<int>(effect.depth));
    displacement.tesselate(effect.tessellate);
    displacement.setNLights(effect.lights.count);
    displacement.setDisplacementTexture(VL_String(effect.map.c_str()));
    displacement.setNormalsTexture(VL_String(effect.normals.c_str()));
}

EffectMaterial DisplacementDrawer::material() const {
    return {static_cast<float>(effect.gloss), static_cast<float>(effect.shininess)};
}

void DisplacementDrawer::placeLights(toolkit::View const& view, toolkit::EffectSubject const& scene) const {
    toolkit::setEffectLights(displacement, effect.lights, view, scene);
}

}  // namespace vellum::viewport
