#include "viewport/gallery/PicturePainter.h"

#include "offscreen/OffscreenContext.h"
#include "viewport/files/images/Picture.h"
#include "viewport/gallery/ProgramRunner.h"
#include "viewport/gallery/sheets/ContactSheet.h"
#include "viewport/gallery/sheets/SheetLayer.h"
#include "viewport/gallery/sheets/subjects.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>

namespace vellum::gallery {

namespace {

namespace fs = std::filesystem;
using viewport::Fault;
using viewport::Result;

/// Draws a sheet into a file, in a context of the sheet's size.
std::optional<Fault> drawInto(std::string const& file, Subject const& subject) {
    OffscreenContext::Settings settings;
    settings.width = SheetLayer::OVERSAMPLING * subject.width;
    settings.height = SheetLayer::OVERSAMPLING * subject.height;
    settings.debug = true;
    OffscreenContext context(settings);
    if (!context.isValid()) {
        return Fault{file, context.error()};
    }
    auto const layer = std::make_unique<SheetLayer>();
    viewport::Picture const picture = drawSheet(context, *layer, subject);
    layer->destroy_RL();
    std::vector<std::string> const errors = context.takeErrors();
    if (!errors.empty()) {
        return Fault{file, "OpenGL reports: " + errors.front()};
    }
    return picture.savePng(file);
}

}  // namespace

PicturePainter::PicturePainter(std::string const& viewport, std::string const& folder, WorkFolder const& work,
                               ProgramRunner& runner)
    : viewport(viewport), folder(folder), work(work), runner(runner), subjects(allSubjects()) {}

std::optional<Fault> PicturePainter::paint(ListedPicture const& picture) {
    std::string const unfinished = work.file(picture.file);
    if (std::optional<Fault> fault = _paintInto(unfinished, picture)) {
        return fault;
    }
    std::error_code error;
    std::string const file = (fs::path(folder) / picture.file).string();
    fs::rename(unfinished, file, error);
    if (error) {
        return Fault{file, error.message()};
    }
    return std::nullopt;
}

std::optional<Fault> PicturePainter::_paintInto(std::string const& file, ListedPicture const& picture) {
    if (!picture.sheet.empty()) {
        auto const subject = std::find_if(subjects.begin(), subjects.end(), [&](Subject const& candidate) {
            return candidate.name == picture.sheet;
        });
        if (subject == subjects.end()) {
            return Fault{picture.file, "there is no sheet '" + picture.sheet + "'"};
        }
        return drawInto(file, *subject);
    }
    if (picture.tiles.empty()) {
        return _runViewport(file, picture.size, picture.arguments);
    }
    std::vector<SheetTile> tiles;
    for (ListedTile const& tile : picture.tiles) {
        tiles.push_back({work.file("tile-" + std::to_string(tiles.size()) + ".png"), tile.label});
        if (std::optional<Fault> fault = _runViewport(tiles.back().file, picture.size, tile.arguments)) {
            return fault;
        }
    }
    Result<Subject> const sheet = contactSheet(tiles);
    return sheet.isOk() ? drawInto(file, sheet.value()) : sheet.fault();
}

std::optional<Fault> PicturePainter::_runViewport(std::string const& file, std::string const& size,
                                                  std::vector<std::string> const& arguments) {
    std::vector<std::string> words{viewport};
    words.insert(words.end(), arguments.begin(), arguments.end());
    // The user's own configuration does not change the pictures of the project.
    words.insert(words.end(), {"--out", file, "--size", size, "--no-config"});
    int const status = runner.run(words);
    if (status != 0) {
        return Fault{viewport, "ended with exit status " + std::to_string(status)};
    }
    return std::nullopt;
}

}  // namespace vellum::gallery
