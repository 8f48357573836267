#include "viewport/drawing/overlays/CornerAxes.h"

#include "toolkit/Lights.h"
#include "toolkit/Lit.h"
#include "viewport/drawing/overlays/GizmoDrawing.h"

#include <cmath>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

// Pixels of a picture of 720.
constexpr double LENGTH = 34;
constexpr double INSET = 64;
constexpr double LETTER_HALF_SIZE = 5;

/// The matrix whose first three columns are the given vectors and whose fourth is the origin.
Matrix4<double> frameOf(Point const& x, Point const& y, Point const& z, Point const& origin) {
    return {{x.x, x.y, x.z, 0, y.x, y.y, y.z, 0, z.x, z.y, z.z, 0, origin.x, origin.y, origin.z, 1}};
}

}  // namespace

void CornerAxes::draw(toolkit::ScreenAxes const& screen, Region const& region, PictureSize const& size,
                      Sampling const& sampling, Color4<float> const& ink) const {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, size.width, 0, size.height, -size.width, size.width);
    cropProjection(region, size);
    glLoadIdentity();
    toolkit::setHeadLights(toolkit::screenAxes(toolkit::ViewKind::FRONT), 0);

    double const length = LENGTH * size.scale();
    Point const corner{INSET * size.scale(), INSET * size.scale(), 0};
    auto const onScreen = [&](Point const& axis) -> Point {
        Point const direction = turn(axis);
        return {dot(screen.right, direction), dot(screen.up, direction), dot(screen.towardViewer, direction)};
    };
    Point const tips[] = {onScreen({1, 0, 0}), onScreen({0, 1, 0}), onScreen({0, 0, 1})};
    layer.pushLineWidth(sampling.lineWidth(2.0));
    layer.pushTransform(frameOf(tips[0] * length, tips[1] * length, tips[2] * length, corner));
    {
        toolkit::Lit const lit(toolkit::Lit::Finish::BRIGHT);
        layer.renderAxesArrow3(0, 0, 0, axisColors(), 0.30F);
    }
    layer.popTransform();
    layer.popLineWidth();

    layer.pushLineWidth(sampling.lineWidth(1.5));
    layer.pushColor(ink);
    for (unsigned int i = 0; i < 3; ++i) {
        // There is no place beside the tip of an axis that points at the viewer or away.
        if (std::abs(tips[i].z) < 0.95) {
            Point const place = corner + Point{tips[i].x, tips[i].y, 0} * (1.52 * length);
            double const half = LETTER_HALF_SIZE * size.scale();
            layer.pushTransform(frameOf({half, 0, 0}, {0, half, 0}, {0, 0, 1}, place));
            _drawLetter(i);
            layer.popTransform();
        }
    }
    layer.popColor(1);
    layer.popLineWidth();
}

void CornerAxes::_drawLetter(unsigned int axis) const {
    switch (axis) {
    case 0:
        layer.renderSegment3({-0.7F, -1, 0}, {0.7F, 1, 0});
        layer.renderSegment3({-0.7F, 1, 0}, {0.7F, -1, 0});
        break;
    case 1:
        layer.renderSegment3({0, -1, 0}, {0, 0, 0});
        layer.renderSegment3({0, 0, 0}, {-0.7F, 1, 0});
        layer.renderSegment3({0, 0, 0}, {0.7F, 1, 0});
        break;
    default:
        layer.renderSegment3({-0.7F, 1, 0}, {0.7F, 1, 0});
        layer.renderSegment3({0.7F, 1, 0}, {-0.7F, -1, 0});
        layer.renderSegment3({-0.7F, -1, 0}, {0.7F, -1, 0});
        break;
    }
}

}  // namespace vellum::viewport
