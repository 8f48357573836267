// vl_gallery: draws everything that the render layer can draw into pictures, and a page that shows them.

#include "offscreen/OffscreenContext.h"
#include "viewport/gallery/ContactSheet.h"
#include "viewport/gallery/IndexPage.h"
#include "viewport/gallery/SheetLayer.h"
#include "viewport/gallery/subjects.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace vellum;
using namespace vellum::gallery;
using viewport::Fault;

constexpr int FAILURE = 1;
constexpr int USAGE_ERROR = 2;
constexpr int NO_GL = 3;

std::string fileName(std::size_t index, Subject const& subject) {
    char number[8];
    std::snprintf(number, sizeof number, "%02u-", static_cast<unsigned int>((index + 1) % 100));
    return number + subject.name + ".png";
}

/// A context in which sheets of this size are drawn.
OffscreenContext::Settings settingsFor(int width, int height) {
    OffscreenContext::Settings settings;
    settings.width = SheetLayer::OVERSAMPLING * width;
    settings.height = SheetLayer::OVERSAMPLING * height;
    settings.debug = true;
    return settings;
}

/// Draws a subject into a file.
std::optional<Fault> drawInto(std::string const& file, OffscreenContext& context, SheetLayer& layer,
                              Subject const& subject) {
    viewport::Picture const picture = drawSheet(context, layer, subject);
    std::vector<std::string> const errors = context.takeErrors();
    if (!errors.empty()) {
        return Fault{file, "OpenGL reports: " + errors.front()};
    }
    return picture.savePng(file);
}

std::optional<Fault> drawAll(OffscreenContext& context, std::string const& folder,
                             std::vector<Subject> const& subjects, std::string const& only) {
    auto const layer = std::make_unique<SheetLayer>();
    for (std::size_t i = 0; i < subjects.size(); ++i) {
        if (!only.empty() && subjects[i].name != only) {
            continue;
        }
        std::string const file = (fs::path(folder) / fileName(i, subjects[i])).string();
        if (std::optional<Fault> fault = drawInto(file, context, *layer, subjects[i])) {
            return fault;
        }
    }
    layer->destroy_RL();
    return std::nullopt;
}

/// The page lists the drawings that are in the folder, also those of earlier runs.
std::optional<Fault> writePage(std::string const& folder, std::vector<Subject> const& subjects) {
    std::vector<Exhibit> drawings;
    for (std::size_t i = 0; i < subjects.size(); ++i) {
        std::string const file = fileName(i, subjects[i]);
        std::error_code error;
        if (fs::exists(fs::path(folder) / file, error)) {
            drawings.push_back({file, subjects[i].title, subjects[i].caption});
        }
    }
    return writeIndexPage(folder, drawings);
}

int fail(Fault const& fault) {
    std::cerr << "vl_gallery: " << fault.line() << '\n';
    return FAILURE;
}

int failWithoutGl(OffscreenContext const& context) {
    std::cerr << "vl_gallery: " << context.error() << '\n';
    return NO_GL;
}

int drawContactSheet(std::string const& file, std::string const& list) {
    viewport::Result<Subject> const sheet = contactSheet(list);
    if (!sheet.isOk()) {
        return fail(sheet.fault());
    }
    OffscreenContext context(settingsFor(sheet.value().width, sheet.value().height));
    if (!context.isValid()) {
        return failWithoutGl(context);
    }
    auto const layer = std::make_unique<SheetLayer>();
    if (std::optional<Fault> const fault = drawInto(file, context, *layer, sheet.value())) {
        return fail(*fault);
    }
    std::cout << file << '\n';
    return 0;
}

}  // namespace

// A failing allocation may end the program.
int main(int argc, char** argv) {  // NOLINT(bugprone-exception-escape)
    std::vector<Subject> const subjects = allSubjects();

    CLI::App app("Draws what the render layer can draw into pictures, and a page that shows them.",
                 "vl_gallery");
    std::string out;
    std::string only;
    std::string index;
    std::string sheet;
    std::string tiles;
    std::vector<std::string> names;
    names.reserve(subjects.size());
    for (Subject const& subject : subjects) {
        names.push_back(subject.name);
    }
    CLI::Option* const outOption = app.add_option("--out", out, "Folder for the pictures and index.html");
    app.add_option("--only", only, "Draw this picture alone")->needs(outOption)->check(CLI::IsMember(names));
    app.add_option(
           "--index", index,
           std::string("Write only the index.html of this folder's pictures, with those listed in its ") +
               FURTHER_PICTURES)
        ->excludes(outOption);
    CLI::Option* const sheetOption =
        app.add_option("--contact-sheet", sheet,
                       "Draw the pictures of a list into this one, and nothing else")
            ->excludes(outOption)
            ->excludes("--index");
    CLI::Option* const tilesOption =
        app.add_option("--tiles", tiles, "The list: in each line a PNG file, a tab and a label")
            ->needs(sheetOption);
    sheetOption->needs(tilesOption);
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        if (error.get_exit_code() == 0) {
            return app.exit(error);
        }
        std::cerr << "vl_gallery: " << error.what() << '\n';
        return USAGE_ERROR;
    }
    if (out.empty() && index.empty() && sheet.empty()) {
        std::cerr << "vl_gallery: --out, --index or --contact-sheet is required\n";
        return USAGE_ERROR;
    }
    if (!sheet.empty()) {
        return drawContactSheet(sheet, tiles);
    }

    std::string const folder = out.empty() ? index : out;
    if (!out.empty()) {
        std::error_code error;
        fs::create_directories(folder, error);
        if (error) {
            return fail({folder, error.message()});
        }
        OffscreenContext context(settingsFor(SHEET_WIDTH, SHEET_HEIGHT));
        if (!context.isValid()) {
            return failWithoutGl(context);
        }
        if (std::optional<Fault> const fault = drawAll(context, folder, subjects, only)) {
            return fail(*fault);
        }
    }
    if (std::optional<Fault> const fault = writePage(folder, subjects)) {
        return fail(*fault);
    }
    std::cout << (fs::path(folder) / "index.html").string() << '\n';
    return 0;
}
