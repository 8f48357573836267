#include "viewport/drawing/layer/Lit.h"

#include <GL/glew.h>

namespace vellum::viewport {

Lit::Lit(Core_RL& layer) : layer(layer) {
    // Drawings are scaled by the model-view matrix, and their normals with them.
    layer.enable(ClientCapability::NORMALIZE);
    layer.enableColorMaterial();
    layer.enableLight_0();
    layer.enableLight_1();
    layer.enableLighting();
}

Lit::Lit(Core_RL& layer, Finish finish) : Lit(layer) {
    float const specular = finish == Finish::GLOSSY ? 0.17F : 0.0F;
    float const ambient = finish == Finish::BRIGHT ? 0.62F : 0.23F;
    float const shine[4] = {specular, specular, specular, 1};
    float const everywhere[4] = {ambient, ambient, ambient * 1.1F, 1};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, everywhere);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, shine);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 42);
    glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
}

Lit::~Lit() {
    layer.disableLighting();
    layer.disableLight_1();
    layer.disableLight_0();
    layer.disableColorMaterial();
}

}  // namespace vellum::viewport
