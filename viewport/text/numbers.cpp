#include "viewport/text/numbers.h"

#include "viewport/text/data_numbers.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <system_error>

namespace vellum::viewport {

namespace {

// std::from_chars, because strtod, atof and streams read the decimal separator of the locale.
template <class Number>
std::optional<Number> toWhole(std::string_view word) {
    Number value{};
    char const* const end = word.data() + word.size();
    auto const [numberEnd, error] = std::from_chars(word.data(), end, value);
    return error == std::errc() && numberEnd == end ? std::optional<Number>(value) : std::nullopt;
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

}  // namespace

std::optional<double> toReal(std::string_view word) {
    std::optional<double> const number = toWhole<double>(word);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<int> toInteger(std::string_view word) {
    // "-0" is 0 to std::from_chars, and is refused all the same: a sign is not part of this form.
    std::optional<int> const number = toWhole<int>(word);
    return number && word.front() != '-' ? number : std::nullopt;
}

std::optional<std::int64_t> toSignedInteger(std::string_view word) {
    return toWhole<std::int64_t>(word);
}

std::optional<std::uint64_t> toCount(std::string_view word) {
    return toWhole<std::uint64_t>(word);
}

std::optional<double> toDataNumber(std::string_view word) {
    double value = 0.0;
    char const* const end = word.data() + word.size();
    return !word.empty() && takeDataNumber(word.data(), end, value) == end ? std::optional<double>(value)
                                                                           : std::nullopt;
}

namespace {

/// The end of the exponent "D+03" that begins here; null where there is none.
char const* endOfFortranExponent(char const* here, char const* end) {
    if (here == end || (*here != 'd' && *here != 'D')) {
        return nullptr;
    }
    ++here;
    here += here != end && (*here == '-' || *here == '+') ? 1 : 0;
    char const* const start = here;
    while (here != end && isDigit(*here)) {
        ++here;
    }
    return here == start ? nullptr : here;
}

}  // namespace

char const* takeUnusualDataNumber(char const* here, char const* end, double& value) {
    if (here != end && *here == '+' && end - here > 1 && here[1] != '-') {
        ++here;
    }
    auto const [numberEnd, error] = std::from_chars(here, end, value);
    if (error != std::errc::invalid_argument) {
        if (char const* const exponentEnd = endOfFortranExponent(numberEnd, end)) {
            std::string word(here, exponentEnd);
            word[static_cast<std::size_t>(numberEnd - here)] = 'e';
            return takeUnusualDataNumber(word.data(), word.data() + word.size(), value) ==
                           word.data() + word.size()
                       ? exponentEnd
                       : nullptr;
        }
    }
    if (error == std::errc::result_out_of_range) {
        value = beyondDoubles(std::string_view(here, static_cast<std::size_t>(numberEnd - here)));
        return numberEnd;
    }
    return error == std::errc() ? numberEnd : nullptr;
}

}  // namespace vellum::viewport
