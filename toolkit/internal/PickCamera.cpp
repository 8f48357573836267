#include "toolkit/internal/PickCamera.h"

#include "toolkit/internal/gl.h"

namespace vellum::toolkit {

PickCamera::PickCamera(Camera_RL& camera, Matrix4<double> const& crop)
    : Camera_RL(camera), camera(camera), crop(crop) {}

void PickCamera::updateModelMatrix() {
    camera.updateModelMatrix();
}

void PickCamera::updateProjectionMatrix() {
    camera.updateProjectionMatrix();
    _crop();
}

void PickCamera::updateProjectionMatrixZBias() {
    camera.updateProjectionMatrixZBias();
    _crop();
}

void PickCamera::_crop() const {
    Matrix4<double> projection;
    glGetDoublev(GL_PROJECTION_MATRIX, projection.e);
    projection = crop * projection;
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(projection.e);
    glMatrixMode(GL_MODELVIEW);
}

}  // namespace vellum::toolkit
