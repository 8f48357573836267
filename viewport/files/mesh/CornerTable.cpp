#include "viewport/files/mesh/CornerTable.h"

namespace vellum::viewport {

void CornerTable::reserve(std::size_t vertexCount) {
    firsts.reserve(vertexCount);
    entries.reserve(vertexCount);
}

std::size_t CornerTable::Hash::operator()(Corner const& corner) const {
    // Products with a large odd number carry every bit upwards; the shifts bring the upper ones down again.
    constexpr std::uint64_t FACTOR = 0x9E3779B97F4A7C15U;
    std::uint64_t hash = 0;
    for (std::uint32_t const part : {corner.vertex, corner.texture, corner.normal, corner.material}) {
        hash = (hash ^ part) * FACTOR;
        hash ^= hash >> 29;
    }
    return static_cast<std::size_t>(hash);
}

std::uint32_t CornerTable::_indexInOverflow(Corner const& corner) {
    auto const index = static_cast<std::uint32_t>(entries.size());
    auto const [place, isNew] = overflow.emplace(corner, index);
    if (isNew) {
        entries.push_back({corner, NONE});
    }
    return place->second;
}

}  // namespace vellum::viewport
