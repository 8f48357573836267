#include "foundation/foundation.h"
#include "toolkit/Lit.h"
#include "viewport/gallery/sheets/palette.h"
#include "viewport/gallery/sheets/placement.h"
#include "viewport/gallery/sheets/subjects.h"

#include <cmath>

namespace vellum::gallery {

namespace {

constexpr Box3<float> BRICK{{-1.0F, -0.6F, -0.7F}, {1.0F, 0.6F, 0.7F}};

Tuple8<Vector3<float>> cornerColors() {
    // The color cube: each corner's place is its color.
    auto const corner = [](int i) {
        auto const channel = [i](int bit) { return (i & bit) != 0 ? 0.95F : 0.10F; };
        return Vector3<float>{channel(1), channel(2), channel(4)};
    };
    return {corner(0), corner(1), corner(2), corner(3), corner(4), corner(5), corner(6), corner(7)};
}

Obb3<float> leaningBox() {
    Vector3<float> const axis0 = normalized(Vector3<float>{0.9F, 0.4F, -0.2F});
    Vector3<float> const axis2 = normalized(cross(axis0, Vector3<float>{0.1F, 1.0F, 0.3F}));
    return {axis0, 1.05F, cross(axis2, axis0), 0.5F, axis2, 0.65F, {0.0F, 0.0F, 0.0F}};
}

void drawFilled(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(BLUE);
    layer.render(BRICK, false);
    layer.popColor(1);
}

void drawWire(Core_RL& layer, View) {
    layer.pushColor(TEAL);
    layer.render(BRICK, true);
    layer.popColor(1);
}

void drawFilledWithEdges(Core_RL& layer, View view) {
    drawFilled(layer, view);
    // The edges lie exactly on the faces; the shifted depths let them win.
    layer.setZBias(true);
    layer.pushDepthTest({DEPTH_LESS_OR_EQUAL, true});
    layer.pushColor(WHITE);
    layer.render(BRICK, true);
    layer.popColor(1);
    layer.popDepthTest();
    layer.setZBias(false);
}

void drawColoredCorners(Core_RL& layer, View) {
    layer.pushColor(WHITE);
    layer.render(Box3<double>{{-0.85, -0.85, -0.85}, {0.85, 0.85, 0.85}}, cornerColors(), false);
    layer.popColor(1);
}

void drawColoredWire(Core_RL& layer, View) {
    layer.pushColor(WHITE);
    layer.pushLineWidth(3.0F);
    layer.render(Box3<float>{{-0.85F, -0.85F, -0.85F}, {0.85F, 0.85F, 0.85F}}, cornerColors(), true);
    layer.popLineWidth();
    layer.popColor(1);
}

void drawOriented(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(ORANGE);
    layer.render(leaningBox(), false);
    layer.popColor(1);
}

void drawOrientedWire(Core_RL& layer, View) {
    Obb3<float> const box = leaningBox();
    layer.pushColor(ORANGE);
    layer.render(box, true);
    layer.popColor(1);

    Vector3<float> low = box.centre;
    Vector3<float> high = box.centre;
    for (unsigned int i = 0; i < 8; ++i) {
        Vector3<float> corner{};
        box.getVertex(i, corner);
        low = {std::fmin(low.x, corner.x), std::fmin(low.y, corner.y), std::fmin(low.z, corner.z)};
        high = {std::fmax(high.x, corner.x), std::fmax(high.y, corner.y), std::fmax(high.z, corner.z)};
    }
    layer.pushColor(GRAY);
    layer.setLineStipple(true);
    layer.render(Box3<float>{low, high}, true);
    layer.setLineStipple(false);
    layer.popColor(1);
}

void drawFlatBoxes(Core_RL& layer, View) {
    layer.pushColor(GREEN);
    layer.render(Box2<float>{{-1.15F, -0.55F}, {-0.15F, 0.55F}}, false);
    layer.popColor(1);
    layer.pushColor(YELLOW);
    layer.pushLineWidth(3.0F);
    layer.render(Box2<double>{{0.15, -0.55}, {1.15, 0.55}}, true);
    layer.popLineWidth();
    layer.popColor(1);
}

void drawFlatSquares(Core_RL& layer, View) {
    for (int i = 0; i < 7; ++i) {
        for (int j = 0; j < 5; ++j) {
            float const part = static_cast<float>(i + j) / 10.0F;
            layer.pushColor(scaleColor(part));
            layer.renderBox2({-1.05F + 0.35F * static_cast<float>(i), -0.7F + 0.35F * static_cast<float>(j)},
                             0.04F + 0.11F * part);
            layer.popColor(1);
        }
    }
}

void drawNamed(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    constexpr unsigned int NAME = 7;
    layer.renderBox3(NAME, VIOLET, 0.85F);
}

void drawCubes(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    for (int i = 0; i < 27; ++i) {
        Vector3<float> const place{static_cast<float>(i % 3 - 1), static_cast<float>(i / 3 % 3 - 1),
                                   static_cast<float>(i / 9 - 1)};
        layer.pushColor({0.62F + 0.3F * place.x, 0.62F + 0.3F * place.y, 0.62F + 0.3F * place.z, 1.0F});
        layer.renderBox3(place * 0.66F, 0.2F);
        layer.popColor(1);
    }
}

void drawLandscape(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    constexpr int COUNT = 40;
    for (int i = 0; i < COUNT; ++i) {
        for (int j = 0; j < COUNT; ++j) {
            float const x = -1.0F + 2.0F * static_cast<float>(i) / COUNT;
            float const z = -1.0F + 2.0F * static_cast<float>(j) / COUNT;
            float const r = std::sqrt(x * x + z * z);
            float const height = 0.36F + 0.30F * std::cos(7.5F * r) * std::exp(-1.1F * r);
            layer.pushColor(scaleColor((height - 0.2F) / 0.46F));
            layer.render(Box3<float>{{x, -0.5F, z}, {x + 0.042F, -0.5F + height * 1.4F, z + 0.042F}}, false);
            layer.popColor(1);
        }
    }
}

}  // namespace

Subject boxes() {
    View const view = View::perspective({2.4F, 2.0F, 3.8F}, {0.0F, -0.05F, 0.0F}, 36.0F);
    View const far = View::perspective({2.6F, 2.2F, 4.2F}, {0.0F, 0.0F, 0.0F}, 40.0F);
    View const flat = View::flat(1.0F);
    return {"boxes",
            {{1.0F,
              {{"filled", view, drawFilled},
               {"wire", view, drawWire},
               {"filled, with edges", view, drawFilledWithEdges},
               {"a color for each corner", view, drawColoredCorners}}},
             {1.0F,
              {{"the same as wire", view, drawColoredWire},
               {"oriented", view, drawOriented},
               {"oriented, and its upright box", far, drawOrientedWire},
               {"flat, filled and wire", flat, drawFlatBoxes}}},
             {1.0F,
              {{"flat squares", flat, drawFlatSquares},
               {"named cube for picking", view, drawNamed},
               {"cubes", view, drawCubes},
               {"1600 boxes", View::perspective({1.5F, 1.5F, 2.5F}, {0.0F, -0.24F, 0.0F}, 43.0F),
                drawLandscape}}}}};
}

}  // namespace vellum::gallery
