#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// Some lines of a text that stand together.
struct LineSlice {
    std::string_view text;    ///< begins with a line and ends with one
    std::uint64_t lines = 0;  ///< at least 1
};

/// About how many bytes a slice has: little enough for the cache of a core.
constexpr std::size_t SLICE_BYTES = std::size_t(1) << 18;

/// How many bytes the threads are given at once, between two reports of progress: at first few, so that small
/// texts are reported as well, then more and more up to several slices for each thread.
class BytesAtOnce {
public:
    /// \return at least 1
    std::size_t next();

private:
    std::size_t bytes = std::size_t(1) << 14;
};

/// The beginning of a text of about so many bytes: it ends behind a line feed or with the text.
std::string_view wholeLines(std::string_view text, std::size_t bytes);

/// Cuts a text that begins with a line into slices, on all cores.
std::vector<LineSlice> sliceLines(std::string_view text);

}  // namespace vellum::viewport
