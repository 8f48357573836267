#include "viewport/gallery/PictureList.h"

#include "viewport/gallery/ListStatements.h"
#include "viewport/text/joined.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>

namespace vellum::gallery {

namespace {

using viewport::Fault;
using viewport::Result;

Fault faultAt(std::string const& file, int line, std::string const& message) {
    return {file, "line " + std::to_string(line) + ": " + message};
}

/// Builds the pictures from the statements, one after the other.
class ListReader {
public:
    /// \return what is wrong with the statement, or nothing.
    std::optional<std::string> take(ListStatement const& statement) {
        std::string const& name = statement.words.front();
        std::vector<std::string> const values(statement.words.begin() + 1, statement.words.end());
        if (name == "section" || name == "group" || name == "picture") {
            return _takeOuter(statement.line, name, values);
        }
        return _takeInner(statement.line, name, values);
    }

    /// \return what the last picture lacks, or nothing.
    std::optional<std::string> fault() const {
        if (pictures.empty()) {
            return std::nullopt;
        }
        ListedPicture const& last = pictures.back();
        if (last.title.empty() || last.caption.empty()) {
            return last.file + " has no title or no caption";
        }
        if (_sourcesOf(last) == 0) {
            return last.file + " has no sheet, viewport or tile statement";
        }
        return std::nullopt;
    }

    int lastLine() const { return pictures.back().line; }

    std::vector<ListedPicture> pictures;

private:
    static int _sourcesOf(ListedPicture const& picture) {
        return (picture.sheet.empty() ? 0 : 1) + (picture.arguments.empty() ? 0 : 1) +
               (picture.tiles.empty() ? 0 : 1);
    }

    std::optional<std::string> _takeOuter(int line, std::string const& name,
                                          std::vector<std::string> const& values) {
        if (values.size() != 1 || values.front().empty()) {
            return name + " takes one word or quoted text";
        }
        if (name == "section") {
            section = values.front();
            return std::nullopt;
        }
        if (name == "group") {
            group = values.front();
            return std::nullopt;
        }
        return _beginPicture(line, values.front());
    }

    std::optional<std::string> _beginPicture(int line, std::string const& file) {
        bool const isPng = file.size() > 4 && file.substr(file.size() - 4) == ".png";
        if (!isPng || file.front() == '.' || file.find('/') != std::string::npos) {
            return file + " is not the name of a PNG file without a folder";
        }
        for (ListedPicture const& other : pictures) {
            if (other.file == file) {
                return file + " is listed on line " + std::to_string(other.line) + " already";
            }
        }
        if (section.empty() || group.empty()) {
            return "section and group come before the first picture";
        }
        ListedPicture picture;
        picture.line = line;
        picture.section = section;
        picture.group = group;
        picture.file = file;
        pictures.push_back(std::move(picture));
        return std::nullopt;
    }

    std::optional<std::string> _takeInner(int line, std::string const& name,
                                          std::vector<std::string> const& values) {
        if (name == "title" || name == "caption") {
            return _set([&](ListedPicture& picture) {
                (name == "title" ? picture.title : picture.caption) = viewport::joined(values, " ");
            });
        }
        if (name == "size" || name == "sheet") {
            if (values.size() != 1 || values.front().empty()) {
                return name + " takes one word";
            }
            return _set([&](ListedPicture& picture) {
                (name == "size" ? picture.size : picture.sheet) = values.front();
            });
        }
        if (name == "needs") {
            return _set([&](ListedPicture& picture) { picture.needs = values; });
        }
        if (name == "viewport") {
            if (values.empty()) {
                return "viewport takes the arguments of vl_viewport";
            }
            return _set([&](ListedPicture& picture) { picture.arguments = values; });
        }
        if (name == "tile") {
            if (values.size() < 2) {
                return "tile takes a label and the arguments of vl_viewport";
            }
            return _set([&](ListedPicture& picture) {
                picture.tiles.push_back({line, values.front(), {values.begin() + 1, values.end()}});
            });
        }
        return "'" + name + "' is no statement";
    }

    template <class Setter>
    std::optional<std::string> _set(Setter const& set) {
        if (pictures.empty()) {
            return "comes before the first picture";
        }
        set(pictures.back());
        if (_sourcesOf(pictures.back()) > 1) {
            return pictures.back().file + " has more than one of sheet, viewport and tile";
        }
        return std::nullopt;
    }

    std::string section;
    std::string group;
};

/// Puts values into one argument.
/// \return what is wrong with the argument, or nothing.
std::optional<std::string> expand(std::string& argument, ListVariables const& variables) {
    std::string result;
    std::string_view rest = argument;
    while (!rest.empty()) {
        std::size_t const open = rest.find_first_of("{}");
        result += rest.substr(0, open);
        if (open == std::string_view::npos) {
            break;
        }
        std::size_t const close = rest.find('}', open);
        if (rest[open] == '}' || close == std::string_view::npos) {
            return "a brace of '" + argument + "' has no partner";
        }
        auto const found = variables.find(std::string(rest.substr(open + 1, close - open - 1)));
        if (found == variables.end()) {
            return "no value is given for " + std::string(rest.substr(open, close + 1 - open));
        }
        result += found->second;
        rest.remove_prefix(close + 1);
    }
    argument = result;
    return std::nullopt;
}

}  // namespace

Result<std::vector<ListedPicture>> parsePictureList(std::string_view text, std::string const& file) {
    Result<std::vector<ListStatement>> const statements = splitStatements(text, file);
    if (!statements.isOk()) {
        return statements.fault();
    }
    ListReader reader;
    for (ListStatement const& statement : statements.value()) {
        if (statement.words.front() == "picture") {
            if (std::optional<std::string> const fault = reader.fault()) {
                return faultAt(file, reader.lastLine(), *fault);
            }
        }
        if (std::optional<std::string> const fault = reader.take(statement)) {
            return faultAt(file, statement.line, *fault);
        }
    }
    if (reader.pictures.empty()) {
        return Fault{file, "lists no picture"};
    }
    if (std::optional<std::string> const fault = reader.fault()) {
        return faultAt(file, reader.lastLine(), *fault);
    }
    return std::move(reader.pictures);
}

Result<std::vector<ListedPicture>> readPictureList(std::string const& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string const text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    if (!stream) {
        return Fault{file, "cannot be read"};
    }
    return parsePictureList(text, file);
}

bool hasAllNeeds(ListedPicture const& picture, ListVariables const& variables) {
    return std::all_of(picture.needs.begin(), picture.needs.end(),
                       [&](std::string const& name) { return variables.count(name) != 0; });
}

Result<ListedPicture> withVariables(ListedPicture picture, ListVariables const& variables,
                                    std::string const& file) {
    for (std::string& argument : picture.arguments) {
        if (std::optional<std::string> const fault = expand(argument, variables)) {
            return faultAt(file, picture.line, *fault);
        }
    }
    for (ListedTile& tile : picture.tiles) {
        for (std::string& argument : tile.arguments) {
            if (std::optional<std::string> const fault = expand(argument, variables)) {
                return faultAt(file, tile.line, *fault);
            }
        }
    }
    return picture;
}

}  // namespace vellum::gallery
