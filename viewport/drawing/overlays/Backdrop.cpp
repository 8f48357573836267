#include "viewport/drawing/overlays/Backdrop.h"

#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/overlays/checkers.h"

#include <algorithm>

namespace vellum::viewport {

namespace {

/// The grid's lines are white, but for the axes.
Color4<float> inked(Color4<float> const& color, bool isDark, Color4<float> const& ink) {
    bool const isWhite = color.r == 1 && color.g == 1 && color.b == 1;
    return isWhite && isDark ? Color4<float>{ink.r, ink.g, ink.b, color.a} : color;
}

/// Squares over all of a picture, as corners of quads from 0 to 1. What reaches over its edges is cut away.
void renderDarkCheckers(Core_RL& layer, PictureSize const& size) {
    int const side = Checkers::side(size);
    double const width = static_cast<double>(side) / size.width;
    double const height = static_cast<double>(side) / size.height;
    for (int row = 0; row * side < size.height; ++row) {
        for (int column = 0; column * side < size.width; ++column) {
            if (!Checkers::isDark(column, row)) {
                continue;
            }
            auto const left = static_cast<float>(column * width);
            auto const right = static_cast<float>((column + 1) * width);
            auto const bottom = static_cast<float>(row * height);
            auto const top = static_cast<float>((row + 1) * height);
            layer.renderPoint3_scoped({left, bottom, 0});
            layer.renderPoint3_scoped({right, bottom, 0});
            layer.renderPoint3_scoped({right, top, 0});
            layer.renderPoint3_scoped({left, top, 0});
        }
    }
}

/// The grid in the plane that suits the view.
GroundGrid gridFor(Scene const& scene, ViewCamera const& camera, PictureSize const& size) {
    Box3<double> const& box = scene.box();
    double const spacing = GroundGrid::spacingFor(2 * Scene::RADIUS, scene.unitsPerFileUnit());
    if (!camera.isAlongAxis()) {
        // A little below the models, whose undersides would otherwise flicker through it.
        Vector3<double> const center{0, box.min.y - 0.004 * Scene::RADIUS, 0};
        return {center, {1, 0, 0},          {0, 0, 1}, 1.8 * Scene::RADIUS,
                true,   scene.fileOrigin(), spacing,   scene.up()};
    }
    // Seen along an axis, the ground would be a line or in the way.
    toolkit::ScreenAxes const& screen = camera.screen();
    double const halfWidth = camera.halfWidth();
    double const radius = std::max(halfWidth, halfWidth / size.aspect()) + Scene::RADIUS;
    return {screen.towardViewer * (-1.5 * Scene::RADIUS),
            screen.right,
            screen.up,
            radius,
            false,
            scene.fileOrigin(),
            spacing,
            scene.up()};
}

}  // namespace

void Backdrop::layOut(Scene const& scene, ViewCamera const& camera, PictureSize const& size) {
    segments = gridFor(scene, camera, size).segments();
}

void Backdrop::drawBackground(Background const& background, Region const& region,
                              PictureSize const& size) const {
    Tuple4<unsigned int> const viewport = layer.getCurrentViewportCoords();
    Tuple4<float> const part{static_cast<float>(region.x / size.width),
                             static_cast<float>((region.x + region.width) / size.width),
                             static_cast<float>(region.y / size.height),
                             static_cast<float>((region.y + region.height) / size.height)};
    layer.pushDepthTest(DEPTH_IGNORED);
    layer.pushViewportOrtho(viewport, part);
    bool const isCheckered = background.isTransparent && background.isCheckered;
    layer.pushColor(isCheckered ? Checkers::LIGHT : background.bottom);
    layer.begin(Primitive::QUADS);
    layer.renderPoint3_scoped({0, 0, 0});
    layer.renderPoint3_scoped({1, 0, 0});
    layer.setColor(isCheckered ? Checkers::LIGHT : background.top);
    layer.renderPoint3_scoped({1, 1, 0});
    layer.renderPoint3_scoped({0, 1, 0});
    if (isCheckered) {
        layer.setColor(Checkers::DARK);
        renderDarkCheckers(layer, size);
    }
    layer.end();
    layer.popColor(1);
    layer.popViewportOrtho();
    layer.popDepthTest();
}

void Backdrop::drawGrid(Color4<float> const& ink, Sampling const& sampling) const {
    bool const isDark = ink.g < 0.5F;
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushLineWidth(sampling.lineWidth(1.0));
    layer.pushColor(ink);
    layer.begin(Primitive::LINES);
    for (ShadedSegment const& segment : segments) {
        layer.setColor(inked(segment.fromColor, isDark, ink));
        layer.renderPoint3_scoped(segment.from);
        layer.setColor(inked(segment.toColor, isDark, ink));
        layer.renderPoint3_scoped(segment.to);
    }
    layer.end();
    layer.popColor(1);
    layer.popLineWidth();
    layer.popBlending();
    layer.popDepthTest();
}

}  // namespace vellum::viewport
