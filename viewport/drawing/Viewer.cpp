#include "viewport/drawing/Viewer.h"

#include "toolkit/Lights.h"
#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/view/ClipPlanes.h"
#include "viewport/editing/GizmoDrag.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

}  // namespace

Viewer::Viewer(Core_RL& layer, Scene const& scene, ViewStyle const& style, EffectRenderer* effect)
    : layer(layer)
    , scene(scene)
    , style(style)
    // The background of a sea is its own.
    , ink((effect != nullptr && effect->surroundingSea() != nullptr ? Background() : style.background).ink())
    , effect(effect)
    , textures(layer)
    , blended(layer, style.mesh, textures)
    , objectTransforms(objectCount(scene))
    , cornerAxes(layer, scene.up())
    , layout{nullptr, ViewCamera(style.camera), std::nullopt, {}}
    , backdrop(layer) {
    for (Model const& model : scene.models()) {
        if (!style.mesh.importPreview && (effect == nullptr || !effect->covers(models.size()))) {
            blended.add(model);
        } else if (effect != nullptr && effect->covers(models.size())) {
            // Another viewer may have moved it.
            effect->setPlace(models.size(), std::nullopt);
        }
        models.emplace_back(layer, model, style.mesh, textures);
    }
    for (ParticleCloud const& cloud : scene.clouds()) {
        clouds.emplace_back(layer, cloud, style.particles);
    }
    layer.setCamera(&layout.camera.camera());
}

void Viewer::draw(PictureSize const& size) {
    draw(size, Region::whole(size), 1);
}

void Viewer::draw(PictureSize const& size, Region const& region, int samplesPerSide) {
    _layOut(size);
    Sampling const sampling(samplesPerSide, size);
    glEnable(GL_NORMALIZE);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    _drawBehind(region, size, sampling);
    _drawSubjects(sampling);
    if (OceanScene const* const ocean = _ocean()) {
        ocean->drawHaze(layer);
        return;
    }
    if (SurroundingSea const* const sea = _sea()) {
        sea->drawHaze(layer, seaView);
    }
    layer.pushDepthTest(DEPTH_TESTED);
    if (GizmoDrawing const gizmo = _gizmo(); gizmo.isShown()) {
        glClear(GL_DEPTH_BUFFER_BIT);
        gizmo.draw(layout.camera, size, sampling);
    }
    if (style.explanations.hasAxes) {
        glClear(GL_DEPTH_BUFFER_BIT);
        cornerAxes.draw(layout.camera.screen(), region, size, sampling, ink);
    }
    layer.popDepthTest();
}

void Viewer::drawDepths(PictureSize const& size, Region const& region, int samplesPerSide) {
    _layOut(size);
    Sampling const sampling(samplesPerSide, size);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    // The samples of a pixel would be averaged when they are read, and a rim would be somewhere between two
    // surfaces.
    glDisable(GL_MULTISAMPLE);
    layout.camera.load(region);
    _drawSubjects(sampling);
    glEnable(GL_MULTISAMPLE);
}

double Viewer::distanceOf(double depth) const {
    return depth < 1 ? layout.camera.distanceOf(depth) / scene.unitsPerFileUnit()
                     : std::numeric_limits<double>::infinity();
}

std::optional<Fault> Viewer::cameraFault(PictureSize const& size) {
    _layOut(size);
    return layout.fault;
}

std::vector<Fault> const& Viewer::notes(PictureSize const& size) {
    _layOut(size);
    return layout.notes;
}

void Viewer::drawLabels(Picture& picture) {
    _layOut({picture.width, picture.height});
    if (layout.key != nullptr) {
        layout.key->draw(picture, ink);
    }
    if (std::optional<SizeBox> const box = _sizeBox()) {
        box->drawLabels(picture, view({picture.width, picture.height}), ink);
    }
}

std::optional<Picked> Viewer::pick(PictureSize const& size, Pixel pixel) {
    _layOut(size);
    return _picker(_gizmo()).pick(size, pixel);
}

// == Editing ==

void Viewer::setTransform(std::size_t object, ObjectTransform const& transform) {
    bool const isKnown = object < objectTransforms.size();
    if (!isKnown || objectTransforms[object] == transform || !isDrawable(transform, scene, object)) {
        return;
    }
    std::optional<Matrix4<double>> place;
    if (!transform.isIdentity()) {
        place = transform.toMatrix(scene, object);
    }
    objectTransforms[object] = transform;
    layoutSize.reset();
    if (object >= models.size()) {
        clouds[object - models.size()].setPlace(place);
        return;
    }
    models[object].setPlace(place);
    blended.setPlace(scene.models()[object], place);
    if (effect != nullptr && effect->covers(object)) {
        effect->setPlace(object, place);
    }
}

GizmoHandle Viewer::handleAt(PictureSize const& size, Pixel pixel) {
    _layOut(size);
    return _picker(_gizmo()).pickHandle(size, pixel);
}

Picker Viewer::_picker(GizmoDrawing const& gizmo) {
    return {layer,
            scene,
            layout.camera,
            models,
            clouds,
            gizmo,
            style.mesh.isFilled(),
            style.clip,
            _sea() != nullptr ? effect : nullptr};
}

toolkit::View Viewer::view(PictureSize const& size) {
    _layOut(size);
    layout.camera.load(Region::whole(size));
    toolkit::View view = toolkit::View::current();
    view.viewport = {0, 0, size.width, size.height};
    return view;
}

GizmoDrawing Viewer::_gizmo() const {
    std::optional<GizmoPlace> place;
    if (selected && *selected < objectTransforms.size()) {
        ObjectTransform const& transform = objectTransforms[*selected];
        Point const moved = scene.directionToScene(transform.translation * scene.unitsPerFileUnit());
        place = GizmoPlace{pivotOf(scene, *selected) + moved, handlesOf(style.gizmo, transform), highlighted};
    }
    return {layer, style.gizmo, scene.up(), place};
}

// == Layout ==

std::optional<Fault> Viewer::setCamera(CameraSpec const& spec) {
    if (!layoutSize || _ocean() != nullptr) {
        style.camera = spec;
        return std::nullopt;
    }
    std::optional<Fault> const formerFault = layout.fault;
    layout.setCamera(spec, scene);
    if (layout.fault) {
        return std::exchange(layout.fault, formerFault);
    }
    style.camera = spec;
    _layOutBehind();
    return std::nullopt;
}

void Viewer::_layOut(PictureSize const& size) {
    if (layoutSize == size) {
        return;
    }
    layoutSize = size;
    // In its place, whose camera the layer knows.
    layout = ViewLayout::of(scene, style, _ocean(), size, _sea(), objectTransforms);
    _layOutBehind();
}

void Viewer::_layOutBehind() {
    if (_sea() != nullptr && !layout.fault) {
        seaView = layout.camera.seaView(*layoutSize);
        effect->frameSea(seaView);
    }
    backdrop.layOut(scene, layout.camera, *layoutSize);
}

void Viewer::setDetail(double part) {
    for (CloudDrawing& cloud : clouds) {
        cloud.setDetail(part);
    }
}

std::optional<toolkit::ParticleDrawing> Viewer::drawnParticles() const {
    if (clouds.empty()) {
        return std::nullopt;
    }
    toolkit::ParticleDrawing drawing = clouds.front().drawing();
    for (std::size_t i = 1; i < clouds.size(); ++i) {
        drawing.count += clouds[i].drawing().count;
    }
    return drawing;
}

OceanScene const* Viewer::_ocean() const {
    return effect != nullptr ? effect->ownScene() : nullptr;
}

SurroundingSea const* Viewer::_sea() const {
    return effect != nullptr ? effect->surroundingSea() : nullptr;
}

/// Particles in a simulation box need no ground: the box shows the scale, and nothing stands on the ground.
bool Viewer::_isGroundShown() const {
    if (!style.explanations.hasGrid) {
        return false;
    }
    std::vector<ParticleCloud> const& all = scene.clouds();
    return !scene.models().empty() || all.empty() ||
           std::any_of(all.begin(), all.end(),
                       [](ParticleCloud const& cloud) { return cloud.boxLines.empty(); });
}

// == Parts of the picture ==

void Viewer::_placeLights() const {
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    // The cameras of the views along an axis leave their orientation to the projection, so light is computed
    // in the world's frame there, with the viewer at +z whatever the view: highlights would be in wrong
    // places and are left out.
    toolkit::ScreenAxes const screen = toolkit::screenAxes(layout.camera.view());
    float const specular = layout.camera.isAlongAxis() ? 0.0F : 1.0F;
    toolkit::setHeadLights(screen, specular);
    if (!style.light) {
        return;
    }
    Point toward = directionByAngles(style.light->azimuth, style.light->elevation);
    if (!layout.camera.isAlongAxis()) {
        toolkit::ScreenAxes const& eye = layout.camera.screen();
        toward = {dot(toward, eye.right), dot(toward, eye.up), dot(toward, eye.towardViewer)};
    }
    constexpr Color4<float> BLACK{0, 0, 0, 1};
    constexpr Color4<float> SUN{0.70F, 0.69F, 0.67F, 1};
    constexpr Color4<float> SKY{0.16F, 0.17F, 0.19F, 1};
    toolkit::LightSource{toward, true, BLACK, SUN, {specular, specular, specular, 1}}.set(0);
    // From the viewer, so that nothing is lost in the dark.
    toolkit::LightSource{screen.towardViewer, true, BLACK, SKY, BLACK}.set(1);
}

/// Draws what is behind everything, and leaves the camera's matrices and the lights for what follows.
void Viewer::_drawBehind(Region const& region, PictureSize const& size, Sampling const& sampling) {
    if (OceanScene const* const ocean = _ocean()) {
        layout.camera.load(region);
        ocean->drawSky(layer);
        return;
    }
    if (SurroundingSea const* const sea = _sea()) {
        layout.camera.load(region);
        sea->drawSky(layer, seaView);
        _placeLights();
        layout.camera.load(region);
        return;
    }
    backdrop.drawBackground(style.background, region, size);
    _placeLights();
    layout.camera.load(region);
    if (_isGroundShown()) {
        layer.pushDepthTest(DEPTH_TESTED);
        backdrop.drawGrid(ink, sampling);
        layer.popDepthTest();
    }
}

void Viewer::_drawSubjects(Sampling const& sampling) {
    layer.pushDepthTest(DEPTH_TESTED);
    bool const isInSea = _sea() != nullptr;
    if (isInSea) {
        effect->draw();
    }
    _drawModels(sampling);
    _drawClouds(sampling);
    {
        ClipPlanes const clip(style.clip, scene);
        blended.draw(sampling);
    }
    if (effect != nullptr && !isInSea) {
        // Last, as an effect may show what is behind it.
        effect->draw();
    }
    if (std::optional<SizeBox> const box = _sizeBox()) {
        box->drawLines(layer, sampling, ink);
    }
    layer.popDepthTest();
}

/// Nothing where it is not shown.
std::optional<SizeBox> Viewer::_sizeBox() const {
    if (!style.explanations.hasSizes || _ocean() != nullptr || layout.fault) {
        return std::nullopt;
    }
    Box3<double> const& box = layout.shownBox;
    return SizeBox(box, (box.max - box.min) * (1 / scene.unitsPerFileUnit()));
}

void Viewer::_drawModels(Sampling const& sampling) {
    ClipPlanes const clip(style.clip, scene);
    for (std::size_t i = 0; i < models.size(); ++i) {
        if (effect == nullptr || !effect->covers(i)) {
            models[i].draw(sampling);
        }
    }
}

void Viewer::_drawClouds(Sampling const& sampling) {
    for (CloudDrawing const& cloud : clouds) {
        if (style.explanations.hasBox) {
            cloud.drawBox(sampling, ink);
        }
    }
    for (CloudDrawing& cloud : clouds) {
        cloud.draw(sampling);
    }
}

}  // namespace vellum::viewport
