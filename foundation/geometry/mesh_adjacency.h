#pragma once

#include "foundation/geometry/VertexCorners.h"

namespace vellum {

/// Fills the adjacency of all triangles, as Mesh::workAdjacency() describes it.
/// \param triangles three indices each, of which `corners` was made
/// \param entries three for each triangle
void deriveAdjacency(unsigned int const* triangles, unsigned int triangleCount, unsigned int vertexCount,
                     VertexCorners const& corners, unsigned int* entries);

}  // namespace vellum
