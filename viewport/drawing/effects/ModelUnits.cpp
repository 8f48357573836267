#include "viewport/drawing/effects/ModelUnits.h"

#include "foundation/geometry/Vector3.h"

#include <GL/glew.h>

namespace vellum::viewport {

ModelUnits::ModelUnits(Matrix4<double> const& toScene) {
    double const unit = length(Vector3<double>{toScene.e[0], toScene.e[1], toScene.e[2]});
    Matrix4<double> modelView{};
    glGetDoublev(GL_MODELVIEW_MATRIX, modelView.e);
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
