#include "viewport/drawing/FilmCamera.h"

#include "foundation/geometry/constants.h"
#include "viewport/drawing/ViewLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;

/// Points of an upright cylinder about the axis through the focus, which contains all that turns with these
/// points.
std::vector<Point> cylinderAround(std::vector<Point> const& points, Point const& focus) {
    constexpr int CORNERS = 64;
    double radius = 0;
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    for (Point const& p : points) {
        radius = std::max(radius, std::hypot(p.x - focus.x, p.z - focus.z));
        low = std::min(low, p.y);
        high = std::max(high, p.y);
    }
    std::vector<Point> cylinder;
    for (int i = 0; i < CORNERS && !points.empty(); ++i) {
        double const angle = 2 * PI * i / CORNERS;
        for (double const y : {low, high}) {
            cylinder.push_back({focus.x + radius * std::sin(angle), y, focus.z + radius * std::cos(angle)});
        }
    }
    return cylinder;
}

}  // namespace

Result<FilmCamera> FilmCamera::of(Scene const& first, ViewStyle const& style, PictureSize const& size,
                                  std::size_t turn) {
    if (turn > 0 && style.camera.isAlongAxis()) {
        return Fault{{}, "--turntable: a view along an axis cannot turn; see --projection parallel"};
    }
    ViewLayout const layout = ViewLayout::of(first, style, nullptr, size);
    if (layout.fault) {
        return *layout.fault;
    }
    FilmCamera film;
    film.turn = turn;
    film.keyWidth = size.width - layout.framedSize.width;
    film.right = first.directionToFile({1, 0, 0});
    film.vertical = first.directionToFile({0, 1, 0});
    film.front = first.directionToFile({0, 0, 1});
    film.held = style.camera;
    if (turn == 0 || style.camera.position) {
        film._hold(first, layout.camera);
        return film;
    }
    Point const middle = first.box().min * 0.5 + first.box().max * 0.5;
    CameraSpec spec = style.camera;
    spec.focus = spec.focus ? *spec.focus : first.placeToFile(middle);
    ViewCamera turning(spec);
    if (std::optional<Fault> const fault =
            turning.frame(first, cylinderAround(layout.framedPoints.all(), first.placeToScene(*spec.focus)),
                          layout.framedSize)) {
        return *fault;
    }
    film._hold(first, turning);
    return film;
}

/// Views along an axis follow from the scene's box alone, which a film holds (see HeldLook).
void FilmCamera::_hold(Scene const& first, ViewCamera const& camera) {
    if (!camera.placement()) {
        return;
    }
    CameraPlacement const& placement = *camera.placement();
    held.position = placement.position;
    held.focus = placement.focus;
    held.up = placement.up;
    held.azimuth.reset();
    held.elevation.reset();
    if (camera.isPerspective()) {
        held.fieldOfView = placement.fieldOfView;
    } else if (!held.height) {
        held.height = 2 * camera.halfHeightAtFocus() * held.zoom / first.unitsPerFileUnit();
    }
}

CameraSpec FilmCamera::at(std::size_t picture) const {
    CameraSpec spec = held;
    if (turn == 0 || picture % turn == 0 || !spec.position || !spec.focus || !spec.up) {
        return spec;
    }
    double const angle = 2 * PI * static_cast<double>(picture % turn) / static_cast<double>(turn);
    auto const turned = [&](Point const& p) {
        double const x = dot(p, right);
        double const z = dot(p, front);
        return right * (x * std::cos(angle) + z * std::sin(angle)) + vertical * dot(p, vertical) +
               front * (z * std::cos(angle) - x * std::sin(angle));
    };
    spec.position = *held.focus + turned(*held.position - *held.focus);
    spec.up = turned(*held.up);
    return spec;
}

void FilmCamera::place(std::size_t picture, ViewStyle& style) const {
    style.camera = at(picture);
    style.keyWidth = keyWidth;
}

}  // namespace vellum::viewport
