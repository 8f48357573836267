#pragma once

#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Whether a file can be the text of a stage at all: the fault that says why not, or nothing. A stage is a plain file of
/// text, not empty and at most 1 MiB large.
std::optional<Fault> shaderFileFault(std::string const& path);

/// The lines of a driver's log about the text of a file, one fault for each. Where a line names a line of the text, as
/// in "0:12(5): error: ...", "0(12) : error ..." or "ERROR: 0:12: ...", so does the file's name: "FILE:12".
std::vector<Fault> shaderFaults(std::string const& file, std::string const& log);

}  // namespace vellum::viewport
