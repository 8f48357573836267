#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// A number as the body of a PLY file stores it.
struct PlyScalarType {
    std::size_t size = 0;  // bytes
    bool isInteger = false;
    bool isSigned = false;
};

struct PlyProperty {
    std::string name;
    bool isList = false;
    PlyScalarType length;  // of a list
    PlyScalarType value;
};

struct PlyElement {
    std::string name;
    std::uint64_t count = 0;  // as declared; the file may hold fewer
    std::vector<PlyProperty> properties;
};

enum class PlyFormat { TEXT, BINARY_LITTLE, BINARY_BIG };

/// The declarations at the beginning of a PLY file: which elements follow, how many and with which
/// properties.
struct PlyHeader {
    PlyFormat format = PlyFormat::TEXT;
    std::vector<PlyElement> elements;  // in the order of the body
    std::string_view body;             // all that follows the header; lives as long as the file's bytes
};

/// Reads the header; nothing where the bytes are not PLY, or the header is cut off or malformed. Lines with
/// other keywords (comment, obj_info) are skipped.
std::optional<PlyHeader> readPlyHeader(std::string_view file);

/// Whether the file has faces, strips of triangles or edges: it is a mesh then, else a set of particles.
bool isPlyMesh(PlyHeader const& header);

}  // namespace vellum::viewport
