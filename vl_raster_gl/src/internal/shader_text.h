#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace vellum {

/// A part of a shader's text: its name, which stands in the text as `@NAME@`, and what takes its place.
using ShaderPart = std::pair<char const*, std::string>;

/// The text with each part in the place of its name. A name may stand at several places; names of other parts
/// inside a part are not replaced again.
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
