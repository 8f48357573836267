#include "viewport/ocean/OceanScene.h"

#include "foundation/geometry/constants.h"
#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/ocean/WaterSheet.h"
#include "viewport/ocean/sea_parts.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;
constexpr double FIELD_OF_VIEW = 38;  // vertical, degrees
constexpr double NEAREST = 0.3;
constexpr double FARTHEST = 12'000;

// The distance at which water and sky meet.
constexpr double EDGE_OF_SEA = 9'000;

/// The distances of the grid's rows from the viewer. They begin behind the viewer, as waves move the first
/// rows forward.
std::vector<double> rowDistances(double eyeHeight) {
    std::vector<double> distances;
    double const step = std::max(0.04, 0.012 * eyeHeight);
    double distance = -3 * eyeHeight - 6;
    while (distance < EDGE_OF_SEA) {
        distances.push_back(distance);
        distance += std::max(step, WaterSheet::GROWTH * distance);
    }
    distances.push_back(EDGE_OF_SEA);
    return distances;
}

}  // namespace

Point OceanScene::sunDirection() const {
    return seaDirection(view.sunElevation, view.sunAzimuth);
}

/// The angle between the middle and the sides of the water, degrees, a little wider than the view for waves
/// that move in from beside it.
double OceanScene::_halfAngle() const {
    double const half = std::atan(std::tan(radians(FIELD_OF_VIEW / 2)) * view.aspect) * 180 / PI;
    return std::min(half + 4, 80.0);
}

void OceanScene::placeCamera(Camera_RL_GL& camera) const {
    Vector3<float> const eye{0, static_cast<float>(view.eyeHeight), 0};
    camera.viewKind = 0;
    camera.aspect = static_cast<float>(view.aspect);
    camera.fieldOfView = static_cast<float>(FIELD_OF_VIEW);
    camera.nearDistance = static_cast<float>(NEAREST);
    camera.farDistance = static_cast<float>(FARTHEST);
    camera.lookAt(eye, eye + convert<float>(seaDirection(-view.tiltDegrees, 0)), {0, 1, 0});
}

std::unique_ptr<Mesh> OceanScene::water(double unit, double patch) const {
    std::vector<double> const rows = rowDistances(view.eyeHeight);
    double const widening = std::tan(radians(_halfAngle()));
    // Beside the viewer the grid is as wide as the waves are long, for the picture's lower corners.
    double const leastWidth = 8 + 3 * view.eyeHeight;
    std::vector<Point> points;
    for (double distance : rows) {
        double const halfWidth = std::max(leastWidth, 1.05 * widening * distance + leastWidth / 2);
        for (unsigned int column = 0; column <= WaterSheet::COLUMNS; ++column) {
            points.push_back({halfWidth * (2.0 * column / WaterSheet::COLUMNS - 1), 0, -distance});
        }
    }
    return waterMesh(points, WaterSheet::COLUMNS + 1, unit, patch);
}

void OceanScene::drawSky(Core_RL& layer) const {
    constexpr int BANDS = 150;
    constexpr int STEPS = 220;
    double const half = _halfAngle();
    Point const sun = sunDirection();
    Point const eye{0, view.eyeHeight, 0};
    auto const vertex = [&](int band, int step) {
        // From below the horizon, which waves in front of the water's edge do not reach.
        double const elevation = -2 + 72.0 * band / BANDS;
        Point const direction = seaDirection(elevation, half * 1.6 * (2.0 * step / STEPS - 1));
        double const fromSun = std::acos(std::clamp(dot(direction, sun), -1.0, 1.0)) * 180 / PI;
        layer.setColor(skyTone(skyColor(elevation, fromSun), 1));
        layer.renderPoint3_scoped(convert<float>(eye + direction * 1000.0));
    };
    layer.pushDepthTest(DEPTH_IGNORED);
    layer.pushColor(layer.currentColor());
    layer.begin(Primitive::QUADS);
    for (int band = 0; band < BANDS; ++band) {
        for (int step = 0; step < STEPS; ++step) {
            vertex(band, step);
            vertex(band, step + 1);
            vertex(band + 1, step + 1);
            vertex(band + 1, step);
        }
    }
    layer.end();
    drawSunDisc(layer, eye, sun, 1000);
    layer.popColor(1);
    layer.popDepthTest();
}

void OceanScene::drawHaze(Core_RL& layer) const {
    // Walls of mist, one behind the other: the farther the water, the more walls are in front of it. OpenGL's
    // fog would not reach the shaders of the water.
    constexpr double DISTANCES[] = {5200, 3000, 1800, 1100, 700, 450, 300, 200};
    constexpr double VEIL = 0.15;  // what one wall takes
    constexpr int STEPS = 96;
    double const half = _halfAngle();
    Point const sun = sunDirection();
    Point const eye{0, view.eyeHeight, 0};
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushColor(layer.currentColor());
    layer.begin(Primitive::QUADS);
    for (double distance : DISTANCES) {
        double const low = -20.0 / distance * 180 / PI;
        auto const vertex = [&](double elevation, int step, double alpha) {
            double const azimuth = half * 1.6 * (2.0 * step / STEPS - 1);
            Point const direction = seaDirection(elevation, azimuth);
            double const fromSun =
                std::acos(std::clamp(dot(seaDirection(0, azimuth), sun), -1.0, 1.0)) * 180 / PI;
            layer.setColor(skyTone(skyColor(0, fromSun), alpha));
            layer.renderPoint3_scoped(convert<float>(eye + direction * static_cast<double>(distance)));
        };
        for (int step = 0; step < STEPS; ++step) {
            vertex(low, step, VEIL);
            vertex(low, step + 1, VEIL);
            vertex(0.0, step + 1, VEIL);
            vertex(0.0, step, VEIL);
            vertex(0.0, step, VEIL);
            vertex(0.0, step + 1, VEIL);
            vertex(0.5, step + 1, 0);
            vertex(0.5, step, 0);
        }
    }
    layer.end();
    layer.popColor(1);
    layer.popBlending();
    layer.popDepthTest();
}

}  // namespace vellum::viewport
