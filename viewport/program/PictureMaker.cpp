#include "viewport/program/PictureMaker.h"

#include <algorithm>
#include <iostream>
#include <utility>

namespace vellum::viewport {

namespace {

TiledPicture tiledPicture(Options const& options, PictureSize const& size) {
    return {size, Presentation::tilingOf(options, size)};
}

}  // namespace

PictureMaker::PictureMaker(Options const& options, Subject& subject, OffscreenContext& context)
    : options(options), subject(&subject), context(context) {}

OffscreenContext::Settings PictureMaker::contextSettings(Options const& options) {
    OffscreenContext::Settings largest =
        tiledPicture(options, options.pictures.front().size).contextSettings();
    for (PictureOptions const& picture : options.pictures) {
        OffscreenContext::Settings const settings = tiledPicture(options, picture.size).contextSettings();
        largest.width = std::max(largest.width, settings.width);
        largest.height = std::max(largest.height, settings.height);
    }
    return largest;
}

std::optional<Failure> PictureMaker::begin() {
    renderLayer = std::make_unique<toolkit::Layer>();
    presentation = std::make_unique<Presentation>(*renderLayer, options, *subject);
    return _prepare(options.pictures.front());
}

std::optional<Failure> PictureMaker::make(PictureOptions const& picture, ViewStyle const& style,
                                          Tell const& tell) {
    viewer.reset();  // Before the effect that it draws with.
    if (std::optional<Failure> failure = _prepare(picture)) {
        return failure;
    }
    viewer = presentation->viewer(style);
    return _pickAndWrite(picture, tell);
}

std::optional<Failure> PictureMaker::makeAgain(PictureOptions const& picture, CameraSpec const& camera,
                                               Tell const& tell) {
    if (std::optional<Fault> const fault = viewer->setCamera(camera)) {
        return Failure{USAGE_FAULT, *fault};
    }
    return _pickAndWrite(picture, tell);
}

void PictureMaker::show(Subject& other) {
    viewer.reset();
    presentation->show(other);
    subject = &other;
}

std::optional<Failure> PictureMaker::_pickAndWrite(PictureOptions const& picture, Tell const& tell) {
    if (std::optional<Fault> const fault = viewer->cameraFault(picture.size)) {
        return Failure{USAGE_FAULT, *fault};
    }
    for (Fault const& what : viewer->notes(picture.size)) {
        _say(picture, what);
    }
    if (picture.pick) {
        tell(viewer->pick(picture.size, *picture.pick));
    }
    if (std::optional<Failure> failure = flushOutput()) {
        return failure;
    }
    return picture.out.empty() ? std::nullopt : _write(picture);
}

/// Says it once for all pictures of a film.
void PictureMaker::_say(PictureOptions const& picture, Fault const& what) {
    std::string const series = picture.names ? picture.names->of(0) : picture.out;
    if (said.insert({series, what.message}).second) {
        note(options, {picture.out, what.message});
    }
}

std::optional<Failure> PictureMaker::_prepare(PictureOptions const& picture) {
    std::optional<Presentation::Lack> const lack = presentation->prepare(picture.size.aspect());
    for (Fault const& what : presentation->takeNotes()) {
        note(options, what);
    }
    if (!lack) {
        return std::nullopt;
    }
    for (Fault const& words : lack->words) {
        std::cerr << "vl_viewport: " << words.line() << std::endl;
    }
    return Failure{lack->isOfOpenGL ? NO_OPENGL : FILE_FAULT, lack->fault};
}

std::optional<Failure> PictureMaker::_write(PictureOptions const& picture) {
    TiledPicture const tiled = tiledPicture(options, picture.size);
    Result<Picture> drawn = tiled.draw(*viewer, *renderLayer, context);
    if (!drawn.isOk()) {
        return Failure{FILE_FAULT, {picture.out, drawn.fault().message}};
    }
    PictureFormat const format = pictureFormatOf(picture.out).value_or(PictureFormat::PNG);
    if (format == PictureFormat::EXR) {
        drawn.value().depths = tiled.drawDepths(*viewer);
    }
    std::optional<Fault> const fault =
        drawn.value().save(picture.out, format, picture.quality.value_or(Picture::STANDARD_QUALITY));
    return fault ? std::optional<Failure>({FILE_FAULT, *fault}) : std::nullopt;
}

}  // namespace vellum::viewport
