#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/geometry/VertexCorners.h"

#include <cstddef>
#include <vector>

/// \file
/// The normals of a mesh, as Mesh::workNormals() describes them, on all cores. Sums are taken in the order of
/// the triangles, so that the bits do not depend on the number of threads.

namespace vellum {

/// The triangles of a mesh as the passes over them see them.
struct Surface {
    Vector3<double> const* positions;
    unsigned int const* triangles;  // three indices each
    unsigned int count;
    unsigned int vertexCount;

    unsigned int const* corners(std::size_t t) const { return triangles + t * 3; }
};

/// One normal for each triangle, in r, g, b.
void fillFaceNormals(Surface const& surface, Color4<float>* faceNormals);

/// One normal for each vertex; the normals at the corners of a triangle have the indices of its vertices.
/// \return the normals
std::vector<Vector3<float>> sumAroundVertices(Surface const& surface, VertexCorners const& corners,
                                              Color4<float>* faceNormals);

/// One normal for each set of corners at a vertex that no hard edge divides. The first set at a vertex has
/// the vertex's index, later ones follow behind in the order of their first corners. \param adjacency three
/// entries for each triangle, below 4 * count or none; it need not be that of these triangles \param
/// normalTriangles filled: three indices of normals for each triangle \return the normals
std::vector<Vector3<float>> sumAroundSets(Surface const& surface, VertexCorners const& corners,
                                          unsigned int const* adjacency, double leastCosine,
                                          Color4<float>* faceNormals, unsigned int* normalTriangles);

}  // namespace vellum
