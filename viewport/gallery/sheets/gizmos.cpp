#include "foundation/foundation.h"
#include "toolkit/Lit.h"
#include "viewport/gallery/sheets/palette.h"
#include "viewport/gallery/sheets/placement.h"
#include "viewport/gallery/sheets/subjects.h"

namespace vellum::gallery {

namespace {

constexpr Tuple3<Color4<float>> PLANES{Color4<float>{0.35F, 0.58F, 0.97F, 0.55F},
                                       Color4<float>{0.93F, 0.33F, 0.31F, 0.55F},
                                       Color4<float>{0.45F, 0.80F, 0.36F, 0.55F}};

/// The edited object, small and gray in the middle of its gizmo.
void drawEdited(Core_RL& layer) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(GRAY);
    layer.render(Box3<float>{{-0.16F, -0.16F, -0.16F}, {0.16F, 0.16F, 0.16F}}, false);
    layer.popColor(1);
}

void drawPlaneHandles(Core_RL& layer) {
    layer.pushBlending(BLENDING_ALPHA);
    layer.renderAxesPlane3(3, 4, 5, PLANES, 0.4F);
    layer.popBlending();
}

/// The shafts in full color. The lit handles draw the shafts again at the same depth, and the depth test
/// keeps the first drawing.
void drawShafts(Core_RL& layer) {
    Vector3<float> const ends[] = {{1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 1.0F}};
    Color4<float> const colors[] = {AXES.e0, AXES.e1, AXES.e2};
    for (int axis = 0; axis < 3; ++axis) {
        layer.pushColor(colors[axis]);
        layer.renderSegment3({0.0F, 0.0F, 0.0F}, ends[axis]);
        layer.popColor(1);
    }
}

void drawMove(Core_RL& layer, View) {
    layer.pushLineWidth(3.0F);
    drawShafts(layer);
    {
        toolkit::Lit const lit = toolkit::Lit::asSet();
        layer.renderAxesArrow3(0, 1, 2, AXES, 0.25F);
    }
    layer.popLineWidth();
    drawPlaneHandles(layer);
}

void drawRotate(Core_RL& layer, View view) {
    drawEdited(layer);
    layer.pushLineWidth(3.0F);
    layer.renderAxesCircleCulled3(0, 1, 2, view.direction(), Matrix4<float>::identity(), 1.0F, AXES, 1.0F);
    layer.renderCircleCameraFacing3(Matrix4<float>::identity(), Matrix3<float>{}, 1.0F, GRAY, 1.12F);
    layer.popLineWidth();
}

void drawScale(Core_RL& layer, View) {
    layer.pushLineWidth(3.0F);
    drawShafts(layer);
    {
        toolkit::Lit const lit = toolkit::Lit::asSet();
        layer.renderAxesBox3(0, 1, 2, 3, AXES_AND_CENTER, 0.09F);
    }
    layer.popLineWidth();
}

void drawPlanes(Core_RL& layer, View) {
    layer.renderAxesPlane3(0, 1, 2, AXES, 0.85F);
}

void drawStippledArrows(Core_RL& layer, View) {
    layer.pushLineWidth(2.0F);
    layer.renderAxesArrowStipple3(AXES, 0.25F);
    layer.popLineWidth();
}

void drawStippledCircles(Core_RL& layer, View) {
    layer.pushLineWidth(2.0F);
    layer.renderAxesCircleStipple3(0, 1, 2, AXES, 0.9F);
    layer.popLineWidth();
}

void drawThinCircles(Core_RL& layer, View view) {
    layer.pushLineWidth(3.0F);
    layer.renderAxesCircleCulledStipple3(0, 1, 2, view.direction(), Matrix4<float>::identity(), 0.9F, AXES,
                                         1.0F);
    layer.popLineWidth();
}

void drawTapesOfAxes(Core_RL& layer, View) {
    layer.renderAxesCircleTape3(0, 1, 2, AXES, 0.9F, 0.12F);
}

void drawUnitArrow(Core_RL& layer, View) {
    layer.pushColor(YELLOW);
    layer.pushLineWidth(2.0F);
    layer.pushTransform(movedTo({0.0F, 0.9F, 0.0F}) * scaledBy(1.5F));
    layer.renderUnitArrow3();
    layer.popTransform();
    layer.popLineWidth();
    layer.popColor(1);
}

}  // namespace

Subject gizmos() {
    View const large = View::perspective({2.3F, 1.7F, 2.7F}, {0.18F, 0.20F, 0.1F}, 34.0F);
    View const round = View::perspective({2.3F, 1.7F, 2.7F}, {0.0F, 0.0F, 0.0F}, 36.0F);
    View const octant = View::perspective({2.3F, 1.7F, 2.7F}, {0.32F, 0.30F, 0.22F}, 34.0F);
    return {"gizmos",
            {{2.0F, {{"move", large, drawMove}, {"rotate", round, drawRotate}, {"scale", large, drawScale}}},
             {1.0F,
              {{"plane handles", octant, drawPlanes},
               {"stippled arrows", octant, drawStippledArrows},
               {"stippled circles", round, drawStippledCircles},
               {"far half thin", round, drawThinCircles},
               {"tapes", round, drawTapesOfAxes},
               {"unit arrow", round, drawUnitArrow}}}}};
}

}  // namespace vellum::gallery
