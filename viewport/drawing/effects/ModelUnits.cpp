#include "viewport/drawing/effects/ModelUnits.h"

#include <GL/glew.h>

namespace vellum::viewport {

CurrentMatrix::CurrentMatrix(unsigned int name) {
    glGetDoublev(name, e);
}

ModelUnits::ModelUnits(Matrix4<double> const& toScene) {
    double const unit = toScene.e[0];
    CurrentMatrix const modelView(GL_MODELVIEW_MATRIX);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glScaled(unit, unit, unit);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glScaled(1 / unit, 1 / unit, 1 / unit);
    glMultMatrixd(modelView.e);
    glMultMatrixd(toScene.e);
}

ModelUnits::~ModelUnits() {
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}

}  // namespace vellum::viewport
