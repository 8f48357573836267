#include "foundation/foundation.h"
#include "toolkit/Lit.h"
#include "viewport/gallery/sheets/palette.h"
#include "viewport/gallery/sheets/placement.h"
#include "viewport/gallery/sheets/subjects.h"

#include <cmath>

namespace vellum::gallery {

namespace {

constexpr unsigned int WIDTH = 256;   // values along a row
constexpr unsigned int HEIGHT = 128;  // rows

/// Interference of the waves of three sources.
Array<float> waves() {
    Array<float> values;
    values.reserve(WIDTH * HEIGHT, false);
    for (unsigned int row = 0; row < HEIGHT; ++row) {
        for (unsigned int column = 0; column < WIDTH; ++column) {
            auto const x = static_cast<float>(column) / HEIGHT;
            auto const y = static_cast<float>(row) / HEIGHT;
            float const height = std::sin(34.0F * std::hypot(x - 0.3F, y - 0.2F)) +
                                 std::sin(34.0F * std::hypot(x - 1.0F, y - 0.9F)) +
                                 std::sin(34.0F * std::hypot(x - 1.7F, y - 0.3F));
            values.pushBack(0.5F + height / 6.0F);
        }
    }
    return values;
}

void drawScene(Core_RL& layer) {
    layer.pushColor(FAINT);
    layer.renderPlane3({{0.0F, 1.0F, 0.0F}, 0.6F}, 4.0F, 20);
    layer.popColor(1);
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(ORANGE);
    layer.renderSphere({-0.85F, 0.0F, 0.0F}, 0.6F);
    layer.popColor(1);
    layer.pushColor(TEAL);
    layer.renderBox3({0.8F, -0.1F, 0.0F}, 0.5F);
    layer.popColor(1);
}

/// Opens an overlay in the middle of the viewport, `part` of its size, and draws the waves into it.
void drawOverlay(Core_RL& layer, Color4<float> const& color, bool blend, float opacity, float part) {
    Tuple4<unsigned int> const whole = layer.getCurrentViewportCoords();
    auto const scaled = [&part](unsigned int value) {
        return static_cast<unsigned int>(static_cast<float>(value) * part);
    };
    unsigned int const width = scaled(whole.e2);
    unsigned int const height = scaled(whole.e3);
    Tuple4<unsigned int> const middle{whole.e0 + (whole.e2 - width) / 2, whole.e1 + (whole.e3 - height) / 2,
                                      width, height};

    layer.pushViewportOrtho(middle, {-1.0F, 1.0F, -1.0F, 1.0F});
    layer.pushDepthTest({DEPTH_TEST_OFF, false});
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushColor({color.r, color.g, color.b, opacity});
    unsigned int const texture = layer.createTexture();
    layer.pushTextureLuminance(texture, WIDTH, HEIGHT, blend, waves());
    layer.renderQuad3(texture);
    layer.popTextureLuminance(texture);
    layer.popColor(1);
    layer.popBlending();
    layer.popDepthTest();
    layer.popViewportOrtho();
}

void drawWithout(Core_RL& layer, View) {
    drawScene(layer);
}

void drawBlend(Core_RL& layer, View) {
    drawScene(layer);
    drawOverlay(layer, {0.05F, 0.12F, 0.40F, 1.0F}, true, 1.0F, 0.7F);
}

void drawDecal(Core_RL& layer, View) {
    drawScene(layer);
    drawOverlay(layer, {0.05F, 0.12F, 0.40F, 1.0F}, false, 1.0F, 0.7F);
}

void drawTranslucent(Core_RL& layer, View) {
    drawScene(layer);
    drawOverlay(layer, {0.05F, 0.12F, 0.40F, 1.0F}, true, 0.55F, 0.7F);
}

}  // namespace

Subject luminance() {
    View const view = View::perspective({0.9F, 1.3F, 4.2F}, {0.0F, -0.1F, 0.0F}, 34.0F);
    return {"luminance",
            {{1.0F, {{"the scene", view, drawWithout}, {"blended toward white", view, drawBlend}}},
             {1.0F, {{"decal", view, drawDecal}, {"translucent", view, drawTranslucent}}}}};
}

}  // namespace vellum::gallery
