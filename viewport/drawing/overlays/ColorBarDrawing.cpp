#include "viewport/drawing/overlays/ColorBarDrawing.h"

#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/subjects/toolkit_look.h"

#include <utility>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

ParticleStyle styleOfCells(ColorBar const& bar, RampColors const& colors) {
    constexpr float ALL = 100;
    return {ParticleMode::POINTS, bar.scale(), colors, ALL, std::nullopt};
}

}  // namespace

ColorBarDrawing::ColorBarDrawing(Core_RL& layer, ColorBar bar, RampColors const& colors)
    : layer(layer)
    , layout(std::move(bar))
    , cells(layout.cells())
    , look(toolkitLook(styleOfCells(layout, colors))) {}

void ColorBarDrawing::draw(Region const& region, PictureSize const& size, Sampling const& sampling) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, size.width, 0, size.height, -1, 1);
    cropProjection(region, size);
    glLoadIdentity();
    layer.pushDepthTest(DEPTH_IGNORED);
    // Multisampled points are round, and cells must be squares without gaps.
    glPushAttrib(GL_MULTISAMPLE_BIT);
    glDisable(GL_MULTISAMPLE);
    look.size = static_cast<float>(layout.cellSize() * sampling.perSide);
    drawParticles(renderer, *cells, look, toolkit::View::current());
    glPopAttrib();
    layer.popDepthTest();
}

}  // namespace vellum::viewport
