#pragma once

#include "viewport/content/Content.h"
#include "viewport/content/Options.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The frames among which a user chooses while files are open: those of particle files and of series, or else
/// the poses of animated meshes. Files advance together, as far as the shortest one goes; those with a single
/// frame stand still.
///
///     FrameLine const line(content);
///     if (line.count() > 1) {
///         line.choose(options, 7);
///         ... what the options show now is frame 7 ...
///     }
///
/// A plain value, which shares the sequences of the content.
class FrameLine {
public:
    explicit FrameLine(Content const& content);

    std::size_t count() const { return frameCount; }  ///< 1: nothing moves

    /// The files that move: places in the list of the content.
    std::vector<std::size_t> const& files() const { return places; }

    /// Whether frames are chosen by a time: poses of animated meshes.
    bool isAnimation() const { return framesPerSecond > 0; }

    /// Of an animation; 0: frames have no speed of their own.
    double perSecond() const { return framesPerSecond; }

    /// The frame that the content has; of an animation the one that is nearest.
    static std::size_t shownIn(Content const& content);

    /// The frame that options show, or nothing where they show none of these: a time between two of them, or
    /// the last frames of files with different numbers of them.
    std::optional<std::size_t> frameOf(Options const& options) const;

    /// Makes options show a frame, which must exist.
    void choose(Options& options, std::size_t frame) const;

    /// What a file says of a frame: its time step and time, as far as they are known; may be empty.
    std::string caption(std::size_t frame) const;

private:
    std::size_t frameCount = 1;
    bool isUneven = false;  // some files have more frames
    double framesPerSecond = 0;
    std::vector<std::size_t> places;
    std::vector<std::int64_t> timesteps;  // of the first file; empty: not known
    std::vector<std::optional<double>> times;
};

}  // namespace vellum::viewport
