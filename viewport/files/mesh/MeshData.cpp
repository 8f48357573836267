#include "viewport/files/mesh/MeshData.h"

#include "foundation/basic/threads.h"
#include "viewport/files/mesh/points.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace vellum::viewport {

namespace {

std::string indexFault(char const* kind, std::size_t number, unsigned int index, std::size_t count) {
    return std::string(kind) + " " + std::to_string(number) + " has vertex index " + std::to_string(index) +
           ", out of range: the mesh has " + std::to_string(count) + " vertices";
}

/// The first of `count` things for which a statement holds, or their number. All cores look.
template <class Holds>
std::size_t firstWhere(std::size_t count, Holds const& holds) {
    constexpr std::size_t RANGE = 1 << 15;
    std::atomic<std::size_t> first{count};
    forRanges(count, RANGE, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end && begin < first.load(std::memory_order_relaxed); ++i) {
            if (holds(i)) {
                std::size_t least = first.load();
                while (i < least && !first.compare_exchange_weak(least, i)) {
                }
                return;
            }
        }
    });
    return first;
}

/// The first index out of range of a list of triangles, lines or points.
template <class T, class Largest>
std::optional<std::string> firstIndexFault(char const* kind, std::vector<T> const& list, std::size_t count,
                                           Largest const& largestOf) {
    std::size_t const first =
        firstWhere(list.size(), [&](std::size_t i) { return largestOf(list[i]) >= count; });
    return first < list.size()
               ? std::optional<std::string>(indexFault(kind, first, largestOf(list[first]), count))
               : std::nullopt;
}

bool isWithinOne(Color4<float> const& color) {
    auto const isPart = [](float value) { return value >= 0 && value <= 1; };
    return isPart(color.r) && isPart(color.g) && isPart(color.b) && isPart(color.a);
}

/// Whether the pixels that a material holds are as many as their sizes say.
bool areSoundTexels(std::uint64_t columns, std::uint64_t rows, std::size_t size) {
    constexpr std::uint64_t LONGEST_SIDE = 1 << 16;
    return (columns == 0 && rows == 0) || (columns > 0 && rows > 0 && columns <= LONGEST_SIDE &&
                                           rows <= LONGEST_SIDE && 4 * columns * rows == size);
}

bool isUsable(TextureTransform const& t) {
    return std::isfinite(t.uu + t.uv + t.vu + t.vv + t.u0 + t.v0);
}

bool isSound(Material const& material) {
    MaterialPicture const& light = material.emissionTexture;
    return isWithinOne(material.tint) && isWithinOne(material.emission) &&
           (!material.specular || isWithinOne(*material.specular)) && material.opacity >= 0 &&
           material.opacity <= 1 && std::isfinite(material.shininess) && material.shininess >= 0 &&
           material.alphaCutoff >= 0 && material.alphaCutoff <= 1 && isUsable(material.textureTransform) &&
           isUsable(light.transform) &&
           areSoundTexels(material.texelColumns, material.texelRows, material.textureBytes.size()) &&
           areSoundTexels(light.columns, light.rows, light.bytes.size());
}

bool differ(Vector3<double> const& v, Vector3<double> const& w) {
    return v.x != w.x || v.y != w.y || v.z != w.z;
}

/// Triangles without three different corners are left out of a model.
bool hasThreeCorners(MeshData::Triangle const& triangle, std::vector<Vector3<double>> const& positions) {
    Vector3<double> const& a = positions[triangle.e0];
    Vector3<double> const& b = positions[triangle.e1];
    Vector3<double> const& c = positions[triangle.e2];
    return differ(a, b) && differ(b, c) && differ(c, a);
}

}  // namespace

std::optional<Fault> MeshData::firstFault(std::string const& file) const {
    std::size_t const count = positions.size();
    if (triangles.empty() && lines.empty() && points.empty()) {
        return Fault{file, "the mesh is empty: it has no triangle, no line and no point"};
    }
    if ((!normals.empty() && normals.size() != count) || colors.size() != count ||
        (!textureCoordinates.empty() && textureCoordinates.size() != count) ||
        std::any_of(scalars.begin(), scalars.end(),
                    [count](MeshScalar const& scalar) { return scalar.values.size() != count; })) {
        return Fault{file, "the mesh is damaged: its vertex lists differ in length"};
    }
    std::optional<std::string> index =
        firstIndexFault("triangle", triangles, count, [](Triangle const& triangle) {
            return std::max({triangle.e0, triangle.e1, triangle.e2});
        });
    if (!index) {
        index = firstIndexFault("line", lines, count,
                                [](MeshLine const& line) { return std::max(line.e0, line.e1); });
    }
    if (!index) {
        index = firstIndexFault("point", points, count, [](unsigned int point) { return point; });
    }
    if (index) {
        return Fault{file, *index};
    }
    if (!triangleMaterials.empty() && triangleMaterials.size() != triangles.size()) {
        return Fault{file, "the mesh is damaged: its triangles and their materials differ in number"};
    }
    for (unsigned int material : triangleMaterials) {
        if (material >= materials.size()) {
            return Fault{file, "the mesh is damaged: a triangle has a material that does not exist"};
        }
    }
    if (!std::all_of(materials.begin(), materials.end(), isSound)) {
        return Fault{file, "the mesh is damaged: a material has a number out of range"};
    }
    std::size_t const lost = firstWhere(count, [this](std::size_t i) { return !isFinite(positions[i]); });
    if (lost < count) {
        return Fault{file,
                     "vertex " + std::to_string(lost) + " has a coordinate that is not a number or infinite"};
    }
    bool const hasSurface = std::any_of(triangles.begin(), triangles.end(), [this](Triangle const& triangle) {
        return hasThreeCorners(triangle, positions);
    });
    bool const hasLine = !hasSurface && std::any_of(lines.begin(), lines.end(), [this](MeshLine const& line) {
        return differ(positions[line.e0], positions[line.e1]);
    });
    if (points.empty() && !hasSurface && !hasLine) {
        return Fault{file, lines.empty() ? "the mesh is empty: no triangle has three different corners"
                           : triangles.empty()
                               ? "the mesh is empty: no line has two different ends"
                               : "the mesh is empty: no triangle has three different corners, "
                                 "and no line two different ends"};
    }
    std::size_t const damaged = firstWhere(count, [this](std::size_t i) {
        Color4<float> const& c = colors[i];
        return (!normals.empty() && !isFinite(normals[i])) || !std::isfinite(c.r + c.g + c.b + c.a);
    });
    if (damaged < count) {
        return Fault{file, "vertex " + std::to_string(damaged) +
                               " has a normal or color that is not a number or infinite"};
    }
    for (std::size_t i = 0; i < textureCoordinates.size(); ++i) {
        if (!std::isfinite(textureCoordinates[i].x) || !std::isfinite(textureCoordinates[i].y)) {
            return Fault{file, "vertex " + std::to_string(i) +
                                   " has a texture coordinate that is not a number or infinite"};
        }
    }
    return std::nullopt;
}

void MeshData::makeVisible() {
    auto const isSeen = [this](unsigned int vertex) { return colors[vertex].a > 0; };
    for (std::size_t t = 0; t < triangles.size(); ++t) {
        std::size_t const material = triangleMaterials.empty() ? 0 : triangleMaterials[t];
        bool const isGone = material < materials.size() && !(materials[material].opacity > 0);
        if (!isGone && (isSeen(triangles[t].e0) || isSeen(triangles[t].e1) || isSeen(triangles[t].e2))) {
            return;
        }
    }
    auto const isLineSeen = [&](MeshLine const& line) { return isSeen(line.e0) || isSeen(line.e1); };
    if (std::any_of(lines.begin(), lines.end(), isLineSeen) ||
        std::any_of(points.begin(), points.end(), isSeen)) {
        return;
    }
    for (Material& material : materials) {
        material.opacity = 1;
    }
    for (Color4<float>& color : colors) {
        color.a = 1;
    }
}

bool MeshData::hasNormal(unsigned int vertex) const {
    if (normals.empty()) {
        return false;
    }
    Vector3<float> const& n = normals[vertex];
    return n.x != 0 || n.y != 0 || n.z != 0;
}

std::size_t MeshData::missingNormalCount() const {
    std::size_t missing = 0;
    for (unsigned int vertex = 0; vertex < positions.size(); ++vertex) {
        missing += hasNormal(vertex) ? 0 : 1;
    }
    return missing;
}

Box3<double> MeshData::box() const {
    return positions.empty() ? Box3<double>{{0, 0, 0}, {0, 0, 0}} : boxAround(positions);
}

}  // namespace vellum::viewport
