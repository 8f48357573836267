#include "viewport/drawing/Viewer.h"

#include "toolkit/Lights.h"
#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/overlays/ColorBar.h"
#include "viewport/drawing/overlays/ColorLegend.h"

#include <algorithm>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

void append(std::vector<Point>& points, std::vector<Point> const& more) {
    points.insert(points.end(), more.begin(), more.end());
}

/// What says what the colors of particles mean, or null.
std::unique_ptr<ColorKey> keyOf(ParticleStyle const& style, PictureSize const& size) {
    if (style.scale) {
        return std::make_unique<ColorBar>(*style.scale, ValueColors(style.colors, style.colorMap), size);
    }
    return style.legend ? std::make_unique<ColorLegend>(*style.legend, size) : nullptr;
}

}  // namespace

Viewer::Viewer(Core_RL& layer, Scene const& scene, ViewStyle const& style, EffectRenderer* effect)
    : layer(layer)
    , scene(scene)
    , style(style)
    , effect(effect)
    , textures(layer)
    , blended(layer, style.mesh, textures)
    , gizmo(layer, style.gizmo, scene.up())
    , cornerAxes(layer, scene.up())
    , camera(style.camera)
    , backdrop(layer) {
    for (Model const& model : scene.models()) {
        if (!style.mesh.importPreview && (effect == nullptr || !effect->covers(models.size()))) {
            blended.add(model);
        }
        models.emplace_back(layer, model, style.mesh, textures);
    }
    for (ParticleCloud const& cloud : scene.clouds()) {
        clouds.emplace_back(layer, cloud, style.particles);
    }
    layer.setCamera(&camera.camera());
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

    if (effect != nullptr && effect->ownScene() != nullptr) {
        camera.load(region);
        _drawOcean(*effect->ownScene());
        return;
    }
    backdrop.drawBackground(region, size);
    _placeLights();
    camera.load(region);
    layer.pushDepthTest(DEPTH_TESTED);
    if (_isGroundShown()) {
        backdrop.drawGrid(sampling);
    }
    _drawModels(sampling);
    _drawClouds(sampling);
    blended.draw();
    if (effect != nullptr) {
        // Last, as an effect may show what is behind it.
        effect->draw();
    }
    if (gizmo.isShown()) {
        glClear(GL_DEPTH_BUFFER_BIT);
        gizmo.draw(camera, size, sampling);
    }
    glClear(GL_DEPTH_BUFFER_BIT);
    cornerAxes.draw(camera.screen(), region, size, sampling);
    layer.popDepthTest();
}

void Viewer::drawLabels(Picture& picture) {
    _layOut({picture.width, picture.height});
    if (colorKey != nullptr) {
        colorKey->draw(picture);
    }
}

std::optional<Picked> Viewer::pick(PictureSize const& size, Pixel pixel) {
    _layOut(size);
    return Picker(layer, scene, camera, models, clouds, gizmo).pick(size, pixel);
}

// == Layout ==

void Viewer::_layOut(PictureSize const& size) {
    if (layoutSize == size) {
        return;
    }
    layoutSize = size;
    colorKey = clouds.empty() ? nullptr : keyOf(style.particles, size);
    PictureSize framed = size;
    framed.width -= colorKey != nullptr ? colorKey->reservedWidth() : 0;
    if (effect != nullptr && effect->ownScene() != nullptr) {
        camera.frame(*effect->ownScene(), framed);
    } else {
        camera.frame(scene, _framedPoints(), framed);
    }
    backdrop.layOut(scene, camera, size);
}

std::vector<Point> Viewer::_framedPoints() const {
    std::vector<Point> points;
    for (Model const& model : scene.models()) {
        if (style.mesh.shading == Shading::BOX) {
            append(points, toolkit::cornersOf(model.box));
        } else {
            points.insert(points.end(), model.vertices.begin(), model.vertices.end());
        }
    }
    for (ParticleCloud const& cloud : scene.clouds()) {
        append(points, toolkit::cornersOf(cloud.box));
    }
    return points;
}

/// Particles in a simulation box need no ground: the box shows the scale, and nothing stands on the ground.
bool Viewer::_isGroundShown() const {
    std::vector<ParticleCloud> const& all = scene.clouds();
    return !scene.models().empty() || all.empty() ||
           std::any_of(all.begin(), all.end(),
                       [](ParticleCloud const& cloud) { return cloud.boxLines.empty(); });
}

// == Parts of the picture ==

void Viewer::_placeLights() const {
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    // The orthographic cameras leave their orientation to the projection, so light is computed in the world's frame
    // there, with the viewer at +z whatever the view: highlights would be in wrong places and are left out.
    toolkit::setHeadLights(toolkit::screenAxes(camera.view()), camera.isPerspective() ? 1.0F : 0.0F);
}

void Viewer::_drawOcean(OceanScene const& ocean) {
    ocean.drawSky(layer);
    layer.pushDepthTest(DEPTH_TESTED);
    effect->draw();
    layer.popDepthTest();
    ocean.drawHaze(layer);
}

void Viewer::_drawModels(Sampling const& sampling) {
    for (std::size_t i = 0; i < models.size(); ++i) {
        if (effect == nullptr || !effect->covers(i)) {
            models[i].draw(sampling);
        }
    }
}

void Viewer::_drawClouds(Sampling const& sampling) {
    for (CloudDrawing const& cloud : clouds) {
        cloud.drawBox(sampling);
    }
    for (CloudDrawing& cloud : clouds) {
        cloud.draw(sampling);
    }
}

}  // namespace vellum::viewport
