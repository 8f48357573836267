#include "viewport/files/mesh/VertexNormals.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <unordered_map>

namespace vellum::viewport {

namespace {

using Position = Vector3<double>;

struct PositionHash {
    std::size_t operator()(Position const& p) const {
        // Adding 0 turns -0 into +0, which compares equal and so must hash equal.
        double const elements[3] = {p.x + 0.0, p.y + 0.0, p.z + 0.0};
        std::uint64_t hash = 0;
        for (double element : elements) {
            std::uint64_t bits;
            std::memcpy(&bits, &element, sizeof bits);
            hash = (hash ^ bits) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 32;
        }
        return static_cast<std::size_t>(hash);
    }
};

struct SamePosition {
    bool operator()(Position const& a, Position const& b) const {
        return a.x == b.x && a.y == b.y && a.z == b.z;
    }
};

/// The largest distance of a coordinate from 0; 1 where all are 0.
double largestCoordinate(std::vector<Position> const& positions) {
    double largest = 0;
    for (Position const& p : positions) {
        largest = std::max({largest, std::abs(p.x), std::abs(p.y), std::abs(p.z)});
    }
    return largest > 0 ? largest : 1;
}

/// The angle between two vectors, radians; 0 where one of them is zero.
double angleBetween(Position const& a, Position const& b) {
    // The arc tangent stays exact for the needle-like triangles for which the arc cosine loses its digits.
    return std::atan2(length(cross(a, b)), dot(a, b));
}

}  // namespace

std::vector<unsigned int> firstAtSamePosition(std::vector<Vector3<double>> const& positions) {
    std::unordered_map<Position, unsigned int, PositionHash, SamePosition> firstAt;
    firstAt.reserve(positions.size());
    std::vector<unsigned int> first(positions.size());
    for (std::size_t i = 0; i < positions.size(); ++i) {
        first[i] = firstAt.emplace(positions[i], static_cast<unsigned int>(i)).first->second;
    }
    return first;
}

std::vector<Vector3<float>> smoothVertexNormals(std::vector<Vector3<double>> const& positions,
                                                std::vector<MeshData::Triangle> const& triangles) {
    std::vector<unsigned int> const first = firstAtSamePosition(positions);
    // Cross products of very large or very small coordinates would leave the range of a double.
    double const scale = 1 / largestCoordinate(positions);

    std::vector<Position> sums(positions.size(), Position{0, 0, 0});
    for (MeshData::Triangle const& triangle : triangles) {
        unsigned int const corners[3] = {first[triangle.e0], first[triangle.e1], first[triangle.e2]};
        Position const points[3] = {positions[corners[0]] * scale, positions[corners[1]] * scale,
                                    positions[corners[2]] * scale};
        Position const normal = cross(points[1] - points[0], points[2] - points[0]);
        double const area = length(normal);
        if (!(area > 0)) {
            continue;
        }
        for (int k = 0; k < 3; ++k) {
            Position const& here = points[k];
            double const angle = angleBetween(points[(k + 1) % 3] - here, points[(k + 2) % 3] - here);
            sums[corners[k]] = sums[corners[k]] + normal * (angle / area);
        }
    }

    std::vector<Vector3<float>> normals(positions.size());
    for (std::size_t i = 0; i < positions.size(); ++i) {
        Position const& sum = sums[first[i]];
        double const size = length(sum);
        normals[i] = size > 0 ? convert<float>(sum * (1 / size)) : Vector3<float>{0, 1, 0};
    }
    return normals;
}

}  // namespace vellum::viewport
