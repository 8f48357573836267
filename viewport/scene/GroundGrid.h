#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"

#include <vector>

namespace vellum::viewport {

/// A straight piece of a line whose colour runs from one end to the other.
struct ShadedSegment {
    Vector3<float> from;
    Vector3<float> to;
    Color4<float> fromColour;
    Color4<float> toColour;
};

/// The grid that gives a scene its scale: lines at whole multiples of a power of ten in the files' units, every
/// tenth one stronger, and the coordinate axes of the files, where they come by, in their colours.
struct GroundGrid {
    Vector3<double> centre;  ///< a point of the grid's plane
    Vector3<double> u;       ///< the plane's directions: unit length, each along a coordinate axis
    Vector3<double> v;
    double radius;               ///< how far it reaches from the centre
    bool fades;                  ///< it becomes invisible towards its rim
    Vector3<double> fileOrigin;  ///< lines go through it, or its projection on the plane
    double spacing;              ///< of the lines

    /// The pieces to be drawn with alpha blending, in any order.
    std::vector<ShadedSegment> segments() const;

    /// The power of ten of the files' units, in units of the scene, at which lines stand apart so that between 4 and
    /// 40 of them cross a model of the given size.
    static double spacingFor(double const& modelSize, double const& unitsPerFileUnit);
};

/// The colour of a coordinate axis, 0 to 2: red, green, blue, here and on gizmos.
Color4<float> axisColour(unsigned int const& axis);

}  // namespace vellum::viewport
