#include "foundation/foundation.h"
#include "viewport/gallery/sheets/palette.h"
#include "viewport/gallery/sheets/placement.h"
#include "viewport/gallery/sheets/subjects.h"

#include <string>
#include <utility>

namespace vellum::gallery {

namespace {

constexpr float RADIUS = 0.95F;

void drawPlain(Core_RL& layer, View) {
    layer.renderAxesCircle3(0, 1, 2, AXES, RADIUS);
}

void drawCameraFacing(Core_RL& layer, View) {
    layer.renderAxesCircle3(0, 1, 2, {FAINT, FAINT, FAINT}, 0.8F);
    layer.renderCircleCameraFacing3(Matrix4<float>::identity(), Matrix3<float>{}, 1.0F, YELLOW, RADIUS);
    for (int axis = 0; axis < 3; ++axis) {
        Vector3<float> const end{axis == 0 ? 0.8F : 0.0F, axis == 1 ? 0.8F : 0.0F, axis == 2 ? 0.8F : 0.0F};
        Color4<float> const colors[] = {RED, GREEN, BLUE};
        layer.renderCircleCameraFacing3(movedTo(end), Matrix3<float>{}, 0.12F, colors[axis], 1.0F);
    }
}

void drawCulled(Core_RL& layer, View view) {
    layer.renderAxesCircleCulled3(0, 1, 2, view.direction(), Matrix4<float>::identity(), RADIUS, AXES, 1.0F);
}

void drawCulledThin(Core_RL& layer, View view) {
    layer.renderAxesCircleCulledStipple3(0, 1, 2, view.direction(), Matrix4<float>::identity(), RADIUS, AXES,
                                         1.0F);
}

void drawTapes(Core_RL& layer, View) {
    layer.renderAxesCircleTape3(0, 1, 2, AXES, RADIUS, 0.14F);
}

void drawStippled(Core_RL& layer, View) {
    layer.renderAxesCircleStipple3(0, 1, 2, AXES, RADIUS);
}

}  // namespace

Subject circles() {
    std::pair<std::string, void (*)(Core_RL&, View)> const kinds[] = {
        {"plain", drawPlain},   {"facing the viewer", drawCameraFacing},
        {"culled", drawCulled}, {"far half thin", drawCulledThin},
        {"tapes", drawTapes},   {"stippled", drawStippled}};
    std::pair<std::string, View> const views[] = {
        {"", View::perspective({2.0F, 1.5F, 2.9F}, {}, 33.0F)},
        {"from above", View::perspective({0.7F, 3.7F, 1.2F}, {}, 33.0F)},
        {"from the front", View::perspective({-0.35F, 0.45F, 3.9F}, {}, 33.0F)}};

    Subject subject{"circles", {}};
    for (auto const& [viewLabel, view] : views) {
        Row row{1.0F, {}};
        for (auto const& [label, draw] : kinds) {
            row.cells.push_back(
                {viewLabel.empty() ? label : viewLabel, view, [draw = draw](Core_RL& layer, View seen) {
                     layer.pushLineWidth(2.5F);
                     draw(layer, seen);
                     layer.popLineWidth();
                 }});
        }
        subject.rows.push_back(std::move(row));
    }
    return subject;
}

}  // namespace vellum::gallery
