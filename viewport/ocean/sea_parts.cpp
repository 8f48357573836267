#include "viewport/ocean/sea_parts.h"

#include "foundation/geometry/constants.h"
#include "viewport/ocean/color_blending.h"
#include "viewport/scene/ModelParts.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

using constants::d::PI;

constexpr Point SKY_ZENITH{0.17, 0.33, 0.56};
constexpr Point SKY_MIDDLE{0.38, 0.53, 0.69};
constexpr Point SKY_HORIZON{0.66, 0.73, 0.78};
constexpr Point GLOW{1.0, 0.80, 0.52};
constexpr Point DISC{1.0, 0.97, 0.88};

template <class T>
Array<T> toArray(std::vector<T> const& values) {
    Array<T> array;
    array.reserve(static_cast<unsigned int>(values.size()), false);
    array.setSize(static_cast<unsigned int>(values.size()));
    std::copy(values.begin(), values.end(), array.begin());
    return array;
}

}  // namespace

double radians(double degrees) {
    return degrees * PI / 180;
}

Point seaDirection(double elevation, double azimuth) {
    double const e = radians(elevation);
    double const a = radians(azimuth);
    return {std::sin(a) * std::cos(e), std::sin(e), -std::cos(a) * std::cos(e)};
}

Point skyColor(double elevation, double fromSun) {
    double const height = std::max(elevation, 0.0);
    Point color = blend(SKY_HORIZON, SKY_MIDDLE, smoothStep(0.0, 14.0, height));
    color = blend(color, SKY_ZENITH, smoothStep(8.0, 50.0, height));
    return blend(color, GLOW, 0.62 * std::exp(-fromSun / 6) + 0.34 * std::exp(-fromSun / 26));
}

Color4<float> skyTone(Point const& color, double alpha) {
    return {static_cast<float>(std::min(color.x, 1.0)), static_cast<float>(std::min(color.y, 1.0)),
            static_cast<float>(std::min(color.z, 1.0)), static_cast<float>(alpha)};
}

// A disc of its own, because the grid of a sky is too coarse for it.
void drawSunDisc(Core_RL& layer, Point const& eye, Point const& sun, double distance) {
    constexpr int STEPS = 64;
    struct Ring {
        double degrees;
        double alpha;
    };
    constexpr std::array<Ring, 4> RINGS{{{0, 1}, {0.70, 1}, {0.95, 0.28}, {2.4, 0}}};
    Point const right = normalized(cross(sun, Point{0, 1, 0}));
    Point const up = cross(right, sun);
    layer.pushBlending(BLENDING_ALPHA);
    layer.begin(Primitive::QUADS);
    auto const vertex = [&](Ring const& ring, int step) {
        double const angle = 2 * PI * step / STEPS;
        Point const offset = right * std::cos(angle) + up * std::sin(angle);
        layer.setColor(skyTone(DISC, ring.alpha));
        layer.renderPoint3_scoped(
            convert<float>(eye + (sun + offset * std::tan(radians(ring.degrees))) * distance));
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

std::unique_ptr<Mesh> waterMesh(std::vector<Point> const& points, unsigned int columns, double unit,
                                double patch) {
    std::vector<Point> positions;
    std::vector<Vector2<float>> coordinates;
    positions.reserve(points.size());
    coordinates.reserve(points.size());
    for (Point const& p : points) {
        positions.push_back({p.x / unit, p.y / unit, p.z / unit});
        coordinates.push_back({static_cast<float>(p.z / patch), static_cast<float>(-p.x / patch)});
    }
    auto const rows = static_cast<unsigned int>(points.size() / columns);
    std::vector<Tuple3<unsigned int>> triangles;
    triangles.reserve(std::size_t{2} * (columns - 1) * (rows - 1));
    for (unsigned int row = 0; row + 1 < rows; ++row) {
        for (unsigned int column = 0; column + 1 < columns; ++column) {
            unsigned int const near = row * columns + column;
            unsigned int const far = near + columns;
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

}  // namespace vellum::viewport
