#pragma once

#include "viewport/drawing/view/CameraSpec.h"
#include "viewport/drawing/view/ViewCamera.h"
#include "viewport/scene/Scene.h"

namespace vellum::viewport {

/// What people do with a camera, as descriptions of the camera that it becomes. Plain arithmetic: nothing is
/// changed here, and no GL call is made.
///
///     spec = Navigation(scene, viewer.camera()).orbit(dx, dy);    // the mouse moved with the left button
///     viewer.setCamera(spec);
///
/// Pixels are those of the picture that the camera has framed last, x to the right and y downward. Moves that
/// are not finite, or would lead where single precision cannot follow, give the camera as it is, and so does
/// every move on an open sea.
class Navigation {
public:
    /// \param camera that has framed the scene; it and the scene must outlive this
    Navigation(Scene const& scene, ViewCamera const& camera) : scene(scene), camera(camera) {}

    /// Turns about the focus: half a turn over the shorter side of the picture. What is in front of the focus
    /// follows the cursor, up to straight above and below. From a view along an axis it leads to perspective,
    /// with the focus equally large.
    CameraSpec orbit(double dx, double dy) const;

    /// Moves so that what is as far away as the focus stays under the cursor.
    CameraSpec pan(double dx, double dy) const;

    /// Comes nearer by steps of the wheel, each a factor of 1.1 in size; negative steps lead away. What is
    /// under the cursor, as far away as the focus, stays there. \param x, y of the cursor, from the upper
    /// left corner
    CameraSpec zoom(double steps, double x, double y) const;

    /// Sees everything from the same side.
    CameraSpec fit() const;

    /// Looks along an axis, or in perspective from the usual side; sees everything.
    CameraSpec lookAlong(toolkit::ViewKind view) const;

    /// The other one of perspective and parallel projection, from the same side and with the focus equally
    /// large.
    CameraSpec otherProjection() const;

private:
    /// A camera in the frame of the scene.
    struct Pose {
        Vector3<double> eye;
        Vector3<double> focus;
        Vector3<double> up;  // of unit length, across the direction of view
        double halfHeight;   // of what is seen at the distance of the focus
        Projection projection;
        double fieldOfView;  // degrees
    };

    bool _canMove() const;
    Pose _pose() const;
    Pose _poseAlongAxis() const;
    CameraSpec _toSpec(Pose const& pose) const;
    CameraSpec _axisViewAt(Vector3<double> const& focus, double zoom) const;

    Scene const& scene;
    ViewCamera const& camera;
};

}  // namespace vellum::viewport
