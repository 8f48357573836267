#include "viewport/Options.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <map>
#include <string_view>

#include <CLI/CLI.hpp>

namespace vellum::viewport {

namespace {

std::map<std::string, Shading> const shadings{{"box", Shading::box},
                                              {"wireframe", Shading::wireframe},
                                              {"faceted", Shading::faceted},
                                              {"smooth", Shading::smooth}};
std::map<std::string, Normals> const normalKinds{{"vertex", Normals::vertex}, {"face", Normals::face}};
std::map<std::string, Gizmo> const gizmos{
    {"move", Gizmo::move}, {"rotate", Gizmo::rotate}, {"scale", Gizmo::scale}};
std::map<std::string, View> const views{
    {"perspective", View::perspective}, {"front", View::front}, {"back", View::back},  {"top", View::top},
    {"bottom", View::bottom},           {"left", View::left},   {"right", View::right}};

/// A non-negative whole number without sign or blanks.
std::optional<int> toNumber(std::string_view const& text) {
    int number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isWhole = error == std::errc() && end == text.data() + text.size() && text.front() != '-';
    return isWhole ? std::optional<int>(number) : std::nullopt;
}

/// Two numbers with a separator between them.
std::optional<Pixel> toPair(std::string_view const& text, char const& separator) {
    std::size_t const middle = text.find(separator);
    if (middle == std::string_view::npos) {
        return std::nullopt;
    }
    std::optional<int> const first = toNumber(text.substr(0, middle));
    std::optional<int> const second = toNumber(text.substr(middle + 1));
    return first && second ? std::optional<Pixel>({*first, *second}) : std::nullopt;
}

bool isSide(int const& length) {
    return length >= 1 && length <= Options::largestSize;
}

/// The options as text, as they stand on the command line; empty where they do not.
struct Words {
    std::string size;
    std::string shading;
    std::string normals;
    std::string gizmo;
    std::string view;
    std::string pick;
    std::string timeout;
    std::string memory;
};

template <class Value>
std::string readMode(char const* const option, std::string const& word,
                     std::map<std::string, Value> const& modes, Value& value) {
    if (word.empty()) {
        return {};
    }
    auto const found = modes.find(word);
    if (found != modes.end()) {
        value = found->second;
        return {};
    }
    std::string known;
    for (auto const& mode : modes) {
        known += (known.empty() ? "" : ", ") + mode.first;
    }
    return std::string(option) + ": unknown mode '" + word + "' (known: " + known + ")";
}

std::string readSize(std::string const& word, Options& options) {
    if (word.empty()) {
        return {};
    }
    std::optional<Pixel> const size = toPair(word, 'x');
    if (!size || !isSide(size->x) || !isSide(size->y)) {
        return "--size: '" + word + "' is not WIDTHxHEIGHT with both from 1 to " +
               std::to_string(Options::largestSize);
    }
    options.width = size->x;
    options.height = size->y;
    return {};
}

std::string readPick(std::string const& word, Options& options) {
    if (word.empty()) {
        return {};
    }
    options.pick = toPair(word, ',');
    if (!options.pick) {
        return "--pick: '" + word + "' is not X,Y, two numbers of pixels";
    }
    if (options.pick->x >= options.width || options.pick->y >= options.height) {
        return "--pick: '" + word + "' is outside the picture of " + std::to_string(options.width) + "x" +
               std::to_string(options.height) + " pixels";
    }
    return {};
}

std::string readLimits(Words const& words, Options& options) {
    constexpr int longestSeconds = 86'400;
    constexpr int mostMegabytes = 1 << 20;
    if (!words.timeout.empty()) {
        double seconds = 0;
        char const* const last = words.timeout.data() + words.timeout.size();
        auto const [end, error] = std::from_chars(words.timeout.data(), last, seconds);
        if (error != std::errc() || end != last || !(seconds >= 0.001) || seconds > longestSeconds) {
            return "--import-timeout: '" + words.timeout + "' is not a number of seconds from 0.001 to " +
                   std::to_string(longestSeconds);
        }
        options.limits.deadline = std::chrono::milliseconds(std::llround(seconds * 1000));
    }
    if (!words.memory.empty()) {
        std::optional<int> const megabytes = toNumber(words.memory);
        if (!megabytes || *megabytes < 1 || *megabytes > mostMegabytes) {
            return "--import-memory: '" + words.memory + "' is not a number of megabytes from 1 to " +
                   std::to_string(mostMegabytes);
        }
        options.limits.memoryBytes = static_cast<std::uint64_t>(*megabytes) << 20;
    }
    return {};
}

/// The first thing wrong with the words, or an empty text.
std::string read(Words const& words, Options& options) {
    std::string const faults[] = {readMode("--shading", words.shading, shadings, options.shading),
                                  readMode("--normals", words.normals, normalKinds, options.normals),
                                  readMode("--gizmo", words.gizmo, gizmos, options.gizmo),
                                  readMode("--view", words.view, views, options.view),
                                  readSize(words.size, options),
                                  readPick(words.pick, options),
                                  readLimits(words, options)};
    for (std::string const& fault : faults) {
        if (!fault.empty()) {
            return fault;
        }
    }
    if (options.edges && options.edgesBlend) {
        return "--edges and --edges-blend: only one of them can be drawn";
    }
    if (options.out.empty() && !options.pick && !options.info) {
        return "--out is required: the picture's file";
    }
    return {};
}

CommandLine usageError(std::string const& message) {
    CommandLine line;
    line.error = Fault{"", "vl_viewport: " + message + "; see vl_viewport --help"}.line();
    line.exitStatus = CommandLine::usageError;
    return line;
}

CommandLine show(std::string const& text) {
    CommandLine line;
    line.output = text;
    return line;
}

}  // namespace

CommandLine parseCommandLine(int const& count, char const* const* arguments) {
    Options options;
    Words words;
    CLI::App app{"Draws mesh files into a picture.", "vl_viewport"};
    app.get_formatter()->column_width(34);
    // A word given and empty (--size "") is a mistake, not the absence of the option.
    CLI::Validator const given(
        [](std::string& word) { return word.empty() ? std::string("may not be empty") : std::string(); }, "");

    app.add_option("FILE", options.files, "Mesh files: OBJ, PLY, STL, OFF, glTF, FBX, COLLADA, 3DS, ...")
        ->required()
        ->check(given)
        ->type_name("");
    app.add_option("--out", options.out, "Write the picture to this PNG file")
        ->check(given)
        ->type_name("FILE");
    app.add_option("--size", words.size, "Size of the picture in pixels, each side 1 to 16384 (1280x720)")
        ->check(given)
        ->type_name("WxH");
    app.add_option("--shading", words.shading, "box, wireframe, faceted or smooth (smooth)")
        ->check(given)
        ->type_name("MODE");
    app.add_flag("--edges", options.edges, "Draw borders and hard edges, over a darker surface");
    app.add_flag("--edges-blend", options.edgesBlend,
                 "Draw borders and hard edges, those behind shining through the surface");
    app.add_option("--normals", words.normals, "Draw the normals: vertex or face")
        ->check(given)
        ->type_name("KIND");
    app.add_flag("--connectivity", options.connectivity, "Mark shared edges in white and borders in amber");
    app.add_option("--texture", options.texture,
                   "Put this picture (PNG, JPEG, EXR, HDR) on the models, in place of their own textures")
        ->check(given)
        ->type_name("FILE");
    app.add_flag("--wireframe-back", options.wireframeBack,
                 "Outline the triangles that are seen from behind");
    app.add_flag("--import-preview", options.importPreview,
                 "Show what the import gave: the surface in red, the normals of the corners in white");
    app.add_flag("--immediate", options.immediate, "Draw without buffer objects");
    app.add_option("--gizmo", words.gizmo, "Draw handles over the model: move, rotate or scale")
        ->check(given)
        ->type_name("MODE");
    app.add_option("--view", words.view, "perspective, front, back, top, bottom, left or right (perspective)")
        ->check(given)
        ->type_name("VIEW");
    app.add_option("--pick", words.pick,
                   "Print what is at this pixel, counted from the upper left corner: a line with its\n"
                   "picking name and what it belongs to, or 'nothing'")
        ->check(given)
        ->type_name("X,Y");
    app.add_flag("--info", options.info, "Print what the files hold and what the OpenGL driver offers");
    app.add_option("--import-timeout", words.timeout, "Give up on a file after this time (20)")
        ->check(given)
        ->type_name("SECONDS");
    app.add_option("--import-memory", words.memory, "Memory that the import of a file may use (4096)")
        ->check(given)
        ->type_name("MB");
    app.set_version_flag("--version", "vl_viewport " VL_VIEWPORT_VERSION);
    app.footer("Exit status: 0 done; 1 a file cannot be read, is damaged or empty, or the picture cannot be "
               "written;\n"
               "2 the command line makes no sense; 3 there is no OpenGL.");

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

    std::string const fault = read(words, options);
    if (!fault.empty()) {
        return usageError(fault);
    }
    CommandLine line;
    line.options = options;
    return line;
}

}  // namespace vellum::viewport
