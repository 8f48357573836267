#include "viewport/scene/ModelParts.h"

#include "foundation/basic/ArrayServer.h"
#include "viewport/files/mesh/VertexNormals.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vellum::viewport {

namespace {

using Triangle = MeshData::Triangle;

constexpr float CREASE_ANGLE = 0.7F;  // radians, about 40 degrees
constexpr unsigned int NONE = 0xFFFFFFFFU;

template <class T>
Array<T> toArray(std::vector<T> const& from) {
    Array<T> to;
    to.reserve(static_cast<unsigned int>(from.size()), false);
    to.setSize(static_cast<unsigned int>(from.size()));
    std::copy(from.begin(), from.end(), to.begin());
    return to;
}

Triangle mapped(Triangle const& triangle, std::vector<unsigned int> const& map) {
    return {map[triangle.e0], map[triangle.e1], map[triangle.e2]};
}

/// The whole model: its triangles without seams, and the index of a normal for each of their corners.
struct Surface {
    std::vector<Vector3<double>> positions;
    std::vector<Triangle> triangles;
    std::vector<Triangle> sources;  // the same triangles in the file's vertices
    std::vector<unsigned int> materials;
    std::vector<Vector3<float>> normals;
    std::vector<Triangle> normalTriangles;
};

Surface weldedSurface(MeshData const& data,
                      std::function<Vector3<double>(Vector3<double> const&)> const& place) {
    Surface surface;
    std::vector<unsigned int> const first = firstAtSamePosition(data.positions);
    std::vector<unsigned int> index(first.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        if (first[i] == i) {
            index[i] = static_cast<unsigned int>(surface.positions.size());
            surface.positions.push_back(place(data.positions[i]));
        } else {
            index[i] = index[first[i]];
        }
    }
    for (std::size_t t = 0; t < data.triangles.size(); ++t) {
        Triangle const welded = mapped(data.triangles[t], index);
        if (welded.e0 != welded.e1 && welded.e1 != welded.e2 && welded.e2 != welded.e0) {
            surface.triangles.push_back(welded);
            surface.sources.push_back(data.triangles[t]);
            surface.materials.push_back(data.triangleMaterials.empty() ? 0 : data.triangleMaterials[t]);
        }
    }
    return surface;
}

/// Computes the normals of a surface whose file has NONE.
void computeNormals(Surface& surface) {
    Mesh mesh;
    mesh.setPositions(toArray(surface.positions));
    mesh.setTriangles(toArray(surface.triangles));
    if (!mesh.workNormals(CREASE_ANGLE)) {
        return;
    }
    ArrayTypeable const* const normals = VL_ArrayServer.resolve(mesh.vertexNormals());
    ArrayTypeable const* const triangles = VL_ArrayServer.resolve(mesh.normalTriangles());
    if (normals != nullptr && triangles != nullptr) {
        auto const* const n = normals->as<Vector3<float>>();
        auto const* const t = triangles->as<Triangle>();
        surface.normals.assign(n, n + normals->size);
        surface.normalTriangles.assign(t, t + triangles->size);
    }
}

/// Takes the normals of the file. Those at one vertex that differ by no more than rounding are one: the edges between
/// their triangles are smooth.
void takeNormals(Surface& surface, MeshData const& data) {
    constexpr float alike = 0.9999F;  // cosine, less than one degree
    surface.normals.resize(surface.positions.size());
    std::vector<unsigned int> next(surface.positions.size(), NONE);  // the further normals of a vertex
    std::vector<bool> isTaken(surface.positions.size(), false);
    auto const indexOf = [&](unsigned int vertex, Vector3<float> const& normal) {
        if (!isTaken[vertex]) {
            isTaken[vertex] = true;
            surface.normals[vertex] = normal;
            return vertex;
        }
        unsigned int last = vertex;
        for (unsigned int i = vertex; i != NONE; i = next[i]) {
            if (dot(surface.normals[i], normal) > alike) {
                return i;
            }
            last = i;
        }
        unsigned int const added = static_cast<unsigned int>(surface.normals.size());
        surface.normals.push_back(normal);
        next.push_back(NONE);
        next[last] = added;
        return added;
    };
    for (std::size_t t = 0; t < surface.triangles.size(); ++t) {
        Triangle const& corners = surface.triangles[t];
        Triangle const& source = surface.sources[t];
        surface.normalTriangles.push_back({indexOf(corners.e0, data.normals[source.e0]),
                                           indexOf(corners.e1, data.normals[source.e1]),
                                           indexOf(corners.e2, data.normals[source.e2])});
    }
}

/// Numbers what a part uses from 0 on, in the order of its first use.
class Numbering {
public:
    explicit Numbering(std::size_t count) : numbers(count, NONE) {}

    unsigned int operator()(unsigned int old) {
        if (numbers[old] == NONE) {
            numbers[old] = static_cast<unsigned int>(order.size());
            order.push_back(old);
        }
        return numbers[old];
    }
    Triangle operator()(Triangle const& t) {
        unsigned int const a = (*this)(t.e0);
        unsigned int const b = (*this)(t.e1);
        return {a, b, (*this)(t.e2)};
    }
    std::vector<unsigned int> const& used() const { return order; }

    /// Forgets all numbers, in the time that giving them took.
    void clear() {
        for (unsigned int old : order) {
            numbers[old] = NONE;
        }
        order.clear();
    }

private:
    std::vector<unsigned int> numbers;
    std::vector<unsigned int> order;
};

/// The texture coordinates of a triangle onto which the texture is projected along an axis. The texture covers the
/// longest side of the box.
std::array<Vector2<float>, 3> projected(Surface const& surface, Triangle const& t, Box3<double> const& box) {
    Vector3<double> const points[3] = {surface.positions[t.e0], surface.positions[t.e1],
                                       surface.positions[t.e2]};
    Vector3<double> const normal = cross(points[1] - points[0], points[2] - points[0]);
    double const sizes[3] = {std::abs(normal.x), std::abs(normal.y), std::abs(normal.z)};
    Vector3<double> const extent = box.max - box.min;
    double const longest = std::max({extent.x, extent.y, extent.z});
    double const scale = longest > 0 ? 1 / longest : 0;
    std::array<Vector2<float>, 3> coordinates{};
    for (std::size_t k = 0; k < 3; ++k) {
        Vector3<double> const p = (points[k] - box.min) * scale;
        double u = normal.z < 0 ? -p.x : p.x;
        double v = p.y;
        if (sizes[0] > sizes[2] && sizes[0] >= sizes[1]) {
            u = normal.x > 0 ? -p.z : p.z;
        } else if (sizes[1] > sizes[2]) {
            u = p.x;
            v = normal.y > 0 ? -p.z : p.z;
        }
        coordinates[k] = {static_cast<float>(u), static_cast<float>(v)};
    }
    return coordinates;
}

Box3<double> boxOf(std::vector<Vector3<double>> const& positions) {
    MeshData points;
    points.positions = positions;
    return points.box();
}

bool isSame(Color4<float> const& a, Color4<float> const& b) {
    return a.r == b.r && a.g == b.g && a.b == b.b;
}

/// Makes one part after the other from a surface; what is as large as the whole is made once.
class PartMaker {
public:
    PartMaker(MeshData const& data, Surface const& surface, std::shared_ptr<VL_Image const> const& texture)
        : data(data)
        , surface(surface)
        , texture(texture)
        , box(boxOf(surface.positions))
        , vertices(surface.positions.size())
        , normalList(surface.normals.size())
        , coordinateList(data.positions.size()) {}

    ModelPart make(std::vector<unsigned int> const& members) {
        unsigned int const material = surface.materials[members.front()];
        ModelPart part;
        part.mesh = std::make_unique<Mesh>();
        part.color = data.colors[surface.sources[members.front()].e0];
        part.texture = texture;
        if (texture == nullptr && material < data.materials.size()) {
            part.texture = data.materials[material].image;
        }
        if (part.texture != nullptr) {
            part.color = texture != nullptr ? Color4<float>{1, 1, 1, 1} : data.materials[material].tint;
        }
        _fillShape(part, members);
        if (part.texture != nullptr) {
            _fillCoordinates(*part.mesh, members);
        } else {
            _fillColors(part, members);
        }
        part.mesh->workFaceNormals();
        part.mesh->workAdjacency();
        part.mesh->workBox();
        return part;
    }

private:
    void _fillShape(ModelPart& part, std::vector<unsigned int> const& members) {
        vertices.clear();
        normalList.clear();
        std::vector<Triangle> triangles;
        std::vector<Triangle> normalTriangles;
        triangles.reserve(members.size());
        for (unsigned int t : members) {
            triangles.push_back(vertices(surface.triangles[t]));
        }
        std::vector<Vector3<double>> positions;
        positions.reserve(vertices.used().size());
        for (unsigned int old : vertices.used()) {
            positions.push_back(surface.positions[old]);
            // The normal of this number is the vertex's own and comes first, if the part uses it or not.
            if (!surface.normals.empty()) {
                normalList(old);
            }
        }
        std::vector<Vector3<float>> normals;
        if (!surface.normals.empty()) {
            for (unsigned int t : members) {
                normalTriangles.push_back(normalList(surface.normalTriangles[t]));
            }
            for (unsigned int old : normalList.used()) {
                normals.push_back(surface.normals[old]);
            }
        }
        part.hasHardNormals = normals.size() > positions.size();
        part.mesh->setPositions(toArray(positions));
        part.mesh->setTriangles(toArray(triangles));
        part.mesh->setVertexNormals(toArray(normals));
        part.mesh->setNormalTriangles(toArray(normalTriangles));
    }

    void _fillCoordinates(Mesh& mesh, std::vector<unsigned int> const& members) {
        std::vector<Triangle> triangles;
        std::vector<Vector2<float>> coordinates;
        if (data.textureCoordinates.empty()) {
            for (unsigned int t : members) {
                unsigned int const base = static_cast<unsigned int>(coordinates.size());
                triangles.push_back({base, base + 1, base + 2});
                std::array<Vector2<float>, 3> const three = projected(surface, surface.triangles[t], box);
                coordinates.insert(coordinates.end(), three.begin(), three.end());
            }
        } else {
            coordinateList.clear();
            for (unsigned int t : members) {
                triangles.push_back(coordinateList(surface.sources[t]));
            }
            for (unsigned int old : coordinateList.used()) {
                coordinates.push_back(data.textureCoordinates[old]);
            }
        }
        mesh.addNamedArray(MeshArrayInf_ns::TRINDEXED, ModelPart::CHANNEL, toArray(triangles));
        mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, ModelPart::CHANNEL, toArray(coordinates));
    }

    /// Only where the colors of the part's vertices are not all the same.
    void _fillColors(ModelPart& part, std::vector<unsigned int> const& members) {
        coordinateList.clear();
        std::vector<Triangle> triangles;
        bool isUniform = true;
        for (unsigned int t : members) {
            Triangle const& source = surface.sources[t];
            triangles.push_back(coordinateList(source));
            for (unsigned int vertex : {source.e0, source.e1, source.e2}) {
                isUniform = isUniform && isSame(data.colors[vertex], part.color);
            }
        }
        if (isUniform) {
            return;
        }
        std::vector<unsigned int> const& used = coordinateList.used();
        std::vector<Vector3<double>> positions(used.size());
        std::vector<Vector3<float>> normals(used.size());
        std::vector<Color4<float>> colors(used.size());
        for (std::size_t i = 0; i < used.size(); ++i) {
            colors[i] = data.colors[used[i]];
            normals[i] = data.normals[used[i]];
        }
        for (std::size_t i = 0; i < members.size(); ++i) {
            Triangle const& corners = surface.triangles[members[i]];
            positions[triangles[i].e0] = surface.positions[corners.e0];
            positions[triangles[i].e1] = surface.positions[corners.e1];
            positions[triangles[i].e2] = surface.positions[corners.e2];
        }
        part.vertices = toArray(positions);
        part.triangles = toArray(triangles);
        part.normals = toArray(normals);
        part.colors = toArray(colors);
    }

    MeshData const& data;
    Surface const& surface;
    std::shared_ptr<VL_Image const> const& texture;
    Box3<double> const box;
    Numbering vertices;
    Numbering normalList;
    Numbering coordinateList;  // of the file's vertices
};

}  // namespace

std::vector<ModelPart> makeParts(MeshData const& data,
                                 std::function<Vector3<double>(Vector3<double> const&)> const& place,
                                 std::shared_ptr<VL_Image const> const& texture) {
    Surface surface = weldedSurface(data, place);
    if (data.computedNormalCount == data.normals.size()) {
        computeNormals(surface);
    } else {
        takeNormals(surface, data);
    }
    std::vector<std::vector<unsigned int>> members(std::max<std::size_t>(1, data.materials.size()));
    for (std::size_t t = 0; t < surface.triangles.size(); ++t) {
        members[surface.materials[t]].push_back(static_cast<unsigned int>(t));
    }
    PartMaker maker(data, surface, texture);
    std::vector<ModelPart> parts;
    for (std::vector<unsigned int> const& group : members) {
        if (!group.empty()) {
            parts.push_back(maker.make(group));
        }
    }
    return parts;
}

}  // namespace vellum::viewport
