#include "foundation/geometry/Mesh.h"

#include "foundation/basic/lifetimes.h"
#include "foundation/basic/threads.h"
#include "foundation/geometry/VertexCorners.h"
#include "foundation/geometry/mesh_adjacency.h"
#include "foundation/geometry/mesh_normals.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace vellum {

namespace {

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

/// What a part of indices names: the largest of what `endOf(first, count)` gives for ranges of them. Asked in
/// every frame of a mesh without buffers, so it takes no memory.
template <class EndOf>
unsigned int largestEnd(unsigned int const* indices, std::size_t count, EndOf const& endOf) {
    constexpr std::size_t RANGE = 1 << 17;
    std::atomic<unsigned int> largest{0};
    forRanges(count, RANGE, [&](std::size_t begin, std::size_t end) {
        unsigned int const named = endOf(indices + begin, end - begin);
        unsigned int known = largest.load(std::memory_order_relaxed);
        while (known < named && !largest.compare_exchange_weak(known, named, std::memory_order_relaxed)) {
        }
    });
    return largest.load(std::memory_order_relaxed);
}

/// One above the largest of some indices.
unsigned int endOfIndices(unsigned int const* indices, std::size_t count) {
    unsigned int largest = 0;
    for (std::size_t i = 0; i < count; ++i) {
        largest = std::max(largest, indices[i]);
    }
    // The index 0xFFFFFFFF has no successor; NO_END is out of every range too.
    return count == 0 ? 0 : largest == NO_END ? NO_END : largest + 1;
}

/// One above the largest triangle that adjacency entries name; NO_END when one names a corner 3.
unsigned int endOfAdjacency(unsigned int const* entries, std::size_t count) {
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
    constexpr std::size_t RANGE = 1 << 15;
    Box3<double> box{{FAR, FAR, FAR}, {-FAR, -FAR, -FAR}};
    // A comparison with what is not a number fails, so the box keeps what it had; of equal numbers it keeps
    // the first.
    auto const grow = [](Box3<double>& box, Vector3<double> const& low, Vector3<double> const& high) {
        box.min = {low.x < box.min.x ? low.x : box.min.x, low.y < box.min.y ? low.y : box.min.y,
                   low.z < box.min.z ? low.z : box.min.z};
        box.max = {high.x > box.max.x ? high.x : box.max.x, high.y > box.max.y ? high.y : box.max.y,
                   high.z > box.max.z ? high.z : box.max.z};
    };
    std::vector<Box3<double>> boxes(count / RANGE + 1, box);
    forRanges(count, RANGE, [&](std::size_t begin, std::size_t end) {
        Box3<double> part = boxes[begin / RANGE];
        for (std::size_t i = begin; i < end; ++i) {
            grow(part, positions[i], positions[i]);
        }
        boxes[begin / RANGE] = part;
    });
    for (Box3<double> const& part : boxes) {
        grow(box, part.min, part.max);
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
    fillFaceNormals({positions, indicesOf(trianglesId), count, sizeOf(positionsId)},
                    fresh.elements<Color4<float>>());
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
    Surface const surface{elementsOf<Vector3<double>>(positionsId), indicesOf(trianglesId), count,
                          vertexCount};
    auto* const faceNormals = freshFaceNormals.elements<Color4<float>>();
    std::vector<Vector3<float>> normals;
    {
        VertexCorners const corners(surface.triangles, count, vertexCount);
        if (creaseAngle >= NO_CREASE) {
            normals = sumAroundVertices(surface, corners, faceNormals);
            std::copy(surface.triangles, surface.triangles + std::size_t{count} * 3,
                      freshNormalTriangles.indices());
        } else {
            bool const hasAdjacency =
                isAdjacencyCurrent && adjacencyFault() == MeshFault_ns::NONE && sizeOf(adjacencyId) == count;
            std::vector<unsigned int> derived;
            if (!hasAdjacency) {
                derived.resize(std::size_t{count} * 3);
                deriveAdjacency(surface.triangles, count, vertexCount, corners, derived.data());
            }
            normals = sumAroundSets(surface, corners, hasAdjacency ? indicesOf(adjacencyId) : derived.data(),
                                    std::cos(static_cast<double>(creaseAngle)), faceNormals,
                                    freshNormalTriangles.indices());
        }
    }
    NewArray freshVertexNormals(sizeof(Vector3<float>), static_cast<unsigned int>(normals.size()));
    if (!freshVertexNormals.isMade()) {
        return false;
    }
    std::copy(normals.begin(), normals.end(), freshVertexNormals.elements<Vector3<float>>());
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
    unsigned int const* const triangles = indicesOf(trianglesId);
    unsigned int const vertexCount = sizeOf(positionsId);
    deriveAdjacency(triangles, count, vertexCount, VertexCorners(triangles, count, vertexCount),
                    fresh.indices());
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
        reach.end = largestEnd(indices, indexCount, id == adjacencyId ? endOfAdjacency : endOfIndices);
    }
    return reach.end > count;
}

}  // namespace vellum
