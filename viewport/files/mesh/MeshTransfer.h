#pragma once

#include "viewport/files/common/GuardedRun.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <string>
#include <vector>

/// The result of an import as bytes, for the way from the process that imports to the one that draws.
///
///     header | name or message | positions | triangles | [normals] | colors | [texture coordinates]
///         | [materials of the triangles] | lines | points | values of scalars | details
///
/// Details are the direction that is up, the names of scalars, the notes, the animations and the materials.
///
/// Both ends are the same program on the same machine, so numbers are as memory holds them. The receiver
/// trusts nothing all the same: the sender has just read a file that may have been made to harm it.
namespace vellum::viewport {

/// Gives the bytes of a mesh to `put`, the large arrays as they lie in memory.
void encodeMesh(MeshData const& mesh, PutBytes const& put);
std::vector<unsigned char> encodeFault(std::string const& message);

/// Reads the bytes of either function. A message becomes a fault about `file`. So does everything that is not
/// a sound mesh: bytes missing or left over, counts that do not fit the size, and the faults that
/// MeshData::firstFault() finds.
Result<MeshData> decodeMesh(unsigned char const* bytes, std::size_t size, std::string const& file);

}  // namespace vellum::viewport
