#pragma once

#include "foundation/geometry/Mesh.h"
#include "viewport/drawing/subjects/MeshStyle.h"

/// What large meshes have for some drawings only, and can be derived again from their shape: the normals of
/// the faces and the adjacency. Of a million triangles they take 28 MB, and the buffer that a mesh renderer
/// makes of the normals 36 MB more.
namespace vellum::viewport {

/// Meshes of fewer triangles keep everything.
constexpr unsigned int LARGE_MESH = 1U << 16;

/// Takes from a large mesh what the style does not draw. In place of the normals stands an array that is too
/// short: Mesh_RL_GL has no buffer then, and skips the drawings that read them. No drawing may read the mesh
/// before deriveArrays() was called with its style.
void dropArrays(Mesh& mesh, MeshStyle const& style);

/// Derives what the style draws and dropArrays() took. Costs nothing where nothing is missing.
/// \return false where there is no memory for it: such drawings are skipped then
bool deriveArrays(Mesh& mesh, MeshStyle const& style);

}  // namespace vellum::viewport
