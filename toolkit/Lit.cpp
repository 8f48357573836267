#include "toolkit/Lit.h"

#include "toolkit/Lights.h"
#include "toolkit/internal/gl.h"

namespace vellum::toolkit {

namespace {

void setFinish(Lit::Finish finish) {
    float const specular = finish == Lit::Finish::GLOSSY ? 0.17F : 0.0F;
    float const ambient = finish == Lit::Finish::BRIGHT ? 0.62F : 0.23F;
    float const shine[4] = {specular, specular, specular, 1};
    float const everywhere[4] = {ambient, ambient, ambient * 1.1F, 1};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, everywhere);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, shine);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 42);
    glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
}

/// The matrix at this moment may be that of an object, and lights are placed in the frame of the current one.
void placeHeadLights(View const& view) {
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadMatrixd(view.modelView.e);
    setHeadLights(view.axes(), view.isPerspective() ? 1.0F : 0.0F);
    glPopMatrix();
}

}  // namespace

Lit::Lit() : layer(*VL_Raster) {
    // Drawings are scaled by the model-view matrix, and their normals with them.
    layer.enable(ClientCapability::NORMALIZE);
    layer.enableColorMaterial();
    layer.enableLight_0();
    layer.enableLight_1();
    layer.enableLighting();
}

Lit::Lit(Finish finish) : Lit() {
    setFinish(finish);
}

Lit::Lit(View const& view, Finish finish) : Lit(finish) {
    placeHeadLights(view);
}

Lit::~Lit() {
    layer.disableLighting();
    layer.disableLight_1();
    layer.disableLight_0();
    layer.disableColorMaterial();
}

}  // namespace vellum::toolkit
