#pragma once

#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <string_view>

/// Checks the counts that PLY and OFF files declare in their header. Assimp does not detect this damage:
///
/// of a PLY file that is cut off it keeps the remaining faces or reads beyond the end of the file, and in an
/// OFF file it takes a missing or negative index as 0. Each check gets the name and the contents of the file,
/// and returns its fault, or nothing. A file that a check does not understand is left to the importer.
namespace vellum::viewport {

/// PLY, text or binary: whether all elements exist that the header declares.
std::optional<Fault> plyFault(std::string const& file, std::string_view bytes);

/// OFF: whether all vertices and faces exist, and the indices of the faces name vertices.
std::optional<Fault> offFault(std::string const& file, std::string_view bytes);

}  // namespace vellum::viewport
