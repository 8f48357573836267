#include "foundation/basic/threads.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/MeshImporter.h"
#include "mesh_shapes.h"
#include "tests/support/thread_limits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

/// What is derived from a mesh on several threads, against plain loops over all triangles.

namespace vellum {
namespace {

using namespace mesh_shapes;

constexpr unsigned int NONE = Mesh::ADJACENCY_NONE;
constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

class Mesh_threads_test : public testing::Test {
protected:
    void TearDown() override { setThreadLimit(0); }

    /// Triangles among vertices near each other: edges of one, two and more triangles, vertices named twice,
    /// and one vertex of very many triangles.
    static Shape randomShape(unsigned int vertexCount, unsigned int triangleCount, bool isFinite) {
        std::mt19937 random(vertexCount);
        auto const upTo = [&](unsigned int end) { return static_cast<unsigned int>(random() % end); };
        Shape shape;
        for (unsigned int i = 0; i < vertexCount; ++i) {
            double const odd[] = {NOT_A_NUMBER, INF, -INF, 1e308, -1e308, 1e-320, -0.0};
            Vector3<double> p{upTo(9) / 8.0, upTo(9) / 8.0, upTo(5) / 8.0};
            if (i % 97 == 5 && !isFinite) {
                p.y = odd[upTo(7)];
            }
            shape.positions.pushBack(p);
        }
        for (unsigned int t = 0; t < triangleCount; ++t) {
            unsigned int const first = t % 40 == 7 ? 3 : upTo(vertexCount);
            shape.triangles.pushBack(
                {first, (first + upTo(6)) % vertexCount, (first + vertexCount - upTo(6)) % vertexCount});
        }
        return shape;
    }
};

template <class T>
std::vector<T> valuesOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    T const* const first = array == nullptr ? nullptr : array->as<T>();
    return first == nullptr ? std::vector<T>() : std::vector<T>(first, first + array->size);
}

template <class T>
bool haveSameBits(std::vector<T> const& a, std::vector<T> const& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

unsigned int cornerOf(Triangle const& t, unsigned int k) {
    return k % 3 == 0 ? t.e0 : k % 3 == 1 ? t.e1 : t.e2;
}

std::vector<unsigned int> plainAdjacency(Shape const& shape) {
    std::map<std::pair<unsigned int, unsigned int>, std::vector<unsigned int>> edges;
    for (unsigned int t = 0; t < shape.triangles.size(); ++t) {
        Triangle const& v = shape.triangles[t];
        for (unsigned int k = 0; k < 3 && v.e0 != v.e1 && v.e1 != v.e2 && v.e2 != v.e0; ++k) {
            edges[std::minmax(cornerOf(v, k), cornerOf(v, k + 1))].push_back(3 * t + k);
        }
    }
    std::vector<unsigned int> entries(std::size_t{3} * shape.triangles.size(), NONE);
    for (auto const& [key, both] : edges) {
        for (unsigned int i = 0; i < 2 && both.size() == 2; ++i) {
            unsigned int const start = cornerOf(shape.triangles[both[i] / 3], both[i] % 3);
            unsigned int const other = both[1 - i];
            bool const isAtStart = cornerOf(shape.triangles[other / 3], other % 3) == start;
            entries[both[i]] = other / 3 * 4 + (isAtStart ? other % 3 : (other % 3 + 1) % 3);
        }
    }
    return entries;
}

struct PlainNormals {
    std::vector<Vector3<float>> normals;
    std::vector<unsigned int> corners;
};

double largest(Vector3<double> const& v) {
    return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
}

/// The sums in the order of the triangles.
PlainNormals plainNormals(Shape const& shape, float crease) {
    unsigned int const count = shape.triangles.size();
    struct Face {
        Vector3<double> normal{0, 0, 0};
        double angles[3] = {0, 0, 0};
    };
    std::vector<Face> faces(count);
    for (unsigned int t = 0; t < count; ++t) {
        Triangle const& v = shape.triangles[t];
        Vector3<double> a = shape.positions[v.e1] - shape.positions[v.e0];
        Vector3<double> b = shape.positions[v.e2] - shape.positions[v.e0];
        double const scale = 1 / std::max(largest(a), largest(b));
        a = a * scale;
        b = b * scale;
        Vector3<double> const normal = cross(a, b);
        if (double const size = length(normal); size > 0) {
            faces[t].normal = normal * (1 / size);
            faces[t].angles[0] = std::atan2(size, dot(a, b));
            faces[t].angles[1] = std::atan2(size, dot(a, a - b));
            faces[t].angles[2] = std::max(0.0, constants::d::PI - faces[t].angles[0] - faces[t].angles[1]);
        }
    }
    std::vector<unsigned int> sets(std::size_t{3} * count);
    std::iota(sets.begin(), sets.end(), 0U);
    auto const find = [&](unsigned int corner) {
        while (sets[corner] != corner) {
            corner = sets[corner];
        }
        return corner;
    };
    auto const unite = [&](unsigned int a, unsigned int b) {
        sets[std::max(find(a), find(b))] = std::min(find(a), find(b));
    };
    std::vector<unsigned int> const entries = plainAdjacency(shape);
    auto const asFloats = [](Vector3<double> const& v) { return convert<double>(convert<float>(v)); };
    for (unsigned int edge = 0; edge < 3 * count; ++edge) {
        unsigned int const other = entries[edge] >> 2;
        unsigned int const t = edge / 3;
        if (entries[edge] == NONE || other < t) {
            continue;
        }
        unsigned int const next = (edge % 3 + 1) % 3;
        unsigned int const before = ((entries[edge] & 3U) + 2) % 3;
        bool const isOpposite =
            cornerOf(shape.triangles[other], before) == cornerOf(shape.triangles[t], next);
        if (isOpposite && dot(asFloats(faces[t].normal), asFloats(faces[other].normal)) >=
                              std::cos(static_cast<double>(crease))) {
            unite(edge, other * 3 + (entries[edge] & 3U));
            unite(t * 3 + next, other * 3 + before);
        }
    }
    PlainNormals result;
    std::vector<Vector3<double>> sums(shape.positions.size(), Vector3<double>{0, 0, 0});
    std::vector<bool> isTaken(sums.size(), false);
    std::map<unsigned int, unsigned int> normalOfSet;
    for (unsigned int corner = 0; corner < 3 * count; ++corner) {
        unsigned int const vertex = cornerOf(shape.triangles[corner / 3], corner % 3);
        unsigned int normal = vertex;
        if (crease < Mesh::NO_CREASE) {
            auto const [place, isNew] = normalOfSet.emplace(find(corner), vertex);
            bool const hasArea = faces[corner / 3].angles[0] > 0;
            if (isNew && hasArea && isTaken[vertex]) {
                place->second = static_cast<unsigned int>(sums.size());
                sums.push_back({0, 0, 0});
            } else if (isNew && hasArea) {
                isTaken[vertex] = true;
            }
            normal = place->second;
        }
        result.corners.push_back(normal);
        sums[normal] = sums[normal] + faces[corner / 3].normal * faces[corner / 3].angles[corner % 3];
    }
    for (Vector3<double> const& sum : sums) {
        double const size = length(sum);
        result.normals.push_back(size > 0 ? convert<float>(sum * (1 / size)) : Vector3<float>{0, 0, 0});
    }
    return result;
}

std::vector<unsigned int> indicesOf(ArrayId const& id) {
    std::vector<unsigned int> indices;
    for (Triangle const& t : valuesOf<Triangle>(id)) {
        indices.insert(indices.end(), {t.e0, t.e1, t.e2});
    }
    return indices;
}

}  // namespace

TEST_F(Mesh_threads_test, derivedArraysHaveTheBitsOfPlainLoopsWhateverTheNumberOfThreads) {
    for (unsigned int const vertexCount : {1U, 7U, 1001U, 9001U}) {
        Shape const shape = randomShape(vertexCount, 2 * vertexCount + 1, false);
        std::vector<unsigned int> const adjacency = plainAdjacency(shape);
        PlainNormals const smooth = plainNormals(shape, Mesh::NO_CREASE);
        PlainNormals const creased = plainNormals(shape, 0.7F);
        EXPECT_TRUE(vertexCount < 1000 || creased.normals.size() > smooth.normals.size());
        for (int const threads : threadLimits()) {
            SCOPED_TRACE(std::to_string(vertexCount) + " vertices, " + std::to_string(threads) + " threads");
            setThreadLimit(threads);
            Mesh mesh;
            shape.fill(mesh);
            ASSERT_TRUE(mesh.workNormals(0.7F)) << "with an adjacency of its own";
            EXPECT_EQ(indicesOf(mesh.normalTriangles()), creased.corners);
            EXPECT_TRUE(haveSameBits(valuesOf<Vector3<float>>(mesh.vertexNormals()), creased.normals));
            ASSERT_TRUE(mesh.workAdjacency());
            EXPECT_EQ(indicesOf(mesh.adjacency()), adjacency);
            ASSERT_TRUE(mesh.workNormals(0.7F));
            EXPECT_TRUE(haveSameBits(valuesOf<Vector3<float>>(mesh.vertexNormals()), creased.normals));
            std::vector<Color4<float>> const faceNormals = valuesOf<Color4<float>>(mesh.faceNormals());
            ASSERT_TRUE(mesh.workNormals());
            EXPECT_EQ(indicesOf(mesh.normalTriangles()), smooth.corners);
            EXPECT_TRUE(haveSameBits(valuesOf<Vector3<float>>(mesh.vertexNormals()), smooth.normals));
            ASSERT_TRUE(mesh.workFaceNormals());
            EXPECT_TRUE(haveSameBits(valuesOf<Color4<float>>(mesh.faceNormals()), faceNormals));
        }
    }
}

TEST_F(Mesh_threads_test, theBoxPassesOverWhatIsNoNumberWhateverTheNumberOfThreads) {
    Shape shape = randomShape(100001, 1, true);
    shape.positions[70000] = {NOT_A_NUMBER, -2, 3};
    shape.positions[99999] = {-4, NOT_A_NUMBER, INF};
    for (int const threads : threadLimits()) {
        setThreadLimit(threads);
        Mesh mesh;
        shape.fill(mesh);
        mesh.workBox();
        EXPECT_EQ(mesh.box().min.x, -4);
        EXPECT_EQ(mesh.box().min.y, -2);
        EXPECT_EQ(mesh.box().max.x, 1);
        EXPECT_EQ(mesh.box().max.z, INF);
    }
}

TEST_F(Mesh_threads_test, anIndexOutOfRangeIsFoundWhereverItIs) {
    for (unsigned int const place : {0U, 50000U, 100000U}) {
        Shape shape = randomShape(10, 100001, true);
        shape.triangles[place].e1 = 10;
        Mesh mesh;
        shape.fill(mesh);
        EXPECT_EQ(mesh.triangleFault(), MeshFault_ns::INDEX_OUT_OF_RANGE) << place;
        MeshImporter importer;
        importer.positions = shape.positions;
        importer.triangles = shape.triangles;
        EXPECT_EQ(importer.toMesh(mesh), MeshFault_ns::INDEX_OUT_OF_RANGE) << place;
    }
}

TEST_F(Mesh_threads_test, weldingKeepsTheFirstOfEqualPositionsWhateverTheNumberOfThreads) {
    struct Less {
        bool operator()(Vector3<double> const& a, Vector3<double> const& b) const {
            return a.x != b.x ? a.x < b.x : a.y != b.y ? a.y < b.y : a.z < b.z;
        }
    };
    for (unsigned int const vertexCount : {3U, 1001U, 20011U}) {
        Shape shape = randomShape(vertexCount, 2 * vertexCount + 1, true);
        for (unsigned int i = 0; i < vertexCount; i += 3) {
            shape.positions[i].x = i % 2 == 0 ? 0.0 : -0.0;
            shape.positions[i].z += i / 4096;
        }
        std::map<Vector3<double>, unsigned int, Less> known;
        std::vector<Vector3<double>> kept;
        std::vector<unsigned int> indices;
        for (Vector3<double> const& p : shape.positions) {
            auto const [place, isNew] = known.emplace(p, static_cast<unsigned int>(kept.size()));
            if (isNew) {
                kept.push_back(p);
            }
            indices.push_back(place->second);
        }
        std::vector<unsigned int> sources;
        std::vector<unsigned int> corners;
        for (unsigned int t = 0; t < shape.triangles.size(); ++t) {
            Triangle const& old = shape.triangles[t];
            unsigned int const v[3] = {indices[old.e0], indices[old.e1], indices[old.e2]};
            if (v[0] != v[1] && v[1] != v[2] && v[2] != v[0]) {
                sources.push_back(t);
                corners.insert(corners.end(), v, v + 3);
            }
        }
        for (int const threads : threadLimits()) {
            SCOPED_TRACE(std::to_string(vertexCount) + " vertices, " + std::to_string(threads) + " threads");
            setThreadLimit(threads);
            MeshImporter importer;
            importer.positions = shape.positions;
            importer.triangles = shape.triangles;
            Array<unsigned int> const origins = importer.weld();
            EXPECT_EQ(std::vector<unsigned int>(origins.begin(), origins.end()), sources);
            EXPECT_TRUE(haveSameBits(
                std::vector<Vector3<double>>(importer.positions.begin(), importer.positions.end()), kept));
            ASSERT_EQ(importer.triangles.size() * 3, corners.size());
            EXPECT_EQ(std::memcmp(importer.triangles.data(), corners.data(), corners.size() * 4), 0);
        }
    }
}

}  // namespace vellum
