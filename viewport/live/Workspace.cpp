#include "viewport/live/Workspace.h"

#include "viewport/files/images/PictureFormat.h"

#include <algorithm>
#include <utility>

namespace vellum::viewport {

Workspace::Workspace(Options const& options, std::function<void()> wake)
    : renderLayer(std::make_unique<toolkit::Layer>())
    , shown(options)
    , wanted(options)
    , catalog(wake)
    , wake(wake)
    , loader(std::move(wake)) {
    if (!wanted.files.empty() || wanted.hasOwnSea()) {
        _load(wanted, nullptr);
    }
}

void Workspace::apply(Options const& options) {
    Change const change = changeBetween(wanted, options);
    if (options.transforms != wanted.transforms) {
        steps.clear();
    }
    if (change == Change::NOTHING) {
        return;
    }
    wanted = options;
    Change const sinceShown = changeBetween(shown, wanted);
    bool const isOpen = live != nullptr && !isReading && !isRefused;
    std::optional<std::size_t> const frame = isOpen && sinceShown <= Change::FRAME && player != nullptr
                                                 ? player->line().frameOf(wanted)
                                                 : std::nullopt;
    if (frame && sinceShown == Change::FRAME) {
        loader.forget();
        _showFrame(*frame);
        return;
    }
    bool const isAwaited = isFrameAwaited();
    if (isAwaited) {
        player->forget();
    }
    Change const needed = isAwaited || isRefused ? sinceShown : change;
    if (needed >= Change::SUBJECT || loader.isLoading() || live == nullptr) {
        bool const isKept = sinceShown <= Change::SUBJECT && !isReading;
        _load(wanted, isKept ? openContent : nullptr);
        return;
    }
    if (needed == Change::LOOK) {
        live->setLook(wanted);
    } else if (needed == Change::CAMERA) {
        lastFault = live->setCamera(wanted.pictures.front().camera);
    }
    shown = wanted;
}

/// Of what is open, as it is wanted.
void Workspace::_showFrame(std::size_t frame) {
    lastFault.reset();
    Options former = *playerOptions;
    former.particles.frame = wanted.particles.frame;
    former.time = wanted.time;
    if (changeBetween(former, wanted) >= Change::SUBJECT) {
        player->setOptions(wanted);
        playerOptions = wanted;
    }
    player->show(frame);
}

void Workspace::setCamera(CameraSpec const& spec) {
    if (live == nullptr || live->setCamera(spec)) {
        return;
    }
    _keepCamera(spec);
}

/// Of what is seen. Other files that are being loaded are seen whole.
void Workspace::_keepCamera(CameraSpec const& spec) {
    if (wanted.files == shown.files) {
        wanted.pictures.front().camera = spec;
    }
    shown.pictures.front().camera = spec;
}

void Workspace::open(std::vector<std::string> const& files) {
    Options options = wanted;
    options.files = files;
    options.view.clear();
    options.format.clear();
    options.isSeries = false;
    options.pictures.front().camera = {};
    options.particles.frame.reset();
    options.time.reset();
    options.particles.channel.clear();
    options.particles.range.reset();
    options.particles.selection.clear();
    options.particles.clip.reset();
    options.particles.mode.reset();
    options.particles.size.reset();
    options.up.reset();
    options.effect.reset();  // of the meshes that were open
    options.transforms.clear();
    wanted = options;
    _load(wanted, nullptr);
}

void Workspace::reload() {
    if (!wanted.files.empty()) {
        _load(wanted, nullptr);
    }
}

void Workspace::cancelLoading() {
    loader.cancel();
    if (player != nullptr) {
        player->forget();
    }
    wanted = shown;
}

void Workspace::_load(Options const& options, std::shared_ptr<Content const> const& kept) {
    lastFault.reset();
    words.clear();
    isGoingBack = false;
    isRefused = false;
    isReading = kept == nullptr;
    if (player != nullptr) {
        player->forget();
    }
    loader.start(options, kept);
}

bool Workspace::update(double aspect) {
    std::optional<LoadOutcome> outcome = loader.poll();
    bool isNew = catalog.poll();
    if (outcome) {
        isNew = _takeOver(std::move(*outcome), aspect) || isNew;
    }
    if (std::optional<LoadOutcome> frame = player != nullptr ? player->poll() : std::nullopt) {
        isNew = _takeFrame(std::move(*frame), aspect) || isNew;
    }
    return isNew;
}

bool Workspace::_takeOver(LoadOutcome outcome, double aspect) {
    isReading = false;
    if (!outcome.loaded) {
        lastFault = outcome.fault;
        wanted = shown;
        return true;
    }
    Options options = isGoingBack ? shown : wanted;
    if (wanted.files == shown.files) {
        // The camera may have moved meanwhile.
        options.pictures.front().camera = wanted.pictures.front().camera;
    }
    if (options.files != shown.files) {
        _forgetEdits();
    }
    _dropMisfits(options, outcome.loaded->subject.scene, outcome.notes);
    // What stands is given back first: two large scenes may be more than the GPU holds.
    std::unique_ptr<LiveScene> former = std::move(live);
    double const detail = former != nullptr && openContent == outcome.loaded->content ? former->detail() : 1;
    former.reset();
    isReplaced = true;
    Result<std::unique_ptr<LiveScene>> made = LiveScene::make(
        *renderLayer, options, std::move(outcome.loaded->subject), aspect, isGoingBack ? nullptr : &words);
    if (!made.isOk()) {
        if (!isGoingBack) {
            lastFault = made.fault();
            _goBack();
        }
        return true;
    }
    live = std::move(made.value());
    live->setDetail(detail);
    if (openContent != outcome.loaded->content) {
        openContent = std::move(outcome.loaded->content);
        catalog.setContent(openContent);
        player.reset();
        if (FrameLine(*openContent).count() > 1) {
            player = std::make_unique<FramePlayer>(options, *openContent, wake);
            playerOptions = options;
        }
    }
    shown = options;
    if (!isGoingBack) {
        wanted = options;
    }
    isGoingBack = false;
    if (!chosen && gizmo() != Gizmo::NONE) {
        chosen = 0;
    }
    live->select(chosen);
    _tellNotes(std::move(outcome.notes));
    return true;
}

bool Workspace::_takeFrame(LoadOutcome outcome, double aspect) {
    if (!outcome.loaded) {
        lastFault = outcome.fault;
        player->forget();
        wanted = shown;
        return true;
    }
    // Another frame may be wanted by now; all else is as it is wanted.
    Options options = wanted;
    options.particles.frame = outcome.loaded->options.particles.frame;
    options.time = outcome.loaded->options.time;
    _dropMisfits(options, outcome.loaded->subject.scene, outcome.notes);
    if (std::optional<Fault> fault =
            live->show(options, std::move(outcome.loaded->subject), aspect, &words)) {
        live.reset();
        player->forget();
        isReplaced = true;
        lastFault = fault;
        _goBack();
        return true;
    }
    openContent = std::move(outcome.loaded->content);
    catalog.follow(openContent);
    shown = options;
    if (!player->awaited()) {
        wanted = options;
    }
    live->select(chosen);
    _tellNotes(std::move(outcome.notes));
    return true;
}

/// Objects that were moved and are not there any more stay where their files have them.
void Workspace::_dropMisfits(Options& options, Scene const& scene, std::vector<Fault>& notes) {
    if (std::optional<std::string> const misfit = misfitOf(options.transforms, scene)) {
        removeMisfits(options.transforms, scene);
        steps.clear();
        notes.push_back({"", "not everything is moved: " + *misfit});
    }
    if (chosen && *chosen >= objectCount(scene)) {
        chosen.reset();
    }
}

void Workspace::_tellNotes(std::vector<Fault> notes) {
    notesOfScene = std::move(notes);
    for (Fault const& what : live->takeNotes()) {
        notesOfScene.push_back(what);
    }
}

// == Editing ==

void Workspace::select(std::optional<std::size_t> object) {
    bool const exists = object && live != nullptr && *object < objectCount(live->scene());
    chosen = exists ? object : std::nullopt;
    if (live != nullptr) {
        live->select(chosen);
    }
    isEdited = true;
}

ObjectTransform Workspace::transform(std::size_t object) const {
    auto const found = shown.transforms.find(object);
    return found != shown.transforms.end() ? found->second : ObjectTransform();
}

void Workspace::setTransform(std::size_t object, ObjectTransform const& transform, std::string const& label) {
    if (live == nullptr || object >= objectCount(live->scene()) ||
        !isDrawable(transform, live->scene(), object)) {
        return;
    }
    steps.push({object, label, this->transform(object), transform});
    _keep(object, transform);
}

void Workspace::preview(std::size_t object, ObjectTransform const& transform) {
    if (live == nullptr) {
        return;
    }
    live->setTransform(object, transform);
    // The camera is held where it was.
    _keepCamera(live->options().pictures.front().camera);
    isEdited = true;
}

void Workspace::undo() {
    if (std::optional<TransformStep> const step = steps.undo()) {
        _keep(step->object, step->before);
    }
}

void Workspace::redo() {
    if (std::optional<TransformStep> const step = steps.redo()) {
        _keep(step->object, step->after);
    }
}

void Workspace::setGizmo(Gizmo gizmo) {
    wanted.pictures.front().gizmo = gizmo;
    shown.pictures.front().gizmo = gizmo;
    if (live != nullptr) {
        live->setGizmo(gizmo);
        if (gizmo != Gizmo::NONE && !chosen) {
            select(0);
        }
    }
    isEdited = true;
}

/// Shows an object where it is from now on.
void Workspace::_keep(std::size_t object, ObjectTransform const& transform) {
    auto const keepIn = [&](Options& options) {
        if (transform.isIdentity()) {
            options.transforms.erase(object);
        } else {
            options.transforms[object] = transform;
        }
    };
    keepIn(shown);
    // Other files that are being loaded have other objects.
    if (wanted.files == shown.files) {
        keepIn(wanted);
    }
    preview(object, transform);
}

/// The objects of other files are others.
void Workspace::_forgetEdits() {
    chosen.reset();
    steps.clear();
}

/// Shows again what was shown before: what is wanted could not be drawn. It stays wanted, for whoever
/// corrects it.
void Workspace::_goBack() {
    isRefused = true;
    isGoingBack = openContent != nullptr;
    isReading = false;
    if (isGoingBack) {
        loader.start(shown, openContent);
    }
}

void Workspace::saveScreenshot(std::string const& path, PictureSize const& size) {
    if (live == nullptr) {
        return;
    }
    std::optional<PictureFormat> const format = pictureFormatOf(path);
    if (!format) {
        lastFault = Fault{path, std::string("the name tells no format of pictures (known: ") +
                                    PICTURE_EXTENSIONS + ")"};
        return;
    }
    // The handles are tools, and no part of the scene.
    live->select(std::nullopt);
    Result<Picture> const picture = live->picture(size);
    live->select(chosen);
    lastFault = picture.isOk() ? picture.value().save(path, *format) : picture.fault();
}

}  // namespace vellum::viewport
