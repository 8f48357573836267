#include "foundation/geometry/mesh_adjacency.h"

#include "foundation/basic/MemoryGuard.h"
#include "foundation/basic/threads.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/index_02.h"

#include <algorithm>
#include <vector>

namespace vellum {

namespace {

using index_02::ui32::NEXT_CIRCULAR;
using index_02::ui32::PREV_CIRCULAR;

/// An edge of a triangle as the lower one of its two vertices sees it.
struct VertexEdge {
    unsigned int other;  // vertex
    unsigned int edge;   // 3 t + k

    bool operator<(VertexEdge const& right) const {
        return other != right.other ? other < right.other : edge < right.edge;
    }
};

bool namesAVertexTwice(unsigned int const* corners) {
    return corners[0] == corners[1] || corners[1] == corners[2] || corners[2] == corners[0];
}

/// The entry for the edge that starts at `vertex`: the neighbor's corner there. The neighbor may run along
/// the common edge either way.
unsigned int entryFor(unsigned int const* triangles, unsigned int neighborEdge, unsigned int vertex) {
    unsigned int const triangle = neighborEdge / 3;
    unsigned int const k = neighborEdge % 3;
    return triangle * 4 + (triangles[neighborEdge] == vertex ? k : NEXT_CIRCULAR[k]);
}

void connect(unsigned int const* triangles, unsigned int a, unsigned int b, unsigned int* entries) {
    entries[a] = entryFor(triangles, b, triangles[a]);
    entries[b] = entryFor(triangles, a, triangles[b]);
}

/// The edges from a vertex to those above it. Each edge of a triangle is in the list of one vertex.
void gatherEdges(unsigned int const* triangles, VertexCorners const& corners, std::size_t vertex,
                 std::vector<VertexEdge>& edges) {
    edges.clear();
    for (unsigned int const* corner = corners.begin(vertex); corner != corners.end(vertex); ++corner) {
        unsigned int const k = *corner % 3;
        unsigned int const first = *corner - k;
        if (namesAVertexTwice(triangles + first)) {
            continue;
        }
        unsigned int const next = triangles[first + NEXT_CIRCULAR[k]];
        unsigned int const previous = triangles[first + PREV_CIRCULAR[k]];
        if (next > vertex) {
            edges.push_back({next, *corner});
        }
        if (previous > vertex) {
            edges.push_back({previous, first + PREV_CIRCULAR[k]});
        }
    }
}

/// Connects the two triangles at each edge that exactly two have.
void connectEdges(unsigned int const* triangles, std::vector<VertexEdge>& edges, unsigned int* entries) {
    constexpr std::size_t FEW_EDGES = 16;
    if (edges.size() > FEW_EDGES) {
        std::sort(edges.begin(), edges.end());
        for (std::size_t i = 0; i < edges.size();) {
            std::size_t stop = i + 1;
            while (stop < edges.size() && edges[stop].other == edges[i].other) {
                ++stop;
            }
            if (stop - i == 2) {
                connect(triangles, edges[i].edge, edges[i + 1].edge, entries);
            }
            i = stop;
        }
        return;
    }
    for (std::size_t i = 0; i < edges.size(); ++i) {
        unsigned int count = 0;
        unsigned int partner = 0;
        for (std::size_t k = 0; k < edges.size(); ++k) {
            bool const isSame = edges[k].other == edges[i].other;
            count += isSame ? 1 : 0;
            partner = isSame && k != i ? edges[k].edge : partner;
        }
        if (count == 2 && edges[i].edge < partner) {
            connect(triangles, edges[i].edge, partner, entries);
        }
    }
}

}  // namespace

void deriveAdjacency(unsigned int const* triangles, unsigned int triangleCount, unsigned int vertexCount,
                     VertexCorners const& corners, unsigned int* entries) {
    constexpr std::size_t RANGE = 1 << 13;
    forRanges(std::size_t{triangleCount} * 3, RANGE * 8, [entries](std::size_t begin, std::size_t end) {
        std::fill(entries + begin, entries + end, Mesh::ADJACENCY_NONE);
    });
    MemoryGuard guard;
    forRanges(vertexCount, RANGE, [&](std::size_t begin, std::size_t end) {
        guard.run([&] {
            std::vector<VertexEdge> edges;
            for (std::size_t vertex = begin; vertex < end; ++vertex) {
                gatherEdges(triangles, corners, vertex, edges);
                connectEdges(triangles, edges, entries);
            }
        });
    });
    guard.check();
}

}  // namespace vellum
