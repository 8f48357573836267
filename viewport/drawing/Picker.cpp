#include "viewport/drawing/Picker.h"

#include "toolkit/pick.h"
#include "viewport/drawing/MeshSearch.h"
#include "viewport/drawing/ParticleSearch.h"
#include "viewport/drawing/ScreenPlace.h"
#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/view/ClipPlanes.h"
#include "viewport/editing/ObjectTransform.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

static_assert(FIRST_OBJECT_NAME >= GizmoDrawing::NAMES_END);

constexpr int BEYOND = 128;   // pixels; half of the largest point
constexpr float NOTHING = 1;  // a depth buffer that is cleared

/// The view of an object that is moved, as seen from where it was.
toolkit::View movedView(toolkit::View view, std::optional<Matrix4<double>> const& place) {
    if (place) {
        view.modelView = view.modelView * *place;
    }
    return view;
}

}  // namespace

std::optional<Picked> Picker::pick(PictureSize const& size, Pixel pixel) {
    double const x = pixel.x + 0.5;
    double const y = pixel.y + 0.5;
    std::vector<Hit> hits = _selectModelsAndGizmo(size, x, y);
    std::vector<Hit> const cloudHits = _drawClouds(size, x, y);
    hits.insert(hits.end(), cloudHits.begin(), cloudHits.end());
    if (sea != nullptr) {
        double const water = _waterDepth(size, x, y);
        hits.erase(std::remove_if(hits.begin(), hits.end(),
                                  [water](Hit const& hit) {
                                      return hit.name >= FIRST_OBJECT_NAME && hit.depth > water;
                                  }),
                   hits.end());
    }
    auto const best = std::min_element(hits.begin(), hits.end(), _comesBefore);
    if (best == hits.end()) {
        return std::nullopt;
    }
    Picked picked = _toPicked(best->name);
    if (best->name < FIRST_OBJECT_NAME) {
        return picked;
    }
    // Of the thing itself something may lie behind another one.
    double most = std::numeric_limits<double>::infinity();
    for (Hit const& hit : hits) {
        most = hit.name != best->name ? std::min(most, hit.depth) : most;
    }
    std::size_t const index = best->name - FIRST_OBJECT_NAME;
    if (best->name >= _firstCloudName()) {
        picked.particle = _particleOf(*best, size, _lookAround(size, x, y), most);
    } else if (hasSurfaces && index < scene.meshes().size()) {
        std::optional<Matrix4<double>> const& place = models[index].movedBy();
        ShownAt shownAt;
        if (place) {
            shownAt = [this, &place](Vector3<double> const& position) {
                return _movedInFile(*place, position);
            };
        }
        picked.element = findElement(scene.models()[index], scene.meshes()[index],
                                     movedView(_lookAround(size, x, y), place), clip, most, shownAt);
    }
    return picked;
}

GizmoHandle Picker::pickHandle(PictureSize const& size, Pixel pixel) {
    if (!gizmo.isShown()) {
        return GizmoHandle::NONE;
    }
    glViewport(0, 0, size.width, size.height);
    camera.load(Region::whole(size));
    std::vector<toolkit::PickHit> const hits =
        toolkit::pick(pixel.x + 0.5, pixel.y + 0.5, PICK_REACH, [&] { gizmo.drawForPicking(camera, size); });
    auto const nearest =
        std::min_element(hits.begin(), hits.end(), [](toolkit::PickHit const& a, toolkit::PickHit const& b) {
            return a.depth < b.depth;
        });
    return nearest != hits.end() ? handleNamed(nearest->name) : GizmoHandle::NONE;
}

/// Loads the view of the pixels within reach.
toolkit::View Picker::_lookAround(PictureSize const& size, double x, double y) {
    static_assert(SIDE == 2 * PICK_REACH);
    glViewport(0, 0, SIDE, SIDE);
    camera.load({x - PICK_REACH, size.height - y - PICK_REACH, SIDE, SIDE});
    return toolkit::View::current();
}

std::vector<Picker::Hit> Picker::_selectModelsAndGizmo(PictureSize const& size, double x, double y) {
    glViewport(0, 0, size.width, size.height);
    camera.load(Region::whole(size));
    std::vector<Hit> hits;
    for (toolkit::PickHit const& hit : toolkit::pick(x, y, PICK_REACH, [&] { _drawModelsAndGizmo(size); })) {
        hits.push_back({hit.name, hit.depth});
    }
    return hits;
}

void Picker::_drawModelsAndGizmo(PictureSize const& size) {
    {
        ClipPlanes const planes(clip, scene);
        for (std::size_t i = 0; i < models.size(); ++i) {
            layer.loadName(FIRST_OBJECT_NAME + static_cast<unsigned int>(i));
            models[i].drawForPicking();
        }
    }
    gizmo.drawForPicking(camera, size);
}

/// Draws each cloud into the corner and reads its depth back: GL's selection sees only what is sent to it,
/// and where a particle ends up is decided by the shader.
std::vector<Picker::Hit> Picker::_drawClouds(PictureSize const& size, double x, double y) {
    std::vector<Hit> hits;
    if (clouds.empty()) {
        return hits;
    }
    // Points are lost whose middle is outside of what is seen, and ends of lines are drawn otherwise: more is
    // seen than read.
    constexpr int ALL = SIDE + 2 * BEYOND;
    glViewport(-BEYOND, -BEYOND, ALL, ALL);
    camera.load({x - PICK_REACH - BEYOND, size.height - y - PICK_REACH - BEYOND, ALL, ALL});
    glScissor(0, 0, SIDE, SIDE);
    glEnable(GL_SCISSOR_TEST);
    // The samples of a pixel would be averaged when they are read.
    glDisable(GL_MULTISAMPLE);
    for (std::size_t i = 0; i < clouds.size(); ++i) {
        glClear(GL_DEPTH_BUFFER_BIT);
        layer.pushDepthTest(DEPTH_TESTED);
        clouds[i].draw(Sampling(1, size));
        layer.popDepthTest();
        Depths depths;
        glReadPixels(0, 0, SIDE, SIDE, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
        GLfloat const nearest = *std::min_element(std::begin(depths), std::end(depths));
        if (nearest < NOTHING) {
            hits.push_back(
                {_firstCloudName() + static_cast<unsigned int>(i), static_cast<double>(nearest), depths});
        }
    }
    glEnable(GL_MULTISAMPLE);
    glDisable(GL_SCISSOR_TEST);
    return hits;
}

/// The particle that shows at the pixel nearest to the middle that shows one.
std::optional<PickedParticle> Picker::_particleOf(Hit const& hit, PictureSize const& size,
                                                  toolkit::View const& view, double most) const {
    std::size_t const index = hit.name - _firstCloudName();
    if (index >= scene.frames().size()) {
        return std::nullopt;
    }
    double x = 0;
    double y = 0;
    double depth = 0;
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < SIDE * SIDE; ++i) {
        double const across = i % SIDE + 0.5 - PICK_REACH;
        double const down = PICK_REACH - (i / SIDE + 0.5);
        double const here = static_cast<double>(hit.depths[static_cast<std::size_t>(i)]);
        // The nearest of all is never hidden.
        bool const isShown = here < static_cast<double>(NOTHING) && (here <= most || here == hit.depth);
        if (isShown && std::hypot(across, down) < least) {
            least = std::hypot(across, down);
            x = PICK_REACH + across;
            y = PICK_REACH + down;
            depth = here;
        }
    }
    CloudDrawing const& drawing = clouds[index];
    DrawnCloud const drawn{drawing.drawnLook(), drawing.drawnMode(),
                           static_cast<double>(CloudDrawing::arrowWidth(Sampling(1, size)))};
    ParticleCloud const& cloud = scene.clouds()[index];
    std::optional<Matrix4<double>> const& place = drawing.movedBy();
    std::optional<std::size_t> const record = findParticle(cloud, drawn, movedView(view, place), x, y, depth);
    if (!record) {
        return std::nullopt;
    }
    PickedParticle particle = PickedParticle::of(scene.frames()[index], cloud.records, *record);
    if (place) {
        particle.shownAt = _movedInFile(*place, particle.shownAt);
    }
    return particle;
}

/// The depth of the farthest water about the pixel; that of nothing where there is a place without water.
double Picker::_waterDepth(PictureSize const& size, double x, double y) {
    _lookAround(size, x, y);
    glDisable(GL_MULTISAMPLE);
    glClear(GL_DEPTH_BUFFER_BIT);
    layer.pushDepthTest(DEPTH_TESTED);
    sea->draw();
    layer.popDepthTest();
    glEnable(GL_MULTISAMPLE);
    Depths depths;
    glReadPixels(0, 0, SIDE, SIDE, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    return static_cast<double>(*std::max_element(depths.begin(), depths.end()));
}

Picked Picker::_toPicked(unsigned int name) const {
    if (name >= _firstCloudName()) {
        return {name, scene.clouds()[name - _firstCloudName()].name};
    }
    if (name >= FIRST_OBJECT_NAME) {
        return {name, scene.models()[name - FIRST_OBJECT_NAME].name};
    }
    return {name, gizmo.handle(name)};
}

/// Where a place of the files is moved to, in their units and axes.
Vector3<double> Picker::_movedInFile(Matrix4<double> const& place, Vector3<double> const& position) const {
    return scene.placeToFile(transformed(place, scene.placeToScene(position)));
}

unsigned int Picker::_firstCloudName() const {
    return FIRST_OBJECT_NAME + static_cast<unsigned int>(models.size());
}

bool Picker::_comesBefore(Hit const& a, Hit const& b) {
    bool const isGizmoA = a.name < FIRST_OBJECT_NAME;
    bool const isGizmoB = b.name < FIRST_OBJECT_NAME;
    return isGizmoA != isGizmoB ? isGizmoA : a.depth < b.depth;
}

}  // namespace vellum::viewport
