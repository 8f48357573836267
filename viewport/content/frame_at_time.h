#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/files/particles/ParticleSeries.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// The index of the time that is nearest, of equally near ones the first. Nothing where no frame has a time.
std::optional<std::size_t> nearestTime(std::vector<std::optional<double>> const& times, double wanted);

/// Whether the file says a time of one frame at least.
bool hasTimes(LoadedFrame const& loaded);

/// Reads the frame whose time is nearest; the last one where no frame has a time.
Result<LoadedFrame> loadAtTime(ParticleFile const& file, double time, Progress const& progress);

/// The same of a series. It has to read all of the series' files, of which one is in memory beside the
/// nearest one so far.
Result<LoadedFrame> loadAtTime(ParticleSeries const& series, double time, Progress const& progress,
                               std::optional<ParticleFormat> format);

}  // namespace vellum::viewport
