#include "viewport/drawing/subjects/CloudDrawing.h"

#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/subjects/ImpostorView.h"

#include <algorithm>
#include <cmath>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

constexpr double POINT_SIZE = 2.4;     // pixels of a picture of 720
constexpr double LONGEST_ARROW = 1.9;  // mean distances of neighbors
constexpr Color4<float> BOX{0.86F, 0.88F, 0.92F, 0.5F};

}  // namespace

CloudDrawing::CloudDrawing(Core_RL& layer, ParticleCloud const& cloud, ParticleStyle const& style,
                           double unitsPerFileUnit)
    : layer(layer)
    , cloud(cloud)
    , style(style)
    , unitsPerFileUnit(unitsPerFileUnit)
    , renderer(layer, cloud.system, style) {}

void CloudDrawing::draw(toolkit::ScreenAxes const& screen, Sampling const& sampling) {
    GLint viewport[4];
    Matrix4<double> projection;
    Matrix4<double> modelView;
    glGetIntegerv(GL_VIEWPORT, viewport);
    glGetDoublev(GL_PROJECTION_MATRIX, projection.e);
    glGetDoublev(GL_MODELVIEW_MATRIX, modelView.e);
    ImpostorView const view = ImpostorView::of(projection * modelView, viewport[2], viewport[3], screen.right,
                                               screen.towardViewer, cloud.diameter);
    int const side = std::max(viewport[2], viewport[3]);

    glViewport(viewport[0], viewport[1], side, side);
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(view.projection.e);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(view.modelView.e);
    renderer.draw(static_cast<float>(_sizeForEffect(view.size, sampling)));
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(projection.e);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(modelView.e);
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
}

void CloudDrawing::drawBox(Sampling const& sampling) const {
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushLineWidth(sampling.lineWidth(1.0));
    layer.pushColor(BOX);
    layer.begin(Primitive::LINES);
    for (Vector3<float> const& end : cloud.boxLines) {
        layer.renderPoint3_scoped(end);
    }
    layer.end();
    layer.popColor(1);
    layer.popLineWidth();
    layer.popBlending();
    layer.popDepthTest();
}

double CloudDrawing::_sizeForEffect(double sphereSize, Sampling const& sampling) const {
    switch (style.mode) {
    case ParticleMode::SPHERES:
        return sphereSize;
    case ParticleMode::ARROWS:
        return _arrowSize();
    case ParticleMode::POINTS:
        break;
    }
    return style.size ? *style.size * sampling.perSide : POINT_SIZE * sampling.lineScale;
}

double CloudDrawing::_arrowSize() const {
    // The effect puts an arrow's tip at twice the vector, hence the halves.
    if (style.size) {
        double const unit = style.scale ? style.scale->unit : 1;
        return *style.size * unitsPerFileUnit * unit / 2;
    }
    // The fewer particles are drawn, the farther apart they are, and the longer arrows can be.
    double const part = std::max(style.percent / 100.0, 1e-6);
    double const fastest = style.scale ? style.scale->toMagnitude(style.scale->range.high) : 1;
    return LONGEST_ARROW * cloud.spacing / std::cbrt(part) / (fastest > 0 ? fastest : 1) / 2;
}

}  // namespace vellum::viewport
