#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vellum::viewport {

/// Which frame of a sequence is to be shown at which time: play, pause, step and loop.
///
///     PlaybackClock clock(sequence.count());
///     clock.play();
///     ... for each picture of a window ...
///         if (clock.advance(secondsSinceTheLastPicture, isFrameShown))
///             reader.want(clock.upcoming(16));
///
/// Plain arithmetic: it knows no clock of the system. A frame stays as long as the speed says. Where pictures
/// take longer than that, frames are skipped; where reading takes longer, time stands still until the frame
/// is shown, so that none is asked for in vain.
class PlaybackClock {
public:
    static constexpr double STANDARD_SPEED = 25;  ///< frames per second

    /// It starts paused at the first frame.
    /// \param count of the frames; 0 is taken as 1
    explicit PlaybackClock(std::size_t count) : count(count > 0 ? count : 1) {}

    std::size_t frame() const { return number; }
    std::size_t frameCount() const { return count; }
    bool isPlaying() const { return playing; }
    bool isLooping() const { return looping; }
    double speed() const { return framesPerSecond; }

    /// At the end of a sequence that does not loop, it starts over.
    void play();
    void pause();

    /// Another number of frames; the frame stays as far as it can.
    void setCount(std::size_t count);

    /// Whether the first frame follows the last one.
    void setLooping(bool isLooping) { looping = isLooping; }

    /// \param framesPerSecond below 0: backward; what is not finite or 0 changes nothing
    void setSpeed(double framesPerSecond);

    /// Shows a frame; the last one for numbers behind it. It goes on playing from there.
    void show(std::size_t frame);

    /// Pauses and goes some frames on, or back. It stops at the ends, or goes round where it loops.
    void step(std::int64_t frames);

    /// Time has passed.
    /// \param seconds 0 or more; what is not finite or below 0 is taken as 0
    /// \param isFrameShown whether the frame could be shown; if not, time stands still
    /// \return whether the frame is another one now. Without a loop it ends at the last frame and pauses.
    bool advance(double seconds, bool isFrameShown = true);

    /// The frame and those that follow while it plays, each once, at most so many. They are what is to be
    /// read ahead.
    std::vector<std::size_t> upcoming(std::size_t most) const;

private:
    bool _isAtEnd() const { return framesPerSecond > 0 ? number + 1 == count : number == 0; }
    void _go(double frames);

    std::size_t count;  // at least 1
    std::size_t number = 0;
    double phase = 0;  // the part of the frame's time that has passed, 0 to 1
    double framesPerSecond = STANDARD_SPEED;
    bool playing = false;
    bool looping = false;
};

}  // namespace vellum::viewport
