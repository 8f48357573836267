#pragma once

#include "foundation/export.h"

namespace vellum {

/// A fault of a mesh, or of the arrays from which a mesh is made.
namespace MeshFault_ns {

enum type : unsigned int {
    NONE = 0,                   ///< Nothing.
    NO_TRIANGLES,               ///< The mesh is empty.
    TOO_LARGE,                  ///< More triangles than Mesh::MOST_TRIANGLES, or no memory for the arrays.
    INDEX_OUT_OF_RANGE,         ///< A triangle names a vertex beyond the positions.
    POSITION_NOT_FINITE,        ///< A coordinate is infinite or not a number.
    CORNER_NORMAL_COUNT,        ///< The corner normals are not as many as the triangles.
    NORMAL_TRIANGLE_COUNT,      ///< The normal triangles are not as many as the triangles.
    NORMAL_INDEX_OUT_OF_RANGE,  ///< A normal triangle names a normal beyond the vertex normals.
    FACE_NORMAL_COUNT,          ///< The face normals are not as many as the triangles.
    ADJACENCY_COUNT,            ///< The adjacency entries are not three for each triangle.
    ADJACENCY_OUT_OF_RANGE      ///< An adjacency entry names a triangle or a corner that does not exist.
};

/// The fault in words, as the end of a sentence: "a triangle names a vertex that does not exist". Never null.
VL_FOUNDATION_EXPORT char const* text(type const& fault);

}  // namespace MeshFault_ns

}  // namespace vellum
