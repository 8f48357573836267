#include "viewport/live/LiveScene.h"

#include "viewport/drawing/TiledPicture.h"
#include "viewport/drawing/view/Navigation.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

// Fewer would not show what is there.
constexpr double LEAST_PART = 1.0 / 256;

Picture plainPicture(PictureSize const& size, unsigned char value) {
    Picture picture;
    picture.width = size.width;
    picture.height = size.height;
    picture.pixels.assign(4 * static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height),
                          value);
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4) {
        picture.pixels[i] = 255;
    }
    return picture;
}

}  // namespace

Result<std::unique_ptr<LiveScene>> LiveScene::make(toolkit::Layer& layer, Options options, Subject subject,
                                                   double aspect, std::vector<Fault>* words) {
    std::unique_ptr<LiveScene> made(new LiveScene(layer, std::move(options), std::move(subject)));
    if (std::optional<Presentation::Lack> const lack = made->presentation.prepare(aspect)) {
        if (words != nullptr) {
            *words = lack->words;
        }
        return lack->fault;
    }
    made->_makeViewer();
    return made;
}

LiveScene::LiveScene(toolkit::Layer& layer, Options options, Subject subject)
    : layer(layer)
    , asked(std::move(options))
    , subject(std::move(subject))
    , presentation(layer, asked, this->subject)
    , cameraSpec(asked.pictures.front().camera) {}

void LiveScene::_makeViewer() {
    asked.pictures.front().camera = cameraSpec;
    viewer.reset();
    viewer = presentation.viewer(asked.pictures.front());
    viewer->setDetail(drawnPart);
    Background background = asked.pictures.front().background;
    background.isCheckered = true;
    viewer->setBackground(background);
    _showGizmo();
    if (drawnSize.width > 0) {
        // It has a camera before it has drawn: the mouse may move it first. A fault is that of the next
        // drawing.
        static_cast<void>(viewer->cameraFault(drawnSize));
    }
}

std::optional<Fault> LiveScene::show(Options const& options, Subject other, double aspect,
                                     std::vector<Fault>* words) {
    viewer.reset();
    asked = options;
    cameraSpec = options.pictures.front().camera;
    subject = std::move(other);
    presentation.show(subject);
    if (std::optional<Presentation::Lack> const lack = presentation.prepare(aspect)) {
        if (words != nullptr) {
            *words = lack->words;
        }
        return lack->fault;
    }
    _makeViewer();
    return std::nullopt;
}

void LiveScene::setLook(Options const& options) {
    asked = options;
    cameraSpec = options.pictures.front().camera;
    _makeViewer();
}

std::optional<Fault> LiveScene::setCamera(CameraSpec const& spec) {
    if (std::optional<Fault> fault = viewer->setCamera(spec)) {
        return fault;
    }
    cameraSpec = spec;
    asked.pictures.front().camera = spec;
    return std::nullopt;
}

// == Editing ==

void LiveScene::setTransform(std::size_t object, ObjectTransform const& transform) {
    if (object >= objectCount(scene()) || !isDrawable(transform, scene(), object)) {
        return;
    }
    if (transform.isIdentity()) {
        asked.transforms.erase(object);
    } else {
        asked.transforms[object] = transform;
    }
    // A camera that frames what is shown would follow the object.
    ViewCamera const& camera = viewer->camera();
    bool const isFramed = drawnSize.width > 0;
    double const half = isFramed ? camera.halfHeightAtFocus() : 0;
    bool const isHeld = cameraSpec.position && cameraSpec.focus &&
                        (cameraSpec.projection != Projection::PARALLEL || cameraSpec.height);
    if (isFramed && (!isHeld || camera.isAlongAxis())) {
        cameraSpec = Navigation(scene(), camera).pan(0, 0);
    }
    viewer->setTransform(object, transform);
    if (isFramed) {
        viewer->setCamera(cameraSpec);
        if (camera.isAlongAxis()) {
            // Its size is relative to the box of what is shown.
            viewer->cameraFault(drawnSize);
            cameraSpec.zoom *= camera.halfHeightAtFocus() / half;
            viewer->setCamera(cameraSpec);
        }
    }
    asked.pictures.front().camera = cameraSpec;
}

void LiveScene::select(std::optional<std::size_t> object) {
    selected = object;
    _showGizmo();
}

void LiveScene::setGizmo(Gizmo gizmo) {
    asked.pictures.front().gizmo = gizmo;
    _showGizmo();
}

void LiveScene::highlight(GizmoHandle handle) {
    highlighted = handle;
    _showGizmo();
}

void LiveScene::_showGizmo() {
    viewer->setSelected(selected);
    viewer->setGizmo(selected ? asked.pictures.front().gizmo : Gizmo::NONE);
    viewer->setHighlighted(highlighted);
}

// == Drawing ==

void LiveScene::draw(PictureSize const& size) {
    auto const start = std::chrono::steady_clock::now();
    glViewport(0, 0, size.width, size.height);
    drawnSize = size;
    viewer->draw(size);
    std::chrono::duration<double> const called = std::chrono::steady_clock::now() - start;
    glFinish();
    auto const end = std::chrono::steady_clock::now();
    std::chrono::duration<double> const taken = end - start;
    frameRate.count(std::chrono::duration<double>(end.time_since_epoch()).count());
    drawingFacts = {frameRate.perSecond(), called.count(), taken.count(), viewer->drawnParticles()};
    if (taken.count() > budget && !subject.scene.clouds().empty()) {
        drawnPart = std::max(LEAST_PART, drawnPart / 2);
        viewer->setDetail(drawnPart);
    }
}

void LiveScene::setDetail(double part) {
    drawnPart = part;
    viewer->setDetail(part);
}

std::optional<Picture> LiveScene::labels(PictureSize const& size) {
    Picture overBlack = plainPicture(size, 0);
    viewer->drawLabels(overBlack);
    Picture overWhite = plainPicture(size, 255);
    viewer->drawLabels(overWhite);
    removeBackground(overBlack, overWhite);
    bool const isEmpty = std::all_of(overBlack.pixels.begin(), overBlack.pixels.end(),
                                     [](unsigned char byte) { return byte == 0; });
    return isEmpty ? std::nullopt : std::optional<Picture>(std::move(overBlack));
}

Result<Picture> LiveScene::picture(PictureSize const& size) {
    TiledPicture const tiled(size, Presentation::tilingOf(asked, size));
    OffscreenContext::Settings settings = tiled.contextSettings();
    settings.isBesideCurrent = true;
    // A larger buffer would round places otherwise: its rows are counted from its other end.
    if (beside == nullptr || beside->width() != settings.width || beside->height() != settings.height) {
        beside.reset();
        beside = std::make_unique<OffscreenContext>(settings);
    } else if (!beside->makeCurrent()) {
        return Fault{"", "OpenGL refuses to draw a picture"};
    }
    if (!beside->isValid()) {
        return Fault{"", std::exchange(beside, nullptr)->error()};
    }
    viewer->setDetail(1);
    Result<Picture> picture = tiled.draw(*viewer, layer, *beside);
    viewer->setDetail(drawnPart);
    if (!beside->makeFormerCurrent()) {
        return Fault{"", "OpenGL refuses to draw into the window again"};
    }
    return picture;
}

}  // namespace vellum::viewport
