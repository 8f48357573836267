#include "viewport/drawing/Picker.h"

#include "toolkit/pick.h"
#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/view/ClipPlanes.h"

#include <algorithm>
#include <iterator>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

constexpr unsigned int FIRST_MODEL_NAME = 16;
static_assert(FIRST_MODEL_NAME >= GizmoDrawing::NAMES_END);

constexpr double REACH = 2.5;  // pixels on each side of the pixel's center
constexpr float NOTHING = 1;   // a depth buffer that is cleared

}  // namespace

std::optional<Picked> Picker::pick(PictureSize const& size, Pixel pixel) {
    double const x = pixel.x + 0.5;
    double const y = pixel.y + 0.5;
    std::vector<Hit> hits = _selectModelsAndGizmo(size, x, y);
    std::vector<Hit> const cloudHits = _drawClouds(size, x, y);
    hits.insert(hits.end(), cloudHits.begin(), cloudHits.end());
    auto const best = std::min_element(hits.begin(), hits.end(), _comesBefore);
    return best != hits.end() ? std::optional<Picked>(_toPicked(best->name)) : std::nullopt;
}

std::vector<Picker::Hit> Picker::_selectModelsAndGizmo(PictureSize const& size, double x, double y) {
    glViewport(0, 0, size.width, size.height);
    camera.load(Region::whole(size));
    std::vector<Hit> hits;
    for (toolkit::PickHit const& hit : toolkit::pick(x, y, REACH, [&] { _drawModelsAndGizmo(size); })) {
        hits.push_back({hit.name, hit.depth});
    }
    return hits;
}

void Picker::_drawModelsAndGizmo(PictureSize const& size) {
    {
        ClipPlanes const planes(clip, scene);
        for (std::size_t i = 0; i < models.size(); ++i) {
            layer.loadName(FIRST_MODEL_NAME + static_cast<unsigned int>(i));
            models[i].drawForPicking();
        }
    }
    gizmo.drawForPicking(camera, size);
}

/// Draws each cloud into the corner and reads its depth back: GL's selection sees only what is sent to it,
/// and where a particle ends up is decided by the shader.
std::vector<Picker::Hit> Picker::_drawClouds(PictureSize const& size, double x, double y) {
    constexpr int SIDE = 2 * REACH;
    std::vector<Hit> hits;
    if (clouds.empty()) {
        return hits;
    }
    glViewport(0, 0, SIDE, SIDE);
    camera.load({x - REACH, size.height - y - REACH, 2 * REACH, 2 * REACH});
    for (std::size_t i = 0; i < clouds.size(); ++i) {
        glClear(GL_DEPTH_BUFFER_BIT);
        layer.pushDepthTest(DEPTH_TESTED);
        clouds[i].draw(Sampling());
        layer.popDepthTest();
        GLfloat depths[SIDE * SIDE];
        glReadPixels(0, 0, SIDE, SIDE, GL_DEPTH_COMPONENT, GL_FLOAT, depths);
        GLfloat const nearest = *std::min_element(std::begin(depths), std::end(depths));
        if (nearest < NOTHING) {
            hits.push_back({_firstCloudName() + static_cast<unsigned int>(i), static_cast<double>(nearest)});
        }
    }
    return hits;
}

Picked Picker::_toPicked(unsigned int name) const {
    if (name >= _firstCloudName()) {
        return {name, scene.clouds()[name - _firstCloudName()].name};
    }
    if (name >= FIRST_MODEL_NAME) {
        return {name, scene.models()[name - FIRST_MODEL_NAME].name};
    }
    return {name, gizmo.handle(name)};
}

unsigned int Picker::_firstCloudName() const {
    return FIRST_MODEL_NAME + static_cast<unsigned int>(models.size());
}

bool Picker::_comesBefore(Hit const& a, Hit const& b) {
    bool const isGizmoA = a.name < FIRST_MODEL_NAME;
    bool const isGizmoB = b.name < FIRST_MODEL_NAME;
    return isGizmoA != isGizmoB ? isGizmoA : a.depth < b.depth;
}

}  // namespace vellum::viewport
