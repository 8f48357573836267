#pragma once

#include "viewport/playback/FrameSequence.h"
#include "viewport/playback/ReadAhead.h"

#include <cstdint>
#include <functional>
#include <utility>

namespace vellum::viewport {

/// Reads the frames of a sequence ahead, on a thread of its own where they may be: see ReadAhead.
class FrameReader : public ReadAhead<SequenceFrame> {
public:
    static constexpr std::uint64_t STANDARD_BUDGET = std::uint64_t(1) << 30;  ///< bytes

    enum class Reading {
        AHEAD,      ///< where the sequence allows it
        WHEN_TAKEN  ///< on the caller's thread: for programs that import meshes meanwhile
    };

    /// \param notify called on the reader's thread when the first frame wanted is there; may be empty
    explicit FrameReader(FrameSequence const& sequence, std::uint64_t budget = STANDARD_BUDGET,
                         Reading reading = Reading::AHEAD, std::function<void()> notify = {})
        : ReadAhead({[sequence](std::size_t frame, Progress const& progress) {
                         return sequence.load(frame, progress);
                     },
                     [](SequenceFrame const& frame) { return bytesOf(frame); }, std::move(notify),
                     reading == Reading::WHEN_TAKEN || !sequence.mayReadAhead()},
                    budget) {}
};

}  // namespace vellum::viewport
