#pragma once

#include <algorithm>
#include <string_view>

/// Splits texts into words and lines from their front. Words hold no blanks; a line ends with a line feed.
namespace vellum::viewport {

inline constexpr std::string_view BLANKS = " \t\r\n\v\f";

/// Takes the next word off the front of the text; empty at its end.
inline std::string_view takeWord(std::string_view& text) {
    std::size_t const first = text.find_first_not_of(BLANKS);
    if (first == std::string_view::npos) {
        text = {};
        return {};
    }
    std::size_t const end = std::min(text.find_first_of(BLANKS, first), text.size());
    std::string_view const word = text.substr(first, end - first);
    text.remove_prefix(end);
    return word;
}

/// The text without the blanks around it.
inline std::string_view trimmed(std::string_view text) {
    std::size_t const first = text.find_first_not_of(BLANKS);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

/// Takes the next line off the front of the text, without its end.
inline std::string_view takeLine(std::string_view& text) {
    std::size_t const end = std::min(text.find('\n'), text.size());
    std::string_view const line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

}  // namespace vellum::viewport
