#include "viewport/files/mesh/PlyLines.h"

#include "viewport/files/common/read_pieces.h"
#include "viewport/files/mesh/blanks.h"
#include "viewport/text/data_numbers.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vellum::viewport {

namespace {

/// Takes the next number of a line.
bool takeNumber(char const*& here, char const* end, double& value) {
    while (here != end && isBlank(*here)) {
        ++here;
    }
    char const* const next = here != end ? takeDataNumber(here, end, value) : nullptr;
    if (next == nullptr || (next != end && !isBlank(*next) && *next != '\n')) {
        return false;
    }
    here = next;
    return true;
}

}  // namespace

void PlyLines::begin(std::vector<bool> const& areLists) {
    this->areLists = areLists;
    atOnce = {};
    stopped = false;
    firstLong = nullptr;
    forget();
}

void PlyLines::forget() {
    pieceCount = 0;
    piece = 0;
    item = 0;
    value = 0;
    behind = nullptr;
}

void PlyLines::read(std::string_view text, std::uint64_t most) {
    char const* const end = text.data() + text.size();
    std::size_t count = 0;
    for (LineSlice slice : sliceLines(wholeLines(text, atOnce.next()))) {
        slice.lines = std::min(slice.lines, most);
        most -= slice.lines;
        if (slice.lines == 0) {
            break;
        }
        // The memory of former pieces is used again.
        if (count == pieces.size()) {
            pieces.push_back({slice});
        }
        pieces[count].slice = slice;
        ++count;
    }
    pieces.resize(count);
    std::size_t const wholeCount = readPieces(pieces, [&](Piece& each) { return _read(each, end); });
    stopped = wholeCount < count;
    pieceCount = stopped ? wholeCount + 1 : count;
    piece = 0;
    item = 0;
    value = 0;
    behind = text.data();
    for (std::size_t i = 0; i < pieceCount && firstLong == nullptr; ++i) {
        firstLong = pieces[i].firstLong;
    }
}

/// \return false where an item is not understood, whose line the piece ends before
bool PlyLines::_read(Piece& piece, char const* end) const {
    piece.values.clear();
    piece.starts.clear();
    piece.firstLong = nullptr;
    char const* here = piece.slice.text.data();
    piece.end = here;
    for (std::uint64_t left = piece.slice.lines; left > 0; --left) {
        while (here != end && isBlank(*here)) {
            ++here;
        }
        if (here != end && *here != '\n') {
            std::size_t const valueCount = piece.values.size();
            piece.starts.push_back(here);
            if (!_readItem(piece, here, end)) {
                piece.starts.pop_back();
                piece.values.resize(valueCount);
                return false;
            }
            piece.lastEnd = here;
        }
        here += here != end ? 1 : 0;
        piece.end = here;
    }
    return true;
}

bool PlyLines::_readItem(Piece& piece, char const*& here, char const* end) const {
    double number = 0;
    for (bool const isList : areLists) {
        if (!takeNumber(here, end, number)) {
            return false;
        }
        piece.values.push_back(number);
        if (!isList) {
            continue;
        }
        if (!(number >= 0) || number != std::floor(number) || number > static_cast<double>(end - here)) {
            return false;
        }
        for (auto left = static_cast<std::size_t>(number); left > 0; --left) {
            if (!takeNumber(here, end, number)) {
                return false;
            }
            piece.values.push_back(number);
        }
    }
    while (here != end && isBlank(*here)) {
        ++here;
    }
    if (here != end && *here != '\n') {
        piece.firstLong = piece.firstLong == nullptr ? here : piece.firstLong;
        void const* const next = std::memchr(here, '\n', static_cast<std::size_t>(end - here));
        here = next != nullptr ? static_cast<char const*>(next) : end;
    }
    return true;
}

bool PlyLines::take(PlyItem& item) {
    while (piece < pieceCount && this->item == pieces[piece].starts.size()) {
        // Lines without an item are passed as well, so that no reading of them goes on for ever.
        behind = pieces[piece].end;
        ++piece;
        this->item = 0;
        value = 0;
    }
    if (piece == pieceCount) {
        return false;
    }
    Piece const& from = pieces[piece];
    start = from.starts[this->item];
    double const* next = from.values.data() + value;
    item.numbers.resize(areLists.size());
    item.lists.resize(areLists.size());
    for (std::size_t i = 0; i < areLists.size(); ++i) {
        item.numbers[i] = *next++;
        if (areLists[i]) {
            auto const length = static_cast<std::size_t>(item.numbers[i]);
            item.lists[i].assign(next, next + length);
            next += length;
        }
    }
    value = static_cast<std::size_t>(next - from.values.data());
    ++this->item;
    behind = this->item == from.starts.size() ? from.lastEnd : start;
    return true;
}

}  // namespace vellum::viewport
