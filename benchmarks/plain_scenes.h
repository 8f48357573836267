#pragma once

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

namespace vellum::benchmarks {

/// A surface as plain numbers: the files of the whole jobs and the peers hold the same one.
struct PlainSurface {
    std::vector<float> positions;       ///< three for each vertex, from -1 to 1
    std::vector<float> normals;         ///< three for each vertex, of length 1
    std::vector<unsigned int> corners;  ///< three for each triangle, counter-clockwise seen from +z

    std::size_t vertexCount() const { return positions.size() / 3; }
    std::size_t triangleCount() const { return corners.size() / 3; }
};

/// Points as plain numbers.
struct PlainPoints {
    std::vector<float> positions;   ///< three for each point, from -1 to 1
    std::vector<float> velocities;  ///< three for each point, from -1 to 1

    std::size_t count() const { return positions.size() / 3; }
};

/// The height of the wavy surface at a time.
inline float waveHeight(float u, float v, float time) {
    return 0.3F * std::sin(7 * u + time) * std::cos(5 * v);
}

/// A wavy grid of at least as many triangles as asked for; 1,000,000 are 1000 by 500 squares.
inline PlainSurface makePlainSurface(std::size_t triangles) {
    auto const rows = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(triangles) / 4)));
    std::size_t const columns = (triangles + 2 * rows - 1) / (2 * rows);
    PlainSurface surface;
    surface.positions.reserve((rows + 1) * (columns + 1) * 3);
    surface.normals.reserve(surface.positions.capacity());
    surface.corners.reserve(rows * columns * 6);
    for (std::size_t y = 0; y <= rows; ++y) {
        for (std::size_t x = 0; x <= columns; ++x) {
            float const u = 2 * static_cast<float>(x) / static_cast<float>(columns) - 1;
            float const v = 2 * static_cast<float>(y) / static_cast<float>(rows) - 1;
            float const slopeU = 2.1F * std::cos(7 * u) * std::cos(5 * v);
            float const slopeV = -1.5F * std::sin(7 * u) * std::sin(5 * v);
            float const length = std::sqrt(slopeU * slopeU + slopeV * slopeV + 1);
            surface.positions.insert(surface.positions.end(), {u, v, waveHeight(u, v, 0)});
            surface.normals.insert(surface.normals.end(), {-slopeU / length, -slopeV / length, 1 / length});
        }
    }
    for (std::size_t y = 0; y < rows; ++y) {
        for (std::size_t x = 0; x < columns; ++x) {
            auto const corner = static_cast<unsigned int>(y * (columns + 1) + x);
            auto const above = static_cast<unsigned int>(corner + columns + 1);
            surface.corners.insert(surface.corners.end(),
                                   {corner, corner + 1, above + 1, corner, above + 1, above});
        }
    }
    return surface;
}

/// Points in a cube, the same in every run and on every machine.
inline PlainPoints makePlainPoints(std::size_t count) {
    std::mt19937 random(1);  // its numbers, unlike those of the distributions, are fixed by the standard
    auto const next = [&random] { return static_cast<float>(random() >> 8U) * 0x1p-23F - 1; };
    PlainPoints points;
    points.positions.resize(count * 3);
    points.velocities.resize(count * 3);
    for (float& number : points.positions) {
        number = next();
    }
    for (float& number : points.velocities) {
        number = next();
    }
    return points;
}

}  // namespace vellum::benchmarks
