#include "viewport/files/particles/PlyPoints.h"

#include "viewport/files/common/PlyHeader.h"
#include "viewport/files/particles/FrameIndex.h"
#include "viewport/files/particles/TableRows.h"
#include "viewport/files/particles/binary_rows.h"

#include <algorithm>

namespace vellum::viewport {

namespace {

bool hasLists(PlyElement const& element) {
    return std::any_of(element.properties.begin(), element.properties.end(),
                       [](PlyProperty const& property) { return property.isList; });
}

std::size_t sizeOf(PlyElement const& element) {
    std::size_t size = 0;
    for (PlyProperty const& property : element.properties) {
        size += property.value.size;
    }
    return size;
}

std::string cutOffReason(PlyElement const& element, std::uint64_t held) {
    return "the file is cut off: it declares " + std::to_string(element.count) + " of " +
           inQuotes(element.name) + " and holds " + std::to_string(held);
}

class PlyReader {
public:
    PlyReader(std::string_view file, PlyHeader const& header, Progress const& progress)
        : header(header), progress(progress), headerSize(file.size() - header.body.size()), file(file) {}

    Result<LoadedFrame> read() {
        PlyElement const* vertices = nullptr;
        for (PlyElement const& element : header.elements) {
            if (element.name == "face" && element.count > 0) {
                return Fault{{}, "has faces: it is a mesh, not particles"};
            }
            if (element.name == "vertex" && vertices == nullptr) {
                vertices = &element;
            }
        }
        if (vertices == nullptr) {
            return Fault{{}, "the PLY file has no element 'vertex'"};
        }
        std::vector<TableColumn> columns;
        for (PlyProperty const& property : vertices->properties) {
            columns.push_back(TableColumn{property.name, ColumnUse::CHANNEL, 0, property.name == "id", {}});
        }
        if (hasLists(*vertices)) {
            return Fault{{}, "the vertices of the PLY file have lists, which particles cannot have"};
        }
        if (!useColumns(columns, {"x", "y", "z"}, ColumnUse::POSITION)) {
            return Fault{{}, "the vertices of the PLY file have no properties x, y and z"};
        }
        for (TableColumn& column : columns) {
            // PLY declares its numbers, so no column is guessed from the first row.
            column.use = column.use == ColumnUse::CHANNEL ? ColumnUse::NUMBER : column.use;
        }
        Result<LoadedFrame> result = header.format == PlyFormat::TEXT ? _readText(*vertices, columns)
                                                                      : _readBinary(*vertices, columns);
        if (result.isOk()) {
            _setFullColor(*vertices, result.value().frame);
        }
        return result;
    }

private:
    /// Colors of integers reach the largest one, also where none of them does.
    static void _setFullColor(PlyElement const& vertices, ParticleFrame& frame) {
        if (!frame.colors) {
            return;
        }
        std::string const& name = frame.channels[frame.colors->columns[0]].name;
        for (PlyProperty const& property : vertices.properties) {
            if (property.name == name && property.value.isInteger && property.value.size <= 2) {
                frame.colors->full = property.value.size == 1 ? 255 : 65535;
            }
        }
    }

    Result<LoadedFrame> _readText(PlyElement const& vertices, std::vector<TableColumn> const& columns) const {
        // From the file's first line on, so that damage is reported with line numbers of the file.
        TextLines lines(file);
        while (lines.done() < headerSize && !lines.isAtEnd()) {
            lines.take();
        }
        for (PlyElement const* element = header.elements.data(); element != &vertices; ++element) {
            for (std::uint64_t i = 0; i < element->count && !element->properties.empty(); ++i) {
                if (lines.isAtEnd()) {
                    return Fault{{}, lines.damage(cutOffReason(*element, i)).message()};
                }
                lines.take();
            }
        }
        LoadedFrame result;
        TableRows rows(columns, ' ');
        rows.report(progress);
        if (std::optional<TextDamage> const damage = rows.read(lines, vertices.count, result.frame)) {
            return Fault{{}, damage->message() + (damage->isAtEnd ? "; the file is cut off" : "")};
        }
        result.warning = lastLineWarning(lines);
        return result;
    }

    Result<LoadedFrame> _readBinary(PlyElement const& vertices,
                                    std::vector<TableColumn> const& columns) const {
        std::string_view body = header.body;
        for (PlyElement const* element = header.elements.data(); element != &vertices; ++element) {
            // The size of an element with lists shows only in its values.
            std::size_t const size = sizeOf(*element);
            if (hasLists(*element) && element->count > 0) {
                return Fault{{}, "the element " + inQuotes(element->name) + " before the vertices has lists"};
            }
            // A division, since the product of a declared count may overflow.
            if (size > 0 && element->count > body.size() / size) {
                return Fault{{}, cutOffReason(*element, body.size() / size)};
            }
            body.remove_prefix(static_cast<std::size_t>(element->count) * size);
        }
        std::size_t const stride = sizeOf(vertices);
        if (vertices.count > body.size() / stride) {
            return Fault{{}, cutOffReason(vertices, body.size() / stride)};
        }
        return _readRecords(vertices, columns, body.data(), stride);
    }

    Result<LoadedFrame> _readRecords(PlyElement const& vertices, std::vector<TableColumn> const& columns,
                                     char const* const& start, std::size_t stride) const {
        LoadedFrame result;
        FrameBuilder builder(columns, static_cast<std::size_t>(vertices.count), result.frame);
        BinaryRows rows{
            start, static_cast<std::size_t>(vertices.count), {}, header.format == PlyFormat::BINARY_BIG};
        for (PlyProperty const& property : vertices.properties) {
            rows.fields.push_back(property.value);
        }
        std::size_t const bodyStart = static_cast<std::size_t>(start - file.data());
        std::optional<std::size_t> const wrong = addRows(rows, builder, [&](std::size_t passed) {
            if (progress) {
                progress(bodyStart + passed * stride, bodyStart + vertices.count * stride);
            }
        });
        if (wrong) {
            return Fault{{}, "the id of vertex " + std::to_string(*wrong) + " is not a whole number"};
        }
        builder.finish();
        return result;
    }

    PlyHeader const& header;
    Progress const& progress;
    std::size_t headerSize;
    std::string_view file;
};

}  // namespace

Result<LoadedFrame> readPlyPoints(std::string_view bytes, Progress const& progress) {
    std::optional<PlyHeader> const header = readPlyHeader(bytes);
    if (!header) {
        return Fault{{}, "the header of the PLY file is cut off or not understood"};
    }
    return PlyReader(bytes, *header, progress).read();
}

}  // namespace vellum::viewport
