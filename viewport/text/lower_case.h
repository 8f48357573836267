#pragma once

#include <string>
#include <string_view>

namespace vellum::viewport {

/// The text with the letters A to Z in lower case; all other bytes stay. Serves names of formats, file name
/// extensions and keys, which are ASCII. Independent of the locale, unlike std::tolower.
inline std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& character : lower) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return lower;
}

}  // namespace vellum::viewport
