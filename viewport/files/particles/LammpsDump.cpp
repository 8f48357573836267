#include "viewport/files/particles/LammpsDump.h"

#include "viewport/files/particles/LammpsColumns.h"
#include "viewport/text/Words.h"
#include "viewport/text/numbers.h"

#include <memory>
#include <string>
#include <utility>

namespace vellum::viewport {

namespace {

constexpr std::string_view ITEM_MARK = "ITEM:";

using Damage = std::optional<TextDamage>;

/// \return false where the line does not consist of `count` numbers.
bool takeNumbers(std::string_view line, double* const& numbers, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        std::optional<double> const number = toDataNumber(takeWord(line));
        if (!number) {
            return false;
        }
        numbers[i] = *number;
    }
    return takeWord(line).empty();
}

/// Reads the head of one frame: its items up to the line that names the columns.
class HeadReader {
public:
    /// \param units the unit style, which the first frame alone names
    HeadReader(TextLines& lines, FrameHead& head, std::string& units)
        : lines(lines), head(head), units(units) {}

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
                return lines.damage("'ITEM:' is expected in place of " + inQuotes(line));
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
                damage = _readUnits();
            } else if (item == "ATOMS") {
                if (!hasTimestep || !count) {
                    return lines.damage(hasTimestep ? "the frame's number of atoms is missing"
                                                    : "the frame's time step is missing");
                }
                head.count = *count;
                return _readColumns(words);
            } else {
                return lines.damage(inQuotes(line) + " is not understood");
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
            return lines.damage(inQuotes(word) + " is not a time step");
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
        bool const isTime = head.frame.time && takeWord(line).empty();
        return isTime ? Damage() : lines.damage(inQuotes(word) + " is not a time");
    }

    Damage _readUnits() {
        if (lines.isAtEnd()) {
            return _endDamage();
        }
        std::string_view line = lines.take();
        units = std::string(takeWord(line));
        return std::nullopt;
    }

    Damage _readCount(std::optional<std::uint64_t>& count) {
        if (lines.isAtEnd()) {
            return _endDamage();
        }
        std::string_view line = lines.take();
        std::string_view const word = takeWord(line);
        count = toCount(word);
        if (!count || !takeWord(line).empty()) {
            return lines.damage(inQuotes(word) + " is not a number of atoms");
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
        LammpsBounds bounds;
        for (auto& row : bounds.rows) {
            if (lines.isAtEnd()) {
                return _endDamage();
            }
            std::string_view const line = lines.take();
            if (!takeNumbers(line, row, count)) {
                return lines.damage(inQuotes(line) + " are not the " + std::to_string(count) +
                                    " numbers of the box's limits");
            }
        }
        head.frame.box = isGeneral ? bounds.general() : bounds.tilted();
        // "xy xz yz" and "abc origin" come before the kinds of the faces.
        std::string_view flags = kind;
        for (std::string_view word = kind; !word.empty() && !_isFaces(word); word = flags) {
            flags = takeWord(words);
        }
        for (std::size_t i = 0; i < 3 && _isFaces(flags); ++i, flags = takeWord(words)) {
            head.frame.box->isPeriodic[i] = flags[0] == 'p';
        }
        return std::nullopt;
    }

    /// "pp", "fs" and the like: the kinds of two faces.
    static bool _isFaces(std::string_view word) {
        return word.size() == 2 && word.find_first_not_of("pfsm") == std::string_view::npos;
    }

    Damage _readColumns(std::string_view names) {
        std::optional<LammpsColumns> columns = LammpsColumns::of(names, units);
        if (!columns) {
            return lines.damage(LammpsColumns::NO_POSITIONS);
        }
        if (columns->isScaled && !head.frame.box) {
            return lines.damage("the positions are scaled, and the frame has no box");
        }
        head.columns = std::move(columns->columns);
        head.isScaled = columns->isScaled;
        head.nextFrameMark = ITEM_MARK;
        return std::nullopt;
    }

    TextLines& lines;
    FrameHead& head;
    std::string& units;
};

ReadFrameHead headReader() {
    auto const units = std::make_shared<std::string>();
    return [units](TextLines& lines, FrameHead& head) { return HeadReader(lines, head, *units).read(); };
}

}  // namespace

Result<LoadedFrame> readLammpsDump(std::string_view text, std::optional<std::size_t> frame,
                                   Progress const& progress) {
    return openLammpsDump(text)(frame, progress);
}

LoadFrame openLammpsDump(std::string_view text, ChooseValues const& choose) {
    return loaderOf(std::make_shared<FrameIndex>(text, headReader(), choose));
}

LoadFrame openLammpsDump(std::unique_ptr<GrowingText> text, ChooseValues const& choose) {
    return loaderOf(std::make_shared<FrameIndex>(std::move(text), headReader(), choose));
}

}  // namespace vellum::viewport
