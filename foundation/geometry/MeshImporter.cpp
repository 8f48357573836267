#include "foundation/geometry/MeshImporter.h"

#include "foundation/basic/ArrayServer.h"
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

struct PositionHash {
    std::size_t operator()(Vector3<double> const& p) const {
        std::uint64_t hash = 0;
        for (double const element : {p.x, p.y, p.z}) {
            // Adding 0 turns -0 into +0: the two are equal and so must have the same hash.
            double const unsignedZero = element + 0.0;
            std::uint64_t bits = 0;
            std::memcpy(&bits, &unsignedZero, sizeof bits);
            hash = (hash ^ bits) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 32;
        }
        return static_cast<std::size_t>(hash);
    }
};

struct IsSamePosition {
    bool operator()(Vector3<double> const& a, Vector3<double> const& b) const {
        return a.x == b.x && a.y == b.y && a.z == b.z;
    }
};

/// Keeps the first of the positions that are equal, in place. \return by former vertex, its new index.
std::vector<unsigned int> keepDistinct(Array<Vector3<double>>& positions) {
    std::unordered_map<Vector3<double>, unsigned int, PositionHash, IsSamePosition> known;
    known.reserve(positions.size());
    std::vector<unsigned int> indices(positions.size());
    unsigned int kept = 0;
    for (unsigned int i = 0; i < positions.size(); ++i) {
        auto const [entry, isNew] = known.emplace(positions[i], kept);
        indices[i] = entry->second;
        if (isNew) {
            positions[kept++] = positions[i];
        }
    }
    positions.setSize(kept);
    return indices;
}

bool isDegenerate(Tuple3<unsigned int> const& t) {
    return t.e0 == t.e1 || t.e1 == t.e2 || t.e2 == t.e0;
}

/// The different normals that were met at each vertex so far.
class NormalsAtVertices {
public:
    NormalsAtVertices(unsigned int const& vertexCount, double leastCosine)
        : first(vertexCount, NONE), leastCosine(leastCosine) {}

    Vector3<double> const& findOrAdd(unsigned int const& vertex, Vector3<double> const& normal) {
        unsigned int* link = &first[vertex];
        while (*link != NONE) {
            Entry& entry = entries[*link];
            if (dot(entry.normal, normal) > leastCosine) {
                return entry.normal;
            }
            link = &entry.next;
        }
        *link = static_cast<unsigned int>(entries.size());
        entries.push_back({normal, NONE});
        return entries.back().normal;
    }

private:
    static constexpr unsigned int NONE = 0xFFFFFFFFU;

    struct Entry {
        Vector3<double> normal;
        unsigned int next;  // entry of the same vertex, or NONE
    };

    std::vector<unsigned int> first;  // by vertex
    std::vector<Entry> entries;
    double leastCosine;
};

template <class T>
T const* elementsOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->as<T>() : nullptr;
}

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

// == Preparing ==

Array<unsigned int> MeshImporter::weld() {
    Array<unsigned int> sources;
    if (_fault() != MeshFault_ns::NONE) {
        return sources;
    }
    std::vector<unsigned int> const indices = keepDistinct(positions);
    bool const hasNormals = cornerNormals.size() != 0;
    sources.reserve(triangles.size(), false);
    unsigned int kept = 0;
    for (unsigned int t = 0; t < triangles.size(); ++t) {
        Tuple3<unsigned int> const& old = triangles[t];
        Tuple3<unsigned int> const welded{indices[old.e0], indices[old.e1], indices[old.e2]};
        if (isDegenerate(welded)) {
            continue;
        }
        triangles[kept] = welded;
        if (hasNormals) {
            cornerNormals[kept] = cornerNormals[t];
        }
        sources.pushBack(t);
        ++kept;
    }
    triangles.setSize(kept);
    cornerNormals.setSize(hasNormals ? kept : 0);
    return sources;
}

void MeshImporter::shareNormals(double leastCosine) {
    if (_fault() != MeshFault_ns::NONE || cornerNormals.size() == 0) {
        return;
    }
    NormalsAtVertices known(positions.size(), leastCosine);
    for (unsigned int t = 0; t < triangles.size(); ++t) {
        Tuple4<Vector3<double>>& n = cornerNormals[t];
        n.e0 = known.findOrAdd(triangles[t].e0, n.e0);
        n.e1 = known.findOrAdd(triangles[t].e1, n.e1);
        n.e2 = known.findOrAdd(triangles[t].e2, n.e2);
    }
}

bool MeshImporter::workCornerNormals(float creaseAngle) {
    Mesh mesh;
    if (_fault() != MeshFault_ns::NONE || !mesh.setPositions(positions) || !mesh.setTriangles(triangles) ||
        !mesh.workNormals(creaseAngle)) {
        return false;
    }
    auto const* const normals = elementsOf<Vector3<float>>(mesh.vertexNormals());
    auto const* const corners = elementsOf<Tuple3<unsigned int>>(mesh.normalTriangles());
    cornerNormals.reserve(triangles.size(), false);
    cornerNormals.setSize(triangles.size());
    for (unsigned int t = 0; t < triangles.size(); ++t) {
        cornerNormals[t] = {convert<double>(normals[corners[t].e0]), convert<double>(normals[corners[t].e1]),
                            convert<double>(normals[corners[t].e2]), Vector3<double>{0, 0, 0}};
    }
    return true;
}

// == To a mesh ==

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
