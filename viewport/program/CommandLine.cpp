#include "viewport/program/CommandLine.h"

#include "viewport/program/OptionWords.h"
#include "viewport/text/single_line.h"

#include <CLI/CLI.hpp>

namespace vellum::viewport {

namespace {

CommandLine usageError(std::string const& message) {
    CommandLine line;
    line.error = singleLine("vl_viewport: " + message + "; see vl_viewport --help");
    line.exitStatus = CommandLine::USAGE_ERROR;
    return line;
}

CommandLine show(std::string const& text) {
    CommandLine line;
    line.output = text;
    return line;
}

}  // namespace

CommandLine parseCommandLine(int count, char const* const* arguments) {
    constexpr std::size_t TEXT_COLUMN = 34;
    Options options;
    OptionWords words;
    CLI::App app{"Draws meshes and particles into a picture.", "vl_viewport"};
    app.get_formatter()->column_width(TEXT_COLUMN);
    words.addTo(app, options);
    app.set_version_flag("--version", "vl_viewport " VL_VIEWPORT_VERSION);
    app.footer("Exit status: 0 done; 1 a file cannot be read, is damaged or empty, a shader does not "
               "compile, or the "
               "picture cannot be written;\n"
               "2 the command line makes no sense; 3 there is no OpenGL.");

    // CLI11 reports by exceptions, which end here.
    try {
        app.parse(count, arguments);
    } catch (CLI::CallForHelp const&) {
        return show(app.help());
    } catch (CLI::CallForAllHelp const&) {
        return show(app.help());
    } catch (CLI::CallForVersion const& version) {
        return show(std::string(version.what()) + "\n");
    } catch (CLI::ParseError const& error) {
        return usageError(error.what());
    }

    if (std::optional<Fault> const fault = words.read(options)) {
        return usageError(fault->message);
    }
    if (words.effect.asksForHelp()) {
        return show(words.effect.help());
    }
    CommandLine line;
    line.options = options;
    return line;
}

}  // namespace vellum::viewport
