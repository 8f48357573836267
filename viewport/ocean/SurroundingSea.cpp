#include "viewport/ocean/SurroundingSea.h"

#include "foundation/geometry/constants.h"
#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/ocean/sea_parts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>
#include <vector>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;

// Of a sea that is seen from a boat, meters.
constexpr double HORIZON = 9000;
constexpr double NEAREST_HAZE = 200;
constexpr double FARTHEST_HAZE = 5200;

constexpr int HAZES = 8;       // walls of mist
constexpr double VEIL = 0.15;  // what one wall takes

// How many crests an eye must be high to see haze lie on the water.
constexpr double HEIGHT_OF_SHEET = 3;

// How far on the way to the crests the sheet is: far away, less would be lost in rounded depths.
constexpr double SHEET_PART = 0.7;

// The horizon is so far that it is seen less than a third of a degree below the level of the eye.
constexpr double HORIZON_PER_HEIGHT = 200;

// An eye nearer to the water than this would see through it where the picture begins, meters.
constexpr double LEAST_CLEARANCE = 0.05;

// Views along an axis end 1000 units from the origin of the scene.
constexpr double DEPTH_ALONG_AXIS = 900;
constexpr double DEPTH_OF_PARALLEL_VIEW = 20'000;

double degreesBetween(Point const& a, Point const& b) {
    return std::acos(std::clamp(dot(a, b), -1.0, 1.0)) * 180 / PI;
}

double largest(std::vector<float> const& values) {
    double found = 0;
    for (float const value : values) {
        found = std::max(found, std::abs(static_cast<double>(value)));
    }
    return found;
}

/// Offsets from the sun's azimuth for the edges of a dome's segments, 0 to 180 degrees: finer where its glow
/// is.
std::vector<double> azimuthSteps() {
    std::vector<double> steps;
    double at = 0;
    while (at < 180) {
        steps.push_back(at);
        at += at < 15 ? 0.5 : at < 45 ? 1.0 : 3.0;
    }
    steps.push_back(180);
    return steps;
}

/// The corners of quads all around, between two ends of a kind; from the middle to both sides.
/// \param vertex (end, azimuth) sends a corner
template <class End, class Vertex>
void drawRing(std::vector<double> const& steps, End const& low, End const& high, Vertex const& vertex) {
    for (std::size_t i = 0; i + 1 < steps.size(); ++i) {
        for (double const side : {-1.0, 1.0}) {
            vertex(low, side * steps[i]);
            vertex(low, side * steps[i + 1]);
            vertex(high, side * steps[i + 1]);
            vertex(high, side * steps[i]);
        }
    }
}

}  // namespace

SurroundingSea::SurroundingSea(Setting const& setting, SeaSurface waves)
    : setting(setting)
    , surface(std::move(waves))
    , crest(largest(surface.height))
    , sideways(std::hypot(largest(surface.alongX), largest(surface.alongZ))) {
    Box3<double> const& box = setting.things;
    double const raised = meanWater(surface, setting.patch,
                                    {box.min.x / setting.unitsPerMeter, box.min.z / setting.unitsPerMeter},
                                    {box.max.x / setting.unitsPerMeter, box.max.z / setting.unitsPerMeter});
    still = box.min.y + setting.level * (box.max.y - box.min.y) - raised * setting.unitsPerMeter;
}

// == Views ==

SeaView SurroundingSea::_inMeters(SeaView const& view) const {
    SeaView meters = view;
    meters.eye = (view.eye - Point{0, still, 0}) * (1 / setting.unitsPerMeter);
    if (view.isParallel) {
        meters.halfWidth /= setting.unitsPerMeter;
        meters.halfHeight /= setting.unitsPerMeter;
    }
    return meters;
}

/// Meters from the eye down to the highest water about it.
double SurroundingSea::_clearance(SeaView const& view) const {
    Point const eye = _inMeters(view).eye;
    return eye.y - std::max(highestWater(surface, setting.patch, {eye.x, eye.z}), -crest);
}

std::optional<Fault> SurroundingSea::fault(SeaView const& view) const {
    if (view.isParallel) {
        // The water is level on the whole; rays that rise come from below it.
        return view.forward.y > 1e-6
                   ? std::optional<Fault>({"", "--effect ocean: the camera looks up from under water; "
                                               "a parallel one must look down on the sea or along it"})
                   : std::nullopt;
    }
    double const clearance = _clearance(view);
    if (clearance >= LEAST_CLEARANCE) {
        return std::nullopt;
    }
    char depth[32];
    std::snprintf(depth, sizeof depth, "%.1f", std::max(-clearance, 0.0));
    return Fault{"",
                 std::string("--effect ocean: the camera is under water, ") + depth +
                     " meters below the surface; look from higher up, or set --effect-param level or length"};
}

/// How much farther than from a boat the haze begins: the things are before it.
double SurroundingSea::_hazeScale(SeaView const& view) const {
    Point const middle = setting.things.min * 0.5 + setting.things.max * 0.5;
    double const farthest = length(middle - view.eye) + length(setting.things.max - middle);
    return std::max(1.0, farthest / setting.unitsPerMeter / (0.9 * SHEET_PART * NEAREST_HAZE));
}

/// Where the sea ends for a perspective view, meters.
double SurroundingSea::_horizon(SeaView const& view) const {
    return std::max(HORIZON * _hazeScale(view), HORIZON_PER_HEIGHT * std::abs(_inMeters(view).eye.y));
}

WaterSheet SurroundingSea::_sheet(SeaView const& view) const {
    double const depth = view.isAlongAxis ? DEPTH_ALONG_AXIS : DEPTH_OF_PARALLEL_VIEW;
    return WaterSheet::of(_inMeters(view), {crest, sideways, _horizon(view), depth / setting.unitsPerMeter});
}

SurroundingSea::Depths SurroundingSea::depths(SeaView const& view) const {
    if (view.isParallel) {
        WaterSheet const sheet = _sheet(view);
        double const slack = crest + sideways + 0.01 * (sheet.farthest - sheet.nearest);
        return {(sheet.nearest - slack) * setting.unitsPerMeter,
                (sheet.farthest + slack) * setting.unitsPerMeter};
    }
    // No water is nearer to the eye than its clearance, or beside it than what the clearance looks at; none
    // is above the crests.
    double const corner = std::sqrt(1 + view.halfWidth * view.halfWidth + view.halfHeight * view.halfHeight);
    double const away = std::max(std::clamp(_clearance(view), 0.5 * LEAST_CLEARANCE, REACH_OF_HIGHEST_WATER),
                                 _inMeters(view).eye.y - crest);
    return {0.9 * away / corner * setting.unitsPerMeter,
            1.05 * (_horizon(view) + std::abs(_inMeters(view).eye.y) + crest + sideways) *
                setting.unitsPerMeter};
}

Point SurroundingSea::sunDirection(SeaView const& view) const {
    double const elevation = setting.sunElevation * PI / 180;
    double const azimuth = setting.sunAzimuth * PI / 180;
    Point const ahead = aheadOf(view);
    Point const right = cross(ahead, Point{0, 1, 0});
    return (ahead * std::cos(azimuth) + right * std::sin(azimuth)) * std::cos(elevation) +
           Point{0, std::sin(elevation), 0};
}

// == Water ==

std::unique_ptr<Mesh> SurroundingSea::water(SeaView const& view, double unit) const {
    WaterSheet const sheet = _sheet(view);
    return waterMesh(sheet.points, sheet.columns, unit, setting.patch);
}

Matrix4<double> SurroundingSea::toScene(double unit) const {
    double const factor = unit * setting.unitsPerMeter;
    return {{factor, 0, 0, 0, 0, factor, 0, 0, 0, 0, factor, 0, 0, still, 0, 1}};
}

// == Sky ==

void SurroundingSea::drawSky(Core_RL& layer, SeaView const& view) const {
    layer.pushDepthTest(DEPTH_IGNORED);
    layer.pushColor(layer.currentColor());
    if (view.isParallel) {
        _drawWall(layer, view);
    } else {
        _drawDome(layer, view);
    }
    layer.popColor(1);
    layer.popDepthTest();
}

void SurroundingSea::_drawDome(Core_RL& layer, SeaView const& view) const {
    // From below the horizon, which waves in front of the water's edge do not reach.
    constexpr double LOWEST = -4;
    Point const sun = sunDirection(view);
    double const sunAzimuth = std::atan2(sun.x, -sun.z) * 180 / PI;
    double const distance = 0.5 * _horizon(view) * setting.unitsPerMeter;
    auto const vertex = [&](double elevation, double offset) {
        Point const direction = seaDirection(elevation, sunAzimuth + offset);
        layer.setColor(skyTone(skyColor(elevation, degreesBetween(direction, sun)), 1));
        layer.renderPoint3_scoped(convert<float>(view.eye + direction * distance));
    };
    std::vector<double> const steps = azimuthSteps();
    layer.begin(Primitive::QUADS);
    for (double low = LOWEST; low < 90;) {
        double const high = std::min(low + (low < 30 ? 0.5 : 2.0), 90.0);
        drawRing(steps, low, high, vertex);
        low = high;
    }
    layer.end();
    if (std::abs(sun.y) < 0.9999) {
        drawSunDisc(layer, view.eye, sun, distance);
    }
}

/// The sky of a parallel view, which sees it only where it looks along the water: a wall behind everything,
/// as high as the picture.
void SurroundingSea::_drawWall(Core_RL& layer, SeaView const& view) const {
    constexpr int BANDS = 32;
    constexpr double DEGREES = 40;  // of the sky, from the middle of the picture to its top
    double const width = std::hypot(view.halfWidth, view.halfHeight) * 1.1;
    double const away =
        view.isAlongAxis ? DEPTH_ALONG_AXIS - dot(view.eye, view.forward) : depths(view).farthest;
    Point const middle = view.eye + view.forward * (0.99 * away);
    Point const right = cross(aheadOf(view), Point{0, 1, 0});
    Point const up = cross(right, view.forward);
    auto const vertex = [&](double height, double side) {
        layer.setColor(skyTone(skyColor(height * DEGREES, 90), 1));
        layer.renderPoint3_scoped(convert<float>(middle + right * (side * width) + up * (height * width)));
    };
    layer.begin(Primitive::QUADS);
    for (int band = -BANDS; band < BANDS; ++band) {
        double const low = static_cast<double>(band) / BANDS;
        double const high = (band + 1.0) / BANDS;
        vertex(low, -1);
        vertex(low, 1);
        vertex(high, 1);
        vertex(high, -1);
    }
    layer.end();
}

void SurroundingSea::drawHaze(Core_RL& layer, SeaView const& view) const {
    if (view.isParallel) {
        return;
    }
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushColor(layer.currentColor());
    layer.begin(Primitive::QUADS);
    // OpenGL's fog would not reach the shaders of the water. From low above the waves they hide each other,
    // and mist must stand between them; from high up its walls would be seen as rings.
    if (_inMeters(view).eye.y < HEIGHT_OF_SHEET * crest) {
        _drawMistWalls(layer, view);
    } else {
        _drawMistSheet(layer, view);
    }
    layer.end();
    layer.popColor(1);
    layer.popBlending();
    layer.popDepthTest();
}

/// Puts the corners of mist that is seen in the direction of one azimuth after the other, between two edges.
void SurroundingSea::_drawMist(Core_RL& layer, SeaView const& view, MistEdge const& low,
                               MistEdge const& high) const {
    Point const sun = sunDirection(view);
    double const sunAzimuth = std::atan2(sun.x, -sun.z) * 180 / PI;
    auto const vertex = [&](MistEdge const& edge, double offset) {
        Point const level = seaDirection(0, sunAzimuth + offset);
        Point const place = level * edge.distance + Point{0, edge.height, 0};
        layer.setColor(skyTone(skyColor(0, degreesBetween(level, sun)), edge.opacity));
        layer.renderPoint3_scoped(convert<float>(view.eye + place * setting.unitsPerMeter));
    };
    static std::vector<double> const steps = azimuthSteps();
    drawRing(steps, low, high, vertex);
}

/// Draws walls of mist, one behind the other: the farther the water, the more walls are in front of it.
void SurroundingSea::_drawMistWalls(Core_RL& layer, SeaView const& view) const {
    double const foot = -1.1 * (_inMeters(view).eye.y + crest);
    double const scale = _hazeScale(view);
    for (int wall = HAZES - 1; wall >= 0; --wall) {
        double const distance =
            scale * NEAREST_HAZE *
            std::pow(FARTHEST_HAZE / NEAREST_HAZE, static_cast<double>(wall) / (HAZES - 1));
        _drawMist(layer, view, {distance, foot, VEIL}, {distance, 0, VEIL});
        _drawMist(layer, view, {distance, 0, VEIL}, {distance, 0.009 * distance, 0});
    }
}

/// Draws mist as if it lay on the crests, as thick as all walls before the water would be.
void SurroundingSea::_drawMistSheet(Core_RL& layer, SeaView const& view) const {
    constexpr int RINGS = 4 * HAZES;
    double const height = SHEET_PART * (crest - _inMeters(view).eye.y);
    double const scale = SHEET_PART * _hazeScale(view);
    double const end = _horizon(view);
    MistEdge last{scale * NEAREST_HAZE, height, 0};
    for (int ring = 1; ring <= RINGS; ++ring) {
        double const part = static_cast<double>(ring) / RINGS;
        MistEdge const next{scale * NEAREST_HAZE * std::pow(FARTHEST_HAZE / NEAREST_HAZE, part), height,
                            1 - std::pow(1 - VEIL, part * HAZES)};
        _drawMist(layer, view, last, next);
        last = next;
    }
    _drawMist(layer, view, last, {end, height, last.opacity});
}

}  // namespace vellum::viewport
