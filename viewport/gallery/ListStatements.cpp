#include "viewport/gallery/ListStatements.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace vellum::gallery {

namespace {

using viewport::Fault;
using viewport::Result;

/// Reads one text from its start to its end.
class Splitter {
public:
    explicit Splitter(std::string_view text) : rest(text) {}

    /// \return the line of the quote that has no end, or nothing where all have one.
    std::optional<int> split() {
        while (!rest.empty()) {
            char const next = _take();
            if (next == '\n') {
                _endStatement();
            } else if (next == ' ' || next == '\t' || next == '\r') {
                _endWord();
            } else if (next == '#' && !isInWord) {
                rest.remove_prefix(std::min(rest.find('\n'), rest.size()));
            } else if (next == '\'' || next == '"') {
                int const start = line;
                if (!_takeQuoted(next)) {
                    return start;
                }
            } else if (next == '\\') {
                _takeEscaped();
            } else {
                _append(next);
            }
        }
        _endStatement();  // the last line may lack its line feed
        return std::nullopt;
    }

    std::vector<ListStatement> takeStatements() { return std::move(statements); }

private:
    char _take() {
        char const next = rest.front();
        rest.remove_prefix(1);
        line += next == '\n' ? 1 : 0;
        return next;
    }

    void _beginWord() {
        if (!isInWord && current.words.empty()) {
            current.line = line;
        }
        isInWord = true;
    }

    void _append(char character) {
        _beginWord();
        word += character;
    }

    bool _takeQuoted(char quote) {
        _beginWord();  // "" is an empty word
        while (!rest.empty()) {
            char const next = _take();
            if (next == quote) {
                return true;
            }
            if (next == '\\' && quote == '"') {
                _takeEscaped();
            } else {
                _append(next);
            }
        }
        return false;
    }

    void _takeEscaped() {
        char const next = rest.empty() ? '\n' : _take();
        if (next != '\n') {
            _append(next);
        }
    }

    void _endWord() {
        if (isInWord) {
            current.words.push_back(std::exchange(word, {}));
            isInWord = false;
        }
    }

    void _endStatement() {
        _endWord();
        if (!current.words.empty()) {
            statements.push_back(std::exchange(current, {}));
        }
    }

    std::string_view rest;
    int line = 1;
    std::string word;
    bool isInWord = false;
    ListStatement current{1, {}};
    std::vector<ListStatement> statements;
};

}  // namespace

Result<std::vector<ListStatement>> splitStatements(std::string_view text, std::string const& file) {
    Splitter splitter(text);
    if (std::optional<int> const open = splitter.split()) {
        return Fault{file, "line " + std::to_string(*open) + ": the quote has no end"};
    }
    return splitter.takeStatements();
}

}  // namespace vellum::gallery
