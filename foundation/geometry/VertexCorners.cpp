#include "foundation/geometry/VertexCorners.h"

#include "foundation/basic/threads.h"

#include <algorithm>

namespace vellum {

namespace {

/// Into how many ranges of vertices the work is split. Each range looks at all triangles: more would cost
/// more than they gain.
std::size_t rangeCount(std::size_t indexCount) {
    constexpr std::size_t FEW_INDICES = std::size_t(1) << 15;
    constexpr int MOST_RANGES = 8;
    return indexCount < FEW_INDICES ? 1 : static_cast<std::size_t>(std::min(threadLimit(), MOST_RANGES));
}

}  // namespace

VertexCorners::VertexCorners(unsigned int const* triangles, unsigned int triangleCount,
                             unsigned int vertexCount)
    // Neither is filled before it is written.
    : ends(new unsigned int[vertexCount]), corners(new unsigned int[std::size_t{triangleCount} * 3]) {
    std::size_t const indexCount = std::size_t{triangleCount} * 3;
    std::size_t const rangeSize = std::size_t{vertexCount} / rangeCount(indexCount) + 1;
    forRanges(vertexCount, rangeSize, [&](std::size_t begin, std::size_t end) {
        std::fill(ends.get() + begin, ends.get() + end, 0U);
        for (std::size_t i = 0; i < indexCount; ++i) {
            if (triangles[i] - begin < end - begin) {
                ++ends[triangles[i]];
            }
        }
    });
    unsigned int total = 0;
    for (std::size_t vertex = 0; vertex < vertexCount; ++vertex) {
        unsigned int const count = ends[vertex];
        ends[vertex] = total;
        total += count;
    }
    // The beginning of each vertex moves on to its end.
    forRanges(vertexCount, rangeSize, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = 0; i < indexCount; ++i) {
            if (triangles[i] - begin < end - begin) {
                corners[ends[triangles[i]]++] = static_cast<unsigned int>(i);
            }
        }
    });
}

}  // namespace vellum
