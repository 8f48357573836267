#include "toolkit/mesh_arrays.h"

#include "foundation/basic/ArrayServer.h"
#include "foundation/geometry/constants.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

namespace vellum::toolkit {

namespace {

using Triangle = Tuple3<unsigned int>;

constexpr std::size_t MOST_ELEMENTS = std::numeric_limits<unsigned int>::max();

/// What `set` says; false where there is no memory for what it makes on the way.
template <class Set>
bool withMemory(Set const& set) {
    try {
        return set();
    } catch (std::bad_alloc const&) {
        return false;
    } catch (std::length_error const&) {
        return false;
    }
}

template <class T>
Array<T> arrayOfSize(std::size_t size) {
    Array<T> array;
    array.reserve(static_cast<unsigned int>(size), false);
    array.setSize(static_cast<unsigned int>(size));
    return array;
}

template <class T>
Array<T> copyOf(Span<T> values) {
    auto array = arrayOfSize<T>(values.size());
    std::copy(values.begin(), values.end(), array.begin());
    return array;
}

template <class Number>
bool setPoints(Mesh& mesh, Number const* xyz, std::size_t count) {
    return count <= MOST_ELEMENTS && withMemory([&] {
               auto positions = arrayOfSize<Vector3<double>>(count);
               for (Vector3<double>& p : positions) {
                   p = {static_cast<double>(xyz[0]), static_cast<double>(xyz[1]),
                        static_cast<double>(xyz[2])};
                   xyz += 3;
               }
               return mesh.setPositions(positions);
           });
}

/// The numbers of an array of points, which lie one after the other.
template <class Number>
Number const* numbersOf(Span<Vector3<Number>> points) {
    static_assert(sizeof(Vector3<Number>) == 3 * sizeof(Number), "a point is its three numbers");
    return points.empty() ? nullptr : &points[0].x;
}

bool areTriples(std::size_t indices) {
    return indices % 3 == 0 && indices / 3 <= Mesh::MOST_TRIANGLES;
}

template <class Index>
Array<Triangle> trianglesOf(Span<Index> corners) {
    auto triangles = arrayOfSize<Triangle>(corners.size() / 3);
    Index const* from = corners.begin();
    for (Triangle& t : triangles) {
        t = {static_cast<unsigned int>(from[0]), static_cast<unsigned int>(from[1]),
             static_cast<unsigned int>(from[2])};
        from += 3;
    }
    return triangles;
}

bool isName(char const* name) {
    return name != nullptr && *name != '\0';
}

/// The triangles of a mesh; empty where it has none.
Span<Triangle> trianglesOf(Mesh const& mesh) {
    ArrayTypeable const* const record = VL_ArrayServer.resolve(mesh.triangles());
    auto const* const triangles = record != nullptr ? record->as<Triangle>() : nullptr;
    return triangles != nullptr ? Span<Triangle>(triangles, record->size) : Span<Triangle>();
}

template <class T>
bool setNamed(Mesh& mesh, unsigned int bits, char const* name, Span<T> values) {
    return isName(name) && values.size() <= MOST_ELEMENTS &&
           withMemory([&] { return mesh.addNamedArray(bits, name, copyOf(values)); });
}

}  // namespace

bool setPositions(Mesh& mesh, Span<Vector3<double>> points) {
    return setPoints(mesh, numbersOf(points), points.size());
}

bool setPositions(Mesh& mesh, Span<Vector3<float>> points) {
    return setPoints(mesh, numbersOf(points), points.size());
}

bool setPositions(Mesh& mesh, Span<double> xyz) {
    return xyz.size() % 3 == 0 && setPoints(mesh, xyz.data(), xyz.size() / 3);
}

bool setPositions(Mesh& mesh, Span<float> xyz) {
    return xyz.size() % 3 == 0 && setPoints(mesh, xyz.data(), xyz.size() / 3);
}

bool setTriangles(Mesh& mesh, Span<std::uint32_t> corners) {
    return areTriples(corners.size()) && withMemory([&] { return mesh.setTriangles(trianglesOf(corners)); });
}

bool setTriangles(Mesh& mesh, Span<std::uint64_t> corners) {
    bool const areNarrow = std::all_of(corners.begin(), corners.end(), [](std::uint64_t index) {
        return index <= std::numeric_limits<std::uint32_t>::max();
    });
    return areNarrow && areTriples(corners.size()) &&
           withMemory([&] { return mesh.setTriangles(trianglesOf(corners)); });
}

bool setTriangles(Mesh& mesh, Span<Triangle> triangles) {
    return triangles.size() <= Mesh::MOST_TRIANGLES &&
           withMemory([&] { return mesh.setTriangles(copyOf(triangles)); });
}

bool setVertexNormals(Mesh& mesh, Span<Vector3<float>> normals) {
    Span<Triangle> const triangles = trianglesOf(mesh);
    return !triangles.empty() && normals.size() <= MOST_ELEMENTS && withMemory([&] {
        // Both copies are made before the first one is set: that is where memory runs out.
        Array<Triangle> const normalTriangles = copyOf(triangles);
        return mesh.setVertexNormals(copyOf(normals)) && mesh.setNormalTriangles(normalTriangles);
    });
}

bool setTextureCoordinates(Mesh& mesh, char const* name, Span<Vector2<float>> coordinates) {
    // A channel with corners is found first, and cannot be taken away.
    if (isName(name) && mesh.namedArray(MeshArrayInf_ns::TRINDEXED, name) != ARRAY_ID_NONE) {
        return setNamed(mesh, MeshArrayInf_ns::TRINDEXED, name, trianglesOf(mesh)) &&
               setNamed(mesh, MeshArrayInf_ns::PER_FACE, name, coordinates);
    }
    return setNamed(mesh, MeshArrayInf_ns::PER_VERTEX, name, coordinates);
}

bool setTextureCoordinates(Mesh& mesh, char const* name, Span<Vector2<float>> coordinates,
                           Span<std::uint32_t> corners) {
    return isName(name) && areTriples(corners.size()) && coordinates.size() <= MOST_ELEMENTS &&
           withMemory([&] {
               Array<Triangle> const triangles = trianglesOf(corners);
               Array<Vector2<float>> const values = copyOf(coordinates);
               return mesh.addNamedArray(MeshArrayInf_ns::TRINDEXED, name, triangles) &&
                      mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, name, values);
           });
}

bool setColors(Mesh& mesh, char const* name, Span<Color4<float>> colors) {
    return setNamed(mesh, MeshArrayInf_ns::PER_VERTEX, name, colors);
}

void markChanged(Mesh& mesh) {
    for (ArrayId const& array : {mesh.positions(), mesh.triangles(), mesh.vertexNormals(),
                                 mesh.normalTriangles(), mesh.faceNormals(), mesh.adjacency()}) {
        mesh.markModified(array);
    }
}

bool prepareMesh(Mesh& mesh, double hardEdges) {
    float crease = Mesh::NO_CREASE;
    if (hardEdges < NO_HARD_EDGES) {
        crease = static_cast<float>(std::max(hardEdges, 0.0) * constants::d::PI / 180);
    }
    return withMemory([&] {
        if (!mesh.workAdjacency() || !mesh.workNormals(crease)) {
            return false;
        }
        mesh.workBox();
        return true;
    });
}

}  // namespace vellum::toolkit
