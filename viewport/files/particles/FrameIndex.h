#pragma once

#include "viewport/files/common/GrowingText.h"
#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/FrameBuilder.h"
#include "viewport/files/particles/NeededValues.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"
#include "viewport/text/TextLines.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vellum::viewport {

/// All that a text says about a frame before its rows.
struct FrameHead {
    ParticleFrame frame;  ///< time step, time and box; no particles yet
    std::vector<TableColumn> columns;
    std::uint64_t count = 0;         ///< of rows, as declared
    bool isScaled = false;           ///< positions are fractions of the box's edges; the frame has a box then
    std::string_view nextFrameMark;  ///< what the line behind the rows begins with; empty: anything
};

/// Takes the head of the next frame off the lines and leaves them at its first row.
using ReadFrameHead = std::function<std::optional<TextDamage>(TextLines& lines, FrameHead& head)>;

/// Loads one frame of a file; nothing: the last complete one. Behind the last frame the result has a count
/// and no particles. Progress may be empty. What it finds out about the file it keeps for the next call; one
/// call at a time.
using LoadFrame =
    std::function<Result<LoadedFrame>(std::optional<std::size_t> const& frame, Progress const& progress)>;

/// The frames of a text that holds several, one of which is read at a time; the readers of dumps and XYZ
/// share it.
///
///     FrameIndex index(text, readHead);
///     Result<LoadedFrame> const last = index.load(std::nullopt, {});   // looks for all frames
///     Result<LoadedFrame> const first = index.load(0, {});             // reads its rows alone
///
/// The first load goes over the whole text and notes where each frame begins: it reads the heads and only
/// counts the rows, which is many times faster than reading them and takes no memory. The values of one frame
/// alone are read. So a dump of any length costs its text and one frame, and damage is found in all heads and
/// counts, but inside rows only in the frame that is read.
///
/// A text that is cut off keeps its complete frames, and the result has a warning that says what is lost.
/// Without a complete frame it is a fault, as is all other damage.
class FrameIndex {
public:
    /// \param text must outlive the index
    /// \param readHead is called for the first frame before any other one
    /// \param choose which values of a frame are kept
    FrameIndex(std::string_view text, ReadFrameHead readHead, ChooseValues choose = {})
        : text(text), readHead(std::move(readHead)), choose(std::move(choose)) {}

    /// The same of a text that is on its way until the first load: the first frame is read while it comes.
    /// What that gives is the same.
    FrameIndex(std::unique_ptr<GrowingText> growing, ReadFrameHead readHead, ChooseValues choose = {})
        : growing(std::move(growing)), readHead(std::move(readHead)), choose(std::move(choose)) {}

    /// See LoadFrame.
    Result<LoadedFrame> load(std::optional<std::size_t> const& wanted, Progress const& progress);

    /// What a pass over the text has found.
    struct Places {
        std::vector<TextLines> starts;             // of the complete frames
        std::vector<std::int64_t> timesteps;       // of the complete frames
        std::vector<std::optional<double>> times;  // of the complete frames
        std::string warning;
    };

    /// The first frame, read before the end of the text was there.
    struct Ahead {
        ParticleFrame frame;
        std::size_t rowsStart = 0;  // in the text
        std::size_t rowsEnd = 0;
    };

private:
    void _readAhead();
    Result<LoadedFrame> _loadAt(std::size_t number, Progress const& progress) const;

    std::unique_ptr<GrowingText> growing;  // null: the text is there
    std::optional<Ahead> ahead;
    std::string_view text;
    ReadFrameHead readHead;
    ChooseValues choose;
    std::optional<Places> places;  // nothing: the text has not been passed to its end
};

/// The index as a function.
LoadFrame loaderOf(std::shared_ptr<FrameIndex> index);

/// The same once.
/// \param wanted counted from 0; nothing: the last complete one. Behind the last frame the result has a count
///               and no particles.
/// \param progress may be empty.
Result<LoadedFrame> readFrame(std::string_view text, std::optional<std::size_t> wanted,
                              ReadFrameHead const& readHead, Progress const& progress);

/// What the last line of a text lacks, as a warning; empty where it lacks nothing.
std::string lastLineWarning(TextLines const& lines);

}  // namespace vellum::viewport
