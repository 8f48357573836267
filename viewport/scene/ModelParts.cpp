#include "viewport/scene/ModelParts.h"

#include "foundation/basic/ArrayServer.h"
#include "foundation/basic/large_pages.h"
#include "foundation/basic/threads.h"
#include "foundation/geometry/SharedNormals.h"
#include "viewport/files/mesh/points.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <map>

namespace vellum::viewport {

namespace {

using Triangle = MeshData::Triangle;

constexpr float CREASE_ANGLE = 0.7F;  // radians, about 40 degrees
constexpr unsigned int NONE = 0xFFFFFFFFU;
constexpr std::size_t RANGE = 1 << 14;  // of what is done on one core

template <class T>
Array<T> toArray(std::vector<T> const& from) {
    Array<T> to;
    to.reserve(static_cast<unsigned int>(from.size()), false);
    preferLargePages(to.data(), from.size() * sizeof(T));
    to.setSize(static_cast<unsigned int>(from.size()));
    std::copy(from.begin(), from.end(), to.begin());
    return to;
}

unsigned int sizeOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->size : 0;
}

template <class T>
T const* elementsOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->as<T>() : nullptr;
}

/// The different normals that were met at each vertex so far. Those of the same direction, but rounded in
/// different faces, are one: the first of them.
class NormalsAtVertices {
public:
    /// \param normals where they are listed; must outlive it
    NormalsAtVertices(std::size_t vertexCount, std::vector<Vector3<float>>& normals)
        : firsts(vertexCount, NONE), normals(normals) {}

    /// \return the place of the normal in the list
    unsigned int findOrAdd(unsigned int vertex, Vector3<float> const& normal) {
        constexpr double ALIKE_COSINE = 0.9999F;  // less than one degree
        unsigned int* link = &firsts[vertex];
        while (*link != NONE) {
            if (dot(convert<double>(normals[*link]), convert<double>(normal)) > ALIKE_COSINE) {
                return *link;
            }
            link = &nexts[*link];
        }
        *link = static_cast<unsigned int>(normals.size());
        normals.push_back(normal);
        nexts.push_back(NONE);
        return static_cast<unsigned int>(normals.size()) - 1;
    }

private:
    std::vector<unsigned int> firsts;  // by vertex, in the list
    std::vector<unsigned int> nexts;   // by normal, the next one of the same vertex
    std::vector<Vector3<float>>& normals;
};

/// The whole model without seams: what its parts are cut out of.
class Surface {
public:
    Surface(MeshData const& data, Placement const& place) : data(data), turn(place.turn) {
        shape.positions = toArray(data.positions);
        shape.triangles = toArray(data.triangles);
        // Welded before it is placed, which may round different positions to the same one.
        kept = shape.weld();
        // Seams are most of the vertices of some formats.
        shape.positions.reserve(shape.positions.size(), true);
        forRanges(shape.positions.size(), RANGE, [&](std::size_t begin, std::size_t end) {
            Vector3<double>* const positions = shape.positions.data();
            std::transform(positions + begin, positions + end, positions + begin, place);
        });
    }

    std::size_t triangleCount() const { return kept.size(); }
    Array<Vector3<double>> const& positions() const { return shape.positions; }
    Triangle const& corners(unsigned int t) const { return shape.triangles[t]; }

    /// The triangle in the vertices of the file.
    Triangle const& source(unsigned int t) const { return data.triangles[kept[t]]; }

    unsigned int material(unsigned int t) const {
        return data.triangleMaterials.empty() ? 0 : data.triangleMaterials[kept[t]];
    }

    /// The normals at the corners of a triangle, with hard edges.
    std::array<Vector3<float>, 3> cornerNormals(unsigned int t) {
        if (normalTriangles.size() == 0) {
            data.normals.empty() ? _workNormals() : _takeNormals();
        }
        Triangle const& n = normalTriangles[t];
        return {normals[n.e0], normals[n.e1], normals[n.e2]};
    }

    /// The normals of the file at the corners of a triangle. Where the file has none they are those of the
    /// surface without hard edges: a vertex of the file has one normal, as it has one color.
    std::array<Vector3<float>, 3> vertexNormals(unsigned int t) {
        Triangle const& vertices = source(t);
        Triangle const& welded = corners(t);
        return {_vertexNormal(vertices.e0, welded.e0), _vertexNormal(vertices.e1, welded.e1),
                _vertexNormal(vertices.e2, welded.e2)};
    }

    Box3<double> box() const { return boxAround(shape.positions); }

private:
    void _takeNormals() {
        NormalsAtVertices known(shape.positions.size(), normals);
        normalTriangles.reserve(shape.triangles.size(), false);
        for (unsigned int t = 0; t < shape.triangles.size(); ++t) {
            std::array<Vector3<float>, 3> const n = vertexNormals(t);
            Triangle const& at = corners(t);
            unsigned int const a = known.findOrAdd(at.e0, n[0]);
            unsigned int const b = known.findOrAdd(at.e1, n[1]);
            normalTriangles.pushBack({a, b, known.findOrAdd(at.e2, n[2])});
        }
    }

    void _workNormals() {
        Mesh mesh;
        normals = _worked(mesh, CREASE_ANGLE);
        auto const* const worked = elementsOf<Triangle>(mesh.normalTriangles());
        normalTriangles.reserve(shape.triangles.size(), false);
        normalTriangles.setSize(shape.triangles.size());
        std::copy(worked, worked + shape.triangles.size(), normalTriangles.begin());
    }

    std::vector<Vector3<float>> _worked(Mesh& mesh, float creaseAngle) const {
        mesh.setPositions(shape.positions);
        mesh.setTriangles(shape.triangles);
        mesh.workNormals(creaseAngle);
        auto const* const worked = elementsOf<Vector3<float>>(mesh.vertexNormals());
        return {worked, worked + sizeOf(mesh.vertexNormals())};
    }

    Vector3<float> _vertexNormal(unsigned int vertex, unsigned int welded) {
        if (data.hasNormal(vertex)) {
            return turn(data.normals[vertex]);
        }
        if (smooth.empty()) {
            Mesh mesh;
            smooth = _worked(mesh, Mesh::NO_CREASE);
        }
        return smooth[welded];
    }

    MeshData const& data;
    Turn turn;
    MeshImporter shape;                  // positions and triangles
    std::vector<Vector3<float>> smooth;  // by vertex; empty until one is asked for
    Array<unsigned int> kept;            // by triangle, its index in the file

    // Of the corners, with hard edges; empty until they are asked for.
    std::vector<Vector3<float>> normals;
    Array<Triangle> normalTriangles;
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

/// Makes one part after the other from a surface. The numberings are as large as the whole model, so they are
/// made once.
class PartMaker {
public:
    PartMaker(MeshData const& data, Surface& surface, std::shared_ptr<VL_Image const> const& texture,
              PartImports imports)
        : data(data)
        , surface(surface)
        , texture(texture)
        , imports(imports)
        , vertices(surface.positions().size())
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
        part.mesh = std::make_unique<Mesh>();
        _fillMesh(part, members);
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

    void _fillMesh(ModelPart& part, std::vector<unsigned int> const& members) {
        vertices.clear();
        auto import = std::make_unique<MeshImporter>();
        import->triangles.reserve(static_cast<unsigned int>(members.size()), false);
        preferLargePages(import->triangles.data(), members.size() * sizeof(Triangle));
        for (unsigned int t : members) {
            import->triangles.pushBack(vertices(surface.corners(t)));
        }
        import->positions.reserve(static_cast<unsigned int>(vertices.used().size()), false);
        preferLargePages(import->positions.data(), vertices.used().size() * sizeof(Vector3<double>));
        for (unsigned int old : vertices.used()) {
            import->positions.pushBack(surface.positions()[old]);
        }
        Mesh& mesh = *part.mesh;
        mesh.setPositions(import->positions);
        mesh.setTriangles(import->triangles);
        if (imports == PartImports::DROPPED) {
            import.reset();
        }
        mesh.workAdjacency();
        // Of a whole surface they need not be cut out of those of a larger one.
        bool const isWhole = members.size() == surface.triangleCount();
        if (isWhole && data.normals.empty() && imports == PartImports::DROPPED) {
            mesh.workNormals(CREASE_ANGLE);
            _shareNormals(mesh);
        } else {
            _cutNormals(mesh, members, import.get());
            mesh.workFaceNormals();
        }
        mesh.workBox();
        part.import = std::move(import);
    }

    /// Takes the normals at the corners from those of the surface.
    void _cutNormals(Mesh& mesh, std::vector<unsigned int> const& members, MeshImporter* import) {
        auto const* const triangles = elementsOf<Triangle>(mesh.triangles());
        SharedNormals shared(sizeOf(mesh.positions()));
        Array<Triangle> normalTriangles;
        normalTriangles.reserve(static_cast<unsigned int>(members.size()), false);
        if (import != nullptr) {
            import->cornerNormals.reserve(static_cast<unsigned int>(members.size()), false);
        }
        for (std::size_t i = 0; i < members.size(); ++i) {
            std::array<Vector3<float>, 3> const n = surface.cornerNormals(members[i]);
            unsigned int const a = shared.indexOf(triangles[i].e0, n[0]);
            unsigned int const b = shared.indexOf(triangles[i].e1, n[1]);
            normalTriangles.pushBack({a, b, shared.indexOf(triangles[i].e2, n[2])});
            if (import != nullptr) {
                import->cornerNormals.pushBack(
                    {convert<double>(n[0]), convert<double>(n[1]), convert<double>(n[2]), Vector3<double> {
                         0,
                         0,
                         0
                     }});
            }
        }
        mesh.setVertexNormals(toArray(shared.all()));
        mesh.setNormalTriangles(normalTriangles);
    }

    /// Makes one of the normals at a vertex that are equal though a hard edge is between them.
    static void _shareNormals(Mesh& mesh) {
        if (sizeOf(mesh.vertexNormals()) == sizeOf(mesh.positions())) {
            return;
        }
        unsigned int const count = mesh.triangleCount();
        auto const* const triangles = elementsOf<Triangle>(mesh.triangles());
        auto const* const corners = elementsOf<Triangle>(mesh.normalTriangles());
        auto const* const normals = elementsOf<Vector3<float>>(mesh.vertexNormals());
        SharedNormals shared(sizeOf(mesh.positions()));
        Array<Triangle> normalTriangles;
        normalTriangles.reserve(count, false);
        for (unsigned int t = 0; t < count; ++t) {
            unsigned int const a = shared.indexOf(triangles[t].e0, normals[corners[t].e0]);
            unsigned int const b = shared.indexOf(triangles[t].e1, normals[corners[t].e1]);
            normalTriangles.pushBack({a, b, shared.indexOf(triangles[t].e2, normals[corners[t].e2])});
        }
        mesh.setVertexNormals(toArray(shared.all()));
        mesh.setNormalTriangles(normalTriangles);
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
                    projected(surface.positions(), surface.corners(t), box);
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

    /// What the colors at the corners of some triangles are.
    struct Facts {
        bool isUniform;
        bool isOpaque;
    };

    Facts _colorFacts(std::vector<unsigned int> const& members) const {
        Color4<float> const first = data.colors[surface.source(members.front()).e0];
        std::atomic<bool> isUniform{true};
        std::atomic<bool> isOpaque{true};
        forRanges(members.size(), RANGE, [&](std::size_t begin, std::size_t end) {
            Facts facts{true, true};
            for (std::size_t i = begin; i < end; ++i) {
                Triangle const& source = surface.source(members[i]);
                for (unsigned int vertex : {source.e0, source.e1, source.e2}) {
                    facts.isUniform = facts.isUniform && data.colors[vertex] == first;
                    facts.isOpaque = facts.isOpaque && !(data.colors[vertex].a < 1);
                }
            }
            if (!facts.isUniform) {
                isUniform.store(false, std::memory_order_relaxed);
            }
            if (!facts.isOpaque) {
                isOpaque.store(false, std::memory_order_relaxed);
            }
        });
        return {isUniform, isOpaque};
    }

    /// Does nothing where one color is enough and nothing shines through.
    void _fillColors(ModelPart& part, std::vector<unsigned int> const& members) {
        unsigned int const material = surface.material(members.front());
        float const opacity = material < data.materials.size() ? data.materials[material].opacity : 1;
        Facts const facts = _colorFacts(members);
        part.isBlended = part.isBlended || (texture == nullptr && !facts.isOpaque);
        // Without the file's own texture the user's covers all.
        bool const isColored = !facts.isUniform && texture == nullptr;
        if (!isColored && !part.isBlended) {
            return;
        }
        fileVertices.clear();
        part.triangles.reserve(static_cast<unsigned int>(members.size()), false);
        for (unsigned int t : members) {
            part.triangles.pushBack(fileVertices(surface.source(t)));
        }
        std::vector<unsigned int> const& used = fileVertices.used();
        auto const count = static_cast<unsigned int>(used.size());
        part.vertices.reserve(count, false);
        part.vertices.setSize(count);
        part.normals.reserve(count, false);
        part.normals.setSize(count);
        part.colors.reserve(count, false);
        part.colors.setSize(count);
        for (unsigned int i = 0; i < count; ++i) {
            Color4<float> const& own = data.colors[used[i]];
            part.colors[i] = isColored ? own : part.color;
            part.colors[i].a = (texture == nullptr ? own.a : 1) * opacity;
        }
        for (unsigned int i = 0; i < part.triangles.size(); ++i) {
            Triangle const& corners = surface.corners(members[i]);
            std::array<Vector3<float>, 3> const cornerNormals = surface.vertexNormals(members[i]);
            Triangle const& places = part.triangles[i];
            unsigned int const three[3] = {places.e0, places.e1, places.e2};
            unsigned int const welded[3] = {corners.e0, corners.e1, corners.e2};
            for (std::size_t k = 0; k < 3; ++k) {
                part.vertices[three[k]] = surface.positions()[welded[k]];
                part.normals[three[k]] = cornerNormals[k];
            }
        }
    }

    MeshData const& data;
    Surface& surface;
    std::shared_ptr<VL_Image const> const& texture;
    PartImports imports;
    std::map<VL_Image const*, bool> holes;  // whether a texture has some
    Numbering vertices;                     // of the surface
    Numbering fileVertices;                 // which carry colors and texture coordinates
};

}  // namespace

std::vector<ModelPart> makeParts(MeshData const& data, Placement const& place,
                                 std::shared_ptr<VL_Image const> const& texture, PartImports imports) {
    if (data.triangles.empty()) {
        return {};
    }
    Surface surface(data, place);
    std::vector<std::vector<unsigned int>> members(std::max<std::size_t>(1, data.materials.size()));
    if (members.size() == 1) {
        members.front().reserve(surface.triangleCount());
    }
    for (unsigned int t = 0; t < surface.triangleCount(); ++t) {
        members[surface.material(t)].push_back(t);
    }
    PartMaker maker(data, surface, texture, imports);
    std::vector<ModelPart> parts;
    for (std::vector<unsigned int> const& group : members) {
        if (!group.empty()) {
            parts.push_back(maker.make(group));
        }
    }
    return parts;
}

}  // namespace vellum::viewport
