#include "foundation/foundation.h"
#include "toolkit/Lit.h"
#include "viewport/gallery/sheets/palette.h"
#include "viewport/gallery/sheets/placement.h"
#include "viewport/gallery/sheets/subjects.h"

namespace vellum::gallery {

namespace {

template <class Lattice>
void drawLattice(Core_RL& layer, Color4<float> const& color, float pointSize, Lattice const& lattice) {
    float const former = layer.setPointSize(pointSize);
    layer.pushColor(color);
    layer.renderBox3Points_asPoints(lattice);
    layer.popColor(1);
    layer.setPointSize(former);
}

void drawEvenLattice(Core_RL& layer, View) {
    drawLattice(layer, TEAL, 4.0F, Box3Points<float>{{7, 7, 7}, {-0.9F, -0.9F, -0.9F}, {0.3F, 0.3F, 0.3F}});
}

void drawUnevenLattice(Core_RL& layer, View) {
    drawLattice(layer, YELLOW, 4.0F, Box3Points_ex<double>{{5, 3, 17}, {-1.0, -0.5, -1.2}, {0.5, 0.5, 0.15}});
}

void drawNestedLattices(Core_RL& layer, View) {
    drawLattice(layer, BLUE, 2.0F,
                Box3Points_ex<float>{{25, 1, 25}, {-1.2F, -0.6F, -1.2F}, {0.1F, 0.1F, 0.1F}});
    drawLattice(layer, RED, 6.0F, Box3Points<double>{{3, 3, 3}, {-0.5, -0.1, -0.5}, {0.5, 0.5, 0.5}});
    layer.pushColor(GRAY);
    layer.render(Box3<float>{{-0.5F, -0.1F, -0.5F}, {0.5F, 0.9F, 0.5F}}, true);
    layer.popColor(1);
}

void drawGround(Core_RL& layer, View) {
    layer.pushColor(FAINT);
    layer.pushLineWidth(1.0F);
    layer.renderPlane3({{0.0F, 1.0F, 0.0F}, 0.4F}, 2.4F, 48);
    layer.popLineWidth();
    layer.popColor(1);
    layer.pushColor(GRAY);
    layer.renderPlane3({{0.0F, 1.0F, 0.0F}, 0.399F}, 2.4F, 12);
    layer.popColor(1);
}

void drawTilted(Core_RL& layer, View) {
    Vector3<float> const normal = normalized(Vector3<float>{0.5F, 0.8F, 0.35F});
    layer.pushColor(GREEN);
    layer.renderPlane3({normal, 0.1F}, 2.2F, 10);
    layer.popColor(1);
    // The center of the grid is the point of the plane nearest to the origin.
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(WHITE);
    layer.pushLineWidth(2.0F);
    layer.renderArrow3(normal * -0.1F, normal * 0.7F, 0.2F, false);
    layer.popLineWidth();
    layer.popColor(1);
}

void drawThreePlanes(Core_RL& layer, View) {
    layer.pushColor(RED);
    layer.renderPlane3({{1.0F, 0.0F, 0.0F}, 0.9F}, 1.8F, 9);
    layer.popColor(1);
    layer.pushColor(GREEN);
    layer.renderPlane3({{0.0F, 1.0F, 0.0F}, 0.9F}, 1.8F, 9);
    layer.popColor(1);
    layer.pushColor(BLUE);
    layer.renderPlane3({{0.0F, 0.0F, 1.0F}, 0.9F}, 1.8F, 9);
    layer.popColor(1);
}

void drawDivisions(Core_RL& layer, View) {
    unsigned int const divisions[] = {0, 1, 4, 16};
    for (int i = 0; i < 4; ++i) {
        layer.pushTransform(movedTo({i % 2 == 0 ? -0.62F : 0.62F, 0.0F, i / 2 == 0 ? -0.62F : 0.62F}));
        layer.pushColor(scaleColor(static_cast<float>(i) / 3.0F));
        layer.renderPlane3({{0.0F, 1.0F, 0.0F}, 0.0F}, 1.0F, divisions[i]);
        layer.popColor(1);
        layer.popTransform();
    }
}

}  // namespace

Subject grids() {
    View const view = View::perspective({2.4F, 1.9F, 3.7F}, {0.0F, 0.0F, 0.0F}, 34.0F);
    View const low = View::perspective({1.6F, 1.6F, 3.4F}, {0.0F, -0.35F, 0.0F}, 37.0F);
    View const steep = View::perspective({1.3F, 3.2F, 2.3F}, {0.0F, 0.0F, 0.0F}, 39.0F);
    return {"grids",
            {{1.0F,
              {{"an even lattice", view, drawEvenLattice},
               {"uneven counts and steps", view, drawUnevenLattice},
               {"a coarse one over a flat one", view, drawNestedLattices}}},
             {1.0F,
              {{"ground", low, drawGround},
               {"a tilted plane", view, drawTilted},
               {"three planes", view, drawThreePlanes},
               {"0, 1, 4 and 16 divisions", steep, drawDivisions}}}}};
}

}  // namespace vellum::gallery
