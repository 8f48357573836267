#include "viewport/drawing/effects/EffectLights.h"

#include "viewport/drawing/effects/ModelUnits.h"
#include "viewport/drawing/layer/Lights.h"
#include "viewport/scene/Scene.h"

#include <GL/glew.h>

namespace vellum::viewport {

EffectLights::Frame EffectLights::Frame::ofScene(double unit) {
    return {CurrentMatrix(GL_MODELVIEW_MATRIX) * Vector3<double>{0, 0, 0}, Scene::RADIUS, unit, 1};
}

void EffectLights::set(toolkit::ScreenAxes const& screen, Frame const& frame) const {
    auto const source = [&](EffectLight const& light) {
        Vector3<double> const p = convert<double>(light.place);
        Vector3<double> const offset = screen.right * p.x + screen.up * p.y + screen.towardViewer * p.z;
        Color4<float> const full{light.color.r, light.color.g, light.color.b, 1};
        Color4<float> const diffuse{full.r * frame.strength, full.g * frame.strength, full.b * frame.strength,
                                    1};
        return LightSource{(frame.center + offset * frame.radius) * (1 / frame.unit), false, full, diffuse,
                           full};
    };
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    source(first).set(0);
    source(second).set(1);
    glPopMatrix();
}

}  // namespace vellum::viewport
