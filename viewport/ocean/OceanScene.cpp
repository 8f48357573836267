#include "viewport/ocean/OceanScene.h"

#include "foundation/geometry/constants.h"
#include "viewport/ocean/color_blending.h"
#include "viewport/scene/ModelParts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;
constexpr double FIELD_OF_VIEW = 38;  // vertical, degrees
constexpr double NEAREST = 0.3;
constexpr double FARTHEST = 12'000;

// The distance at which water and sky meet, and the size of triangles in relation to their distance.
constexpr double EDGE_OF_SEA = 9'000;
constexpr double GROWTH = 0.0075;
constexpr unsigned int COLUMNS = 320;

constexpr Point SKY_ZENITH{0.17, 0.33, 0.56};
constexpr Point SKY_MIDDLE{0.38, 0.53, 0.69};
constexpr Point SKY_HORIZON{0.66, 0.73, 0.78};
constexpr Point GLOW{1.0, 0.80, 0.52};
constexpr Point DISC{1.0, 0.97, 0.88};

constexpr DepthtTestMode DEPTH_IGNORED{DEPTH_TEST_OFF, false};
constexpr DepthtTestMode DEPTH_TESTED_ONLY{DEPTH_LESS_OR_EQUAL, false};

double radians(double degrees) {
    return degrees * PI / 180;
}

/// \param elevation, fromSun angles above the horizon and from the sun, degrees
Point skyColor(double elevation, double fromSun) {
    double const height = std::max(elevation, 0.0);
    Point color = blend(SKY_HORIZON, SKY_MIDDLE, smoothStep(0.0, 14.0, height));
    color = blend(color, SKY_ZENITH, smoothStep(8.0, 50.0, height));
    return blend(color, GLOW, 0.62 * std::exp(-fromSun / 6) + 0.34 * std::exp(-fromSun / 26));
}

Color4<float> toColor(Point const& color, double alpha) {
    return {static_cast<float>(std::min(color.x, 1.0)), static_cast<float>(std::min(color.y, 1.0)),
            static_cast<float>(std::min(color.z, 1.0)), static_cast<float>(alpha)};
}

template <class T>
Array<T> toArray(std::vector<T> const& values) {
    Array<T> array;
    array.reserve(static_cast<unsigned int>(values.size()), false);
    array.setSize(static_cast<unsigned int>(values.size()));
    std::copy(values.begin(), values.end(), array.begin());
    return array;
}

/// The distances of the grid's rows from the viewer. They begin behind the viewer, as waves move the first rows forward.
std::vector<double> rowDistances(double eyeHeight) {
    std::vector<double> distances;
    double const step = std::max(0.04, 0.012 * eyeHeight);
    double distance = -3 * eyeHeight - 6;
    while (distance < EDGE_OF_SEA) {
        distances.push_back(distance);
        distance += std::max(step, GROWTH * distance);
    }
    distances.push_back(EDGE_OF_SEA);
    return distances;
}

}  // namespace

Point OceanScene::_direction(double elevation, double azimuth) const {
    double const e = radians(elevation);
    double const a = radians(azimuth);
    return {std::sin(a) * std::cos(e), std::sin(e), -std::cos(a) * std::cos(e)};
}

Point OceanScene::sunDirection() const {
    return _direction(view.sunElevation, view.sunAzimuth);
}

/// The angle between the middle and the sides of the water, degrees, a little wider than the view for waves that move in
/// from beside it.
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
    camera.lookAt(eye, eye + convert<float>(_direction(-view.tiltDegrees, 0)), {0, 1, 0});
}

std::unique_ptr<Mesh> OceanScene::water(double unit, double patch) const {
    std::vector<double> const rows = rowDistances(view.eyeHeight);
    double const widening = std::tan(radians(_halfAngle()));
    // Beside the viewer the grid is as wide as the waves are long, for the picture's lower corners.
    double const leastWidth = 8 + 3 * view.eyeHeight;
    std::vector<Point> positions;
    std::vector<Vector2<float>> coordinates;
    std::vector<Tuple3<unsigned int>> triangles;
    for (double distance : rows) {
        double const halfWidth = std::max(leastWidth, 1.05 * widening * distance + leastWidth / 2);
        for (unsigned int column = 0; column <= COLUMNS; ++column) {
            double const x = halfWidth * (2.0 * column / COLUMNS - 1);
            positions.push_back({x / unit, 0, -distance / unit});
            coordinates.push_back({static_cast<float>(-distance / patch), static_cast<float>(-x / patch)});
        }
    }
    for (unsigned int row = 0; row + 1 < rows.size(); ++row) {
        for (unsigned int column = 0; column < COLUMNS; ++column) {
            unsigned int const near = row * (COLUMNS + 1) + column;
            unsigned int const far = near + COLUMNS + 1;
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
    mesh->addNamedArray(MeshArrayInf_ns::PER_VERTEX, ModelPart::CHANNEL, toArray(coordinates));
    mesh->workBox();
    return mesh;
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
        Point const direction = _direction(elevation, half * 1.6 * (2.0 * step / STEPS - 1));
        double const fromSun = std::acos(std::clamp(dot(direction, sun), -1.0, 1.0)) * 180 / PI;
        layer.setColor(toColor(skyColor(elevation, fromSun), 1));
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
    _drawSun(layer);
    layer.popColor(1);
    layer.popDepthTest();
}

/// Draws a disc with a soft rim: the grid of the sky is too coarse for it.
void OceanScene::_drawSun(Core_RL& layer) const {
    constexpr int STEPS = 64;
    struct Ring {
        double degrees;
        double alpha;
    };
    constexpr std::array<Ring, 4> RINGS{{{0, 1}, {0.70, 1}, {0.95, 0.28}, {2.4, 0}}};
    Point const sun = sunDirection();
    Point const right = normalized(cross(sun, Point{0, 1, 0}));
    Point const up = cross(right, sun);
    Point const eye{0, view.eyeHeight, 0};
    layer.pushBlending(BLENDING_ALPHA);
    layer.begin(Primitive::QUADS);
    auto const vertex = [&](Ring const& ring, int step) {
        double const angle = 2 * PI * step / STEPS;
        Point const offset = right * std::cos(angle) + up * std::sin(angle);
        layer.setColor(toColor(DISC, ring.alpha));
        layer.renderPoint3_scoped(
            convert<float>(eye + (sun + offset * std::tan(radians(ring.degrees))) * 1000.0));
    };
    for (std::size_t k = 0; k + 1 < RINGS.size(); ++k) {
        for (int step = 0; step < STEPS; ++step) {
            vertex(RINGS[k], step);
            vertex(RINGS[k], step + 1);
            vertex(RINGS[k + 1], step + 1);
            vertex(RINGS[k + 1], step);
        }
    }
    layer.end();
    layer.popBlending();
}

void OceanScene::drawHaze(Core_RL& layer) const {
    // Walls of mist, one behind the other: the farther the water, the more walls are in front of it. OpenGL's fog would
    // not reach the shaders of the water.
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
            Point const direction = _direction(elevation, azimuth);
            double const fromSun =
                std::acos(std::clamp(dot(_direction(0, azimuth), sun), -1.0, 1.0)) * 180 / PI;
            layer.setColor(toColor(skyColor(0, fromSun), alpha));
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
