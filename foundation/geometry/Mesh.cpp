#include "foundation/geometry/Mesh.h"

#include "foundation/basic/lifetimes.h"
#include "foundation/geometry/constants.h"
#include "foundation/geometry/index_02.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace vellum {

namespace {

using index_02::ui32::NEXT_CIRCULAR;
using index_02::ui32::PREV_CIRCULAR;

constexpr unsigned int NO_END = 0xFFFFFFFFU;  // above every count: an index that is never in range

unsigned int sizeOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->size : 0;
}

/// The elements of an array as they were stored; null where there is none, or elements of another size.
template <class T>
T* elementsOf(ArrayId const& id) {
    ArrayTypeable* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->as<T>() : nullptr;
}

/// Triples of indices one after the other: index 3 t + k is that of corner k of triangle t.
unsigned int const* indicesOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr && array->elementSize == sizeof(Tuple3<unsigned int>)
               ? static_cast<unsigned int const*>(array->data)
               : nullptr;
}

/// A new array of the server that takes the place of another one, unless it is given up.
class NewArray {
public:
    NewArray(std::size_t const& elementSize, unsigned int const& count)
        : id(VL_ArrayServer.create(static_cast<unsigned int>(elementSize), count)) {}
    ~NewArray() { VL_ArrayServer.release(id); }
    NewArray(NewArray const&) = delete;
    NewArray& operator=(NewArray const&) = delete;

    bool isMade() const { return id != ARRAY_ID_NONE; }

    template <class T>
    T* elements() {
        return elementsOf<T>(id);
    }
    unsigned int* indices() { return static_cast<unsigned int*>(VL_ArrayServer.resolve(id)->data); }

    void replace(ArrayId& other) { std::swap(id, other); }

private:
    ArrayId id;
};

/// One above the largest of some indices.
unsigned int endOfIndices(unsigned int const* indices, std::size_t const& count) {
    unsigned int largest = 0;
    for (std::size_t i = 0; i < count; ++i) {
        largest = std::max(largest, indices[i]);
    }
    // The index 0xFFFFFFFF has no successor; NO_END is out of every range too.
    return count == 0 ? 0 : largest == NO_END ? NO_END : largest + 1;
}

/// One above the largest triangle that adjacency entries name; NO_END when one names a corner 3.
unsigned int endOfAdjacency(unsigned int const* entries, std::size_t const& count) {
    unsigned int end = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (entries[i] == Mesh::ADJACENCY_NONE) {
            continue;
        }
        if ((entries[i] & 3U) == 3U) {
            return NO_END;
        }
        end = std::max(end, (entries[i] >> 2) + 1);
    }
    return end;
}

// == Adjacency ==

/// The table of the edges that were met so far, by their two vertices. Linear probing in a table that is at
/// most three quarters full.
class EdgeTable {
public:
    /// How often an edge was met; UNUSED marks a free slot.
    enum Use : unsigned int { UNUSED = 0, ONCE = 1, TWICE = 2, TOO_OFTEN = 3 };

    struct Slot {
        std::uint64_t key = 0;
        unsigned int first = 0;  // the edge (3 t + k) that came first
        unsigned int use = UNUSED;
    };

    explicit EdgeTable(std::size_t const& edges) {
        std::size_t size = 16;
        while (size < edges + edges / 3) {
            size *= 2;
            --shift;
        }
        slots.resize(size);
    }

    static std::uint64_t keyOf(unsigned int const& a, unsigned int const& b) {
        return a < b ? std::uint64_t{a} << 32 | b : std::uint64_t{b} << 32 | a;
    }

    /// Where the search for a key begins: the upper bits of the well mixed key.
    std::size_t startOf(std::uint64_t const& key) const {
        std::uint64_t mixed = key * 0x9E3779B97F4A7C15U;
        mixed = (mixed ^ mixed >> 32) * 0xBF58476D1CE4E5B9U;
        return static_cast<std::size_t>(mixed >> shift);
    }

    /// Asks for the memory at which a search will begin.
    void prefetch([[maybe_unused]] std::size_t const& start) const {
#if defined(__GNUC__)
        __builtin_prefetch(&slots[start], 1);
#endif
    }

    /// The slot of an edge: the one that it has, or a free one that becomes its own.
    Slot& find(std::uint64_t const& key, std::size_t const& start) {
        std::size_t index = start;
        while (slots[index].use != UNUSED && slots[index].key != key) {
            index = index + 1 == slots.size() ? 0 : index + 1;
        }
        slots[index].key = key;
        return slots[index];
    }

private:
    int shift = 60;           // 64 less the bits of an index
    std::vector<Slot> slots;  // a power of two
};

bool namesAVertexTwice(unsigned int const* corners) {
    return corners[0] == corners[1] || corners[1] == corners[2] || corners[2] == corners[0];
}

/// The entry for the edge that starts at `vertex`: the neighbor's corner there. The neighbor may run along
/// the common edge either way.
unsigned int entryFor(unsigned int const* triangles, unsigned int const& neighborEdge,
                      unsigned int const& vertex) {
    unsigned int const triangle = neighborEdge / 3;
    unsigned int const k = neighborEdge % 3;
    return triangle * 4 + (triangles[neighborEdge] == vertex ? k : NEXT_CIRCULAR[k]);
}

/// Takes an edge into the table and connects the two triangles that meet there, as long as they are two.
void takeEdge(unsigned int const* triangles, EdgeTable::Slot& slot, unsigned int const& edge,
              unsigned int* entries) {
    switch (slot.use) {
    case EdgeTable::UNUSED:
        slot.first = edge;
        slot.use = EdgeTable::ONCE;
        break;
    case EdgeTable::ONCE:
        entries[edge] = entryFor(triangles, slot.first, triangles[edge]);
        entries[slot.first] = entryFor(triangles, edge, triangles[slot.first]);
        slot.use = EdgeTable::TWICE;
        break;
    case EdgeTable::TWICE: {
        // A third triangle: which two belong together is not to be told, so none do.
        unsigned int const first = slot.first;
        unsigned int const second = entries[first] >> 2;
        for (unsigned int k = 0; k < 3; ++k) {
            unsigned int const other = second * 3 + k;
            if (EdgeTable::keyOf(triangles[other], triangles[second * 3 + NEXT_CIRCULAR[k]]) == slot.key) {
                entries[other] = Mesh::ADJACENCY_NONE;
            }
        }
        entries[first] = Mesh::ADJACENCY_NONE;
        slot.use = EdgeTable::TOO_OFTEN;
        break;
    }
    default:
        break;
    }
}

/// Fills the adjacency of all triangles. The table is larger than the caches, so the edges of some triangles
/// are taken together: their slots are on the way from memory while the others are looked at.
void deriveAdjacency(unsigned int const* triangles, unsigned int const& count, unsigned int* entries) {
    constexpr unsigned int TOGETHER = 16;  // triangles
    std::fill(entries, entries + std::size_t{count} * 3, Mesh::ADJACENCY_NONE);
    EdgeTable table(std::size_t{count} * 3);
    std::uint64_t keys[TOGETHER * 3];
    std::size_t starts[TOGETHER * 3];
    unsigned int edges[TOGETHER * 3];
    for (unsigned int begin = 0; begin < count; begin += TOGETHER) {
        unsigned int const end = std::min(begin + TOGETHER, count);
        unsigned int waiting = 0;
        for (unsigned int t = begin; t < end; ++t) {
            unsigned int const* const corners = triangles + std::size_t{t} * 3;
            if (namesAVertexTwice(corners)) {
                continue;
            }
            for (unsigned int k = 0; k < 3; ++k) {
                keys[waiting] = EdgeTable::keyOf(corners[k], corners[NEXT_CIRCULAR[k]]);
                starts[waiting] = table.startOf(keys[waiting]);
                edges[waiting] = t * 3 + k;
                table.prefetch(starts[waiting]);
                ++waiting;
            }
        }
        for (unsigned int i = 0; i < waiting; ++i) {
            takeEdge(triangles, table.find(keys[i], starts[i]), edges[i], entries);
        }
    }
}

// == Normals ==

/// The unit normal of a triangle and the angles at its corners; all zero for a triangle without area.
struct Face {
    Vector3<double> normal{0, 0, 0};
    double angles[3] = {0, 0, 0};
};

double largestComponent(Vector3<double> const& v) {
    return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
}

/// Gives the normal of a triangle as it is long (twice the area); the sides come out scaled so that neither
/// very large nor very small coordinates leave the range of a double.
Vector3<double> scaledNormal(Vector3<double> const* positions, unsigned int const* corners,
                             Vector3<double>& toSecond, Vector3<double>& toThird) {
    Vector3<double> const& here = positions[corners[0]];
    toSecond = positions[corners[1]] - here;
    toThird = positions[corners[2]] - here;
    double const scale = 1 / std::max(largestComponent(toSecond), largestComponent(toThird));
    toSecond = toSecond * scale;
    toThird = toThird * scale;
    return cross(toSecond, toThird);
}

Vector3<double> unitNormal(Vector3<double> const* positions, unsigned int const* corners) {
    Vector3<double> toSecond{};
    Vector3<double> toThird{};
    Vector3<double> const normal = scaledNormal(positions, corners, toSecond, toThird);
    double const size = length(normal);
    return size > 0 ? normal * (1 / size) : Vector3<double>{0, 0, 0};
}

Face faceOf(Vector3<double> const* positions, unsigned int const* corners) {
    Face face;
    Vector3<double> a{};
    Vector3<double> b{};
    Vector3<double> const normal = scaledNormal(positions, corners, a, b);
    double const size = length(normal);
    if (size > 0) {
        face.normal = normal * (1 / size);
        // The arc tangent stays exact for needle-like triangles, for which the arc cosine loses its digits.
        // The sine of each angle times its two sides is the same: twice the area.
        face.angles[0] = std::atan2(size, dot(a, b));
        face.angles[1] = std::atan2(size, dot(a, a - b));
        face.angles[2] = std::max(0.0, constants::d::PI - face.angles[0] - face.angles[1]);
    }
    return face;
}

Color4<float> asRecord(Vector3<double> const& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z), 0.0F};
}

Vector3<double> asVector(Color4<float> const& record) {
    return {static_cast<double>(record.r), static_cast<double>(record.g), static_cast<double>(record.b)};
}

Vector3<float> asUnit(Vector3<double> const& sum) {
    double const size = length(sum);
    return size > 0 ? convert<float>(sum * (1 / size)) : Vector3<float>{0, 0, 0};
}

/// Sets of corners (3 t + k) that share a normal.
class CornerSets {
public:
    explicit CornerSets(std::size_t const& corners) : parents(corners) {
        for (std::size_t i = 0; i < corners; ++i) {
            parents[i] = static_cast<unsigned int>(i);
        }
    }

    unsigned int find(unsigned int corner) {
        while (parents[corner] != corner) {
            parents[corner] = parents[parents[corner]];
            corner = parents[corner];
        }
        return corner;
    }

    void unite(unsigned int const& a, unsigned int const& b) {
        unsigned int const rootA = find(a);
        unsigned int const rootB = find(b);
        parents[std::max(rootA, rootB)] = std::min(rootA, rootB);
    }

private:
    std::vector<unsigned int> parents;  // a root is its own parent, and the first corner of its set
};

/// The triangles of a mesh as the passes over them see them.
struct Surface {
    Vector3<double> const* positions;
    unsigned int const* triangles;  // three indices each
    unsigned int count;

    unsigned int const* corners(unsigned int const& t) const { return triangles + std::size_t{t} * 3; }
};

/// Unites the corners at both ends of every edge that is not hard.
void uniteAcrossSmoothEdges(Surface const& surface, unsigned int const* adjacency,
                            Color4<float> const* faceNormals, double const& leastCosine, CornerSets& sets) {
    unsigned int const* const triangles = surface.triangles;
    for (unsigned int t = 0; t < surface.count; ++t) {
        for (unsigned int k = 0; k < 3; ++k) {
            unsigned int const edge = t * 3 + k;
            unsigned int const entry = adjacency[edge];
            unsigned int const neighbor = entry >> 2;
            // Each edge once; an entry of none lies above every triangle.
            if (neighbor >= surface.count || neighbor <= t) {
                continue;
            }
            // The neighbor runs the other way along the edge, unless the sides of the surface are swapped
            // there, or the adjacency is not that of these triangles.
            unsigned int const own = neighbor * 3 + (entry & 3U);
            unsigned int const next = neighbor * 3 + PREV_CIRCULAR[entry & 3U];
            unsigned int const ownNext = t * 3 + NEXT_CIRCULAR[k];
            if (triangles[own] == triangles[edge] && triangles[next] == triangles[ownNext] &&
                dot(asVector(faceNormals[t]), asVector(faceNormals[neighbor])) >= leastCosine) {
                sets.unite(edge, own);
                sets.unite(ownNext, next);
            }
        }
    }
}

/// Vertex normals while they are sums of face normals, each weighted by the angle at the corner.
struct NormalSums {
    Color4<float>* faceNormals;
    unsigned int* normalTriangles;  // three indices each
    // By normal; normal i belongs to vertex i as far as there are vertices.
    std::vector<Vector3<double>> sums;

    void add(unsigned int const& t, unsigned int const& k, unsigned int const& normal, Face const& face) {
        normalTriangles[std::size_t{t} * 3 + k] = normal;
        sums[normal] = sums[normal] + face.normal * face.angles[k];
    }
};

/// One normal for each vertex.
void sumAroundVertices(Surface const& surface, NormalSums& normals) {
    for (unsigned int t = 0; t < surface.count; ++t) {
        Face const face = faceOf(surface.positions, surface.corners(t));
        normals.faceNormals[t] = asRecord(face.normal);
        for (unsigned int k = 0; k < 3; ++k) {
            normals.add(t, k, surface.corners(t)[k], face);
        }
    }
}

void fillFaceNormals(Surface const& surface, Color4<float>* faceNormals) {
    for (unsigned int t = 0; t < surface.count; ++t) {
        faceNormals[t] = asRecord(unitNormal(surface.positions, surface.corners(t)));
    }
}

/// One normal for each set of corners. The first set at a vertex has the vertex's index, later ones follow
/// behind.
void sumAroundSets(Surface const& surface, CornerSets& sets, NormalSums& normals) {
    constexpr unsigned int NONE = 0xFFFFFFFFU;
    std::vector<unsigned int> normalOfSet(std::size_t{surface.count} * 3, NONE);
    std::vector<bool> isTaken(normals.sums.size(), false);
    for (unsigned int t = 0; t < surface.count; ++t) {
        Face const face = faceOf(surface.positions, surface.corners(t));
        bool const hasArea = face.angles[0] > 0;
        for (unsigned int k = 0; k < 3; ++k) {
            unsigned int const vertex = surface.corners(t)[k];
            unsigned int& normal = normalOfSet[sets.find(t * 3 + k)];
            if (normal == NONE && hasArea && isTaken[vertex]) {
                normal = static_cast<unsigned int>(normals.sums.size());
                normals.sums.push_back({0, 0, 0});
            } else if (normal == NONE) {
                // A face without area must not take the vertex's own index: nothing of it is seen, and a
                // visible set would lose the index to it.
                normal = vertex;
                isTaken[vertex] = isTaken[vertex] || hasArea;
            }
            normals.add(t, k, normal, face);
        }
    }
}

}  // namespace

Mesh::Mesh() {
    lifetimes::begin(this);
}

Mesh::~Mesh() {
    lifetimes::end(this);
    for (ArrayId* const id :
         {&positionsId, &vertexNormalsId, &faceNormalsId, &trianglesId, &normalTrianglesId, &adjacencyId}) {
        VL_ArrayServer.release(*id);
    }
    for (NamedArray& array : namedArrays) {
        VL_ArrayServer.release(array.id);
    }
}

// == Filling ==

template <class T>
bool Mesh::_replace(ArrayId& id, Array<T> const& values) {
    ArrayId fresh = VL_ArrayServer.create(values);
    if (fresh == ARRAY_ID_NONE) {
        return false;
    }
    std::swap(id, fresh);
    VL_ArrayServer.release(fresh);
    return true;
}

bool Mesh::setPositions(Array<Vector3<double>> const& values) {
    if (!_replace(positionsId, values)) {
        return false;
    }
    flagBits &= ~static_cast<unsigned int>(MESH_GOT_BOX);
    return true;
}

bool Mesh::setTriangles(Array<Tuple3<unsigned int>> const& values) {
    if (values.size() > MOST_TRIANGLES || !_replace(trianglesId, values)) {
        return false;
    }
    isAdjacencyCurrent = false;
    return true;
}

bool Mesh::setNormalTriangles(Array<Tuple3<unsigned int>> const& values) {
    return values.size() <= MOST_TRIANGLES && _replace(normalTrianglesId, values);
}

bool Mesh::setAdjacency(Array<Tuple3<unsigned int>> const& values) {
    if (values.size() > MOST_TRIANGLES || !_replace(adjacencyId, values)) {
        return false;
    }
    isAdjacencyCurrent = true;
    return true;
}

bool Mesh::setVertexNormals(Array<Vector3<float>> const& values) {
    return _replace(vertexNormalsId, values);
}

bool Mesh::setFaceNormals(Array<Color4<float>> const& values) {
    return values.size() <= MOST_TRIANGLES && _replace(faceNormalsId, values);
}

bool Mesh::_addNamed(unsigned int const& bits, char const* name, ArrayId id) {
    if (id == ARRAY_ID_NONE) {
        return false;
    }
    unsigned int const index = _indexOfNamed(bits, name);
    if (index < namedArrays.size()) {
        namedArrays[index].bits = bits;
        std::swap(namedArrays[index].id, id);
        VL_ArrayServer.release(id);
        return true;
    }
    NamedArray array;
    array.bits = bits;
    array.name = VL_String(name);
    array.id = id;
    namedArrays.pushBack(array);
    return true;
}

bool Mesh::markModified(ArrayId const& identifier) {
    ArrayTypeable* const array = VL_ArrayServer.resolve(identifier);
    if (array == nullptr) {
        return false;
    }
    array->flags |= ARRAY_TYPEABLE_MODIFIED_CONTROL_0;
    if (identifier == positionsId) {
        flagBits &= ~static_cast<unsigned int>(MESH_GOT_BOX);
    }
    if (identifier == trianglesId) {
        isAdjacencyCurrent = false;
    }
    return true;
}

// == Deriving ==

void Mesh::workBox() {
    Vector3<double> const* const positions = elementsOf<Vector3<double>>(positionsId);
    unsigned int const count = positions != nullptr ? sizeOf(positionsId) : 0;
    constexpr double FAR = HUGE_VAL;
    Box3<double> box{{FAR, FAR, FAR}, {-FAR, -FAR, -FAR}};
    for (unsigned int i = 0; i < count; ++i) {
        Vector3<double> const& p = positions[i];
        // A comparison with what is not a number fails, so the box keeps what it had.
        box.min = {p.x < box.min.x ? p.x : box.min.x, p.y < box.min.y ? p.y : box.min.y,
                   p.z < box.min.z ? p.z : box.min.z};
        box.max = {p.x > box.max.x ? p.x : box.max.x, p.y > box.max.y ? p.y : box.max.y,
                   p.z > box.max.z ? p.z : box.max.z};
    }
    bool const isFound = box.min.x <= box.max.x && box.min.y <= box.max.y && box.min.z <= box.max.z;
    cachedBox = isFound ? box : Box3<double>{{0, 0, 0}, {0, 0, 0}};
    flagBits |= MESH_GOT_BOX;
}

bool Mesh::workFaceNormals() {
    unsigned int const count = triangleCount();
    auto const* const positions = elementsOf<Vector3<double>>(positionsId);
    // The second condition follows from the first, which a static analyzer cannot see.
    if (_reachesBeyond(triangleReach, trianglesId, sizeOf(positionsId)) ||
        (positions == nullptr && count != 0)) {
        return false;
    }
    NewArray fresh(sizeof(Color4<float>), count);
    if (!fresh.isMade()) {
        return false;
    }
    fillFaceNormals({positions, indicesOf(trianglesId), count}, fresh.elements<Color4<float>>());
    fresh.replace(faceNormalsId);
    return true;
}

bool Mesh::workNormals(float const& creaseAngle) {
    unsigned int const count = triangleCount();
    unsigned int const vertexCount = sizeOf(positionsId);
    if (_reachesBeyond(triangleReach, trianglesId, vertexCount)) {
        return false;
    }
    NewArray freshFaceNormals(sizeof(Color4<float>), count);
    NewArray freshNormalTriangles(sizeof(Tuple3<unsigned int>), count);
    if (!freshFaceNormals.isMade() || !freshNormalTriangles.isMade()) {
        return false;
    }
    Surface const surface{elementsOf<Vector3<double>>(positionsId), indicesOf(trianglesId), count};
    NormalSums normals{freshFaceNormals.elements<Color4<float>>(), freshNormalTriangles.indices(),
                       std::vector<Vector3<double>>(vertexCount, Vector3<double>{0, 0, 0})};
    if (creaseAngle >= NO_CREASE) {
        sumAroundVertices(surface, normals);
    } else {
        // Edges are judged by the normals of their faces, which therefore come first.
        fillFaceNormals(surface, normals.faceNormals);
        bool const hasAdjacency =
            isAdjacencyCurrent && adjacencyFault() == MeshFault_ns::NONE && sizeOf(adjacencyId) == count;
        std::vector<unsigned int> derived;
        if (!hasAdjacency) {
            derived.resize(std::size_t{count} * 3);
            deriveAdjacency(surface.triangles, count, derived.data());
        }
        CornerSets sets(std::size_t{count} * 3);
        uniteAcrossSmoothEdges(surface, hasAdjacency ? indicesOf(adjacencyId) : derived.data(),
                               normals.faceNormals, std::cos(static_cast<double>(creaseAngle)), sets);
        sumAroundSets(surface, sets, normals);
    }

    NewArray freshVertexNormals(sizeof(Vector3<float>), static_cast<unsigned int>(normals.sums.size()));
    if (!freshVertexNormals.isMade()) {
        return false;
    }
    std::transform(normals.sums.begin(), normals.sums.end(), freshVertexNormals.elements<Vector3<float>>(),
                   asUnit);
    freshFaceNormals.replace(faceNormalsId);
    freshNormalTriangles.replace(normalTrianglesId);
    freshVertexNormals.replace(vertexNormalsId);
    return true;
}

bool Mesh::workAdjacency() {
    unsigned int const count = triangleCount();
    if (_reachesBeyond(triangleReach, trianglesId, sizeOf(positionsId))) {
        return false;
    }
    NewArray fresh(sizeof(Tuple3<unsigned int>), count);
    if (!fresh.isMade()) {
        return false;
    }
    deriveAdjacency(indicesOf(trianglesId), count, fresh.indices());
    fresh.replace(adjacencyId);
    isAdjacencyCurrent = true;
    return true;
}

// == Reading ==

unsigned int Mesh::triangleCount() const {
    return sizeOf(trianglesId);
}

// The place of a named array; the number of named arrays when there is no such array.
unsigned int Mesh::_indexOfNamed(unsigned int const& bits, char const* name) const {
    unsigned int index = 0;
    for (; index < namedArrays.size(); ++index) {
        NamedArray const& array = namedArrays[index];
        if (((array.bits ^ bits) & MeshArrayInf_ns::SEARCH_MASK) == 0 &&
            std::strcmp(array.name.c_str(), name != nullptr ? name : "") == 0) {
            break;
        }
    }
    return index;
}

ArrayId Mesh::namedArray(unsigned int const& bits, char const* name) const {
    unsigned int const index = _indexOfNamed(bits, name);
    return index < namedArrays.size() ? namedArrays[index].id : ARRAY_ID_NONE;
}

MeshFault_ns::type Mesh::fault() const {
    MeshFault_ns::type const surface = surfaceFault();
    return surface != MeshFault_ns::NONE ? surface : adjacencyFault();
}

MeshFault_ns::type Mesh::surfaceFault() const {
    for (MeshFault_ns::type const fault : {triangleFault(), vertexNormalFault(), faceNormalFault()}) {
        if (fault != MeshFault_ns::NONE) {
            return fault;
        }
    }
    return MeshFault_ns::NONE;
}

MeshFault_ns::type Mesh::triangleFault() const {
    return _reachesBeyond(triangleReach, trianglesId, sizeOf(positionsId)) ? MeshFault_ns::INDEX_OUT_OF_RANGE
                                                                           : MeshFault_ns::NONE;
}

MeshFault_ns::type Mesh::vertexNormalFault() const {
    unsigned int const normalTriangleCount = sizeOf(normalTrianglesId);
    if (normalTriangleCount != 0 && normalTriangleCount != triangleCount()) {
        return MeshFault_ns::NORMAL_TRIANGLE_COUNT;
    }
    return _reachesBeyond(normalTriangleReach, normalTrianglesId, sizeOf(vertexNormalsId))
               ? MeshFault_ns::NORMAL_INDEX_OUT_OF_RANGE
               : MeshFault_ns::NONE;
}

MeshFault_ns::type Mesh::faceNormalFault() const {
    unsigned int const faceNormalCount = sizeOf(faceNormalsId);
    return faceNormalCount != 0 && faceNormalCount != triangleCount() ? MeshFault_ns::FACE_NORMAL_COUNT
                                                                      : MeshFault_ns::NONE;
}

MeshFault_ns::type Mesh::adjacencyFault() const {
    unsigned int const count = triangleCount();
    unsigned int const entryCount = sizeOf(adjacencyId);
    if (entryCount != 0 && entryCount != count) {
        return MeshFault_ns::ADJACENCY_COUNT;
    }
    return _reachesBeyond(adjacencyReach, adjacencyId, count) ? MeshFault_ns::ADJACENCY_OUT_OF_RANGE
                                                              : MeshFault_ns::NONE;
}

// Whether an array of indices names something at or beyond `count`. What it reaches up to is looked up again
// when the array is another one, has another size or carries its modified bit.
bool Mesh::_reachesBeyond(IndexReach& reach, ArrayId const& id, unsigned int const& count) const {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    if (array == nullptr) {
        return false;
    }
    if (reach.id != id || reach.size != array->size ||
        (array->flags & ARRAY_TYPEABLE_MODIFIED_CONTROL_0) != 0) {
        auto const* const indices = static_cast<unsigned int const*>(array->data);
        std::size_t const indexCount = std::size_t{array->size} * 3;
        reach.id = id;
        reach.size = array->size;
        reach.end =
            id == adjacencyId ? endOfAdjacency(indices, indexCount) : endOfIndices(indices, indexCount);
    }
    return reach.end > count;
}

}  // namespace vellum
