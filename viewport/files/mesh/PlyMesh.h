#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/text/Fault.h"

#include <string_view>

namespace vellum::viewport {

/// Reads a PLY file, text or binary of either byte order, as a mesh.
///
///     vertex     x y z; nx ny nz; red green blue [alpha] (also diffuse_red ..., r g b [a]);
///                u v, s t, texture_u texture_v, texture_s texture_t or tx ty; everything else is a scalar
///     face       vertex_indices or vertex_index, of any length; red green blue [alpha]; texcoord and
///                texnumber; everything else is a scalar
///     tristrips  vertex_indices, strips that end with -1
///     edge       vertex1 vertex2; red green blue
///     comment TextureFile NAME
///
/// Colors of whole numbers are parts of the largest of their type, those of real numbers 0 to 1. The three
/// components u v w are no texture coordinates but scalars. What faces have apart from their vertices is
/// spread to their corners: vertices repeat then, and those that nothing uses are left out. Normals of faces
/// are not taken, as those of STL are not.
///
/// Damage is a fault, which names a line or byte and no file: numbers missing, an index out of range, a
/// coordinate that is not a number. Notes tell what is skipped.
Result<MeshData> readPlyMesh(std::string_view bytes, Progress const& progress = {});

}  // namespace vellum::viewport
