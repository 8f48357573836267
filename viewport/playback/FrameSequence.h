#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/mesh/GuardedImport.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/files/mesh/MeshFile.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/files/particles/ParticleSeries.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vellum::viewport {

/// A frame as its file has it.
using SequenceFrame = std::variant<LoadedFrame, MeshData>;

/// The memory that a frame takes, in bytes.
std::uint64_t bytesOf(SequenceFrame const& frame);

/// Frames that follow each other in time: those of one particle file, of a series of files, or the poses of
/// an animated mesh.
///
///     Result<FrameSequence> const sequence = FrameSequence::ofFile(ParticleFile("melt.lammpstrj"), {});
///     if (sequence.isOk())
///         ... sequence.value().load(sequence.value().count() - 1, {}) ...
///
/// What a sequence says of itself never changes. Copies share the file and what was found out about it; one
/// of them loads at a time, on any thread.
class FrameSequence {
public:
    /// Looks for all frames of the file and reads the particles of none (see ParticleFile::frames()).
    static Result<FrameSequence> ofFile(ParticleFile const& file, Progress const& progress);

    /// Opens no file. \param format nothing: what the content shows
    static FrameSequence ofSeries(ParticleSeries const& series, std::optional<ParticleFormat> format);

    /// The poses of a mesh's first animation, from its start to its end. Each frame imports the whole file.
    /// \param duration of the animation, seconds
    /// \param framesPerSecond above 0
    static FrameSequence ofAnimation(MeshFile const& file, ImportLimits const& limits, double duration,
                                     double framesPerSecond);

    /// Meshes that follow each other, a file for each, with the textures of their materials. Opens no file.
    /// \param files in their order, at least one
    /// \param format one of meshFormatNames(); nothing: as MeshFile finds it out
    /// \param isTextured whether textures are read
    static FrameSequence ofMeshes(std::vector<std::string> const& files,
                                  std::optional<std::string> const& format, ImportLimits const& limits,
                                  bool isTextured);

    std::size_t count() const { return list.count; }  ///< 1 or more

    /// See FrameList: those of a file are known, those of a series and of an animation are not.
    std::vector<std::int64_t> const& timesteps() const { return list.timesteps; }
    std::vector<std::optional<double>> const& times() const { return list.times; }
    std::string const& warning() const { return list.warning; }

    /// Whether frames may be loaded on another thread and while there is an OpenGL context. Meshes may not:
    /// their import copies the process.
    bool mayReadAhead() const { return isReadAhead; }

    /// Reads one frame, LoadedFrame or MeshData. Of the other frames a LoadedFrame says their count alone.
    /// \param frame counted from 0; one that does not exist is a fault
    /// \param progress may be empty. It may throw, which ends the load.
    Result<SequenceFrame> load(std::size_t frame, Progress const& progress) const;

private:
    FrameSequence(FrameList list, bool isReadAhead,
                  std::function<Result<SequenceFrame>(std::size_t, Progress const&)> read);

    FrameList list;
    bool isReadAhead;
    std::function<Result<SequenceFrame>(std::size_t, Progress const&)> read;
};

}  // namespace vellum::viewport
