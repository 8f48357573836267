#pragma once

#include "foundation/geometry/Vector3.h"

namespace vellum {

/// One cell of a lattice with the 4 x 4 x 4 samples that tricubic interpolation reads: the eight corners of
/// the cell and the ring of samples around them. Sample (i, j, k), each 0 to 3, is at origin + (i - 1, j
/// - 1, k - 1) * step and has the index i + 4 j + 16 k.
template <class T>
struct TricubicVoxel {
    Vector3<T> origin;  ///< Lower corner of the cell: sample (1, 1, 1).
    Vector3<T> step;    ///< Edge lengths of the cell.
    T samples[64];      ///< Values, 0 to 1 where they are drawn as a shade.
};

}  // namespace vellum
