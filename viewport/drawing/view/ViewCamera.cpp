#include "viewport/drawing/view/ViewCamera.h"

#include "foundation/geometry/constants.h"

#include <cmath>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;
constexpr double FIELD_OF_VIEW = 32;  // vertical, degrees
constexpr Point PERSPECTIVE_DIRECTION{-0.62, -0.46, -0.80};

// The ground that is to be seen around the models, in radii of the scene.
constexpr double SURROUNDINGS = 1.8;

}  // namespace

void ViewCamera::frame(Scene const& scene, std::vector<Point> const& points, PictureSize const& size) {
    area = size;
    double const aspect = size.aspect();
    viewCamera.aspect = static_cast<float>(aspect);
    viewCamera.viewKind = static_cast<unsigned int>(spec.view);
    if (isPerspective()) {
        double const around = SURROUNDINGS * Scene::RADIUS;
        Box3<double> const surroundings{{-around, scene.box().min.y, -around},
                                        {around, scene.box().max.y, around}};
        toolkit::PerspectiveFraming const framing =
            toolkit::framePerspective(points, surroundings, PERSPECTIVE_DIRECTION, FIELD_OF_VIEW, aspect);
        viewCamera.fieldOfView = static_cast<float>(FIELD_OF_VIEW);
        viewCamera.nearDistance = static_cast<float>(framing.nearDistance);
        viewCamera.farDistance = static_cast<float>(framing.farDistance);
        viewCamera.lookAt(convert<float>(framing.eye), convert<float>(framing.eye + framing.direction),
                          convert<float>(framing.up));
    } else {
        toolkit::OrthographicFraming const framing =
            toolkit::frameOrthographic(scene.box(), spec.view, aspect);
        viewCamera.panX = static_cast<float>(framing.panX);
        viewCamera.panY = static_cast<float>(framing.panY);
        viewCamera.zoom = static_cast<float>(framing.zoom);
    }
    _updateScreen();
}

void ViewCamera::frame(OceanScene const& ocean, PictureSize const& size) {
    area = size;
    ocean.placeCamera(viewCamera);
    _updateScreen();
}

void ViewCamera::load(Region const& region) {
    viewCamera.updateProjectionMatrix();
    cropProjection(region, area);
    viewCamera.updateModelMatrix();
}

double ViewCamera::unitsPerPixel() const {
    if (!isPerspective()) {
        return 2 * halfWidth() / area.width;
    }
    double const depth = dot(-eye, -axes.towardViewer);
    return 2 * depth * std::tan(FIELD_OF_VIEW * PI / 360) / area.height;
}

double ViewCamera::halfWidth() const {
    return std::exp(static_cast<double>(viewCamera.zoom));
}

/// Reads the screen's axes back from the camera, whose single precision has rounded what it was given.
void ViewCamera::_updateScreen() {
    if (!isPerspective()) {
        axes = toolkit::screenAxes(spec.view);
        return;
    }
    Matrix4<float> const& m = *viewCamera.transform.matrix();
    Point const direction = normalized(Point{m.e[0], m.e[1], m.e[2]});
    Point const right = normalized(cross(direction, Point{m.e[4], m.e[5], m.e[6]}));
    axes = {right, cross(right, direction), -direction};
    eye = {m.e[12], m.e[13], m.e[14]};
}

}  // namespace vellum::viewport
