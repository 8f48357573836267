#include "viewport/files/particles/LammpsDump.h"

#include "viewport/files/particles/FrameLoop.h"
#include "viewport/files/particles/TableRows.h"
#include "viewport/text/Words.h"
#include "viewport/text/numbers.h"

#include <algorithm>

namespace vellum::viewport {

namespace {

constexpr std::string_view ITEM_MARK = "ITEM:";

using Damage = std::optional<TextDamage>;

/// The numbers of a line. \return were there `count` of them at least?
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

/// A box given by its limits; those of a tilted box are of the upright box around it.
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

class DumpReader {
public:
    DumpReader(std::string_view text, ParticleProgress const& progress) : lines(text), progress(progress) {}

    Result<ParticleFrames> read() {
        return readFrames(lines, [this](ParticleFrame& frame) { return _readFrame(frame); });
    }

private:
    /// Reads the items of a frame, the last of which is its rows.
    Damage _readFrame(ParticleFrame& frame) {
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
                damage = _readTimestep(frame);
                hasTimestep = true;
            } else if (item == "NUMBER") {
                damage = _readCount(count);
            } else if (item == "BOX") {
                damage = _readBox(words, frame);
            } else if (item == "TIME") {
                damage = _readTime(frame);
            } else if (item == "UNITS") {
                damage = lines.isAtEnd() ? _endDamage() : Damage();
                lines.take();
            } else if (item == "ATOMS") {
                if (!hasTimestep || !count) {
                    return lines.damage(hasTimestep ? "the frame's number of atoms is missing"
                                                    : "the frame's time step is missing");
                }
                return _readRows(words, *count, frame);
            } else {
                return lines.damage(quoted(line) + " is not understood");
            }
            if (damage) {
                return damage;
            }
        }
    }

    Damage _endDamage() const {
        return TextDamage{lines.number(), "the text ends within the frame's head", true};
    }

    Damage _readTimestep(ParticleFrame& frame) {
        if (lines.isAtEnd()) {
            return _endDamage();
        }
        std::string_view line = lines.take();
        std::string_view const word = takeWord(line);
        std::optional<std::int64_t> const step = toSignedInteger(word);
        if (!step || !takeWord(line).empty()) {
            return lines.damage(quoted(word) + " is not a time step");
        }
        frame.timestep = *step;
        return std::nullopt;
    }

    Damage _readTime(ParticleFrame& frame) {
        if (lines.isAtEnd()) {
            return _endDamage();
        }
        std::string_view line = lines.take();
        std::string_view const word = takeWord(line);
        frame.time = toDataNumber(word);
        return frame.time ? Damage() : lines.damage(quoted(word) + " is not a time");
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

    /// Reads the box, whose item names what its lines give: "abc" for edges and a corner, "xy" for tilts.
    Damage _readBox(std::string_view words, ParticleFrame& frame) {
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
            frame.box = boxOf(rows);
            return std::nullopt;
        }
        frame.box = ParticleBox{{rows[0][3], rows[1][3], rows[2][3]}, {}};
        for (std::size_t i = 0; i < 3; ++i) {
            frame.box->edges[i] = {rows[i][0], rows[i][1], rows[i][2]};
        }
        return std::nullopt;
    }

    Damage _readRows(std::string_view names, std::uint64_t count, ParticleFrame& frame) {
        std::vector<TableColumn> columns;
        for (std::string_view name = takeWord(names); !name.empty(); name = takeWord(names)) {
            columns.push_back(TableColumn{std::string(name), ColumnUse::CHANNEL, 0, name == "id"});
        }
        bool isScaled = false;
        if (!useColumns(columns, {"x", "y", "z"}, ColumnUse::POSITION) &&
            !useColumns(columns, {"xu", "yu", "zu"}, ColumnUse::POSITION)) {
            isScaled = useColumns(columns, {"xs", "ys", "zs"}, ColumnUse::POSITION) ||
                       useColumns(columns, {"xsu", "ysu", "zsu"}, ColumnUse::POSITION);
            if (!isScaled) {
                return lines.damage("no columns give positions: x y z, xu yu zu, xs ys zs or xsu ysu zsu");
            }
        }
        if (isScaled && !frame.box) {
            return lines.damage("the positions are scaled, and the frame has no box");
        }
        useColumns(columns, {"vx", "vy", "vz"}, ColumnUse::VELOCITY);

        TableRows rows(columns, ' ');
        rows.tell(progress);
        if (isScaled) {
            rows.placeInto(*frame.box);
        }
        Damage damage = rows.read(lines, count, frame);
        if (damage && rows.damagedLine().substr(0, ITEM_MARK.size()) == ITEM_MARK) {
            damage->reason =
                "the frame has fewer than the " + std::to_string(count) + " atoms that it declares";
        }
        return damage;
    }

    TextLines lines;
    ParticleProgress const& progress;
};

}  // namespace

Result<ParticleFrames> readLammpsDump(std::string_view text, ParticleProgress const& progress) {
    return DumpReader(text, progress).read();
}

}  // namespace vellum::viewport
