#include "foundation/geometry/MeshImporter.h"

#include "foundation/geometry/Mesh.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <vector>

namespace vellum {

namespace {

/// A normal at a vertex. Normals are the same when their bits are: what is not a number then equals itself.
struct VertexNormal {
    unsigned int words[4];  // vertex, x, y, z

    VertexNormal(unsigned int const& vertex, Vector3<float> const& normal) : words{vertex, 0, 0, 0} {
        std::memcpy(words + 1, &normal, sizeof normal);
    }

    bool operator==(VertexNormal const& other) const { return std::equal(words, words + 4, other.words); }
};

struct VertexNormalHash {
    std::size_t operator()(VertexNormal const& normal) const {
        std::uint64_t hash = 0;
        for (unsigned int const word : normal.words) {
            hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 32;
        }
        return static_cast<std::size_t>(hash);
    }
};

/// The vertex normals that corners share. The first normal that is seen at a vertex has the vertex's index,
/// so that a surface without hard edges has one normal for each vertex; the others follow behind.
class SharedNormals {
public:
    explicit SharedNormals(unsigned int const& vertexCount)
        : normals(vertexCount, Vector3<float>{0, 0, 0}), isTaken(vertexCount, false) {}

    unsigned int indexOf(unsigned int const& vertex, Vector3<float> const& normal) {
        if (!isTaken[vertex]) {
            isTaken[vertex] = true;
            normals[vertex] = normal;
            return vertex;
        }
        VertexNormal const key(vertex, normal);
        if (key == VertexNormal(vertex, normals[vertex])) {
            return vertex;
        }
        auto const [place, isNew] = further.emplace(key, static_cast<unsigned int>(normals.size()));
        if (isNew) {
            normals.push_back(normal);
        }
        return place->second;
    }

    std::vector<Vector3<float>> const& all() const { return normals; }

private:
    std::vector<Vector3<float>> normals;
    std::vector<bool> isTaken;  // by vertex
    std::unordered_map<VertexNormal, unsigned int, VertexNormalHash> further;
};

bool isFinite(Vector3<double> const& p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

}  // namespace

MeshFault_ns::type MeshImporter::_fault() const {
    if (triangles.size() == 0) {
        return MeshFault_ns::NO_TRIANGLES;
    }
    if (triangles.size() > Mesh::MOST_TRIANGLES) {
        return MeshFault_ns::TOO_LARGE;
    }
    if (cornerNormals.size() != 0 && cornerNormals.size() != triangles.size()) {
        return MeshFault_ns::CORNER_NORMAL_COUNT;
    }
    unsigned int const count = positions.size();
    for (Tuple3<unsigned int> const& t : triangles) {
        if (t.e0 >= count || t.e1 >= count || t.e2 >= count) {
            return MeshFault_ns::INDEX_OUT_OF_RANGE;
        }
    }
    return std::all_of(positions.begin(), positions.end(), isFinite) ? MeshFault_ns::NONE
                                                                     : MeshFault_ns::POSITION_NOT_FINITE;
}

MeshFault_ns::type MeshImporter::toMesh(Mesh& mesh) const {
    MeshFault_ns::type const fault = _fault();
    if (fault != MeshFault_ns::NONE) {
        return fault;
    }

    bool const hasNormals = cornerNormals.size() != 0;
    Array<Vector3<float>> normals;
    Array<Tuple3<unsigned int>> normalTriangles;
    if (hasNormals) {
        SharedNormals shared(positions.size());
        normalTriangles.reserve(triangles.size(), false);
        for (unsigned int t = 0; t < triangles.size(); ++t) {
            Tuple3<unsigned int> const& corners = triangles[t];
            Tuple4<Vector3<double>> const& n = cornerNormals[t];
            normalTriangles.pushBack({shared.indexOf(corners.e0, convert<float>(n.e0)),
                                      shared.indexOf(corners.e1, convert<float>(n.e1)),
                                      shared.indexOf(corners.e2, convert<float>(n.e2))});
        }
        normals.reserve(static_cast<unsigned int>(shared.all().size()), false);
        normals.setSize(normals.capacity());
        std::copy(shared.all().begin(), shared.all().end(), normals.begin());
    }

    bool const isFilled = mesh.setPositions(positions) && mesh.setTriangles(triangles) &&
                          (hasNormals ? mesh.setVertexNormals(normals) &&
                                            mesh.setNormalTriangles(normalTriangles) && mesh.workFaceNormals()
                                      : mesh.workNormals()) &&
                          mesh.workAdjacency();
    mesh.workBox();
    return isFilled ? MeshFault_ns::NONE : MeshFault_ns::TOO_LARGE;
}

}  // namespace vellum
