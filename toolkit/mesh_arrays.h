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
/// Winding: triangles are counter-clockwise as seen from outside. That side is the front, and the normals of
/// prepareMesh() point there. Where two neighbors disagree about it, the edge between them is hard.
///
/// Positions and corners: positions are shared by the triangles around them. Texture coordinates and colors
/// of "one for each position" (MeshArrayInf_ns::PER_VERTEX) are so too: element i belongs to position i in
/// every triangle, whatever its normals are. What differs between the triangles around one position, as
/// texture coordinates do at a seam, needs corners of its own, or the position twice; positions at the same
/// place with different indices are not connected, so a border runs between them.
///
/// Names: texture coordinates and colors for each position are arrays of one kind, so those of one mesh need
/// different names.
///
/// Changes: a function of this file marks what it sets as modified, and the next drawing takes it over. An
/// array that is changed in place is drawn as it was until it is marked:
///
///     Vector3<double>* const p = VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>();
///     p[0].z = 1;
///     mesh.markModified(mesh.positions());
///
/// Result of each: false, and nothing changes, when the number of values is no multiple of what an element
/// needs, an index does not fit into 32 bits, there are more than Mesh::MOST_TRIANGLES triangles, a name is
/// null or empty, or there is no memory. (Where a function sets two arrays and there is memory for one, that
/// one may be set; Mesh::fault() tells whether they fit together.) Whether indices are in range is for
/// Mesh::fault() to say, as the arrays may come in any order. GL: none. They are called on the thread of
/// VL_ArrayServer.

namespace vellum::toolkit {

VL_TOOLKIT_EXPORT bool setPositions(Mesh& mesh, Span<Vector3<double>> points);
VL_TOOLKIT_EXPORT bool setPositions(Mesh& mesh, Span<Vector3<float>> points);
VL_TOOLKIT_EXPORT bool setPositions(Mesh& mesh, Span<double> xyz);  ///< Three numbers for each point.
VL_TOOLKIT_EXPORT bool setPositions(Mesh& mesh, Span<float> xyz);   ///< Three numbers for each point.

// Three position indices for each triangle, from 0. Texture coordinates for each position that are in the
// buffers of a renderer already stay there when as many triangles come in another order: set them again then.
VL_TOOLKIT_EXPORT bool setTriangles(Mesh& mesh, Span<std::uint32_t> corners);
VL_TOOLKIT_EXPORT bool setTriangles(Mesh& mesh, Span<std::uint64_t> corners);
VL_TOOLKIT_EXPORT bool setTriangles(Mesh& mesh, Span<Tuple3<unsigned int>> triangles);

/// Normals of the application's own, in place of those of prepareMesh(), so it is called after that. Normal i
/// belongs to position i, in all triangles around it: the normal triangles become the triangles, which must
/// be set before. Such a surface has no hard edges but its borders. \return false also when the mesh has no
/// triangles.
VL_TOOLKIT_EXPORT bool setVertexNormals(Mesh& mesh, Span<Vector3<float>> normals);

/// Texture coordinates by name, one for each position: the channel that MeshStyle::textureChannel names. They
/// replace those with corners of the same name as well, and then belong to the triangles that the mesh has at
/// this moment.
VL_TOOLKIT_EXPORT bool setTextureCoordinates(Mesh& mesh, char const* name, Span<Vector2<float>> coordinates);

/// Texture coordinates by name for meshes with seams: coordinates of their own, and three indices into them
/// for each triangle. They count before those of the same name for each position. Corners without an index in
/// range have (0, 0).
VL_TOOLKIT_EXPORT bool setTextureCoordinates(Mesh& mesh, char const* name, Span<Vector2<float>> coordinates,
                                             Span<std::uint32_t> corners);

/// Colors by name, one for each position: those that MeshStyle::colors names.
VL_TOOLKIT_EXPORT bool setColors(Mesh& mesh, char const* name, Span<Color4<float>> colors);

/// Marks all arrays of a mesh as modified: after they were changed in place; and before a drawing by a second
/// renderer of a mesh, because only the first one that draws sees what is marked.
VL_TOOLKIT_EXPORT void markChanged(Mesh& mesh);

/// A crease angle at which no edge is hard.
constexpr double NO_HARD_EDGES = 180;

/// Derives what a drawing needs from the shape, in place of what the mesh has of it: adjacency, vertex and
/// face normals, the box. To be called when positions and triangles are complete, and again when the
/// triangles have changed.
///
/// The adjacency comes first: Mesh::workNormals() needs it for hard edges, and would derive it each time and throw it
/// away. So where only the positions move, it is kept, and mesh.workNormals() (in radians) and mesh.workBox() are
/// enough.
/// \param hardEdges degrees: edges between faces that differ by more have two normals, and are drawn as lines by
///     MeshStyle::edges, as borders are. Below 0 as 0; from 180 on, and not a number, as NO_HARD_EDGES.
/// \return false as above, or when the triangles name positions that do not exist (Mesh::fault() says what).
VL_TOOLKIT_EXPORT bool prepareMesh(Mesh& mesh, double hardEdges = NO_HARD_EDGES);

}  // namespace vellum::toolkit
