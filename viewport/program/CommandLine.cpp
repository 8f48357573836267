#include "viewport/program/CommandLine.h"

#include "viewport/program/Configuration.h"
#include "viewport/program/OptionTable.h"
#include "viewport/program/OptionWords.h"
#include "viewport/program/SavedView.h"
#include "viewport/program/add_word.h"
#include "viewport/program/option_choices.h"
#include "viewport/program/word_values.h"
#include "viewport/text/single_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>
#include <vector>

namespace vellum::viewport {

namespace {

CommandLine usageError(std::string const& message) {
    CommandLine line;
    line.error = singleLine("vl_viewport: " + message + "; see vl_viewport --help");
    line.fault = {"", message};
    line.exitStatus = CommandLine::USAGE_ERROR;
    return line;
}

/// Of a saved view.
CommandLine fileError(Fault const& fault) {
    CommandLine line;
    line.error = singleLine("vl_viewport: " + fault.line());
    line.fault = fault;
    line.exitStatus = CommandLine::FILE_ERROR;
    return line;
}

CommandLine show(std::string const& text) {
    CommandLine line;
    line.output = text;
    return line;
}

/// A parser with what it fills.
struct Parsing {
    CLI::App app{"Draws meshes and particles into pictures.", "vl_viewport"};
    Options options;
    OptionWords words;
    std::string configuration;
    bool isWithoutConfiguration = false;

    Parsing() {
        constexpr std::size_t TEXT_COLUMN = 34;
        app.get_formatter()->column_width(TEXT_COLUMN);
        words.addTo(app, options);
        addWord(app, "--config", configuration,
                "Read options from this file, lines 'size = 64x48'; in place of\n"
                "$XDG_CONFIG_HOME/vl_viewport/config; the command line outranks it",
                "FILE")
            ->group("Program");
        app.add_flag("--no-config", isWithoutConfiguration, "Do not read that of the user")->group("Program");
        app.set_version_flag("--version", "vl_viewport " VL_VIEWPORT_VERSION)->group("Program");
        app.set_help_flag("-h,--help", "Print this help")->group("Program");
        app.footer(exitStatusText());
    }
    Parsing(Parsing const&) = delete;
    Parsing& operator=(Parsing const&) = delete;

    /// What is to be shown in place of everything else, or nothing.
    std::optional<CommandLine> parse(std::vector<std::string> arguments) {
        // CLI11 takes the last one first, and reports by exceptions, which end here.
        std::reverse(arguments.begin(), arguments.end());
        try {
            app.parse(arguments);
        } catch (CLI::CallForHelp const&) {
            return show(app.help());
        } catch (CLI::CallForAllHelp const&) {
            return show(app.help());
        } catch (CLI::CallForVersion const& version) {
            return show(std::string(version.what()) + "\n");
        } catch (CLI::ParseError const& error) {
            return usageError(error.what());
        }
        return std::nullopt;
    }

    bool isGiven(std::string const& option) const {
        CLI::Option const* const found = app.get_option_no_throw(option);
        return found != nullptr && found->count() > 0;
    }
};

/// What a configuration says, for one command line.
class Standards {
public:
    /// Takes the lines that the command line leaves to it. A fault names the line.
    std::optional<Fault> take(Configuration const& configuration, Parsing const& parsing) {
        for (Configuration::Line const& line : configuration.lines) {
            std::string const option = "--" + line.name;
            std::optional<std::string> const lack = _lackOf(option, line, parsing);
            if (lack) {
                return configuration.faultOf(line, *lack);
            }
            places.emplace(option, configuration.faultOf(line, "").line());
            _take(option, line.value, parsing);
        }
        return std::nullopt;
    }

    /// Whether the message is about something that stands there and not on the command line.
    bool causes(std::string const& message, Parsing const& commandLine) const {
        std::string const option = message.substr(0, message.find_first_of(": "));
        return places.count(option) != 0 && !commandLine.isGiven(option);
    }

    PictureWords const& ofPictures() const { return pictureWords; }
    std::vector<std::string> const& arguments() const { return words; }

    /// The message of a fault, after the place in the configuration where the option comes from.
    std::string located(std::string const& message, Parsing const& commandLine) const {
        return causes(message, commandLine)
                   ? places.at(message.substr(0, message.find_first_of(": "))) + message
                   : message;
    }

private:
    static bool _isFlag(CLI::Option const& option) { return option.get_expected_max() == 0; }

    std::optional<std::string> _lackOf(std::string const& option, Configuration::Line const& line,
                                       Parsing const& parsing) const {
        static constexpr char const* ELSEWHERE[] = {"--out", "--config", "--no-config", "--help",
                                                    "--version"};
        CLI::Option const* const found = parsing.app.get_option_no_throw(option);
        if (found == nullptr || line.name == "h" || found->get_positional()) {
            return "there is no option '" + line.name + "'";
        }
        if (std::find(std::begin(ELSEWHERE), std::end(ELSEWHERE), option) != std::end(ELSEWHERE)) {
            return line.name + ": belongs on the command line";
        }
        if (places.count(option) != 0 && option != "--effect-param" && option != "--transform") {
            return line.name + ": is given twice";
        }
        bool const isWord = line.value != "true" && line.value != "false";
        bool const takesWord = option == "--edges" || option == "--info";
        if (_isFlag(*found) && isWord && !takesWord) {
            return line.name + ": is a flag, true or false";
        }
        return std::nullopt;
    }

    void _take(std::string const& option, std::string const& value, Parsing const& parsing) {
        bool const isFlag = _isFlag(*parsing.app.get_option_no_throw(option));
        if (isFlag && value == "false") {
            return;
        }
        if (parsing.words.pictures.knows(option)) {
            static_cast<void>(pictureWords.set(option, value));
        } else if (!parsing.isGiven(option)) {
            words.push_back(isFlag && value == "true" ? option : option + "=" + value);
        }
    }

    PictureWords pictureWords;
    std::vector<std::string> words;
    std::map<std::string, std::string> places;  // "FILE: line N: " of an option
};

/// The configuration of this command line; empty: none.
std::string configurationOf(Parsing const& parsing, std::string const& userConfiguration) {
    return !parsing.configuration.empty()   ? parsing.configuration
           : parsing.isWithoutConfiguration ? std::string()
                                            : userConfiguration;
}

std::optional<Fault> readStandards(std::string const& file, Parsing const& parsing, Standards& standards) {
    if (file.empty()) {
        return std::nullopt;
    }
    Result<Configuration> const configuration = Configuration::read(file);
    return configuration.isOk() ? standards.take(configuration.value(), parsing)
                                : std::optional<Fault>(configuration.fault());
}

// == Saved views ==

bool isOneOf(std::string const& option, std::vector<std::string> const& options) {
    return std::find(options.begin(), options.end(), option) != options.end();
}

/// Whether an option of a view contradicts one of the command line, which outranks it.
bool givesWay(std::string const& option, Parsing const& commandLine) {
    struct Row {
        std::string given;
        std::vector<std::string> others;
    };
    static std::vector<Row> const rows{
        {"--view",
         {"--projection", "--camera-position", "--camera-up", "--azimuth", "--elevation", "--fov",
          "--camera-height"}},
        {"--projection", {"--view", "--fov", "--camera-height"}},
        {"--camera-position", {"--view", "--azimuth", "--elevation"}},
        {"--camera-up", {"--view"}},
        {"--azimuth", {"--view", "--camera-position"}},
        {"--elevation", {"--view", "--camera-position"}},
        {"--fov", {"--view", "--projection", "--camera-height"}},
        {"--camera-height", {"--view", "--fov"}},
        {"--colors", {"--colormap"}},
        {"--frame", {"--time"}},
        {"--time", {"--frame"}},
        {"--effect",
         {"--effect-param", "--effect-model", "--environment", "--shader-vertex", "--shader-fragment",
          "--shader-geometry", "--shader-fallback"}}};
    return std::any_of(rows.begin(), rows.end(), [&](Row const& row) {
        return commandLine.isGiven(row.given) && isOneOf(option, row.others);
    });
}

/// Reads the view among the files, if there is one. A command line with an error where it cannot be taken.
std::optional<CommandLine> readView(Parsing const& parsing, std::optional<SavedView>& view,
                                    Standards& standards) {
    std::vector<std::string> const& files = parsing.options.files;
    auto const found = std::find_if(files.begin(), files.end(), SavedView::isOne);
    if (found == files.end()) {
        return std::nullopt;
    }
    if (files.size() > 1) {
        return usageError(*found + ": a saved view has its own files and takes no others");
    }
    if (!parsing.configuration.empty()) {
        return usageError("--config: cannot be used with a saved view, which says everything itself");
    }
    Result<SavedView> const read = SavedView::read(*found);
    if (!read.isOk()) {
        return fileError(read.fault());
    }
    view = read.value();
    std::vector<Configuration::Line>& lines = view->options.lines;
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [&parsing](auto const& line) { return givesWay("--" + line.name, parsing); }),
                lines.end());
    std::optional<Fault> const fault = standards.take(view->options, parsing);
    return fault ? std::optional<CommandLine>(fileError(*fault)) : std::nullopt;
}

std::set<std::string> givenOptions(Parsing const& parsing) {
    std::set<std::string> names;
    for (CLI::Option const* const option : parsing.app.get_options()) {
        if (option->count() > 0) {
            names.insert(option->get_name());
        }
    }
    for (std::string const& assignment : parsing.words.effect.assignments) {
        names.insert("--effect-param " + assignment.substr(0, assignment.find('=')));
    }
    return names;
}

OptionEntry entryOf(CLI::Option const& option) {
    OptionEntry entry;
    bool const isPositional = option.get_positional();
    entry.group = isPositional ? std::string("Files") : option.get_group();
    entry.name = isPositional ? option.get_name() : "--" + option.get_lnames().front();
    entry.shortName = option.get_snames().empty() ? std::string() : "-" + option.get_snames().front();
    entry.type = isPositional                     ? std::string("FILE")
                 : option.get_expected_max() == 0 ? std::string()
                                                  : option.get_type_name();
    entry.meaning = option.get_description();
    entry.choices = choicesOf(entry.name);
    entry.isWordOptional = option.get_expected_max() == 0 && !entry.choices.empty();
    return entry;
}

}  // namespace

std::string exitStatusText() {
    return "Exit status: 0 done; 1 a file cannot be read, is damaged or empty, a shader does not compile, or "
           "a\n"
           "picture cannot be written; 2 the command line makes no sense; 3 there is no OpenGL.";
}

std::vector<OptionEntry> optionTable() {
    Parsing const parsing;
    std::vector<OptionEntry> table;
    for (CLI::Option const* const option : parsing.app.get_options()) {
        table.push_back(entryOf(*option));
    }
    // The parser has its own options first; in the help they are last.
    std::stable_partition(table.begin(), table.end(),
                          [](OptionEntry const& entry) { return entry.group != "Program"; });
    return table;
}

CommandLine parseCommandLine(int count, char const* const* arguments, std::string const& userConfiguration) {
    std::vector<std::string> words(arguments + std::min(count, 1), arguments + count);
    Parsing commandLine;
    if (std::optional<CommandLine> const shown = commandLine.parse(words)) {
        return *shown;
    }
    Standards standards;
    std::optional<SavedView> view;
    if (std::optional<CommandLine> refused = readView(commandLine, view, standards)) {
        return *refused;
    }
    std::string const configuration = view ? std::string() : configurationOf(commandLine, userConfiguration);
    std::optional<Fault> const unread = readStandards(configuration, commandLine, standards);
    if (unread) {
        return usageError(unread->line());
    }
    // Once more with what the configuration or the view adds.
    words.insert(words.begin(), standards.arguments().begin(), standards.arguments().end());
    Parsing whole;
    if (std::optional<CommandLine> shown = whole.parse(words)) {
        return *shown;
    }
    whole.options.configuration = configuration;
    if (view) {
        whole.options.files = view->files;
        whole.options.view = view->options.file;
    }
    if (std::optional<Fault> const fault =
            whole.words.read(whole.app, standards.ofPictures(), whole.options)) {
        std::string const message = fault->message;
        return view && standards.causes(message, commandLine)
                   ? fileError({view->options.file, message})
                   : usageError(standards.located(message, commandLine));
    }
    if (whole.words.effect.asksForHelp()) {
        return show(whole.words.effect.help());
    }
    CommandLine line;
    whole.options.given = givenOptions(commandLine);
    line.options = whole.options;
    return line;
}

}  // namespace vellum::viewport
