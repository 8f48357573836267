#include "viewport/drawing/Picker.h"

#include "viewport/drawing/layer/depth_modes.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

constexpr unsigned int FIRST_MODEL_NAME = 16;
static_assert(FIRST_MODEL_NAME >= GizmoDrawing::NAMES_END);

constexpr double REACH = 2.5;  // pixels on each side of the pixel's center

}  // namespace

std::optional<Picked> Picker::pick(PictureSize const& size, Pixel pixel) {
    double const x = pixel.x + 0.5;
    double const y = size.height - pixel.y - 0.5;
    glViewport(0, 0, size.width, size.height);
    camera.load({x - REACH, y - REACH, 2 * REACH, 2 * REACH});

    std::vector<Hit> hits = _selectModelsAndGizmo(size);
    std::vector<Hit> const cloudHits = _drawClouds();
    hits.insert(hits.end(), cloudHits.begin(), cloudHits.end());
    auto const best = std::min_element(hits.begin(), hits.end(), _comesBefore);
    return best != hits.end() ? std::optional<Picked>(_toPicked(best->name)) : std::nullopt;
}

std::vector<Picker::Hit> Picker::_selectModelsAndGizmo(PictureSize const& size) {
    // A record of one name has four words; each handle and each model gives one record at most.
    std::vector<GLuint> buffer(4 * (models.size() + 64));
    glSelectBuffer(static_cast<GLsizei>(buffer.size()), buffer.data());
    glRenderMode(GL_SELECT);
    glInitNames();
    glPushName(0);
    for (std::size_t i = 0; i < models.size(); ++i) {
        layer.loadName(FIRST_MODEL_NAME + static_cast<unsigned int>(i));
        models[i].drawForPicking();
    }
    gizmo.drawForPicking(camera, size);
    return _readHits(buffer, glRenderMode(GL_RENDER));
}

/// Draws each cloud into the corner and reads its depth back: GL's selection sees only what is sent to it, and where a
/// particle ends up is decided by the shader.
std::vector<Picker::Hit> Picker::_drawClouds() {
    constexpr int SIDE = 2 * REACH;
    std::vector<Hit> hits;
    glViewport(0, 0, SIDE, SIDE);
    for (std::size_t i = 0; i < clouds.size(); ++i) {
        glClear(GL_DEPTH_BUFFER_BIT);
        layer.pushDepthTest(DEPTH_TESTED);
        clouds[i].draw(camera.screen(), Sampling());
        layer.popDepthTest();
        GLuint depths[SIDE * SIDE];
        glReadPixels(0, 0, SIDE, SIDE, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, depths);
        GLuint const nearest = *std::min_element(std::begin(depths), std::end(depths));
        if (nearest != std::numeric_limits<GLuint>::max()) {
            hits.push_back({_firstCloudName() + static_cast<unsigned int>(i), nearest});
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

/// Reads the records that glRenderMode left in the selection buffer: per hit the number of names, the nearest and
/// the farthest depth, the names.
std::vector<Picker::Hit> Picker::_readHits(std::vector<unsigned int> const& buffer, int count) {
    std::vector<Hit> hits;
    std::size_t at = 0;
    for (int i = 0; i < count && at + 3 < buffer.size(); ++i) {
        std::size_t const names = buffer[at];
        std::size_t const last = at + 2 + names;
        if (names > 0 && last < buffer.size()) {
            hits.push_back({buffer[last], buffer[at + 1]});
        }
        at += 3 + names;
    }
    return hits;
}

bool Picker::_comesBefore(Hit const& a, Hit const& b) {
    bool const isGizmoA = a.name < FIRST_MODEL_NAME;
    bool const isGizmoB = b.name < FIRST_MODEL_NAME;
    return isGizmoA != isGizmoB ? isGizmoA : a.nearestDepth < b.nearestDepth;
}

}  // namespace vellum::viewport
