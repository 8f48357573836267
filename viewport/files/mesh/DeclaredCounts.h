#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Checks of file formats that declare in their header how much they hold, for what Assimp does not notice.
///
/// Of a PLY file that was cut off Assimp keeps the faces that are left, or reads on behind the end of the file; in an
/// OFF file it takes a missing index as 0, and so a negative one. Each check gets the whole file and gives the message
/// of a fault, or nothing. What a check does not understand it leaves to the importer, and reports no fault.
namespace vellum::viewport {

/// PLY, text or binary: are all the elements there that the header declares?
std::optional<std::string> plyFault(std::string_view bytes);

/// OFF: are all vertices and faces there, and do the faces' indices name vertices?
std::optional<std::string> offFault(std::string_view bytes);

}  // namespace vellum::viewport
