#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// What an empty window shows: what can be done, and the files that were open last. Draws with ImGui, between
/// Interface::begin() and end(). The file that the user has clicked on. \param files absolute paths, the last
/// one first \param left end of where it is shown, in units of the window
std::optional<std::string> drawRecentFiles(std::vector<std::string> const& files, double left);

}  // namespace vellum::viewport
