#include "viewport/files/particles/TableRows.h"

#include "viewport/text/data_numbers.h"
#include "viewport/text/numbers.h"

#include <algorithm>
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

}  // namespace

std::optional<TextDamage> TableRows::read(TextLines& lines, std::optional<std::uint64_t> const& count,
                                          ParticleFrame& frame) {
    bool const skipsEmpty = separator != ' ';
    // A value and its separator need two bytes at least; the last line may lack its end.
    std::uint64_t const possibleRows = (lines.left() + 1) / (2 * std::max<std::size_t>(columns.size(), 1));
    std::uint64_t const expectedRows = std::min(count.value_or(0), possibleRows);
    std::optional<FrameBuilder> builder;
    for (std::uint64_t row = 0; !count || row < *count; ++row) {
        if (skipsEmpty) {
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
        bool const isOptional = columns[i].use == ColumnUse::CHANNEL;
        if (!_readValue(i, here, end, value, word) && isOptional) {
            columns[i].use = ColumnUse::WORDS;
            here = start;
            static_cast<void>(_readValue(i, here, end, value, word));
        }
        if (separator != ' ' && here != end) {
            ++here;
        }
    }
}

bool TableRows::_readRow(FrameBuilder& builder) {
    double* const values = builder.values().data();
    std::string_view word;
    char const* here = line.data();
    char const* const end = here + line.size();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (i > 0 && separator != ' ') {
            if (here == end) {
                return _fail("has " + std::to_string(i) + " of " + std::to_string(columns.size()) +
                             " values");
            }
            ++here;
        }
        if (!_readValue(i, here, end, values[i], word)) {
            return false;
        }
        if (columns[i].use == ColumnUse::WORDS) {
            builder.setWord(i, word);
        }
    }
    if (skipBlanks(here, end) != end) {
        return _fail("has more than " + std::to_string(columns.size()) + " values");
    }
    return true;
}

/// Leaves `here` at the separator behind the value or at the end of the line.
bool TableRows::_readValue(std::size_t column, char const*& here, char const* const& end, double& value,
                           std::string_view& word) {
    bool const isSeparated = separator != ' ';
    ColumnUse const use = columns[column].use;
    bool const isNeeded = use != ColumnUse::IGNORED && use != ColumnUse::WORDS;
    // A tabulator may be the separator; then it is not a blank.
    while (here != end && isBlank(*here) && !(isSeparated && *here == separator)) {
        ++here;
    }
    if (isNeeded) {
        char const* numberEnd = takeDataNumber(here, end, value);
        if (numberEnd != nullptr) {
            if (isSeparated) {
                while (numberEnd != end && isBlank(*numberEnd) && *numberEnd != separator) {
                    ++numberEnd;
                }
            }
            if (numberEnd == end || (isSeparated ? *numberEnd == separator : isBlank(*numberEnd))) {
                here = numberEnd;
                return true;
            }
        }
    }

    // Not a plain number: a text, a value in quotes, or an empty cell.
    char const* const start = here;
    if (isSeparated && here != end && *here == '"') {
        char const* const closing = std::find(start + 1, end, '"');
        word = std::string_view(start + 1, static_cast<std::size_t>(closing - start - 1));
        here = std::find(closing, end, separator);
    } else {
        here = isSeparated ? std::find(start, end, separator) : std::find_if(start, end, isBlank);
        word = std::string_view(start, static_cast<std::size_t>(here - start));
        while (!word.empty() && isBlank(word.back())) {
            word.remove_suffix(1);
        }
        if (word.empty() && !isSeparated) {
            return _fail("has " + std::to_string(column) + " of " + std::to_string(columns.size()) +
                         " values");
        }
    }
    if (!isNeeded) {
        return true;
    }
    if (word.empty() && (use == ColumnUse::CHANNEL || use == ColumnUse::NUMBER) && !columns[column].isId) {
        value = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    if (std::optional<double> const number = toDataNumber(word)) {
        value = *number;
        return true;
    }
    return _fail(quoted(word) + " in column " + quoted(columns[column].name) + " is not a number");
}

bool TableRows::_fail(std::string const& reason) {
    this->reason = reason;
    return false;
}

}  // namespace vellum::viewport
