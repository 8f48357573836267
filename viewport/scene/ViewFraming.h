#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Vector3.h"

#include <vector>

namespace vellum::viewport {

/// The views of a scene whose up direction is +Y. The numbers are the view kinds of Camera_RL.
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
enum class View : unsigned int {
    PERSPECTIVE = 0,
    FRONT = 1,
    BACK = 2,
    TOP = 3,
    BOTTOM = 4,
    LEFT = 5,
    RIGHT = 6
};

/// The axes of an orthographic view's screen, in the world.
struct ScreenAxes {
    Vector3<double> right;
    Vector3<double> up;
    Vector3<double> towardViewer;
};

/// The axes of the view; those of View::FRONT for View::PERSPECTIVE.
ScreenAxes screenAxes(View view);

/// Where a perspective camera stands to show something as large as it can be seen whole.
struct PerspectiveFraming {
    Vector3<double> eye;
    Vector3<double> direction;  ///< unit length
    Vector3<double> up;         ///< unit length, perpendicular to the direction
    double nearDistance;        ///< above 0
    double farDistance;         ///< above nearDistance
};

/// How an orthographic camera shows a box as large as it can be seen whole: the parameters of Camera_RL.
struct OrthographicFraming {
    double panX;
    double panY;
    double zoom;
};

/// The frame's inner part that is filled: the rest is left free around it.
constexpr double FILLED_PART = 0.86;

/// The corners of a box, in the order of Box3.
std::vector<Vector3<double>> cornersOf(Box3<double> const& box);

/// Frames the points with the given vertical field of view (degrees, above 0 and below 180) and aspect (width
/// divided by height), looking along `direction` (any length above 0). The picture's vertical is +Y, or -z
/// where the camera looks straight up or down. `surroundings` is what else is to be seen near the points; the
/// clipping distances hold it as far as depth precision allows, however large it is. Points without extent,
/// or none, are framed as if they were a box of size 1, about the origin if there are none.
PerspectiveFraming framePerspective(std::vector<Vector3<double>> const& points,
                                    Box3<double> const& surroundings, Vector3<double> const& direction,
                                    double fieldOfView, double aspect);

/// Frames `box` in an orthographic view. The depth range of these views is fixed at 1000 on both sides of the
/// origin; a box outside it is clipped.
OrthographicFraming frameOrthographic(Box3<double> const& box, View view, double aspect);

}  // namespace vellum::viewport
