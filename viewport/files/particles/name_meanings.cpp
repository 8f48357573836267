#include "viewport/files/particles/name_meanings.h"

#include "viewport/text/bare_name.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <unordered_map>

namespace vellum::viewport {

namespace {

using Columns = std::array<std::size_t, 3>;

constexpr std::string_view SEPARATORS = " _.:-";
constexpr double LARGEST_PART = 65535;  // of a color

struct NameList {
    std::vector<std::string> names;                      // of the channels
    std::unordered_map<std::string, std::size_t> first;  // the channel of each name; of several the first one

    template <class Form>
    NameList(ParticleFrame const& frame, Form const& form) {
        for (ParticleChannel const& channel : frame.channels) {
            names.push_back(form(channel.name));
            first.emplace(names.back(), names.size() - 1);
        }
    }

    std::optional<std::size_t> find(std::string_view name) const {
        auto const found = first.find(std::string(name));
        return found == first.end() ? std::nullopt : std::optional<std::size_t>(found->second);
    }

    std::optional<Columns> find(std::string_view const (&wanted)[3]) const {
        std::optional<std::size_t> const a = find(wanted[0]);
        std::optional<std::size_t> const b = find(wanted[1]);
        std::optional<std::size_t> const c = find(wanted[2]);
        return a && b && c ? std::optional<Columns>(Columns{*a, *b, *c}) : std::nullopt;
    }
};

std::string joined(std::string_view first, std::string_view second) {
    return std::string(first) + std::string(second);
}

/// The other two components of the vector whose first one is given.
std::optional<Columns> vectorAt(NameList const& names, std::size_t first) {
    std::string_view const name = names.names[first];
    if (name.size() < 2) {
        return std::nullopt;
    }
    std::string_view const stem = name.substr(0, name.size() - 1);
    bool const isSeparated = SEPARATORS.find(stem.back()) != std::string_view::npos;
    if (name.back() == '0' && isSeparated) {
        // The first three of a longer list are no vector.
        return names.find(joined(stem, "3"))
                   ? std::nullopt
                   : names.find({joined(stem, "0"), joined(stem, "1"), joined(stem, "2")});
    }
    if (name.back() != 'x' || stem == "i") {
        return std::nullopt;
    }
    // A row of a tensor: xx xy xz.
    if (stem.back() >= 'x' && stem.back() <= 'z' &&
        names.find(joined(stem.substr(0, stem.size() - 1), "yy"))) {
        return std::nullopt;
    }
    return names.find({joined(stem, "x"), joined(stem, "y"), joined(stem, "z")});
}

std::string stemOf(std::string_view name) {
    name.remove_suffix(1);
    return std::string(name.substr(0, name.find_last_not_of(SEPARATORS) + 1));
}

/// How likely a name is that of the velocity, 0 most; nothing: it is not.
std::optional<std::ptrdiff_t> velocityRank(std::string const& name) {
    constexpr std::string_view NAMES[] = {"v", "velocity", "vel", "velo", "velocities"};
    auto const* const found = std::find(std::begin(NAMES), std::end(NAMES), bareName(name));
    return found == std::end(NAMES) ? std::nullopt : std::optional<std::ptrdiff_t>(found - std::begin(NAMES));
}

std::vector<ParticleVector> vectorsOf(ParticleFrame const& frame) {
    NameList const names(frame, lowerCase);
    std::vector<ParticleVector> vectors;
    std::optional<std::ptrdiff_t> bestRank;
    std::size_t velocity = 0;
    for (std::size_t i = 0; i < frame.channels.size(); ++i) {
        std::optional<Columns> const columns = vectorAt(names, i);
        // A second column of a name is not part of a second vector.
        if (!columns || (*columns)[0] != i) {
            continue;
        }
        if (frame.colors && frame.colors->columns == *columns) {
            continue;
        }
        vectors.push_back(ParticleVector{stemOf(frame.channels[i].name), *columns});
        std::optional<std::ptrdiff_t> const rank = velocityRank(vectors.back().name);
        if (rank && (!bestRank || *rank < *bestRank)) {
            bestRank = rank;
            velocity = vectors.size() - 1;
        }
    }
    if (bestRank) {
        vectors[velocity].name = ParticleVector::VELOCITY;
        std::rotate(vectors.begin(), vectors.begin() + static_cast<std::ptrdiff_t>(velocity),
                    vectors.begin() + static_cast<std::ptrdiff_t>(velocity) + 1);
    }
    return vectors;
}

/// Whether some particle has all three parts within the widest range that colors have.
bool areColors(ParticleFrame const& frame, Columns const& columns) {
    std::array<ValueList<double> const*, 3> parts{};
    std::transform(columns.begin(), columns.end(), parts.begin(),
                   [&frame](std::size_t column) { return &frame.channels[column].values; });
    std::size_t const count = parts[0]->size();
    for (std::size_t i = 0; i < count; ++i) {
        if (std::all_of(parts.begin(), parts.end(), [i](ValueList<double> const* part) {
                return (*part)[i] >= 0 && (*part)[i] <= LARGEST_PART;
            })) {
            return true;
        }
    }
    return count == 0;
}

/// A single wrong number, larger than any color, does not decide.
double fullOf(ParticleFrame const& frame, Columns const& columns) {
    double most = 0;
    for (std::size_t const column : columns) {
        for (double const value : frame.channels[column].values) {
            most = value > most && value <= LARGEST_PART ? value : most;
        }
    }
    return most > 255 ? LARGEST_PART : most > 1 ? 255 : 1;
}

std::optional<ParticleColors> colorsOf(ParticleFrame& frame, NameList const& bareNames) {
    constexpr std::string_view NAMES[][3] = {
        {"r", "g", "b"},
        {"red", "green", "blue"},
        {"colorr", "colorg", "colorb"},
        {"colorred", "colorgreen", "colorblue"},
        {"colorsr", "colorsg", "colorsb"},
        {"color0", "color1", "color2"},
        {"colors0", "colors1", "colors2"},
        {"colorx", "colory", "colorz"},
        {"colorsx", "colorsy", "colorsz"},
        {"rgb0", "rgb1", "rgb2"},
        {"rgbr", "rgbg", "rgbb"},
        {"diffusered", "diffusegreen", "diffuseblue"},
    };
    for (auto const& names : NAMES) {
        if (std::optional<Columns> const columns = bareNames.find(names)) {
            if (areColors(frame, *columns)) {
                return ParticleColors{*columns, fullOf(frame, *columns)};
            }
            frame.notes.emplace_back(
                "its colors are outside 0 to 65535 or no numbers: it is taken to have none");
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<ParticleSizes> sizesOf(NameList const& bareNames) {
    struct Row {
        std::string_view name;
        double diameters;
    };
    for (Row const& row : {Row{"radius", 2}, {"radii", 2}, {"diameter", 1}, {"diameters", 1}, {"size", 1}}) {
        if (std::optional<std::size_t> const column = bareNames.find(row.name)) {
            return ParticleSizes{*column, row.diameters};
        }
    }
    return std::nullopt;
}

bool isNameOfElements(std::string const& name) {
    std::string const bare = bareName(name);
    return bare == "element" || bare == "elements" || bare == "species" || bare == "symbol" ||
           bare == "symbols";
}

}  // namespace

void findMeanings(ParticleFrame& frame) {
    NameList const bareNames(frame, bareName);
    frame.notes.clear();
    frame.colors = colorsOf(frame, bareNames);
    frame.sizes = sizesOf(bareNames);
    frame.vectors = vectorsOf(frame);
    for (ParticleLabels& labels : frame.labels) {
        labels.areElements = isNameOfElements(labels.name);
    }
}

}  // namespace vellum::viewport
