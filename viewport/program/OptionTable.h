#pragma once

#include <string>
#include <vector>

namespace vellum::viewport {

/// An option of the command line, as the help, the manual page and completions show it.
struct OptionEntry {
    std::string group;                 ///< the heading that it stands below
    std::string name;                  ///< "--size"; of what has no dashes, "FILE"
    std::string shortName;             ///< "-h"; mostly empty
    std::string type;                  ///< stands for its word, "WxH"; empty: it takes none
    std::string meaning;               ///< may have several lines
    std::vector<std::string> choices;  ///< all words that it takes, where they are known
    bool isWordOptional = false;       ///< the word, if any, follows a '='

    bool isPositional() const { return name.front() != '-'; }
    bool takesFile() const { return type == "FILE"; }
};

/// All options in the order of the help.
std::vector<OptionEntry> optionTable();

/// What the help says last.
std::string exitStatusText();

}  // namespace vellum::viewport
