#include "viewport/drawing/effects/ScatteringDrawer.h"

#include "viewport/drawing/effects/ModelUnits.h"
#include "viewport/scene/Scene.h"

#include <GL/glew.h>

namespace vellum::viewport {

ScatteringDrawer::ScatteringDrawer(ReportingLayer& layer, ScatteringEffect const& effect)
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

void ScatteringDrawer::placeLights(toolkit::ScreenAxes const& screen, double unit) const {
    // The shader looks for its lights in clip coordinates, in which lengths are stretched by the projection; and at the
    // distances that a scene of this size has, a tenth of the light arrives.
    EffectLights::Frame frame = EffectLights::Frame::ofScene(unit);
    frame.center = CurrentMatrix(GL_PROJECTION_MATRIX) * frame.center;
    frame.radius = 12 * Scene::RADIUS;
    frame.unit = 1;
    frame.strength = 10;
    effect.lights.set(screen, frame);
}

void ScatteringDrawer::prepareMesh() {
    EffectDrawer::prepareMesh();
    // Its passes send their values to a program that is enabled, and do not enable it themselves.
    scattering.enable(true);
}

}  // namespace vellum::viewport
