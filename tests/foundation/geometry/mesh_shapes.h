#pragma once

#include "foundation/basic/Array.h"
#include "foundation/basic/ArrayServer.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Tuple4.h"

#include <cmath>

/// The shapes for tests of meshes. Triangles are counter-clockwise seen from outside.
namespace vellum::mesh_shapes {

using Triangle = Tuple3<unsigned int>;

struct Shape {
    Array<Vector3<double>> positions;
    Array<Triangle> triangles;

    void fill(Mesh& mesh) const {
        mesh.setPositions(positions);
        mesh.setTriangles(triangles);
    }
};

/// The triangle (0,0,0), (3,0,0), (0,3,0).
inline Shape oneTriangle() {
    return {{{0, 0, 0}, {3, 0, 0}, {0, 3, 0}}, {{0, 1, 2}}};
}

/// n x n squares of the plane from -1 to 1, two triangles each, facing +z; wavy when `height` is not 0.
inline Shape grid(unsigned int n, double height = 0) {
    Shape shape;
    shape.positions.reserve((n + 1) * (n + 1), false);
    shape.triangles.reserve(n * n * 2, false);
    for (unsigned int y = 0; y <= n; ++y) {
        for (unsigned int x = 0; x <= n; ++x) {
            double const u = 2.0 * x / n - 1;
            double const v = 2.0 * y / n - 1;
            shape.positions.pushBack({u, v, height * std::sin(3 * u) * std::cos(2 * v)});
        }
    }
    for (unsigned int y = 0; y < n; ++y) {
        for (unsigned int x = 0; x < n; ++x) {
            unsigned int const corner = y * (n + 1) + x;
            shape.triangles.pushBack({corner, corner + 1, corner + n + 2});
            shape.triangles.pushBack({corner, corner + n + 2, corner + n + 1});
        }
    }
    return shape;
}

/// The cube from -1 to 1 with 8 vertices and 12 triangles.
inline Shape cube() {
    Shape shape;
    for (unsigned int i = 0; i < 8; ++i) {
        shape.positions.pushBack({(i & 1U) ? 1.0 : -1.0, (i & 2U) ? 1.0 : -1.0, (i & 4U) ? 1.0 : -1.0});
    }
    for (auto const& face : {Tuple4<unsigned int>{0, 4, 6, 2},
                             {1, 3, 7, 5},
                             {0, 1, 5, 4},
                             {2, 6, 7, 3},
                             {0, 2, 3, 1},
                             {4, 5, 7, 6}}) {
        shape.triangles.pushBack({face.e0, face.e1, face.e2});
        shape.triangles.pushBack({face.e0, face.e2, face.e3});
    }
    return shape;
}

/// The unit sphere, closed: `rings` circles of 2 * `rings` vertices between two poles.
inline Shape sphere(unsigned int rings) {
    constexpr double PI = 3.14159265358979323846;
    Shape shape;
    unsigned int const around = 2 * rings;
    shape.positions.pushBack({0, 0, 1});
    for (unsigned int r = 1; r <= rings; ++r) {
        double const theta = PI * r / (rings + 1);
        for (unsigned int i = 0; i < around; ++i) {
            double const phi = 2 * PI * i / around;
            shape.positions.pushBack(
                {std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi), std::cos(theta)});
        }
    }
    shape.positions.pushBack({0, 0, -1});
    unsigned int const last = shape.positions.size() - 1;
    auto const at = [&](unsigned int r, unsigned int i) { return 1 + (r - 1) * around + i % around; };
    for (unsigned int i = 0; i < around; ++i) {
        shape.triangles.pushBack({0, at(1, i), at(1, i + 1)});
        for (unsigned int r = 1; r < rings; ++r) {
            shape.triangles.pushBack({at(r, i), at(r + 1, i), at(r + 1, i + 1)});
            shape.triangles.pushBack({at(r, i), at(r + 1, i + 1), at(r, i + 1)});
        }
        shape.triangles.pushBack({at(rings, i), last, at(rings, i + 1)});
    }
    return shape;
}

/// A strip of n squares closed after half a turn (a Moebius strip): it has one border, and one edge at which
/// the sides are swapped.
inline Shape moebiusBand(unsigned int n) {
    constexpr double PI = 3.14159265358979323846;
    Shape shape;
    for (unsigned int i = 0; i < n; ++i) {
        double const phi = 2 * PI * i / n;
        for (double const side : {-0.4, 0.4}) {
            double const radius = 1 + side * std::cos(phi / 2);
            shape.positions.pushBack(
                {radius * std::cos(phi), radius * std::sin(phi), side * std::sin(phi / 2)});
        }
    }
    for (unsigned int i = 0; i < n; ++i) {
        unsigned int const a = 2 * i;
        unsigned int const b = a + 1;
        bool const isSeam = i + 1 == n;
        unsigned int const c = isSeam ? 1 : a + 2;
        unsigned int const d = isSeam ? 0 : a + 3;
        shape.triangles.pushBack({a, c, d});
        shape.triangles.pushBack({a, d, b});
    }
    return shape;
}

template <class T>
Array<T> copyOf(ArrayId const& id) {
    Array<T> copy;
    if (ArrayTypeable const* const array = VL_ArrayServer.resolve(id)) {
        copy.reserve(array->size, false);
        for (unsigned int i = 0; i < array->size; ++i) {
            copy.pushBack(array->as<T>()[i]);
        }
    }
    return copy;
}

inline unsigned int at(Triangle const& triangle, unsigned int k) {
    return k == 0 ? triangle.e0 : k == 1 ? triangle.e1 : triangle.e2;
}

/// The entries of the adjacency that are border edges.
inline unsigned int borderCount(Mesh const& mesh) {
    unsigned int count = 0;
    for (Triangle const& entries : copyOf<Triangle>(mesh.adjacency())) {
        for (unsigned int k = 0; k < 3; ++k) {
            count += at(entries, k) == Mesh::ADJACENCY_NONE ? 1 : 0;
        }
    }
    return count;
}

inline bool isModified(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr && (array->flags & ARRAY_TYPEABLE_MODIFIED_CONTROL_0) != 0;
}

inline void clearModified(ArrayId const& id) {
    VL_ArrayServer.resolve(id)->flags &= static_cast<unsigned short>(~ARRAY_TYPEABLE_MODIFIED_CONTROL_0);
}

}  // namespace vellum::mesh_shapes
