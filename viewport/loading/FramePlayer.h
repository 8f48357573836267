#pragma once

#include "viewport/content/Content.h"
#include "viewport/content/FrameLine.h"
#include "viewport/content/Options.h"
#include "viewport/files/common/Progress.h"
#include "viewport/loading/Loader.h"
#include "viewport/playback/ReadAhead.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// Reads the frames of what is open and makes them ready to be drawn, on a thread of its own and ahead of the
/// one that is shown:
///
///     FramePlayer player(options, content);
///     player.show(7);
///     while (...)                                                    // each frame of the window
///         if (std::optional<LoadOutcome> outcome = player.poll())
///             if (outcome->loaded) ...                               // frame 7
///
/// Files are not opened again, so a frame costs what its own rows cost. A frame is what Content::load() and
/// Subject::prepare() give for its number, to the bit.
///
/// No call waits, except for the destructor. All of them come from one thread. It makes no OpenGL call.
class FramePlayer {
public:
    static constexpr std::uint64_t STANDARD_BUDGET = std::uint64_t(1) << 30;  ///< bytes of frames that wait
    static constexpr std::size_t MOST_AHEAD = 8;

    /// \param content with sequences, see FrameLine
    /// \param wake is called on the reading thread each time a frame that is wanted is there; may be empty. It must not call the
    ///     player.
    FramePlayer(Options const& options, Content const& content, std::function<void()> wake = {},
                std::uint64_t budget = STANDARD_BUDGET);

    /// Gives up what is being read, and waits for that: some milliseconds.
    ~FramePlayer();
    FramePlayer(FramePlayer const&) = delete;
    FramePlayer& operator=(FramePlayer const&) = delete;

    FrameLine const& line() const { return frames; }

    /// Makes frames ready with other options from now on. Frames that were read ahead are read again.
    void setOptions(Options const& options);

    /// Asks for a frame, which must exist. While one is on its way, the last of those that are asked for
    /// follows it, and the others are forgotten: so that something is shown however fast they are asked for.
    void show(std::size_t frame);

    /// The frame that is asked for and was not taken yet.
    std::optional<std::size_t> awaited() const { return next ? next : current; }

    /// Nobody waits for a frame any more.
    void forget();

    /// A frame that was asked for, once; nothing as long as there is none. Of its options the frame alone
    /// counts: the others may have changed meanwhile where that does not change what is made ready.
    std::optional<LoadOutcome> poll();

private:
    /// A frame that is ready.
    struct Played {
        LoadedContent loaded;
        std::vector<Fault> notes;
        std::uint64_t bytes = 0;
        unsigned int version = 0;  // of the options
    };
    class FrameObserver;

    Result<Played> _load(std::size_t frame, Progress const& progress);
    void _want(std::size_t frame);

    FrameLine const frames;
    Content base;  // without what moves
    std::vector<std::uint64_t>
        sizes;         // of the moving files on disk as they were opened, bytes; 0: does not matter
    std::mutex mutex;  // of the next two
    Options options;
    unsigned int version = 0;
    std::optional<std::size_t> current;  // on its way
    std::optional<std::size_t> next;     // asked for meanwhile
    bool isBackward = false;             // that is how frames are asked for
    std::optional<std::size_t> former;   // the frame asked for before
    ReadAhead<Played> reader;            // last: its thread uses all of the others
};

}  // namespace vellum::viewport
