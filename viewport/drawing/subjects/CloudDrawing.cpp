#include "viewport/drawing/subjects/CloudDrawing.h"

#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/subjects/Moved.h"
#include "viewport/drawing/subjects/toolkit_look.h"

namespace vellum::viewport {

namespace {

constexpr double POINT_SIZE = 2.4;  // pixels of a picture of 720
constexpr double SHAFT_WIDTH = 2;   // of solid arrows, pixels of a picture of 720
constexpr float BOX_OPACITY = 0.5F;

}  // namespace

CloudDrawing::CloudDrawing(Core_RL& layer, ParticleCloud const& cloud, ParticleStyle const& style)
    : layer(layer), cloud(cloud), style(style), look(toolkitLook(style)) {
    look.colorChannel = cloud.colors.value_or(ParticleChannel_v2::NONE);
    // Points mark places, in pixels.
    bool const areSized = cloud.sizes && style.mode == ParticleMode::SPHERES;
    look.sizeChannel = areSized ? *cloud.sizes : ParticleChannel_v2::NONE;
}

void CloudDrawing::setDetail(double part) {
    bool const isThinned = style.mode == ParticleMode::POINTS || style.mode == ParticleMode::SPHERES;
    look.percent = isThinned ? style.percent * static_cast<float>(part) : style.percent;
}

void CloudDrawing::draw(Sampling const& sampling) {
    Moved const moved(layer, place);
    look.size = static_cast<float>(_size(sampling));
    layer.pushLineWidth(arrowWidth(sampling));
    drawn = drawParticles(renderer, *cloud.system, look, toolkit::View::current());
    layer.popLineWidth();
}

float CloudDrawing::arrowWidth(Sampling const& sampling) {
    return sampling.lineWidth(SHAFT_WIDTH);
}

void CloudDrawing::drawBox(Sampling const& sampling, Color4<float> const& ink) const {
    Moved const moved(layer, place);
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushLineWidth(sampling.lineWidth(1.0));
    layer.pushColor({ink.r, ink.g, ink.b, BOX_OPACITY});
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

double CloudDrawing::_size(Sampling const& sampling) const {
    switch (style.mode) {
    case ParticleMode::SPHERES:
        return cloud.sizes ? 1 : cloud.diameter;
    case ParticleMode::ARROWS:
    case ParticleMode::SOLID_ARROWS:
        return cloud.arrowLength;
    case ParticleMode::POINTS:
        break;
    }
    return style.size ? *style.size * sampling.perSide : POINT_SIZE * sampling.lineScale;
}

}  // namespace vellum::viewport
