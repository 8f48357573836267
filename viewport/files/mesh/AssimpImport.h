#pragma once

#include "viewport/files/mesh/MeshData.h"
#include "viewport/files/mesh/MeshOptions.h"
#include "viewport/text/Fault.h"

#include <string>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// Reads a mesh file through Assimp, in this process and without any limit. For files that cannot be trusted,
/// which is every file a user names, run it under importGuarded().
///
/// Nodes are placed and bones moved as the file has them at rest or at a time of its first animation,
/// polygons cut into triangles. Colors come from the vertices or else from the material. Normals that the
/// file lacks stay missing (see MeshData::normals).
///
/// Assimp repairs some damage silently or with no more than a note in its log: an index out of range, fewer
/// vertices or faces than declared. Here that is a fault, so that users notice that their file is damaged.
/// Nothing is written to the standard streams. Exceptions of Assimp's are caught by Assimp; those of
/// allocation leave this function.
Result<MeshData> importWithAssimp(std::string const& path, MeshOptions const& options = {});

/// The same for bytes that no path can be opened for again. Files that they name are looked for in the
/// current folder.
/// \param name of the file, in faults
/// \param extension of the format, which starts with a dot, in lower case
Result<MeshData> importWithAssimp(std::string const& name, std::string_view bytes,
                                  std::string const& extension, MeshOptions const& options);

/// The extensions that Assimp has importers for, without a dot, sorted.
std::vector<std::string> importedFormats();

/// Whether Assimp has an importer for files with this extension, which starts with a dot.
bool isMeshExtension(std::string const& extension);

}  // namespace vellum::viewport
