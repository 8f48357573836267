#include "viewport/drawing/overlays/GizmoDrawing.h"

#include "toolkit/Lit.h"
#include "toolkit/transforms.h"
#include "viewport/scene/GroundGrid.h"

namespace vellum::viewport {

namespace {

constexpr double LENGTH = 118;  // of a handle, pixels of a picture of 720

constexpr unsigned int X_NAME = 1;
constexpr unsigned int Y_NAME = 2;
constexpr unsigned int Z_NAME = 3;
constexpr unsigned int CENTER_NAME = 4;
static_assert(CENTER_NAME < GizmoDrawing::NAMES_END);

constexpr Color4<float> CENTER{0.86F, 0.87F, 0.90F, 1};

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
    static constexpr char const* HANDLES[] = {"", "X", "Y", "Z", "center"};
    return std::string("gizmo ") + wordFor(gizmo) + " " + HANDLES[name];
}

void GizmoDrawing::_draw(ViewCamera const& camera, PictureSize const& size, Sampling const& sampling,
                         bool isPicking) const {
    layer.pushTransform(turn.matrix() * toolkit::scaling(LENGTH * size.scale() * camera.unitsPerPixel()));
    layer.pushLineWidth(sampling.lineWidth(2.6));
    switch (gizmo) {
    case Gizmo::MOVE: {
        toolkit::Lit const lit(toolkit::Lit::Finish::BRIGHT);
        layer.renderAxesArrow3(X_NAME, Y_NAME, Z_NAME, axisColors(), 0.26F);
        break;
    }
    case Gizmo::SCALE: {
        toolkit::Lit const lit(toolkit::Lit::Finish::BRIGHT);
        Tuple4<Color4<float>> const colors{axisColor(0), axisColor(1), axisColor(2), CENTER};
        layer.renderAxesBox3(X_NAME, Y_NAME, Z_NAME, CENTER_NAME, colors, 0.075F);
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

}  // namespace vellum::viewport
