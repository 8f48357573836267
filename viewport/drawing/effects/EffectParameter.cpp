#include "viewport/drawing/effects/EffectParameter.h"

#include "viewport/text/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace vellum::viewport {

namespace {

using Parameters = std::vector<EffectParameter>;

constexpr double ANY_LENGTH = 1e6;

// == Places of values ==

/// The place of a member of an effect E.
template <class E, class T>
EffectField field(T E::*member) {
    return std::function<T&(EffectValues&)>(
        [member](EffectValues& values) -> T& { return std::get<E>(values).*member; });
}

/// The place of a member of a part of an effect E.
template <class E, class Part, class T>
EffectField field(Part E::*part, T Part::*member) {
    return std::function<T&(EffectValues&)>(
        [part, member](EffectValues& values) -> T& { return std::get<E>(values).*part.*member; });
}

/// The place of an entry of a list of an effect E.
template <class E, class T, std::size_t SIZE>
EffectField field(std::array<T, SIZE> E::*list, std::size_t index) {
    return std::function<T&(EffectValues&)>(
        [list, index](EffectValues& values) -> T& { return (std::get<E>(values).*list)[index]; });
}

/// The place of a member of one of the lights of an effect E.
template <class E, class T>
EffectField lightField(toolkit::EffectLight toolkit::EffectLights::*light, T toolkit::EffectLight::*member) {
    return std::function<T&(EffectValues&)>(
        [light, member](EffectValues& values) -> T& { return std::get<E>(values).lights.*light.*member; });
}

// == Equality ==

template <class T>
bool isSame(T const& a, T const& b) {
    return a == b;
}

template <class T>
bool isSame(Vector2<T> const& a, Vector2<T> const& b) {
    return a.x == b.x && a.y == b.y;
}

bool isSame(Vector3<float> const& a, Vector3<float> const& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

bool isSame(Color4<float> const& a, Color4<float> const& b) {
    return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a;
}

// == The tables ==

/// \param first, second the defaults of the lights' places
template <class E>
Parameters lightParameters(std::string const& first, std::string const& second) {
    return {{"lights", field(&E::lights, &toolkit::EffectLights::count), "1", 1, 2, "how many lights shine"},
            {"light", lightField<E>(&toolkit::EffectLights::first, &toolkit::EffectLight::place), first,
             -1000, 1000,
             "place of the first light: to the right, up and toward the viewer from the middle,\n"
             "in radii of what is shown"},
            {"light2", lightField<E>(&toolkit::EffectLights::second, &toolkit::EffectLight::place), second,
             -1000, 1000, "place of the second light"},
            {"light-color", lightField<E>(&toolkit::EffectLights::first, &toolkit::EffectLight::color),
             "1,1,1", 0, 100, "color of the first light"},
            {"light2-color", lightField<E>(&toolkit::EffectLights::second, &toolkit::EffectLight::color),
             "1,1,1", 0, 100, "color of the second light"}};
}

Parameters joined(Parameters first, Parameters const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Parameters displacementParameters() {
    using E = DisplacementEffect;
    return joined(
        {{"map", field(&E::map), "", 0, 0,
          "the displacement map, required: red, green and blue move along x, y and z, half gray not at all;\n"
          "width and height must be powers of two"},
         {"normals", field(&E::normals), "", 0, 0,
          "a map of normals, bound for the shaders; sizes as for the map"},
         {"scale", field(&E::scale), "0,10,0", -ANY_LENGTH, ANY_LENGTH,
          "how far white moves along x, y and z, in hundredths of a tile"},
         {"tile", field(&E::tile), "1", 0.001, 1000,
          "how often the map covers the longest side of the model"},
         {"tessellate", field(&E::tessellate), "no", 0, 1, "cut each triangle into smaller ones first"},
         {"depth", field(&E::depth), "4", 1, 64, "tessellated, the number of parts of each edge"},
         {"color", field(&E::color), "0.72,0.70,0.66", 0, 1, "color of the surface"},
         {"gloss", field(&E::gloss), "0.15", 0, 1, "strength of the highlight"},
         {"shininess", field(&E::shininess), "24", 0, 128, "how narrow the highlight is"}},
        lightParameters<E>("-3,3,1.5", "3,0.6,-1.5"));
}

Parameters oceanParameters() {
    using E = OceanEffect;
    return {
        {"time", field(&E::time), "0", -OceanSpectrum::LONGEST_TIME, OceanSpectrum::LONGEST_TIME,
         "the moment that is shown, seconds"},
        {"seed", field(&E::sea, &SeaState::seed), "1", 0, 1e9, "another number is another sea"},
        {"wind", field(&E::sea, &SeaState::windSpeed), "14", 0.5, 60, "speed of the wind, meters per second"},
        {"direction", field(&E::sea, &SeaState::windDirection), "200", -360, 360,
         "where it blows, degrees from +x toward +z"},
        {"fetch", field(&E::sea, &SeaState::fetch), "20000", 10, 1e7,
         "the way over which it has blown, meters"},
        {"patch", field(&E::sea, &SeaState::patch), "100", 1, 10'000,
         "side of the patch of sea that is computed, meters"},
        {"size", field(&E::sea, &SeaState::size), "512", SeaState::SMALLEST_SIZE, SeaState::LARGEST_SIZE,
         "samples along a side of the patch, a power of two"},
        {"choppiness", field(&E::sea, &SeaState::choppiness), "1.3", 0, 2,
         "0 gives round waves, 1 real ones"},
        {"foam-limit", field(&E::sea, &SeaState::foamLimit), "0.65", -1, 1,
         "foam arises where the surface is pressed together to less than this part"},
        {"foam-life", field(&E::sea, &SeaState::foamLife), "2.5", 0, 60, "seconds in which foam fades"},
        {"foam-threshold", field(&E::foamThreshold), "1", 0, 1,
         "how much of the foam is shown, from its densest parts alone to all of it"},
        {"color", field(&E::color), "0.10,0.30,0.38", 0, 1, "color of the water in the light"},
        {"sun", field(&E::sun), "7,14", -90, 360,
         "the sun: degrees above the horizon, degrees to the right of the middle"},
        {"level", field(&E::level), "0.3", -10, 1,
         "with files: the part of their height that is below the water about them;\n"
         "below 0 they are above it"},
        {"length", field(&E::length), "20", 0, ANY_LENGTH,
         "with files: what their longest side counts as, meters;\n"
         "0: the units of the files are meters"},
        {"eye", field(&E::eyeHeight), "5", 0.5, 1000, "without files: the viewer above the water, meters"},
        {"tilt", field(&E::tiltDegrees), "4", -30, 60,
         "without files: how far the viewer looks down, degrees"}};
}

Parameters glassParameters() {
    using E = GlassEffect;
    return joined(
        {{"color", field(&E::color), "0.75,0.92,0.85", 0, 1, "tint of the glass"},
         {"depth", field(&E::depth), "0.1", -100, 100, "how strongly the glass refracts"},
         {"mix", field(&E::mix), "1", 0, 100,
          "how much of what is behind shows where the glass is seen straight on; the rest mirrors"}},
        lightParameters<E>("-2,3,2.5", "3,1,1"));
}

Parameters scatteringParameters() {
    using E = ScatteringEffect;
    return joined(
        {{"color", field(&E::color), "0.80,0.55,0.42", 0, 1, "color of the surface"},
         {"thickness", field(&E::thickness), "0.25", 0, 100, "how much light comes through the material"},
         {"extinction", field(&E::extinction), "0.80,0.20,0.12", 0, 100,
          "color of the light that comes through"},
         {"rim", field(&E::rim), "0.25", 0, 100, "strength of the light along the rim"},
         {"shininess", field(&E::shininess), "32", 0, 128, "how narrow the highlight is"}},
        lightParameters<E>("-2,2,3", "3,1,-3"));
}

Parameters customParameters() {
    using E = CustomEffect;
    Parameters parameters{
        {"BaseColor", field(&E::baseColor), "0.8,0.8,0.8", 0, 1000, "uniform vec4 BaseColor"},
        {"grab", field(&E::grabsFrameBuffer), "no", 0, 1,
         "what is drawn before goes into uniform sampler2D TextureFB, its lower left corner at (0, 0)"},
        {"gloss", field(&E::gloss), "0.3", 0, 1, "gl_FrontMaterial.specular"},
        {"shininess", field(&E::shininess), "32", 0, 128, "gl_FrontMaterial.shininess"}};
    parameters = joined(parameters, lightParameters<E>("-2,3,2.5", "3,0.6,-1.5"));
    for (std::size_t i = 0; i < E::TEXTURES; ++i) {
        std::string const name = "Texture" + std::to_string(i);
        parameters.push_back({name, field(&E::textures, i), "", 0, 0, "uniform sampler2D " + name});
    }
    auto const addVariables = [&parameters](auto list, std::string const& type, std::string const& start,
                                            std::string const& standard) {
        for (std::size_t i = 0; i < E::VARIABLES; ++i) {
            std::string const name = start + std::to_string(i);
            std::string declaration = "uniform ";
            declaration.append(type).append(" ").append(name);
            parameters.push_back({name, field(list, i), standard, -1e9, 1e9, declaration});
        }
    };
    addVariables(&E::floats, "float", "FloatVar", "0");
    addVariables(&E::vec3s, "vec3", "Vec3Var", "0");
    addVariables(&E::vec4s, "vec4", "Vec4Var", "0,0,0,0");
    return parameters;
}

// == Texts of numbers ==

std::optional<std::vector<double>> toReals(std::string_view text) {
    std::vector<double> numbers;
    for (;;) {
        std::size_t const comma = std::min(text.find(','), text.size());
        std::optional<double> const number = toReal(text.substr(0, comma));
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

std::string toText(double number) {
    char text[32];
    auto const [end, error] = std::to_chars(text, text + sizeof text, number);
    return error == std::errc() ? std::string(text, end) : std::string();
}

// == What the types of fields take ==

/// A type's short form, its form in a sentence, and its numbers made complete. `complete` gives false when
/// there are too many or too few of them.
struct Kind {
    char const* word;
    char const* form;
    bool hasRange;
    bool (*complete)(std::vector<double>& numbers);
};

/// Makes one number `count` equal ones.
template <std::size_t COUNT>
bool repeated(std::vector<double>& numbers) {
    if (numbers.size() == 1) {
        numbers.resize(COUNT, numbers[0]);
    }
    return numbers.size() == COUNT;
}

bool withOpacity(std::vector<double>& numbers) {
    if (numbers.size() == 3) {
        numbers.push_back(1);
    }
    return numbers.size() == 4;
}

bool isWhole(std::vector<double>& numbers) {
    return numbers.size() == 1 && numbers[0] == std::floor(numbers[0]);
}

constexpr Kind PAIR{"A[,B]", "one or two numbers", true, repeated<2>};

Kind kindOf(double const& /*value*/) {
    return {"NUMBER", "a number", true, repeated<1>};
}

Kind kindOf(unsigned int const& /*value*/) {
    return {"WHOLE", "a whole number", true, isWhole};
}

Kind kindOf(bool const& /*value*/) {
    return {"yes|no", "yes or no", false, repeated<1>};
}

Kind kindOf(Vector2<float> const& /*value*/) {
    return PAIR;
}

Kind kindOf(Vector2<double> const& /*value*/) {
    return PAIR;
}

Kind kindOf(Vector3<float> const& /*value*/) {
    return {"X[,Y,Z]", "one or three numbers", true, repeated<3>};
}

Kind kindOf(Color4<float> const& /*value*/) {
    return {"R,G,B[,A]", "three or four numbers", true, withOpacity};
}

Kind kindOf(std::string const& /*value*/) {
    return {"FILE", "the name of a file", false, repeated<1>};
}

Kind kindOf(EffectField const& field) {
    return std::visit(
        [](auto const& place) {
            using Value = std::remove_reference_t<decltype(place(std::declval<EffectValues&>()))>;
            return kindOf(Value());
        },
        field);
}

// == Storing numbers, as many as the type takes ==

template <class T>
void store(std::vector<double> const& numbers, T& value) {
    value = static_cast<T>(numbers[0]);
}

template <class T>
void store(std::vector<double> const& numbers, Vector2<T>& value) {
    value = {static_cast<T>(numbers[0]), static_cast<T>(numbers[1])};
}

void store(std::vector<double> const& numbers, Vector3<float>& value) {
    value = {static_cast<float>(numbers[0]), static_cast<float>(numbers[1]), static_cast<float>(numbers[2])};
}

void store(std::vector<double> const& numbers, Color4<float>& value) {
    value = {static_cast<float>(numbers[0]), static_cast<float>(numbers[1]), static_cast<float>(numbers[2]),
             static_cast<float>(numbers[3])};
}

void store(std::vector<double> const& /*numbers*/, std::string& /*value*/) {}  // no numbers make a path

// == Texts that are read back as the same ==

std::string textOf(double value) {
    return toText(value);
}

/// The shortest one: it has fewer digits than that of the double next to it.
std::string textOf(float value) {
    char text[32];
    auto const [end, error] = std::to_chars(text, text + sizeof text, value);
    return error == std::errc() ? std::string(text, end) : std::string();
}

std::string textOf(unsigned int value) {
    return std::to_string(value);
}

std::string textOf(bool value) {
    return value ? "yes" : "no";
}

template <class T>
std::string textOf(Vector2<T> const& value) {
    return textOf(value.x) + "," + textOf(value.y);
}

std::string textOf(Vector3<float> const& value) {
    return textOf(value.x) + "," + textOf(value.y) + "," + textOf(value.z);
}

std::string textOf(Color4<float> const& value) {
    return textOf(value.r) + "," + textOf(value.g) + "," + textOf(value.b) + "," + textOf(value.a);
}

std::string textOf(std::string const& value) {
    return value;
}

// == The effects ==

struct NamedEffect {
    char const* name;
    EffectValues standard;
    Parameters parameters;
};

/// All effects in alphabetical order.
std::vector<NamedEffect> const& allEffects() {
    static std::vector<NamedEffect> const effects{
        {"custom", CustomEffect(), customParameters()},
        {"displacement", DisplacementEffect(), displacementParameters()},
        {"glass", GlassEffect(), glassParameters()},
        {"ocean", OceanEffect(), oceanParameters()},
        {"sss", ScatteringEffect(), scatteringParameters()}};
    return effects;
}

NamedEffect const& entryOf(EffectValues const& values) {
    return *std::find_if(allEffects().begin(), allEffects().end(), [&values](NamedEffect const& effect) {
        return effect.standard.index() == values.index();
    });
}

}  // namespace

// == EffectParameter ==

std::optional<Fault> EffectParameter::assign(EffectValues& values, std::string const& text) const {
    if (auto const* const file = std::get_if<std::function<std::string&(EffectValues&)>>(&field)) {
        if (text.empty()) {
            return Fault{"", name + ": the name of a file is missing"};
        }
        (*file)(values) = text;
        return std::nullopt;
    }
    std::vector<double> const numbers = _numbersOf(text);
    if (numbers.empty()) {
        return Fault{"", name + ": '" + text + "' is not " + _form()};
    }
    std::visit([&](auto const& place) { store(numbers, place(values)); }, field);
    return std::nullopt;
}

std::string EffectParameter::textOf(EffectValues const& values) const {
    // The places are those of values that may be written.
    EffectValues copy = values;
    return std::visit([&copy](auto const& place) { return viewport::textOf(place(copy)); }, field);
}

bool EffectParameter::isFile() const {
    return std::holds_alternative<std::function<std::string&(EffectValues&)>>(field);
}

std::string EffectParameter::kindWord() const {
    return kindOf(field).word;
}

/// The numbers that a text stands for, as many as the type takes; none where it is malformed or out of range.
std::vector<double> EffectParameter::_numbersOf(std::string const& text) const {
    if (std::holds_alternative<std::function<bool&(EffectValues&)>>(field)) {
        return text == "yes"  ? std::vector<double>{1}
               : text == "no" ? std::vector<double>{0}
                              : std::vector<double>{};
    }
    std::vector<double> numbers = toReals(text).value_or(std::vector<double>{});
    bool const areInRange = std::all_of(numbers.begin(), numbers.end(),
                                        [this](double number) { return number >= least && number <= most; });
    return areInRange && kindOf(field).complete(numbers) ? numbers : std::vector<double>{};
}

std::string EffectParameter::_form() const {
    Kind const kind = kindOf(field);
    return kind.hasRange ? std::string(kind.form) + " from " + toText(least) + " to " + toText(most)
                         : kind.form;
}

Parameters const& parametersOf(EffectValues const& values) {
    return entryOf(values).parameters;
}

bool sameValues(EffectValues const& a, EffectValues const& b) {
    if (a.index() != b.index()) {
        return false;
    }
    // What has options of its own is in no table.
    if (auto const* const glass = std::get_if<GlassEffect>(&a)) {
        if (glass->environment != std::get<GlassEffect>(b).environment) {
            return false;
        }
    }
    if (auto const* const custom = std::get_if<CustomEffect>(&a)) {
        auto const& other = std::get<CustomEffect>(b);
        if (custom->vertexShader != other.vertexShader || custom->fragmentShader != other.fragmentShader ||
            custom->geometryShader != other.geometryShader ||
            custom->replacesStages != other.replacesStages) {
            return false;
        }
    }
    // Fields give access for writing as well.
    EffectValues first = a;
    EffectValues second = b;
    std::vector<EffectParameter> const& parameters = parametersOf(a);
    return std::all_of(parameters.begin(), parameters.end(), [&](EffectParameter const& parameter) {
        return std::visit([&](auto const& field) { return isSame(field(first), field(second)); },
                          parameter.field);
    });
}

std::string nameOf(EffectValues const& values) {
    return entryOf(values).name;
}

std::optional<EffectValues> effectNamed(std::string const& name) {
    for (NamedEffect const& effect : allEffects()) {
        if (effect.name == name) {
            return effect.standard;
        }
    }
    return std::nullopt;
}

std::vector<std::string> effectNames() {
    std::vector<std::string> names;
    for (NamedEffect const& effect : allEffects()) {
        names.emplace_back(effect.name);
    }
    return names;
}

}  // namespace vellum::viewport
