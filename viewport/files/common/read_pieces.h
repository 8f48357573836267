#pragma once

#include "foundation/basic/threads.h"

#include <atomic>
#include <cstddef>
#include <exception>
#include <new>
#include <vector>

namespace vellum::viewport {

/// Calls `read(piece)` for the pieces of a text, on all cores. It says whether it read the whole piece.
/// \return how many pieces, from the first on, were read wholly; the one behind them was read in part. Those behind that one may
///     have been read or not.
/// \throws std::bad_alloc where a call throws a std::exception
template <class Piece, class Read>
std::size_t readPieces(std::vector<Piece>& pieces, Read const& read) {
    std::atomic<std::size_t> firstPartial{pieces.size()};
    std::atomic<bool> hasThrown{false};
    forRanges(pieces.size(), 1, [&](std::size_t number, std::size_t) {
        if (number > firstPartial.load(std::memory_order_relaxed)) {
            return;
        }
        bool isWhole = false;
        try {
            isWhole = read(pieces[number]);
        } catch (std::exception const&) {
            hasThrown = true;
        }
        std::size_t known = firstPartial.load(std::memory_order_relaxed);
        while (!isWhole && number < known && !firstPartial.compare_exchange_weak(known, number)) {
        }
    });
    if (hasThrown) {
        throw std::bad_alloc();
    }
    return firstPartial;
}

}  // namespace vellum::viewport
