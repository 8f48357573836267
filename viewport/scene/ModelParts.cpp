#include "viewport/scene/ModelParts.h"

#include "foundation/basic/ArrayServer.h"
#include "viewport/files/mesh/points.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace vellum::viewport {

namespace {

using Triangle = MeshData::Triangle;

constexpr float CREASE_ANGLE = 0.7F;  // radians, about 40 degrees
constexpr unsigned int NONE = 0xFFFFFFFFU;

template <class T>
Array<T> toArray(std::vector<T> const& from) {
    Array<T> to;
    to.reserve(static_cast<unsigned int>(from.size()), false);
    to.setSize(static_cast<unsigned int>(from.size()));
    std::copy(from.begin(), from.end(), to.begin());
    return to;
}

/// The whole model without seams: what its parts are cut out of.
class Surface {
public:
    Surface(MeshData const& data, Placement const& place) : data(data), turn(place.turn) {
        shape.positions = toArray(data.positions);
        shape.triangles = toArray(data.triangles);
        // Welded before it is placed, which may round different positions to the same one.
        kept = shape.weld();
        for (Vector3<double>& p : shape.positions) {
            p = place(p);
        }
        if (data.normals.empty()) {
            shape.workCornerNormals(CREASE_ANGLE);
        } else {
            _takeNormals();
        }
    }

    std::size_t triangleCount() const { return kept.size(); }
    MeshImporter const& import() const { return shape; }  ///< with corner normals
    Triangle const& corners(unsigned int t) const { return shape.triangles[t]; }

    /// The triangle in the vertices of the file.
    Triangle const& source(unsigned int t) const { return data.triangles[kept[t]]; }

    unsigned int material(unsigned int t) const {
        return data.triangleMaterials.empty() ? 0 : data.triangleMaterials[kept[t]];
    }

    /// The normals of the file at the corners of a triangle. Where the file has none they are those of the
    /// surface without hard edges: a vertex of the file has one normal, as it has one color.
    std::array<Vector3<double>, 3> vertexNormals(unsigned int t) {
        Triangle const& vertices = source(t);
        return {_vertexNormal(t, 0, vertices.e0), _vertexNormal(t, 1, vertices.e1),
                _vertexNormal(t, 2, vertices.e2)};
    }

    Box3<double> box() const { return boxAround(shape.positions); }

private:
    void _takeNormals() {
        // Less than one degree: normals of the same direction, but rounded in different faces.
        constexpr double ALIKE_COSINE = 0.9999F;
        shape.cornerNormals.reserve(shape.triangles.size(), false);
        for (unsigned int t = 0; t < shape.triangles.size(); ++t) {
            std::array<Vector3<double>, 3> const n = vertexNormals(t);
            shape.cornerNormals.pushBack({n[0], n[1], n[2], {0, 0, 0}});
        }
        shape.shareNormals(ALIKE_COSINE);
    }

    Vector3<double> _vertexNormal(unsigned int t, unsigned int corner, unsigned int vertex) {
        if (data.hasNormal(vertex)) {
            return turn(convert<double>(data.normals[vertex]));
        }
        if (smooth.triangles.size() == 0) {
            smooth.positions = shape.positions;
            smooth.triangles = shape.triangles;
            smooth.workCornerNormals(Mesh::NO_CREASE);
        }
        Tuple4<Vector3<double>> const& n = smooth.cornerNormals[t];
        return corner == 0 ? n.e0 : corner == 1 ? n.e1 : n.e2;
    }

    MeshData const& data;
    Turn turn;
    MeshImporter shape;
    MeshImporter smooth;       // the same shape with smooth normals; empty until one is asked for
    Array<unsigned int> kept;  // by triangle, its index in the file
};

/// Numbers the vertices that a part uses from 0 on, in the order of their first use.
class Numbering {
public:
    explicit Numbering(std::size_t count) : numbers(count, NONE) {}

    unsigned int operator()(unsigned int old) {
        if (numbers[old] == NONE) {
            numbers[old] = static_cast<unsigned int>(order.size());
            order.push_back(old);
        }
        return numbers[old];
    }
    Triangle operator()(Triangle const& t) {
        unsigned int const a = (*this)(t.e0);
        unsigned int const b = (*this)(t.e1);
        return {a, b, (*this)(t.e2)};
    }
    std::vector<unsigned int> const& used() const { return order; }

    /// Costs the time of the numbers given, not of all vertices: a model may have thousands of small parts.
    void clear() {
        for (unsigned int old : order) {
            numbers[old] = NONE;
        }
        order.clear();
    }

private:
    std::vector<unsigned int> numbers;
    std::vector<unsigned int> order;
};

/// The texture coordinates of a triangle onto which the texture is projected along an axis. The texture
/// covers the longest side of the box.
std::array<Vector2<float>, 3> projected(Array<Vector3<double>> const& positions, Triangle const& t,
                                        Box3<double> const& box) {
    Vector3<double> const points[3] = {positions[t.e0], positions[t.e1], positions[t.e2]};
    Vector3<double> const normal = cross(points[1] - points[0], points[2] - points[0]);
    double const sizes[3] = {std::abs(normal.x), std::abs(normal.y), std::abs(normal.z)};
    Vector3<double> const extent = box.max - box.min;
    double const longest = std::max({extent.x, extent.y, extent.z});
    double const scale = longest > 0 ? 1 / longest : 0;
    std::array<Vector2<float>, 3> coordinates{};
    for (std::size_t k = 0; k < 3; ++k) {
        Vector3<double> const p = (points[k] - box.min) * scale;
        double u = normal.z < 0 ? -p.x : p.x;
        double v = p.y;
        if (sizes[0] > sizes[2] && sizes[0] >= sizes[1]) {
            u = normal.x > 0 ? -p.z : p.z;
        } else if (sizes[1] > sizes[2]) {
            u = p.x;
            v = normal.y > 0 ? -p.z : p.z;
        }
        coordinates[k] = {static_cast<float>(u), static_cast<float>(v)};
    }
    return coordinates;
}

/// Whether some of a picture is not opaque.
bool hasHoles(VL_Image const& image) {
    if (image.pixdepth() != 4 * image.bitdepth()) {
        return false;
    }
    std::size_t const count = std::size_t(image.width()) * image.height();
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const place = 4 * i + 3;
        bool const isOpaque = image.bitdepth() == 8    ? image.getBuffer()[place] == 0xFF
                              : image.bitdepth() == 16 ? image.getBuffer16()[place] == 0xFFFF
                                                       : image.getBuffer32()[place] >= 1;
        if (!isOpaque) {
            return true;
        }
    }
    return false;
}

unsigned int sizeOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->size : 0;
}

/// Makes one part after the other from a surface. The numberings are as large as the whole model, so they are
/// made once.
class PartMaker {
public:
    PartMaker(MeshData const& data, Surface& surface, std::shared_ptr<VL_Image const> const& texture)
        : data(data)
        , surface(surface)
        , texture(texture)
        , vertices(surface.import().positions.size())
        , fileVertices(data.positions.size()) {}

    ModelPart make(std::vector<unsigned int> const& members) {
        unsigned int const material = surface.material(members.front());
        ModelPart part;
        part.color = data.colors[surface.source(members.front()).e0];
        part.texture = texture;
        if (texture == nullptr && material < data.materials.size()) {
            part.texture = data.materials[material].image;
        }
        if (part.texture != nullptr) {
            part.color = texture != nullptr ? Color4<float>{1, 1, 1, 1} : data.materials[material].tint;
        }
        if (material < data.materials.size()) {
            _takeMaterial(part, data.materials[material]);
        }
        part.import = _cut(members);
        part.mesh = std::make_unique<Mesh>();
        part.import->toMesh(*part.mesh);
        part.hasHardNormals = sizeOf(part.mesh->vertexNormals()) > sizeOf(part.mesh->positions());
        if (part.texture != nullptr) {
            _fillCoordinates(*part.mesh, ModelPart::CHANNEL, members, _transformOf(material));
        }
        if (part.emissionMap != nullptr) {
            _takeLightCoordinates(part, members);
        }
        _fillColors(part, members);
        return part;
    }

private:
    void _takeMaterial(ModelPart& part, Material const& material) {
        part.color.a *= material.opacity;
        // Without the picture of where it shines, all of the surface would.
        bool const hasLightMap = !material.emissionTexture.name.empty() || material.emissionImage != nullptr;
        part.emission = hasLightMap ? Color4<float>{0, 0, 0, 1} : material.emission;
        bool const hasPlaces = texture == nullptr && !data.textureCoordinates.empty();
        part.emissionMap = hasPlaces ? material.emissionImage : nullptr;
        part.specular = material.specular;
        part.shininess = material.shininess;
        if (part.texture != nullptr && part.texture == material.image) {
            part.alphaMode = material.alphaMode;
            part.alphaCutoff = material.alphaCutoff;
            part.isBlended = part.alphaMode == AlphaMode::BLEND && _hasHoles(*part.texture);
        }
        part.isBlended = part.isBlended || material.opacity < 1;
    }

    bool _hasHoles(VL_Image const& image) {
        auto const [entry, isNew] = holes.emplace(&image, false);
        if (isNew) {
            entry->second = hasHoles(image);
        }
        return entry->second;
    }

    std::unique_ptr<MeshImporter> _cut(std::vector<unsigned int> const& members) {
        vertices.clear();
        auto part = std::make_unique<MeshImporter>();
        part->triangles.reserve(static_cast<unsigned int>(members.size()), false);
        part->cornerNormals.reserve(static_cast<unsigned int>(members.size()), false);
        for (unsigned int t : members) {
            part->triangles.pushBack(vertices(surface.corners(t)));
            part->cornerNormals.pushBack(surface.import().cornerNormals[t]);
        }
        part->positions.reserve(static_cast<unsigned int>(vertices.used().size()), false);
        for (unsigned int old : vertices.used()) {
            part->positions.pushBack(surface.import().positions[old]);
        }
        return part;
    }

    /// Of the texture. One of the user's own lies as the coordinates of the vertices say.
    TextureTransform _transformOf(unsigned int material) const {
        return texture == nullptr && material < data.materials.size()
                   ? data.materials[material].textureTransform
                   : TextureTransform();
    }

    void _takeLightCoordinates(ModelPart& part, std::vector<unsigned int> const& members) {
        unsigned int const material = surface.material(members.front());
        TextureTransform const transform = data.materials[material].emissionTexture.transform;
        bool const isAlike = part.texture != nullptr && transform == _transformOf(material);
        part.emissionChannel = isAlike ? ModelPart::CHANNEL : ModelPart::LIGHT_CHANNEL;
        if (!isAlike) {
            _fillCoordinates(*part.mesh, part.emissionChannel, members, transform);
        }
    }

    void _fillCoordinates(Mesh& mesh, char const* channel, std::vector<unsigned int> const& members,
                          TextureTransform const& transform) {
        std::vector<Triangle> triangles;
        std::vector<Vector2<float>> coordinates;
        if (data.textureCoordinates.empty()) {
            Box3<double> const box = surface.box();
            for (unsigned int t : members) {
                unsigned int const base = static_cast<unsigned int>(coordinates.size());
                triangles.push_back({base, base + 1, base + 2});
                std::array<Vector2<float>, 3> const three =
                    projected(surface.import().positions, surface.corners(t), box);
                coordinates.insert(coordinates.end(), three.begin(), three.end());
            }
        } else {
            fileVertices.clear();
            for (unsigned int t : members) {
                triangles.push_back(fileVertices(surface.source(t)));
            }
            for (unsigned int old : fileVertices.used()) {
                coordinates.push_back(transform.apply(data.textureCoordinates[old]));
            }
        }
        mesh.addNamedArray(MeshArrayInf_ns::TRINDEXED, channel, toArray(triangles));
        mesh.addNamedArray(MeshArrayInf_ns::PER_FACE, channel, toArray(coordinates));
    }

    /// Does nothing where one color is enough and nothing shines through.
    void _fillColors(ModelPart& part, std::vector<unsigned int> const& members) {
        fileVertices.clear();
        std::vector<Triangle> triangles;
        Color4<float> const first = data.colors[surface.source(members.front()).e0];
        unsigned int const material = surface.material(members.front());
        float const opacity = material < data.materials.size() ? data.materials[material].opacity : 1;
        bool isUniform = true;
        for (unsigned int t : members) {
            Triangle const& source = surface.source(t);
            triangles.push_back(fileVertices(source));
            for (unsigned int vertex : {source.e0, source.e1, source.e2}) {
                isUniform = isUniform && data.colors[vertex] == first;
                part.isBlended = part.isBlended || (texture == nullptr && data.colors[vertex].a < 1);
            }
        }
        // Without the file's own texture the user's covers all.
        bool const isColored = !isUniform && texture == nullptr;
        if (!isColored && !part.isBlended) {
            return;
        }
        std::vector<unsigned int> const& used = fileVertices.used();
        std::vector<Vector3<double>> positions(used.size());
        std::vector<Vector3<float>> normals(used.size());
        std::vector<Color4<float>> colors(used.size());
        for (std::size_t i = 0; i < used.size(); ++i) {
            Color4<float> const& own = data.colors[used[i]];
            colors[i] = isColored ? own : part.color;
            colors[i].a = (texture == nullptr ? own.a : 1) * opacity;
        }
        for (std::size_t i = 0; i < members.size(); ++i) {
            Triangle const& corners = surface.corners(members[i]);
            std::array<Vector3<double>, 3> const cornerNormals = surface.vertexNormals(members[i]);
            unsigned int const places[3] = {triangles[i].e0, triangles[i].e1, triangles[i].e2};
            unsigned int const welded[3] = {corners.e0, corners.e1, corners.e2};
            for (std::size_t k = 0; k < 3; ++k) {
                positions[places[k]] = surface.import().positions[welded[k]];
                normals[places[k]] = convert<float>(cornerNormals[k]);
            }
        }
        part.vertices = toArray(positions);
        part.triangles = toArray(triangles);
        part.normals = toArray(normals);
        part.colors = toArray(colors);
    }

    MeshData const& data;
    Surface& surface;
    std::shared_ptr<VL_Image const> const& texture;
    std::map<VL_Image const*, bool> holes;  // whether a texture has some
    Numbering vertices;                     // of the surface
    Numbering fileVertices;                 // which carry colors and texture coordinates
};

}  // namespace

std::vector<ModelPart> makeParts(MeshData const& data, Placement const& place,
                                 std::shared_ptr<VL_Image const> const& texture) {
    if (data.triangles.empty()) {
        return {};
    }
    Surface surface(data, place);
    std::vector<std::vector<unsigned int>> members(std::max<std::size_t>(1, data.materials.size()));
    for (unsigned int t = 0; t < surface.triangleCount(); ++t) {
        members[surface.material(t)].push_back(t);
    }
    PartMaker maker(data, surface, texture);
    std::vector<ModelPart> parts;
    for (std::vector<unsigned int> const& group : members) {
        if (!group.empty()) {
            parts.push_back(maker.make(group));
        }
    }
    return parts;
}

}  // namespace vellum::viewport
