#include "viewport/files/FileKind.h"

#include "viewport/files/mesh/AssimpImport.h"
#include "viewport/files/mesh/MeshFile.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>

namespace vellum::viewport {

namespace {

// Meshes are not read compressed, so ".gz" is one of them.
constexpr char const* PARTICLE_EXTENSIONS[] = {".lammpstrj", ".lammpsdump", ".dump", ".data", ".lmp",
                                               ".xyz",       ".extxyz",     ".exyz", ".csv",  ".gz",
                                               ".zst",       ".xz",         ".las",  ".laz"};

bool isParticleExtension(std::string const& extension) {
    return std::find(std::begin(PARTICLE_EXTENSIONS), std::end(PARTICLE_EXTENSIONS), extension) !=
           std::end(PARTICLE_EXTENSIONS);
}

bool hasSignature(ParticleFormat format) {
    return format != ParticleFormat::XYZ && format != ParticleFormat::CSV && format != ParticleFormat::OBJ;
}

std::string extensionOf(std::string const& path) {
    return lowerCase(std::filesystem::path(path).extension().string());
}

}  // namespace

bool isParticleFile(std::string const& path) {
    std::error_code ignored;
    // A pipe that is opened here could not be read again.
    if (InputFile::isStandardInput(path) || std::filesystem::is_fifo(path, ignored)) {
        return isParticleExtension(extensionOf(path));
    }
    Result<InputFile> const file = InputFile::open(path);
    return file.isOk() ? isParticleFile(file.value()) : isParticleExtension(extensionOf(path));
}

bool isParticleFile(InputFile const& file) {
    std::string const extension = extensionOf(file.name());
    Result<ParticleFormat> const format = ParticleFile(file).format();
    if (!format.isOk()) {
        return isParticleExtension(extension);
    }
    // A comment "# v x y z" at the top of a mesh file reads like the column names of a CSV file. PLY files
    // always have their signature: without it the name says nothing.
    bool const isItsName =
        extension == ".ply" || (extension == ".obj" && format.value() == ParticleFormat::OBJ);
    bool const isNamedAsMesh = !isParticleExtension(extension) && !isItsName && isMeshExtension(extension);
    // The name of a pipe says nothing.
    bool const isToldMesh = file.isFromPipe() && extension.empty() && format.value() != ParticleFormat::OBJ &&
                            meshFormatOf(file.bytes()).has_value();
    return hasSignature(format.value()) || !(isNamedAsMesh || isToldMesh);
}

}  // namespace vellum::viewport
