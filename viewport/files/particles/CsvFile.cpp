#include "viewport/files/particles/CsvFile.h"

#include "viewport/files/particles/FrameIndex.h"
#include "viewport/files/particles/TableRows.h"
#include "viewport/text/Words.h"
#include "viewport/text/bare_name.h"

#include <algorithm>
#include <array>

namespace vellum::viewport {

namespace {

/// Judged by the line of names alone: a name rarely holds a separator, whereas values may have decimal
/// commas.
char separatorOf(std::string_view names) {
    char best = ' ';
    std::ptrdiff_t most = 0;
    for (char candidate : {',', ';', '\t'}) {
        std::ptrdiff_t const count = std::count(names.begin(), names.end(), candidate);
        if (count > most) {
            best = candidate;
            most = count;
        }
    }
    return best;
}

std::vector<std::string_view> namesOf(std::string_view line, char separator) {
    std::vector<std::string_view> names;
    if (separator == ' ') {
        for (std::string_view word = takeWord(line); !word.empty(); word = takeWord(line)) {
            bool const isUnit = word.front() == '(' || word.front() == '[';
            if (isUnit && !names.empty()) {
                char const* const start = names.back().data();
                names.back() = {start, static_cast<std::size_t>(word.data() + word.size() - start)};
            } else {
                names.push_back(word);
            }
        }
        return names;
    }
    while (true) {
        line.remove_prefix(std::min(line.find_first_not_of(" \r"), line.size()));
        std::size_t end = 0;
        if (!line.empty() && line.front() == '"') {
            line.remove_prefix(1);
            end = std::min(line.find('"'), line.size());
            names.push_back(line.substr(0, end));
            end = line.find(separator, end);
        } else {
            end = line.find(separator);
            names.push_back(trimmed(line.substr(0, end)));
        }
        if (end == std::string_view::npos) {
            return names;
        }
        line.remove_prefix(end + 1);
    }
}

struct Title {
    std::string_view name;
    std::string_view unit;  // may be empty
};

/// "Temperature (K)" is a name and a unit. Numbers and axes in parentheses are parts of the name.
Title titleOf(std::string_view text) {
    char const closing = text.empty() ? ' ' : text.back();
    std::size_t const open = closing == ')'   ? text.rfind('(')
                             : closing == ']' ? text.rfind('[')
                                              : std::string_view::npos;
    if (open == std::string_view::npos || open == 0) {
        return {text, {}};
    }
    std::string_view const unit = trimmed(text.substr(open + 1, text.size() - open - 2));
    std::string_view const name = trimmed(text.substr(0, open));
    bool const isIndex = unit.find_first_not_of("0123456789") == std::string_view::npos;
    bool const isAxis = unit.size() == 1 && std::string_view("xyzXYZ").find(unit) != std::string_view::npos;
    return isIndex || isAxis || name.empty() ? Title{text, {}} : Title{name, unit};
}

struct Heading {
    std::vector<TableColumn> columns;
    char separator = ',';
    bool hasPositions = false;
};

Heading headingOf(std::string_view line) {
    // Spreadsheets begin a file with a byte order mark, numerical tools mark the line of names as a comment.
    constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
    if (line.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK) {
        line.remove_prefix(BYTE_ORDER_MARK.size());
    }
    line = trimmed(line);
    if (!line.empty() && line.front() == '#') {
        line.remove_prefix(1);
    }
    Heading heading;
    heading.separator = separatorOf(line);
    std::vector<std::string_view> names = namesOf(line, heading.separator);
    for (std::string_view& name : names) {
        Title const title = titleOf(name);
        name = title.name;
        heading.columns.push_back(
            TableColumn{bareName(name), ColumnUse::CHANNEL, 0, false, std::string(title.unit)});
        heading.columns.back().isId = heading.columns.back().name == "id";
    }
    for (auto const& axes : {std::array<std::string_view, 3>{"x", "y", "z"},
                             {"positionx", "positiony", "positionz"},
                             {"posx", "posy", "posz"},
                             {"position0", "position1", "position2"},
                             {"points0", "points1", "points2"}}) {
        if (useColumns(heading.columns, {axes[0], axes[1], axes[2]}, ColumnUse::POSITION)) {
            heading.hasPositions = true;
            break;
        }
    }
    // The bare names were for finding columns; users see and type the names of the file.
    for (std::size_t i = 0; i < names.size(); ++i) {
        heading.columns[i].name = std::string(names[i]);
    }
    return heading;
}

}  // namespace

bool isCsvOfParticles(std::string_view text) {
    TextLines lines(text);
    lines.skipEmpty();
    return headingOf(lines.take()).hasPositions;
}

Result<LoadedFrame> readCsv(std::string_view text, Progress const& progress) {
    TextLines lines(text);
    lines.skipEmpty();
    Heading const heading = headingOf(lines.take());
    if (!heading.hasPositions) {
        return Fault{{}, lines.damage("no columns x, y and z are named").message()};
    }
    TableRows rows(heading.columns, heading.separator);
    rows.allowMissing();
    rows.report(progress);
    LoadedFrame result;
    if (std::optional<TextDamage> const damage = rows.read(lines, std::nullopt, result.frame)) {
        return Fault{{}, damage->message()};
    }
    result.warning = lastLineWarning(lines);
    return result;
}

}  // namespace vellum::viewport
