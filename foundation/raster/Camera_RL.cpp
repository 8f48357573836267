#include "foundation/raster/Camera_RL.h"

namespace vellum {

Camera_Transform::~Camera_Transform() = default;

Matrix4<float>* Camera_Transform::matrix() {
    return &value;
}

Camera_RL::~Camera_RL() = default;

void Camera_RL::lookAt(Vector3<float> const& eye, Vector3<float> const& target, Vector3<float> const& up) {
    Vector3<float> const direction = normalized(target - eye);
    Vector3<float> const side = normalized(cross(direction, up));
    // Not `up` itself, which need not be perpendicular to the direction.
    Vector3<float> const upright = cross(side, direction);
    *transform.matrix() = {{direction.x, direction.y, direction.z, 0.0F, upright.x, upright.y, upright.z,
                            0.0F, side.x, side.y, side.z, 0.0F, eye.x, eye.y, eye.z, 1.0F}};
}

}  // namespace vellum
