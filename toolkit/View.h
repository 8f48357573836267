#pragma once

#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/ViewKind.h"
#include "toolkit/export.h"

namespace vellum::toolkit {

/// A part of the framebuffer, in its pixels, from the lower left corner, as glViewport() takes it.
struct Viewport {
    int x = 0;
    int y = 0;
    int width = 1;   ///< above 0
    int height = 1;  ///< above 0

    double aspect() const { return static_cast<double>(width) / height; }
};

/// A half-line in the world.
struct Ray {
    Vector3<double> origin;
    Vector3<double> direction;  ///< unit length
};

/// A point of the screen.
struct ScreenPoint {
    double x;        ///< pixels from the left edge of the viewport
    double y;        ///< pixels from the top edge of the viewport, as window systems count
    double depth;    ///< 0 at the near clipping plane, 1 at the far one
    bool isInFront;  ///< false behind a perspective camera, where x and y mean nothing
};

/// What a frame is drawn with: both matrices and the viewport, as values. It is computed or read once for
/// each frame and passed to everything that needs it, so that nothing has to ask GL again.
///
///     View const view = controls.load({0, 0, width, height});    // or View::current(), after other code has set GL up
///     Ray const ray = view.rayThrough(mouseX, mouseY);
///
/// "World" is the space that the model-view matrix starts from.
struct VL_TOOLKIT_EXPORT View {
    Matrix4<double> projection;
    Matrix4<double> modelView;
    Viewport viewport;

    /// The view that GL has now.
    /// GL: glGetIntegerv(GL_VIEWPORT), glGetDoublev x 2.  State: none.
    static View current();

    /// Makes this the view of GL.
    /// GL: glViewport, glMatrixMode and glLoadMatrixd x 2.  State: the viewport, both matrices; GL_MODELVIEW
    /// selected.
    void load() const;

    /// From the world to clip space.
    Matrix4<double> toClip() const;

    /// The screen's axes in the world. They are right for any projection that shows straight lines as
    /// straight, also for one that shows only a part of a larger picture.
    ScreenAxes axes() const;

    bool isPerspective() const;

    /// Where a point of the world is on the screen.
    ScreenPoint project(Vector3<double> const& point) const;

    /// Everything that lies at a point of the screen, from the near clipping plane on.
    /// \param x, y as in ScreenPoint
    Ray rayThrough(double x, double y) const;

    /// How many pixels of the viewport's height a unit of the world covers at a point. 0 behind the viewer.
    double pixelsPerUnit(Vector3<double> const& at) const;
};

}  // namespace vellum::toolkit
