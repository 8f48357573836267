#pragma once

#include "viewport/content/Options.h"
#include "viewport/files/mesh/MeshData.h"

#include <string>
#include <vector>

namespace vellum::viewport {

/// The files that the options name to be read: meshes, particles, the texture, and those of the effect.
std::vector<std::string> inputFiles(Options const& options);

/// The files that a mesh names as textures, as far as they are found.
std::vector<std::string> textureFiles(std::string const& meshPath, MeshData const& mesh);

/// The material files that the OBJ files among these name. That takes a look at all of their bytes.
std::vector<std::string> materialFiles(std::vector<std::string> const& meshPaths);

/// Whether the picture would replace one of the files: the same file under any name, link or path.
/// \param out the picture's file; empty: none. Streams replace nothing.
bool isOneOf(std::string const& out, std::vector<std::string> const& files);

}  // namespace vellum::viewport
