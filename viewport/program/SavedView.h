#pragma once

#include "viewport/content/Options.h"
#include "viewport/program/Configuration.h"
#include "viewport/text/Fault.h"

#include <string>
#include <vector>

namespace vellum::viewport {

/// A file that holds what was seen: which files, and how, in the words of the command line:
///
///     {
///       "version": 1,
///       "files": ["run.lammpstrj"],
///       "options": {"--channel": "vx", "--no-grid": true, "--effect-param": ["depth=0.2", "mix=1"]}
///     }
///
/// Paths below the folder of the view are written as seen from there, so that a folder can be moved with its
/// views.
struct SavedView {
    static constexpr char EXTENSION[] = ".vlview";

    std::vector<std::string> files;  ///< as they are found from here
    Configuration options;           ///< its lines have no numbers

    /// Whether the name is one of a view.
    static bool isOne(std::string const& path);

    /// Reads it; which options there are is not known here. A fault where it cannot be read or is no view.
    static Result<SavedView> read(std::string const& path);
};

/// Writes what is seen with these options, the camera included; see toWords() for what belongs to it. The
/// file is there complete or not at all. A fault where a file is standard input or a name is no text, and
/// where it cannot be written.
std::optional<Fault> saveView(std::string const& path, Options const& options);

/// The options of a view, checked as those of a command line are. A fault where one is out of its range.
Result<Options> loadView(std::string const& path);

/// The name under which a view of the files is saved: beside the first one and with its name, and with a
/// number where there is such a file already. Empty where there is no first file.
std::string newViewPath(std::vector<std::string> const& files);

}  // namespace vellum::viewport
