#include "foundation/geometry/MeshImporter.h"

#include "foundation/basic/ArrayServer.h"
#include "foundation/basic/threads.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/SharedNormals.h"
#include "foundation/geometry/equal_positions.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <vector>

namespace vellum {

namespace {

constexpr std::size_t RANGE = 1 << 14;

/// Keeps the first of the positions that are equal, in place. \return by former vertex, its new index.
std::unique_ptr<unsigned int[]> keepDistinct(Array<Vector3<double>>& positions) {
    unsigned int const count = positions.size();
    std::unique_ptr<unsigned int[]> indices = firstEqualPositions(positions.data(), count);
    unsigned int kept = 0;
    for (unsigned int i = 0; i < count; ++i) {
        // The first one of those that are equal has its new index already.
        bool const isFirst = indices[i] == i;
        if (isFirst) {
            positions[kept] = positions[i];
        }
        indices[i] = isFirst ? kept++ : indices[indices[i]];
    }
    positions.setSize(kept);
    return indices;
}

/// Whether a statement holds for all of `count` things.
template <class Holds>
bool holdsForAll(std::size_t count, Holds const& holds) {
    std::atomic<bool> result{true};
    forRanges(count, RANGE, [&](std::size_t begin, std::size_t end) {
        bool isSo = true;
        for (std::size_t i = begin; i < end; ++i) {
            isSo = isSo && holds(static_cast<unsigned int>(i));
        }
        if (!isSo) {
            result.store(false, std::memory_order_relaxed);
        }
    });
    return result;
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
    bool const areInRange = holdsForAll(triangles.size(), [this, count](unsigned int t) {
        Tuple3<unsigned int> const& corners = triangles[t];
        return corners.e0 < count && corners.e1 < count && corners.e2 < count;
    });
    if (!areInRange) {
        return MeshFault_ns::INDEX_OUT_OF_RANGE;
    }
    bool const areFinite = holdsForAll(count, [this](unsigned int i) { return isFinite(positions[i]); });
    return areFinite ? MeshFault_ns::NONE : MeshFault_ns::POSITION_NOT_FINITE;
}

// == Preparing ==

Array<unsigned int> MeshImporter::weld() {
    Array<unsigned int> sources;
    if (_fault() != MeshFault_ns::NONE) {
        return sources;
    }
    std::unique_ptr<unsigned int[]> const indices = keepDistinct(positions);
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
