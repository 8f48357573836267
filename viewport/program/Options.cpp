#include "viewport/program/Options.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <map>
#include <string_view>

#include <CLI/CLI.hpp>

namespace vellum::viewport {

namespace {

std::map<std::string, Shading> const shadings{{"box", Shading::BOX},
                                              {"wireframe", Shading::WIREFRAME},
                                              {"faceted", Shading::FACETED},
                                              {"smooth", Shading::SMOOTH}};
std::map<std::string, Normals> const normalKinds{{"vertex", Normals::VERTEX}, {"face", Normals::FACE}};
std::map<std::string, Gizmo> const gizmos{
    {"move", Gizmo::MOVE}, {"rotate", Gizmo::ROTATE}, {"scale", Gizmo::SCALE}};
std::map<std::string, ParticleMode> const particleModes{
    {"points", ParticleMode::POINTS}, {"spheres", ParticleMode::SPHERES}, {"arrows", ParticleMode::ARROWS}};
std::map<std::string, View> const views{
    {"perspective", View::PERSPECTIVE}, {"front", View::FRONT}, {"back", View::BACK},  {"top", View::TOP},
    {"bottom", View::BOTTOM},           {"left", View::LEFT},   {"right", View::RIGHT}};

/// A non-negative whole number without sign or BLANKS.
std::optional<int> toNumber(std::string_view text) {
    int number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isWhole = error == std::errc() && end == text.data() + text.size() && text.front() != '-';
    return isWhole ? std::optional<int>(number) : std::nullopt;
}

/// A finite number without BLANKS around it.
std::optional<double> toReal(std::string_view text) {
    double number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isWhole = error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
    return isWhole ? std::optional<double>(number) : std::nullopt;
}

/// The parts of a text between separators.
std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    std::size_t end = 0;
    while ((end = text.find(separator)) != std::string_view::npos) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

/// A color as six hexadecimal digits, with or without a '#' before them.
std::optional<Color4<float>> toColor(std::string_view text) {
    if (!text.empty() && text.front() == '#') {
        text.remove_prefix(1);
    }
    unsigned int number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    if (error != std::errc() || end != text.data() + text.size() || text.size() != 6) {
        return std::nullopt;
    }
    auto const channel = [&number](unsigned int shift) {
        return static_cast<float>(number >> shift & 0xFFU) / 255.0F;
    };
    return Color4<float>{channel(16), channel(8), channel(0), 1};
}

/// Two numbers with a separator between them.
std::optional<Pixel> toPair(std::string_view text, char separator) {
    std::size_t const middle = text.find(separator);
    if (middle == std::string_view::npos) {
        return std::nullopt;
    }
    std::optional<int> const first = toNumber(text.substr(0, middle));
    std::optional<int> const second = toNumber(text.substr(middle + 1));
    return first && second ? std::optional<Pixel>({*first, *second}) : std::nullopt;
}

bool isSide(int length) {
    return length >= 1 && length <= Options::LARGEST_SIZE;
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
    std::string particles;
    std::string percent;
    std::string particleSize;
    std::string range;
    std::string colors;
    std::string frame;
    std::string gpuMemory;
    EffectWords effect;
};

/// \param value a Value, or an optional one.
template <class Value, class Place>
std::string readMode(char const* const option, std::string const& word,
                     std::map<std::string, Value> const& modes, Place& value) {
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
               std::to_string(Options::LARGEST_SIZE);
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

std::string readRange(std::string const& word, ParticleOptions& options) {
    if (word.empty()) {
        return {};
    }
    std::vector<std::string_view> const ends = split(word, ',');
    std::optional<double> const low = toReal(ends.front());
    std::optional<double> const high = toReal(ends.back());
    if (ends.size() != 2 || !low || !high || !(*low < *high)) {
        return "--range: '" + word + "' is not MIN,MAX, two numbers of which the second is the larger one";
    }
    options.range = ValueRange{*low, *high};
    return {};
}

std::string readColors(std::string const& word, ParticleOptions& options) {
    if (word.empty()) {
        return {};
    }
    std::vector<std::string_view> const words = split(word, ',');
    Color4<float>* const colors[] = {&options.colors.low, &options.colors.high, &options.colors.above};
    bool isRead = words.size() == 2 || words.size() == 3;
    for (std::size_t i = 0; isRead && i < words.size(); ++i) {
        std::optional<Color4<float>> const color = toColor(words[i]);
        isRead = color.has_value();
        *colors[i] = color.value_or(*colors[i]);
    }
    return isRead ? std::string()
                  : "--colors: '" + word + "' is not LOW,HIGH or LOW,HIGH,ABOVE, each as RRGGBB";
}

std::string readParticles(Words const& words, Options& options) {
    ParticleOptions& particles = options.particles;
    constexpr unsigned int mostMegabytes = 1 << 20;
    if (!words.percent.empty()) {
        std::optional<double> const percent = toReal(words.percent);
        if (!percent || *percent < 0 || *percent > 100) {
            return "--percent: '" + words.percent + "' is not a number from 0 to 100";
        }
        particles.percent = static_cast<float>(*percent);
    }
    if (!words.particleSize.empty()) {
        particles.size = toReal(words.particleSize);
        if (!particles.size || !(*particles.size > 0)) {
            return "--size-of-particles: '" + words.particleSize + "' is not a number above 0";
        }
    }
    if (!words.frame.empty()) {
        std::optional<int> const frame = toNumber(words.frame);
        if (!frame) {
            return "--frame: '" + words.frame + "' is not the number of a frame, counted from 0";
        }
        particles.frame = static_cast<std::size_t>(*frame);
    }
    if (!words.gpuMemory.empty()) {
        std::optional<int> const megabytes = toNumber(words.gpuMemory);
        if (!megabytes || static_cast<unsigned int>(*megabytes) > mostMegabytes) {
            return "--gpu-memory: '" + words.gpuMemory + "' is not a number of megabytes from 0 to " +
                   std::to_string(mostMegabytes);
        }
        options.gpuMemory = static_cast<unsigned int>(*megabytes);
    }
    std::string const fault = readRange(words.range, particles);
    return fault.empty() ? readColors(words.colors, particles) : fault;
}

/// What cannot be drawn together with an effect, which takes the place of every other way to show a surface.
std::string effectConflict(Options const& options) {
    struct Row {
        char const* option;
        bool isGiven;
    };
    for (Row const& row :
         {Row{"--shading", options.shading == Shading::BOX || options.shading == Shading::WIREFRAME},
          Row{"--edges", options.edges}, Row{"--edges-blend", options.edgesBlend},
          Row{"--normals", options.normals != Normals::NONE}, Row{"--connectivity", options.connectivity},
          Row{"--texture", !options.texture.empty()}, Row{"--import-preview", options.importPreview}}) {
        if (options.effect.isOn() && row.isGiven) {
            return std::string(row.option) + ": cannot be drawn together with --effect" +
                   (row.option == std::string("--shading") ? ", other than faceted and smooth" : "");
        }
    }
    return {};
}

/// The first thing wrong with the words, or an empty text.
std::string read(Words const& words, Options& options) {
    std::string const faults[] = {
        readMode("--shading", words.shading, shadings, options.shading),
        readMode("--normals", words.normals, normalKinds, options.normals),
        readMode("--gizmo", words.gizmo, gizmos, options.gizmo),
        readMode("--view", words.view, views, options.view),
        readSize(words.size, options),
        readPick(words.pick, options),
        readLimits(words, options),
        readMode("--particles", words.particles, particleModes, options.particles.mode),
        readParticles(words, options),
        words.effect.read(options.files.size(), options.effect).value_or("")};
    for (std::string const& fault : faults) {
        if (!fault.empty()) {
            return fault;
        }
    }
    if (options.edges && options.edgesBlend) {
        return "--edges and --edges-blend: only one of them can be drawn";
    }
    std::string conflict = effectConflict(options);
    if (!conflict.empty() || words.effect.asksForHelp()) {
        return conflict;
    }
    if (options.files.empty() && options.effect.effect != Effect::OCEAN) {
        return "FILE is required: a mesh or particle file";
    }
    if (options.out.empty() && !options.pick && !options.info) {
        return "--out is required: the picture's file";
    }
    return {};
}

CommandLine usageError(std::string const& message) {
    CommandLine line;
    line.error = Fault{"", "vl_viewport: " + message + "; see vl_viewport --help"}.line();
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
    Options options;
    Words words;
    CLI::App app{"Draws meshes and particles into a picture.", "vl_viewport"};
    app.get_formatter()->column_width(34);
    // A word given and empty (--size "") is a mistake, not the absence of the option.
    CLI::Validator const given(
        [](std::string& word) { return word.empty() ? std::string("may not be empty") : std::string(); }, "");

    app.add_option("FILE", options.files,
                   "Mesh files: OBJ, PLY, STL, OFF, glTF, FBX, COLLADA, 3DS, ...; and particle files:\n"
                   "LAMMPS text dumps, XYZ and extended XYZ, CSV with a line of names, PLY without\n"
                   "faces; also compressed by gzip")
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
    char const* const ofParticles = "Particles";
    app.add_option("--particles", words.particles,
                   "points, spheres or arrows along the velocities (spheres; points for more than\n"
                   "500000 particles)")
        ->check(given)
        ->type_name("MODE")
        ->group(ofParticles);
    app.add_option("--channel", options.particles.channel,
                   "What colors show: a column by its name, or vx, vy, vz or speed of the velocities\n"
                   "(speed, or else the first column that is not an id; arrows always speed)")
        ->check(given)
        ->type_name("NAME")
        ->group(ofParticles);
    app.add_option("--range", words.range, "The values at both ends of the colors (those of the data)")
        ->check(given)
        ->type_name("MIN,MAX")
        ->group(ofParticles);
    app.add_option("--colors", words.colors,
                   "LOW,HIGH or LOW,HIGH,ABOVE: the colors at both ends, which blend between them and\n"
                   "go on below, and the one of all values above; each RRGGBB in hexadecimal digits\n"
                   "(8f1d9e,ffdd4a,ffffff)")
        ->check(given)
        ->type_name("LIST")
        ->group(ofParticles);
    app.add_option("--percent", words.percent, "Draw this part of the particles, evenly chosen (100)")
        ->check(given)
        ->type_name("P")
        ->group(ofParticles);
    app.add_option("--size-of-particles", words.particleSize,
                   "Points: pixels. Spheres: the diameter, in units of the file. Arrows: their length\n"
                   "for a velocity of 1, in units of the file (chosen to suit)")
        ->check(given)
        ->type_name("S")
        ->group(ofParticles);
    app.add_option("--frame", words.frame,
                   "Which frame of a file with several, counted from 0 (the last one)")
        ->check(given)
        ->type_name("N")
        ->group(ofParticles);
    app.add_option("--gpu-memory", words.gpuMemory,
                   "Video memory that is free. Particles that do not fit are drawn without a buffer\n"
                   "(what the driver says; else, a part of the main memory)")
        ->check(given)
        ->type_name("MiB")
        ->group(ofParticles);
    words.effect.addTo(app);
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
    if (words.effect.asksForHelp()) {
        return show(describeParameters(options.effect.effect));
    }
    CommandLine line;
    line.options = options;
    return line;
}

}  // namespace vellum::viewport
