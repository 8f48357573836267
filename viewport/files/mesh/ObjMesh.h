#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/text/Fault.h"

#include <string>
#include <string_view>

namespace vellum::viewport {

/// Reads an OBJ file and the MTL files beside it.
///
///     v x y z [w] [r g b [a]]   a position, divided by its weight; colors are 0 to 1
///     vt u [v], vn x y z        a texture coordinate, a normal
///     f, l, p                   polygons, lines and points: v, v/vt, v//vn, v/vt/vn; counted from 1, or from
///                               the last one back with negative numbers
///     o, g, usemtl              begin parts
///     mtllib                    see loadMtl()
///
/// A vertex of the mesh is a combination of position, texture coordinate, normal and material that a face,
/// line or point names; what none names is left out. Lines may go on behind a backslash and end as in any
/// system; the text is UTF-8, or UTF-16 with its mark.
///
/// An index out of range and a coordinate that is used and not a number are faults, which name a line and no
/// file. Notes tell what is lost: statements that OBJ does not have, curves and surfaces, materials that are
/// missing. Smoothing groups are skipped: where faces have no normals, these are computed with hard edges.
/// \param path the file's, to find others beside it
Result<MeshData> readObjMesh(std::string const& path, std::string_view bytes, Progress const& progress = {});

}  // namespace vellum::viewport
