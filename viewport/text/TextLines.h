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
    bool isAtEnd = false;    ///< the text ends there: it may just have been cut off

    /// "line 7: reason"
    std::string message() const { return "line " + std::to_string(line) + ": " + reason; }
};

/// A text taken line by line from its front; knows where it is.
class TextLines {
public:
    explicit TextLines(std::string_view const& text)
        : _start(text.data()), _here(text.data()), _end(text.data() + text.size()) {}

    bool isAtEnd() const { return _here == _end; }
    std::uint64_t done() const { return static_cast<std::uint64_t>(_here - _start); }
    std::uint64_t left() const { return static_cast<std::uint64_t>(_end - _here); }

    /// The next line without its end, a line feed; empty at the end of the text.
    std::string_view take() {
        if (_here == _end) {
            _isEnded = false;
            return {};
        }
        char const* const start = _here;
        void const* const feed = std::memchr(start, '\n', left());
        _isEnded = feed != nullptr;
        char const* const lineEnd = _isEnded ? static_cast<char const*>(feed) : _end;
        _here = _isEnded ? lineEnd + 1 : _end;
        ++_number;
        return {start, static_cast<std::size_t>(lineEnd - start)};
    }

    /// Steps over lines without words.
    void skipEmpty() {
        char const* here = _here;
        std::uint64_t lines = 0;
        for (; here != _end; ++here) {
            if (*here == '\n') {
                ++lines;
                _here = here + 1;
                _number += lines;
                lines = 0;
            } else if (*here != ' ' && *here != '\t' && *here != '\r') {
                return;
            }
        }
        _here = _end;
    }

    /// The number of the line taken last, from 1.
    std::uint64_t number() const { return _number; }

    /// Has the line taken last its line feed? Without it the text may have been cut off within the line.
    bool isEnded() const { return _isEnded; }

    /// Damage in the line taken last.
    TextDamage damage(std::string const& reason) const { return TextDamage{_number, reason, !_isEnded}; }

private:
    char const* _start;
    char const* _here;
    char const* _end;
    std::uint64_t _number = 0;
    bool _isEnded = true;
};

/// A word of a file as it is shown in messages: in quotes, and shortened where it is long.
inline std::string quoted(std::string_view const& word) {
    constexpr std::size_t longest = 32;
    return word.size() <= longest ? "'" + std::string(word) + "'"
                                  : "'" + std::string(word.substr(0, longest)) + "...'";
}

}  // namespace vellum::viewport
