#include "viewport/files/FileKind.h"

#include "viewport/files/mesh/AssimpImport.h"
#include "viewport/files/particles/ParticleFile.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>

namespace vellum::viewport {

namespace {

// Meshes are not read compressed.
constexpr char const* PARTICLE_EXTENSIONS[] = {".lammpstrj", ".lammpsdump", ".dump", ".xyz",
                                               ".extxyz",    ".exyz",       ".csv",  ".gz"};

}  // namespace

bool isParticleFile(std::string const& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    if (std::find(std::begin(PARTICLE_EXTENSIONS), std::end(PARTICLE_EXTENSIONS), extension) !=
        std::end(PARTICLE_EXTENSIONS)) {
        return true;
    }
    bool const isOfMeshes = extension != ".ply" && isMeshExtension(extension);
    return !isOfMeshes && ParticleFile(path).format().isOk();
}

}  // namespace vellum::viewport
