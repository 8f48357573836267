#include "viewport/files/particles/XyzFile.h"

#include "viewport/text/Words.h"
#include "viewport/text/lower_case.h"
#include "viewport/text/numbers.h"

#include <algorithm>
#include <array>
#include <memory>

namespace vellum::viewport {

namespace {

using Damage = std::optional<TextDamage>;

constexpr std::uint64_t MOST_COMPONENTS = 1000;  // of a property, and columns of a table

struct Setting {
    std::string key;         // in lower case
    std::string_view value;  // without its quotes
};

/// The settings of a comment, `key=value`, `key="several words"` or `key: value`.
std::vector<Setting> settingsOf(std::string_view text) {
    std::vector<Setting> settings;
    std::string pending;  // the key that ended with a colon
    while (true) {
        text.remove_prefix(std::min(text.find_first_not_of(BLANKS), text.size()));
        if (text.empty()) {
            return settings;
        }
        std::size_t const end = std::min(text.find_first_of(" \t\r=", 0), text.size());
        std::string_view const word = text.substr(0, end);
        text.remove_prefix(end);
        if (text.empty() || text.front() != '=') {
            if (!pending.empty()) {
                settings.push_back(Setting{pending, word});
            }
            pending = !word.empty() && word.back() == ':' ? lowerCase(word.substr(0, word.size() - 1)) : "";
            continue;
        }
        pending.clear();
        text.remove_prefix(1);
        char const opening = text.empty() ? ' ' : text.front();
        bool const isQuoted = opening == '"' || opening == '\'' || opening == '{' || opening == '[';
        text.remove_prefix(isQuoted ? 1 : 0);
        char const closing = opening == '{' ? '}' : opening == '[' ? ']' : opening;
        std::size_t const valueEnd =
            std::min(isQuoted ? text.find(closing) : text.find_first_of(BLANKS), text.size());
        settings.push_back(Setting{lowerCase(word), text.substr(0, valueEnd)});
        text.remove_prefix(std::min(valueEnd + (isQuoted ? 1 : 0), text.size()));
    }
}

std::string_view takeField(std::string_view& text) {
    std::size_t const end = std::min(text.find(':'), text.size());
    std::string_view const field = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return field;
}

std::string componentName(std::string_view property, std::uint64_t index, std::uint64_t count) {
    if (count == 1) {
        return std::string(property);
    }
    std::string const key = lowerCase(property);
    if ((key == "color" || key == "colors" || key == "rgb") && (count == 3 || count == 4)) {
        return std::string(property) + "." + "rgba"[index];
    }
    return std::string(property) + "." +
           (count == 3 ? std::string(1, "xyz"[index]) : std::to_string(index + 1));
}

/// The columns of "name:type:count:name:type:count..."; nothing for any other text.
std::optional<std::vector<TableColumn>> columnsOf(std::string_view properties) {
    std::vector<TableColumn> columns;
    bool hasPositions = false;
    while (!properties.empty()) {
        std::string_view const name = takeField(properties);
        std::string_view const type = takeField(properties);
        std::optional<std::uint64_t> const count = toCount(takeField(properties));
        bool const isNumber = type == "R" || type == "I";
        if (name.empty() || !(isNumber || type == "S" || type == "L") || !count || *count == 0 ||
            *count > MOST_COMPONENTS || *count + columns.size() > MOST_COMPONENTS) {
            return std::nullopt;
        }
        std::string const key = lowerCase(name);
        bool const isVector = isNumber && *count == 3;
        bool const isPosition = isVector && !hasPositions && (key == "pos" || key == "position");
        hasPositions = hasPositions || isPosition;
        for (std::uint64_t i = 0; i < *count; ++i) {
            TableColumn column;
            column.name = componentName(name, i, *count);
            column.use = isPosition ? ColumnUse::POSITION : isNumber ? ColumnUse::NUMBER : ColumnUse::WORDS;
            column.axis = static_cast<unsigned int>(i % 3);
            column.isId = isNumber && *count == 1 && key == "id";
            columns.push_back(column);
        }
    }
    return hasPositions ? std::optional<std::vector<TableColumn>>(columns) : std::nullopt;
}

/// The columns of plain XYZ, as many as the first row has.
std::vector<TableColumn> plainColumns(std::string_view row) {
    std::string_view kind = row;
    bool const isNumbered = toDataNumber(takeWord(kind)).has_value();
    std::vector<TableColumn> columns;
    while (!takeWord(row).empty() && columns.size() < MOST_COMPONENTS) {
        columns.push_back(
            TableColumn{"column " + std::to_string(columns.size() + 1), ColumnUse::CHANNEL, 0, false, {}});
    }
    std::size_t const first = columns.size() == 3 ? 0 : 1;
    // Rows that are too short are found when they are read.
    columns.resize(std::max(columns.size(), first + 3));
    if (first == 1) {
        columns[0].name = isNumbered ? "type" : "element";
    }
    bool const hasVelocity = columns.size() == 7;
    for (unsigned int axis = 0; axis < 3; ++axis) {
        columns[first + axis].name = std::string(1, "xyz"[axis]);
        columns[first + axis].use = ColumnUse::POSITION;
        columns[first + axis].axis = axis;
        if (hasVelocity) {
            columns[4 + axis].name = std::string("v") + "xyz"[axis];
            columns[4 + axis].use = ColumnUse::NUMBER;
        }
    }
    return columns;
}

/// \return false where the text is not exactly nine numbers.
bool readLattice(std::string_view text, ParticleBox& box) {
    for (Vector3<double>& edge : box.edges) {
        for (double* const component : {&edge.x, &edge.y, &edge.z}) {
            std::optional<double> const number = toDataNumber(takeWord(text));
            if (!number) {
                return false;
            }
            *component = *number;
        }
    }
    return takeWord(text).empty();
}

/// "T F T", also as numbers or words; nothing for any other text.
std::optional<std::array<bool, 3>> toFlags(std::string_view text) {
    std::array<bool, 3> flags{};
    for (bool& flag : flags) {
        std::string const word = lowerCase(takeWord(text));
        flag = word == "t" || word == "true" || word == "1";
        if (!flag && word != "f" && word != "false" && word != "0") {
            return std::nullopt;
        }
    }
    return takeWord(text).empty() ? std::optional<std::array<bool, 3>>(flags) : std::nullopt;
}

Damage readComment(TextLines const& lines, std::string_view comment, FrameHead& head) {
    ParticleFrame& frame = head.frame;
    std::optional<Vector3<double>> origin;
    std::optional<std::array<bool, 3>> isPeriodic;
    for (Setting const& setting : settingsOf(comment)) {
        if (setting.key == "properties") {
            std::optional<std::vector<TableColumn>> const named = columnsOf(setting.value);
            if (!named) {
                return lines.damage("the properties " + inQuotes(setting.value) +
                                    " are not understood or lack pos:R:3");
            }
            head.columns = *named;
        } else if (setting.key == "lattice") {
            ParticleBox box;
            if (!readLattice(setting.value, box)) {
                return lines.damage("the lattice " + inQuotes(setting.value) + " is not nine numbers");
            }
            frame.box = box;
        } else if (setting.key == "origin") {
            std::string_view numbers = setting.value;
            std::optional<double> const x = toDataNumber(takeWord(numbers));
            std::optional<double> const y = toDataNumber(takeWord(numbers));
            std::optional<double> const z = toDataNumber(takeWord(numbers));
            if (!x || !y || !z) {
                return lines.damage("the origin " + inQuotes(setting.value) + " is not three numbers");
            }
            origin = Vector3<double>{*x, *y, *z};
        } else if (setting.key == "pbc") {
            isPeriodic = toFlags(setting.value);
        } else if (setting.key == "timestep" || setting.key == "step") {
            // A comment is free text: a step that is not a number is not damage.
            frame.timestep = toSignedInteger(setting.value).value_or(frame.timestep);
        } else if (setting.key == "time") {
            frame.time = toDataNumber(setting.value);
        }
    }
    if (frame.box && origin) {
        frame.box->origin = *origin;
    }
    if (frame.box && isPeriodic) {
        frame.box->isPeriodic = *isPeriodic;
    }
    return std::nullopt;
}

Damage readHead(TextLines& lines, FrameHead& head) {
    std::string_view line = lines.take();
    std::string_view const word = takeWord(line);
    std::optional<std::uint64_t> const count = toCount(word);
    if (!count || !takeWord(line).empty()) {
        return lines.damage(inQuotes(word) + " is not a number of particles");
    }
    head.count = *count;
    if (lines.isAtEnd()) {
        return TextDamage{lines.number(), "the line of comment is missing", true};
    }
    std::string_view const comment = lines.take();
    if (Damage damage = readComment(lines, comment, head)) {
        return damage;
    }
    if (head.columns.empty()) {
        TextLines ahead = lines;
        head.columns = plainColumns(head.count > 0 ? ahead.take() : std::string_view());
    }
    return std::nullopt;
}

}  // namespace

Result<LoadedFrame> readXyz(std::string_view text, std::optional<std::size_t> frame,
                            Progress const& progress) {
    return readFrame(text, frame, readHead, progress);
}

LoadFrame openXyz(std::string_view text, ChooseValues const& choose) {
    return loaderOf(std::make_shared<FrameIndex>(text, readHead, choose));
}

LoadFrame openXyz(std::unique_ptr<GrowingText> text, ChooseValues const& choose) {
    return loaderOf(std::make_shared<FrameIndex>(std::move(text), readHead, choose));
}

}  // namespace vellum::viewport
