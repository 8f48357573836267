#include "viewport/files/particles/TableRows.h"

#include "viewport/text/data_numbers.h"
#include "viewport/text/lower_case.h"
#include "viewport/text/numbers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace vellum::viewport {

namespace {

constexpr std::uint64_t ROWS_BETWEEN_PROGRESS = 4096;

bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\r';
}

char const* skipBlanks(char const* here, char const* const& end) {
    while (here != end && isBlank(*here)) {
        ++here;
    }
    return here;
}

bool isMissingWord(std::string_view word) {
    std::string const lower = lowerCase(word);
    return lower == "na" || lower == "n/a" || lower == "null" || lower == "-";
}

bool hasNoNumber(ParticleChannel const& channel) {
    return std::all_of(channel.values.begin(), channel.values.end(),
                       [](double value) { return std::isnan(value); });
}

}  // namespace

std::optional<TextDamage> TableRows::read(TextLines& lines, std::optional<std::uint64_t> const& count,
                                          ParticleFrame& frame) {
    TextLines const start = lines;
    std::optional<TextDamage> damage = _read(lines, count, frame);
    // Once for each column at most.
    while (damage && _becomesWords(frame)) {
        lines = start;
        damage = _read(lines, count, frame);
    }
    return damage;
}

std::optional<TextDamage> TableRows::_read(TextLines& lines, std::optional<std::uint64_t> const& count,
                                           ParticleFrame& frame) {
    bool const skipsEmpty = separator != ' ';
    failedColumn.reset();
    std::uint64_t const expectedRows = _expectedRows(lines, count);
    std::optional<FrameBuilder> builder;
    for (std::uint64_t row = 0; !count || row < *count; ++row) {
        if (skipsEmpty || !count) {
            lines.skipEmpty();
        }
        if (lines.isAtEnd()) {
            if (!count) {
                break;
            }
            return TextDamage{lines.number(),
                              "the text ends after " + std::to_string(row) + " of " + std::to_string(*count) +
                                  " particles",
                              true};
        }
        line = lines.take();
        if (commentMark != '\0') {
            line = line.substr(0, line.find(commentMark));
        }
        if (!builder) {
            _findTexts();
            builder.emplace(columns, static_cast<std::size_t>(expectedRows), frame);
            if (box) {
                builder->placeInto(*box);
            }
        }
        if (!_readRow(*builder)) {
            bool const isNextFrame = !mark.empty() && line.substr(0, mark.size()) == mark;
            return lines.damage(isNextFrame
                                    ? "the frame has fewer than the " + std::to_string(count.value_or(row)) +
                                          " atoms that it declares"
                                    : reason);
        }
        if (!builder->addRow()) {
            return lines.damage("the particle's id is not a whole number");
        }
        if (progress && row % ROWS_BETWEEN_PROGRESS == 0) {
            progress(lines.done(), lines.done() + lines.left());
        }
    }
    if (!builder) {
        builder.emplace(columns, 0, frame);
    }
    builder->finish();
    return std::nullopt;
}

/// No more rows than the text can hold. Memory that is reserved and not used takes none.
std::uint64_t TableRows::_expectedRows(TextLines const& lines,
                                       std::optional<std::uint64_t> const& count) const {
    // A value and its separator need two bytes at least; the last line may lack its end.
    std::uint64_t const possible = (lines.left() + 1) / (2 * std::max<std::size_t>(columns.size(), 1));
    if (count) {
        return std::min(*count, possible);
    }
    TextLines ahead = lines;
    std::uint64_t const bytesPerRow = ahead.take().size() + 1;
    return std::min(lines.left() / bytesPerRow * 5 / 4, possible);
}

bool TableRows::skip(TextLines& lines, std::uint64_t count) const {
    TextLines ahead = lines;
    for (std::uint64_t row = 0; row < count; ++row) {
        std::string_view const skipped = ahead.take();
        if (!ahead.isEnded() || (!mark.empty() && skipped.substr(0, mark.size()) == mark)) {
            return false;
        }
        if (progress && row % ROWS_BETWEEN_PROGRESS == 0) {
            progress(ahead.done(), ahead.done() + ahead.left());
        }
    }
    lines = ahead;
    return true;
}

void TableRows::_findTexts() {
    char const* here = line.data();
    char const* const end = here + line.size();
    double value = 0.0;
    std::string_view word;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        char const* const start = here;
        if (!_readCell(i, here, end, value, word) && columns[i].use == ColumnUse::CHANNEL) {
            columns[i].use = ColumnUse::WORDS;
            here = start;
            static_cast<void>(_readCell(i, here, end, value, word));
        }
        if (separator != ' ' && here != end) {
            ++here;
        }
    }
    isNumber.clear();
    for (TableColumn const& column : columns) {
        isNumber.push_back(column.use == ColumnUse::IGNORED || column.use == ColumnUse::WORDS ? 0 : 1);
    }
}

bool TableRows::_readRow(FrameBuilder& builder) {
    double* const values = builder.values().data();
    bool const isSeparated = separator != ' ';
    std::string_view word;
    char const* here = line.data();
    char const* const end = here + line.size();
    std::size_t const count = columns.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0 && isSeparated) {
            if (here == end) {
                return _fail("has " + std::to_string(i) + " of " + std::to_string(count) + " values");
            }
            ++here;
        }
        if (isNumber[i] != 0) {
            // Nearly all cells are plain numbers between two separators.
            char const* const start = !isSeparated && here != end && isBlank(*here) ? here + 1 : here;
            char const* const numberEnd = takeShortNumber(start, end, values[i]);
            if (numberEnd != nullptr &&
                (numberEnd == end || *numberEnd == separator || (!isSeparated && isBlank(*numberEnd)))) {
                here = numberEnd;
                continue;
            }
        } else if (!isSeparated && columns[i].use == ColumnUse::WORDS) {
            here = skipBlanks(here, end);
            char const* const start = here;
            while (here != end && !isBlank(*here)) {
                ++here;
            }
            if (here != start) {
                builder.setWord(i, std::string_view(start, static_cast<std::size_t>(here - start)));
                continue;
            }
        }
        if (!_readCell(i, here, end, values[i], word)) {
            return false;
        }
        if (columns[i].use == ColumnUse::WORDS) {
            builder.setWord(i, word);
        }
    }
    if (here != end && skipBlanks(here, end) != end) {
        return _fail("has more than " + std::to_string(count) + " values");
    }
    return true;
}

/// Leaves `here` at the separator behind the cell or at the end of the line.
bool TableRows::_readCell(std::size_t column, char const*& here, char const* end, double& value,
                          std::string_view& word) {
    // A tabulator may be the separator; then it is not a blank.
    while (here != end && isBlank(*here) && !(separator != ' ' && *here == separator)) {
        ++here;
    }
    if (!_takeWord(column, here, end, word)) {
        return false;
    }
    ColumnUse const use = columns[column].use;
    return use == ColumnUse::IGNORED || use == ColumnUse::WORDS || _toNumber(column, word, value);
}

bool TableRows::_takeWord(std::size_t column, char const*& here, char const* end, std::string_view& word) {
    char const* const start = here;
    if (separator == ' ') {
        here = std::find_if(start, end, isBlank);
        word = std::string_view(start, static_cast<std::size_t>(here - start));
        return !word.empty() ||
               _fail("has " + std::to_string(column) + " of " + std::to_string(columns.size()) + " values");
    }
    if (here != end && *here == '"') {
        // Two quotes within the quotes stand for one.
        char const* closing = std::find(start + 1, end, '"');
        while (end - closing > 1 && closing[1] == '"') {
            closing = std::find(closing + 2, end, '"');
        }
        if (closing == end) {
            return _fail("has a quote that is not closed");
        }
        word = std::string_view(start + 1, static_cast<std::size_t>(closing - start - 1));
        char const* const behind = closing + 1;
        here = std::find(behind, end, separator);
        return std::all_of(behind, here, isBlank) || _fail("has text behind the quotes of " + quoted(word));
    }
    here = std::find(start, end, separator);
    word = std::string_view(start, static_cast<std::size_t>(here - start));
    while (!word.empty() && isBlank(word.back())) {
        word.remove_suffix(1);
    }
    return true;
}

bool TableRows::_toNumber(std::size_t column, std::string_view word, double& value) {
    if (std::optional<double> const number = toDataNumber(word)) {
        value = *number;
        return true;
    }
    bool const isPosition = columns[column].use == ColumnUse::POSITION;
    bool const isMissing = word.empty() ? !isPosition : isMissingAllowed && isMissingWord(word);
    if (isMissing && !columns[column].isId) {
        value = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    failedColumn = column;
    return _fail(quoted(word) + " in column " + quoted(columns[column].name) + " is not a number");
}

/// Whether the column of the damaged line had no number so far. Then its cells are words, and so are those of
/// all other columns for which the line shows the same: a table of many columns is not read once for each.
bool TableRows::_becomesWords(ParticleFrame const& frame) {
    if (!isMissingAllowed || !failedColumn) {
        return false;
    }
    std::size_t const failed = *failedColumn;
    std::vector<std::size_t> found;
    std::size_t channel = 0;
    char const* here = line.data();
    char const* const end = here + line.size();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        double value = 0;
        std::string_view word;
        bool const isNumber = _readCell(i, here, end, value, word);
        if (separator != ' ') {
            here = std::find(here, end, separator);
            here += here != end ? 1 : 0;
        }
        bool const isChannel = columns[i].use == ColumnUse::CHANNEL || columns[i].use == ColumnUse::NUMBER;
        if (columns[i].use == ColumnUse::CHANNEL && !isNumber && hasNoNumber(frame.channels[channel])) {
            found.push_back(i);
        }
        channel += isChannel ? 1 : 0;
    }
    if (std::find(found.begin(), found.end(), failed) == found.end()) {
        return false;
    }
    for (std::size_t const column : found) {
        columns[column].use = ColumnUse::WORDS;
    }
    return true;
}

bool TableRows::_fail(std::string const& reason) {
    this->reason = reason;
    return false;
}

}  // namespace vellum::viewport
