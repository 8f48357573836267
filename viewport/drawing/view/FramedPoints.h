#pragma once

#include "foundation/geometry/Vector3.h"

#include <cstddef>
#include <vector>

namespace vellum::viewport {

/// The points that a camera is to see. A camera that is turned asks in every frame how far they reach in its
/// directions, so they are kept with boxes around neighbors in the list: most boxes tell that none of their
/// points is the first or the last one. Files list near each other what lies near each other; where they do
/// not, it takes longer, and the answer is the same.
///
/// Plain arithmetic. All coordinates are finite.
class FramedPoints {
public:
    FramedPoints() = default;
    FramedPoints(std::vector<Vector3<double>> framed);  // any list of points is one

    std::vector<Vector3<double>> const& all() const { return points; }

    struct Range {
        double least;
        double most;
    };

    /// The least and the largest dot(p - from, direction) of all points, to the bit. The largest number and
    /// the lowest one where there are no points.
    Range along(Vector3<double> const& from, Vector3<double> const& direction) const;

private:
    /// The middle and half of the size of the box around some successive points.
    struct Block {
        Vector3<double> middle;
        Vector3<double> half;
    };

    /// Between which numbers those of a block are for certain.
    static Range _boundsOf(Block const& block, Vector3<double> const& from, Vector3<double> const& direction);
    void _extend(Range& range, std::size_t block, Vector3<double> const& from,
                 Vector3<double> const& direction) const;

    std::vector<Vector3<double>> points;
    std::vector<Block> blocks;
};

}  // namespace vellum::viewport
