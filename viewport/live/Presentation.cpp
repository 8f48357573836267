#include "viewport/live/Presentation.h"

#include "toolkit/ParticleRenderer.h"

#include <utility>

namespace vellum::viewport {

Presentation::Presentation(toolkit::Layer& layer, Options const& options, Subject& subject)
    : layer(layer), options(options), subject(&subject) {
    layer.assumeFreeGpuMemory(options.gpuMemory);
}

Tiling Presentation::tilingOf(Options const& options, PictureSize const& size) {
    if (options.effect) {
        return Tiling::ofOneTile(size);
    }
    return options.particles.mode == ParticleMode::ARROWS ? Tiling::ofSameShape(size) : Tiling::of(size);
}

ViewStyle Presentation::styleOf(Options const& options, PictureOptions const& picture,
                                Subject const& subject) {
    return {options.mesh,       ParticleStyle::of(subject.look, options.particles),
            picture.camera,     picture.gizmo,
            picture.background, picture.explanations,
            picture.light,      options.particles.clip};
}

std::optional<Presentation::Lack> Presentation::prepare(double aspect) {
    if (!isBegun) {
        isBegun = true;
        if (std::optional<Lack> lack = _prepareMode()) {
            return lack;
        }
    }
    return _prepareEffect(aspect);
}

std::vector<Fault> Presentation::takeNotes() {
    return std::exchange(notes, {});
}

std::unique_ptr<Viewer> Presentation::viewer(ViewStyle const& style) const {
    auto made = std::make_unique<Viewer>(layer, subject->scene, style, effect.get());
    for (auto const& [object, transform] : options.transforms) {
        made->setTransform(object, transform);
    }
    return made;
}

void Presentation::show(Subject& other) {
    effect.reset();
    subject = &other;
    isBegun = false;
}

void Presentation::_tell(Fault const& note) {
    if (told.insert(note.line()).second) {
        notes.push_back(note);
    }
}

std::optional<Presentation::Lack> Presentation::_prepareMode() {
    if (options.effect) {
        if (std::optional<Fault> const lack = EffectRenderer::firstLack(layer, options.effect->values)) {
            return Lack{true, {}, *lack};
        }
    }
    ParticleMode& mode = subject->look.mode;
    bool const needsGeometry = mode == ParticleMode::SPHERES || mode == ParticleMode::ARROWS;
    if (!subject->scene.clouds().empty() && needsGeometry && !toolkit::hasGeometryStages(layer)) {
        _tell({"", "OpenGL here has no geometry stages for spheres and arrows; drawn as points"});
        mode = ParticleMode::POINTS;
    }
    return std::nullopt;
}

/// Only the sea without files depends on the picture: on its shape.
std::optional<Presentation::Lack> Presentation::_prepareEffect(double aspect) {
    if (!options.effect || (effect != nullptr && (aspect == effectAspect || !options.hasOwnSea()))) {
        return std::nullopt;
    }
    if (!subject->effect) {
        Result<EffectSubject> prepared = EffectSubject::prepare(*options.effect, {}, subject->scene, aspect);
        if (!prepared.isOk()) {
            return Lack{false, {}, prepared.fault()};
        }
        subject->effect = std::move(prepared.value());
    }
    effect.reset();
    effect =
        std::make_unique<EffectRenderer>(layer, *options.effect, options.mesh, std::move(*subject->effect));
    subject->effect.reset();
    effectAspect = aspect;
    if (std::optional<Lack> lack = _stageLack()) {
        return lack;
    }
    for (Fault const& note : effect->notes()) {
        _tell(note);
    }
    return std::nullopt;
}

/// The driver's words belong to the fault.
std::optional<Presentation::Lack> Presentation::_stageLack() const {
    std::vector<Fault> faults = effect->stageFaults();
    if (faults.empty()) {
        return std::nullopt;
    }
    Fault const last = faults.back();
    faults.pop_back();
    return Lack{false, std::move(faults), last};
}

}  // namespace vellum::viewport
