#include "viewport/files/mesh/MeshFile.h"

#include "viewport/files/mesh/AssimpImport.h"

#include <cerrno>
#include <cstring>
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

}  // namespace

MeshFile::MeshFile(std::string const& path) : path(path) {}

Result<MeshData> MeshFile::load(ImportLimits const& limits, MeshOptions const& options) const {
    if (std::optional<Fault> const fault = accessFault(path)) {
        return *fault;
    }
    return importGuarded(
        path, [&] { return importWithAssimp(path, options); }, limits);
}

}  // namespace vellum::viewport
