#pragma once

#include "viewport/files/mesh/MeshData.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Finds the file that a mesh file names as a texture. Names come from machines with other folders,
/// separators and cases of letters. Tried in this order: the name itself, its last part beside the mesh file,
/// the same ignoring case.
std::optional<std::string> findTexture(std::string const& meshPath, std::string const& name);

/// Reads the textures of a mesh's materials, each file once. A texture that is not found or cannot be read
/// leaves its material without one and adds a note for the user.
std::vector<Fault> loadTextures(std::string const& meshPath, MeshData& mesh);

}  // namespace vellum::viewport
