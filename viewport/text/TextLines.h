#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace vellum::viewport {

/// What is wrong with a text, and where.
struct TextDamage {
    std::uint64_t line = 0;  ///< from 1
    std::string reason;      ///< one clause
    bool isAtEnd = false;    ///< the text ends there, so it may have been cut off

    /// "line 7: reason"
    std::string message() const { return "line " + std::to_string(line) + ": " + reason; }
};

/// A cursor that takes a text line by line and knows its place. Copies are cheap: a copy looks ahead or marks
/// a place.
class TextLines {
public:
    explicit TextLines(std::string_view text)
        : lineStart(text.data()), position(text.data()), end(text.data() + text.size()) {}

    bool isAtEnd() const { return position == end; }
    std::uint64_t done() const { return static_cast<std::uint64_t>(position - lineStart); }
    std::uint64_t left() const { return static_cast<std::uint64_t>(end - position); }

    /// Takes the next line, without its line feed; empty at the end of the text.
    std::string_view take() {
        if (position == end) {
            ended = false;
            return {};
        }
        char const* const start = position;
        void const* const feed = std::memchr(start, '\n', left());
        ended = feed != nullptr;
        char const* const lineEnd = ended ? static_cast<char const*>(feed) : end;
        position = ended ? lineEnd + 1 : end;
        ++lineNumber;
        return {start, static_cast<std::size_t>(lineEnd - start)};
    }

    /// Skips lines without words.
    void skipEmpty() {
        char const* here = position;
        std::uint64_t lines = 0;
        for (; here != end; ++here) {
            if (*here == '\n') {
                ++lines;
                position = here + 1;
                lineNumber += lines;
                lines = 0;
            } else if (*here != ' ' && *here != '\t' && *here != '\r') {
                return;
            }
        }
        position = end;
    }

    /// What is left of the text.
    std::string_view rest() const { return {position, static_cast<std::size_t>(left())}; }

    /// Goes on to a place of the text behind this one, at which a line begins or the text ends.
    /// \param passed the number of lines between them
    /// \param isLastEnded as isEnded() of the last of them
    void passTo(char const* place, std::uint64_t passed, bool isLastEnded) {
        position = place;
        lineNumber += passed;
        ended = isLastEnded;
    }

    /// More of the text has come: it ends there now.
    void extendTo(char const* newEnd) { end = newEnd; }

    /// The number of the line taken last, from 1.
    std::uint64_t number() const { return lineNumber; }

    /// Whether the line taken last ends with a line feed. Otherwise the text may have been cut off within it.
    bool isEnded() const { return ended; }

    /// Damage in the line taken last.
    TextDamage damage(std::string const& reason) const { return TextDamage{lineNumber, reason, !ended}; }

private:
    char const* lineStart;
    char const* position;
    char const* end;
    std::uint64_t lineNumber = 0;
    bool ended = true;
};

/// A word of a file for messages: in quotes, and shortened where it is long.
inline std::string inQuotes(std::string_view word) {
    constexpr std::size_t LONGEST = 32;
    return word.size() <= LONGEST ? "'" + std::string(word) + "'"
                                  : "'" + std::string(word.substr(0, LONGEST)) + "...'";
}

}  // namespace vellum::viewport
