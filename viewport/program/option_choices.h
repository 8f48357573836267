#pragma once

#include <string>
#include <vector>

namespace vellum::viewport {

/// All words that an option takes, such as "--view", in alphabetical order or that of their own list; none
/// where it takes others too.
std::vector<std::string> choicesOf(std::string const& option);

}  // namespace vellum::viewport
