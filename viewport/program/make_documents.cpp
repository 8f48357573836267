#include "viewport/program/documents.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <system_error>

/// Writes the manual page and the completions of vl_viewport into a folder, which is made. Part of the build.

int main(int argumentCount, char** arguments) {
    using namespace vellum::viewport;
    if (argumentCount != 2) {
        std::cerr << "usage: vl_viewport_documents FOLDER" << std::endl;
        return 2;
    }
    std::filesystem::path const folder(arguments[1]);
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    std::vector<OptionEntry> const table = optionTable();
    struct Row {
        char const* name;
        std::string text;
    };
    for (Row const& row :
         {Row{"vl_viewport.1", manualPage(table, VL_VIEWPORT_VERSION)},
          Row{"vl_viewport.bash", bashCompletion(table)}, Row{"_vl_viewport", zshCompletion(table)},
          Row{"vl_viewport.fish", fishCompletion(table)}}) {
        std::ofstream file(folder / row.name, std::ios::binary);
        file << row.text;
        file.close();
        if (!file) {
            std::cerr << (folder / row.name).string() << ": cannot be written" << std::endl;
            return 1;
        }
    }
    return 0;
}
