#include "viewport/gallery/Gallery.h"

#include "offscreen/OffscreenContext.h"
#include "viewport/gallery/IndexPage.h"
#include "viewport/gallery/PicturePainter.h"
#include "viewport/gallery/ProgramRunner.h"
#include "viewport/gallery/WorkFolder.h"
#include "viewport/gallery/effect_inputs.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>

namespace vellum::gallery {

namespace {

namespace fs = std::filesystem;
using viewport::Fault;
using viewport::Result;

Gallery::ExitStatus fail(Fault const& fault) {
    std::cerr << "vl_gallery: " << fault.line() << '\n';
    return Gallery::FAILURE;
}

/// Prints a progress message and flushes it, for readers of a pipe.
void say(std::string const& message) {
    std::cout << message << std::endl;
}

}  // namespace

Gallery::ExitStatus Gallery::run() {
    Result<std::vector<ListedPicture>> read = readPictureList(settings.list);
    if (!read.isOk()) {
        return fail(read.fault());
    }
    listed = std::move(read.value());
    for (std::string const& file : settings.only) {
        if (std::none_of(listed.begin(), listed.end(),
                         [&](ListedPicture const& picture) { return picture.file == file; })) {
            std::cerr << "vl_gallery: --only: " << settings.list << " lists no " << file << '\n';
            return USAGE_ERROR;
        }
    }
    std::error_code error;
    fs::create_directories(settings.out, error);
    if (error) {
        return fail({settings.out, error.message()});
    }
    if (OffscreenContext const trial{OffscreenContext::Settings()}; !trial.isValid()) {
        std::cerr << "vl_gallery: " << trial.error() << '\n';
        return NO_GL;
    }
    return _draw();
}

/// Draws the pictures and the page, and removes the temporary files before an interruption ends the process.
Gallery::ExitStatus Gallery::_draw() {
    ProgramRunner runner;
    std::optional<Fault> fault;
    {
        WorkFolder const work(settings.out);
        if (!work.isValid()) {
            return fail({settings.out, "cannot be written to"});
        }
        fault = writeEffectInputs(work.path());
        if (!fault) {
            fault = _drawPictures(work, runner);
        }
    }
    if (runner.isInterrupted()) {
        runner.endAsInterrupted();
    }
    if (!fault) {
        say("writing the page");
        fault = writeIndexPage(settings.out, _exhibits());
    }
    if (fault) {
        return fail(*fault);
    }
    say("done: " + (fs::absolute(settings.out) / "index.html").lexically_normal().string());
    return DONE;
}

std::optional<Fault> Gallery::_drawPictures(WorkFolder const& work, ProgramRunner& runner) {
    ListVariables variables = settings.variables;
    variables["inputs"] = work.path();
    Result<std::vector<ListedPicture>> const chosen = _chosen(variables);
    if (!chosen.isOk()) {
        return chosen.fault();
    }
    PicturePainter painter(settings.viewport, settings.out, work, runner);
    std::string group;
    for (ListedPicture const& picture : chosen.value()) {
        if (picture.group != group) {
            group = picture.group;
            say("drawing " + group);
        }
        std::optional<Fault> const fault = painter.paint(picture);
        if (runner.isInterrupted()) {
            return std::nullopt;
        }
        if (fault) {
            return Fault{settings.list,
                         "line " + std::to_string(picture.line) + ": " + picture.file + ": " + fault->line()};
        }
    }
    return std::nullopt;
}

/// The pictures to be drawn, with their variables filled in.
Result<std::vector<ListedPicture>> Gallery::_chosen(ListVariables const& variables) const {
    std::vector<ListedPicture> chosen;
    for (ListedPicture const& picture : listed) {
        bool const isAskedFor = settings.only.empty() || std::find(settings.only.begin(), settings.only.end(),
                                                                   picture.file) != settings.only.end();
        if (!isAskedFor) {
            continue;
        }
        if (!hasAllNeeds(picture, variables)) {
            say("leaving out " + picture.file);
            continue;
        }
        Result<ListedPicture> filled = withVariables(picture, variables, settings.list);
        if (!filled.isOk()) {
            return filled.fault();
        }
        chosen.push_back(std::move(filled.value()));
    }
    return chosen;
}

/// The listed pictures that are in the folder, also those of earlier runs.
std::vector<Exhibit> Gallery::_exhibits() const {
    std::vector<Exhibit> exhibits;
    for (ListedPicture const& picture : listed) {
        std::error_code error;
        if (fs::is_regular_file(fs::path(settings.out) / picture.file, error)) {
            exhibits.push_back({picture.section, picture.file, picture.title, picture.caption});
        }
    }
    return exhibits;
}

}  // namespace vellum::gallery
