#pragma once

#include "viewport/files/mesh/MeshData.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The file that a mesh file means by the name of a texture. Names come from other machines, with other folders, other
/// separators and other cases of letters: the file is looked for under the name as it is, then under its last part
/// beside the mesh file, then there without regard to the case of letters.
std::optional<std::string> findTexture(std::string const& meshPath, std::string const& name);

/// Reads the textures of a mesh's materials, each file once. A texture that is not found or cannot be read leaves its
/// material without one and adds a note for the user.
std::vector<Fault> loadTextures(std::string const& meshPath, MeshData& mesh);

}  // namespace vellum::viewport
