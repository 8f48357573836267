#include "viewport/window/shown_texts.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>

namespace vellum::viewport {

std::string inOneLine(std::string const& lines) {
    std::string line;
    for (char const letter : lines.substr(std::min(lines.size(), lines.find(' ') + 1))) {
        if (letter != '\n') {
            line += letter;
        } else if (!line.empty() && line.back() != ' ') {
            line += "  ";
        }
    }
    return line;
}

std::string titleOf(Options const& options) {
    if (options.files.empty()) {
        return "vl_viewport";
    }
    std::string const first = std::filesystem::path(options.files.front()).filename().string();
    std::size_t const others = options.files.size() - 1;
    return first + (others > 0 ? " and " + std::to_string(others) + " more" : "") +
           " \xE2\x80\x93 vl_viewport";
}

}  // namespace vellum::viewport
