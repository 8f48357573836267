#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/ViewKind.h"
#include "toolkit/export.h"

#include <vector>

/// \file
/// Where cameras stand to show something whole. Plain arithmetic: none of these makes a GL call.

namespace vellum::toolkit {

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
VL_TOOLKIT_EXPORT std::vector<Vector3<double>> cornersOf(Box3<double> const& box);

/// Frames the points with the given vertical field of view (degrees, above 0 and below 180) and aspect (width
/// divided by height), looking along `direction` (any length above 0). The picture's vertical is +Y, or -z
/// where the camera looks straight up or down. `surroundings` is what else is to be seen near the points; the
/// clipping distances hold it as far as depth precision allows, however large it is. Points without extent,
/// or none, are framed as if they were a box of size 1, about the origin if there are none.
VL_TOOLKIT_EXPORT PerspectiveFraming framePerspective(std::vector<Vector3<double>> const& points,
                                                      Box3<double> const& surroundings,
                                                      Vector3<double> const& direction, double fieldOfView,
                                                      double aspect);

/// Frames `box` in an orthographic view. The depth range of these views is fixed at 1000 on both sides of the
/// origin; a box outside it is clipped.
VL_TOOLKIT_EXPORT OrthographicFraming frameOrthographic(Box3<double> const& box, ViewKind kind,
                                                        double aspect);

}  // namespace vellum::toolkit
