#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vellum::viewport {

/// The text as UTF-8, where it begins with the byte order mark of UTF-16; nothing for any other text. Halves
/// of characters become the replacement character U+FFFD.
std::optional<std::string> utf8OfUtf16(std::string_view bytes);

}  // namespace vellum::viewport
