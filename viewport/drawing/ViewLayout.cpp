#include "viewport/drawing/ViewLayout.h"

#include "viewport/drawing/overlays/ColorBar.h"
#include "viewport/drawing/overlays/ColorLegend.h"

#include <algorithm>
#include <utility>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

void append(std::vector<Point>& points, std::vector<Point> const& more) {
    points.insert(points.end(), more.begin(), more.end());
}

/// What says what the colors of particles and meshes mean, or null. Where particles and meshes show different things
/// it is those of the meshes, for which was asked.
std::unique_ptr<ColorKey> keyOf(ParticleStyle const& style, PictureSize const& size) {
    if (std::optional<ValueScale> const& scale = style.meshScale ? style.meshScale : style.scale) {
        return std::make_unique<ColorBar>(*scale, ValueColors(style.colors, style.colorMap), size);
    }
    return style.legend ? std::make_unique<ColorLegend>(*style.legend, size) : nullptr;
}

/// What of a box is inside of another one; of the first, a point where they are apart.
Box3<double> common(Box3<double> const& box, Box3<double> const& clip) {
    auto const inside = [&box](Point const& p) {
        return Point{std::clamp(p.x, box.min.x, box.max.x), std::clamp(p.y, box.min.y, box.max.y),
                     std::clamp(p.z, box.min.z, box.max.z)};
    };
    return {inside(clip.min), inside(clip.max)};
}

/// Around the box in the frame of the scene.
Box3<double> boxInScene(Scene const& scene, Box3<double> const& box) {
    Point const first = scene.placeToScene(box.min);
    Box3<double> around{first, first};
    for (Point const& corner : toolkit::cornersOf(box)) {
        Point const p = scene.placeToScene(corner);
        around.min = {std::min(around.min.x, p.x), std::min(around.min.y, p.y), std::min(around.min.z, p.z)};
        around.max = {std::max(around.max.x, p.x), std::max(around.max.y, p.y), std::max(around.max.z, p.z)};
    }
    return around;
}

std::vector<Point> pointsToFrame(Scene const& scene, ViewStyle const& style) {
    std::vector<Point> points;
    for (Model const& model : scene.models()) {
        if (style.clip) {
            append(points, toolkit::cornersOf(common(model.box, boxInScene(scene, *style.clip))));
        } else if (style.mesh.shading == Shading::BOX) {
            append(points, toolkit::cornersOf(model.box));
        } else {
            points.insert(points.end(), model.vertices.begin(), model.vertices.end());
        }
    }
    for (ParticleCloud const& cloud : scene.clouds()) {
        append(points, toolkit::cornersOf(cloud.box));
    }
    return points;
}

}  // namespace

ViewLayout ViewLayout::of(Scene const& scene, ViewStyle const& style, OceanScene const* ocean,
                          PictureSize const& size) {
    ViewLayout layout{nullptr, ViewCamera(style.camera), std::nullopt, {}, size};
    if ((!scene.clouds().empty() || style.particles.meshScale) && style.explanations.hasBar) {
        layout.key = keyOf(style.particles, size);
        layout.framedSize.width -= layout.key != nullptr ? layout.key->reservedWidth() : 0;
    }
    if (ocean != nullptr) {
        layout.camera.frame(*ocean, layout.framedSize);
    } else {
        layout.framedPoints = pointsToFrame(scene, style);
        layout.fault = layout.camera.frame(scene, layout.framedPoints, layout.framedSize);
    }
    return layout;
}

void ViewLayout::setCamera(CameraSpec const& spec, Scene const& scene) {
    ViewCamera moved(spec);
    fault = moved.frame(scene, framedPoints, framedSize);
    if (!fault) {
        camera = moved;
    }
}

}  // namespace vellum::viewport
