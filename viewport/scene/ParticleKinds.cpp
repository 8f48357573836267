#include "viewport/scene/ParticleKinds.h"

#include "viewport/scene/rgb_color.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <unordered_map>
#include <utility>

namespace vellum::viewport {

namespace {

constexpr char const* NO_VALUE = "no value";

/// The element's symbol as it is usually written; D and T keep their names.
std::string nameOf(Element const* element, std::string const& word) {
    bool const isIsotope =
        element != nullptr && word.size() == 1 && std::string("DdTt").find(word) != std::string::npos;
    return element != nullptr && !isIsotope ? element->symbol : word;
}

/// The different numbers, ascending, with one NaN at the end where there are some; nothing where one is not
/// whole or there are too many.
std::optional<std::vector<double>> wholeNumbersIn(ValueList<double> const& values) {
    constexpr double LARGEST = 1e15;
    std::vector<double> found;
    bool hasNone = false;
    double last = std::nan("");
    for (double const value : values) {
        if (value == last) {
            continue;
        }
        last = value;
        if (std::isnan(value)) {
            hasNone = true;
            continue;
        }
        if (!(std::abs(value) <= LARGEST) || value != std::floor(value)) {
            return std::nullopt;
        }
        auto const place = std::lower_bound(found.begin(), found.end(), value);
        if (place == found.end() || *place != value) {
            found.insert(place, value);
        }
        if (found.size() > ParticleKinds::MOST_TYPES) {
            return std::nullopt;
        }
    }
    if (found.empty()) {
        return std::nullopt;
    }
    if (hasNone) {
        found.push_back(std::nan(""));
    }
    return found;
}

std::string textOf(double number) {
    return std::to_string(static_cast<long long>(number));
}

/// \param hue 0 to 1
Color4<float> fromHue(double hue, double saturation, double brightness) {
    auto const part = [&](double shift) {
        double const t = std::fmod(hue + shift, 1.0) * 6;
        double const ramp = std::clamp(std::abs(t - 3) - 1, 0.0, 1.0);
        return static_cast<float>(brightness * (1 - saturation + saturation * ramp));
    };
    return {part(0), part(2.0 / 3), part(1.0 / 3), 1};
}

}  // namespace

std::size_t ParticleKinds::_add(ParticleKind kind) {
    kindList.push_back(std::move(kind));
    return kindList.size() - 1;
}

ParticleKinds ParticleKinds::_words(ParticleLabels const& labels) {
    ParticleKinds kinds;
    kinds.titleText = labels.name;
    kinds.labels = &labels;
    // Only elements can be written in several ways.
    std::unordered_map<std::string, std::size_t> known;
    for (std::string const& word : labels.words) {
        Element const* const element = labels.areElements ? findElement(word) : nullptr;
        std::string const name = nameOf(element, word);
        auto const found = known.find(name);
        std::size_t const kind =
            found != known.end() ? found->second : kinds._add({name, element, std::nullopt});
        known.emplace(name, kind);
        kinds.kindOfWord.push_back(kind);
    }
    return kinds;
}

std::optional<ParticleKinds> ParticleKinds::_types(ParticleFrame const& frame) {
    ParticleChannel const* const channel = frame.channel(TYPE);
    std::optional<std::vector<double>> const numbers =
        channel != nullptr ? wholeNumbersIn(channel->values) : std::nullopt;
    if (!numbers) {
        return std::nullopt;
    }
    ParticleKinds kinds;
    kinds.titleText = TYPE;
    kinds.types = channel->values.data();
    kinds.typeNumbers = *numbers;
    std::map<std::string, std::size_t> uses;
    for (auto const& [number, name] : frame.typeNames) {
        ++uses[name];
    }
    for (double const number : *numbers) {
        ParticleKind kind{NO_VALUE, nullptr, number};
        if (!std::isnan(number)) {
            auto const named = frame.typeNames.find(static_cast<std::int64_t>(number));
            kind.name = textOf(number);
            if (named != frame.typeNames.end()) {
                // Two types of one name are still two.
                kind.name = uses[named->second] > 1 ? named->second + " (" + kind.name + ")" : named->second;
            }
        }
        kinds.kindOfNumber.push_back(kinds._add(kind));
    }
    // Types are nearly always small numbers.
    constexpr double LARGEST_TABLE = 65536;
    double const first = numbers->front();
    double const last = std::isnan(numbers->back()) ? *std::prev(numbers->end(), 2) : numbers->back();
    if (last - first < LARGEST_TABLE) {
        kinds.firstType = first;
        kinds.kindOfType.assign(static_cast<std::size_t>(last - first) + 1, 0);
        for (std::size_t i = 0; i < numbers->size() && !std::isnan((*numbers)[i]); ++i) {
            kinds.kindOfType[static_cast<std::size_t>((*numbers)[i] - first)] = i;
        }
    }
    return kinds;
}

std::size_t ParticleKinds::_searchType(double type) const {
    if (std::isnan(type)) {
        return kindOfNumber.back();
    }
    std::size_t const numbers = typeNumbers.size() - (std::isnan(typeNumbers.back()) ? 1 : 0);
    auto const end = typeNumbers.begin() + static_cast<std::ptrdiff_t>(numbers);
    return kindOfNumber[static_cast<std::size_t>(std::lower_bound(typeNumbers.begin(), end, type) -
                                                 typeNumbers.begin())];
}

std::optional<ParticleKinds> ParticleKinds::elements(ParticleFrame const& frame) {
    auto const isElement = [](ParticleKind const& kind) { return kind.element != nullptr; };
    if (ParticleLabels const* const labels = frame.elements()) {
        ParticleKinds kinds = _words(*labels);
        kinds.titleText = ELEMENT;
        bool const hasSome = std::any_of(kinds.kindList.begin(), kinds.kindList.end(), isElement);
        return hasSome ? std::optional<ParticleKinds>(std::move(kinds)) : std::nullopt;
    }
    if (frame.typeNames.empty()) {
        return std::nullopt;
    }
    std::optional<ParticleKinds> types = _types(frame);
    if (!types) {
        return std::nullopt;
    }
    // Types of one element are one kind.
    ParticleKinds byType = std::move(*types);
    std::vector<ParticleKind> const list = std::move(byType.kindList);
    byType.kindList.clear();
    byType.titleText = ELEMENT;
    std::map<std::string, std::size_t> known;
    std::vector<std::size_t> kindOf;
    for (ParticleKind kind : list) {
        auto const named = std::isnan(*kind.number)
                               ? frame.typeNames.end()
                               : frame.typeNames.find(static_cast<std::int64_t>(*kind.number));
        if (named != frame.typeNames.end()) {
            kind.element = findElement(named->second);
            // All names or none: else they mean something else.
            if (kind.element == nullptr) {
                return std::nullopt;
            }
            kind.name = nameOf(kind.element, named->second);
        }
        auto const found = known.find(kind.name);
        std::size_t const index = found != known.end() ? found->second : byType._add(kind);
        known.emplace(kind.name, index);
        kindOf.push_back(index);
    }
    if (std::none_of(byType.kindList.begin(), byType.kindList.end(), isElement)) {
        return std::nullopt;
    }
    byType.kindOfNumber = kindOf;
    for (std::size_t& kind : byType.kindOfType) {
        kind = kindOf[kind];
    }
    return byType;
}

std::optional<ParticleKinds> ParticleKinds::find(ParticleFrame const& frame, std::string const& name) {
    if (ParticleLabels const* const labels = frame.label(name)) {
        return _words(*labels);
    }
    if (name == TYPE) {
        return _types(frame);
    }
    return name == ELEMENT && frame.channel(name) == nullptr ? elements(frame) : std::nullopt;
}

Color4<float> kindColor(std::size_t index) {
    // Of similar lightness, so that shading and the dark background leave all of them visible; no grays,
    // which mean that nothing is known.
    constexpr unsigned int CHOSEN[] = {0x4C9BE8, 0xF28E2B, 0x59C15C, 0xE8534F, 0xB07AE0, 0xF2D33C,
                                       0x3FC7C0, 0xF28CC2, 0xB0815A, 0xB5D84A, 0x5B6BD6, 0xFFB199,
                                       0xD94FA8, 0x9A9A3C, 0xA6E3B8, 0x8FD0FF};
    if (index < std::size(CHOSEN)) {
        return colorOfRgb(CHOSEN[index]);
    }
    // The golden angle: no two of so many are near each other.
    constexpr double GOLDEN = 0.61803398874989485;
    std::size_t const turn = index - std::size(CHOSEN);
    double const hue = std::fmod(0.06 + GOLDEN * static_cast<double>(turn), 1.0);
    return fromHue(hue, turn % 2 == 0 ? 0.75 : 0.5, turn % 3 == 0 ? 0.8 : 0.95);
}

}  // namespace vellum::viewport
