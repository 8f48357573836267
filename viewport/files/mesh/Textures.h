#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Finds the file that a mesh file names as a texture. Names come from machines with other folders,
/// separators and cases of letters. Tried in this order: the name itself; then, ignoring case, as much of its
/// end as there is below the mesh file's folder or below one of the folders in which textures are kept there
/// (textures, tex, images, maps and their like, also beside the folder).
std::optional<std::string> findTexture(std::string const& meshPath, std::string const& name);

/// Reads the textures of a mesh's materials, each picture once: files, pictures and pixels that the mesh file
/// holds, and addresses that hold their data. The opacity of another picture becomes that of the texture. A
/// texture that is not found or cannot be read leaves its material without one and adds a note for the user.
/// \param progress see readImage(); called for each picture
std::vector<Fault> loadTextures(std::string const& meshPath, MeshData& mesh, Progress const& progress = {});

}  // namespace vellum::viewport
