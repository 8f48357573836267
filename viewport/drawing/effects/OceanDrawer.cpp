#include "viewport/drawing/effects/OceanDrawer.h"

#include "foundation/geometry/constants.h"
#include "toolkit/Lights.h"

#include <cmath>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;

// So far away that all of the water sees the sun in the same direction; the shader expects a place.
constexpr double SUN_DISTANCE = 1e6;
constexpr Color4<float> SUNLIGHT{1.0F, 0.86F, 0.62F, 1};

}  // namespace

OceanDrawer::OceanDrawer(toolkit::Layer& layer, OceanEffect const& effect, Sea const& sea)
    : EffectDrawer(layer), effect(effect) {
    float const side = sea.patch / sea.map.unit;
    ocean.setBaseColor(effect.color.r, effect.color.g, effect.color.b, effect.color.a);
    ocean.setScale(sea.map.heightScale);
    ocean.setDim_X(side);
    ocean.setDim_Z(side);
    ocean.setRepeat_U(1);
    ocean.setRepeat_V(1);
    ocean.setResolution(static_cast<int>(effect.sea.size));
    ocean.setFoamThreshold(static_cast<float>(effect.foamThreshold));
    ocean.setDisplacementTexture(sea.map.image);
}

EffectMaterial OceanDrawer::material() const {
    // The shader makes the highlight three times as strong and ten times as narrow as the material has it.
    return {0.5F, 24.0F};
}

void OceanDrawer::placeLights(toolkit::View const& view, toolkit::EffectSubject const& /*scene*/) const {
    double const elevation = static_cast<double>(effect.sun.x) * PI / 180;
    double const azimuth = static_cast<double>(effect.sun.y) * PI / 180;
    // The world's axes in eye space: the columns of the model-view matrix.
    Matrix4<double> const& m = view.modelView;
    Point const up = normalized(Point{m.e[4], m.e[5], m.e[6]});
    Point const forward{0, 0, -1};
    Point const level = forward - up * dot(forward, up);
    Point const ahead = length(level) > 1e-6 ? normalized(level) : Point{0, 1, 0};
    Point const right = cross(ahead, up);
    Point const sun = (ahead * std::cos(azimuth) + right * std::sin(azimuth)) * std::cos(elevation) +
                      up * std::sin(elevation);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    toolkit::LightSource{sun * SUN_DISTANCE, false, SUNLIGHT, SUNLIGHT, SUNLIGHT}.set(0);
    glPopMatrix();
}

}  // namespace vellum::viewport
