#include "viewport/program/to_words.h"

#include "viewport/drawing/effects/EffectParameter.h"
#include "viewport/files/common/InputFile.h"
#include "viewport/program/OptionTable.h"
#include "viewport/program/option_modes.h"
#include "viewport/program/transform_words.h"
#include "viewport/text/shortest_number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <system_error>

namespace vellum::viewport {

namespace {

// == Values as words ==

std::string exactPart(float number) {
    char text[32];
    std::to_chars_result const result = std::to_chars(text, text + sizeof text, number);
    return {text, result.ptr};
}

std::string wordOf(Color4<float> const& color) {
    auto const byte = [](float part) {
        return static_cast<unsigned int>(std::lround(std::clamp(part, 0.0F, 1.0F) * 255));
    };
    char text[8];
    std::snprintf(text, sizeof text, "%02x%02x%02x", byte(color.r), byte(color.g), byte(color.b));
    return text;
}

std::string wordOf(double number) {
    return exactNumber(number);
}

std::string wordOf(Vector3<double> const& v) {
    return wordOf(v.x) + "," + wordOf(v.y) + "," + wordOf(v.z);
}

std::string wordOf(Box3<double> const& box) {
    return wordOf(box.min.x) + "," + wordOf(box.max.x) + "," + wordOf(box.min.y) + "," + wordOf(box.max.y) +
           "," + wordOf(box.min.z) + "," + wordOf(box.max.z);
}

std::string wordOf(ValueRange const& range) {
    return wordOf(range.low) + "," + wordOf(range.high);
}

std::string wordOf(LightSpec const& light) {
    return wordOf(light.azimuth) + "," + wordOf(light.elevation);
}

std::string wordOf(std::size_t number) {
    return std::to_string(number);
}

std::string wordOf(int number) {
    return std::to_string(number);
}

std::string wordOf(unsigned int number) {
    return std::to_string(number);
}

/// Collects the words of what is not as it is by default.
class Collection {
public:
    void add(std::string const& option, std::string const& word) {
        if (!word.empty()) {
            words.push_back({option, word});
        }
    }

    /// \param isOther than the default
    void addIf(bool isOther, std::string const& option, std::string const& word) {
        add(option, isOther ? word : std::string());
    }

    void addFlag(bool isSet, std::string const& option) { addIf(isSet, option, "true"); }

    template <class T>
    void addGiven(std::string const& option, std::optional<T> const& value) {
        if (value) {
            words.push_back({option, wordOf(*value)});
        }
    }

    std::vector<OptionWord> words;
};

// == Groups of options, in the order of the help ==

void addFiles(Options const& options, Collection& all) {
    ImportLimits const standard;
    ImportLimits const& limits = options.limits;
    all.add("--format", options.format);
    all.addFlag(options.isSeries, "--series");
    all.add("--up", options.up ? wordOf(*options.up) : std::string());
    all.addGiven("--clip", options.particles.clip);
    for (auto const& [object, transform] : options.transforms) {
        all.add("--transform", transformWord(object, transform));
    }
    all.addIf(limits.deadline != standard.deadline, "--import-timeout",
              wordOf(static_cast<double>(limits.deadline.count()) / 1000));
    all.addIf(limits.memoryBytes != standard.memoryBytes, "--import-memory",
              std::to_string(limits.memoryBytes >> 20));
}

void addCamera(CameraSpec const& camera, Collection& all) {
    CameraSpec const standard;
    all.addIf(camera.view != standard.view, "--view", wordOfMode(VIEWS, camera.view));
    // Views along an axis have no more than a focus and a zoom.
    if (!camera.isAlongAxis()) {
        bool const isParallel = camera.projection == Projection::PARALLEL;
        all.addIf(isParallel, "--projection", wordOfMode(PROJECTIONS, camera.projection));
        all.addGiven("--camera-position", camera.position);
        all.addGiven("--camera-up", camera.up);
        if (!camera.position) {
            all.addGiven("--azimuth", camera.azimuth);
            all.addGiven("--elevation", camera.elevation);
        }
        if (isParallel) {
            all.addGiven("--camera-height", camera.height);
        } else {
            all.addGiven("--fov", camera.fieldOfView);
        }
    }
    all.addGiven("--camera-focus", camera.focus);
    all.addIf(camera.zoom != standard.zoom, "--zoom", wordOf(camera.zoom));
}

void addPicture(PictureOptions const& picture, Collection& all) {
    PictureOptions const standard;
    Background const& background = picture.background;
    std::string const colors = wordOf(background.top) + "," + wordOf(background.bottom);
    std::string const standardColors =
        wordOf(standard.background.top) + "," + wordOf(standard.background.bottom);
    all.addIf(!(picture.size == standard.size), "--size",
              wordOf(picture.size.width) + "x" + wordOf(picture.size.height));
    all.addGiven("--quality", picture.quality);
    addCamera(picture.camera, all);
    all.addIf(background.isTransparent || colors != standardColors, "--background",
              background.isTransparent ? "transparent" : colors);
    all.addGiven("--light", picture.light);
    all.add("--gizmo", wordOfMode(GIZMOS, picture.gizmo));
    all.addFlag(!picture.explanations.hasGrid, "--no-grid");
    all.addFlag(!picture.explanations.hasAxes, "--no-axes");
    all.addFlag(!picture.explanations.hasBar, "--no-bar");
    all.addFlag(!picture.explanations.hasBox, "--no-box");
    all.addFlag(picture.explanations.hasSizes, "--sizes");
}

void addMeshes(Options const& options, Collection& all) {
    MeshStyle const standard;
    MeshStyle const& mesh = options.mesh;
    all.addIf(mesh.shading != standard.shading, "--shading", wordOfMode(SHADINGS, mesh.shading));
    all.addGiven("--mesh-color", mesh.color);
    all.addIf(mesh.opacity != standard.opacity, "--opacity", exactPart(mesh.opacity));
    all.addIf(mesh.edges || mesh.allEdges, "--edges", mesh.allEdges ? "all" : "true");
    all.addFlag(mesh.edgesBlend, "--edges-blend");
    all.addGiven("--line-width", mesh.lineWidth);
    all.add("--normals", wordOfMode(NORMAL_KINDS, mesh.normals));
    all.addFlag(mesh.connectivity, "--connectivity");
    all.add("--texture", options.texture);
    all.addFlag(mesh.wireframeBack, "--wireframe-back");
    all.addFlag(mesh.importPreview, "--import-preview");
    all.addFlag(mesh.immediate, "--immediate");
}

void addParticles(Options const& options, Collection& all) {
    ParticleOptions const standard;
    ParticleOptions const& shown = options.particles;
    auto const colorsOf = [](RampColors const& colors) {
        return wordOf(colors.low) + "," + wordOf(colors.high) + "," + wordOf(colors.above);
    };
    auto const& [a, b, c] = std::array{shown.copies.e0, shown.copies.e1, shown.copies.e2};
    all.add("--particles", shown.mode ? wordOfMode(PARTICLE_MODES, *shown.mode) : std::string());
    all.add("--channel", shown.channel);
    all.addGiven("--range", shown.range);
    all.addFlag(shown.isLogarithmic, "--log");
    all.addIf(colorsOf(shown.colors) != colorsOf(standard.colors), "--colors", colorsOf(shown.colors));
    all.add("--colormap", shown.colorMap);
    all.addIf(shown.percent != standard.percent, "--percent", exactPart(shown.percent));
    all.add("--select", shown.selection);
    all.addGiven("--size-of-particles", shown.size);
    all.addFlag(shown.isWrapped, "--wrap");
    all.addIf(a != 1 || b != 1 || c != 1, "--replicate", wordOf(a) + "," + wordOf(b) + "," + wordOf(c));
    // Of both the command line takes one; a frame is the more exact one.
    all.addGiven("--frame", shown.frame);
    if (!shown.frame) {
        all.addGiven("--time", options.time);
    }
    all.addGiven("--gpu-memory", options.gpuMemory);
}

void addEffect(EffectSpec const& effect, Collection& all) {
    std::string const name = nameOf(effect.values);
    EffectValues const standard = *effectNamed(name);
    all.add("--effect", name);
    for (EffectParameter const& parameter : parametersOf(effect.values)) {
        std::string const text = parameter.textOf(effect.values);
        all.addIf(text != parameter.textOf(standard) && !text.empty(), "--effect-param",
                  parameter.name + "=" + text);
    }
    if (effect.onlyModel) {
        all.add("--effect-model", wordOf(*effect.onlyModel + 1));
    }
    if (auto const* const glass = std::get_if<GlassEffect>(&effect.values)) {
        all.add("--environment", glass->environment);
    }
    if (auto const* const custom = std::get_if<CustomEffect>(&effect.values)) {
        all.add("--shader-vertex", custom->vertexShader);
        all.add("--shader-fragment", custom->fragmentShader);
        all.add("--shader-geometry", custom->geometryShader);
        all.addFlag(custom->replacesStages, "--shader-fallback");
    }
}

}  // namespace

std::vector<OptionWord> toWords(Options const& options) {
    Collection all;
    addFiles(options, all);
    addPicture(options.pictures.front(), all);
    addMeshes(options, all);
    addParticles(options, all);
    if (options.effect) {
        addEffect(*options.effect, all);
    }
    return all.words;
}

bool takesFile(std::string const& option) {
    static constexpr char const* FILES[] = {"--texture", "--environment", "--shader-vertex",
                                            "--shader-fragment", "--shader-geometry"};
    return std::find(std::begin(FILES), std::end(FILES), option) != std::end(FILES);
}

std::string withPath(OptionWord const& option, std::string const& effect,
                     std::function<std::string(std::string const&)> const& change) {
    if (takesFile(option.option)) {
        return change(option.word);
    }
    std::optional<EffectValues> const values =
        option.option == "--effect-param" ? effectNamed(effect) : std::nullopt;
    std::size_t const middle = option.word.find('=');
    if (!values || middle == std::string::npos || middle + 1 == option.word.size()) {
        return option.word;
    }
    std::string const name = option.word.substr(0, middle);
    for (EffectParameter const& parameter : parametersOf(*values)) {
        if (parameter.name == name && parameter.isFile()) {
            return name + "=" + change(option.word.substr(middle + 1));
        }
    }
    return option.word;
}

// == As a line for a shell ==

std::string quotedForShell(std::string const& word) {
    constexpr char const* PLAIN = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=,./:%@";
    if (!word.empty() && word.find_first_not_of(PLAIN) == std::string::npos) {
        return word;
    }
    std::string quoted = "'";
    for (char const letter : word) {
        quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    }
    return quoted + "'";
}

std::string commandLineOf(Options const& options, PictureSize const& size, std::string const& out) {
    auto const whole = [](std::string const& path) {
        std::error_code lack;
        std::filesystem::path const absolute = std::filesystem::absolute(path, lack);
        return lack || InputFile::isStandardInput(path) ? path : absolute.lexically_normal().string();
    };
    Options shown = options;
    shown.pictures.resize(1);
    shown.pictures.front().size = size;
    shown.pictures.front().gizmo = Gizmo::NONE;
    std::string line = "vl_viewport";
    for (std::string const& file : shown.files) {
        line += " " + quotedForShell(whole(file));
    }
    std::vector<OptionEntry> const known = optionTable();
    std::string const effect = shown.effect ? nameOf(shown.effect->values) : std::string();
    for (OptionWord option : toWords(shown)) {
        auto const entry = std::find_if(known.begin(), known.end(),
                                        [&](OptionEntry const& each) { return each.name == option.option; });
        bool const takesWord = entry == known.end() || (!entry->type.empty() && !entry->isWordOptional);
        option.word = withPath(option, effect, whole);
        line += " " + quotedForShell(option.argument(!takesWord && option.word == "true"));
    }
    return line + " " + quotedForShell("--out=" + whole(out));
}

}  // namespace vellum::viewport
