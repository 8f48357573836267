#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace vellum {

/// A part of a shader's text: its name, which occurs in the text as `@NAME@`, and its replacement.
using ShaderPart = std::pair<char const*, std::string>;

/// Replaces the names of all parts. A name may occur several times; names inside a replacement are not
/// replaced.
template <class... Parts>
std::string filledIn(std::string const& text, Parts const&... parts) {
    std::string filled;
    std::size_t begin = 0;
    while (begin < text.size()) {
        std::size_t const at = text.find('@', begin);
        std::size_t const end = at == std::string::npos ? at : text.find('@', at + 1);
        if (end == std::string::npos) {
            break;
        }
        std::string const name = text.substr(at + 1, end - at - 1);
        filled.append(text, begin, at - begin);
        ((name == parts.first ? (filled += parts.second, void()) : void()), ...);
        begin = end + 1;
    }
    return filled.append(text, begin, std::string::npos);
}

}  // namespace vellum
