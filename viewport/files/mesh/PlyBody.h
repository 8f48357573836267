#pragma once

#include "viewport/files/common/PlyHeader.h"
#include "viewport/files/common/Progress.h"
#include "viewport/files/mesh/PlyItem.h"
#include "viewport/files/mesh/PlyLines.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// Takes the items of a PLY file one after the other. An item of a text is a line; many of them are read
/// ahead on all cores.
///
///     PlyBody body(file, header);
///     PlyItem item;
///     body.begin(element);
///     for (std::uint64_t i = 0; i < element.count; ++i)
///         if (!body.take(item))
///             return Fault{{}, body.damage()};
///
/// Whatever the bytes are, no item takes more memory than the file has bytes, times eight.
class PlyBody {
public:
    /// \param header of that file, which holds its body
    /// \param progress must outlive it; may be empty
    PlyBody(std::string_view file, PlyHeader const& header, Progress const& progress);

    /// Goes on to the element behind the one taken last.
    /// \return whether the file is large enough for all items that the element declares, if none has a longer
    ///     list than it must; so as much memory may be reserved.
    bool begin(PlyElement const& element);

    /// Takes the next item of the element. \return false where the file is damaged.
    bool take(PlyItem& item);

    /// What is wrong with the item taken last, and where.
    std::string damage() const;

    /// "line 7: what" or "byte 123: what", about the item taken last.
    std::string atItem(std::string const& what) const;

    /// The line of a text whose item was followed by more numbers than the header declares; 0: there is none.
    std::uint64_t longLine() const { return firstLongLine; }

private:
    enum class Type { INT8, UINT8, INT16, UINT16, INT32, UINT32, FLOAT32, FLOAT64 };

    /// A property, as fast to be read.
    struct Column {
        bool isList;
        Type length;
        Type value;
    };

    static Type _typeOf(PlyScalarType const& type);
    static std::size_t _sizeOf(Type type);

    template <bool IS_BIG>
    bool _takeBinary(PlyItem& item);
    bool _takeText(PlyItem& item);
    bool _takeLine(PlyItem& item);
    bool _takeNumber(double& value);
    bool _cutOff();
    bool _damaged(std::string const& what);
    std::uint64_t _lineOf(char const* place) const;
    bool _skipToLine();

    std::string_view file;
    PlyHeader const& header;
    ProgressPace pace;
    char const* here;
    char const* end;
    PlyElement const* element = nullptr;
    std::vector<Column> columns;
    char const* itemStart;
    std::uint64_t taken = 0;  // items of the element
    std::string reason;
    std::uint64_t firstLongLine = 0;
    PlyLines lines;
};

}  // namespace vellum::viewport
