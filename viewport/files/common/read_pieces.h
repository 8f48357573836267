#pragma once

#include "foundation/basic/MemoryGuard.h"
#include "foundation/basic/threads.h"

#include <atomic>
#include <cstddef>
#include <vector>

namespace vellum::viewport {

/// Calls `read(piece)` for the pieces of a text, on all cores. It says whether it read the whole piece, and throws nothing but
/// std::bad_alloc.
/// \return how many pieces, from the first on, were read wholly; the one behind them was read in part. Those behind that one may
///     have been read or not.
/// \throws std::bad_alloc where a call does
template <class Piece, class Read>
std::size_t readPieces(std::vector<Piece>& pieces, Read const& read) {
    std::atomic<std::size_t> firstPartial{pieces.size()};
    MemoryGuard guard;
    forRanges(pieces.size(), 1, [&](std::size_t number, std::size_t) {
        if (number > firstPartial.load(std::memory_order_relaxed)) {
            return;
        }
        bool isWhole = false;
        guard.run([&] { isWhole = read(pieces[number]); });
        std::size_t known = firstPartial.load(std::memory_order_relaxed);
        while (!isWhole && number < known && !firstPartial.compare_exchange_weak(known, number)) {
        }
    });
    guard.check();
    return firstPartial;
}

}  // namespace vellum::viewport
