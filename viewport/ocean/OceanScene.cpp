#include "viewport/ocean/OceanScene.h"

#include "viewport/scene/ModelParts.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

constexpr double pi = 3.14159265358979323846;
constexpr double fieldOfView = 38;  // vertical, degrees
constexpr double nearest = 0.3;
constexpr double farthest = 12'000;

// The distance at which water and sky meet, and how the triangles grow: by this part of their distance.
constexpr double edgeOfSea = 9'000;
constexpr double growth = 0.0075;
constexpr unsigned int columns = 320;

constexpr Point skyZenith{0.17, 0.33, 0.56};
constexpr Point skyMiddle{0.38, 0.53, 0.69};
constexpr Point skyHorizon{0.66, 0.73, 0.78};
constexpr Point glow{1.0, 0.80, 0.52};
constexpr Point disc{1.0, 0.97, 0.88};

constexpr DepthtTestMode depthIgnored{DEPTH_TEST_OFF, false};
constexpr DepthtTestMode depthTestedOnly{DEPTH_LESS_OR_EQUAL, false};

double radians(double const& degrees) {
    return degrees * pi / 180;
}

double smooth(double const& from, double const& to, double const& value) {
    double const t = std::clamp((value - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

Point mix(Point const& a, Point const& b, double const& part) {
    return a * (1 - part) + b * part;
}

/// The sky's colour at an angle above the horizon, at an angle from the sun; degrees.
Point skyColour(double const& elevation, double const& fromSun) {
    double const height = std::max(elevation, 0.0);
    Point colour = mix(skyHorizon, skyMiddle, smooth(0, 14, height));
    colour = mix(colour, skyZenith, smooth(8, 50, height));
    return mix(colour, glow, 0.62 * std::exp(-fromSun / 6) + 0.34 * std::exp(-fromSun / 26));
}

Color4<float> toColour(Point const& colour, double const& alpha) {
    return {static_cast<float>(std::min(colour.x, 1.0)), static_cast<float>(std::min(colour.y, 1.0)),
            static_cast<float>(std::min(colour.z, 1.0)), static_cast<float>(alpha)};
}

template <class T>
Array<T> toArray(std::vector<T> const& values) {
    Array<T> array;
    array.reserve(static_cast<unsigned int>(values.size()), false);
    array.setSize(static_cast<unsigned int>(values.size()));
    std::copy(values.begin(), values.end(), array.begin());
    return array;
}

/// The distances of the grid's rows from the viewer. They begin behind, as waves move the first rows forward.
std::vector<double> rowDistances(double const& eyeHeight) {
    std::vector<double> distances;
    double const step = std::max(0.04, 0.012 * eyeHeight);
    double distance = -3 * eyeHeight - 6;
    while (distance < edgeOfSea) {
        distances.push_back(distance);
        distance += std::max(step, growth * distance);
    }
    distances.push_back(edgeOfSea);
    return distances;
}

}  // namespace

Point OceanScene::_direction(double const& elevation, double const& azimuth) const {
    double const e = radians(elevation);
    double const a = radians(azimuth);
    return {std::sin(a) * std::cos(e), std::sin(e), -std::cos(a) * std::cos(e)};
}

Point OceanScene::sunDirection() const {
    return _direction(_view.sunElevation, _view.sunAzimuth);
}

/// Of the view from its middle to its sides, degrees, with room for waves that come in from beside it.
double OceanScene::_halfAngle() const {
    double const half = std::atan(std::tan(radians(fieldOfView / 2)) * _view.aspect) * 180 / pi;
    return std::min(half + 4, 80.0);
}

void OceanScene::placeCamera(Camera_RL_GL& camera) const {
    Vector3<float> const eye{0, static_cast<float>(_view.eyeHeight), 0};
    camera.viewKind = 0;
    camera.aspect = static_cast<float>(_view.aspect);
    camera.fieldOfView = static_cast<float>(fieldOfView);
    camera.nearDistance = static_cast<float>(nearest);
    camera.farDistance = static_cast<float>(farthest);
    camera.lookAt(eye, eye + convert<float>(_direction(-_view.tiltDegrees, 0)), {0, 1, 0});
}

std::unique_ptr<Mesh> OceanScene::water(double const& unit, double const& patch) const {
    std::vector<double> const rows = rowDistances(_view.eyeHeight);
    double const widening = std::tan(radians(_halfAngle()));
    // Beside the viewer the grid is as wide as the waves are long, for the picture's lower corners.
    double const leastWidth = 8 + 3 * _view.eyeHeight;
    std::vector<Point> positions;
    std::vector<Vector2<float>> coordinates;
    std::vector<Tuple3<unsigned int>> triangles;
    for (double const& distance : rows) {
        double const halfWidth = std::max(leastWidth, 1.05 * widening * distance + leastWidth / 2);
        for (unsigned int column = 0; column <= columns; ++column) {
            double const x = halfWidth * (2.0 * column / columns - 1);
            positions.push_back({x / unit, 0, -distance / unit});
            coordinates.push_back({static_cast<float>(-distance / patch), static_cast<float>(-x / patch)});
        }
    }
    for (unsigned int row = 0; row + 1 < rows.size(); ++row) {
        for (unsigned int column = 0; column < columns; ++column) {
            unsigned int const near = row * (columns + 1) + column;
            unsigned int const far = near + columns + 1;
            triangles.push_back({near, near + 1, far + 1});
            triangles.push_back({near, far + 1, far});
        }
    }
    auto mesh = std::make_unique<Mesh>();
    mesh->setPositions(toArray(positions));
    mesh->setTriangles(toArray(triangles));
    mesh->setNormalTriangles(toArray(triangles));
    mesh->setVertexNormals(toArray(std::vector<Vector3<float>>(positions.size(), {0, 1, 0})));
    mesh->setFaceNormals(toArray(std::vector<Color4<float>>(triangles.size(), {0, 1, 0, 0})));
    mesh->addNamedArray(MeshArrayInf_ns::PER_VERTEX, ModelPart::channel, toArray(coordinates));
    mesh->workBox();
    return mesh;
}

void OceanScene::drawSky(Core_RL& layer) const {
    constexpr int bands = 150;
    constexpr int steps = 220;
    double const half = _halfAngle();
    Point const sun = sunDirection();
    Point const eye{0, _view.eyeHeight, 0};
    auto const vertex = [&](int const& band, int const& step) {
        // From below the horizon, which waves in front of the water's edge do not reach.
        double const elevation = -2 + 72.0 * band / bands;
        Point const direction = _direction(elevation, half * 1.6 * (2.0 * step / steps - 1));
        double const fromSun = std::acos(std::clamp(dot(direction, sun), -1.0, 1.0)) * 180 / pi;
        layer.setColor(toColour(skyColour(elevation, fromSun), 1));
        layer.renderPoint3_scoped(convert<float>(eye + direction * 1000.0));
    };
    layer.pushDepthTest(depthIgnored);
    layer.pushColor(layer.currentColor());
    layer.begin(Primitive::QUADS);
    for (int band = 0; band < bands; ++band) {
        for (int step = 0; step < steps; ++step) {
            vertex(band, step);
            vertex(band, step + 1);
            vertex(band + 1, step + 1);
            vertex(band + 1, step);
        }
    }
    layer.end();
    _drawSun(layer);
    layer.popColor(1);
    layer.popDepthTest();
}

/// A disc with a soft rim: the sky's own grid is too coarse for it.
void OceanScene::_drawSun(Core_RL& layer) const {
    constexpr int steps = 64;
    constexpr double ring[] = {0, 0.70, 0.95, 2.4};  // degrees
    constexpr double alphas[] = {1, 1, 0.28, 0};
    Point const sun = sunDirection();
    Point const right = normalized(cross(sun, Point{0, 1, 0}));
    Point const up = cross(right, sun);
    Point const eye{0, _view.eyeHeight, 0};
    layer.pushBlending(BLENDING_ALPHA);
    layer.begin(Primitive::QUADS);
    for (int k = 0; k < 3; ++k) {
        auto const vertex = [&](int const& i, int const& step) {
            double const angle = 2 * pi * step / steps;
            Point const offset = right * std::cos(angle) + up * std::sin(angle);
            layer.setColor(toColour(disc, alphas[i]));
            layer.renderPoint3_scoped(
                convert<float>(eye + (sun + offset * std::tan(radians(ring[i]))) * 1000.0));
        };
        for (int step = 0; step < steps; ++step) {
            vertex(k, step);
            vertex(k, step + 1);
            vertex(k + 1, step + 1);
            vertex(k + 1, step);
        }
    }
    layer.end();
    layer.popBlending();
}

void OceanScene::drawHaze(Core_RL& layer) const {
    // Walls of mist, one behind the other: water in front of a wall is not veiled by it.
    constexpr double distances[] = {5200, 3000, 1800, 1100, 700, 450, 300, 200};
    constexpr double veil = 0.15;  // what one wall takes
    constexpr int steps = 96;
    double const half = _halfAngle();
    Point const sun = sunDirection();
    Point const eye{0, _view.eyeHeight, 0};
    layer.pushDepthTest(depthTestedOnly);
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushColor(layer.currentColor());
    layer.begin(Primitive::QUADS);
    for (double const& distance : distances) {
        double const low = -20.0 / distance * 180 / pi;
        auto const vertex = [&](double const& elevation, int const& step, double const& alpha) {
            double const azimuth = half * 1.6 * (2.0 * step / steps - 1);
            Point const direction = _direction(elevation, azimuth);
            double const fromSun =
                std::acos(std::clamp(dot(_direction(0, azimuth), sun), -1.0, 1.0)) * 180 / pi;
            layer.setColor(toColour(skyColour(0, fromSun), alpha));
            layer.renderPoint3_scoped(convert<float>(eye + direction * static_cast<double>(distance)));
        };
        for (int step = 0; step < steps; ++step) {
            vertex(low, step, veil);
            vertex(low, step + 1, veil);
            vertex(0.0, step + 1, veil);
            vertex(0.0, step, veil);
            vertex(0.0, step, veil);
            vertex(0.0, step + 1, veil);
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
