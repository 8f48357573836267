#include "viewport/files/FileKind.h"

#include "viewport/files/mesh/AssimpImport.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace vellum::viewport {

namespace {

// Meshes are not read compressed, so ".gz" is one of them.
constexpr char const* PARTICLE_EXTENSIONS[] = {".lammpstrj", ".lammpsdump", ".dump", ".xyz",
                                               ".extxyz",    ".exyz",       ".csv",  ".gz"};

bool isParticleExtension(std::string const& extension) {
    return std::find(std::begin(PARTICLE_EXTENSIONS), std::end(PARTICLE_EXTENSIONS), extension) !=
           std::end(PARTICLE_EXTENSIONS);
}

}  // namespace

bool isParticleFile(std::string const& path) {
    std::string const extension = lowerCase(std::filesystem::path(path).extension().string());
    Result<ParticleFormat> const format = ParticleFile(path).format();
    if (!format.isOk()) {
        return isParticleExtension(extension);
    }
    if (format.value() == ParticleFormat::LAMMPS_DUMP || format.value() == ParticleFormat::PLY) {
        return true;
    }
    // A comment "# v x y z" at the top of a mesh file reads like the column names of a CSV file. PLY files
    // always have their signature: without it the name says nothing.
    bool const isNamedAsMesh =
        !isParticleExtension(extension) && extension != ".ply" && isMeshExtension(extension);
    return !isNamedAsMesh;
}

}  // namespace vellum::viewport
