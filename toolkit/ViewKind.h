#pragma once

#include "foundation/geometry/Vector3.h"
#include "toolkit/export.h"

namespace vellum::toolkit {

/// The values of Camera_RL::viewKind, for a world whose up direction is +Y.
///
/// An orthographic kind turns the world before it is looked at along -z. What that shows:
///
///     kind  turned by        seen from   right on the screen   up on the screen
///     1     nothing            +z            +x                    +y            front
///     2     180 degrees, y     -z            -x                    +y            back
///     3      90 degrees, x     +y            +x                    -z            top
///     4     -90 degrees, x     -y            +x                    +z            bottom
///     5      90 degrees, y     -x            +z                    +y            left
///     6     -90 degrees, y     +x            -z                    +y            right
enum class ViewKind : unsigned int {
    PERSPECTIVE = 0,
    FRONT = 1,
    BACK = 2,
    TOP = 3,
    BOTTOM = 4,
    LEFT = 5,
    RIGHT = 6
};

/// The axes of a screen in the world: unit length, perpendicular to each other.
struct ScreenAxes {
    Vector3<double> right;
    Vector3<double> up;
    Vector3<double> towardViewer;
};

/// The axes of an orthographic view; those of ViewKind::FRONT for ViewKind::PERSPECTIVE. GL: none.
VL_TOOLKIT_EXPORT ScreenAxes screenAxes(ViewKind kind);

}  // namespace vellum::toolkit
