#pragma once

#include "viewport/text/Fault.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// The list of the gallery's pictures: a text file that says what each picture is called, what it shows and
/// what the page writes below it. The comment at the head of pictures.txt describes the statements.
namespace vellum::gallery {

/// One tile of a contact sheet: a picture of vl_viewport over its label.
struct ListedTile {
    int line;  ///< of the list
    std::string label;
    std::vector<std::string> arguments;  ///< of vl_viewport, without --out and --size
};

/// One picture. Exactly one of `sheet`, `arguments` and `tiles` says what it shows; the others are empty.
struct ListedPicture {
    int line = 0;         ///< of the list
    std::string section;  ///< heading on the page
    std::string group;    ///< in the messages
    std::string file;     ///< name of the PNG file, without a folder
    std::string title;
    std::string caption;                 ///< one sentence or two
    std::vector<std::string> needs;      ///< variables without which the picture is left out
    std::string size = "1280x800";       ///< of the picture, or of each tile
    std::string sheet;                   ///< name of a Subject
    std::vector<std::string> arguments;  ///< of vl_viewport, without --out and --size
    std::vector<ListedTile> tiles;
};

/// What "{name}" in an argument stands for.
using ListVariables = std::map<std::string, std::string>;

/// Understands the text of a list. The first line that is wrong is the fault; `file` is the name of the text
/// in it.
viewport::Result<std::vector<ListedPicture>> parsePictureList(std::string_view text, std::string const& file);

/// Reads a list from a file.
viewport::Result<std::vector<ListedPicture>> readPictureList(std::string const& file);

/// Is there a value for each variable that the picture needs?
bool hasAllNeeds(ListedPicture const& picture, ListVariables const& variables);

/// Puts the values of the variables into the arguments of a picture and its tiles, so that an argument
/// without a value is found before anything is drawn. A variable without a value and a brace without its
/// partner are faults of `file`.
viewport::Result<ListedPicture> withVariables(ListedPicture picture, ListVariables const& variables,
                                              std::string const& file);

}  // namespace vellum::gallery
