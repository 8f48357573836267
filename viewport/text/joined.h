#pragma once

#include <string>
#include <vector>

namespace vellum::viewport {

/// Words with a separator between them: "a, b, c".
inline std::string joined(std::vector<std::string> const& words, char const* separator = ", ") {
    std::string text;
    for (std::string const& word : words) {
        text += (&word == &words.front() ? "" : separator) + word;
    }
    return text;
}

}  // namespace vellum::viewport
