#pragma once

#include "viewport/files/common/InputFile.h"
#include "viewport/files/mesh/GuardedImport.h"
#include "viewport/files/mesh/MeshOptions.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// A mesh file that a user named: the way from its path, or from the bytes of a pipe, to a mesh that can be
/// relied on.
///
///     Result<MeshData> const mesh = MeshFile("spider.obj").load(ImportLimits{});
///     if (!mesh.isOk())
///         std::cerr << mesh.fault().line() << '\n';
///
/// Any file may be named; none makes load() throw, crash or take much longer than the limits or its size say.
/// Not for particle files.
class MeshFile {
public:
    explicit MeshFile(std::string const& path);

    /// \param format one of meshFormatNames(), in any case; nothing: as the name's extension says, and of a pipe
    ///     whose name says nothing, as its bytes say (see meshFormatOf())
    explicit MeshFile(InputFile const& file, std::optional<std::string> format = std::nullopt);

    /// Reads OBJ, PLY and STL files here (see ObjMesh.h, PlyMesh.h, StlMesh.h), in time and memory that
    /// follow from their size and not from the limits. Imports all others (see AssimpImport.h) in a process
    /// of its own (see GuardedImport.h). \param progress gets the bytes of the file; of an imported one 0 of
    /// 0
    Result<MeshData> load(ImportLimits const& limits, MeshOptions const& options = {},
                          Progress const& progress = {}) const;

    /// The path beside which the files lie that the mesh names: materials, textures, buffers. Those of
    /// standard input and of the pipes of a shell lie in the current folder.
    std::string place() const;

private:
    /// The extension of its format, or why there is none.
    Result<std::string> _extension() const;

    std::string path;
    std::optional<InputFile> file;  // opened already
    std::optional<std::string> format;
};

/// The names by which a format can be named, sorted: extensions without their dot.
std::vector<std::string> meshFormatNames();

/// The format that the first bytes of a file tell, as one of meshFormatNames(); nothing where they tell none.
/// Known are OBJ, PLY, STL, glTF, FBX (binary), COLLADA and OFF.
std::optional<std::string> meshFormatOf(std::string_view bytes);

}  // namespace vellum::viewport
