#include "viewport/program/documents.h"

#include <algorithm>
#include <cctype>

namespace vellum::viewport {

namespace {

/// Words with blanks between them.
std::string spaced(std::vector<std::string> const& words) {
    std::string text;
    for (std::string const& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

/// A text in which some letters are preceded by another one.
std::string escaped(std::string const& text, std::string const& letters, char before = '\\') {
    std::string result;
    for (char const letter : text) {
        if (letters.find(letter) != std::string::npos) {
            result += before;
        }
        result += letter;
    }
    return result;
}

/// In single quotes for a shell of the POSIX kind.
std::string inQuotes(std::string const& text) {
    std::string result = "'";
    for (char const letter : text) {
        result += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    }
    return result + "'";
}

std::string onOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

/// The first clause: completions show a line.
std::string shortMeaning(OptionEntry const& option) {
    constexpr std::size_t MOST = 70;
    std::string text = onOneLine(option.meaning);
    text = text.substr(0, std::min(text.find(';'), text.size()));
    if (text.size() <= MOST) {
        return text;
    }
    return text.substr(0, text.rfind(' ', MOST)) + " ...";
}

// == The language of man(7) ==

/// A dash is a hyphen there, a line that begins with a point or a quote a command.
std::string roff(std::string const& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char const letter = text[i];
        bool const isFirst = i == 0 || text[i - 1] == '\n';
        if (isFirst && (letter == '.' || letter == '\'')) {
            result += "\\&";
        }
        result += letter == '\\'  ? std::string("\\e")
                  : letter == '-' ? std::string("\\-")
                                  : std::string(1, letter);
    }
    return result;
}

std::string manualEntry(OptionEntry const& option) {
    std::string text = ".TP\n";
    std::string const names = (option.shortName.empty() ? "" : option.shortName + ", ") + option.name;
    text += "\\fB" + roff(names) + "\\fR";
    if (option.isWordOptional) {
        text += "[=\\fI" + roff(option.choices.front()) + "\\fR]";
    } else if (!option.type.empty() && !option.isPositional()) {
        text += " \\fI" + roff(option.type) + "\\fR";
    }
    return text + "\n" + roff(option.meaning) + ".\n";
}

}  // namespace

std::string manualPage(std::vector<OptionEntry> const& table, std::string const& version) {
    std::string text = R"(.TH VL_VIEWPORT 1 "" "vl_viewport )" + roff(version) + "\" \"User Commands\"\n";
    text += ".SH NAME\nvl_viewport \\- view meshes and particles, or draw them into pictures\n"
            ".SH SYNOPSIS\n.B vl_viewport\n[\\fIOPTIONS\\fR] [\\fIFILE\\fR...]\n"
            ".br\n.B vl_viewport\n[\\fIOPTIONS\\fR] \\fIVIEW\\fR.vlview\n"
            ".SH DESCRIPTION\n"
            "Opens mesh and particle files in a window. With \\fB\\-\\-out\\fR, \\fB\\-\\-pick\\fR or "
            "\\fB\\-\\-info\\fR "
            "no window is opened and none is needed: pictures are written, and what is known is printed.\n"
            ".PP\nA file \\fB.vlview\\fR is a saved view: it names the files and says how they are seen. "
            "Options of the command line outrank it.\n";
    std::string group;
    for (OptionEntry const& option : table) {
        if (option.group != group) {
            group = option.group;
            std::string heading = group;
            std::transform(heading.begin(), heading.end(), heading.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
            text += ".SH \"" + roff(heading) + "\"\n";
        }
        text += manualEntry(option);
    }
    return text + ".SH \"EXIT STATUS\"\n" + roff(exitStatusText()) +
           "\n.SH CONFIGURATION\n.TP\n.I $XDG_CONFIG_HOME/vl_viewport/config\n"
           "Options for every run, such as \\(oqsize = 1920x1080\\(cq. Where the variable is not set, in "
           "~/.config.\n"
           ".TP\n.I $XDG_CONFIG_HOME/vl_viewport/window.json\n"
           "The size of the window and the files that were open last.\n";
}

std::string bashCompletion(std::vector<OptionEntry> const& table) {
    std::vector<std::string> names;
    std::string files;
    std::string others;
    std::string cases;
    for (OptionEntry const& option : table) {
        if (option.isPositional()) {
            continue;
        }
        names.push_back(option.name);
        if (!option.shortName.empty()) {
            names.push_back(option.shortName);
        }
        if (option.isWordOptional) {
            for (std::string const& choice : option.choices) {
                names.push_back(option.name + "=" + choice);
            }
        } else if (!option.choices.empty()) {
            cases += "        " + option.name + ") COMPREPLY=($(compgen -W " +
                     inQuotes(spaced(option.choices)) + " -- \"$word\")); return ;;\n";
        } else if (option.takesFile()) {
            files += (files.empty() ? "" : "|") + option.name;
        } else if (!option.type.empty()) {
            others += (others.empty() ? "" : "|") + option.name;
        }
    }
    return "# Completion of vl_viewport for bash.\n"
           "_vl_viewport() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD-1]}\n"
           "    # A '=' is a word of its own.\n"
           "    if [ \"$option\" = = ]; then option=${COMP_WORDS[COMP_CWORD-2]}; fi\n"
           "    if [ \"$word\" = = ]; then word=; fi\n"
           "    COMPREPLY=()\n"
           "    case $option in\n" +
           cases + "        " + files +
           ") compopt -o filenames 2> /dev/null; COMPREPLY=($(compgen -f -- \"$word\")); return ;;\n" +
           "        " + others + ") return ;;\n" +
           "    esac\n"
           "    case $word in\n"
           "        -*) COMPREPLY=($(compgen -W " +
           inQuotes(spaced(names)) +
           " -- \"$word\")) ;;\n"
           "        *) compopt -o filenames 2> /dev/null; COMPREPLY=($(compgen -f -- \"$word\")) ;;\n"
           "    esac\n"
           "}\n"
           "complete -F _vl_viewport vl_viewport\n";
}

std::string zshCompletion(std::vector<OptionEntry> const& table) {
    std::string text = "#compdef vl_viewport\n# Completion of vl_viewport for zsh.\n_arguments -s \\\n";
    for (OptionEntry const& option : table) {
        if (option.isPositional()) {
            continue;
        }
        std::string const meaning = "[" + escaped(shortMeaning(option), "[]:\\") + "]";
        bool const isRepeated = option.name == "--out" || option.name == "--effect-param";
        std::string word;
        if (!option.choices.empty()) {
            word = std::string(option.isWordOptional ? "::" : ":") + "word:(" + spaced(option.choices) + ")";
        } else if (option.takesFile()) {
            word = ":file:_files";
        } else if (!option.type.empty()) {
            word = ":" + escaped(option.type, ":\\") + ":";
        }
        std::string const ending = option.isWordOptional ? "=-" : option.type.empty() ? "" : "=";
        std::string entry = isRepeated ? "*" : "";
        entry.append(option.name).append(ending).append(meaning).append(word);
        text += "  " + inQuotes(entry) + " \\\n";
        if (!option.shortName.empty()) {
            text += "  " + inQuotes(option.shortName + meaning) + " \\\n";
        }
    }
    return text + "  '*:file:_files'\n";
}

std::string fishCompletion(std::vector<OptionEntry> const& table) {
    std::string text = "# Completion of vl_viewport for fish.\n";
    for (OptionEntry const& option : table) {
        if (option.isPositional()) {
            continue;
        }
        text += "complete -c vl_viewport -l " + option.name.substr(2);
        if (!option.shortName.empty()) {
            text += " -s " + option.shortName.substr(1);
        }
        if (option.takesFile()) {
            text += " -r -F";
        } else if (!option.type.empty()) {
            text += " -x";
        }
        if (!option.choices.empty()) {
            text += " -a '" + escaped(spaced(option.choices), "\\'") + "'";
        }
        text += " -d '" + escaped(shortMeaning(option), "\\'") + "'\n";
    }
    return text;
}

}  // namespace vellum::viewport
