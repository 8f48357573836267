#include "viewport/files/particles/ObjPoints.h"

#include "viewport/files/particles/FrameBuilder.h"
#include "viewport/files/particles/FrameIndex.h"
#include "viewport/text/TextLines.h"
#include "viewport/text/Words.h"
#include "viewport/text/numbers.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

namespace {

constexpr std::uint64_t ROWS_BETWEEN_PROGRESS = 4096;

/// Lines may be indented.
std::string_view withoutIndent(std::string_view line) {
    return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

/// \param line without its indent
bool isVertex(std::string_view line) {
    return line.size() > 1 && line[0] == 'v' && (line[1] == ' ' || line[1] == '\t');
}

bool isOfMesh(std::string_view line) {
    line = withoutIndent(line);
    constexpr std::string_view KEYWORDS[] = {"f", "l", "curv", "curv2", "surf"};
    if (line.empty() || (line[0] != 'f' && line[0] != 'l' && line[0] != 'c' && line[0] != 's')) {
        return false;
    }
    std::string_view const keyword = takeWord(line);
    return std::find(std::begin(KEYWORDS), std::end(KEYWORDS), keyword) != std::end(KEYWORDS);
}

bool hasLineOfMesh(std::string_view text) {
    TextLines lines(text);
    while (!lines.isAtEnd()) {
        if (isOfMesh(lines.take())) {
            return true;
        }
    }
    return false;
}

/// The numbers of a vertex; empty where some word is none.
std::vector<double> numbersOf(std::string_view line) {
    std::vector<double> numbers;
    line.remove_prefix(1);
    for (std::string_view word = takeWord(line); !word.empty() && word[0] != '#'; word = takeWord(line)) {
        std::optional<double> const number = toDataNumber(word);
        if (!number) {
            return {};
        }
        numbers.push_back(*number);
    }
    return numbers;
}

std::vector<TableColumn> columnsOf(std::size_t count) {
    std::vector<TableColumn> columns;
    for (unsigned int axis = 0; axis < 3; ++axis) {
        columns.push_back(TableColumn{std::string(1, "xyz"[axis]), ColumnUse::POSITION, axis, false, {}});
    }
    std::string_view const more = count == 4 ? "w" : std::string_view("rgba").substr(0, count - 3);
    for (char const name : more) {
        columns.push_back(TableColumn{std::string(1, name), ColumnUse::NUMBER, 0, false, {}});
    }
    return columns;
}

}  // namespace

bool isObjOfPoints(std::string_view text) {
    constexpr std::string_view KEYWORDS[] = {"v", "vn", "vt", "vp", "o", "g", "s", "mtllib", "usemtl", "p"};
    TextLines lines(text);
    bool isObj = false;
    // Keywords up to the first vertex show that it is OBJ.
    while (!lines.isAtEnd() && !isObj) {
        std::string_view line = withoutIndent(lines.take());
        isObj = isVertex(line) && numbersOf(line).size() >= 3;
        std::string_view const keyword = takeWord(line);
        bool const isKnown =
            keyword.empty() || keyword[0] == '#' ||
            std::find(std::begin(KEYWORDS), std::end(KEYWORDS), keyword) != std::end(KEYWORDS);
        if (!isObj && (!isKnown || keyword == "v")) {
            return false;
        }
    }
    // Faces mostly end a file: its last lines tell those of meshes apart without a search through all
    // vertices.
    constexpr std::size_t END_SIZE = std::size_t(1) << 16;
    std::string_view end = text.substr(text.size() - std::min(text.size(), END_SIZE));
    if (end.size() < text.size()) {
        end.remove_prefix(std::min(end.find('\n'), end.size() - 1) + 1);
    }
    return isObj && !hasLineOfMesh(end) && !hasLineOfMesh(text);
}

Result<LoadedFrame> readObjPoints(std::string_view text, Progress const& progress) {
    if (hasLineOfMesh(text)) {
        return Fault{{}, "has faces, lines or curves: it is a mesh, not particles"};
    }
    TextLines lines(text);
    LoadedFrame result;
    std::optional<FrameBuilder> builder;
    for (std::uint64_t row = 0; !lines.isAtEnd();) {
        std::string_view const line = withoutIndent(lines.take());
        if (!isVertex(line)) {
            continue;
        }
        std::vector<double> const numbers = numbersOf(line);
        if (!builder) {
            if (numbers.size() < 3 || numbers.size() == 5 || numbers.size() > 7) {
                return Fault{
                    {},
                    lines.damage("a vertex has three numbers, and perhaps a weight or a color").message()};
            }
            builder.emplace(columnsOf(numbers.size()),
                            static_cast<std::size_t>(text.size() / (line.size() + 1)), result.frame);
        }
        if (numbers.size() != builder->values().size()) {
            return Fault{{},
                         lines
                             .damage("the vertex does not have the " +
                                     std::to_string(builder->values().size()) +
                                     " numbers that the first one has")
                             .message()};
        }
        builder->values() = numbers;
        static_cast<void>(builder->addRow());
        if (progress && row++ % ROWS_BETWEEN_PROGRESS == 0) {
            progress(lines.done(), lines.done() + lines.left());
        }
    }
    if (!builder) {
        return Fault{{}, "has no vertices"};
    }
    builder->finish();
    result.warning = lastLineWarning(lines);
    return result;
}

}  // namespace vellum::viewport
