#pragma once

#include "viewport/content/Options.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>

namespace vellum::viewport {

/// The result of reading a command line: options, or else texts to be shown and the status to end with.
struct CommandLine {
    static constexpr int USAGE_ERROR = 2;  ///< the exit status of a command line that makes no sense
    static constexpr int FILE_ERROR = 1;   ///< that of a saved view that cannot be read or makes no sense

    std::optional<Options> options;
    std::string output;  ///< for standard output, when --help or --version asks for it; complete lines
    std::string error;   ///< for standard error: one line without its end
    Fault fault;         ///< the same as a value
    int exitStatus = 0;
};

/// Reads a command line; `arguments` as main() gets them, the program's name first. Touches no stream, and no
/// file but a configuration, that of --config or else the user's, and a saved view (see SavedView.h) in place
/// of the files. A view holds all that differs from the defaults, so no configuration is read with it; the
/// command line outranks it. \param userConfiguration its path; empty: there is none. Not read with
/// --no-config.
CommandLine parseCommandLine(int count, char const* const* arguments,
                             std::string const& userConfiguration = "");

}  // namespace vellum::viewport
