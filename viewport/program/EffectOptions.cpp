#include "viewport/program/EffectOptions.h"

#include "viewport/ocean/OceanSpectrum.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include <CLI/CLI.hpp>

namespace vellum::viewport {

namespace {

using Type = EffectParameter::Type;
using Parameters = std::vector<EffectParameter>;

std::map<std::string, Effect> const effects{{"displacement", Effect::DISPLACEMENT},
                                            {"ocean", Effect::OCEAN},
                                            {"glass", Effect::GLASS},
                                            {"sss", Effect::SSS},
                                            {"custom", Effect::CUSTOM}};

constexpr double ANY_LENGTH = 1e6;

// == The parameters ==

Parameters lightParameters(std::string const& first, std::string const& second) {
    return {{"lights", Type::WHOLE, "1", 1, 2, "how many lights shine"},
            {"light", Type::TRIPLE, first, -1000, 1000,
             "place of the first light: to the right, up and toward the viewer from the middle,\n"
             "in radii of what is shown"},
            {"light2", Type::TRIPLE, second, -1000, 1000, "place of the second light"},
            {"light-color", Type::COLOR, "1,1,1", 0, 100, "color of the first light"},
            {"light2-color", Type::COLOR, "1,1,1", 0, 100, "color of the second light"}};
}

Parameters joined(Parameters first, Parameters const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Parameters displacementParameters() {
    return joined(
        {{"map", Type::FILE, "", 0, 0,
          "the displacement map, required: red, green and blue move along x, y and z, half gray not at all;\n"
          "width and height must be powers of two"},
         {"normals", Type::FILE, "", 0, 0, "a map of normals, bound for the shaders; sizes as for the map"},
         {"scale", Type::TRIPLE, "0,10,0", -ANY_LENGTH, ANY_LENGTH,
          "how far white moves along x, y and z, in hundredths of a tile"},
         {"tile", Type::PAIR, "1", 0.001, 1000, "how often the map covers the longest side of the model"},
         {"tessellate", Type::ANSWER, "no", 0, 1, "cut each triangle into smaller ones first"},
         {"depth", Type::WHOLE, "4", 1, 64, "tessellated, the number of parts of each edge"},
         {"color", Type::COLOR, "0.72,0.70,0.66", 0, 1, "color of the surface"},
         {"gloss", Type::NUMBER, "0.15", 0, 1, "strength of the highlight"},
         {"shininess", Type::NUMBER, "24", 0, 128, "how narrow the highlight is"}},
        lightParameters("-3,3,1.5", "3,0.6,-1.5"));
}

Parameters oceanParameters() {
    return {{"time", Type::NUMBER, "0", -OceanSpectrum::longestTime, OceanSpectrum::longestTime,
             "the moment that is shown, seconds"},
            {"seed", Type::WHOLE, "1", 0, 1e9, "another number is another sea"},
            {"wind", Type::NUMBER, "14", 0.5, 60, "speed of the wind, meters per second"},
            {"direction", Type::NUMBER, "200", -360, 360, "where it blows, degrees from +x toward +z"},
            {"fetch", Type::NUMBER, "20000", 10, 1e7, "the way over which it has blown, meters"},
            {"patch", Type::NUMBER, "100", 1, 10'000, "side of the patch of sea that is computed, meters"},
            {"size", Type::WHOLE, "512", SeaState::SMALLEST_SIZE, SeaState::LARGEST_SIZE,
             "samples along a side of the patch, a power of two"},
            {"choppiness", Type::NUMBER, "1.3", 0, 2, "0 gives round waves, 1 real ones"},
            {"foam-limit", Type::NUMBER, "0.65", -1, 1,
             "foam arises where the surface is pressed together to less than this part"},
            {"foam-life", Type::NUMBER, "2.5", 0, 60, "seconds in which foam fades"},
            {"foam-threshold", Type::NUMBER, "1", 0, 1,
             "how much of the foam is shown, from its densest parts alone to all of it"},
            {"color", Type::COLOR, "0.10,0.30,0.38", 0, 1, "color of the water in the light"},
            {"sun", Type::PAIR, "7,14", -90, 360,
             "the sun: degrees above the horizon, degrees to the right of the middle"},
            {"eye", Type::NUMBER, "5", 0.5, 1000, "without files: the viewer above the water, meters"},
            {"tilt", Type::NUMBER, "4", -30, 60, "without files: how far the viewer looks down, degrees"}};
}

Parameters glassParameters() {
    return joined(
        {{"color", Type::COLOR, "0.75,0.92,0.85", 0, 1, "tint of the glass"},
         {"depth", Type::NUMBER, "0.1", -100, 100, "how strongly the glass refracts"},
         {"mix", Type::NUMBER, "1", 0, 100,
          "how much of what is behind shows where the glass is seen straight on; the rest mirrors"}},
        lightParameters("-2,3,2.5", "3,1,1"));
}

Parameters scatteringParameters() {
    return joined(
        {{"color", Type::COLOR, "0.80,0.55,0.42", 0, 1, "color of the surface"},
         {"thickness", Type::NUMBER, "0.25", 0, 100, "how much light comes through the material"},
         {"extinction", Type::COLOR, "0.80,0.20,0.12", 0, 100, "color of the light that comes through"},
         {"rim", Type::NUMBER, "0.25", 0, 100, "strength of the light along the rim"},
         {"shininess", Type::NUMBER, "32", 0, 128, "how narrow the highlight is"}},
        lightParameters("-2,2,3", "3,1,-3"));
}

Parameters customParameters() {
    Parameters parameters{
        {"BaseColor", Type::COLOR, "0.8,0.8,0.8", 0, 1000, "uniform vec4 BaseColor"},
        {"grab", Type::ANSWER, "no", 0, 1,
         "what is drawn before goes into uniform sampler2D TextureFB, its lower left corner at (0, 0)"},
        {"gloss", Type::NUMBER, "0.3", 0, 1, "gl_FrontMaterial.specular"},
        {"shininess", Type::NUMBER, "32", 0, 128, "gl_FrontMaterial.shininess"}};
    parameters = joined(parameters, lightParameters("-2,3,2.5", "3,0.6,-1.5"));
    for (int i = 0; i < 7; ++i) {
        std::string const name = "Texture" + std::to_string(i);
        parameters.push_back({name, Type::FILE, "", 0, 0, "uniform sampler2D " + name});
    }
    struct Row {
        char const* name;
        Type type;
        char const* glslType;
        char const* standard;
    };
    for (Row const& row :
         {Row{"FloatVar", Type::NUMBER, "float", "0"}, Row{"Vec3Var", Type::TRIPLE, "vec3", "0"},
          Row{"Vec4Var", Type::COLOR, "vec4", "0,0,0,0"}}) {
        for (int i = 0; i < 10; ++i) {
            std::string const name = row.name + std::to_string(i);
            parameters.push_back({name, row.type, row.standard, -1e9, 1e9,
                                  std::string("uniform ") + row.glslType + " " + name});
        }
    }
    return parameters;
}

// == Reading values ==

std::optional<double> toNumber(std::string_view text) {
    double number = 0;
    char const* const last = text.data() + text.size();
    auto const [end, error] = std::from_chars(text.data(), last, number);
    return error == std::errc() && end == last && std::isfinite(number) ? std::optional<double>(number)
                                                                        : std::nullopt;
}

/// Numbers with commas between them.
std::optional<std::vector<double>> toNumbers(std::string_view text) {
    std::vector<double> numbers;
    for (;;) {
        std::size_t const comma = std::min(text.find(','), text.size());
        std::optional<double> const number = toNumber(text.substr(0, comma));
        if (!number) {
            return std::nullopt;
        }
        numbers.push_back(*number);
        if (comma == text.size()) {
            return numbers;
        }
        text.remove_prefix(comma + 1);
    }
}

std::string shown(double number) {
    char text[32];
    auto const [end, error] = std::to_chars(text, text + sizeof text, number);
    return error == std::errc() ? std::string(text, end) : std::string();
}

/// What a value has to look like.
std::string form(EffectParameter const& parameter) {
    std::string const range = " from " + shown(parameter.least) + " to " + shown(parameter.most);
    switch (parameter.type) {
    case Type::NUMBER:
        return "a number" + range;
    case Type::WHOLE:
        return "a whole number" + range;
    case Type::ANSWER:
        return "yes or no";
    case Type::PAIR:
        return "one or two numbers" + range;
    case Type::TRIPLE:
        return "one or three numbers" + range;
    case Type::COLOR:
        return "three or four numbers" + range;
    case Type::FILE:
        break;
    }
    return "the name of a file";
}

/// The numbers of a value, as many as the type has; none when it is malformed.
std::vector<double> parse(EffectParameter const& parameter, std::string const& text) {
    if (parameter.type == Type::ANSWER) {
        return text == "yes"  ? std::vector<double>{1}
               : text == "no" ? std::vector<double>{0}
                              : std::vector<double>{};
    }
    std::vector<double> numbers = toNumbers(text).value_or(std::vector<double>{});
    bool const isInRange = std::all_of(numbers.begin(), numbers.end(), [&](double number) {
        return number >= parameter.least && number <= parameter.most;
    });
    if (!isInRange) {
        return {};
    }
    std::size_t const given = numbers.size();
    switch (parameter.type) {
    case Type::WHOLE:
        return given == 1 && numbers[0] == std::floor(numbers[0]) ? numbers : std::vector<double>{};
    case Type::PAIR:
        numbers.resize(given == 1 ? 2 : given, given == 1 ? numbers[0] : 0);
        return numbers.size() == 2 ? numbers : std::vector<double>{};
    case Type::TRIPLE:
        numbers.resize(given == 1 ? 3 : given, given == 1 ? numbers[0] : 0);
        return numbers.size() == 3 ? numbers : std::vector<double>{};
    case Type::COLOR:
        numbers.resize(given == 3 ? 4 : given, 1);
        return numbers.size() == 4 ? numbers : std::vector<double>{};
    default:
        return given == 1 ? numbers : std::vector<double>{};
    }
}

std::string nameOf(Effect effect) {
    for (auto const& entry : effects) {
        if (entry.second == effect) {
            return entry.first;
        }
    }
    return "none";
}

std::string typeWord(EffectParameter::Type type) {
    switch (type) {
    case Type::NUMBER:
        return "NUMBER";
    case Type::WHOLE:
        return "WHOLE";
    case Type::ANSWER:
        return "yes|no";
    case Type::PAIR:
        return "A[,B]";
    case Type::TRIPLE:
        return "X[,Y,Z]";
    case Type::COLOR:
        return "R,G,B[,A]";
    case Type::FILE:
        break;
    }
    return "FILE";
}

std::string const helpWord = "help";

}  // namespace

Parameters const& parametersOf(Effect effect) {
    static Parameters const none;
    static Parameters const displacement = displacementParameters();
    static Parameters const ocean = oceanParameters();
    static Parameters const glass = glassParameters();
    static Parameters const scattering = scatteringParameters();
    static Parameters const custom = customParameters();
    switch (effect) {
    case Effect::DISPLACEMENT:
        return displacement;
    case Effect::OCEAN:
        return ocean;
    case Effect::GLASS:
        return glass;
    case Effect::SSS:
        return scattering;
    case Effect::CUSTOM:
        return custom;
    case Effect::NONE:
        break;
    }
    return none;
}

std::string describeParameters(Effect effect) {
    constexpr std::size_t column = 34;
    std::string text = "Parameters of --effect " + nameOf(effect) + ":\n";
    for (EffectParameter const& parameter : parametersOf(effect)) {
        std::string line = "  " + parameter.name + "=" + typeWord(parameter.type);
        line.resize(std::max(column, line.size() + 1), ' ');
        for (char letter : parameter.meaning) {
            line += letter;
            if (letter == '\n') {
                line.append(column, ' ');
            }
        }
        if (!parameter.standard.empty()) {
            line += " (" + parameter.standard + ")";
        }
        text += line + "\n";
    }
    return text;
}

// == EffectValues ==

EffectValues::EffectValues(Effect effect) : effect(effect) {
    for (EffectParameter const& parameter : parametersOf(effect)) {
        if (parameter.type != Type::FILE) {
            numberLists[parameter.name] = parse(parameter, parameter.standard);
        }
    }
}

std::optional<std::string> EffectValues::assign(std::string const& assignment) {
    std::size_t const middle = assignment.find('=');
    if (middle == std::string::npos) {
        return "'" + assignment + "' is not NAME=VALUE";
    }
    std::string const name = assignment.substr(0, middle);
    std::string const text = assignment.substr(middle + 1);
    Parameters const& known = parametersOf(effect);
    auto const found = std::find_if(known.begin(), known.end(),
                                    [&](EffectParameter const& parameter) { return parameter.name == name; });
    if (found == known.end()) {
        return "the effect " + nameOf(effect) + " has no parameter '" + name +
               "' (--effect-param help lists them)";
    }
    if (found->type == Type::FILE) {
        if (text.empty()) {
            return name + ": the name of a file is missing";
        }
        files[name] = text;
        return std::nullopt;
    }
    std::vector<double> const numbers = parse(*found, text);
    if (numbers.empty()) {
        return name + ": '" + text + "' is not " + form(*found);
    }
    numberLists[name] = numbers;
    return std::nullopt;
}

double EffectValues::_component(std::string const& name, std::size_t index) const {
    auto const found = numberLists.find(name);
    return found != numberLists.end() && index < found->second.size() ? found->second[index] : 0;
}

double EffectValues::number(std::string const& name) const {
    return _component(name, 0);
}

int EffectValues::whole(std::string const& name) const {
    return static_cast<int>(_component(name, 0));
}

bool EffectValues::isYes(std::string const& name) const {
    return _component(name, 0) != 0;
}

Vector3<float> EffectValues::triple(std::string const& name) const {
    return {static_cast<float>(_component(name, 0)), static_cast<float>(_component(name, 1)),
            static_cast<float>(_component(name, 2))};
}

Color4<float> EffectValues::color(std::string const& name) const {
    Vector3<float> const rgb = triple(name);
    return {rgb.x, rgb.y, rgb.z, static_cast<float>(_component(name, 3))};
}

std::string EffectValues::file(std::string const& name) const {
    auto const found = files.find(name);
    return found != files.end() ? found->second : std::string();
}

// == EffectWords ==

void EffectWords::addTo(CLI::App& app) {
    CLI::Validator const given(
        [](std::string& word) { return word.empty() ? std::string("may not be empty") : std::string(); }, "");
    char const* const ofEffects = "Effects";
    app.add_option("--effect", effect,
                   "Draw the models through an effect: displacement, ocean, glass, sss (sub-surface\n"
                   "scattering) or custom; ocean without files draws a sea of its own")
        ->check(given)
        ->type_name("NAME")
        ->group(ofEffects);
    app.add_option("--effect-param", assignments,
                   "Set a parameter of the effect; may be repeated. --effect-param help lists them")
        ->check(given)
        ->allow_extra_args(false)
        ->type_name("NAME=VALUE")
        ->group(ofEffects);
    app.add_option("--effect-model", model,
                   "Only this mesh file has the effect, counted from 1; the others are behind it")
        ->check(given)
        ->type_name("N")
        ->group(ofEffects);
    app.add_option("--environment", environment, "What glass mirrors: a picture (PNG, JPEG, EXR, HDR)")
        ->check(given)
        ->type_name("FILE")
        ->group(ofEffects);
    app.add_option("--shader-vertex", vertexShader, "The vertex stage of the custom effect, GLSL 1.20")
        ->check(given)
        ->type_name("FILE")
        ->group(ofEffects);
    app.add_option("--shader-fragment", fragmentShader, "Its fragment stage")
        ->check(given)
        ->type_name("FILE")
        ->group(ofEffects);
    app.add_option("--shader-geometry", geometryShader, "Its geometry stage")
        ->check(given)
        ->type_name("FILE")
        ->group(ofEffects);
}

bool EffectWords::asksForHelp() const {
    return !effect.empty() &&
           std::find(assignments.begin(), assignments.end(), helpWord) != assignments.end();
}

std::optional<std::string> EffectWords::_firstStray(Effect kind) const {
    struct Row {
        char const* option;
        bool isGiven;
        Effect effect;
    };
    for (Row const& row : {Row{"--environment", !environment.empty(), Effect::GLASS},
                           Row{"--shader-vertex", !vertexShader.empty(), Effect::CUSTOM},
                           Row{"--shader-fragment", !fragmentShader.empty(), Effect::CUSTOM},
                           Row{"--shader-geometry", !geometryShader.empty(), Effect::CUSTOM}}) {
        if (row.isGiven && kind != row.effect) {
            return std::string(row.option) + ": belongs to --effect " + nameOf(row.effect);
        }
    }
    if (kind == Effect::NONE && !assignments.empty()) {
        return "--effect-param: belongs to --effect";
    }
    if (kind == Effect::NONE && !model.empty()) {
        return "--effect-model: belongs to --effect";
    }
    return std::nullopt;
}

std::optional<std::string> EffectWords::read(std::size_t fileCount, EffectOptions& options) const {
    if (!effect.empty()) {
        auto const found = effects.find(effect);
        if (found == effects.end()) {
            std::string known;
            for (auto const& entry : effects) {
                known += (known.empty() ? "" : ", ") + entry.first;
            }
            return "--effect: unknown effect '" + effect + "' (known: " + known + ")";
        }
        options.effect = found->second;
    }
    if (std::optional<std::string> stray = _firstStray(options.effect)) {
        return stray;
    }
    options.values = EffectValues(options.effect);
    for (std::string const& assignment : assignments) {
        if (assignment == helpWord) {
            continue;
        }
        if (std::optional<std::string> const fault = options.values.assign(assignment)) {
            return "--effect-param: " + *fault;
        }
    }
    if (!model.empty()) {
        std::optional<double> const number = toNumber(model);
        if (!number || *number < 1 || *number > static_cast<double>(fileCount) ||
            *number != std::floor(*number)) {
            return "--effect-model: '" + model + "' is not the number of a file, 1 to " +
                   std::to_string(fileCount);
        }
        options.model = static_cast<std::size_t>(*number);
    }
    options.environment = environment;
    options.vertexShader = vertexShader;
    options.fragmentShader = fragmentShader;
    options.geometryShader = geometryShader;
    if (asksForHelp()) {
        return std::nullopt;
    }
    if (options.effect == Effect::DISPLACEMENT && options.values.file("map").empty()) {
        return "--effect displacement: --effect-param map=FILE is required";
    }
    if (options.effect == Effect::CUSTOM && vertexShader.empty() && fragmentShader.empty() &&
        geometryShader.empty()) {
        return "--effect custom: --shader-vertex, --shader-fragment or --shader-geometry is required";
    }
    int const size = options.values.whole("size");
    if (options.effect == Effect::OCEAN && (size & (size - 1)) != 0) {
        return "--effect-param: size: '" + std::to_string(size) + "' is not a power of two";
    }
    return std::nullopt;
}

}  // namespace vellum::viewport
