#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/Span.h"
#include "toolkit/export.h"

#include <cstdint>

/// \file
/// Fills a mesh from the arrays that an application has anyway. Each function copies the values.
///
///     std::vector<float> xyz = ...;
///     std::vector<std::uint32_t> corners = ...;             // three for each triangle
///     setPositions(mesh, Span<float>(xyz));
///     setTriangles(mesh, corners);
///     prepareMesh(mesh, 40);                                // normals with hard edges from 40 degrees on
///     setTextureCoordinates(mesh, "uv", uv);
///
/// Triangles are counter-clockwise as seen from outside: that side is the front, and normals point there.
///
/// Result of each: false, and nothing changes, when the number of values is no multiple of what an element needs, an
/// index does not fit into 32 bits, there are more than Mesh::MOST_TRIANGLES, or there is no memory.
/// GL: none. They are called on the thread of VL_ArrayServer.

namespace vellum::toolkit {

VL_TOOLKIT_EXPORT bool setPositions(Mesh& mesh, Span<Vector3<double>> points);
VL_TOOLKIT_EXPORT bool setPositions(Mesh& mesh, Span<Vector3<float>> points);
VL_TOOLKIT_EXPORT bool setPositions(Mesh& mesh, Span<double> xyz);  ///< Three numbers for each point.
VL_TOOLKIT_EXPORT bool setPositions(Mesh& mesh, Span<float> xyz);   ///< Three numbers for each point.

// Three position indices for each triangle, from 0.
VL_TOOLKIT_EXPORT bool setTriangles(Mesh& mesh, Span<std::uint32_t> corners);
VL_TOOLKIT_EXPORT bool setTriangles(Mesh& mesh, Span<std::uint64_t> corners);
VL_TOOLKIT_EXPORT bool setTriangles(Mesh& mesh, Span<Tuple3<unsigned int>> triangles);

/// Normal i belongs to position i, in all triangles around it: the normal triangles become the triangles, which must be
/// set before.
VL_TOOLKIT_EXPORT bool setVertexNormals(Mesh& mesh, Span<Vector3<float>> normals);

/// Texture coordinates by name, one for each position: the channel that MeshStyle::textureChannel names.
VL_TOOLKIT_EXPORT bool setTextureCoordinates(Mesh& mesh, char const* name, Span<Vector2<float>> coordinates);

/// Texture coordinates by name for meshes with seams: coordinates of their own, and three indices into them for each
/// triangle.
VL_TOOLKIT_EXPORT bool setTextureCoordinates(Mesh& mesh, char const* name, Span<Vector2<float>> coordinates,
                                             Span<std::uint32_t> corners);

/// Colors by name, one for each position: those that MeshStyle::colors names.
VL_TOOLKIT_EXPORT bool setColors(Mesh& mesh, char const* name, Span<Color4<float>> colors);

/// A crease angle at which no edge is hard.
constexpr double NO_HARD_EDGES = 180;

/// Derives what a drawing needs and the mesh lacks: adjacency (edges, borders), vertex and face normals, the box. To be
/// called when positions and triangles are complete, and again when they have changed.
/// \param hardEdges degrees, 0 to 180: edges between faces that differ by more have two normals, and are drawn as lines
///     by MeshStyle::edges.
/// \return false as above, or when the triangles name positions that do not exist (Mesh::fault() says what).
VL_TOOLKIT_EXPORT bool prepareMesh(Mesh& mesh, double hardEdges = NO_HARD_EDGES);

}  // namespace vellum::toolkit
