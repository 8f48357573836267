#include "common.h"
#include <functional>
int main() {
    Screen const screen(600, 400);
    RenderSession session;
    Layer& layer = session.layer();
    CameraController controls(session.camera());
    controls.fit({{-1, -1, -1}, {1, 1, 1}});
    View const view = controls.load(screen.viewport);
    layer.setLineWidth(3);
    Vector3<float> const along = convert<float>(controls.direction());
    Matrix4<float> const frame = Matrix4<float>::identity();
    Tuple3<Color4<float>> const rgb{{1, 0.2F, 0.2F, 1}, {0.2F, 1, 0.2F, 1}, {0.3F, 0.5F, 1, 1}};
    Tuple4<Color4<float>> const all{rgb.e0, rgb.e1, rgb.e2, {1, 1, 1, 1}};
    std::pair<std::string, std::function<void()>> const gizmos[] = {
        {"move", [&] { layer.renderAxesArrow3(1, 2, 3, rgb, 0.15F); }},
        {"scale", [&] { layer.renderAxesBox3(11, 12, 13, 14, all, 0.06F); }},
        {"rotate", [&] { layer.renderAxesCircleCulled3(21, 22, 23, along, frame, 1, rgb, 1); }},
        {"far", [&] { layer.renderAxesCircleCulledStipple3(21, 22, 23, along, frame, 1, rgb, 1); }},
        {"circles", [&] { layer.renderAxesCircle3(21, 22, 23, rgb, 1); }},
        {"stipple", [&] { layer.renderAxesCircleStipple3(0, 1, 2, rgb, 1); }},
        {"tape", [&] { layer.renderAxesCircleTape3(0, 1, 2, rgb, 1, 0.1F); }},
        {"plane", [&] { layer.renderAxesPlane3(31, 32, 33, rgb, 0.4F); }},
        {"facing", [&] {
             layer.renderCircleCameraFacing3(frame, {}, 1, {1, 1, 0, 1}, 0.5F);
         }}};
    std::vector<Vector3<double>> const places{{0.6, 0, 0},     {0, 0.6, 0},     {0, 0, 0.6},
                                              {0, 0, 0},       {0.95, 0, 0},    {0.7, 0.714, 0},
                                              {0.7, 0, 0.714}, {0, 0.7, 0.714}, {5, 5, 5}};
    for (auto const& [name, draw] : gizmos) {
        screen.clear();
        draw();
        screen.save("gizmo_" + name + ".png");
        for (Vector3<double> const& place : places) {
            ScreenPoint const point = view.project(place);
            auto const hits = pick(point.x, point.y, 3, draw);
            unsigned int const hit = hits.empty() ? 0 : hits.front().name;
            std::printf("%s (%g %g %g): %u\n", name.c_str(), place.x, place.y, place.z, hit);
        }
    }
}
