#include "viewport/program/OptionWords.h"

#include "viewport/program/add_word.h"
#include "viewport/text/numbers.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

namespace vellum::viewport {

namespace {

template <class Value>
using Modes = std::map<std::string, Value>;

Modes<Shading> const SHADINGS{{"box", Shading::BOX},
                              {"wireframe", Shading::WIREFRAME},
                              {"faceted", Shading::FACETED},
                              {"smooth", Shading::SMOOTH}};
Modes<Normals> const NORMAL_KINDS{{"vertex", Normals::VERTEX}, {"face", Normals::FACE}};
Modes<Gizmo> const GIZMOS{{"move", Gizmo::MOVE}, {"rotate", Gizmo::ROTATE}, {"scale", Gizmo::SCALE}};
Modes<ParticleMode> const PARTICLE_MODES{
    {"points", ParticleMode::POINTS}, {"spheres", ParticleMode::SPHERES}, {"arrows", ParticleMode::ARROWS}};
Modes<toolkit::ViewKind> const VIEWS{{"perspective", toolkit::ViewKind::PERSPECTIVE},
                                     {"front", toolkit::ViewKind::FRONT},
                                     {"back", toolkit::ViewKind::BACK},
                                     {"top", toolkit::ViewKind::TOP},
                                     {"bottom", toolkit::ViewKind::BOTTOM},
                                     {"left", toolkit::ViewKind::LEFT},
                                     {"right", toolkit::ViewKind::RIGHT}};

constexpr int MOST_MEGABYTES = 1 << 20;

Fault usageFault(std::string const& message) {
    return {"", message};
}

// == Words as values ==

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

/// Two numbers from 0 on with a separator between them.
std::optional<std::pair<int, int>> toPair(std::string_view text, char separator) {
    std::size_t const middle = text.find(separator);
    if (middle == std::string_view::npos) {
        return std::nullopt;
    }
    std::optional<int> const first = toInteger(text.substr(0, middle));
    std::optional<int> const second = toInteger(text.substr(middle + 1));
    return first && second ? std::optional<std::pair<int, int>>({*first, *second}) : std::nullopt;
}

/// \param value a Value, or an optional one; unchanged where the word is empty.
template <class Value, class Place>
std::optional<Fault> readMode(char const* const option, std::string const& word, Modes<Value> const& modes,
                              Place& value) {
    if (word.empty()) {
        return std::nullopt;
    }
    auto const found = modes.find(word);
    if (found != modes.end()) {
        value = found->second;
        return std::nullopt;
    }
    std::string known;
    for (auto const& mode : modes) {
        known += (known.empty() ? "" : ", ") + mode.first;
    }
    return usageFault(std::string(option) + ": unknown mode '" + word + "' (known: " + known + ")");
}

// == Conflicts ==

/// The fault of an option that cannot be drawn together with an effect, which replaces every other way to show a
/// surface.
std::optional<Fault> effectConflict(Options const& options) {
    if (!options.effect) {
        return std::nullopt;
    }
    struct Row {
        char const* option;
        bool isGiven;
    };
    MeshStyle const& mesh = options.mesh;
    for (Row const& row :
         {Row{"--shading", !mesh.isFilled()}, Row{"--edges", mesh.edges},
          Row{"--edges-blend", mesh.edgesBlend}, Row{"--normals", mesh.normals != Normals::NONE},
          Row{"--connectivity", mesh.connectivity}, Row{"--texture", !options.texture.empty()},
          Row{"--import-preview", mesh.importPreview}}) {
        if (row.isGiven) {
            return usageFault(
                std::string(row.option) + ": cannot be drawn together with --effect" +
                (row.option == std::string("--shading") ? ", other than faceted and smooth" : ""));
        }
    }
    return std::nullopt;
}

/// The fault of a command line that lacks something.
std::optional<Fault> firstMissing(Options const& options) {
    bool const hasOwnScene = options.effect && std::holds_alternative<OceanEffect>(options.effect->values);
    if (options.files.empty() && !hasOwnScene) {
        return usageFault("FILE is required: a mesh or particle file");
    }
    if (options.out.empty() && !options.pick && !options.info) {
        return usageFault("--out is required: the picture's file");
    }
    return std::nullopt;
}

}  // namespace

void OptionWords::addTo(CLI::App& app, Options& options) {
    _addPicture(app, options);
    _addMeshes(app, options);
    _addView(app, options);
    _addLimits(app);
    _addParticles(app, options);
    effect.addTo(app);
}

std::optional<Fault> OptionWords::read(Options& options) const {
    if (std::optional<Fault> fault = _readValues(options)) {
        return fault;
    }
    if (options.mesh.edges && options.mesh.edgesBlend) {
        return usageFault("--edges and --edges-blend: only one of them can be drawn");
    }
    std::optional<Fault> conflict = effectConflict(options);
    // The list of an effect's parameters needs no files.
    return conflict || effect.asksForHelp() ? conflict : firstMissing(options);
}

// == Groups of options, in the order of the help ==

void OptionWords::_addPicture(CLI::App& app, Options& options) {
    addWord(app, "FILE", options.files,
            "Mesh files: OBJ, PLY, STL, OFF, glTF, FBX, COLLADA, 3DS, ...; and particle files:\n"
            "LAMMPS text dumps, XYZ and extended XYZ, CSV with a line of names, PLY without\n"
            "faces; also compressed by gzip",
            "");
    addWord(app, "--out", options.out, "Write the picture to this PNG file", "FILE");
    addWord(app, "--size", size, "Size of the picture in pixels, each side 1 to 16384 (1280x720)", "WxH");
}

void OptionWords::_addMeshes(CLI::App& app, Options& options) {
    MeshStyle& mesh = options.mesh;
    addWord(app, "--shading", shading, "box, wireframe, faceted or smooth (smooth)", "MODE");
    app.add_flag("--edges", mesh.edges, "Draw borders and hard edges, over a darker surface");
    app.add_flag("--edges-blend", mesh.edgesBlend,
                 "Draw borders and hard edges, those behind shining through the surface");
    addWord(app, "--normals", normals, "Draw the normals: vertex or face", "KIND");
    app.add_flag("--connectivity", mesh.connectivity, "Mark shared edges in white and borders in amber");
    addWord(app, "--texture", options.texture,
            "Put this picture (PNG, JPEG, EXR, HDR) on the models, in place of their own textures", "FILE");
    app.add_flag("--wireframe-back", mesh.wireframeBack, "Outline the triangles that are seen from behind");
    app.add_flag("--import-preview", mesh.importPreview,
                 "Show what the import gave: the surface in red, the normals of the corners in white");
    app.add_flag("--immediate", mesh.immediate, "Draw without buffer objects");
}

void OptionWords::_addView(CLI::App& app, Options& options) {
    addWord(app, "--gizmo", gizmo, "Draw handles over the model: move, rotate or scale", "MODE");
    addWord(app, "--view", view, "perspective, front, back, top, bottom, left or right (perspective)",
            "VIEW");
    addWord(app, "--pick", pick,
            "Print what is at this pixel, counted from the upper left corner: a line with its\n"
            "picking name and what it belongs to, or 'nothing'",
            "X,Y");
    app.add_flag("--info", options.info, "Print what the files hold and what the OpenGL driver offers");
    app.add_flag("--quiet", options.isQuiet, "Say nothing but faults");
}

void OptionWords::_addLimits(CLI::App& app) {
    addWord(app, "--import-timeout", timeout, "Give up on a file after this time (20)", "SECONDS");
    addWord(app, "--import-memory", memory, "Memory that the import of a file may use (4096)", "MB");
}

void OptionWords::_addParticles(CLI::App& app, Options& options) {
    auto const add = [&app](std::string const& name, std::string& word, std::string const& meaning,
                            std::string const& type) {
        addWord(app, name, word, meaning, type)->group("Particles");
    };
    add("--particles", particles,
        "points, spheres or arrows along the velocities (spheres; points for more than\n"
        "500000 particles)",
        "MODE");
    add("--channel", options.particles.channel,
        "What colors show: a column by its name, or vx, vy, vz or speed of the velocities\n"
        "(speed, or else the first column that is not an id; arrows always speed)",
        "NAME");
    add("--range", range, "The values at both ends of the colors (those of the data)", "MIN,MAX");
    add("--colors", colors,
        "LOW,HIGH or LOW,HIGH,ABOVE: the colors at both ends, which blend between them and\n"
        "go on below, and the one of all values above; each RRGGBB in hexadecimal digits\n"
        "(8f1d9e,ffdd4a,ffffff)",
        "LIST");
    add("--percent", percent, "Draw this part of the particles, evenly chosen (100)", "P");
    add("--size-of-particles", particleSize,
        "Points: pixels. Spheres: the diameter, in units of the file. Arrows: their length\n"
        "for a velocity of 1, in units of the file (chosen to suit)",
        "S");
    add("--frame", frame, "Which frame of a file with several, counted from 0 (the last one)", "N");
    add("--gpu-memory", gpuMemory,
        "Video memory that is free. Particles that do not fit are drawn without a buffer\n"
        "(what the driver says; else, a part of the main memory)",
        "MiB");
}

// == Values ==

std::optional<Fault> OptionWords::_readValues(Options& options) const {
    std::optional<Fault> const faults[] = {
        readMode("--shading", shading, SHADINGS, options.mesh.shading),
        readMode("--normals", normals, NORMAL_KINDS, options.mesh.normals),
        readMode("--gizmo", gizmo, GIZMOS, options.gizmo),
        readMode("--view", view, VIEWS, options.camera.view),
        _readSize(options.size),
        _readPick(options),
        _readLimits(options.limits),
        readMode("--particles", particles, PARTICLE_MODES, options.particles.mode),
        _readParticles(options.particles),
        _readGpuMemory(options),
        _readRange(options.particles),
        _readColors(options.particles),
        effect.read(options.files.size(), options.effect)};
    for (std::optional<Fault> const& fault : faults) {
        if (fault) {
            return fault;
        }
    }
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readSize(PictureSize& pictureSize) const {
    if (size.empty()) {
        return std::nullopt;
    }
    auto const isSide = [](int length) { return length >= 1 && length <= PictureSize::LARGEST; };
    std::optional<std::pair<int, int>> const sides = toPair(size, 'x');
    if (!sides || !isSide(sides->first) || !isSide(sides->second)) {
        return usageFault("--size: '" + size + "' is not WIDTHxHEIGHT with both from 1 to " +
                          std::to_string(PictureSize::LARGEST));
    }
    pictureSize = {sides->first, sides->second};
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readPick(Options& options) const {
    if (pick.empty()) {
        return std::nullopt;
    }
    std::optional<std::pair<int, int>> const pixel = toPair(pick, ',');
    if (!pixel) {
        return usageFault("--pick: '" + pick + "' is not X,Y, two numbers of pixels");
    }
    if (pixel->first >= options.size.width || pixel->second >= options.size.height) {
        return usageFault("--pick: '" + pick + "' is outside the picture of " +
                          std::to_string(options.size.width) + "x" + std::to_string(options.size.height) +
                          " pixels");
    }
    options.pick = Pixel{pixel->first, pixel->second};
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readLimits(ImportLimits& limits) const {
    constexpr int LONGEST_SECONDS = 86'400;
    if (!timeout.empty()) {
        std::optional<double> const seconds = toReal(timeout);
        if (!seconds || *seconds < 0.001 || *seconds > LONGEST_SECONDS) {
            return usageFault("--import-timeout: '" + timeout +
                              "' is not a number of seconds from 0.001 to " +
                              std::to_string(LONGEST_SECONDS));
        }
        limits.deadline = std::chrono::milliseconds(std::llround(*seconds * 1000));
    }
    if (!memory.empty()) {
        std::optional<int> const megabytes = toInteger(memory);
        if (!megabytes || *megabytes < 1 || *megabytes > MOST_MEGABYTES) {
            return usageFault("--import-memory: '" + memory + "' is not a number of megabytes from 1 to " +
                              std::to_string(MOST_MEGABYTES));
        }
        limits.memoryBytes = static_cast<std::uint64_t>(*megabytes) << 20;
    }
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readParticles(ParticleOptions& options) const {
    if (!percent.empty()) {
        std::optional<double> const part = toReal(percent);
        if (!part || *part < 0 || *part > 100) {
            return usageFault("--percent: '" + percent + "' is not a number from 0 to 100");
        }
        options.percent = static_cast<float>(*part);
    }
    if (!particleSize.empty()) {
        options.size = toReal(particleSize);
        if (!options.size || !(*options.size > 0)) {
            return usageFault("--size-of-particles: '" + particleSize + "' is not a number above 0");
        }
    }
    if (!frame.empty()) {
        std::optional<int> const index = toInteger(frame);
        if (!index) {
            return usageFault("--frame: '" + frame + "' is not the number of a frame, counted from 0");
        }
        options.frame = static_cast<std::size_t>(*index);
    }
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readGpuMemory(Options& options) const {
    if (gpuMemory.empty()) {
        return std::nullopt;
    }
    std::optional<int> const megabytes = toInteger(gpuMemory);
    if (!megabytes || *megabytes > MOST_MEGABYTES) {
        return usageFault("--gpu-memory: '" + gpuMemory + "' is not a number of megabytes from 0 to " +
                          std::to_string(MOST_MEGABYTES));
    }
    options.gpuMemory = static_cast<unsigned int>(*megabytes);
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readRange(ParticleOptions& options) const {
    if (range.empty()) {
        return std::nullopt;
    }
    std::vector<std::string_view> const ends = split(range, ',');
    std::optional<double> const low = toReal(ends.front());
    std::optional<double> const high = toReal(ends.back());
    if (ends.size() != 2 || !low || !high || !(*low < *high)) {
        return usageFault("--range: '" + range +
                          "' is not MIN,MAX, two numbers of which the second is the larger one");
    }
    options.range = ValueRange{*low, *high};
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readColors(ParticleOptions& options) const {
    if (colors.empty()) {
        return std::nullopt;
    }
    std::vector<std::string_view> const words = split(colors, ',');
    Color4<float>* const places[] = {&options.colors.low, &options.colors.high, &options.colors.above};
    bool isRead = words.size() == 2 || words.size() == 3;
    for (std::size_t i = 0; isRead && i < words.size(); ++i) {
        std::optional<Color4<float>> const color = toColor(words[i]);
        isRead = color.has_value();
        *places[i] = color.value_or(*places[i]);
    }
    if (!isRead) {
        return usageFault("--colors: '" + colors + "' is not LOW,HIGH or LOW,HIGH,ABOVE, each as RRGGBB");
    }
    return std::nullopt;
}

}  // namespace vellum::viewport
