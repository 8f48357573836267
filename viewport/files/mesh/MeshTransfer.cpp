#include "viewport/files/mesh/MeshTransfer.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace vellum::viewport {

namespace {

enum Content : std::uint32_t { CONTENT_MESH = 1, CONTENT_FAULT = 2 };
enum Flags : std::uint32_t {
    HAS_VERTEX_COLORS = 1,
    HAS_TEXTURE_COORDINATES = 2,
    HAS_MATERIALS = 4,
    HAS_NORMALS = 8
};

struct Header {
    char magic[8];
    std::uint32_t content;
    std::uint32_t flags;
    std::uint32_t partCount;
    std::uint32_t textLength;  // of the mesh's name or the fault's message
    std::uint64_t vertexCount;
    std::uint64_t triangleCount;
    std::uint64_t lineCount;
    std::uint64_t pointCount;
    std::uint64_t scalarCount;
    std::uint64_t detailBytes;
};

/// Of one material; its texts and bytes follow.
struct MaterialHeader {
    Color4<float> tint;
    Color4<float> emission;
    Color4<float> specular;
    TextureTransform textureTransform;
    TextureTransform emissionTransform;
    float opacity;
    float shininess;
    float alphaCutoff;
    std::uint32_t alphaMode;
    std::uint32_t hasSpecular;
    std::uint32_t isTwoSided;
    std::uint32_t texelColumns;
    std::uint32_t texelRows;
    std::uint32_t emissionColumns;
    std::uint32_t emissionRows;
};

constexpr char MAGIC[8] = {'v', 'l', 'm', 'e', 's', 'h', '0', '6'};
constexpr std::uint64_t MOST_DETAIL_BYTES = std::uint64_t(1) << 40;
constexpr std::uint64_t MOST_SCALARS = std::uint64_t(1) << 20;
constexpr char DAMAGED_MESSAGE[] = "the importer gave a damaged result";

Header makeHeader(Content const& content, std::string const& text) {
    Header header{};
    std::memcpy(header.magic, MAGIC, sizeof MAGIC);
    header.content = content;
    header.textLength = static_cast<std::uint32_t>(text.size());
    return header;
}

template <class T>
void putAll(PutBytes const& put, std::vector<T> const& values) {
    put(values.data(), values.size() * sizeof(T));
}

/// Takes from a buffer whose size has been checked against all that will be taken.
class Reader {
public:
    explicit Reader(unsigned char const* bytes) : next(bytes) {}

    template <class T>
    std::vector<T> take(std::uint64_t count) {
        std::vector<T> values(static_cast<std::size_t>(count));
        if (count > 0) {
            std::memcpy(values.data(), next, values.size() * sizeof(T));
            next += values.size() * sizeof(T);
        }
        return values;
    }

    std::string takeText(std::size_t length) {
        std::string text(reinterpret_cast<char const*>(next), length);
        next += length;
        return text;
    }

private:
    unsigned char const* next;
};

std::uint64_t bytesPerTriangle(std::uint32_t flags) {
    return sizeof(MeshData::Triangle) + ((flags & HAS_MATERIALS) != 0 ? sizeof(unsigned int) : 0);
}

std::uint64_t bytesPerVertex(std::uint32_t flags) {
    return sizeof(Vector3<double>) + sizeof(Color4<float>) +
           ((flags & HAS_NORMALS) != 0 ? sizeof(Vector3<float>) : 0) +
           ((flags & HAS_TEXTURE_COORDINATES) != 0 ? sizeof(Vector2<float>) : 0);
}

/// The size that the header promises, or nothing when it could not be that of any buffer.
bool promisedSize(Header const& header, std::uint64_t& size) {
    // With counts within these bounds the sums here stay far inside 64 bits.
    if (header.vertexCount > MeshData::LARGEST_COUNT || header.triangleCount > MeshData::LARGEST_COUNT) {
        return false;
    }
    if (header.lineCount > MeshData::LARGEST_COUNT || header.pointCount > MeshData::LARGEST_COUNT ||
        header.scalarCount > MOST_SCALARS || header.detailBytes > MOST_DETAIL_BYTES) {
        return false;
    }
    size = sizeof(Header) + header.textLength + header.vertexCount * bytesPerVertex(header.flags) +
           header.triangleCount * bytesPerTriangle(header.flags) + header.lineCount * sizeof(MeshLine) +
           header.pointCount * sizeof(unsigned int) +
           header.scalarCount * header.vertexCount * sizeof(double) + header.detailBytes;
    return true;
}

// == Details ==
// What a mesh has few of: names of scalars, animations, materials. Lists have their length in front.

/// Appends numbers and lists to bytes.
class DetailWriter {
public:
    void put(void const* data, std::size_t size) {
        unsigned char const* const first = static_cast<unsigned char const*>(data);
        bytes.insert(bytes.end(), first, first + size);
    }

    template <class T>
    void put(T const& value) {
        put(&value, sizeof value);
    }

    template <class List>
    void putList(List const& list) {
        put(static_cast<std::uint64_t>(list.size()));
        put(list.data(), list.size());
    }

    std::vector<unsigned char> take() { return std::move(bytes); }

private:
    std::vector<unsigned char> bytes;
};

/// Takes them again. After the first value that the bytes do not hold, none is sound any more.
class DetailReader {
public:
    explicit DetailReader(std::vector<unsigned char> const& bytes) : next(bytes.data()), left(bytes.size()) {}

    template <class T>
    T take() {
        T value{};
        if (_has(sizeof value)) {
            std::memcpy(&value, next, sizeof value);
            _skip(sizeof value);
        }
        return value;
    }

    /// Of bytes or characters.
    template <class List>
    List takeList() {
        List list;
        std::uint64_t const size = take<std::uint64_t>();
        if (_has(size)) {
            list.assign(next, next + static_cast<std::size_t>(size));
            _skip(static_cast<std::size_t>(size));
        }
        return list;
    }

    bool isSound() const { return sound; }
    bool isAtEnd() const { return left == 0; }

private:
    bool _has(std::uint64_t size) {
        sound = sound && size <= left;
        return sound;
    }
    void _skip(std::size_t size) {
        next += size;
        left -= size;
    }

    unsigned char const* next;
    std::size_t left;
    bool sound = true;
};

void put(DetailWriter& writer, Material const& material) {
    MaterialHeader header{};
    header.tint = material.tint;
    header.emission = material.emission;
    header.specular = material.specular.value_or(Color4<float>{});
    header.hasSpecular = material.specular ? 1 : 0;
    header.textureTransform = material.textureTransform;
    header.opacity = material.opacity;
    header.shininess = material.shininess;
    header.alphaCutoff = material.alphaCutoff;
    header.alphaMode = static_cast<std::uint32_t>(material.alphaMode);
    header.isTwoSided = material.isTwoSided ? 1 : 0;
    header.texelColumns = material.texelColumns;
    header.texelRows = material.texelRows;
    header.emissionTransform = material.emissionTexture.transform;
    header.emissionColumns = material.emissionTexture.columns;
    header.emissionRows = material.emissionTexture.rows;
    writer.put(header);
    writer.putList(material.name);
    writer.putList(material.emissionTexture.name);
    writer.putList(material.emissionTexture.bytes);
    writer.putList(material.opacityTexture);
    writer.putList(material.texture);
    writer.putList(material.textureBytes);
}

/// False where the bytes are not those of a material. Its numbers are checked with those of the mesh.
bool take(DetailReader& reader, Material& material) {
    auto const header = reader.take<MaterialHeader>();
    if (header.alphaMode > static_cast<std::uint32_t>(AlphaMode::BLEND)) {
        return false;
    }
    material.tint = header.tint;
    material.emission = header.emission;
    if (header.hasSpecular != 0) {
        material.specular = header.specular;
    }
    material.textureTransform = header.textureTransform;
    material.opacity = header.opacity;
    material.shininess = header.shininess;
    material.alphaCutoff = header.alphaCutoff;
    material.alphaMode = static_cast<AlphaMode>(header.alphaMode);
    material.isTwoSided = header.isTwoSided != 0;
    material.texelColumns = header.texelColumns;
    material.texelRows = header.texelRows;
    material.emissionTexture.transform = header.emissionTransform;
    material.emissionTexture.columns = header.emissionColumns;
    material.emissionTexture.rows = header.emissionRows;
    material.name = reader.takeList<std::string>();
    material.emissionTexture.name = reader.takeList<std::string>();
    material.emissionTexture.bytes = reader.takeList<std::vector<unsigned char>>();
    material.opacityTexture = reader.takeList<std::string>();
    material.texture = reader.takeList<std::string>();
    material.textureBytes = reader.takeList<std::vector<unsigned char>>();
    return reader.isSound();
}

std::vector<unsigned char> encodeDetails(MeshData const& mesh) {
    DetailWriter writer;
    writer.put(static_cast<std::uint32_t>(mesh.up));
    for (MeshScalar const& scalar : mesh.scalars) {
        writer.putList(scalar.name);
        writer.putList(scalar.unit);
    }
    writer.put(static_cast<std::uint64_t>(mesh.notes.size()));
    for (std::string const& note : mesh.notes) {
        writer.putList(note);
    }
    writer.put(static_cast<std::uint64_t>(mesh.animations.size()));
    for (MeshAnimation const& animation : mesh.animations) {
        writer.putList(animation.name);
        writer.put(animation.duration);
    }
    for (Material const& material : mesh.materials) {
        put(writer, material);
    }
    return writer.take();
}

/// False where the bytes are not whole details. The mesh has its scalars already, without names.
bool decodeDetails(std::vector<unsigned char> const& bytes, MeshData& mesh) {
    DetailReader reader(bytes);
    auto const up = reader.take<std::uint32_t>();
    if (up > static_cast<std::uint32_t>(UpAxis::MINUS_Z)) {
        return false;
    }
    mesh.up = static_cast<UpAxis>(up);
    for (MeshScalar& scalar : mesh.scalars) {
        scalar.name = reader.takeList<std::string>();
        scalar.unit = reader.takeList<std::string>();
    }
    auto const noteCount = reader.take<std::uint64_t>();
    for (std::uint64_t i = 0; i < noteCount && reader.isSound(); ++i) {
        mesh.notes.push_back(reader.takeList<std::string>());
    }
    auto const animationCount = reader.take<std::uint64_t>();
    for (std::uint64_t i = 0; i < animationCount && reader.isSound(); ++i) {
        std::string name = reader.takeList<std::string>();
        auto const duration = reader.take<double>();
        if (!std::isfinite(duration) || duration < 0) {
            return false;
        }
        mesh.animations.push_back({std::move(name), duration});
    }
    while (reader.isSound() && !reader.isAtEnd()) {
        Material material;
        if (!take(reader, material)) {
            return false;
        }
        mesh.materials.push_back(std::move(material));
    }
    return reader.isSound();
}

}  // namespace

void encodeMesh(MeshData const& mesh, PutBytes const& put) {
    Header header = makeHeader(CONTENT_MESH, mesh.name);
    header.flags = (mesh.hasVertexColors ? HAS_VERTEX_COLORS : 0U) |
                   (mesh.textureCoordinates.empty() ? 0U : HAS_TEXTURE_COORDINATES) |
                   (mesh.triangleMaterials.empty() ? 0U : HAS_MATERIALS) |
                   (mesh.normals.empty() ? 0U : HAS_NORMALS);
    std::vector<unsigned char> const details = encodeDetails(mesh);
    header.detailBytes = details.size();
    header.partCount = mesh.partCount;
    header.vertexCount = mesh.positions.size();
    header.triangleCount = mesh.triangles.size();
    header.lineCount = mesh.lines.size();
    header.pointCount = mesh.points.size();
    header.scalarCount = mesh.scalars.size();

    put(&header, sizeof header);
    put(mesh.name.data(), mesh.name.size());
    putAll(put, mesh.positions);
    putAll(put, mesh.triangles);
    putAll(put, mesh.normals);
    putAll(put, mesh.colors);
    putAll(put, mesh.textureCoordinates);
    putAll(put, mesh.triangleMaterials);
    putAll(put, mesh.lines);
    putAll(put, mesh.points);
    for (MeshScalar const& scalar : mesh.scalars) {
        putAll(put, scalar.values);
    }
    putAll(put, details);
}

std::vector<unsigned char> encodeFault(std::string const& message) {
    Header const header = makeHeader(CONTENT_FAULT, message);
    DetailWriter writer;
    writer.put(header);
    writer.put(message.data(), message.size());
    return writer.take();
}

Result<MeshData> decodeMesh(unsigned char const* bytes, std::size_t size, std::string const& file) {
    Fault const damaged{file, DAMAGED_MESSAGE};
    Header header;
    std::uint64_t promised = 0;
    if (size < sizeof header) {
        return damaged;
    }
    std::memcpy(&header, bytes, sizeof header);
    if (std::memcmp(header.magic, MAGIC, sizeof MAGIC) != 0 || !promisedSize(header, promised) ||
        promised != size) {
        return damaged;
    }

    Reader reader(bytes + sizeof header);
    std::string const text = reader.takeText(header.textLength);
    if (header.content == CONTENT_FAULT) {
        return Fault{file, text};
    }
    if (header.content != CONTENT_MESH) {
        return damaged;
    }

    MeshData mesh;
    mesh.name = text;
    mesh.positions = reader.take<Vector3<double>>(header.vertexCount);
    mesh.triangles = reader.take<MeshData::Triangle>(header.triangleCount);
    if ((header.flags & HAS_NORMALS) != 0) {
        mesh.normals = reader.take<Vector3<float>>(header.vertexCount);
    }
    mesh.colors = reader.take<Color4<float>>(header.vertexCount);
    if ((header.flags & HAS_TEXTURE_COORDINATES) != 0) {
        mesh.textureCoordinates = reader.take<Vector2<float>>(header.vertexCount);
    }
    if ((header.flags & HAS_MATERIALS) != 0) {
        mesh.triangleMaterials = reader.take<unsigned int>(header.triangleCount);
    }
    mesh.lines = reader.take<MeshLine>(header.lineCount);
    mesh.points = reader.take<unsigned int>(header.pointCount);
    for (std::uint64_t i = 0; i < header.scalarCount; ++i) {
        mesh.scalars.push_back({{}, {}, reader.take<double>(header.vertexCount)});
    }
    if (!decodeDetails(reader.take<unsigned char>(header.detailBytes), mesh)) {
        return damaged;
    }
    mesh.partCount = header.partCount;
    mesh.hasVertexColors = (header.flags & HAS_VERTEX_COLORS) != 0;
    if (std::optional<Fault> const fault = mesh.firstFault(file)) {
        return *fault;
    }
    return mesh;
}

}  // namespace vellum::viewport
