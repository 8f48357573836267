#include "viewport/drawing/Lit.h"

#include <GL/glew.h>

namespace vellum::viewport {

Lit::Lit(Core_RL& layer, Finish const& finish) : _layer(layer) {
    float const specular = finish == Finish::glossy ? 0.17F : 0.0F;
    float const ambient = finish == Finish::bright ? 0.62F : 0.23F;
    float const shine[4] = {specular, specular, specular, 1};
    float const everywhere[4] = {ambient, ambient, ambient * 1.1F, 1};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, everywhere);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, shine);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 42);
    glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    _layer.enableColorMaterial();
    _layer.enableLight_0();
    _layer.enableLight_1();
    _layer.enableLighting();
}

Lit::~Lit() {
    _layer.disableLighting();
    _layer.disableLight_1();
    _layer.disableLight_0();
    _layer.disableColorMaterial();
}

}  // namespace vellum::viewport
