#pragma once

#include "viewport/files/particles/ParticleFrames.h"
#include "viewport/text/Fault.h"
#include "viewport/text/TextLines.h"

#include <optional>
#include <utility>

namespace vellum::viewport {

/// What the last line of a text lacks, as a warning; empty where it lacks nothing.
inline std::string lastLineWarning(TextLines const& lines) {
    return lines.isEnded() ? std::string()
                           : "line " + std::to_string(lines.number()) +
                                 ": the last line has no end, its last value may be cut off";
}

/// Reads frame after frame to the end of the text.
///
/// A text that is cut off gives its complete frames and a warning that says what is lost. Without a complete frame
/// it is a fault, as is all other damage.
/// \param readFrame takes the next frame off the lines: `std::optional<TextDamage>(ParticleFrame&)`.
template <class ReadFrame>
Result<ParticleFrames> readFrames(TextLines& lines, ReadFrame const& readFrame) {
    ParticleFrames result;
    for (lines.skipEmpty(); !lines.isAtEnd(); lines.skipEmpty()) {
        ParticleFrame frame;
        frame.timestep = static_cast<std::int64_t>(result.frames.size());
        if (std::optional<TextDamage> const damage = readFrame(frame)) {
            if (!damage->isAtEnd) {
                return Fault{{}, damage->message()};
            }
            std::string const name = "frame " + std::to_string(result.frames.size() + 1);
            std::string const message = damage->message() + "; the file is cut off in " + name;
            if (result.frames.empty()) {
                return Fault{{}, message};
            }
            result.warning = message + ", which is left out";
            return result;
        }
        result.frames.push_back(std::move(frame));
    }
    if (result.frames.empty()) {
        return Fault{{}, "holds no frame"};
    }
    result.warning = lastLineWarning(lines);
    return result;
}

}  // namespace vellum::viewport
