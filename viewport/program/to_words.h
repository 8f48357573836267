#pragma once

#include "viewport/content/Options.h"

#include <functional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// An option and its word, as the command line has them.
struct OptionWord {
    std::string option;  ///< such as "--percent"
    std::string word;    ///< "true" of a flag

    /// As one argument: "--percent=50", "--no-grid".
    std::string argument(bool isFlag) const { return isFlag ? option : option + "=" + word; }
};

/// The options that differ from the defaults as words that parseCommandLine() reads back as the same, in the
/// order of the help; of the pictures the first one. Without the files, and without what one run of the
/// program is asked for: see NEVER_IN_WORDS. Colors are rounded to the 256 steps of RRGGBB.
std::vector<OptionWord> toWords(Options const& options);

/// Options that toWords() leaves out: they are no part of what is seen.
inline constexpr char const* NEVER_IN_WORDS[] = {"--out",    "--pick",      "--info", "--quiet",
                                                 "--config", "--no-config", "--help", "--version",
                                                 "--frames", "--turntable", "--fps",  "--window-picture"};

/// Whether the word of an option is the path of a file.
bool takesFile(std::string const& option);

/// The word of an option with its path changed, if it has one.
/// \param effect that the parameters belong to, by its name
std::string withPath(OptionWord const& option, std::string const& effect,
                     std::function<std::string(std::string const&)> const& change);

/// A line for a shell that draws what is seen into a file: the program, the files, the options, --size and
/// --out. Paths are whole, so that it may be called in any folder. Without a gizmo, which is a tool. \param
/// out the file to be written
std::string commandLineOf(Options const& options, PictureSize const& size, std::string const& out);

/// A word as a shell takes it: between quotes where that is needed.
std::string quotedForShell(std::string const& word);

}  // namespace vellum::viewport
