#pragma once

#include <string>
#include <string_view>

namespace vellum::viewport {

/// The letters and digits of a name, in lower case: "Position X", "position_x" and "Position:X" are one name,
/// since programs differ in capitals, blanks and punctuation.
inline std::string bareName(std::string_view name) {
    std::string bare;
    for (char const character : name) {
        bool const isLarge = character >= 'A' && character <= 'Z';
        bool const isSmall = character >= 'a' && character <= 'z';
        bool const isDigit = character >= '0' && character <= '9';
        if (isLarge || isSmall || isDigit) {
            bare.push_back(isLarge ? static_cast<char>(character - 'A' + 'a') : character);
        }
    }
    return bare;
}

}  // namespace vellum::viewport
