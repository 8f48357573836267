#pragma once

#include "foundation/raster/Camera_RL.h"
#include "raster_gl_export.h"

namespace vellum {

/// The viewport camera as OpenGL matrices.
///
/// The parameters are members of Camera_RL; this class only loads matrices. In perspective, the model-view
/// matrix holds the camera's position and orientation. In the orthographic views, it is the identity and the
/// projection holds the orientation.
///
/// Use:
///
///     Camera_RL_GL camera;
///     camera.lookAt({3, 2, 4}, {0, 0, 0}, {0, 1, 0});
///     camera.updateProjectionMatrix();
///     camera.updateModelMatrix();
///
/// Every operation leaves GL_MODELVIEW selected. They must be called on the thread that owns the context.
class VL_RASTER_GL_EXPORT Camera_RL_GL : public Camera_RL {
public:
    Camera_RL_GL() = default;  ///< The parameters' defaults (see Camera_RL). Makes no GL call.
    Camera_RL_GL(Camera_RL_GL const&) = default;
    Camera_RL_GL& operator=(Camera_RL_GL const&) = default;
    ~Camera_RL_GL() override;

    /// Loads the view of the perspective camera: from the eye along the viewing direction. For the
    /// orthographic views the model-view matrix becomes the identity.
    ///
    /// GL: glMatrixMode(GL_MODELVIEW), glLoadIdentity; for view kind 0 then gluLookAt.
    /// State: the model-view matrix; GL_MODELVIEW selected.
    void updateModelMatrix() override;

    /// Loads the projection of the view kind: for 0 a perspective, else a box from -1000 to 1000 in depth
    /// whose half width is h = e raised to zoom, moved by the pan and rotated to the axis of the view (view
    /// kinds 2 to 6; kind 1 and kinds above 6 are not rotated).
    ///
    /// GL: glMatrixMode(GL_PROJECTION), glLoadIdentity, gluPerspective or glOrtho and glRotated,
    /// glMatrixMode(GL_MODELVIEW).
    /// State: the projection matrix; GL_MODELVIEW selected.
    void updateProjectionMatrix() override;

    /// Loads the perspective of updateProjectionMatrix() with its near plane moved out by a factor 1.001,
    /// which shifts all depths slightly.
    ///
    /// Deliberate (biased-orthographic-identity): for the orthographic views the projection becomes the
    /// identity.
    ///
    /// GL: glMatrixMode(GL_PROJECTION), glLoadIdentity, for view kind 0 gluPerspective,
    /// glMatrixMode(GL_MODELVIEW).
    /// State: the projection matrix; GL_MODELVIEW selected.
    void updateProjectionMatrixZBias() override;
};

static_assert(sizeof(Camera_RL_GL) == sizeof(Camera_RL), "the GL camera holds nothing of its own");

}  // namespace vellum
