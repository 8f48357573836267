#pragma once

#include "foundation/export.h"
#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Vector3.h"

namespace vellum {

/// Position and orientation of a camera: a polymorphic holder of its 4 x 4 matrix.
///
/// Elements 0 to 2 of the matrix are the viewing direction, 4 to 6 the up vector and 12 to 14 the eye
/// position; the render layer reads only these.
class VL_FOUNDATION_EXPORT Camera_Transform {
public:
    Camera_Transform() = default;  ///< At the origin, looking along +X with +Y up (the identity matrix).
    Camera_Transform(Camera_Transform const&) = default;
    Camera_Transform& operator=(Camera_Transform const&) = default;
    virtual ~Camera_Transform();

    /// The matrix, never null; owned by this object. It may be written through the pointer.
    virtual Matrix4<float>* matrix();

private:
    Matrix4<float> value = Matrix4<float>::identity();
};

/// The viewport's camera: its parameters, and the operations that turn them into matrices of the renderer.
///
/// Use:
///
///     Camera_RL_GL camera;
///     camera.aspect = 4.0F / 3.0F;
///     camera.lookAt({3, 2, 4}, {0, 0, 0}, {0, 1, 0});
///     camera.updateProjectionMatrix();
///     camera.updateModelMatrix();
///
/// It does not compute parameters: the owner of the camera keeps aspect and clipping distances up to date.
class VL_FOUNDATION_EXPORT Camera_RL {
public:
    Camera_RL() = default;  ///< Perspective, 45 degrees, aspect 1, clipping at 0.1 and 1000.
    Camera_RL(Camera_RL const&) = default;
    Camera_RL& operator=(Camera_RL const&) = default;
    virtual ~Camera_RL();

    /// Loads the matrix that transforms world space to eye space.
    virtual void updateModelMatrix() = 0;

    /// Loads the projection of the present view kind.
    virtual void updateProjectionMatrix() = 0;

    /// Loads a projection with slightly different depths than updateProjectionMatrix(), so that lines over a
    /// surface pass or fail the depth test as a whole (see Core_RL::setZBias).
    virtual void updateProjectionMatrixZBias() = 0;

    /// Places the camera at `eye`, looking at `target`. `up` need not be perpendicular to the direction. If
    /// eye and target coincide, or up is parallel to the direction, the matrix contains NaN.
    void lookAt(Vector3<float> const& eye, Vector3<float> const& target, Vector3<float> const& up);

    Camera_Transform transform;  ///< Eye position, viewing direction and up vector.

    float aspect = 1.0F;          ///< Width of the viewport divided by its height.
    float fieldOfView = 45.0F;    ///< Vertical, in degrees.
    float nearDistance = 0.1F;    ///< Distance of the near clipping plane, above 0.
    float farDistance = 1000.0F;  ///< Distance of the far clipping plane.

    unsigned int viewKind = 0;  ///< 0 perspective, 1 to 6 the orthographic views along the coordinate axes.
    float panX = 0.0F;          ///< Orthographic offset of the view's center, world units.
    float panY = 0.0F;          ///< Orthographic offset of the view's center, world units.
    float zoom = 0.0F;          ///< Orthographic: half the width shown is e raised to zoom.
};

}  // namespace vellum
