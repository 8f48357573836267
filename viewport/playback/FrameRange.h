#pragma once

#include "viewport/text/Fault.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Some of the frames of a sequence, as a user names them: "A:B:STEP".
///
/// Frames are counted from 0, and both ends belong to the range. An end that is left out is that of the
/// sequence; with a negative step the range goes backward, from the last frame unless it says otherwise. A
/// number alone is that frame.
struct FrameRange {
    std::optional<std::size_t> first;
    std::optional<std::size_t> last;
    std::int64_t step = 1;  ///< not 0

    /// Reads "A:B:STEP" with any part left out, "A:B" as well, or "A"; nothing for any other text, and for
    /// ends that no step leads between.
    static std::optional<FrameRange> parse(std::string const& text);

    /// The frames, in their order. A fault, without a file, where an end does not exist.
    /// \param count of the sequence's frames, above 0
    Result<std::vector<std::size_t>> of(std::size_t count) const;
};

}  // namespace vellum::viewport
