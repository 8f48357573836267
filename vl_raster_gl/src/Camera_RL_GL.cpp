#include "Camera_RL_GL.h"

#include <cmath>

#include "internal/gl_api.h"

namespace vellum {

namespace {

constexpr unsigned int PERSPECTIVE = 0;      // the view kind; all others are orthographic
constexpr double ORTHOGRAPHIC_DEPTH = 1000;  // the box extends this far to both sides of the origin
constexpr double NEAR_BIAS = 1.001;          // moves the near plane out by a thousandth

/// Rotates to the axis of an orthographic view. After glOrtho, so that the rotation applies to the model and
/// the box stays upright.
void rotateToView(unsigned int viewKind) {
    switch (viewKind) {
    case 2:
        glRotated(180.0, 0.0, 1.0, 0.0);
        break;
    case 3:
        glRotated(90.0, 1.0, 0.0, 0.0);
        break;
    case 4:
        glRotated(-90.0, 1.0, 0.0, 0.0);
        break;
    case 5:
        glRotated(90.0, 0.0, 1.0, 0.0);
        break;
    case 6:
        glRotated(-90.0, 0.0, 1.0, 0.0);
        break;
    default:
        break;
    }
}

void beginProjection() {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
}

}  // namespace

Camera_RL_GL::~Camera_RL_GL() = default;

void Camera_RL_GL::updateModelMatrix() {
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    if (viewKind != PERSPECTIVE) {
        return;
    }
    float const* const m = transform.matrix()->e;
    // The sum is computed in float, like the matrix; GLU takes doubles.
    Vector3<float> const eye{m[12], m[13], m[14]};
    Vector3<float> const center = eye + Vector3<float>{m[0], m[1], m[2]};
    gluLookAt(static_cast<double>(eye.x), static_cast<double>(eye.y), static_cast<double>(eye.z),
              static_cast<double>(center.x), static_cast<double>(center.y), static_cast<double>(center.z),
              static_cast<double>(m[4]), static_cast<double>(m[5]), static_cast<double>(m[6]));
}

void Camera_RL_GL::updateProjectionMatrix() {
    beginProjection();
    if (viewKind == PERSPECTIVE) {
        gluPerspective(static_cast<double>(fieldOfView), static_cast<double>(aspect),
                       static_cast<double>(nearDistance), static_cast<double>(farDistance));
    } else {
        // The exponent makes equal steps of zoom equal factors. Pan moves the box against its direction.
        double const h = std::exp(static_cast<double>(zoom));
        double const x = static_cast<double>(panX);
        double const y = static_cast<double>(panY);
        double const ratio = static_cast<double>(aspect);
        glOrtho(-(h + x), h - x, -(h + y) / ratio, (h - y) / ratio, -ORTHOGRAPHIC_DEPTH, ORTHOGRAPHIC_DEPTH);
        rotateToView(viewKind);
    }
    glMatrixMode(GL_MODELVIEW);
}

void Camera_RL_GL::updateProjectionMatrixZBias() {
    beginProjection();
    if (viewKind == PERSPECTIVE) {
        gluPerspective(static_cast<double>(fieldOfView), static_cast<double>(aspect),
                       static_cast<double>(nearDistance) * NEAR_BIAS, static_cast<double>(farDistance));
    }
    glMatrixMode(GL_MODELVIEW);
}

}  // namespace vellum
