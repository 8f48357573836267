#pragma once

#include <cstddef>
#include <memory>

namespace vellum {

/// By vertex, the corners of triangles that lie there: corner k of triangle t has the number 3 t + k. They
/// stand in rising order, so that what is summed over them has the same bits as a loop over all triangles
/// gives. Not for applications: Mesh derives from it what belongs to vertices and edges, each vertex by
/// itself and therefore on all cores.
///
///     VertexCorners const corners(triangles, triangleCount, vertexCount);
///     for (unsigned int const* corner = corners.begin(v); corner != corners.end(v); ++corner) ...
class VertexCorners {
public:
    /// \param triangles three indices each, below vertexCount
    VertexCorners(unsigned int const* triangles, unsigned int triangleCount, unsigned int vertexCount);

    unsigned int const* begin(std::size_t vertex) const {
        return corners.get() + (vertex == 0 ? 0 : ends[vertex - 1]);
    }
    unsigned int const* end(std::size_t vertex) const { return corners.get() + ends[vertex]; }

private:
    std::unique_ptr<unsigned int[]> ends;     // by vertex, in `corners`
    std::unique_ptr<unsigned int[]> corners;  // those of vertex 0, of vertex 1 ...
};

}  // namespace vellum
