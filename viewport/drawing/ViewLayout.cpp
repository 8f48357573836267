#include "viewport/drawing/ViewLayout.h"

#include "viewport/drawing/overlays/ColorBar.h"
#include "viewport/drawing/overlays/ColorKeys.h"
#include "viewport/drawing/overlays/ColorLegend.h"
#include "viewport/drawing/overlays/key_sizes.h"
#include "viewport/files/mesh/points.h"

#include <algorithm>
#include <utility>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

void append(std::vector<Point>& points, std::vector<Point> const& more) {
    points.insert(points.end(), more.begin(), more.end());
}

/// What says what the colors of particles mean, or null.
/// \param right pixels at the picture's right side that are left to another key
std::unique_ptr<ColorKey> keyOfParticles(ParticleStyle const& style, PictureSize const& size, int right) {
    if (style.scale) {
        ValueColors const colors(style.colors, style.colorMap);
        return std::make_unique<ColorBar>(*style.scale, colors, size, right);
    }
    return style.legend ? std::make_unique<ColorLegend>(*style.legend, size, right) : nullptr;
}

/// What says what the colors of particles and meshes mean, or null. Where they show different things the bar of the
/// meshes, for which was asked, stands in the usual place, and the key of the particles at its left.
std::unique_ptr<ColorKey> keyOf(ParticleStyle const& style, PictureSize const& size,
                                std::vector<Fault>& notes) {
    if (!style.meshScale) {
        return keyOfParticles(style, size, 0);
    }
    auto bar = std::make_unique<ColorBar>(*style.meshScale, ValueColors(style.colors, style.colorMap), size);
    bool const isShared = style.scale && style.scale->name == style.meshScale->name;
    std::unique_ptr<ColorKey> others = isShared ? nullptr : keyOfParticles(style, size, bar->reservedWidth());
    if (others == nullptr || !bar->isShown()) {
        return bar;
    }
    // Together they get no more room than one alone.
    if (!others->isShown() || bar->reservedWidth() + others->reservedWidth() > KeySizes(size).widest) {
        notes.push_back({"", "there is no room to say what the colors of the particles mean; the bar is that "
                             "of the meshes"});
        return bar;
    }
    return std::make_unique<ColorKeys>(std::move(bar), std::move(others));
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
    std::vector<Point> corners = toolkit::cornersOf(box);
    std::transform(corners.begin(), corners.end(), corners.begin(),
                   [&scene](Point const& corner) { return scene.placeToScene(corner); });
    return boxAround(corners);
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
                          PictureSize const& size, SurroundingSea const* sea) {
    ViewLayout layout{nullptr, ViewCamera(style.camera), std::nullopt, {}, {}, size, size, sea};
    if ((!scene.clouds().empty() || style.particles.meshScale) && style.explanations.hasBar) {
        layout.key = keyOf(style.particles, size, layout.notes);
        layout.framedSize.width -= layout.key != nullptr ? layout.key->reservedWidth() : 0;
    }
    if (ocean != nullptr) {
        layout.camera.frame(*ocean, layout.framedSize);
    } else {
        layout.framedPoints = pointsToFrame(scene, style);
        layout.fault = layout.camera.frame(scene, layout.framedPoints, layout.framedSize);
    }
    if (!layout.fault) {
        layout.fault = layout._surround(layout.camera);
    }
    return layout;
}

/// Lets a camera see as far as the horizon. The fault of one that is under water.
std::optional<Fault> ViewLayout::_surround(ViewCamera& view) const {
    if (sea == nullptr) {
        return std::nullopt;
    }
    SeaView const seen = view.seaView(size);
    SurroundingSea::Depths const depths = sea->depths(seen);
    view.include(depths.nearest, depths.farthest);
    return sea->fault(seen);
}

void ViewLayout::setCamera(CameraSpec const& spec, Scene const& scene) {
    ViewCamera moved(spec);
    fault = moved.frame(scene, framedPoints, framedSize);
    if (!fault) {
        fault = _surround(moved);
    }
    if (!fault) {
        camera = moved;
    }
}

}  // namespace vellum::viewport
