#pragma once

#include "viewport/text/Fault.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vellum::viewport {

/// A file with options for every run of the program. One in each line, without its dashes:
///
///     # a comment
///     size = 1920x1080
///     background = "ffffff"      # quotes are taken off
///     no-axes                    # a flag; or no-axes = true
///
/// Plain text; which options there are is not known here.
struct Configuration {
    struct Line {
        std::size_t number;  ///< from 1; 0: none, in files that have no lines
        std::string name;    ///< without dashes
        std::string value;   ///< "true" where there is none
    };

    std::string file;
    std::vector<Line> lines;  ///< those with options

    /// Reads the file. A fault names the line.
    static Result<Configuration> read(std::string const& file);

    /// The fault of a line of this file.
    Fault faultOf(Line const& line, std::string const& message) const;
};

/// The user's own configuration: vl_viewport/config in $XDG_CONFIG_HOME, or else in ~/.config. Empty where
/// there is none.
std::string userConfiguration();

}  // namespace vellum::viewport
