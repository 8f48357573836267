#include "viewport/program/PictureMaker.h"

#include "viewport/drawing/Viewer.h"
#include "viewport/text/single_line.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <utility>

namespace vellum::viewport {

namespace {

std::string lineOf(std::optional<Picked> const& picked) {
    return picked ? singleLine(std::to_string(picked->name) + " " + picked->owner) : "nothing";
}

TiledPicture tiledPicture(Options const& options, PictureSize const& size) {
    return {size, options.effect ? Tiling::ofOneTile(size) : Tiling::of(size)};
}

}  // namespace

PictureMaker::PictureMaker(Options const& options, Subject& subject, OffscreenContext& context)
    : options(options), subject(subject), context(context) {}

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

ViewStyle PictureMaker::styleOf(Options const& options, PictureOptions const& picture,
                                Subject const& subject) {
    return {options.mesh,       ParticleStyle::of(subject.look, options.particles),
            picture.camera,     picture.gizmo,
            picture.background, picture.explanations,
            picture.light,      options.particles.clip};
}

std::optional<Failure> PictureMaker::begin() {
    renderLayer = std::make_unique<toolkit::Layer>();
    renderLayer->assumeFreeGpuMemory(options.gpuMemory);
    if (options.effect) {
        if (std::optional<Fault> const lack =
                EffectRenderer::firstLack(*renderLayer, options.effect->values)) {
            return Failure{NO_OPENGL, *lack};
        }
    }
    ParticleMode& mode = subject.look.mode;
    bool const needsGeometry = mode == ParticleMode::SPHERES || mode == ParticleMode::ARROWS;
    if (!subject.scene.clouds().empty() && needsGeometry && !toolkit::hasGeometryStages(*renderLayer)) {
        note(options, {"", "OpenGL here has no geometry stages for spheres and arrows; drawn as points"});
        mode = ParticleMode::POINTS;
    }
    return _prepareEffect(options.pictures.front());
}

std::optional<Failure> PictureMaker::make(PictureOptions const& picture) {
    if (std::optional<Failure> failure = _prepareEffect(picture)) {
        return failure;
    }
    Viewer viewer(*renderLayer, subject.scene, styleOf(options, picture, subject), effect.get());
    if (std::optional<Fault> const fault = viewer.cameraFault(picture.size)) {
        return Failure{USAGE_FAULT, *fault};
    }
    if (picture.pick) {
        std::cout << lineOf(viewer.pick(picture.size, *picture.pick)) << '\n';
    }
    if (std::optional<Failure> failure = flushOutput()) {
        return failure;
    }
    return picture.out.empty() ? std::nullopt : _write(picture, viewer);
}

/// Only the sea without files depends on the picture: on its shape.
std::optional<Failure> PictureMaker::_prepareEffect(PictureOptions const& picture) {
    double const aspect = picture.size.aspect();
    if (!options.effect || (effect != nullptr && (aspect == effectAspect || !options.hasOwnSea()))) {
        return std::nullopt;
    }
    if (!subject.effect) {
        Result<EffectSubject> prepared = EffectSubject::prepare(*options.effect, {}, subject.scene, aspect);
        if (!prepared.isOk()) {
            return Failure{FILE_FAULT, prepared.fault()};
        }
        subject.effect = std::move(prepared.value());
    }
    bool const isFirst = effect == nullptr;
    effect.reset();
    effect = std::make_unique<EffectRenderer>(*renderLayer, *options.effect, options.mesh,
                                              std::move(*subject.effect));
    subject.effect.reset();
    effectAspect = aspect;
    if (std::optional<Failure> failure = _stageFailure()) {
        return failure;
    }
    for (Fault const& what : effect->notes()) {
        if (isFirst) {
            note(options, what);
        }
    }
    return std::nullopt;
}

std::optional<Failure> PictureMaker::_stageFailure() const {
    std::vector<Fault> const faults = effect->stageFaults();
    if (faults.empty()) {
        return std::nullopt;
    }
    // The driver's words belong to the fault.
    std::for_each(faults.begin(), std::prev(faults.end()),
                  [](Fault const& line) { std::cerr << "vl_viewport: " << line.line() << std::endl; });
    return Failure{FILE_FAULT, faults.back()};
}

std::optional<Failure> PictureMaker::_write(PictureOptions const& picture, Viewer& viewer) {
    TiledPicture const tiled = tiledPicture(options, picture.size);
    ContextBuffer buffer(context);
    Result<Picture> drawn = tiled.draw(viewer, *renderLayer, buffer);
    if (!drawn.isOk()) {
        return Failure{FILE_FAULT, {picture.out, drawn.fault().message}};
    }
    PictureFormat const format = pictureFormatOf(picture.out).value_or(PictureFormat::PNG);
    if (format == PictureFormat::EXR) {
        drawn.value().depths = tiled.drawDepths(viewer, buffer);
    }
    std::optional<Fault> const fault =
        drawn.value().save(picture.out, format, picture.quality.value_or(Picture::STANDARD_QUALITY));
    return fault ? std::optional<Failure>({FILE_FAULT, *fault}) : std::nullopt;
}

}  // namespace vellum::viewport
