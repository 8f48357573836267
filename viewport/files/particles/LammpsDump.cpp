#include "viewport/files/particles/LammpsDump.h"

#include "viewport/files/particles/FrameIndex.h"
#include "viewport/text/Words.h"
#include "viewport/text/numbers.h"

#include <algorithm>

namespace vellum::viewport {

namespace {

constexpr std::string_view ITEM_MARK = "ITEM:";

using Damage = std::optional<TextDamage>;

/// \return false where the line begins with fewer than `count` numbers.
bool takeNumbers(std::string_view line, double* const& numbers, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        std::optional<double> const number = toDataNumber(takeWord(line));
        if (!number) {
            return false;
        }
        numbers[i] = *number;
    }
    return true;
}

/// The limits of a tilted box are those of the upright box around it, so the tilts are taken off again.
ParticleBox boxOf(double const (&rows)[3][4]) {
    double const xy = rows[0][2];
    double const xz = rows[1][2];
    double const yz = rows[2][2];
    double const left = rows[0][0] - std::min({0.0, xy, xz, xy + xz});
    double const right = rows[0][1] - std::max({0.0, xy, xz, xy + xz});
    double const front = rows[1][0] - std::min(0.0, yz);
    double const back = rows[1][1] - std::max(0.0, yz);
    ParticleBox box;
    box.origin = {left, front, rows[2][0]};
    box.edges[0] = {right - left, 0, 0};
    box.edges[1] = {xy, back - front, 0};
    box.edges[2] = {xz, yz, rows[2][1] - rows[2][0]};
    return box;
}

/// Reads the head of one frame: its items up to the line that names the columns.
class HeadReader {
public:
    HeadReader(TextLines& lines, FrameHead& head) : lines(lines), head(head) {}

    Damage read() {
        std::optional<std::uint64_t> count;
        bool hasTimestep = false;
        while (true) {
            lines.skipEmpty();
            if (lines.isAtEnd()) {
                return _endDamage();
            }
            std::string_view const line = lines.take();
            if (line.substr(0, ITEM_MARK.size()) != ITEM_MARK) {
                return lines.damage("'ITEM:' is expected in place of " + quoted(line));
            }
            std::string_view words = line.substr(ITEM_MARK.size());
            std::string_view const item = takeWord(words);
            Damage damage;
            if (item == "TIMESTEP") {
                damage = _readTimestep();
                hasTimestep = true;
            } else if (item == "NUMBER") {
                damage = _readCount(count);
            } else if (item == "BOX") {
                damage = _readBox(words);
            } else if (item == "TIME") {
                damage = _readTime();
            } else if (item == "UNITS") {
                damage = lines.isAtEnd() ? _endDamage() : Damage();
                lines.take();
            } else if (item == "ATOMS") {
                if (!hasTimestep || !count) {
                    return lines.damage(hasTimestep ? "the frame's number of atoms is missing"
                                                    : "the frame's time step is missing");
                }
                head.count = *count;
                return _readColumns(words);
            } else {
                return lines.damage(quoted(line) + " is not understood");
            }
            if (damage) {
                return damage;
            }
        }
    }

private:
    Damage _endDamage() const {
        return TextDamage{lines.number(), "the text ends within the frame's head", true};
    }

    Damage _readTimestep() {
        if (lines.isAtEnd()) {
            return _endDamage();
        }
        std::string_view line = lines.take();
        std::string_view const word = takeWord(line);
        std::optional<std::int64_t> const step = toSignedInteger(word);
        if (!step || !takeWord(line).empty()) {
            return lines.damage(quoted(word) + " is not a time step");
        }
        head.frame.timestep = *step;
        return std::nullopt;
    }

    Damage _readTime() {
        if (lines.isAtEnd()) {
            return _endDamage();
        }
        std::string_view line = lines.take();
        std::string_view const word = takeWord(line);
        head.frame.time = toDataNumber(word);
        return head.frame.time ? Damage() : lines.damage(quoted(word) + " is not a time");
    }

    Damage _readCount(std::optional<std::uint64_t>& count) {
        if (lines.isAtEnd()) {
            return _endDamage();
        }
        std::string_view line = lines.take();
        std::string_view const word = takeWord(line);
        count = toCount(word);
        if (!count || !takeWord(line).empty()) {
            return lines.damage(quoted(word) + " is not a number of atoms");
        }
        return std::nullopt;
    }

    /// The item names the content of the three lines: "abc" edges and a corner, "xy" limits and tilts, else
    /// limits.
    Damage _readBox(std::string_view words) {
        takeWord(words);  // "BOUNDS"
        std::string_view const kind = takeWord(words);
        bool const isGeneral = kind == "abc";
        std::size_t const count = isGeneral ? 4 : kind == "xy" ? 3 : 2;
        double rows[3][4] = {};
        for (auto& row : rows) {
            if (lines.isAtEnd()) {
                return _endDamage();
            }
            std::string_view const line = lines.take();
            if (!takeNumbers(line, row, count)) {
                return lines.damage(quoted(line) + " are not the " + std::to_string(count) +
                                    " numbers of the box's limits");
            }
        }
        if (!isGeneral) {
            head.frame.box = boxOf(rows);
            return std::nullopt;
        }
        head.frame.box = ParticleBox{{rows[0][3], rows[1][3], rows[2][3]}, {}};
        for (std::size_t i = 0; i < 3; ++i) {
            head.frame.box->edges[i] = {rows[i][0], rows[i][1], rows[i][2]};
        }
        return std::nullopt;
    }

    Damage _readColumns(std::string_view names) {
        std::vector<TableColumn>& columns = head.columns;
        for (std::string_view name = takeWord(names); !name.empty(); name = takeWord(names)) {
            columns.push_back(TableColumn{std::string(name), ColumnUse::CHANNEL, 0, name == "id", {}});
        }
        if (!useColumns(columns, {"x", "y", "z"}, ColumnUse::POSITION) &&
            !useColumns(columns, {"xu", "yu", "zu"}, ColumnUse::POSITION)) {
            head.isScaled = useColumns(columns, {"xs", "ys", "zs"}, ColumnUse::POSITION) ||
                            useColumns(columns, {"xsu", "ysu", "zsu"}, ColumnUse::POSITION);
            if (!head.isScaled) {
                return lines.damage("no columns give positions: x y z, xu yu zu, xs ys zs or xsu ysu zsu");
            }
        }
        if (head.isScaled && !head.frame.box) {
            return lines.damage("the positions are scaled, and the frame has no box");
        }
        head.nextFrameMark = ITEM_MARK;
        return std::nullopt;
    }

    TextLines& lines;
    FrameHead& head;
};

}  // namespace

Result<LoadedFrame> readLammpsDump(std::string_view text, std::optional<std::size_t> frame,
                                   Progress const& progress) {
    auto const readHead = [](TextLines& lines, FrameHead& head) { return HeadReader(lines, head).read(); };
    return readFrame(text, frame, readHead, progress);
}

}  // namespace vellum::viewport
