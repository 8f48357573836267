#pragma once

#include "viewport/files/common/LineSlices.h"
#include "viewport/files/mesh/PlyItem.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// Reads the items of a PLY text ahead, on all cores, and hands them out one after the other.
///
///     PlyLines lines;
///     lines.begin({false, true});
///     lines.read(rest, itemsLeft);
///     while (lines.take(item))
///         ...
///
/// It does not tell what is wrong with a text: it ends before the first item that is damaged or that it does
/// not understand, and PlyBody reads that one.
class PlyLines {
public:
    /// Goes on to another element.
    /// \param areLists which of its properties are lists
    void begin(std::vector<bool> const& areLists);

    /// Reads the items of some lines at the front of the text, at most `most`. What was not taken before is
    /// forgotten. \param text begins behind an item
    void read(std::string_view text, std::uint64_t most);

    /// Forgets what was not taken; here() is null then.
    void forget();

    /// Takes the next item. \return false where none is left.
    bool take(PlyItem& item);

    /// Where the item taken last begins.
    char const* itemStart() const { return start; }

    /// Behind the item taken last, or within it; where none was left, behind all.
    char const* here() const { return behind; }

    /// Whether the items that were read end before one that is damaged.
    bool isStopped() const { return stopped; }

    /// Behind the numbers of the first item that was read and is followed by more than it has; null: there is
    /// none.
    char const* longLine() const { return firstLong; }

private:
    struct Piece {
        LineSlice slice;
        std::vector<double> values = {};  // the numbers of all items; the values of a list follow its length
        std::vector<char const*> starts = {};
        char const* lastEnd = nullptr;  // of the last item
        char const* end = nullptr;      // of what was read
        char const* firstLong = nullptr;
    };

    bool _read(Piece& piece, char const* end) const;
    bool _readItem(Piece& piece, char const*& here, char const* end) const;

    std::vector<bool> areLists;
    BytesAtOnce atOnce;
    std::vector<Piece> pieces;
    std::size_t piece = 0;  // of the item that is next
    std::size_t item = 0;   // in the piece
    std::size_t value = 0;  // of the item that is next, in the piece
    std::size_t pieceCount = 0;
    char const* start = nullptr;
    char const* behind = nullptr;
    bool stopped = false;
    char const* firstLong = nullptr;
};

}  // namespace vellum::viewport
