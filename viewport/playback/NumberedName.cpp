#include "viewport/playback/NumberedName.h"

#include "viewport/text/data_numbers.h"

namespace vellum::viewport {

namespace {

constexpr std::size_t MOST_DIGITS = 20;

/// Reads what follows a percent sign and stands for the number; 0 where it does not.
/// \param place behind the percent sign; left behind what was read
std::size_t takeDigits(std::string const& pattern, std::size_t& place) {
    std::size_t end = place;
    std::size_t digits = 1;
    if (end < pattern.size() && pattern[end] == '0') {
        digits = 0;
        for (++end; end < pattern.size() && isDigit(pattern[end]) && digits <= MOST_DIGITS; ++end) {
            digits = 10 * digits + static_cast<std::size_t>(pattern[end] - '0');
        }
    }
    if (end >= pattern.size() || pattern[end] != 'd' || digits > MOST_DIGITS) {
        return 0;
    }
    place = end + 1;
    return digits;
}

}  // namespace

Result<NumberedName> NumberedName::parse(std::string const& pattern) {
    NumberedName name;
    bool hasNumber = false;
    for (std::size_t place = 0; place < pattern.size();) {
        std::string& text = hasNumber ? name.after : name.before;
        if (pattern[place] != '%') {
            text += pattern[place++];
            continue;
        }
        ++place;
        if (place < pattern.size() && pattern[place] == '%') {
            text += pattern[place++];
            continue;
        }
        std::size_t const digits = takeDigits(pattern, place);
        if (digits == 0) {
            return Fault{
                {}, "'" + pattern + "' has a percent sign that is not of %d, %0Nd (N digits, 1 to 20) or %%"};
        }
        if (hasNumber) {
            return Fault{{}, "'" + pattern + "' has more than one %d"};
        }
        hasNumber = true;
        name.digits = digits;
    }
    return hasNumber ? Result<NumberedName>(name)
                     : Fault{{}, "'" + pattern + "' has no %d for the number of the picture"};
}

std::string NumberedName::of(std::size_t number) const {
    std::string const text = std::to_string(number);
    return before + (text.size() < digits ? std::string(digits - text.size(), '0') : std::string()) + text +
           after;
}

}  // namespace vellum::viewport
