#include "viewport/program/Configuration.h"

#include "viewport/text/Words.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace vellum::viewport {

namespace {

namespace fs = std::filesystem;

/// The text up to a comment: a '#' or ';' at its beginning, or alone between blanks, outside of quotes.
/// Colors may begin with
/// '#' too.
std::string_view withoutComment(std::string_view text) {
    char quote = '\0';
    std::size_t const first = text.find_first_not_of(BLANKS);
    for (std::size_t i = 0; i < text.size(); ++i) {
        char const letter = text[i];
        auto const isBlank = [&text](std::size_t place) {
            return place >= text.size() || BLANKS.find(text[place]) != std::string_view::npos;
        };
        bool const isFirst = i == first;
        bool const isAlone = i > 0 && isBlank(i - 1) && isBlank(i + 1);
        if (quote != '\0') {
            quote = letter == quote ? '\0' : quote;
        } else if (letter == '"' || letter == '\'') {
            quote = letter;
        } else if ((letter == '#' || letter == ';') && (isFirst || isAlone)) {
            return text.substr(0, i);
        }
    }
    return text;
}

bool isQuoted(std::string_view text) {
    return text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.front() == text.back();
}

}  // namespace

Fault Configuration::faultOf(Line const& line, std::string const& message) const {
    return {file, line.number == 0 ? message : "line " + std::to_string(line.number) + ": " + message};
}

Result<Configuration> Configuration::read(std::string const& file) {
    Configuration found{file, {}};
    errno = 0;
    std::error_code ignored;
    std::ifstream stream(file);
    if (!stream || fs::is_directory(file, ignored)) {
        return Fault{file,
                     std::string("cannot be read: ") + (errno != 0 ? std::strerror(errno) : "is a folder")};
    }
    std::size_t number = 0;
    for (std::string text; std::getline(stream, text);) {
        Line line{++number, "", "true"};
        std::string_view const content = trimmed(withoutComment(text));
        if (content.empty()) {
            continue;
        }
        std::size_t const middle = content.find('=');
        line.name = trimmed(content.substr(0, middle));
        if (middle != std::string_view::npos) {
            std::string_view const value = trimmed(content.substr(middle + 1));
            line.value = isQuoted(value) ? value.substr(1, value.size() - 2) : value;
        }
        if (line.name.empty() || line.name.find_first_of(" \t[]\"'") != std::string::npos) {
            return found.faultOf(line, "is not NAME = VALUE");
        }
        if (line.value.empty()) {
            return found.faultOf(line, line.name + ": has no value");
        }
        found.lines.push_back(line);
    }
    return found;
}

std::string userConfiguration() {
    char const* const folder = std::getenv("XDG_CONFIG_HOME");
    char const* const home = std::getenv("HOME");
    fs::path path;
    if (folder != nullptr && *folder == '/') {
        path = folder;
    } else if (home != nullptr && *home != '\0') {
        path = fs::path(home) / ".config";
    } else {
        return "";
    }
    path = path / "vl_viewport" / "config";
    std::error_code ignored;
    return fs::exists(path, ignored) ? path.string() : "";
}

}  // namespace vellum::viewport
