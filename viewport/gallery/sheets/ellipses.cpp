#include "foundation/foundation.h"
#include "toolkit/Lit.h"
#include "viewport/gallery/sheets/palette.h"
#include "viewport/gallery/sheets/placement.h"
#include "viewport/gallery/sheets/subjects.h"

#include <cmath>

namespace vellum::gallery {

namespace {

void drawSpanned(Core_RL& layer, View) {
    layer.pushLineWidth(2.0F);
    for (int i = 0; i < 9; ++i) {
        float const lean = radians(20.0F * static_cast<float>(i));
        layer.pushColor(scaleColor(static_cast<float>(i) / 8.0F));
        layer.renderEllipse3({0.0F, 0.0F, 0.0F}, {std::cos(lean), 0.0F, std::sin(lean)}, {0.0F, 0.55F, 0.0F});
        layer.popColor(1);
    }
    layer.popLineWidth();
}

void drawHalfAxes(Core_RL& layer, View) {
    Vector3<float> const u{1.0F, 0.35F, 0.0F};
    Vector3<float> const v{-0.15F, 0.5F, 0.0F};
    layer.pushLineWidth(2.0F);
    layer.pushColor(YELLOW);
    layer.renderEllipse3({0.0F, 0.0F, 0.0F}, u, v);
    layer.popColor(1);
    layer.pushColor(RED);
    layer.renderSegment3({0.0F, 0.0F, 0.0F}, u);
    layer.popColor(1);
    layer.pushColor(GREEN);
    layer.renderSegment3({0.0F, 0.0F, 0.0F}, v);
    layer.popColor(1);
    layer.popLineWidth();
}

void drawAxisPlanes(Core_RL& layer, View) {
    layer.pushLineWidth(2.0F);
    layer.pushColor(BLUE);
    layer.renderEllipse3_XY({0.0F, 0.0F, 0.0F}, 1.0F, 0.6F);
    layer.popColor(1);
    layer.pushColor(GREEN);
    layer.renderEllipse3_XZ({0.0F, 0.0F, 0.0F}, 1.0F, 0.6F);
    layer.popColor(1);
    layer.pushColor(RED);
    layer.renderEllipse3_YZ({0.0F, 0.0F, 0.0F}, 1.0F, 0.6F);
    layer.popColor(1);
    layer.popLineWidth();
}

/// The outline of an ellipsoid as contour lines along each axis.
void drawEllipsoid(Core_RL& layer, View) {
    constexpr Vector3<float> REACH{1.15F, 0.65F, 0.8F};
    for (int i = -6; i <= 6; ++i) {
        float const part = static_cast<float>(i) / 6.5F;
        float const rest = std::sqrt(1.0F - part * part);
        layer.pushColor(TEAL);
        layer.renderEllipse3_YZ({part * REACH.x, 0.0F, 0.0F}, rest * REACH.y, rest * REACH.z);
        layer.popColor(1);
        layer.pushColor(VIOLET);
        layer.renderEllipse3_XZ({0.0F, part * REACH.y, 0.0F}, rest * REACH.x, rest * REACH.z);
        layer.popColor(1);
    }
}

void drawVase(Core_RL& layer, View) {
    constexpr int COUNT = 34;
    for (int i = 0; i <= COUNT; ++i) {
        float const part = static_cast<float>(i) / COUNT;
        float const radius = 0.42F + 0.24F * std::sin(1.0F + 5.2F * part);
        layer.pushColor(scaleColor(part));
        layer.renderEllipse3_XZ({0.0F, -1.0F + 2.0F * part, 0.0F}, radius, radius * 0.7F);
        layer.popColor(1);
    }
}

void drawOrbits(Core_RL& layer, View) {
    for (int i = 0; i < 6; ++i) {
        float const reach = 0.28F + 0.19F * static_cast<float>(i);
        float const tilt = radians(7.0F * static_cast<float>(i));
        Vector3<float> const u{reach, reach * std::sin(tilt), 0.0F};
        Vector3<float> const v{0.0F, 0.0F, reach * 0.85F};
        layer.pushColor(GRAY);
        layer.renderEllipse3({0.0F, 0.0F, 0.0F}, u, v);
        layer.popColor(1);

        toolkit::Lit const lit = toolkit::Lit::asSet();
        float const angle = 2.3F * static_cast<float>(i);
        layer.pushColor(scaleColor(static_cast<float>(i) / 5.0F));
        layer.renderSphere(u * std::sin(angle) + v * std::cos(angle), 0.05F + 0.008F * static_cast<float>(i));
        layer.popColor(1);
    }
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(YELLOW);
    layer.renderSphere({0.0F, 0.0F, 0.0F}, 0.13F);
    layer.popColor(1);
}

}  // namespace

Subject ellipses() {
    View const view = View::perspective({2.0F, 1.6F, 3.4F}, {0.0F, 0.0F, 0.0F}, 34.0F);
    return {"ellipses",
            {{1.0F,
              {{"two half axes", View::flat(0.9F), drawHalfAxes},
               {"turned half axes", view, drawSpanned},
               {"in the planes of the axes", view, drawAxisPlanes}}},
             {1.0F,
              {{"an ellipsoid in contours", view, drawEllipsoid},
               {"a vase", View::perspective({1.2F, 1.5F, 4.0F}, {}, 34.0F), drawVase},
               {"orbits", View::perspective({1.2F, 1.9F, 3.0F}, {}, 38.0F), drawOrbits}}}}};
}

}  // namespace vellum::gallery
