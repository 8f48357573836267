#include "viewport/files/particles/TableRows.h"

#include <algorithm>
#include <charconv>
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

/// The value of a number that no double holds: 0 or infinite.
double beyondDoubles(std::string_view word) {
    bool const isNegative = word.front() == '-';
    std::size_t const exponent = word.find_first_of("eE");
    bool const isSmall = exponent == std::string_view::npos
                             ? word.substr(isNegative ? 1 : 0, 1).find_first_of("0.") == 0
                             : word.substr(exponent + 1, 1) == "-";
    double const size = isSmall ? 0.0 : std::numeric_limits<double>::infinity();
    return isNegative ? -size : size;
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// Reads digits into an integer of decimal digits.
char const* takeDigits(char const* here, char const* const& end, std::uint64_t& digits) {
    for (; here != end && isDigit(*here); ++here) {
        digits = 10 * digits + static_cast<std::uint64_t>(*here - '0');
    }
    return here;
}

/// Reads a number as simulations write them: a few digits, perhaps with a point among them and an exponent.
/// \return its end, or null where it is of another kind.
///
/// The digits form an integer that a double holds exactly, and so are the powers of ten up to the 22nd: one product or
/// quotient of the two is the nearest double, which std::from_chars takes longer to find.
char const* takeShortNumber(char const* here, char const* const& end, double& value) {
    constexpr double powersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                      1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr int largestPower = 22;
    constexpr std::ptrdiff_t mostDigits = 15;  // every number of so many digits is below 2^53
    constexpr std::ptrdiff_t mostExponentDigits = 4;

    bool const isNegative = here != end && *here == '-';
    here += isNegative ? 1 : 0;
    std::uint64_t digits = 0;
    char const* const whole = here;
    here = takeDigits(whole, end, digits);
    std::ptrdiff_t count = here - whole;
    if (count == 0) {
        return nullptr;
    }
    int exponent = 0;
    if (here != end && *here == '.') {
        char const* const fraction = here + 1;
        here = takeDigits(fraction, end, digits);
        std::ptrdiff_t const behindPoint = here - fraction;
        count += behindPoint;
        exponent = behindPoint <= mostDigits ? -static_cast<int>(behindPoint) : 0;
    }
    if (count > mostDigits) {
        return nullptr;
    }
    if (here != end && (*here == 'e' || *here == 'E')) {
        ++here;
        bool const isSmall = here != end && *here == '-';
        here += isSmall || (here != end && *here == '+') ? 1 : 0;
        std::uint64_t power = 0;
        char const* const start = here;
        here = takeDigits(start, end, power);
        if (here == start || here - start > mostExponentDigits) {
            return nullptr;
        }
        exponent += isSmall ? -static_cast<int>(power) : static_cast<int>(power);
    }
    if (exponent < -largestPower || exponent > largestPower) {
        return nullptr;
    }
    auto const integer = static_cast<double>(digits);
    double const size = exponent < 0 ? integer / powersOfTen[-exponent] : integer * powersOfTen[exponent];
    value = isNegative ? -size : size;
    return here;
}

/// Reads a number at the front. \return its end, or null where there is none.
char const* takeNumber(char const* here, char const* const& end, double& value) {
    if (char const* const shortEnd = takeShortNumber(here, end, value)) {
        return shortEnd;
    }
    if (here != end && *here == '+' && end - here > 1 && here[1] != '-') {
        ++here;
    }
    auto const [numberEnd, error] = std::from_chars(here, end, value);
    if (error == std::errc::result_out_of_range) {
        value = beyondDoubles(std::string_view(here, static_cast<std::size_t>(numberEnd - here)));
        return numberEnd;
    }
    return error == std::errc() ? numberEnd : nullptr;
}

}  // namespace

std::optional<double> toNumber(std::string_view word) {
    if (word.empty()) {
        return std::nullopt;
    }
    double value = 0.0;
    char const* const end = word.data() + word.size();
    return takeNumber(word.data(), end, value) == end ? std::optional<double>(value) : std::nullopt;
}

std::optional<TextDamage> TableRows::read(TextLines& lines, std::optional<std::uint64_t> const& count,
                                          ParticleFrame& frame) {
    bool const skipsEmpty = separator != ' ';
    // A value and what ends it take two bytes at least; the last line may lack its end.
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
        if (!_readRow(builder->values())) {
            return lines.damage(reason);
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

void TableRows::_findTexts() {
    char const* here = line.data();
    char const* const end = here + line.size();
    double value = 0.0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        char const* const start = here;
        bool const isOptional = columns[i].use == ColumnUse::CHANNEL;
        if (!_readValue(i, here, end, value) && isOptional) {
            columns[i].use = ColumnUse::IGNORED;
            here = start;
            static_cast<void>(_readValue(i, here, end, value));
        }
        if (separator != ' ' && here != end) {
            ++here;
        }
    }
}

bool TableRows::_readRow(std::vector<double>& values) {
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
        if (!_readValue(i, here, end, values[i])) {
            return false;
        }
    }
    if (skipBlanks(here, end) != end) {
        return _fail("has more than " + std::to_string(columns.size()) + " values");
    }
    return true;
}

/// Reads the value at `here`, which is then at the separator behind it or at the end of the line.
bool TableRows::_readValue(std::size_t column, char const*& here, char const* const& end, double& value) {
    bool const isSeparated = separator != ' ';
    bool const isNeeded = columns[column].use != ColumnUse::IGNORED;
    // A tabulator that separates is no blank.
    while (here != end && isBlank(*here) && !(isSeparated && *here == separator)) {
        ++here;
    }
    if (isNeeded) {
        char const* numberEnd = takeNumber(here, end, value);
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

    // No plain number: a text, a value in quotes, or none at all.
    char const* const start = here;
    std::string_view word;
    if (isSeparated && here != end && *here == '"') {
        char const* const closing = std::find(start + 1, end, '"');
        word = std::string_view(start + 1, static_cast<std::size_t>(closing - start - 1));
        here = std::find(closing, end, separator);
    } else {
        here = isSeparated ? std::find(start, end, separator) : std::find_if(start, end, isBlank);
        word = std::string_view(start, static_cast<std::size_t>(here - start));
        if (word.empty() && !isSeparated) {
            return _fail("has " + std::to_string(column) + " of " + std::to_string(columns.size()) +
                         " values");
        }
    }
    if (!isNeeded) {
        return true;
    }
    ColumnUse const use = columns[column].use;
    if (word.empty() && (use == ColumnUse::CHANNEL || use == ColumnUse::NUMBER) && !columns[column].isId) {
        value = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    if (std::optional<double> const number = toNumber(word)) {
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
