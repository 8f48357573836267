#pragma once

#include "foundation/geometry/Vector3.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vellum {

/// The vertex normals that corners share. The first normal that is seen at a vertex has the vertex's index,
/// so that a surface without hard edges has one normal for each vertex; the others follow behind. Normals are
/// the same when their bits are: what is not a number then equals itself.
class SharedNormals {
public:
    explicit SharedNormals(unsigned int vertexCount)
        : normals(vertexCount, Vector3<float>{0, 0, 0}), isTaken(vertexCount, 0) {}

    unsigned int indexOf(unsigned int vertex, Vector3<float> const& normal) {
        if (isTaken[vertex] == 0) {
            isTaken[vertex] = 1;
            normals[vertex] = normal;
            return vertex;
        }
        VertexNormal const wanted(vertex, normal);
        if (VertexNormal(vertex, normals[vertex]) == wanted) {
            return vertex;
        }
        auto const [place, isNew] = further.emplace(wanted, static_cast<unsigned int>(normals.size()));
        if (isNew) {
            normals.push_back(normal);
        }
        return place->second;
    }

    std::vector<Vector3<float>> const& all() const { return normals; }

private:
    struct VertexNormal {
        unsigned int words[4];  // vertex, x, y, z

        VertexNormal(unsigned int vertex, Vector3<float> const& normal) : words{vertex, 0, 0, 0} {
            std::memcpy(words + 1, &normal, sizeof normal);
        }

        bool operator==(VertexNormal const& other) const { return std::equal(words, words + 4, other.words); }
    };

    struct VertexNormalHash {
        std::size_t operator()(VertexNormal const& normal) const {
            std::uint64_t hash = 0;
            for (unsigned int const word : normal.words) {
                hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
                hash ^= hash >> 32;
            }
            return static_cast<std::size_t>(hash);
        }
    };

    std::vector<Vector3<float>> normals;
    std::vector<unsigned char> isTaken;  // by vertex; bytes are faster than bits
    std::unordered_map<VertexNormal, unsigned int, VertexNormalHash> further;
};

}  // namespace vellum
