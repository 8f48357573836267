#pragma once

#include "viewport/content/Options.h"
#include "viewport/files/mesh/MeshData.h"

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vellum::viewport {

/// The files that the options name to be read: meshes, particles, the texture, and those of the effect; and
/// those that the options themselves are from.
std::vector<std::string> inputFiles(Options const& options);

/// The files that a mesh names as textures, as far as they are found.
std::vector<std::string> textureFiles(std::string const& meshPath, MeshData const& mesh);

/// The material files that the OBJ files among these name. That takes a look at all of their bytes.
std::vector<std::string> materialFiles(std::vector<std::string> const& meshPaths);

/// Whether the picture would replace one of the files: the same file under any name, link or path.
/// \param out the picture's file; empty: none. Streams replace nothing.
bool isOneOf(std::string const& out, std::vector<std::string> const& files);

/// Files under any name, link or path, many of which are compared with many others.
class FileSet {
public:
    /// Files that do not exist are left out.
    explicit FileSet(std::vector<std::string> const& files);

    bool contains(std::string const& file) const;

    /// Whether there is something under this name.
    static bool isFile(std::string const& file);

private:
    std::set<std::pair<std::uint64_t, std::uint64_t>> identities;  // device and number on it
};

}  // namespace vellum::viewport
