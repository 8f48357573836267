#include "viewport/files/mesh/MtlFile.h"

#include "viewport/files/common/MappedFile.h"
#include "viewport/files/mesh/Textures.h"
#include "viewport/text/TextLines.h"
#include "viewport/text/Words.h"
#include "viewport/text/lower_case.h"
#include "viewport/text/numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <map>
#include <utility>

namespace vellum::viewport {

namespace {

class MtlReader {
public:
    explicit MtlReader(std::string_view text) : lines(text) {}

    MtlFile read() {
        while (!lines.isAtEnd()) {
            std::string_view line = lines.take();
            std::string const keyword = lowerCase(takeWord(line));
            if (keyword == "newmtl") {
                _begin(std::string(trimmed(line)));
            } else if (current != nullptr) {
                _set(keyword, line);
            }
        }
        for (State& state : states) {
            _finish(state);
            file.materials.push_back(std::move(state.result));
        }
        if (badNumberCount > MOST_NOTES) {
            file.notes.push_back(std::to_string(badNumberCount - MOST_NOTES) +
                                 " more numbers are none; skipped");
        }
        return std::move(file);
    }

private:
    static constexpr std::size_t MOST_NOTES = 8;  // of numbers that are none; the others are counted

    /// A material and what its parts are decided by once all is read.
    struct State {
        MtlMaterial result;
        std::optional<float> opacity;
        std::optional<float> transparency;
        bool hasHighlights = true;
    };

    void _begin(std::string const& name) {
        auto const [place, isNew] = indices.emplace(name, states.size());
        if (isNew) {
            states.emplace_back();
            states.back().result.material.name = name;
        }
        current = &states[place->second];
    }

    void _set(std::string const& keyword, std::string_view line) {
        Material& material = current->result.material;
        if (keyword == "kd") {
            current->result.color = _color(keyword, line);
        } else if (keyword == "ks") {
            material.specular = _color(keyword, line);
        } else if (keyword == "ke") {
            material.emission = _color(keyword, line).value_or(material.emission);
        } else if (keyword == "ns") {
            material.shininess = std::max(0.0F, _number(keyword, line).value_or(0.0F));
        } else if (keyword == "d") {
            std::string_view rest = line;
            line = takeWord(rest) == "-halo" ? rest : line;
            current->opacity = _number(keyword, line);
        } else if (keyword == "tr") {
            current->transparency = _number(keyword, line);
        } else if (keyword == "illum") {
            std::optional<float> const model = _number(keyword, line);
            current->hasHighlights = !model || *model >= 2;
        } else if (keyword == "map_kd") {
            material.texture = _texture(line, &material.textureTransform);
        } else if (keyword == "map_ke") {
            material.emissionTexture.name = _texture(line, &material.emissionTexture.transform);
        } else if (keyword == "map_d") {
            material.opacityTexture = _texture(line, nullptr);
        }
    }

    std::optional<float> _number(std::string const& keyword, std::string_view line) {
        std::string_view const word = takeWord(line);
        std::optional<double> const number = toDataNumber(word);
        if (!number || !std::isfinite(*number)) {
            if (++badNumberCount <= MOST_NOTES) {
                file.notes.push_back("line " + std::to_string(lines.number()) + ": " + inQuotes(word) +
                                     " behind " + viewport::inQuotes(keyword) + " is not a number; skipped");
            }
            return std::nullopt;
        }
        return static_cast<float>(*number);
    }

    /// Three components, or one for all of them.
    std::optional<Color4<float>> _color(std::string const& keyword, std::string_view line) {
        std::array<float, 3> parts{};
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (i > 0 && trimmed(line).empty()) {
                parts[i] = parts[i - 1];
                continue;
            }
            std::optional<float> const part = _number(keyword, line);
            if (!part) {
                return std::nullopt;
            }
            parts[i] = std::clamp(*part, 0.0F, 1.0F);
            takeWord(line);
        }
        return Color4<float>{parts[0], parts[1], parts[2], 1};
    }

    /// The name behind the options, which begin with '-' and have a fixed number of words, some of them
    /// optional numbers.
    static std::string _texture(std::string_view line, TextureTransform* const& transform) {
        struct Option {
            std::string_view name;
            int words;            // that always follow
            int optionalNumbers;  // that may follow these
        };
        static constexpr Option OPTIONS[] = {
            {"-blendu", 1, 0},  {"-blendv", 1, 0}, {"-boost", 1, 0},  {"-mm", 2, 0},    {"-o", 1, 2},
            {"-s", 1, 2},       {"-t", 1, 2},      {"-texres", 1, 0}, {"-clamp", 1, 0}, {"-bm", 1, 0},
            {"-imfchan", 1, 0}, {"-type", 1, 0},   {"-cc", 1, 0}};
        Vector2<float> scale{1, 1};
        Vector2<float> offset{0, 0};
        while (true) {
            std::string_view rest = line;
            std::string const word = lowerCase(takeWord(rest));
            Option const* const option = std::find_if(std::begin(OPTIONS), std::end(OPTIONS),
                                                      [&](Option const& row) { return row.name == word; });
            if (option == std::end(OPTIONS)) {
                break;
            }
            float numbers[3] = {1, word == "-s" ? 1.0F : 0.0F, 0};
            for (int i = 0; i < option->words + option->optionalNumbers; ++i) {
                std::string_view behind = rest;
                std::optional<double> const number = toDataNumber(takeWord(behind));
                bool const isNumber = number && std::isfinite(static_cast<float>(*number));
                if (i >= option->words && !isNumber) {
                    break;
                }
                if (i < 3 && isNumber) {
                    numbers[i] = static_cast<float>(*number);
                }
                rest = behind;
            }
            if (word == "-s") {
                scale = {numbers[0], numbers[1]};
            } else if (word == "-o") {
                offset = {numbers[0], numbers[1]};
            }
            line = rest;
        }
        if (transform != nullptr) {
            *transform = TextureTransform::ofMtl(scale, offset);
        }
        return std::string(trimmed(line));
    }

    static void _finish(State& state) {
        Material& material = state.result.material;
        std::optional<Color4<float>>& color = state.result.color;
        bool const isBlack = color && color->r + color->g + color->b == 0;
        // Files leave the color black where a texture replaces it; else nothing of the texture would be seen.
        if (isBlack && !material.texture.empty()) {
            color.reset();
        }
        material.tint = color.value_or(material.tint);
        Color4<float>& light = material.emission;
        if (!material.emissionTexture.name.empty() && light.r + light.g + light.b == 0) {
            light = {1, 1, 1, 1};
        }
        float const opacity = state.opacity.value_or(1 - state.transparency.value_or(0.0F));
        material.opacity = std::clamp(opacity, 0.0F, 1.0F);
        // With an exponent of 0 the highlight would cover all of the surface; files have it where nothing
        // shines.
        if (!state.hasHighlights || material.shininess == 0) {
            material.specular.reset();
        }
        material.alphaMode = material.opacityTexture.empty() ? AlphaMode::SOLID : AlphaMode::BLEND;
    }

    TextLines lines;
    MtlFile file;
    std::vector<State> states;
    std::map<std::string, std::size_t> indices;
    State* current = nullptr;
    std::size_t badNumberCount = 0;
};

void append(MtlFile& to, MtlFile&& from, std::string const& name) {
    std::move(from.materials.begin(), from.materials.end(), std::back_inserter(to.materials));
    for (std::string const& note : from.notes) {
        to.notes.push_back(name);
        to.notes.back().append(": ").append(note);
    }
}

/// Adds the file of that name, unless it is one of those that were; false where it is not there.
bool addFile(std::string const& objPath, std::string const& name, std::set<std::string>& added, MtlFile& to) {
    std::optional<std::string> const path = findTexture(objPath, name);
    if (!path) {
        return false;
    }
    if (!added.insert(*path).second) {
        return true;
    }
    Result<MappedFile> const file = MappedFile::open(*path);
    if (!file.isOk()) {
        to.notes.push_back("material file '" + name + "': " + file.fault().message);
        return true;
    }
    append(to, readMtl(file.value().bytes()), name);
    return true;
}

}  // namespace

MtlFile readMtl(std::string_view text) {
    return MtlReader(text).read();
}

MtlFile loadMtl(std::string const& objPath, std::string const& names, std::set<std::string>& added) {
    MtlFile all;
    std::string const whole(trimmed(names));
    if (whole.empty() || addFile(objPath, whole, added, all)) {
        return all;
    }
    std::vector<std::string> missing;
    std::string_view rest = whole;
    bool isAnyThere = false;
    while (!trimmed(rest).empty()) {
        std::string const name(takeWord(rest));
        if (addFile(objPath, name, added, all)) {
            isAnyThere = true;
        } else {
            missing.push_back(name);
        }
    }
    if (isAnyThere) {
        for (std::string const& name : missing) {
            all.notes.push_back("material file '" + name + "' is not beside the file; drawn without it");
        }
        return all;
    }
    // The name of a file that was renamed, or of none.
    std::string const ownName = std::filesystem::path(objPath).stem().string() + ".mtl";
    bool const hasOwn = addFile(objPath, ownName, added, all);
    all.notes.insert(all.notes.begin(),
                     "material file '" + whole + "' is not beside the file; " +
                         (hasOwn ? "'" + ownName + "' is read in its place" : "drawn without it"));
    return all;
}

}  // namespace vellum::viewport
