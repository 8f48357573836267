#include "foundation/geometry/mesh_normals.h"

#include "foundation/basic/large_pages.h"
#include "foundation/basic/threads.h"
#include "foundation/geometry/constants.h"
#include "foundation/geometry/index_02.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace vellum {

namespace {

using index_02::ui32::NEXT_CIRCULAR;
using index_02::ui32::PREV_CIRCULAR;

constexpr std::size_t NORMALS_AT_ONCE = 1 << 13;  // triangles or vertices

/// The unit normal of a triangle and the angles at its corners; all zero for a triangle without area.
struct Face {
    Vector3<double> normal;
    double angles[3];
};

/// Of a corner: whether its set has the normal with the vertex's index.
enum Owner : unsigned char { OWN, FURTHER };

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
    Face face{{0, 0, 0}, {0, 0, 0}};
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

/// All faces, and their normals as records.
std::unique_ptr<Face[]> facesOf(Surface const& surface, Color4<float>* faceNormals) {
    // Written before it is read, so not filled.
    std::unique_ptr<Face[]> faces(new Face[surface.count]);
    preferLargePages(faces.get(), surface.count * sizeof(Face));
    forRanges(surface.count, NORMALS_AT_ONCE, [&](std::size_t begin, std::size_t end) {
        for (std::size_t t = begin; t < end; ++t) {
            faces[t] = faceOf(surface.positions, surface.corners(t));
            faceNormals[t] = asRecord(faces[t].normal);
        }
    });
    return faces;
}

Vector3<double> weighted(Face const* faces, unsigned int corner) {
    Face const& face = faces[corner / 3];
    return face.normal * face.angles[corner % 3];
}

/// Sets of corners (3 t + k) that share a normal. All corners of a set are at one vertex, so the sets of
/// different vertices may be found at the same time.
class CornerSets {
public:
    explicit CornerSets(std::size_t count) : parents(new unsigned int[count]) {}

    void begin(unsigned int corner) { parents[corner] = corner; }

    unsigned int find(unsigned int corner) {
        while (parents[corner] != corner) {
            parents[corner] = parents[parents[corner]];
            corner = parents[corner];
        }
        return corner;
    }

    /// The same without a change, for sets that are complete.
    unsigned int root(unsigned int corner) const {
        while (parents[corner] != corner) {
            corner = parents[corner];
        }
        return corner;
    }

    void unite(unsigned int a, unsigned int b) {
        unsigned int const rootA = find(a);
        unsigned int const rootB = find(b);
        parents[std::max(rootA, rootB)] = std::min(rootA, rootB);
    }

private:
    std::unique_ptr<unsigned int[]> parents;  // a root is its own parent, and the first corner of its set
};

/// Finds which corners share normals, and numbers these.
class NormalNumbering {
public:
    NormalNumbering(Surface const& surface, VertexCorners const& corners, unsigned int* normals)
        : surface(surface)
        , corners(corners)
        , normals(normals)
        , sets(std::size_t{surface.count} * 3)
        , owners(new unsigned char[std::size_t{surface.count} * 3]) {}

    /// \return how many normals there are
    unsigned int number(unsigned int const* adjacency, Color4<float> const* faceNormals, Face const* faces,
                        double leastCosine) {
        forRanges(surface.vertexCount, NORMALS_AT_ONCE, [&](std::size_t begin, std::size_t end) {
            for (std::size_t vertex = begin; vertex < end; ++vertex) {
                _unite(vertex, adjacency, faceNormals, leastCosine);
                _choose(vertex, faces);
            }
        });
        return surface.vertexCount + _numberFurther();
    }

private:
    /// Unites the corners of a vertex on both sides of every edge that is not hard.
    void _unite(std::size_t vertex, unsigned int const* adjacency, Color4<float> const* faceNormals,
                double leastCosine) {
        unsigned int const* const triangles = surface.triangles;
        for (unsigned int const* corner = corners.begin(vertex); corner != corners.end(vertex); ++corner) {
            sets.begin(*corner);
        }
        for (unsigned int const* corner = corners.begin(vertex); corner != corners.end(vertex); ++corner) {
            unsigned int const k = *corner % 3;
            unsigned int const t = *corner / 3;
            // The edge that starts at the vertex, and the one that ends there.
            for (unsigned int const start : {k, PREV_CIRCULAR[k]}) {
                unsigned int const edge = t * 3 + start;
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
                unsigned int const ownNext = t * 3 + NEXT_CIRCULAR[start];
                if (triangles[own] == triangles[edge] && triangles[next] == triangles[ownNext] &&
                    dot(asVector(faceNormals[t]), asVector(faceNormals[neighbor])) >= leastCosine) {
                    sets.unite(*corner, start == k ? own : next);
                }
            }
        }
    }

    /// Which set of a vertex has its index.
    void _choose(std::size_t vertex, Face const* faces) {
        bool isTaken = false;
        for (unsigned int const* corner = corners.begin(vertex); corner != corners.end(vertex); ++corner) {
            unsigned int const root = sets.find(*corner);
            if (root == *corner) {
                // A face without area must not take the vertex's own index: nothing of it is seen, and a
                // visible set would lose the index to it.
                bool const hasArea = faces[root / 3].angles[0] > 0;
                owners[root] = hasArea && isTaken ? FURTHER : OWN;
                isTaken = isTaken || hasArea;
            } else {
                owners[*corner] = owners[root];
            }
            // Until the further normals have numbers, the root stands for the set.
            normals[*corner] = owners[root] == OWN ? static_cast<unsigned int>(vertex) : root;
        }
    }

    /// \return how many there are
    unsigned int _numberFurther() {
        std::size_t const count = std::size_t{surface.count} * 3;
        std::vector<unsigned int> firsts(count / NORMALS_AT_ONCE + 1,
                                         0);  // by range: the number of its first set
        auto const isRoot = [&](std::size_t corner) {
            return owners[corner] == FURTHER && sets.root(static_cast<unsigned int>(corner)) == corner;
        };
        forRanges(count, NORMALS_AT_ONCE, [&](std::size_t begin, std::size_t end) {
            for (std::size_t corner = begin; corner < end; ++corner) {
                firsts[begin / NORMALS_AT_ONCE] += isRoot(corner) ? 1 : 0;
            }
        });
        unsigned int total = 0;
        for (unsigned int& first : firsts) {
            total += first;
            first = total - first;
        }
        if (total == 0) {
            return 0;
        }
        // The roots first, each in its place, then all others ask their root.
        forRanges(count, NORMALS_AT_ONCE, [&](std::size_t begin, std::size_t end) {
            unsigned int next = surface.vertexCount + firsts[begin / NORMALS_AT_ONCE];
            for (std::size_t corner = begin; corner < end; ++corner) {
                if (isRoot(corner)) {
                    normals[corner] = next++;
                }
            }
        });
        forRanges(count, NORMALS_AT_ONCE, [&](std::size_t begin, std::size_t end) {
            for (std::size_t corner = begin; corner < end; ++corner) {
                if (owners[corner] == FURTHER) {
                    unsigned int const root = sets.root(static_cast<unsigned int>(corner));
                    // Others read the number of a root meanwhile.
                    if (root != corner) {
                        normals[corner] = normals[root];
                    }
                }
            }
        });
        return total;
    }

    Surface const& surface;
    VertexCorners const& corners;
    unsigned int* normals;  // by corner
    CornerSets sets;
    std::unique_ptr<unsigned char[]> owners;  // by corner
};

}  // namespace

void fillFaceNormals(Surface const& surface, Color4<float>* faceNormals) {
    forRanges(surface.count, NORMALS_AT_ONCE, [&](std::size_t begin, std::size_t end) {
        for (std::size_t t = begin; t < end; ++t) {
            faceNormals[t] = asRecord(unitNormal(surface.positions, surface.corners(t)));
        }
    });
}

std::vector<Vector3<float>> sumAroundVertices(Surface const& surface, VertexCorners const& corners,
                                              Color4<float>* faceNormals) {
    std::unique_ptr<Face[]> const faces = facesOf(surface, faceNormals);
    std::vector<Vector3<float>> normals(surface.vertexCount);
    forRanges(surface.vertexCount, NORMALS_AT_ONCE, [&](std::size_t begin, std::size_t end) {
        for (std::size_t vertex = begin; vertex < end; ++vertex) {
            Vector3<double> sum{0, 0, 0};
            for (unsigned int const* corner = corners.begin(vertex); corner != corners.end(vertex);
                 ++corner) {
                sum = sum + weighted(faces.get(), *corner);
            }
            normals[vertex] = asUnit(sum);
        }
    });
    return normals;
}

std::vector<Vector3<float>> sumAroundSets(Surface const& surface, VertexCorners const& corners,
                                          unsigned int const* adjacency, double leastCosine,
                                          Color4<float>* faceNormals, unsigned int* normalTriangles) {
    std::unique_ptr<Face[]> const faces = facesOf(surface, faceNormals);
    unsigned int const count = NormalNumbering(surface, corners, normalTriangles)
                                   .number(adjacency, faceNormals, faces.get(), leastCosine);
    std::vector<Vector3<float>> normals(count);
    std::vector<Vector3<double>> further(count - surface.vertexCount, Vector3<double>{0, 0, 0});
    forRanges(surface.vertexCount, NORMALS_AT_ONCE, [&](std::size_t begin, std::size_t end) {
        for (std::size_t vertex = begin; vertex < end; ++vertex) {
            Vector3<double> own{0, 0, 0};
            for (unsigned int const* corner = corners.begin(vertex); corner != corners.end(vertex);
                 ++corner) {
                unsigned int const normal = normalTriangles[*corner];
                Vector3<double>& sum = normal == vertex ? own : further[normal - surface.vertexCount];
                sum = sum + weighted(faces.get(), *corner);
            }
            normals[vertex] = asUnit(own);
        }
    });
    forRanges(further.size(), NORMALS_AT_ONCE, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            normals[surface.vertexCount + i] = asUnit(further[i]);
        }
    });
    return normals;
}

}  // namespace vellum
