#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/raster/Camera_RL.h"
#include "toolkit/View.h"
#include "toolkit/ViewKind.h"
#include "toolkit/export.h"

namespace vellum::toolkit {

/// Moves a camera as people expect it of a viewport: orbit, pan, zoom at the cursor, fit, and the six
/// orthographic views. It knows no window system; its owner passes what the mouse has done, in pixels of the
/// framebuffer.
///
///     CameraController controls(camera);
///     controls.fit(mesh.box());                                   // whenever the contents change
///     controls.orbit(dx, dy);                                     // mouse moved with the left button
///     View const view = controls.load({0, 0, width, height});     // every frame
///
/// It keeps its state in double precision and never computes it back from the camera, so that nothing drifts.
/// It looks straight up and down without a jump and without NaN.
///
/// In perspective the camera turns about the target, the point that pan moves; in the orthographic views the
/// target is the middle of the screen. Orbiting in an orthographic view changes to perspective, seen from the
/// same side and with the target equally large. The world's up direction is +Y.
///
/// Numbers that are NaN or infinite, and moves that would lead more than 1e15 units away or to sizes that
/// single precision cannot show at their place, are ignored: a call with such a number changes nothing.
///
/// Orthographic cameras see 1000 units on both sides of the origin; what lies beyond is clipped (see
/// Camera_RL_GL).
///
/// Only load() makes GL calls. The camera must outlive the controller; nothing else may change it.
class VL_TOOLKIT_EXPORT CameraController {
public:
    /// Perspective, from the upper right front, at a box of size 1 about the origin. The camera is written by
    /// update() and load() alone.
    explicit CameraController(Camera_RL& camera);

    // == What is seen ==

    /// Shows a box whole, from the present direction, with its center as the target; it stays whole when the
    /// viewport changes its shape, until the camera is moved. The clipping distances contain the box from now
    /// on, however the camera moves. A box without extent is taken as one of size 1; a box that is not finite
    /// is ignored.
    void fit(Box3<double> const& box);

    /// What the clipping distances contain, in place of the box of fit(): where more is drawn than is fitted,
    /// such as the gizmo of one object or the ground below it. A box that is not finite is ignored.
    void setContents(Box3<double> const& box);

    void
    setViewKind(ViewKind kind);  ///< The target stays in the middle, equally large. Other values are ignored.
    ViewKind viewKind() const { return kind; }

    /// Looks along a direction, at the same target from the same distance; changes to perspective. Straight
    /// up and down keep what is to the right on the screen. \param direction any length above 0; others are
    /// ignored.
    void lookAlong(Vector3<double> const& direction);

    /// The vertical field of view of the perspective, degrees, 1 to 170; others are brought into that range.
    /// The target stays equally large.
    void setFieldOfView(double degrees);

    // == What the mouse does ==
    // x to the right and y downward, in pixels of the viewport of the last load().

    /// Turns about the target: half a turn over the viewport's shorter side. What is in front of the target
    /// follows the cursor. Stops looking straight up and down. A move by 0 changes nothing, the view kind
    /// neither.
    void orbit(double dx, double dy);

    /// Moves the target with the cursor: what is at its distance stays under the cursor.
    void pan(double dx, double dy);

    /// Comes nearer or goes away by steps of the wheel, each a factor of 1.1 in size; positive comes nearer.
    /// What is under the cursor, at the distance of the target, stays there. \param x, y of the cursor, from
    /// the upper left corner of the viewport
    void zoom(double steps, double x, double y);
    void zoom(double steps);  ///< At the middle of the viewport.

    // == Every frame ==

    /// Writes the parameters of the camera for a viewport, and loads viewport and matrices.
    /// GL: glViewport, the camera's updateProjectionMatrix() and updateModelMatrix(), the calls of
    /// View::current(). State: the viewport, both matrices; GL_MODELVIEW selected.
    View load(Viewport const& viewport);

    /// Writes the parameters of the camera for a viewport; sides below 1, as of a minimized window, are taken
    /// as 1.
    ///
    /// The near plane is at least 1/2000 of the far one, for the sake of depth precision, except where it
    /// would cut the target away: then it is half as far as the target. The direction in the camera's matrix
    /// grows with the distance of the eye from the origin: Camera_RL_GL adds both in single precision, in
    /// which a step of length 1 is lost far away. GL: none.
    void update(Viewport const& viewport);

    // == State, for saving and for overlays ==

    Vector3<double> const& target() const { return middle; }
    Vector3<double> direction() const;  ///< That the camera looks along; unit length.
    double distance() const;            ///< Of a perspective camera from its target.
    double unitsPerPixel() const;       ///< At the target.

private:
    ScreenAxes _axes() const;
    double _tangent() const;
    double _heightToFit() const;
    void _moveTo(Vector3<double> const& newMiddle, double newHalfHeight);
    void _changeToPerspective();

    Camera_RL& camera;
    ViewKind kind = ViewKind::PERSPECTIVE;
    Vector3<double> middle{0, 0, 0};  // the target
    double yaw = 0;           // radians, of the perspective's direction; 0 looks along -z, pi/2 along +x
    double pitch = 0;         // radians, -pi/2 to pi/2; negative looks down
    double halfHeight = 1;    // of what is seen at the target, world units, above 0
    double fieldOfView = 32;  // degrees, vertical
    Box3<double> fitted{{-0.5, -0.5, -0.5}, {0.5, 0.5, 0.5}};
    Box3<double> contents{{-0.5, -0.5, -0.5}, {0.5, 0.5, 0.5}};  // within the clipping distances
    bool isFitted = true;                                        // nothing has moved since fit()
    Viewport viewport{0, 0, 1, 1};                               // of the last update
};

}  // namespace vellum::toolkit
