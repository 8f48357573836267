#pragma once

#include "viewport/program/OptionTable.h"

#include <string>
#include <vector>

namespace vellum::viewport {

/// \file
/// What a table of options becomes for readers and shells. Complete files as texts.

/// A page of the manual, section 1, in the language of man(7).
std::string manualPage(std::vector<OptionEntry> const& table, std::string const& version);

// == Completions ==

std::string bashCompletion(std::vector<OptionEntry> const& table);
std::string zshCompletion(std::vector<OptionEntry> const& table);
std::string fishCompletion(std::vector<OptionEntry> const& table);

}  // namespace vellum::viewport
