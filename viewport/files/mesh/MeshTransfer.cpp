#include "viewport/files/mesh/MeshTransfer.h"

#include <cstdint>
#include <cstring>

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
    std::uint64_t materialBytes;
};

/// Of one material; its texture's name and bytes follow.
struct MaterialHeader {
    Color4<float> tint;
    std::uint64_t nameLength;
    std::uint64_t byteCount;
};

constexpr char MAGIC[8] = {'v', 'l', 'm', 'e', 's', 'h', '0', '3'};
constexpr std::uint64_t LARGEST_MATERIAL_BYTES = std::uint64_t(1) << 40;
constexpr char DAMAGED_MESSAGE[] = "the importer gave a damaged result";

Header makeHeader(Content const& content, std::string const& text) {
    Header header{};
    std::memcpy(header.magic, MAGIC, sizeof MAGIC);
    header.content = content;
    header.textLength = static_cast<std::uint32_t>(text.size());
    return header;
}

/// Appends to a buffer of the right size, so that a mesh is held twice in memory and no more.
class Writer {
public:
    explicit Writer(std::size_t size) { bytes.reserve(size); }

    void put(void const* data, std::size_t size) {
        unsigned char const* first = static_cast<unsigned char const*>(data);
        bytes.insert(bytes.end(), first, first + size);
    }

    template <class T>
    void put(std::vector<T> const& values) {
        put(values.data(), values.size() * sizeof(T));
    }

    std::vector<unsigned char> take() { return std::move(bytes); }

private:
    std::vector<unsigned char> bytes;
};

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
    if (header.materialBytes > LARGEST_MATERIAL_BYTES) {
        return false;
    }
    size = sizeof(Header) + header.textLength + header.vertexCount * bytesPerVertex(header.flags) +
           header.triangleCount * bytesPerTriangle(header.flags) + header.materialBytes;
    return true;
}

std::vector<unsigned char> encodeMaterials(std::vector<Material> const& materials) {
    std::uint64_t size = 0;
    for (Material const& material : materials) {
        size += sizeof(MaterialHeader) + material.texture.size() + material.textureBytes.size();
    }
    Writer writer(static_cast<std::size_t>(size));
    for (Material const& material : materials) {
        MaterialHeader const header{material.tint, material.texture.size(), material.textureBytes.size()};
        writer.put(&header, sizeof header);
        writer.put(material.texture.data(), material.texture.size());
        writer.put(material.textureBytes);
    }
    return writer.take();
}

/// False when the bytes are not those of whole materials.
bool decodeMaterials(std::vector<unsigned char> const& bytes, std::vector<Material>& materials) {
    std::size_t left = bytes.size();
    Reader reader(bytes.data());
    while (left > 0) {
        if (left < sizeof(MaterialHeader)) {
            return false;
        }
        MaterialHeader const header = reader.take<MaterialHeader>(1).front();
        left -= sizeof header;
        if (header.nameLength > left || header.byteCount > left - header.nameLength) {
            return false;
        }
        Material material;
        material.tint = header.tint;
        material.texture = reader.takeText(static_cast<std::size_t>(header.nameLength));
        material.textureBytes = reader.take<unsigned char>(header.byteCount);
        left -= static_cast<std::size_t>(header.nameLength + header.byteCount);
        materials.push_back(std::move(material));
    }
    return true;
}

}  // namespace

std::vector<unsigned char> encodeMesh(MeshData const& mesh) {
    Header header = makeHeader(CONTENT_MESH, mesh.name);
    header.flags = (mesh.hasVertexColors ? HAS_VERTEX_COLORS : 0U) |
                   (mesh.textureCoordinates.empty() ? 0U : HAS_TEXTURE_COORDINATES) |
                   (mesh.triangleMaterials.empty() ? 0U : HAS_MATERIALS) |
                   (mesh.normals.empty() ? 0U : HAS_NORMALS);
    std::vector<unsigned char> const materials = encodeMaterials(mesh.materials);
    header.materialBytes = materials.size();
    header.partCount = mesh.partCount;
    header.vertexCount = mesh.positions.size();
    header.triangleCount = mesh.triangles.size();

    std::uint64_t size = sizeof header;
    promisedSize(header, size);
    Writer writer(static_cast<std::size_t>(size));
    writer.put(&header, sizeof header);
    writer.put(mesh.name.data(), mesh.name.size());
    writer.put(mesh.positions);
    writer.put(mesh.triangles);
    writer.put(mesh.normals);
    writer.put(mesh.colors);
    writer.put(mesh.textureCoordinates);
    writer.put(mesh.triangleMaterials);
    writer.put(materials);
    return writer.take();
}

std::vector<unsigned char> encodeFault(std::string const& message) {
    Header const header = makeHeader(CONTENT_FAULT, message);
    Writer writer(sizeof header + message.size());
    writer.put(&header, sizeof header);
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
    if (!decodeMaterials(reader.take<unsigned char>(header.materialBytes), mesh.materials)) {
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
