#include "viewport/MeshTransfer.h"

#include <cstdint>
#include <cstring>

namespace vellum::viewport {

namespace {

enum Content : std::uint32_t { CONTENT_MESH = 1, CONTENT_FAULT = 2 };
enum Flags : std::uint32_t { HAS_VERTEX_COLOURS = 1, HAS_TEXTURE_COORDINATES = 2 };

struct Header {
    char magic[8];
    std::uint32_t content;
    std::uint32_t flags;
    std::uint32_t partCount;
    std::uint32_t textLength;  // of the mesh's name or the fault's message
    std::uint64_t vertexCount;
    std::uint64_t triangleCount;
    std::uint64_t computedNormalCount;
};

constexpr char magic[8] = {'v', 'l', 'm', 'e', 's', 'h', '0', '1'};
constexpr char damagedMessage[] = "the importer gave a damaged result";

Header makeHeader(Content const& content, std::string const& text) {
    Header header{};
    std::memcpy(header.magic, magic, sizeof magic);
    header.content = content;
    header.textLength = static_cast<std::uint32_t>(text.size());
    return header;
}

/// Appends to a buffer of the right size, so that a mesh is held twice in memory and no more.
class Writer {
public:
    explicit Writer(std::size_t const& size) { _bytes.reserve(size); }

    void put(void const* data, std::size_t const& size) {
        unsigned char const* first = static_cast<unsigned char const*>(data);
        _bytes.insert(_bytes.end(), first, first + size);
    }

    template <class T>
    void put(std::vector<T> const& values) {
        put(values.data(), values.size() * sizeof(T));
    }

    std::vector<unsigned char> take() { return std::move(_bytes); }

private:
    std::vector<unsigned char> _bytes;
};

/// Takes from a buffer whose size has been checked against all that will be taken.
class Reader {
public:
    explicit Reader(unsigned char const* bytes) : _next(bytes) {}

    template <class T>
    std::vector<T> take(std::uint64_t const& count) {
        std::vector<T> values(static_cast<std::size_t>(count));
        if (count > 0) {
            std::memcpy(values.data(), _next, values.size() * sizeof(T));
            _next += values.size() * sizeof(T);
        }
        return values;
    }

    std::string takeText(std::size_t const& length) {
        std::string const text(reinterpret_cast<char const*>(_next), length);
        _next += length;
        return text;
    }

private:
    unsigned char const* _next;
};

constexpr std::uint64_t bytesPerTriangle = sizeof(MeshData::Triangle);

std::uint64_t bytesPerVertex(std::uint32_t const& flags) {
    return sizeof(Vector3<double>) + sizeof(Vector3<float>) + sizeof(Color4<float>) +
           ((flags & HAS_TEXTURE_COORDINATES) != 0 ? sizeof(Vector2<float>) : 0);
}

/// The size that the header promises, or nothing when it could not be that of any buffer.
bool promisedSize(Header const& header, std::uint64_t& size) {
    // With counts within these bounds the sums here stay far inside 64 bits.
    if (header.vertexCount > MeshData::largestCount || header.triangleCount > MeshData::largestCount) {
        return false;
    }
    size = sizeof(Header) + header.textLength + header.vertexCount * bytesPerVertex(header.flags) +
           header.triangleCount * bytesPerTriangle;
    return true;
}

}  // namespace

std::vector<unsigned char> encodeMesh(MeshData const& mesh) {
    Header header = makeHeader(CONTENT_MESH, mesh.name);
    header.flags = (mesh.hasVertexColours ? HAS_VERTEX_COLOURS : 0U) |
                   (mesh.textureCoordinates.empty() ? 0U : HAS_TEXTURE_COORDINATES);
    header.partCount = mesh.partCount;
    header.vertexCount = mesh.positions.size();
    header.triangleCount = mesh.triangles.size();
    header.computedNormalCount = mesh.computedNormalCount;

    std::uint64_t size = sizeof header;
    promisedSize(header, size);
    Writer writer(static_cast<std::size_t>(size));
    writer.put(&header, sizeof header);
    writer.put(mesh.name.data(), mesh.name.size());
    writer.put(mesh.positions);
    writer.put(mesh.triangles);
    writer.put(mesh.normals);
    writer.put(mesh.colours);
    writer.put(mesh.textureCoordinates);
    return writer.take();
}

std::vector<unsigned char> encodeFault(std::string const& message) {
    Header const header = makeHeader(CONTENT_FAULT, message);
    Writer writer(sizeof header + message.size());
    writer.put(&header, sizeof header);
    writer.put(message.data(), message.size());
    return writer.take();
}

Result<MeshData> decodeMesh(unsigned char const* bytes, std::size_t const& size, std::string const& file) {
    Fault const damaged{file, damagedMessage};
    Header header;
    std::uint64_t promised = 0;
    if (size < sizeof header) {
        return damaged;
    }
    std::memcpy(&header, bytes, sizeof header);
    if (std::memcmp(header.magic, magic, sizeof magic) != 0 || !promisedSize(header, promised) ||
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
    mesh.normals = reader.take<Vector3<float>>(header.vertexCount);
    mesh.colours = reader.take<Color4<float>>(header.vertexCount);
    if ((header.flags & HAS_TEXTURE_COORDINATES) != 0) {
        mesh.textureCoordinates = reader.take<Vector2<float>>(header.vertexCount);
    }
    mesh.partCount = header.partCount;
    mesh.computedNormalCount = header.computedNormalCount;
    mesh.hasVertexColours = (header.flags & HAS_VERTEX_COLOURS) != 0;
    if (std::optional<std::string> const fault = mesh.firstFault()) {
        return Fault{file, *fault};
    }
    return mesh;
}

}  // namespace vellum::viewport
