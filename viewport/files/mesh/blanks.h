#pragma once

namespace vellum::viewport {

constexpr char FEED = '\n';

/// What separates the words of a line. A carriage return before the feed is one of them.
inline bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\r';
}

}  // namespace vellum::viewport
