#pragma once

#include "viewport/content/Options.h"
#include "viewport/live/Workspace.h"
#include "viewport/playback/PlaybackClock.h"

#include <chrono>
#include <cstddef>
#include <optional>

namespace vellum::viewport {

/// The bar below the scene of files with several frames, of a series, and of animated meshes: play and pause,
/// step, loop, speed, and a slider over all frames. There is none for other files. A frame that is asked for
/// while another one is read follows that one.
///
/// While frames play, the camera and the range of colors stay those of the frame that was shown when the user
/// pressed play, unless the range is set to follow the frames.
class Timeline {
public:
    /// Where the bar is, in units of the window.
    struct Place {
        double left;
        double width;
        double bottom;
        double height;
    };

    /// Goes on with time, and draws the bar.
    /// \param place nothing: the bar is hidden, and frames play on
    /// \return the options with another frame, where one is to be shown
    std::optional<Options> draw(Workspace& workspace, std::optional<Place> const& place);

    void togglePlaying(Workspace& workspace);
    bool isPlaying() const { return clock.isPlaying(); }

private:
    using Clock = std::chrono::steady_clock;

    void _hold(Options& options, Workspace& workspace) const;
    void _drawBar(Workspace& workspace, Place const& place);
    void _drawButtons(Workspace& workspace);

    PlaybackClock clock{1};
    Clock::time_point last = Clock::now();
    bool followsRange = false;
    double ownSpeed = 0;  // of the frames that are open; 0: they have none
};

}  // namespace vellum::viewport
