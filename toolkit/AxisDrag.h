#pragma once

#include "foundation/geometry/Vector3.h"
#include "toolkit/View.h"
#include "toolkit/export.h"

/// \file
/// The arithmetic of dragged handles. None of it makes a GL call. Numbers that are not finite count as a
/// place where nothing is seen: the results are those of a handle that stays where it is.

namespace vellum::toolkit {

/// How far along an axis a point of the screen is: the place on the axis that comes nearest to the ray
/// through the point, measured from the axis' origin in lengths of its direction.
///
///     double const start = alongAxis(view, {origin, {1, 0, 0}}, pressedX, pressedY);
///     double const now = alongAxis(view, {origin, {1, 0, 0}}, x, y);
///     position.x = positionWhenPressed.x + now - start;
///
/// The ray begins at the near clipping plane: beyond the vanishing point of an axis, where the lines come
/// nearest behind the viewer, the place is the one nearest to the ray's first point. \return 0 where the axis
/// is seen end on and moves nowhere on the screen, or has no direction.
VL_TOOLKIT_EXPORT double alongAxis(View const& view, Ray const& axis, double x, double y);

/// Where the ray through a point of the screen meets a plane.
/// \param at a point of the plane
/// \param normal of the plane; any length above 0
/// \return `at` where the plane is seen edge on or met behind the viewer, as by a cursor above the horizon.
VL_TOOLKIT_EXPORT Vector3<double> onPlane(View const& view, Vector3<double> const& at,
                                          Vector3<double> const& normal, double x, double y);

/// The angle by which a drag from one point of the screen to another turns about an axis, radians,
/// counter-clockwise as seen against the axis' direction. What is grabbed stays under the cursor, as of a
/// circle about the axis that is seen from aside. 0 where the axis lies in the screen, and where a point
/// misses the plane across the axis.
VL_TOOLKIT_EXPORT double turnAboutAxis(View const& view, Ray const& axis, double fromX, double fromY,
                                       double toX, double toY);

}  // namespace vellum::toolkit
