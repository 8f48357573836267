#include "viewport/files/mesh/MeshFile.h"

#include "viewport/files/common/MappedFile.h"
#include "viewport/files/common/PlyHeader.h"
#include "viewport/files/mesh/AssimpImport.h"
#include "viewport/files/mesh/ObjMesh.h"
#include "viewport/files/mesh/PlyMesh.h"
#include "viewport/files/mesh/StlMesh.h"
#include "viewport/files/mesh/UpAxis.h"
#include "viewport/text/Words.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

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

Result<MeshData> readOwn(OwnFormat format, std::string const& path, std::string_view bytes,
                         Progress const& progress) {
    constexpr char const* NO_MEMORY = "there is not enough memory for its mesh";
    try {
        return format == OwnFormat::OBJ   ? readObjMesh(path, bytes, progress)
               : format == OwnFormat::PLY ? readPlyMesh(bytes, progress)
                                          : readStlMesh(bytes, progress);
    } catch (std::bad_alloc const&) {
        return Fault{{}, NO_MEMORY};
        // Thrown by vectors that are asked for more than they could ever hold.
    } catch (std::length_error const&) {
        return Fault{{}, NO_MEMORY};
    }
}

Result<MeshData> loadOwn(std::string const& name, std::string const& place, std::string_view bytes,
                         std::string const& extension, Progress const& progress) {
    Result<MeshData> mesh = readOwn(ownFormatOf(extension), place, bytes, progress);
    if (!mesh.isOk()) {
        return Fault{name, mesh.fault().message};
    }
    mesh.value().up = upOfFormat(extension);
    mesh.value().name = std::filesystem::path(name).filename().string();
    if (std::optional<Fault> const fault = mesh.value().firstFault(name)) {
        return *fault;
    }
    mesh.value().makeVisible();
    return mesh;
}

std::string extensionOf(std::string const& path) {
    return lowerCase(std::filesystem::path(path).extension().string());
}

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

/// Whether a text begins with statements of OBJ, behind comments.
bool beginsAsObj(std::string_view text) {
    static constexpr std::string_view STATEMENTS[] = {"v",      "vn", "vt", "vp", "f",
                                                      "mtllib", "o",  "g",  "s",  "usemtl"};
    while (!text.empty()) {
        std::string_view line = takeLine(text);
        std::string_view const word = takeWord(line);
        if (!word.empty() && word.front() != '#') {
            return std::find(std::begin(STATEMENTS), std::end(STATEMENTS), word) != std::end(STATEMENTS);
        }
    }
    return false;
}

}  // namespace

MeshFile::MeshFile(std::string const& path) : path(path) {}

MeshFile::MeshFile(InputFile const& file, std::optional<std::string> format)
    : path(file.name()), file(file), format(std::move(format)) {}

std::string MeshFile::place() const {
    bool const hasFolder =
        !InputFile::isStandardInput(path) && !startsWith(path, "/dev/") && !startsWith(path, "/proc/");
    return hasFolder ? path : std::filesystem::path(path).filename().string();
}

Result<std::string> MeshFile::_extension() const {
    if (format) {
        std::string const name = lowerCase(*format);
        std::string const extension = startsWith(name, ".") ? name : "." + name;
        if (name.empty() || !isMeshExtension(extension)) {
            return Fault{path, "unknown mesh format '" + *format + "'"};
        }
        return extension;
    }
    std::string const extension = extensionOf(path);
    if (!file || !file->isFromPipe() || isMeshExtension(extension)) {
        return extension;
    }
    if (std::optional<std::string> const told = meshFormatOf(file->bytes())) {
        return "." + *told;
    }
    return Fault{path, "neither its name nor its first bytes tell the mesh format"};
}

Result<MeshData> MeshFile::load(ImportLimits const& limits, MeshOptions const& options,
                                Progress const& progress) const {
    if (!file) {
        if (std::optional<Fault> const fault = accessFault(path)) {
            return *fault;
        }
    }
    Result<std::string> const known = _extension();
    if (!known.isOk()) {
        return known.fault();
    }
    std::string const& extension = known.value();
    if (ownFormatOf(extension) != OwnFormat::NONE) {
        if (file) {
            return loadOwn(path, place(), file->bytes(), extension, progress);
        }
        Result<MappedFile> const mapped = MappedFile::open(path);
        return mapped.isOk() ? loadOwn(path, path, mapped.value().bytes(), extension, progress)
                             : Result<MeshData>(mapped.fault());
    }
    if (!file || (!file->isFromPipe() && !format)) {
        return importGuarded(
            path, [&] { return importWithAssimp(path, options); }, limits, progress);
    }
    auto const import = [&] {
        // In the child alone: the importer looks in the current folder for what the bytes name.
        std::filesystem::path const folder = std::filesystem::path(place()).parent_path();
        std::error_code ignored;
        if (!folder.empty()) {
            std::filesystem::current_path(folder, ignored);
        }
        return importWithAssimp(path, file->bytes(), extension, options);
    };
    return importGuarded(path, import, limits, progress);
}

std::vector<std::string> meshFormatNames() {
    return importedFormats();
}

std::optional<std::string> meshFormatOf(std::string_view bytes) {
    constexpr std::size_t FAR_ENOUGH = 1 << 16;
    std::string_view const start = bytes.substr(0, FAR_ENOUGH);
    std::string_view rest = start;
    std::string_view const firstWord = takeWord(rest);
    if (readPlyHeader(bytes) || firstWord == "ply") {
        return "ply";
    }
    if (isStl(bytes)) {
        return "stl";
    }
    if (startsWith(start, "glTF")) {
        return "glb";
    }
    if (startsWith(start, "Kaydara FBX Binary")) {
        return "fbx";
    }
    if (start.find("<COLLADA") != std::string_view::npos) {
        return "dae";
    }
    if (startsWith(firstWord, "{") && start.find("\"asset\"") != std::string_view::npos) {
        return "gltf";
    }
    if (firstWord.size() >= 3 && firstWord.size() <= 6 && firstWord.substr(firstWord.size() - 3) == "OFF") {
        return "off";
    }
    return beginsAsObj(start) ? std::optional<std::string>("obj") : std::nullopt;
}

}  // namespace vellum::viewport
