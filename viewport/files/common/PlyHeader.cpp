#include "viewport/files/common/PlyHeader.h"

#include "viewport/text/Words.h"
#include "viewport/text/numbers.h"

#include <algorithm>

namespace vellum::viewport {

namespace {

std::optional<PlyScalarType> toScalarType(std::string_view word) {
    // Two generations of writers: the names of C, and names with the number of bits.
    struct Row {
        std::string_view name;
        PlyScalarType type;
    };
    static constexpr Row ROWS[] = {
        {"char", {1, true, true}},     {"int8", {1, true, true}},     {"uchar", {1, true, false}},
        {"uint8", {1, true, false}},   {"short", {2, true, true}},    {"int16", {2, true, true}},
        {"ushort", {2, true, false}},  {"uint16", {2, true, false}},  {"int", {4, true, true}},
        {"int32", {4, true, true}},    {"uint", {4, true, false}},    {"uint32", {4, true, false}},
        {"float", {4, false, true}},   {"float32", {4, false, true}}, {"double", {8, false, true}},
        {"float64", {8, false, true}},
    };
    for (Row const& row : ROWS) {
        if (row.name == word) {
            return row.type;
        }
    }
    return std::nullopt;
}

bool addProperty(std::string_view line, PlyHeader& header) {
    // A property belongs to the element declared last.
    if (header.elements.empty()) {
        return false;
    }
    PlyProperty property;
    std::string_view type = takeWord(line);
    if (type == "list") {
        std::optional<PlyScalarType> const length = toScalarType(takeWord(line));
        // A list is a count of an integer type and then as many values.
        if (!length || !length->isInteger) {
            return false;
        }
        property.isList = true;
        property.length = *length;
        type = takeWord(line);
    }
    std::optional<PlyScalarType> const value = toScalarType(type);
    if (!value) {
        return false;
    }
    property.value = *value;
    property.name = std::string(takeWord(line));
    header.elements.back().properties.push_back(property);
    return true;
}

bool addElement(std::string_view line, PlyHeader& header) {
    PlyElement element;
    element.name = std::string(takeWord(line));
    std::optional<std::uint64_t> const count = toCount(takeWord(line));
    if (!count) {
        return false;
    }
    element.count = *count;
    header.elements.push_back(element);
    return true;
}

bool setFormat(std::string_view line, PlyHeader& header) {
    std::string_view const format = takeWord(line);
    header.format = format == "binary_little_endian" ? PlyFormat::BINARY_LITTLE
                    : format == "binary_big_endian"  ? PlyFormat::BINARY_BIG
                                                     : PlyFormat::TEXT;
    return header.format != PlyFormat::TEXT || format == "ascii";
}

}  // namespace

std::optional<PlyHeader> readPlyHeader(std::string_view file) {
    std::string_view bytes = file;
    PlyHeader header;
    std::string_view first = takeLine(bytes);
    std::string_view const magic = takeWord(first);
    // Some writers use capitals, which the importer accepts as well.
    if (magic != "ply" && magic != "PLY") {
        return std::nullopt;
    }
    while (!bytes.empty()) {
        std::string_view line = takeLine(bytes);
        std::string_view const keyword = takeWord(line);
        bool isUnderstood = true;
        if (keyword == "end_header") {
            header.body = bytes;
            return header;
        }
        if (keyword == "format") {
            isUnderstood = setFormat(line, header);
        } else if (keyword == "element") {
            isUnderstood = addElement(line, header);
        } else if (keyword == "property") {
            isUnderstood = addProperty(line, header);
        }
        if (!isUnderstood) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

bool isPlyMesh(PlyHeader const& header) {
    return std::any_of(header.elements.begin(), header.elements.end(), [](PlyElement const& element) {
        bool const isPart = element.name == "face" || element.name == "tristrips" || element.name == "edge";
        return isPart && element.count > 0;
    });
}

}  // namespace vellum::viewport
