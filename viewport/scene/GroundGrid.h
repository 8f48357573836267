#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "viewport/files/mesh/UpAxis.h"

#include <vector>

namespace vellum::viewport {

/// A straight piece of a line whose color runs from one end to the other.
struct ShadedSegment {
    Vector3<float> from;
    Vector3<float> to;
    Color4<float> fromColor;
    Color4<float> toColor;
};

/// The grid that gives a scene its scale: lines at whole multiples of a power of ten in the files' units,
/// every tenth one stronger, and the coordinate axes of the files, where they come by, in their colors.
struct GroundGrid {
    Vector3<double> center;  ///< a point of the grid's plane
    Vector3<double> u;       ///< the plane's directions: unit length, each along a coordinate axis
    Vector3<double> v;
    double radius;               ///< how far it reaches from the center
    bool fades;                  ///< it becomes invisible toward its rim
    Vector3<double> fileOrigin;  ///< lines go through it, or its projection on the plane
    double spacing;              ///< of the lines
    UpAxis up = UpAxis::Y;       ///< of the files: which of their axes lies along which of the scene's

    /// The pieces to be drawn with alpha blending, in any order.
    std::vector<ShadedSegment> segments() const;

    /// The power of ten of the files' units, in units of the scene, at which lines stand apart so that
    /// between 4 and 40 of them cross a model of the given size.
    static double spacingFor(double modelSize, double unitsPerFileUnit);
};

/// The color of a coordinate axis, 0 to 2: red, green, blue, here and on gizmos.
Color4<float> axisColor(unsigned int axis);

}  // namespace vellum::viewport
