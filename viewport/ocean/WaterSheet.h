#pragma once

#include "foundation/geometry/Vector3.h"

#include <vector>

namespace vellum::viewport {

/// How a sea is looked at. Up is +y.
struct SeaView {
    Vector3<double> eye;  ///< of a parallel projection: any point that is seen in the middle of the picture
    Vector3<double> forward;  ///< the direction of view, unit length
    Vector3<double> right;    ///< of the picture, unit length
    Vector3<double> up;       ///< of the picture, unit length
    bool isParallel = false;
    double halfWidth = 1;   ///< of what is seen: in perspective at the distance 1, else of the picture
    double halfHeight = 1;  ///< alike

    /// Whether the depth of view is limited to 1000 units of the scene about its origin, as with the views
    /// along an axis, whose model-view matrix is the identity.
    bool isAlongAxis = false;
};

bool operator==(SeaView const& a, SeaView const& b);

/// The horizontal direction of view; where the view is vertical, that of the top of the picture. Unit length.
Vector3<double> aheadOf(SeaView const& view);

/// The part of a plane of water that is seen, as a grid whose cells look about equally large: its rows follow
/// one after another away from the viewer. Lengths are meters, and y = 0 is still water. Plain arithmetic.
///
///     WaterSheet const sheet = WaterSheet::of(view, {1.2, 0.8, 9000, 60});
struct WaterSheet {
    static constexpr double GROWTH =
        0.0075;  ///< the size of cells by their distance, for a view of the usual width
    static constexpr unsigned int COLUMNS = 320;  ///< cells of a row, alike

    /// How far the sea reaches, and how far its surface leaves the plane.
    struct Range {
        double crest;     ///< the highest wave
        double sideways;  ///< the longest way of water along the plane
        double horizon;   ///< where the sea ends for a perspective view
        double depth;     ///< where it ends for a parallel view along the water, to both sides of the origin
    };

    unsigned int columns;                 ///< points of a row
    std::vector<Vector3<double>> points;  ///< row after row
    double nearest;   ///< depth of the nearest point along the direction of view; may be behind the eye
    double farthest;  ///< of the farthest one

    static WaterSheet of(SeaView const& view, Range const& range);
};

}  // namespace vellum::viewport
