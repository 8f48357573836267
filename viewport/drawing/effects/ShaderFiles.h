#pragma once

#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The fault of a file that cannot be the text of a shader stage, or nothing. A stage is a plain file of text, not empty
/// and at most 1 MiB large; directories, devices and pipes are faults.
std::optional<Fault> shaderFileFault(std::string const& path);

/// The lines of a driver's log about a file, one fault for each. If a log line names a line of the file, as in
/// "0:12(5): error: ...", "0(12) : error ..." or "ERROR: 0:12: ...", the fault's file is "FILE:12".
std::vector<Fault> shaderFaults(std::string const& file, std::string const& log);

}  // namespace vellum::viewport
