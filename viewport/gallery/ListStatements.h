#pragma once

#include "viewport/text/Fault.h"

#include <string>
#include <string_view>
#include <vector>

namespace vellum::gallery {

/// A line of words in a list of pictures: what the statement is, then its arguments.
struct ListStatement {
    int line;                        ///< of the file, from 1; the first one of a continued line
    std::vector<std::string> words;  ///< one at least
};

/// Splits a text into statements, in the way a shell splits command lines: blanks separate words, '...' and
/// "..." keep blanks, a backslash takes the next character as it is, at the end of a line it continues the
/// line, and a # at the start of a word begins a comment. Empty lines are skipped. Nothing is expanded.
///
/// A quote without its end is a fault; `file` is the name of the text in it.
viewport::Result<std::vector<ListStatement>> splitStatements(std::string_view text, std::string const& file);

}  // namespace vellum::gallery
