#pragma once

#include "viewport/files/mesh/MeshData.h"

#include <vector>

namespace vellum::viewport {

/// For each vertex the first vertex that has exactly its position.
std::vector<unsigned int> firstAtSamePosition(std::vector<Vector3<double>> const& positions);

/// Smooth vertex normals: each is the sum of the normals of the triangles around the vertex, weighted by the angle
/// that the triangle has there, so that the result does not depend on how a surface was cut into triangles.
///
/// Vertices at exactly the same position count as one: many formats repeat a vertex for every triangle, and the
/// surface is to look smooth across them. A vertex without a triangle of area gets the direction +Y.
/// The indices must be in range and the positions finite.
std::vector<Vector3<float>> smoothVertexNormals(std::vector<Vector3<double>> const& positions,
                                                std::vector<MeshData::Triangle> const& triangles);

}  // namespace vellum::viewport
