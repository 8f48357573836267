#include "viewport/program/OptionWords.h"

#include "toolkit/ColorMap.h"
#include "viewport/files/common/InputFile.h"
#include "viewport/files/images/output_file.h"
#include "viewport/program/add_word.h"
#include "viewport/program/option_choices.h"
#include "viewport/program/option_modes.h"
#include "viewport/program/transform_words.h"
#include "viewport/program/word_values.h"
#include "viewport/scene/ParticleSelection.h"
#include "viewport/text/numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace vellum::viewport {

namespace {

constexpr int MOST_MEGABYTES = 1 << 20;

// == Conflicts ==

/// The fault of an option that cannot be drawn together with an effect, which replaces every other way to
/// show a surface.
std::optional<Fault> effectConflict(Options const& options) {
    // In a sea things are drawn as ever.
    if (!options.effect || options.hasSurroundingSea()) {
        return std::nullopt;
    }
    struct Row {
        char const* option;
        bool isGiven;
    };
    MeshStyle const& mesh = options.mesh;
    for (Row const& row :
         {Row{"--shading", !mesh.isFilled()}, Row{"--edges", mesh.edges || mesh.allEdges},
          Row{"--edges-blend", mesh.edgesBlend}, Row{"--normals", mesh.normals != Normals::NONE},
          Row{"--connectivity", mesh.connectivity}, Row{"--texture", !options.texture.empty()},
          Row{"--import-preview", mesh.importPreview}, Row{"--mesh-color", mesh.color.has_value()},
          Row{"--opacity", mesh.opacity < 1}, Row{"--clip", options.particles.clip.has_value()}}) {
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
    // A window can be opened without files, which are dropped onto it.
    if (options.files.empty() && !hasOwnScene && !options.opensWindow()) {
        return usageFault("FILE is required: a mesh or particle file");
    }
    if (std::count_if(options.files.begin(), options.files.end(), InputFile::isStandardInput) > 1) {
        return usageFault("FILE: standard input can be read only once");
    }
    return std::nullopt;
}

/// The fault of pictures that would be lost in each other or in other output.
std::optional<Fault> outputConflict(Options const& options) {
    std::set<std::string> names;
    for (PictureOptions const& picture : options.pictures) {
        if (!picture.out.empty() && !names.insert(picture.out).second) {
            return usageFault("--out: " + picture.out + " is named twice");
        }
    }
    auto const usesOutput = [](PictureOptions const& picture) { return isStandardOutput(picture.out); };
    if (std::count_if(options.pictures.begin(), options.pictures.end(), usesOutput) == 0) {
        return std::nullopt;
    }
    bool const isPicking = options.isPicking();
    if (isPicking || options.info != InfoForm::NONE) {
        return usageFault(std::string(isPicking ? "--pick" : "--info") +
                          ": cannot be printed where the picture is written to standard output");
    }
    return std::count_if(options.pictures.begin(), options.pictures.end(), usesOutput) > 1
               ? std::optional<Fault>(usageFault("--out: only one picture can be written to standard output"))
               : std::nullopt;
}

}  // namespace

void OptionWords::addTo(CLI::App& app, Options& options) {
    _addFiles(app, options);
    pictures.addTo(app);
    _addMeshes(app, options);
    _addParticles(app, options);
    _addFilms(app);
    effect.addTo(app);
    _addRest(app, options);
}

std::optional<Fault> OptionWords::read(CLI::App const& app, PictureWords const& standard,
                                       Options& options) const {
    std::optional<Fault> fault = pictures.read(app, standard, options.pictures);
    fault = fault ? fault : _readValues(options);
    if (fault) {
        return fault;
    }
    if ((options.mesh.edges || options.mesh.allEdges) && options.mesh.edgesBlend) {
        return usageFault("--edges and --edges-blend: only one of them can be drawn");
    }
    if (!colors.empty() && !colorMap.empty()) {
        return usageFault("--colors and --colormap: only one of them can be used");
    }
    if (std::optional<Fault> conflict = effectConflict(options)) {
        return conflict;
    }
    // The list of an effect's parameters needs no files.
    if (effect.asksForHelp()) {
        return std::nullopt;
    }
    std::optional<Fault> missing = firstMissing(options);
    missing = missing ? missing : _readNames(options);
    return missing ? missing : outputConflict(options);
}

// == Groups of options, in the order of the help ==

void OptionWords::_addFiles(CLI::App& app, Options& options) {
    addWord(app, "FILE", options.files,
            "Mesh files: OBJ, PLY, STL, OFF, glTF, FBX, COLLADA, 3DS, ...; and particle files:\n"
            "LAMMPS dumps and data files, XYZ and extended XYZ, CSV with a line of names, LAS, PLY\n"
            "and OBJ without faces; also compressed by gzip, zstd or xz; '-' is standard input",
            "");
    auto const add = [&app](std::string const& name, std::string& word, std::string const& meaning,
                            std::string const& type) {
        return addWord(app, name, word, meaning, type)->group("Files");
    };
    add("--format", options.format,
        "Read all files as this format (what they look like). Particles: lammps-dump,\n"
        "lammps-dump-binary, lammps-data, xyz, csv, ply, las, obj-points; meshes: the extension\n"
        "without its dot",
        "NAME");
    app.add_flag("--series", options.isSeries,
                 "Particle files that are numbered in their names are the frames of one dump, of which\n"
                 "--frame or --time picks one, and not shown together; so are meshes, without --time")
        ->group("Files");
    add("--up", up, "Which axis of the files is vertical: x, y, z, -x, -y, -z or auto (auto)", "AXIS");
    add("--clip", clip, "Show only what is inside: xmin,xmax,ymin,ymax,zmin,zmax in units of the files",
        "BOX");
    addWord(app, "--transform", transforms,
            "Move an object, turn and scale it about its middle: OBJECT:tx,ty,tz, then :rx,ry,rz\n"
            "(degrees about the axes x, y, z of the files, in this order), then :sx,sy,sz; OBJECT is\n"
            "counted from 1, meshes before particles; may be repeated",
            "WORD")
        ->group("Files")
        ->allow_extra_args(false);
    add("--import-timeout", timeout, "Give up on a mesh file after this time (20)", "SECONDS");
    add("--import-memory", memory, "Memory that the import of a mesh file may use (4096)", "MB");
}

void OptionWords::_addMeshes(CLI::App& app, Options& options) {
    MeshStyle& mesh = options.mesh;
    auto const add = [&app](std::string const& name, std::string& word, std::string const& meaning,
                            std::string const& type) {
        return addWord(app, name, word, meaning, type)->group("Meshes");
    };
    auto const flag = [&app](std::string const& name, auto& value, std::string const& meaning) {
        app.add_flag(name, value, meaning)->group("Meshes");
    };
    add("--shading", shading, "box, wireframe, faceted or smooth (smooth)", "MODE");
    add("--mesh-color", meshColor, "Draw all meshes in this color, in place of their own", "RRGGBB");
    add("--opacity", opacity, "How opaque surfaces are, 0 to 1 (1)", "PART");
    flag("--edges", edges, "Draw borders and hard edges over a darker surface; --edges=all: all edges");
    flag("--edges-blend", mesh.edgesBlend,
         "Draw borders and hard edges, those behind shining through the surface");
    add("--line-width", lineWidth, "Of edges and outlines, pixels, 0.1 to 100 (chosen to suit)", "PIXELS");
    add("--normals", normals, "Draw the normals: vertex or face", "KIND");
    flag("--connectivity", mesh.connectivity, "Mark shared edges in white and borders in amber");
    add("--texture", options.texture,
        "Put this picture (PNG, JPEG, EXR, HDR, TIFF, WebP, TGA, BMP, GIF, DDS) on the models, in\n"
        "place of their own textures",
        "FILE");
    flag("--wireframe-back", mesh.wireframeBack, "Outline the triangles that are seen from behind");
    flag("--import-preview", mesh.importPreview,
         "Show what the import gave: the surface in red, the normals of the corners in white");
    flag("--immediate", mesh.immediate, "Draw without buffer objects");
}

void OptionWords::_addParticles(CLI::App& app, Options& options) {
    ParticleOptions& shown = options.particles;
    auto const add = [&app](std::string const& name, std::string& word, std::string const& meaning,
                            std::string const& type) {
        addWord(app, name, word, meaning, type)->group("Particles");
    };
    add("--particles", particles,
        "points, spheres, arrows along a vector (the velocities) or arrows3d with solid heads\n"
        "(spheres; points for more than 500000 particles)",
        "MODE");
    add("--channel", shown.channel,
        "What colors show: a column, a vector (its length), speed, x, y, z, type, element or a\n"
        "column of words; with arrows: the vector that they are along (the colors of the file,\n"
        "or else its elements, the speed, the first column that is not an id)",
        "NAME");
    add("--range", range,
        "The values at both ends of the colors (those of the data). Of a film: first, the range\n"
        "of the first frame for all, or each, every frame has its own (first)",
        "MIN,MAX");
    app.add_flag("--log", shown.isLogarithmic, "Spread the colors over the logarithm of the values")
        ->group("Particles");
    add("--colors", colors,
        "LOW,HIGH or LOW,HIGH,ABOVE: the colors at both ends, which blend between them and\n"
        "go on below, and the one of all values above; each RRGGBB in hexadecimal digits\n"
        "(8f1d9e,ffdd4a,ffffff)",
        "LIST");
    add("--colormap", colorMap, "A map of colors: " + joined(toolkit::ColorMap::names()), "NAME");
    add("--percent", percent, "Draw this part of the particles, evenly chosen (100)", "P");
    add("--select", shown.selection, "Draw only particles that this holds for, such as 'type==2 and z>0'",
        "CONDITION");
    add("--size-of-particles", particleSize,
        "Points: pixels. Spheres: the diameter, in units of the file; replaces the sizes of the\n"
        "file and of elements. Arrows: their length for a vector of length 1, in units of the\n"
        "file (chosen to suit)",
        "S");
    app.add_flag("--wrap", shown.isWrapped, "Move particles into their periodic box")->group("Particles");
    add("--replicate", copies, "Draw this many copies of the box along each of its edges (1,1,1)", "A,B,C");
    add("--frame", frame, "Which frame of a file with several, counted from 0 (the last one)", "N");
    add("--time", time,
        "The frame whose time is nearest, in units of the file; of animated meshes the seconds\n"
        "from the start of the animation (the last frame; the pose at rest)",
        "T");
    add("--gpu-memory", gpuMemory,
        "Video memory that is free. Particles that do not fit are drawn without a buffer\n"
        "(what the driver says; else, a part of the main memory)",
        "MiB");
}

void OptionWords::_addFilms(CLI::App& app) {
    auto const add = [&app](std::string const& name, std::string& word, std::string const& meaning,
                            std::string const& type) {
        addWord(app, name, word, meaning, type)->group("Films (into --out names like f_%04d.png, from 0)");
    };
    add("--frames", frames,
        "A picture of each frame from A to B, counted from 0; both may be left out, and STEP may\n"
        "be negative: ':' all, '::10' every tenth, '::-1' backward. Camera and range of colors\n"
        "are those of the first picture",
        "A:B:STEP");
    add("--fps", framesPerSecond, "Frames per second of animated meshes, 0.001 to 1000 (25)", "N");
    add("--turntable", turntable,
        "Pictures of one full turn about the vertical axis; with --frames as many as these", "N");
}

void OptionWords::_addRest(CLI::App& app, Options& options) {
    app.add_flag("--info", info,
                 "Print what the files hold, the cameras, and what the OpenGL driver offers;\n"
                 "--info=json: as JSON")
        ->group("Program");
    addWord(app, "--window-picture", options.windowPicture,
            "Write a picture of the window with its panel as soon as it is\n"
            "complete, and close it (PNG)",
            "FILE")
        ->group("Program");
    app.add_flag("--quiet", options.isQuiet, "Say nothing but faults")->group("Program");
}

// == Values ==

std::optional<Fault> OptionWords::_readValues(Options& options) const {
    std::optional<Fault> const faults[] = {
        readMode("--shading", shading, SHADINGS, options.mesh.shading),
        readMode("--normals", normals, NORMAL_KINDS, options.mesh.normals),
        readMode("--up", up, UP_AXES, options.up),
        _readFormat(options),
        _readInfo(options),
        _readLimits(options.limits),
        _readMeshStyle(options.mesh),
        _readClip(options),
        _readTransforms(options),
        readMode("--particles", particles, PARTICLE_MODES, options.particles.mode),
        _readParticles(options.particles),
        _readFrame(options),
        _readCopies(options.particles),
        _readSelection(options.particles),
        _readGpuMemory(options),
        _readRange(options),
        _readFilm(options.film),
        _readColors(options.particles),
        effect.read(options.files.size(), options.effect)};
    for (std::optional<Fault> const& fault : faults) {
        if (fault) {
            return fault;
        }
    }
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readFormat(Options const& options) const {
    std::vector<std::string> const names = choicesOf("--format");
    bool const isKnown =
        options.format.empty() || std::find(names.begin(), names.end(), options.format) != names.end();
    return isKnown ? std::nullopt
                   : std::optional<Fault>(usageFault("--format: unknown format '" + options.format +
                                                     "' (known: " + joined(names) + ")"));
}

std::optional<Fault> OptionWords::_readInfo(Options& options) const {
    // A flag without a word.
    std::string const form = info == "true" ? "text" : info;
    return readMode("--info", form, INFO_FORMS, options.info);
}

std::optional<Fault> OptionWords::_readMeshStyle(MeshStyle& style) const {
    if (!edges.empty() && edges != "true" && edges != "hard" && edges != "all") {
        return usageFault("--edges: unknown mode '" + edges + "' (known: all, hard)");
    }
    style.allEdges = edges == "all";
    style.edges = !edges.empty() && !style.allEdges;
    if (!meshColor.empty()) {
        style.color = toColor(meshColor);
        if (!style.color) {
            return wordFault("--mesh-color", meshColor, "RRGGBB, six hexadecimal digits");
        }
    }
    if (!opacity.empty()) {
        std::optional<double> const part = toReal(opacity);
        if (!part || *part < 0 || *part > 1) {
            return wordFault("--opacity", opacity, "a number from 0 to 1");
        }
        style.opacity = static_cast<float>(*part);
    }
    if (!lineWidth.empty()) {
        style.lineWidth = toReal(lineWidth);
        if (!style.lineWidth || *style.lineWidth < 0.1 || *style.lineWidth > 100) {
            return wordFault("--line-width", lineWidth, "a number of pixels from 0.1 to 100");
        }
    }
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readClip(Options& options) const {
    if (clip.empty()) {
        return std::nullopt;
    }
    options.particles.clip = toBox(clip);
    return options.particles.clip
               ? std::nullopt
               : std::optional<Fault>(wordFault("--clip", clip,
                                                "xmin,xmax,ymin,ymax,zmin,zmax, six numbers of which each "
                                                "maximum is larger than its minimum"));
}

std::optional<Fault> OptionWords::_readTransforms(Options& options) const {
    for (std::string const& word : transforms) {
        if (std::optional<Fault> fault = readTransform(word, options.transforms)) {
            return fault;
        }
    }
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readFrame(Options& options) const {
    if (!frame.empty() && !time.empty()) {
        return usageFault("--frame and --time: only one of them can be shown");
    }
    if (!frame.empty()) {
        std::optional<int> const index = toInteger(frame);
        if (!index) {
            return wordFault("--frame", frame, "the number of a frame, counted from 0");
        }
        options.particles.frame = static_cast<std::size_t>(*index);
    }
    if (!time.empty()) {
        options.time = toReal(time);
        if (!options.time) {
            return wordFault("--time", time, "a number");
        }
    }
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readFilm(FilmOptions& film) const {
    constexpr int MOST_PICTURES = 1'000'000;
    if (!frames.empty()) {
        film.frames = FrameRange::parse(frames);
        if (!film.frames) {
            return wordFault("--frames", frames, "A:B:STEP, frames counted from 0 and a step from A to B");
        }
        if (!frame.empty() || !time.empty()) {
            return usageFault(std::string(frame.empty() ? "--time" : "--frame") +
                              ": cannot be used with --frames");
        }
    }
    if (!framesPerSecond.empty()) {
        std::optional<double> const speed = toReal(framesPerSecond);
        if (!speed || *speed < 0.001 || *speed > 1000) {
            return wordFault("--fps", framesPerSecond, "a number from 0.001 to 1000");
        }
        film.framesPerSecond = *speed;
    }
    if (!turntable.empty()) {
        std::optional<int> const count = toInteger(turntable);
        if (!count || *count < 1 || *count > MOST_PICTURES) {
            return wordFault("--turntable", turntable,
                             "a number of pictures from 1 to " + std::to_string(MOST_PICTURES));
        }
        film.turn = static_cast<std::size_t>(*count);
    }
    return std::nullopt;
}

/// The files of a film, and what goes together with it.
std::optional<Fault> OptionWords::_readNames(Options& options) const {
    FilmOptions const& film = options.film;
    if (!film.isAsked()) {
        return film.isRangeOfEach
                   ? std::optional<Fault>(usageFault("--range: each needs the frames of --frames"))
                   : std::nullopt;
    }
    std::string const option = film.frames ? "--frames" : "--turntable";
    if (options.files.empty()) {
        return usageFault(option + ": the sea without files does not move");
    }
    for (PictureOptions& picture : options.pictures) {
        if (picture.out.empty()) {
            return usageFault(option + ": needs --out with a name like f_%04d.png");
        }
        Result<NumberedName> const names = NumberedName::parse(picture.out);
        if (!names.isOk()) {
            return usageFault("--out: " + names.fault().message);
        }
        picture.names = names.value();
        if (picture.pick && options.info == InfoForm::JSON) {
            return usageFault("--pick: of a film it is not together with --info=json");
        }
        if (film.turn > 0 && picture.camera.isAlongAxis()) {
            return usageFault(
                "--turntable: a view along an axis cannot turn; see --projection parallel and --elevation");
        }
    }
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readCopies(ParticleOptions& options) const {
    if (copies.empty()) {
        return std::nullopt;
    }
    constexpr int MOST_COPIES = 1000;
    unsigned int numbers[3] = {1, 1, 1};
    std::vector<std::string_view> const words = split(copies, ',');
    bool isRead = words.size() == 3;
    for (std::size_t i = 0; isRead && i < 3; ++i) {
        std::optional<int> const number = toInteger(words[i]);
        isRead = number && *number >= 1 && *number <= MOST_COPIES;
        numbers[i] = isRead ? static_cast<unsigned int>(*number) : 1;
    }
    if (!isRead) {
        return wordFault("--replicate", copies,
                         "A,B,C, three whole numbers from 1 to " + std::to_string(MOST_COPIES));
    }
    options.copies = {numbers[0], numbers[1], numbers[2]};
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readSelection(ParticleOptions const& options) const {
    if (options.selection.empty()) {
        return std::nullopt;
    }
    // Which names there are is known once the files are read.
    Result<ParticleSelection> const selection = ParticleSelection::parse(options.selection);
    return selection.isOk() ? std::nullopt
                            : std::optional<Fault>(usageFault("--select: " + selection.fault().message));
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

std::optional<Fault> OptionWords::_readRange(Options& options) const {
    options.film.isRangeOfEach = range == "each";
    if (range.empty() || range == "each" || range == "first") {
        return std::nullopt;
    }
    std::vector<std::string_view> const ends = split(range, ',');
    std::optional<double> const low = toReal(ends.front());
    std::optional<double> const high = toReal(ends.back());
    if (ends.size() != 2 || !low || !high || !(*low < *high)) {
        return usageFault("--range: '" + range +
                          "' is not MIN,MAX, two numbers of which the second is the larger one; nor first "
                          "or each");
    }
    options.particles.range = ValueRange{*low, *high};
    return std::nullopt;
}

std::optional<Fault> OptionWords::_readColors(ParticleOptions& options) const {
    if (!colorMap.empty()) {
        std::vector<std::string> const names = toolkit::ColorMap::names();
        if (std::find(names.begin(), names.end(), colorMap) == names.end()) {
            return usageFault("--colormap: unknown map '" + colorMap + "' (known: " + joined(names) + ")");
        }
        options.colorMap = colorMap;
    }
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
