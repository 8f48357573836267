#pragma once

#include "foundation/export.h"

namespace vellum {

/// A fault of a mesh, or of the arrays from which a mesh is made.
namespace MeshFault_ns {

enum type : unsigned int {
    NONE = 0,                   ///< No fault.
    NO_TRIANGLES,               ///< The mesh is empty.
    TOO_LARGE,                  ///< More triangles than Mesh::MOST_TRIANGLES, or no memory for the arrays.
    INDEX_OUT_OF_RANGE,         ///< A triangle index is out of range of the positions.
    POSITION_NOT_FINITE,        ///< A coordinate is infinite or NaN.
    CORNER_NORMAL_COUNT,        ///< The number of corner normals differs from the triangles.
    NORMAL_TRIANGLE_COUNT,      ///< The number of normal triangles differs from the triangles.
    NORMAL_INDEX_OUT_OF_RANGE,  ///< An index is out of range of the vertex normals.
    FACE_NORMAL_COUNT,          ///< The number of face normals differs from the triangles.
    ADJACENCY_COUNT,            ///< The adjacency has not three entries per triangle.
    ADJACENCY_OUT_OF_RANGE      ///< An adjacency entry names a triangle or corner out of range.
};

/// The fault as text, for the end of a sentence: "a triangle names a vertex that does not exist". Never null.
VL_FOUNDATION_EXPORT char const* text(type const& fault);

}  // namespace MeshFault_ns

}  // namespace vellum
