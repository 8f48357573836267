#include "viewport/files/common/LineSlices.h"

#include "foundation/basic/threads.h"

#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vellum::viewport {

namespace {

/// Several times as fast as a search for one after the other.
std::uint64_t countFeeds(char const* here, char const* end) {
    std::uint64_t count = 0;
#ifdef __SSE2__
    constexpr std::ptrdiff_t WIDTH = 16;
    constexpr std::ptrdiff_t MOST_STEPS = 255;  // of counters of a byte
    __m128i const feed = _mm_set1_epi8('\n');
    while (end - here >= WIDTH) {
        __m128i counters = _mm_setzero_si128();
        for (std::ptrdiff_t steps = std::min((end - here) / WIDTH, MOST_STEPS); steps > 0; --steps) {
            __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(here));
            // A match is -1.
            counters = _mm_sub_epi8(counters, _mm_cmpeq_epi8(bytes, feed));
            here += WIDTH;
        }
        __m128i const sums = _mm_sad_epu8(counters, _mm_setzero_si128());
        alignas(16) std::uint64_t halves[2];
        _mm_store_si128(reinterpret_cast<__m128i*>(halves), sums);
        count += halves[0] + halves[1];
    }
#endif
    return count + static_cast<std::uint64_t>(std::count(here, end, '\n'));
}

}  // namespace

std::size_t BytesAtOnce::next() {
    constexpr std::size_t SLICES_PER_THREAD = 8;
    bytes = std::min(2 * bytes, SLICE_BYTES * SLICES_PER_THREAD * static_cast<std::size_t>(threadLimit()));
    return bytes;
}

std::string_view wholeLines(std::string_view text, std::size_t bytes) {
    if (bytes == 0 || bytes >= text.size()) {
        return text;
    }
    return text.substr(0, std::min(text.find('\n', bytes - 1), text.size() - 1) + 1);
}

std::vector<LineSlice> sliceLines(std::string_view text) {
    // A line belongs to the piece that it begins in, whose first line begins behind a line feed.
    struct Piece {
        char const* first;  // null: no line begins here
        std::uint64_t lines;
    };
    std::size_t const pieceCount = (text.size() + SLICE_BYTES - 1) / SLICE_BYTES;
    std::vector<Piece> pieces(pieceCount);
    forRanges(text.size(), SLICE_BYTES, [&](std::size_t begin, std::size_t end) {
        char const* const start = text.data() + begin - (begin > 0 ? 1 : 0);
        char const* const last = text.data() + end - 1;
        Piece& piece = pieces[begin / SLICE_BYTES];
        piece.lines = countFeeds(start, last) + (begin == 0 ? 1 : 0);
        piece.first = text.data();
        if (begin > 0) {
            void const* const feed =
                piece.lines > 0 ? std::memchr(start, '\n', static_cast<std::size_t>(last - start)) : nullptr;
            piece.first = feed != nullptr ? static_cast<char const*>(feed) + 1 : nullptr;
        }
    });
    std::vector<LineSlice> slices;
    slices.reserve(pieceCount);
    char const* end = text.data() + text.size();
    for (std::size_t i = pieceCount; i > 0; --i) {
        Piece const& piece = pieces[i - 1];
        if (piece.first != nullptr) {
            slices.push_back({{piece.first, static_cast<std::size_t>(end - piece.first)}, piece.lines});
            end = piece.first;
        }
    }
    std::reverse(slices.begin(), slices.end());
    return slices;
}

}  // namespace vellum::viewport
