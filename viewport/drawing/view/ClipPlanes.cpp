#include "viewport/drawing/view/ClipPlanes.h"

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

constexpr unsigned int PLANE_COUNT = 6;

/// Shows what lies on the side of the point that the normal points to. Both in the frame of the scene.
void setPlane(unsigned int index, Vector3<double> const& point, Vector3<double> const& normal) {
    GLdouble const plane[4] = {normal.x, normal.y, normal.z, -dot(point, normal)};
    glClipPlane(GL_CLIP_PLANE0 + index, plane);
    glEnable(GL_CLIP_PLANE0 + index);
}

}  // namespace

ClipPlanes::ClipPlanes(std::optional<Box3<double>> const& box, Scene const& scene)
    : isClipping(box.has_value()) {
    if (!isClipping) {
        return;
    }
    Vector3<double> const low = scene.placeToScene(box->min);
    Vector3<double> const high = scene.placeToScene(box->max);
    Vector3<double> const axes[] = {scene.directionToScene({1, 0, 0}), scene.directionToScene({0, 1, 0}),
                                    scene.directionToScene({0, 0, 1})};
    for (unsigned int i = 0; i < 3; ++i) {
        setPlane(2 * i, low, axes[i]);
        setPlane(2 * i + 1, high, -axes[i]);
    }
}

ClipPlanes::~ClipPlanes() {
    for (unsigned int i = 0; isClipping && i < PLANE_COUNT; ++i) {
        glDisable(GL_CLIP_PLANE0 + i);
    }
}

}  // namespace vellum::viewport
