#include "viewport/files/FileKind.h"

#include "viewport/files/mesh/AssimpImport.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace vellum::viewport {

namespace {

// Meshes are not read compressed.
constexpr char const* PARTICLE_EXTENSIONS[] = {".lammpstrj", ".lammpsdump", ".dump", ".xyz",
                                               ".extxyz",    ".exyz",       ".csv",  ".gz"};

}  // namespace

bool isParticleFile(std::string const& path) {
    std::string const extension = lowerCase(std::filesystem::path(path).extension().string());
    if (std::find(std::begin(PARTICLE_EXTENSIONS), std::end(PARTICLE_EXTENSIONS), extension) !=
        std::end(PARTICLE_EXTENSIONS)) {
        return true;
    }
    bool const isOfMeshes = extension != ".ply" && isMeshExtension(extension);
    return !isOfMeshes && ParticleFile(path).format().isOk();
}

}  // namespace vellum::viewport
