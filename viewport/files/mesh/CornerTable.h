#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace vellum::viewport {

/// Numbers the different corners of faces: formats give a corner a vertex and, apart from it, texture
/// coordinates, a normal or a material, while a mesh has one of each per vertex.
///
/// Corners at the same vertex form a list, and neighboring faces find theirs in the cache. Nearly all lists
/// are short; what a long one cannot hold goes to a hash table, so that no file takes the time of its square.
class CornerTable {
public:
    static constexpr std::uint32_t NONE = 0xFFFFFFFF;

    struct Corner {
        std::uint32_t vertex;
        std::uint32_t texture;  ///< what else sets corners apart: any numbers
        std::uint32_t normal;
        std::uint32_t material;
    };

    /// Room for the lists of so many vertices; the table grows beyond it by itself.
    void reserve(std::size_t vertexCount);

    /// The number of the corner, from 0 in the order of first use.
    std::uint32_t indexOf(Corner const& corner) {
        if (corner.vertex >= firsts.size()) {
            firsts.resize(corner.vertex + std::size_t(1), NONE);
        }
        std::uint32_t* link = &firsts[corner.vertex];
        for (std::uint32_t length = 0; *link != NONE; ++length) {
            Entry& entry = entries[*link];
            if (_isSame(entry.corner, corner)) {
                return *link;
            }
            if (length == LONGEST_LIST) {
                return _indexInOverflow(corner);
            }
            link = &entry.next;
        }
        auto const index = static_cast<std::uint32_t>(entries.size());
        *link = index;
        entries.push_back({corner, NONE});
        return index;
    }

    std::size_t size() const { return entries.size(); }
    Corner const& operator[](std::size_t index) const { return entries[index].corner; }

private:
    static constexpr std::uint32_t LONGEST_LIST = 16;

    struct Entry {
        Corner corner;
        std::uint32_t next;
    };

    struct Hash {
        std::size_t operator()(Corner const& corner) const;
    };
    struct Equal {
        bool operator()(Corner const& a, Corner const& b) const { return _isSame(a, b); }
    };

    static bool _isSame(Corner const& a, Corner const& b) {
        return a.vertex == b.vertex && a.texture == b.texture && a.normal == b.normal &&
               a.material == b.material;
    }

    std::uint32_t _indexInOverflow(Corner const& corner);

    std::vector<std::uint32_t> firsts;  // by vertex, the first entry of its list
    std::vector<Entry> entries;
    std::unordered_map<Corner, std::uint32_t, Hash, Equal> overflow;
};

}  // namespace vellum::viewport
