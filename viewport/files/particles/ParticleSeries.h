#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Particle files that are the frames of one dump, a frame in each: "dump.0.gz", "dump.100.gz", ...
///
///     if (std::optional<ParticleSeries> const series = ParticleSeries::of(paths))
///         ... series->load(std::nullopt, {}) ...
///
/// Only names are looked at. Whether files are meant as a series or as several clouds, and whether they are
/// particle files, the caller decides.
class ParticleSeries {
public:
    /// The series of these files, in the order of their numbers. Nothing unless they are two or more whose
    /// paths differ in one number alone, which no two of them share.
    static std::optional<ParticleSeries> of(std::vector<std::string> const& paths);

    /// By the number of the frame, from 0.
    std::vector<std::string> const& files() const { return paths; }

    /// Reads one frame and opens its file alone. Of a file of several frames it is the last one, and the
    /// result has a warning. The number and count of the result are those of the series; the time steps and
    /// times of the other frames are not known. See ParticleFile::load().
    /// \param frame counted from 0; nothing: the last one. A frame that the series does not have is a fault.
    /// \param format nothing: what the content shows
    Result<LoadedFrame> load(std::optional<std::size_t> frame, Progress const& progress,
                             std::optional<ParticleFormat> format = std::nullopt) const;

private:
    explicit ParticleSeries(std::vector<std::string> paths) : paths(std::move(paths)) {}

    std::vector<std::string> paths;
};

/// Whether ParticleSeries::of() makes a series of these files.
bool isSeries(std::vector<std::string> const& paths);

}  // namespace vellum::viewport
