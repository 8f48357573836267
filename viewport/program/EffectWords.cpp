#include "viewport/program/EffectWords.h"

#include "viewport/drawing/effects/EffectParameter.h"
#include "viewport/program/add_word.h"
#include "viewport/program/word_values.h"
#include "viewport/text/numbers.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

namespace {

char const* const HELP = "help";

/// The line of a parameter's list, or the lines.
std::string lineOf(EffectParameter const& parameter) {
    constexpr std::size_t TEXT_COLUMN = 34;
    std::string line = "  " + parameter.name + "=" + parameter.kindWord();
    line.resize(std::max(TEXT_COLUMN, line.size() + 1), ' ');
    for (char letter : parameter.meaning) {
        line += letter;
        if (letter == '\n') {
            line.append(TEXT_COLUMN, ' ');
        }
    }
    return line + (parameter.standard.empty() ? "\n" : " (" + parameter.standard + ")\n");
}

// == What an effect requires beyond the ranges of its parameters ==

std::optional<Fault> firstMissing(DisplacementEffect const& effect) {
    if (effect.map.empty()) {
        return usageFault("--effect displacement: --effect-param map=FILE is required");
    }
    return std::nullopt;
}

std::optional<Fault> firstMissing(OceanEffect const& effect) {
    unsigned int const size = effect.sea.size;
    if ((size & (size - 1)) != 0) {
        return usageFault("--effect-param: size: '" + std::to_string(size) + "' is not a power of two");
    }
    return std::nullopt;
}

std::optional<Fault> firstMissing(GlassEffect const& /*effect*/) {
    return std::nullopt;
}

std::optional<Fault> firstMissing(ScatteringEffect const& /*effect*/) {
    return std::nullopt;
}

std::optional<Fault> firstMissing(CustomEffect const& effect) {
    if (effect.vertexShader.empty() && effect.fragmentShader.empty() && effect.geometryShader.empty()) {
        return usageFault(
            "--effect custom: --shader-vertex, --shader-fragment or --shader-geometry is required");
    }
    return std::nullopt;
}

}  // namespace

void EffectWords::addTo(CLI::App& app) {
    auto const add = [&app](std::string const& name, auto& word, std::string const& meaning,
                            std::string const& type) {
        return addWord(app, name, word, meaning, type)->group("Effects");
    };
    add("--effect", effect,
        "Draw the models through an effect: displacement, ocean, glass, sss (sub-surface\n"
        "scattering) or custom; ocean is an open sea, which the things of the files stand in",
        "NAME");
    add("--effect-param", assignments,
        "Set a parameter of the effect; may be repeated. --effect-param help lists them", "NAME=VALUE")
        ->allow_extra_args(false);
    add("--effect-model", model,
        "Only this mesh file has the effect, counted from 1; the others are behind it.\n"
        "With ocean it is water itself",
        "N");
    add("--environment", environment,
        "What glass mirrors: a picture (PNG, JPEG, EXR, HDR, TIFF, WebP, TGA, BMP, GIF, DDS)", "FILE");
    add("--shader-vertex", vertexShader, "The vertex stage of the custom effect, GLSL 1.20", "FILE");
    add("--shader-fragment", fragmentShader, "Its fragment stage", "FILE");
    add("--shader-geometry", geometryShader, "Its geometry stage", "FILE");
    app.add_flag("--shader-fallback", shaderFallback,
                 "Where the files do not compile or do not link, which is else an error, draw with\n"
                 "stages that pass everything on; lit, where no file can be used")
        ->group("Effects");
}

bool EffectWords::asksForHelp() const {
    return !effect.empty() && std::find(assignments.begin(), assignments.end(), HELP) != assignments.end();
}

std::string EffectWords::help() const {
    std::string text = "Parameters of --effect " + effect + ":\n";
    for (EffectParameter const& parameter : parametersOf(effectNamed(effect).value())) {
        text += lineOf(parameter);
    }
    return text;
}

std::optional<Fault> EffectWords::read(std::size_t fileCount, std::optional<EffectSpec>& spec) const {
    std::optional<EffectValues> values = effectNamed(effect);
    if (!effect.empty() && !values) {
        return usageFault("--effect: unknown effect '" + effect + "' (known: " + joined(effectNames()) + ")");
    }
    std::optional<Fault> stray = _firstStray();
    if (stray || !values) {
        return stray;
    }
    for (std::string const& assignment : assignments) {
        if (std::optional<Fault> const fault = _assign(*values, assignment)) {
            return usageFault("--effect-param: " + fault->message);
        }
    }
    if (auto* const glass = std::get_if<GlassEffect>(&*values)) {
        glass->environment = environment;
    }
    if (auto* const custom = std::get_if<CustomEffect>(&*values)) {
        custom->vertexShader = vertexShader;
        custom->fragmentShader = fragmentShader;
        custom->geometryShader = geometryShader;
        custom->replacesStages = shaderFallback;
    }
    spec.emplace(EffectSpec{*values, std::nullopt});
    std::optional<Fault> fault = _readModel(fileCount, *spec);
    if (fault || asksForHelp()) {
        return fault;
    }
    return std::visit([](auto const& given) { return firstMissing(given); }, *values);
}

/// The fault of an option that belongs to another effect than the one that is named.
std::optional<Fault> EffectWords::_firstStray() const {
    struct Row {
        char const* option;
        bool isGiven;
        char const* effect;
    };
    for (Row const& row : {Row{"--environment", !environment.empty(), "glass"},
                           Row{"--shader-vertex", !vertexShader.empty(), "custom"},
                           Row{"--shader-fragment", !fragmentShader.empty(), "custom"},
                           Row{"--shader-geometry", !geometryShader.empty(), "custom"},
                           Row{"--shader-fallback", shaderFallback, "custom"}}) {
        if (row.isGiven && effect != row.effect) {
            return usageFault(std::string(row.option) + ": belongs to --effect " + row.effect);
        }
    }
    if (effect.empty() && !assignments.empty()) {
        return usageFault("--effect-param: belongs to --effect");
    }
    if (effect.empty() && !model.empty()) {
        return usageFault("--effect-model: belongs to --effect");
    }
    return std::nullopt;
}

std::optional<Fault> EffectWords::_assign(EffectValues& values, std::string const& assignment) const {
    if (assignment == HELP) {
        return std::nullopt;
    }
    std::size_t const middle = assignment.find('=');
    if (middle == std::string::npos) {
        return usageFault("'" + assignment + "' is not NAME=VALUE");
    }
    std::string const name = assignment.substr(0, middle);
    for (EffectParameter const& parameter : parametersOf(values)) {
        if (parameter.name == name) {
            return parameter.assign(values, assignment.substr(middle + 1));
        }
    }
    return usageFault("the effect " + effect + " has no parameter '" + name +
                      "' (--effect-param help lists them)");
}

std::optional<Fault> EffectWords::_readModel(std::size_t fileCount, EffectSpec& spec) const {
    if (model.empty()) {
        return std::nullopt;
    }
    std::optional<double> const number = toReal(model);
    if (!number || *number < 1 || *number > static_cast<double>(fileCount) ||
        *number != std::floor(*number)) {
        return usageFault("--effect-model: '" + model + "' is not the number of a file, 1 to " +
                          std::to_string(fileCount));
    }
    spec.onlyModel = static_cast<std::size_t>(*number) - 1;
    return std::nullopt;
}

}  // namespace vellum::viewport
