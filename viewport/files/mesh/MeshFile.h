#pragma once

#include "viewport/files/mesh/GuardedImport.h"
#include "viewport/files/mesh/MeshOptions.h"

#include <string>

namespace vellum::viewport {

/// A mesh file that a user named: the way from its path to a mesh that can be relied on.
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

    /// Reads OBJ, PLY and STL files here (see ObjMesh.h, PlyMesh.h, StlMesh.h), in time and memory that follow
    /// from their size and not from the limits. Imports all others (see AssimpImport.h) in a process of its own
    /// (see GuardedImport.h). Call it before a GL context or a thread exists.
    Result<MeshData> load(ImportLimits const& limits, MeshOptions const& options = {}) const;

private:
    std::string path;
};

}  // namespace vellum::viewport
