#include "viewport/drawing/ViewLayout.h"

#include "viewport/drawing/overlays/ColorBar.h"
#include "viewport/drawing/overlays/ColorKeys.h"
#include "viewport/drawing/overlays/ColorLegend.h"
#include "viewport/drawing/overlays/key_sizes.h"
#include "viewport/files/mesh/points.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
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

/// What says what the colors of particles and meshes mean, or null. Where they show different things the bar
/// of the meshes, for which was asked, stands in the usual place, and the key of the particles at its left.
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

/// Tells points again that came shortly before: formats that repeat vertices do so near each other. A camera
/// sees all points where it sees each once.
class RecentPoints {
public:
    bool isNew(Point const& p) {
        Bits bits{};
        std::memcpy(bits.data(), &p, sizeof bits);
        std::uint64_t hash = 0;
        for (std::uint64_t const part : bits) {
            hash = (hash ^ part) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 32;
        }
        Bits& recent = points[hash % COUNT];
        bool const isKnown = isFilled[hash % COUNT] && recent == bits;
        recent = bits;
        isFilled[hash % COUNT] = true;
        return !isKnown;
    }

private:
    using Bits = std::array<std::uint64_t, 3>;
    static constexpr std::size_t COUNT = std::size_t(1) << 15;

    std::vector<Bits> points = std::vector<Bits>(COUNT);
    std::vector<bool> isFilled = std::vector<bool>(COUNT, false);
};

/// The points of objects, moved to where they are drawn.
class ObjectPoints {
public:
    ObjectPoints(Scene const& scene, std::vector<ObjectTransform> const& transforms)
        : scene(scene), transforms(transforms) {}

    /// \param object the points are its own
    template <class Points>
    void add(std::size_t object, Points const& its) {
        if (object >= transforms.size() || transforms[object].isIdentity()) {
            points.insert(points.end(), its.begin(), its.end());
            return;
        }
        Matrix4<double> const place = transforms[object].toMatrix(scene, object);
        for (Point const& p : its) {
            points.push_back(transformed(place, p));
        }
    }

    /// The same of many points, some of which may come several times.
    void addOnce(std::size_t object, Array<Point> const& its) {
        constexpr unsigned int FEW = 1 << 16;
        if (its.size() < FEW) {
            return add(object, its);
        }
        RecentPoints recent;
        std::vector<Point> distinct;
        std::copy_if(its.begin(), its.end(), std::back_inserter(distinct),
                     [&recent](Point const& p) { return recent.isNew(p); });
        if (points.empty() && (object >= transforms.size() || transforms[object].isIdentity())) {
            points = std::move(distinct);
        } else {
            add(object, distinct);
        }
    }

    std::vector<Point> points;

private:
    Scene const& scene;
    std::vector<ObjectTransform> const& transforms;
};

std::vector<Point> pointsToFrame(Scene const& scene, ViewStyle const& style,
                                 std::vector<ObjectTransform> const& transforms) {
    ObjectPoints framed(scene, transforms);
    std::size_t object = 0;
    for (Model const& model : scene.models()) {
        if (style.clip) {
            // What is cut away is where the model is drawn.
            ObjectPoints box(scene, transforms);
            box.add(object, toolkit::cornersOf(model.box));
            append(framed.points,
                   toolkit::cornersOf(common(boxAround(box.points), boxInScene(scene, *style.clip))));
        } else if (style.mesh.shading == Shading::BOX) {
            framed.add(object, toolkit::cornersOf(model.box));
        } else {
            framed.addOnce(object, model.vertices);
        }
        ++object;
    }
    for (ParticleCloud const& cloud : scene.clouds()) {
        framed.add(object++, toolkit::cornersOf(cloud.box));
    }
    return std::move(framed.points);
}

/// Around everything as it is drawn; nothing where all objects are where the scene has them.
std::optional<Box3<double>> movedBox(Scene const& scene, std::vector<ObjectTransform> const& transforms) {
    if (std::all_of(transforms.begin(), transforms.end(),
                    [](ObjectTransform const& transform) { return transform.isIdentity(); })) {
        return std::nullopt;
    }
    ObjectPoints corners(scene, transforms);
    for (std::size_t object = 0; object < objectCount(scene); ++object) {
        corners.add(object, toolkit::cornersOf(objectBox(scene, object)));
    }
    return boxAround(corners.points);
}

}  // namespace

ViewLayout ViewLayout::of(Scene const& scene, ViewStyle const& style, OceanScene const* ocean,
                          PictureSize const& size, SurroundingSea const* sea,
                          std::vector<ObjectTransform> const& transforms) {
    ViewLayout layout{nullptr, ViewCamera(style.camera), std::nullopt, {}};
    layout.framedSize = size;
    layout.size = size;
    layout.sea = sea;
    if ((!scene.clouds().empty() || style.particles.meshScale) && style.explanations.hasBar) {
        layout.key = keyOf(style.particles, size, layout.notes);
        layout.framedSize.width -= layout.key != nullptr ? layout.key->reservedWidth() : 0;
    }
    if (style.keyWidth) {
        layout.framedSize.width = size.width - *style.keyWidth;
    }
    if (ocean != nullptr) {
        layout.camera.frame(*ocean, layout.framedSize);
    } else {
        layout.framedPoints = pointsToFrame(scene, style, transforms);
        layout.bounds = movedBox(scene, transforms);
        Box3<double> const around = layout.bounds.value_or(scene.box());
        layout.shownBox = style.clip ? common(around, boxInScene(scene, *style.clip)) : around;
        layout.fault = layout._frame(layout.camera, scene);
    }
    if (!layout.fault) {
        layout.fault = layout._surround(layout.camera);
    }
    return layout;
}

std::optional<Fault> ViewLayout::_frame(ViewCamera& view, Scene const& scene) const {
    return view.frame(scene, framedPoints, framedSize, bounds ? &*bounds : nullptr);
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
    fault = _frame(moved, scene);
    if (!fault) {
        fault = _surround(moved);
    }
    if (!fault) {
        camera = moved;
    }
}

}  // namespace vellum::viewport
