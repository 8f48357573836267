#pragma once

#include "foundation/geometry/Matrix4.h"
#include "foundation/raster/Camera_RL.h"

namespace vellum::toolkit {

/// A camera whose projections show only a part of what those of another camera show. It is the render layer's
/// camera while candidates are drawn for picking: the layer loads the camera's projection for
/// Core_RL::setZBias(), and the crop of the projection would be lost.
///
/// Its parameters are a copy. It never changes the other camera, which must outlive it.
class PickCamera : public Camera_RL {
public:
    /// \param crop a matrix that clip space is multiplied with
    PickCamera(Camera_RL& camera, Matrix4<double> const& crop);

    void updateModelMatrix() override;

    /// GL: that of the camera; glGetDoublev, glMatrixMode, glLoadMatrixd, glMatrixMode.
    /// State: the projection matrix; GL_MODELVIEW selected.
    void updateProjectionMatrix() override;
    void updateProjectionMatrixZBias() override;

private:
    void _crop() const;

    Camera_RL& camera;
    Matrix4<double> crop;
};

}  // namespace vellum::toolkit
