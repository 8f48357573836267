#pragma once

#include <string>
#include <string_view>

namespace vellum::viewport {

/// The text with every control character replaced by '?'. File names and column names come from outside:
/// shown like this, they neither break a line of output nor send a command to the terminal.
inline std::string singleLine(std::string_view text) {
    constexpr unsigned char FIRST_PRINTABLE = 0x20;
    constexpr unsigned char DELETE = 0x7F;
    std::string line(text);
    for (char& character : line) {
        unsigned char const code = static_cast<unsigned char>(character);
        if (code < FIRST_PRINTABLE || code == DELETE) {
            character = '?';
        }
    }
    return line;
}

}  // namespace vellum::viewport
