#pragma once

#include "foundation/geometry/Matrix4.h"
#include "toolkit/View.h"

namespace vellum::toolkit {

/// The matrices with which the sphere effect draws balls that are round and cut each other where balls do.
///
/// The effect adds the same offset to both coordinates of clip space, so a ball is round in a square viewport
/// only. And it moves each fragment by `size` along the third axis of the space that the projection matrix
/// starts from, whatever the ball's width on the screen. Both are put right here, without changing where
/// anything is: the view is cut into a projection and the rest at the place that gives the balls their depth.
struct ImpostorView {
    Matrix4<double> projection;
    Matrix4<double> modelView;
    double size;  ///< of a ball, for the effect; above 0

    /// \param view for whose viewport the square one is meant: it has the same lower left corner, and its side is
    ///        the longer of both
    /// \param diameter of a ball, in units of the world; above 0
    static ImpostorView of(View const& view, double diameter);
};

}  // namespace vellum::toolkit
