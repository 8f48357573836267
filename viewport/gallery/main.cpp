// vl_gallery: draws a list of pictures and writes a page that shows them.

#include "viewport/gallery/Gallery.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <optional>
#include <string>
#include <vector>

namespace vellum::gallery {

namespace {

int usageError(std::string const& message) {
    std::cerr << "vl_gallery: " << message << '\n';
    return Gallery::USAGE_ERROR;
}

/// \return the exit status where the program ends here, or nothing.
std::optional<int> parse(int argc, char** argv, GallerySettings& settings) {
    CLI::App app("Draws a list of pictures and writes a page that shows them.", "vl_gallery");
    std::vector<std::string> definitions;
    app.add_option("--list", settings.list, "The list of pictures; its head describes its statements")
        ->required();
    app.add_option("--out", settings.out, "Folder for the pictures and index.html")->required();
    app.add_option("--viewport", settings.viewport, "The program vl_viewport")->required();
    app.add_option("--define", definitions, "NAME=VALUE: what {NAME} stands for in the list")
        ->allow_extra_args(false);
    app.add_option("--only", settings.only, "File name of a picture: draw only the pictures named so")
        ->allow_extra_args(false);
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        return error.get_exit_code() == 0 ? app.exit(error) : usageError(error.what());
    }
    for (std::string const& definition : definitions) {
        std::size_t const middle = definition.find('=');
        if (middle == 0 || middle == std::string::npos) {
            return usageError("--define: " + definition + " is not NAME=VALUE");
        }
        settings.variables[definition.substr(0, middle)] = definition.substr(middle + 1);
    }
    return std::nullopt;
}

}  // namespace

}  // namespace vellum::gallery

// A failing allocation may end the program.
int main(int argc, char** argv) {  // NOLINT(bugprone-exception-escape)
    vellum::gallery::GallerySettings settings;
    if (std::optional<int> const status = vellum::gallery::parse(argc, argv, settings)) {
        return *status;
    }
    return vellum::gallery::Gallery(settings).run();
}
