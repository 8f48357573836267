#pragma once

#include "viewport/content/Options.h"

#include <string>

namespace vellum::viewport {

/// The facts about a thing, as describePick() gives them, beside each other and without its number.
std::string inOneLine(std::string const& lines);

/// The title of a window in which these files are open.
std::string titleOf(Options const& options);

}  // namespace vellum::viewport
