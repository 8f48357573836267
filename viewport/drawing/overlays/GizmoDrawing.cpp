#include "viewport/drawing/overlays/GizmoDrawing.h"

#include "toolkit/Lit.h"
#include "toolkit/transforms.h"
#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/scene/GroundGrid.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

namespace {

constexpr double HANDLE_LENGTH = 118;  // of a handle, pixels of a picture of 720

constexpr unsigned int nameOf(GizmoHandle handle) {
    return static_cast<unsigned int>(handle);
}

constexpr unsigned int X_NAME = nameOf(GizmoHandle::X);
constexpr unsigned int Y_NAME = nameOf(GizmoHandle::Y);
constexpr unsigned int Z_NAME = nameOf(GizmoHandle::Z);
constexpr unsigned int CENTER_NAME = nameOf(GizmoHandle::CENTER);
static_assert(nameOf(GizmoHandle::XY) < GizmoDrawing::NAMES_END);

constexpr Color4<float> CENTER{0.86F, 0.87F, 0.90F, 1};
constexpr Color4<float> HIGHLIGHT{1.0F, 0.87F, 0.16F, 1};
constexpr float PLANE_OPACITY = 0.50F;
constexpr float HIGHLIGHTED_PLANE_OPACITY = 0.75F;

// In lengths of a handle.
constexpr float ARROW_HEAD = 0.26F;
constexpr float BOX_HALF = 0.075F;
constexpr float CENTER_HALF = 0.08F;
constexpr float CENTER_HALF_HIT =
    0.15F;  // the axes begin here, and one that points to the viewer is before it
constexpr float PLANE_BEGIN = 0.16F;
constexpr float PLANE_END = 0.42F;

// Sines of the angles to the view below which a handle would be a point or a line that cannot be dragged.
constexpr double AXIS_END_ON = 0.12;
constexpr double PLANE_EDGE_ON = 0.15;

double component(Vector3<double> const& v, int axis) {
    return axis == 0 ? v.x : axis == 1 ? v.y : v.z;
}

Vector3<float> unitVector(int axis) {
    return {axis == 0 ? 1.0F : 0.0F, axis == 1 ? 1.0F : 0.0F, axis == 2 ? 1.0F : 0.0F};
}

/// From the directions of handles to the scene.
Matrix4<double> rotationInScene(Rotation const& rotation, Turn const& turn) {
    auto const column = [&](Vector3<double> const& v) { return turn(rotation(v)); };
    Vector3<double> const x = column({1, 0, 0});
    Vector3<double> const y = column({0, 1, 0});
    Vector3<double> const z = column({0, 0, 1});
    return {{x.x, x.y, x.z, 0, y.x, y.y, y.z, 0, z.x, z.y, z.z, 0, 0, 0, 0, 1}};
}

char const* wordFor(Gizmo gizmo) {
    switch (gizmo) {
    case Gizmo::MOVE:
        return "move";
    case Gizmo::ROTATE:
        return "rotate";
    case Gizmo::SCALE:
        return "scale";
    case Gizmo::NONE:
        break;
    }
    return "";
}

}  // namespace

Tuple3<Color4<float>> axisColors() {
    return {axisColor(0), axisColor(1), axisColor(2)};
}

void GizmoDrawing::draw(ViewCamera const& camera, PictureSize const& size, Sampling const& sampling) const {
    _draw(camera, size, sampling, false);
}

void GizmoDrawing::drawForPicking(ViewCamera const& camera, PictureSize const& size) const {
    _draw(camera, size, Sampling(), true);
}

std::string GizmoDrawing::handle(unsigned int name) const {
    static constexpr char const* HANDLES[NAMES_END] = {"", "X", "Y", "Z", "center", "YZ", "XZ", "XY"};
    bool const isViewCircle = gizmo == Gizmo::ROTATE && name == CENTER_NAME;
    return std::string("gizmo ") + wordFor(gizmo) + " " + (isViewCircle ? "view" : HANDLES[name]);
}

void GizmoDrawing::_draw(ViewCamera const& camera, PictureSize const& size, Sampling const& sampling,
                         bool isPicking) const {
    if (place) {
        _drawPlaced(camera, size, sampling, isPicking);
        return;
    }
    layer.pushTransform(turn.matrix() *
                        toolkit::scaling(HANDLE_LENGTH * size.scale() * camera.unitsPerPixel()));
    layer.pushLineWidth(sampling.lineWidth(2.6));
    switch (gizmo) {
    case Gizmo::MOVE: {
        toolkit::Lit const lit(toolkit::Lit::Finish::BRIGHT);
        layer.renderAxesArrow3(X_NAME, Y_NAME, Z_NAME, axisColors(), ARROW_HEAD);
        break;
    }
    case Gizmo::SCALE: {
        toolkit::Lit const lit(toolkit::Lit::Finish::BRIGHT);
        Tuple4<Color4<float>> const colors{axisColor(0), axisColor(1), axisColor(2), CENTER};
        layer.renderAxesBox3(X_NAME, Y_NAME, Z_NAME, CENTER_NAME, colors, BOX_HALF);
        break;
    }
    case Gizmo::ROTATE:
        _drawCircles(camera, sampling, isPicking);
        break;
    case Gizmo::NONE:
        break;
    }
    layer.popLineWidth();
    layer.popTransform();
}

void GizmoDrawing::_drawCircles(ViewCamera const& camera, Sampling const& sampling, bool isPicking) const {
    if (!isPicking) {
        // The whole circles thinly, so that the far halves are seen; only the near halves can be hit.
        layer.pushLineWidth(sampling.lineWidth(0.8));
        layer.renderAxesCircle3(X_NAME, Y_NAME, Z_NAME, axisColors(), 1.0F);
        layer.popLineWidth();
    }
    Vector3<float> const direction = convert<float>(turn.back(-camera.screen().towardViewer));
    layer.renderAxesCircleCulled3(X_NAME, Y_NAME, Z_NAME, direction, Matrix4<float>::identity(), 1.0F,
                                  axisColors(), 1.0F);
}

// == Over an object ==

void GizmoDrawing::_drawPlaced(ViewCamera const& camera, PictureSize const& size, Sampling const& sampling,
                               bool isPicking) const {
    if (!isShown()) {
        return;
    }
    double const handleLength = HANDLE_LENGTH * size.scale() * camera.unitsPerPixel(place->pivot);
    Vector3<double> const sight = place->handles.inverse()(turn.back(camera.sightTo(place->pivot)));
    layer.pushTransform(toolkit::translation(place->pivot) * rotationInScene(place->handles, turn) *
                        toolkit::scaling(handleLength));
    layer.pushLineWidth(sampling.lineWidth(2.6));
    if (gizmo == Gizmo::ROTATE) {
        _drawPlacedCircles(sight, sampling, isPicking);
    } else {
        toolkit::Lit const lit(toolkit::Lit::Finish::BRIGHT);
        for (VL_AXIS const axis : {VL_AXIS_X, VL_AXIS_Y, VL_AXIS_Z}) {
            double const along = component(sight, axis);
            if (1 - along * along > AXIS_END_ON * AXIS_END_ON) {
                _drawAxis(axis);
            }
        }
        layer.renderBox3(CENTER_NAME, _color(GizmoHandle::CENTER), isPicking ? CENTER_HALF_HIT : CENTER_HALF);
    }
    if (gizmo != Gizmo::ROTATE) {
        // Unlit, and blended over the others.
        _drawPlanes(sight);
    }
    layer.popLineWidth();
    layer.popTransform();
    if (gizmo == Gizmo::ROTATE) {
        layer.pushLineWidth(sampling.lineWidth(1.8));
        _drawViewCircle(camera, handleLength);
        layer.popLineWidth();
    }
}

void GizmoDrawing::_drawAxis(VL_AXIS axis) const {
    auto const handle = static_cast<GizmoHandle>(axis + 1);
    layer.pushColor(_color(handle));
    if (gizmo == Gizmo::MOVE) {
        layer.renderAxisArrow3(axis, nameOf(handle), ARROW_HEAD);
    } else {
        layer.renderAxisBox3(axis, nameOf(handle), BOX_HALF);
    }
    layer.popColor(1);
}

/// Not with the layer's drawing of all planes: one that is seen edge on would be hit before the axis in it.
void GizmoDrawing::_drawPlanes(Vector3<double> const& sight) const {
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    for (GizmoHandle const handle : {GizmoHandle::YZ, GizmoHandle::XZ, GizmoHandle::XY}) {
        int const across = normalAxisOf(handle);
        if (std::abs(component(sight, across)) <= PLANE_EDGE_ON) {
            continue;
        }
        Vector3<float> const u = unitVector((across + 1) % 3);
        Vector3<float> const v = unitVector((across + 2) % 3);
        Color4<float> color = _color(handle);
        color.a = handle == place->highlighted ? HIGHLIGHTED_PLANE_OPACITY : PLANE_OPACITY;
        layer.pushColor(color);
        layer.loadName(nameOf(handle));
        layer.begin(Primitive::QUADS);
        layer.renderPoint3_scoped(u * PLANE_BEGIN + v * PLANE_BEGIN);
        layer.renderPoint3_scoped(u * PLANE_END + v * PLANE_BEGIN);
        layer.renderPoint3_scoped(u * PLANE_END + v * PLANE_END);
        layer.renderPoint3_scoped(u * PLANE_BEGIN + v * PLANE_END);
        layer.end();
        layer.popColor(1);
    }
    layer.popDepthTest();
    layer.popBlending();
}

void GizmoDrawing::_drawPlacedCircles(Vector3<double> const& sight, Sampling const& sampling,
                                      bool isPicking) const {
    for (VL_AXIS const axis : {VL_AXIS_X, VL_AXIS_Y, VL_AXIS_Z}) {
        auto const handle = static_cast<GizmoHandle>(axis + 1);
        layer.pushColor(_color(handle));
        if (!isPicking) {
            layer.pushLineWidth(sampling.lineWidth(0.8));
            layer.renderAxisCircle3NoPicking(axis, 1.0F);
            layer.popLineWidth();
        }
        layer.renderAxisCircleCulled3(axis, nameOf(handle), convert<float>(sight), Matrix4<float>::identity(),
                                      1.0F, 1.0F);
        layer.popColor(1);
    }
}

/// Around the others, facing the viewer.
void GizmoDrawing::_drawViewCircle(ViewCamera const& camera, double length) const {
    Vector3<double> const toward = -camera.sightTo(place->pivot);
    Vector3<double> const right = normalized(cross(camera.screen().up, toward));
    Vector3<double> const up = cross(toward, right);
    Matrix4<double> const facing{
        {right.x, right.y, right.z, 0, up.x, up.y, up.z, 0, toward.x, toward.y, toward.z, 0, 0, 0, 0, 1}};
    layer.pushTransform(toolkit::translation(place->pivot) * facing *
                        toolkit::scaling(length * GIZMO_VIEW_CIRCLE));
    layer.pushColor(_color(GizmoHandle::CENTER));
    layer.loadName(CENTER_NAME);
    layer.renderCircle3(1.0F);
    layer.popColor(1);
    layer.popTransform();
}

/// Planes have the color of the axis across them.
Color4<float> GizmoDrawing::_color(GizmoHandle handle) const {
    if (handle == place->highlighted) {
        return HIGHLIGHT;
    }
    int const axis = std::max(axisOf(handle), normalAxisOf(handle));
    return axis >= 0 ? axisColor(static_cast<unsigned int>(axis)) : CENTER;
}

}  // namespace vellum::viewport
