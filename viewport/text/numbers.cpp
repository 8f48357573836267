#include "viewport/text/numbers.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
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

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// Reads digits into an integer of decimal digits.
char const* takeDigits(char const* here, char const* end, std::uint64_t& digits) {
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
char const* takeShortNumber(char const* here, char const* end, double& value) {
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

char const* takeDataNumber(char const* here, char const* end, double& value) {
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

}  // namespace vellum::viewport
