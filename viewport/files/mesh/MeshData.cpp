#include "viewport/files/mesh/MeshData.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

namespace {

template <class T>
bool isFinite(Vector3<T> const& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

std::string indexFault(std::size_t triangle, unsigned int index, std::size_t count) {
    return "triangle " + std::to_string(triangle) + " has vertex index " + std::to_string(index) +
           ", out of range: the mesh has " + std::to_string(count) + " vertices";
}

/// Triangles without three different corners are left out of a model.
bool hasThreeCorners(MeshData::Triangle const& triangle, std::vector<Vector3<double>> const& positions) {
    Vector3<double> const& a = positions[triangle.e0];
    Vector3<double> const& b = positions[triangle.e1];
    Vector3<double> const& c = positions[triangle.e2];
    auto const differ = [](Vector3<double> const& v, Vector3<double> const& w) {
        return v.x != w.x || v.y != w.y || v.z != w.z;
    };
    return differ(a, b) && differ(b, c) && differ(c, a);
}

}  // namespace

std::optional<Fault> MeshData::firstFault(std::string const& file) const {
    std::size_t const count = positions.size();
    if (triangles.empty()) {
        return Fault{file, "the mesh is empty: it has no triangle"};
    }
    if ((!normals.empty() && normals.size() != count) || colors.size() != count ||
        (!textureCoordinates.empty() && textureCoordinates.size() != count)) {
        return Fault{file, "the mesh is damaged: its vertex lists differ in length"};
    }
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        Triangle const& triangle = triangles[i];
        unsigned int const largest = std::max({triangle.e0, triangle.e1, triangle.e2});
        if (largest >= count) {
            return Fault{file, indexFault(i, largest, count)};
        }
    }
    if (!triangleMaterials.empty() && triangleMaterials.size() != triangles.size()) {
        return Fault{file, "the mesh is damaged: its triangles and their materials differ in number"};
    }
    for (unsigned int material : triangleMaterials) {
        if (material >= materials.size()) {
            return Fault{file, "the mesh is damaged: a triangle has a material that does not exist"};
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (!isFinite(positions[i])) {
            return Fault{file, "vertex " + std::to_string(i) +
                                   " has a coordinate that is not a number or infinite"};
        }
    }
    if (std::none_of(triangles.begin(), triangles.end(),
                     [this](Triangle const& triangle) { return hasThreeCorners(triangle, positions); })) {
        return Fault{file, "the mesh is empty: no triangle has three different corners"};
    }
    for (std::size_t i = 0; i < count; ++i) {
        Color4<float> const& c = colors[i];
        bool const isNormalFinite = normals.empty() || isFinite(normals[i]);
        if (!isNormalFinite || !std::isfinite(c.r + c.g + c.b + c.a)) {
            return Fault{file, "vertex " + std::to_string(i) +
                                   " has a normal or color that is not a number or infinite"};
        }
    }
    for (std::size_t i = 0; i < textureCoordinates.size(); ++i) {
        if (!std::isfinite(textureCoordinates[i].x) || !std::isfinite(textureCoordinates[i].y)) {
            return Fault{file, "vertex " + std::to_string(i) +
                                   " has a texture coordinate that is not a number or infinite"};
        }
    }
    return std::nullopt;
}

bool MeshData::hasNormal(unsigned int vertex) const {
    if (normals.empty()) {
        return false;
    }
    Vector3<float> const& n = normals[vertex];
    return n.x != 0 || n.y != 0 || n.z != 0;
}

std::size_t MeshData::missingNormalCount() const {
    std::size_t missing = 0;
    for (unsigned int vertex = 0; vertex < positions.size(); ++vertex) {
        missing += hasNormal(vertex) ? 0 : 1;
    }
    return missing;
}

Box3<double> MeshData::box() const {
    if (positions.empty()) {
        return {{0, 0, 0}, {0, 0, 0}};
    }
    Box3<double> box{positions.front(), positions.front()};
    for (Vector3<double> const& p : positions) {
        box.min = {std::min(box.min.x, p.x), std::min(box.min.y, p.y), std::min(box.min.z, p.z)};
        box.max = {std::max(box.max.x, p.x), std::max(box.max.y, p.y), std::max(box.max.z, p.z)};
    }
    return box;
}

}  // namespace vellum::viewport
