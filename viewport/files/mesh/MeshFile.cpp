#include "viewport/files/mesh/MeshFile.h"

#include "viewport/files/common/MappedFile.h"
#include "viewport/files/mesh/AssimpImport.h"
#include "viewport/files/mesh/ObjMesh.h"
#include "viewport/files/mesh/PlyMesh.h"
#include "viewport/files/mesh/StlMesh.h"
#include "viewport/files/mesh/UpAxis.h"
#include "viewport/text/lower_case.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vellum::viewport {

namespace {

/// What keeps the file from being read at all; asked before an importer is, whose messages are less to the
/// point.
std::optional<Fault> accessFault(std::string const& path) {
    // Without O_NONBLOCK opening a named pipe would block until somebody writes to it.
    int const descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return Fault{path, std::string("cannot be opened: ") + std::strerror(errno)};
    }
    struct stat facts {};
    int const known = ::fstat(descriptor, &facts);
    ::close(descriptor);
    if (known != 0) {
        return Fault{path, std::string("cannot be read: ") + std::strerror(errno)};
    }
    if (S_ISDIR(facts.st_mode)) {
        return Fault{path, "is a folder, not a mesh file"};
    }
    if (!S_ISREG(facts.st_mode)) {
        return Fault{path, "is not a regular file"};
    }
    if (facts.st_size == 0) {
        return Fault{path, "the file is empty"};
    }
    return std::nullopt;
}

/// The formats that are read here. No child process guards these readers: whatever the bytes are, they take
/// time and memory in proportion to the size of the file.
enum class OwnFormat { NONE, OBJ, PLY, STL };

OwnFormat ownFormatOf(std::string const& extension) {
    return extension == ".obj"   ? OwnFormat::OBJ
           : extension == ".ply" ? OwnFormat::PLY
           : extension == ".stl" ? OwnFormat::STL
                                 : OwnFormat::NONE;
}

Result<MeshData> readOwn(OwnFormat format, std::string const& path, std::string_view bytes) {
    return format == OwnFormat::OBJ   ? readObjMesh(path, bytes)
           : format == OwnFormat::PLY ? readPlyMesh(bytes)
                                      : readStlMesh(bytes);
}

Result<MeshData> loadOwn(OwnFormat format, std::string const& path, std::string const& extension) {
    Result<MappedFile> const file = MappedFile::open(path);
    if (!file.isOk()) {
        return file.fault();
    }
    Result<MeshData> mesh = readOwn(format, path, file.value().bytes());
    if (!mesh.isOk()) {
        return Fault{path, mesh.fault().message};
    }
    mesh.value().up = upOfFormat(extension);
    mesh.value().name = std::filesystem::path(path).filename().string();
    if (std::optional<Fault> const fault = mesh.value().firstFault(path)) {
        return *fault;
    }
    return mesh;
}

}  // namespace

MeshFile::MeshFile(std::string const& path) : path(path) {}

Result<MeshData> MeshFile::load(ImportLimits const& limits, MeshOptions const& options) const {
    if (std::optional<Fault> const fault = accessFault(path)) {
        return *fault;
    }
    std::string const extension = lowerCase(std::filesystem::path(path).extension().string());
    OwnFormat const format = ownFormatOf(extension);
    if (format != OwnFormat::NONE) {
        return loadOwn(format, path, extension);
    }
    return importGuarded(
        path, [&] { return importWithAssimp(path, options); }, limits);
}

}  // namespace vellum::viewport
